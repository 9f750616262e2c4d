// Texels that the span kernels fetch: at every instruction set those that the sampler reads, at and
// around all places where the wrap modes part.

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include <ZxCore3D/render/common/KernelCounters.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

#include "LevelTest.h"
#include "StateChecks.h"

using namespace Zx3D;

namespace {

/// A block whose last byte is followed by a page that ends the program when it is touched.
class TGuardedBlock {
public:
  explicit TGuardedBlock(std::size_t size)
      : m_Page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        m_Size((size + m_Page - 1) / m_Page * m_Page),
        m_Pages(static_cast<std::uint8_t*>(mmap(nullptr, m_Size + m_Page, PROT_READ | PROT_WRITE,
                                                MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
        Data(m_Pages + m_Size - size) {
    mprotect(m_Pages + m_Size, m_Page, PROT_NONE);
  }
  ~TGuardedBlock() { munmap(m_Pages, m_Size + m_Page); }
  TGuardedBlock(const TGuardedBlock&) = delete;
  TGuardedBlock& operator=(const TGuardedBlock&) = delete;

private:
  std::size_t m_Page;
  std::size_t m_Size;
  std::uint8_t* m_Pages;

public:
  std::uint8_t* const Data;
};

constexpr int kWidth = 40; // rows that float colours are worth while for
constexpr int kHeight = 48;

class SpanTexels : public zx_test::TLevelTest {
protected:
  SpanTexels() : TLevelTest(kWidth, kHeight) {}

  // With a `square` above 1 texels are alike in squares of that side, and have an alpha of 1.
  static void Texture(TRenderCPU& gl, int width, int height, unsigned int filter,
                      unsigned int wrapS, unsigned int wrapT, int channels = 4, int square = 1) {
    constexpr unsigned int kFormats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
    const unsigned int format = kFormats[channels - 1];
    zx_test::TRandom random(7);
    std::vector<unsigned char> texels(static_cast<std::size_t>(width * height * channels));
    for (unsigned char& byte : texels) {
      byte = static_cast<unsigned char>(random.Below(256));
    }
    for (int i = 0; square > 1 && i < width * height * channels; ++i) {
      const int channel = i % channels;
      const int x = i / channels % width / square * square;
      const int y = i / channels / width / square * square;
      texels[static_cast<std::size_t>(i)] =
          channel == 3 ? 255
                       : texels[static_cast<std::size_t>((y * width + x) * channels + channel)];
    }
    unsigned int id = 0;
    gl.GenTextures(1, &id);
    gl.BindTexture(GL_TEXTURE_2D, id);
    gl.TexImage2D(GL_TEXTURE_2D, 0, static_cast<int>(format), width, height, 0, format,
                  GL_UNSIGNED_BYTE, texels.data());
    ASSERT_EQ(channels, gl.m_TexUnits[0].Sampler.m_Surface->Channels);
    gl.TexFilter2D(filter, filter);
    gl.TexWrap2D(wrapS, wrapT);
    gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    gl.Enable(GL_TEXTURE_2D);
  }

  // Covers one row of pixels; with `toS` of `s` every pixel has that very coordinate.
  static void Row(TRenderCPU& gl, int y, double s, double toS, double t) {
    const double bottom = zx_test::Clip(y - 0.4, kHeight);
    const double top = zx_test::Clip(y + 0.4, kHeight);
    gl.Begin(GL_QUADS);
    gl.TexCoord2d(s, t);
    gl.Vertex2d(-1.1, bottom);
    gl.TexCoord2d(toS, t);
    gl.Vertex2d(1.1, bottom);
    gl.Vertex2d(1.1, top);
    gl.TexCoord2d(s, t);
    gl.Vertex2d(-1.1, top);
    gl.End();
  }

  // A coordinate that lies on an edge of a texel, in the middle of one, or next to it: about
  // multiples of the size and about the greatest index.
  static double Coordinate(zx_test::TRandom* random, int size) {
    const double tiles[] = {
        0, 1, 2, 3, 7, 1000, 65536.0 / size, 1048576.0 / size, 2147483000.0 / size};
    double texel = std::floor(tiles[random->Below(9)]) * size + random->Below(5) - 2;
    texel += random->Below(2) * 0.5;
    texel = random->Below(2) != 0 ? texel : -texel;
    double coordinate = texel / size;
    for (int i = random->Below(4); i > 0; --i) {
      coordinate = std::nextafter(coordinate, random->Below(2) != 0 ? 1e300 : -1e300);
    }
    return coordinate;
  }
};

TEST_F(SpanTexels, AboutTheEdgesOfTilesOfEverySize) {
  zx_test::TRandom random(5);
  constexpr unsigned int kWraps[] = {GL_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP, GL_REPEAT};
  const int sizes[] = {1,   2,   3,   4,   5,   6,   7,   8,   9,   11,   13,   16,
                       17,  21,  31,  32,  33,  49,  63,  64,  65,  93,   100,  127,
                       128, 129, 190, 250, 255, 257, 511, 641, 999, 1000, 2047, 4095};
  for (const int width : sizes) {
    const int height = sizes[random.Below(20)];
    for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
      for (int round = 0; round < 4; ++round) {
        const unsigned int wrapS = kWraps[random.Below(4)];
        const unsigned int wrapT = kWraps[random.Below(4)];
        const int channels = 1 + (width + round) % 4;
        const std::string what = std::to_string(width) + " by " + std::to_string(height) + " of " +
                                 std::to_string(channels) + ", " + std::to_string(wrapS) + " and " +
                                 std::to_string(wrapT) + ", filter " + std::to_string(filter);
        const zx_test::TRandom rows = random;
        Expect(what, [&](TRenderCPU& gl) {
          random = rows;
          Texture(gl, width, height, filter, wrapS, wrapT, channels);
          for (int y = 0; y < kHeight; ++y) {
            const double s = Coordinate(&random, width);
            const double t = Coordinate(&random, height);
            Row(gl, y, s, y % 3 == 0 ? s + random.Below(7) - 3.0 : s, t);
          }
        });
      }
    }
  }
}

// Coordinates that begin and end where they stop being simple, with 1/w as unlike as it may be.
TEST_F(SpanTexels, TheEndsOfWhatIsPlain) {
  constexpr double kWIsZ[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  for (const int size : {1, 2, 3, 16, 61, 250}) {
    const double texel = 1.0 / size;
    const double begins[] = {-texel,      -0.25 * texel,     -0.2500001 * texel, 0,
                             0.5 * texel, 0.5000001 * texel, 1 - 65536};
    const double ends[] = {1 - 0.5 * texel, 1 - 0.5000001 * texel, 1,
                           1.0000001,       1048576 * texel,       1048575 * texel};
    for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
      for (const unsigned int wrap : {GL_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP}) {
        for (const double far : {1.0, 40.0, 65000.0}) {
          Expect(std::to_string(size) + ", filter " + std::to_string(filter) + ", wrap " +
                     std::to_string(wrap) + ", w to " + std::to_string(far),
                 [&](TRenderCPU& gl) {
                   Texture(gl, size, 2 * size, filter, wrap, wrap);
                   gl.MatrixMode(GL_PROJECTION);
                   gl.LoadMatrixd(kWIsZ);
                   int y = 0;
                   for (const double begin : begins) {
                     for (const double end : ends) {
                       const double bottom = zx_test::Clip(y - 0.4, kHeight);
                       const double top = zx_test::Clip(y + 0.4, kHeight);
                       gl.Begin(GL_QUADS);
                       for (int k = 0; k < 4; ++k) {
                         const bool right = k == 1 || k == 2;
                         const double w = right ? far : 1.0;
                         gl.TexCoord2d(right ? end : begin, k < 2 ? begin : end);
                         gl.Vertex3d(w * (right ? 1.1 : -1.1), w * (k < 2 ? bottom : top), w);
                       }
                       gl.End();
                       ++y;
                     }
                   }
                 });
        }
      }
    }
  }
}

// Every pixel at a whole or half texel, but for what its own operations round: where a nearest
// texel changes, repeats begin again, and what the filter shifts by leaves zero.
TEST_F(SpanTexels, PixelsOnTheEdgesOfTexels) {
  constexpr double kWIsZ[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  constexpr double kBeyond = 5; // columns on either side of the surface
  for (const int size : {3, 16, 49, 250}) {
    for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
      for (const unsigned int wrap : {GL_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP}) {
        for (const double step : {0.0, 0.25, 0.5, 1.0, 3.0}) {
          const int channels = 1 + static_cast<int>(4 * step + size) % 4;
          Expect(std::to_string(size) + " of " + std::to_string(channels) + ", filter " +
                     std::to_string(filter) + ", wrap " + std::to_string(wrap) + ", " +
                     std::to_string(step) + " a pixel",
                 [&](TRenderCPU& gl) {
                   Texture(gl, size, size, filter, wrap, wrap, channels);
                   gl.m_TexUnits[0].Sampler.m_BorderColor = {1e13, 1e15, 0.5, 1e14};
                   gl.MatrixMode(GL_PROJECTION);
                   gl.LoadMatrixd(kWIsZ);
                   for (int y = 0; y < kHeight; ++y) {
                     const double first = -1.5 * size + y * size / 12 + y % 2 * 0.5;
                     const double w[2] = {y % 3 == 0 ? 1.0 : 3.0, step == 0.0 ? 60.0 : 3.0};
                     gl.Begin(GL_QUADS);
                     for (int k = 0; k < 4; ++k) {
                       const int end = k == 1 || k == 2 ? 1 : 0;
                       const double column = end == 0 ? -kBeyond : kWidth + kBeyond;
                       const double row = zx_test::Clip(y + (k < 2 ? -0.4 : 0.4), kHeight);
                       const double at = step == 0.0 ? w[end] : y % 3 == 0 ? 1.0 : 3.0;
                       gl.TexCoord2d((first + step * column) / size, (first + 0.25) / size);
                       gl.Vertex3d(at * zx_test::Clip(column, kWidth), at * row, at);
                     }
                     gl.End();
                   }
                 });
        }
      }
    }
  }
}

// Near coordinates give way where many pixels lie on the edges of texels, as where an image is
// drawn texel by pixel, and come back; but not for a few pixels, even if those are half of a row's
// rest.
TEST_F(SpanTexels, ExactCoordinatesWhereManyPixelsAskForThem) {
  if (GetSpanKernels() == nullptr) {
    GTEST_SKIP() << "at this level all coordinates are exact";
  }
  constexpr int kColumns = 72; // a run and a rest
  constexpr int kRows = 24;
  constexpr int kSize = 128;
  const zx_test::TScene s(kColumns, kRows);
  Texture(*s, kSize, kSize, GL_NEAREST, GL_REPEAT, GL_REPEAT);
  // Draws all rows, the pixels of column x at first + step * x texels. Returns how many groups were
  // unsure of their texel.
  const auto draw = [&s](double first, double step) {
    StartKernelCounters();
    s->Begin(GL_TRIANGLES);
    for (int y = 0; y < kRows; ++y) { // one triangle a row, with its apex at the right
      for (int k = 0; k < 3; ++k) {
        const double column = k == 1 ? kColumns - 0.55 : -0.45;
        s->TexCoord2d((first + step * column) / kSize, 3.5 / kSize);
        s->Vertex2d(zx_test::Clip(column, kColumns), zx_test::Clip(y + 0.4 * (k - 1), kRows));
      }
    }
    s->End();
    StopKernelCounters();
    return KernelCounters().Unmet(TCondition::TexelsSureFloors);
  };
  constexpr double kOneInTheRest = 26 - 70 * 0.37; // 0.37 times a column is whole at 0 alone
  EXPECT_EQ(std::uint64_t{kRows}, draw(kOneInTheRest, 0.37));
  EXPECT_EQ(std::uint64_t{kRows}, draw(kOneInTheRest, 0.37));
  const std::uint64_t inARun = draw(0.0, 1.0);
  EXPECT_GE(inARun, 64u / 8);
  EXPECT_LE(inARun, 64u / 2);
  EXPECT_EQ(0u, draw(kOneInTheRest, 0.37));
  for (int runs = 0; runs < 2 * kExactRuns; runs += 2 * kRows) {
    draw(0.5, 0.0);
  }
  EXPECT_EQ(std::uint64_t{kRows}, draw(kOneInTheRest, 0.37));

  // Texels are known where colours are not.
  s->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  s->Color4d(0.5, 0.3, 0.7, 0.9);
  for (int i = 0; i < 3; ++i) {
    draw(0.5, 0.0);
    EXPECT_GE(KernelCounters().Unmet(TCondition::ValuesBytes), 64u * kRows);
  }
  EXPECT_EQ(std::uint64_t{kRows}, draw(kOneInTheRest, 0.37));
}

// Beyond its edges a clamped texture keeps the bytes there; half of the odd ones lies between two
// bytes, so that what the exact path makes of them shows.
TEST_F(SpanTexels, HalvedTexelsBeyondTheEdges) {
  constexpr double kWIsZ[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  for (const int size : {2, 3, 16, 61}) {
    for (const unsigned int wrapS : {GL_REPEAT, GL_CLAMP_TO_EDGE}) {
      for (const double far : {1.0, 3.0}) {
        for (int degrees = 0; degrees < 360; degrees += 30) {
          const int channels = 1 + (degrees / 30 + size) % 4;
          Expect(std::to_string(size) + " at " + std::to_string(degrees), [&](TRenderCPU& gl) {
            Texture(gl, size, size + 1, GL_LINEAR, wrapS, GL_CLAMP_TO_EDGE, channels);
            gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
            gl.MatrixMode(GL_PROJECTION);
            gl.LoadMatrixd(kWIsZ);
            gl.Color4d(0.5, 0.5, 0.25, 0.5);
            gl.Begin(GL_QUADS);
            for (int k = 0; k < 4; ++k) {
              const double angle = (degrees + 45 + 90 * k) * 3.14159265358979 / 180;
              const double w = k < 2 ? 1.0 : far;
              gl.TexCoord2d(0.5 + 1.5 * std::cos(angle), 0.5 + 1.5 * std::sin(angle));
              gl.Vertex3d(w * (k == 1 || k == 2 ? 1.1 : -1.1), w * (k < 2 ? -1.1 : 1.1), w);
            }
            gl.End();
          });
        }
      }
    }
  }
}

// Where the texels that a filter mixes are alike, their mean is known wherever it is taken, but for
// pixels next to a whole texel; a constant colour puts it half-way between two bytes, so that each
// of the exact path's roundings shows.
TEST_F(SpanTexels, HalvesOfTexelsThatAreAlike) {
  constexpr double kWIsZ[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  constexpr double kColors[][4] = {{0.5, 0.5, 0.5, 0.5}, {0.1, 0.3, 0.7, 0.9}, {1, 0.5, 0.9, 0.5}};
  zx_test::TRandom random(11);
  for (const int square : {2, 3, 16}) {
    for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
      for (const unsigned int wrap : {GL_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP}) {
        for (const double step : {0.0, 0.37, 0.5, 1.0, 2.0}) {
          for (const double(&color)[4] : kColors) {
            const int channels = 3 + random.Below(2);
            const int size = random.Below(2) != 0 ? 32 : 45;
            double first[kHeight];
            for (double& at : first) {
              at = random.Below(size) + (filter == GL_LINEAR ? 0.5 : 0.0);
            }
            Expect(std::to_string(square) + " of " + std::to_string(size) + ", filter " +
                       std::to_string(filter) + ", wrap " + std::to_string(wrap) + ", " +
                       std::to_string(step) + " a pixel",
                   [&](TRenderCPU& gl) {
                     Texture(gl, size, size, filter, wrap, wrap, channels, square);
                     gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
                     gl.Enable(GL_BLEND);
                     gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
                     gl.Color4d(color[0], color[1], color[2], color[3]);
                     gl.MatrixMode(GL_PROJECTION);
                     gl.LoadMatrixd(kWIsZ);
                     for (int y = 0; y < kHeight; ++y) {
                       const double w[2] = {1.0 + y % 3, y % 2 == 0 ? 1.0 + y % 3 : 3.7};
                       gl.Begin(GL_QUADS);
                       for (int k = 0; k < 4; ++k) {
                         const int end = k == 1 || k == 2 ? 1 : 0;
                         const double column = end == 0 ? -5 : kWidth + 5;
                         const double row = zx_test::Clip(y + (k < 2 ? -0.4 : 0.4), kHeight);
                         gl.TexCoord2d((first[y] + step * column) / size, (first[y] + 1) / size);
                         gl.Vertex3d(w[end] * zx_test::Clip(column, kWidth), w[end] * row, w[end]);
                       }
                       gl.End();
                     }
                   });
          }
        }
      }
    }
  }
}

// Texels without alpha have one of 1: what the vertices have is the pixels', also half-way between
// two bytes, and no pixel of it needs the exact path.
TEST_F(SpanTexels, ConstantAlphaOverTexelsWithoutAlpha) {
  const auto draw = [](TRenderCPU& gl, double alpha, int channels, unsigned int filter) {
    Texture(gl, 64, 64, filter, GL_REPEAT, GL_REPEAT, channels);
    gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    gl.Color4d(1.0, 1.0, 1.0, alpha);
    gl.Begin(GL_QUADS);
    for (int k = 0; k < 4; ++k) {
      const double x = k == 1 || k == 2 ? 1.1 : -1.1;
      const double y = k < 2 ? -1.1 : 1.1;
      gl.TexCoord2d(0.37 * x + 0.11 * y + 0.003, 0.41 * y - 0.13 * x);
      gl.Vertex2d(x, y);
    }
    gl.End();
  };
  for (const double alpha : {0.5, 0.9, 0.25, 127.0 / 255, 1e-9, 0.0, 0.999, 100.5 / 255}) {
    for (const int channels : {1, 2, 3, 4}) {
      for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
        SCOPED_TRACE(testing::Message() << alpha << " over " << channels << ", " << filter);
        Expect("", [&](TRenderCPU& gl) { draw(gl, alpha, channels, filter); });
        if (GetSpanKernels() == nullptr || channels % 2 == 0 || alpha != 0.5) {
          continue;
        }
        const zx_test::TScene s(kWidth, kHeight);
        StartKernelCounters();
        draw(*s, alpha, channels, filter);
        StopKernelCounters();
        EXPECT_EQ(128, s->m_ColorSurface->Data[4 * (9 * kWidth + 7) + 3]);
        EXPECT_LE(KernelCounters().Unmet(TCondition::ValuesBytes), 10u * kHeight);
      }
    }
  }
}

// Tiles from the negative side to far on the positive one, at all angles.
TEST_F(SpanTexels, TilesOnBothSidesOfZero) {
  for (const int size : {3, 16, 21, 250}) {
    for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
      for (int degrees = 0; degrees < 180; degrees += 15) {
        Expect(std::to_string(size) + " at " + std::to_string(degrees), [&](TRenderCPU& gl) {
          Texture(gl, size, size + 2, filter, GL_REPEAT, GL_REPEAT, 1 + degrees / 15 % 4);
          const double angle = degrees * 3.14159265358979 / 180;
          gl.Begin(GL_QUADS);
          for (const double corner : {45.0, 135.0, 225.0, 315.0}) {
            const double at = corner * 3.14159265358979 / 180;
            gl.TexCoord2d(4 * std::cos(at + angle), 4 * std::sin(at + angle));
            gl.Vertex2d(1.5 * std::cos(at), 1.5 * std::sin(at));
          }
          gl.End();
        });
      }
    }
  }
}

// Only a repeat reads past the last texel: other wrap modes are used with blocks that end there.
TEST_F(SpanTexels, NothingPastTheLastTexelIsReadWithoutARepeat) {
  struct TLayout {
    int Channels;
    int Stride; ///< from one texel to the next
  };
  constexpr TLayout kLayouts[] = {{4, 4}, {3, 3}, {2, 2}, {1, 1}, {3, 4}, {4, 5}, {1, 7}};
  for (const int width : {1, 2, 3, 8}) {
    for (const TLayout layout : kLayouts) {
      const int height = 1 + (width + layout.Stride) % 3;
      const int rowStride = width * layout.Stride + layout.Stride % 2 * 5;
      const int size = (height - 1) * rowStride + (width - 1) * layout.Stride + layout.Channels;
      const TGuardedBlock block(static_cast<std::size_t>(size));
      for (int i = 0; i < size; ++i) {
        block.Data[i] = static_cast<std::uint8_t>(37 * i + 11);
      }
      for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
        for (const unsigned int wrap : {GL_CLAMP_TO_EDGE, GL_CLAMP_TO_BORDER, GL_CLAMP}) {
          Expect(std::to_string(width) + " by " + std::to_string(height) + " of " +
                     std::to_string(layout.Channels) + " in " + std::to_string(layout.Stride) +
                     " bytes, filter " + std::to_string(filter) + ", wrap " + std::to_string(wrap),
                 [&](TRenderCPU& gl) {
                   TDataSurface image;
                   ASSERT_TRUE(image.Create(width, height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8,
                                            layout.Channels, block.Data));
                   image.PixelStride = layout.Stride;
                   image.RowStride = rowStride;
                   Texture(gl, 1, 1, filter, wrap, wrap);
                   ASSERT_TRUE(gl.MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
                   gl.m_TexUnits[0].Sampler.m_BorderColor = {0.25, 0.5, 0.75, 0.375};
                   for (int y = 0; y < kHeight; ++y) {
                     const double t = -0.5 + 2.0 * y / kHeight;
                     Row(gl, y, y % 2 == 0 ? -0.5 : 0.0, y % 2 == 0 ? 1.5 : 1.0, t);
                   }
                   // From the first texel's middle to the last one's, in rows of every length.
                   const double s = 0.5001 / width;
                   const double t = 0.5001 / height;
                   for (int y = 0; y < kHeight; ++y) {
                     const double right = zx_test::Clip(y % kWidth, kWidth);
                     const double bottom = zx_test::Clip(y - 0.4, kHeight);
                     const double top = zx_test::Clip(y + 0.4, kHeight);
                     gl.Begin(GL_QUADS);
                     gl.TexCoord2d(s, t);
                     gl.Vertex2d(-1, bottom);
                     gl.TexCoord2d(1 - s, t);
                     gl.Vertex2d(right, bottom);
                     gl.TexCoord2d(1 - s, 1 - t);
                     gl.Vertex2d(right, top);
                     gl.TexCoord2d(s, 1 - t);
                     gl.Vertex2d(-1, top);
                     gl.End();
                   }
                   ASSERT_TRUE(gl.MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
                 });
        }
      }
    }
  }
}

} // namespace
