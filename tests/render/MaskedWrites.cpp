// A fragment that fails its tests is not written back, at no instruction set: memory behind it may
// be read-only, or another thread's to write.

#include <sys/mman.h>
#include <unistd.h>

#include <barrier>
#include <functional>
#include <thread>
#include <vector>

#include "LevelTest.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

/// A block in which bytes from the middle on can be made read-only.
class TSplitBlock {
public:
  TSplitBlock()
      : m_Page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        m_Data(static_cast<std::uint8_t*>(mmap(nullptr, 4 * m_Page, PROT_READ | PROT_WRITE,
                                               MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
  ~TSplitBlock() { munmap(m_Data, 4 * m_Page); }
  TSplitBlock(const TSplitBlock&) = delete;
  TSplitBlock& operator=(const TSplitBlock&) = delete;

  std::uint8_t* Middle() const { return m_Data + 2 * m_Page; }
  void Protect() const { mprotect(Middle(), 2 * m_Page, PROT_READ); }

private:
  std::size_t m_Page;
  std::uint8_t* m_Data;
};

constexpr int kWidth = 200;
constexpr int kSplit = 101; // within a vector of any size

/// A row of pixels of which those from `kSplit` on lie on pages that can only be read.
class TSplitScene {
public:
  TSplitScene() : m_Scene(kWidth, 1) {
    Take(m_Color, 4, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, m_Scene->GetColorSurface());
    Take(m_Depth, 4, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1, m_Scene->GetDepthSurface());
    Take(m_Stencil, 1, DATA_FORMAT_STENCIL, DATA_TYPE_UINT8, 1, m_Scene->GetStencilSurface());
    m_Scene.Reset();
  }

  TScene& operator*() { return m_Scene; }
  void Protect() const {
    m_Color.Protect();
    m_Depth.Protect();
    m_Stencil.Protect();
  }

private:
  static void Take(const TSplitBlock& block, int size, DATA_FORMAT format, DATA_TYPE type,
                   int components, TDataSurface* target) {
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(kWidth, 1, format, type, components,
                               block.Middle() - std::ptrdiff_t{size} * kSplit));
    target->Swap(surface);
  }

  TSplitBlock m_Color;
  TSplitBlock m_Depth;
  TSplitBlock m_Stencil;
  TScene m_Scene;
};

using TDraw = std::function<void(TRenderCPU&)>;

struct TWay {
  const char* Name;
  TDraw Draw;
};

void Triangle(TRenderCPU& gl, double from, double to) {
  gl.Begin(GL_TRIANGLES);
  gl.Color4d(1, 0.5, 0.25, 1);
  gl.TexCoord2d(0, 0);
  gl.Vertex2d(Clip(from - 0.5, kWidth), -0.9);
  gl.Color4d(1, 1, 1, 1);
  gl.TexCoord2d(1, 1);
  gl.Vertex2d(Clip(to + 0.5, kWidth), 0);
  gl.Vertex2d(Clip(from - 0.5, kWidth), 0.9);
  gl.End();
}

void LineTo(TRenderCPU& gl, double from, double to) {
  gl.Begin(GL_LINES);
  gl.Vertex2d(Clip(from, kWidth), 0);
  gl.Color4d(1, 0.5, 0.25, 1);
  gl.Vertex2d(Clip(to, kWidth), 0);
  gl.End();
}

void Texture(TRenderCPU& gl, unsigned int filter) {
  unsigned int id = 0;
  const std::vector<unsigned char> texels(4 * 8 * 8, 200);
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 8, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  gl.TexFilter2D(filter, filter);
  gl.Enable(GL_TEXTURE_2D);
}

void Blend(TRenderCPU& gl) {
  gl.EnableBlend(true);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

// All of them draw columns 0 to the last, in pieces of any length.
const TWay kWays[] = {
    {"one triangle", [](TRenderCPU& gl) { Triangle(gl, 0, kWidth); }},
    {"quad",
     [](TRenderCPU& gl) {
       gl.Color4d(1, 0.5, 0.25, 1);
       DrawFullQuad(gl);
     }},
    {"short triangles",
     [](TRenderCPU& gl) {
       for (int x = 0, n = 1; x < kWidth; x += n, n = n % 30 + 1) {
         Triangle(gl, x, x + n);
       }
     }},
    {"line", [](TRenderCPU& gl) { LineTo(gl, 0, kWidth); }},
    {"line to the left",
     [](TRenderCPU& gl) {
       LineTo(gl, kWidth - 1, 0);
       LineTo(gl, 0, 1); // a line leaves out its last pixel
     }},
    {"short lines",
     [](TRenderCPU& gl) {
       for (int x = 0, n = 1; x < kWidth; x += n, n = n % 9 + 1) {
         LineTo(gl, x, x + n);
       }
     }},
    {"nearest",
     [](TRenderCPU& gl) {
       Texture(gl, GL_NEAREST);
       Triangle(gl, 0, kWidth);
     }},
    {"linear",
     [](TRenderCPU& gl) {
       Texture(gl, GL_LINEAR);
       Triangle(gl, 0, kWidth);
     }},
    {"blending",
     [](TRenderCPU& gl) {
       Blend(gl);
       Triangle(gl, 0, kWidth);
     }},
    {"colour mask",
     [](TRenderCPU& gl) {
       gl.ColorMask(1, 1, 0, 1);
       Triangle(gl, 0, kWidth);
     }},
};

class MaskedWrites : public testing::TestWithParam<std::size_t> {
protected:
  ~MaskedWrites() override { LimitSpanLevel(nullptr); }

  /// `fail` makes the pixels from `kSplit` on fail.
  static void Run(const std::function<void(TScene&)>& fail) {
    const TWay& way = kWays[GetParam()];
    for (const char* level : Zx3D::kSpanPaths) {
      if (!LimitSpanLevel(level)) {
        continue;
      }
      SCOPED_TRACE(std::string(level) + ", " + way.Name);
      TSplitScene split;
      TScene& s = *split;
      fail(s);
      split.Protect();
      way.Draw(*s);
      for (int x = 0; x < kSplit; ++x) {
        ASSERT_NE(kClear, s.Color(x, 0)) << x;
        ASSERT_EQ(0.5f, s.Depth(x, 0)) << x;
      }
      for (int x = kSplit; x < kWidth; ++x) {
        ASSERT_EQ(kClear, s.Color(x, 0)) << x;
      }
    }
  }
};

} // namespace

TEST_P(MaskedWrites, ThatFailTheDepthTest) {
  Run([](TScene& s) {
    s->EnableDepthTest(true);
    for (int x = kSplit; x < kWidth; ++x) {
      s.SetDepth(x, 0, 0.25f);
    }
  });
}

TEST_P(MaskedWrites, ThatFailTheStencilTest) {
  Run([](TScene& s) {
    s->EnableDepthTest(true);
    s->Enable(GL_STENCIL_TEST);
    s->StencilFunc(GL_GREATER, 200, 255); // passes what is below
    s->StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    for (int x = kSplit; x < kWidth; ++x) {
      s.SetStencil(x, 0, 255);
    }
  });
}

TEST_P(MaskedWrites, ThatFailTheDepthTestBehindAStencil) {
  Run([](TScene& s) {
    s->EnableDepthTest(true);
    s->Enable(GL_STENCIL_TEST);
    s->StencilOp(GL_INCR, GL_KEEP, GL_INCR);
    for (int x = kSplit; x < kWidth; ++x) {
      s.SetDepth(x, 0, 0.25f);
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Ways, MaskedWrites, testing::Range(std::size_t{0}, std::size(kWays)),
                         [](const testing::TestParamInfo<std::size_t>& info) {
                           std::string name = kWays[info.param].Name;
                           for (char& c : name) {
                             c = c == ' ' ? '_' : c;
                           }
                           return name;
                         });

// Two contexts draw into one colour and one depth surface at the same time, each into every second
// column.
TEST(MaskedWritesOnTwoThreads, NoPixelOfTheOtherIsLost) {
  constexpr int kSize = 512; // long enough for both to be at it
  constexpr int kRounds = 60;
  for (const char* level : Zx3D::kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    TDataSurface color;
    ASSERT_TRUE(color.Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
    std::vector<float> depths(kSize * kSize);
    std::barrier<> meet(2);
    const auto draw = [&](int column) {
      TScene s(kSize, kSize);
      TDataSurface depth;
      depth.Create(kSize, kSize, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1, depths.data());
      s->GetDepthSurface()->Swap(depth);
      s->BindColorSurface(&color);
      for (int i = 0; i < kSize * kSize; ++i) {
        s.SetStencil(i % kSize, i / kSize, i % 2);
      }
      s->Enable(GL_STENCIL_TEST);
      s->StencilFunc(GL_EQUAL, column, 255);
      int lost = 0;
      for (int round = 1; round <= kRounds; ++round) {
        const auto grey = static_cast<unsigned char>(round % 100 + 100 * column + 1);
        s->Color4ub(grey, grey, grey, 255);
        meet.arrive_and_wait();
        DrawFullQuad(*s, round % 2 == 0 ? 0.5 : 0.0);
        meet.arrive_and_wait();
        for (int i = column; i < kSize * kSize; i += 2) {
          lost += color.Data[4 * i] != grey ? 1 : 0;
          lost += depths[static_cast<std::size_t>(i)] != (round % 2 == 0 ? 0.75f : 0.5f) ? 1 : 0;
        }
        meet.arrive_and_wait();
      }
      EXPECT_EQ(0, lost) << level << ", column " << column;
      s->BindColorSurface(nullptr);
    };
    std::thread other(draw, 1);
    draw(0);
    other.join();
  }
  LimitSpanLevel(nullptr);
}
