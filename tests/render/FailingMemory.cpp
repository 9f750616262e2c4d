// Every allocation of every operation of a context fails once. What is then stated happens: a
// result is false, an error is reported or `std::bad_alloc` is thrown; nothing leaks, and the
// context is as it was before the call, unless the operation says otherwise.

#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include "object/FailingMalloc.h"

#include "Scene.h"

namespace {

using Zx3D::TRenderCPU;
using zx_test::TMallocWatch;
using zx_test::TScene;

constexpr int kSize = 8;

class RenderMemory : public testing::Test {
protected:
  using TStep = std::function<void(TRenderCPU&)>;

  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the address sanitizer has the allocator";
    }
  }

  /// Runs `operation` on a context that `prepare` has set up, with its first allocation failing,
  /// then its second, until none is left to fail. `look` is told whether one failed, and may call
  /// anything. The whole life of the context is watched for blocks that stay. Returns how many
  /// allocations the operation makes.
  static unsigned long FailEach(const TStep& prepare, const std::function<bool(TRenderCPU&)>& run,
                                const std::function<void(TRenderCPU&, bool)>& look) {
    const unsigned long before = AllocationsOf(prepare);
    for (unsigned long at = 1; at < 1000; ++at) {
      if (!RunOnce(before + at, before, prepare, run, look)) {
        EXPECT_FALSE(RunOnce(0, before, prepare, run, look));
        return at - 1;
      }
    }
    ADD_FAILURE() << "no end";
    return 0;
  }

  /// For an operation that throws when there is no memory.
  static unsigned long FailEachThrow(const TStep& prepare, const TStep& operation,
                                     const std::function<void(TRenderCPU&, bool)>& look) {
    return FailEach(
        prepare,
        [&operation](TRenderCPU& gl) {
          operation(gl);
          return true;
        },
        look);
  }

  /// Whether allocation `failAt` of a context's life came to fail. `look` is called if it did, and
  /// where none was to fail, which is 0.
  static bool RunOnce(unsigned long failAt, unsigned long before, const TStep& prepare,
                      const std::function<bool(TRenderCPU&)>& run,
                      const std::function<void(TRenderCPU&, bool)>& look) {
    const TMallocWatch watch(failAt);
    bool failed = false;
    bool done = false;
    {
      const TScene scene(kSize, kSize);
      prepare(*scene);
      EXPECT_EQ(before, watch.Allocations()) << "the preparation is not the same each time";
      try {
        done = run(*scene);
      } catch (const std::bad_alloc&) {
        done = false;
      }
      failed = watch.Failed();
      if (failed || failAt == 0) {
        look(*scene, failed);
      }
    }
    EXPECT_EQ(0, watch.LiveBlocks()) << "blocks stay when allocation " << failAt << " fails";
    EXPECT_EQ(!failed, done) << "allocation " << failAt;
    return failed;
  }

  static unsigned long AllocationsOf(const TStep& prepare) {
    const TMallocWatch watch;
    const TScene scene(kSize, kSize);
    prepare(*scene);
    return watch.Allocations();
  }

  static void Nothing(TRenderCPU&) {}
};

unsigned int MakeTexture(TRenderCPU& gl) {
  unsigned int id = 0;
  const std::uint8_t texels[16] = {9, 8, 7, 6, 5, 4, 3, 2, 1};
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
  return id;
}

// A context that draws, with what is bound to unit 0: whatever failed, that goes on.
void ExpectDraws(TRenderCPU& gl) {
  gl.GetError();
  gl.Clear(true, true, true);
  gl.Color4d(0, 1, 0, 1);
  gl.Enable(GL_TEXTURE_2D);
  zx_test::DrawFullQuad(gl);
  gl.Disable(GL_TEXTURE_2D);
  zx_test::DrawFullQuad(gl);
  EXPECT_EQ(255, TScene::At(*gl.m_ColorSurface, 4, 4)[1]);
  EXPECT_EQ(0u, gl.GetError());
}

// --- Textures

TEST_F(RenderMemory, NamesOfTexturesComeTogetherOrNotAtAll) {
  for (const int there : {0, 1, 40}) {
    const unsigned long count = FailEachThrow(
        [there](TRenderCPU& gl) {
          for (int i = 0; i < there; ++i) {
            MakeTexture(gl);
          }
        },
        [](TRenderCPU& gl) {
          unsigned int ids[5] = {};
          gl.GenTextures(5, ids);
        },
        [there](TRenderCPU& gl, bool failed) {
          const auto first = static_cast<unsigned int>(there + 1);
          for (unsigned int id = first; id < first + 5 && gl.m_Textures != nullptr; ++id) {
            EXPECT_EQ(!failed, gl.IsTexture(id)) << id;
          }
          unsigned int next = 0;
          gl.GenTextures(1, &next);
          EXPECT_EQ(failed ? first : first + 5, next) << "the lowest name that is free";
          ExpectDraws(gl);
        });
    EXPECT_GE(count, 10u) << "a surface for each name, and what others hold it by";
  }
}

TEST_F(RenderMemory, ASurfaceThatCannotBeAttachedStaysTheCallers) {
  const auto surface = std::make_unique<TDataSurface>();
  ASSERT_TRUE(surface->Create(3, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  const unsigned char* const pixels = surface->Data;
  const auto attachAndDetach = [&](TRenderCPU& gl) {
    const unsigned int id = gl.AttachTexture(surface.get());
    EXPECT_EQ(1u, id);
    EXPECT_EQ(surface.get(), gl.DetachTexture(id));
  };
  const unsigned long count = FailEachThrow(Nothing, attachAndDetach, [&](TRenderCPU& gl, bool) {
    EXPECT_EQ(pixels, surface->Data);
    attachAndDetach(gl);
    ExpectDraws(gl);
  });
  EXPECT_GE(count, 3u);
}

TEST_F(RenderMemory, AnImageWithoutMemoryIsReportedAndLeavesTheTextureEmpty) {
  const std::uint8_t texels[64] = {};
  const unsigned long count = FailEach(
      [](TRenderCPU& gl) { MakeTexture(gl); },
      [&](TRenderCPU& gl) {
        gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
        const unsigned int error = gl.GetError();
        EXPECT_TRUE(error == GL_NO_ERROR || error == GL_INVALID_OPERATION) << error;
        return error == GL_NO_ERROR;
      },
      [](TRenderCPU& gl, bool failed) {
        const TRenderCPU::TTexSampler& sampler = gl.m_TexUnits[0].Sampler;
        EXPECT_EQ(failed ? 0 : 4, sampler.m_Surface->Width);
        EXPECT_EQ(failed ? 0 : 4, sampler.m_SurfaceWidth);
        EXPECT_EQ(failed, sampler.m_Surface->Data == nullptr);
        EXPECT_EQ(failed, sampler.m_GetValue == &TRenderCPU::TTexSampler::GetValueBorder);
        ExpectDraws(gl);
      });
  EXPECT_EQ(1u, count);
}

// A texture from its own pixels: those live until they are copied.
TEST_F(RenderMemory, AnImageFromTheTexturesOwnPixels) {
  const unsigned long count =
      FailEach([](TRenderCPU& gl) { MakeTexture(gl); },
               [&](TRenderCPU& gl) {
                 const void* const own = gl.m_TexUnits[0].Sampler.m_Surface->Data;
                 gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, own);
                 return gl.GetError() == GL_NO_ERROR;
               },
               [](TRenderCPU& gl, bool failed) {
                 if (!failed) {
                   EXPECT_EQ(9, gl.m_TexUnits[0].Sampler.m_Surface->Data[0]);
                 }
                 ExpectDraws(gl);
               });
  EXPECT_EQ(1u, count);
}

TEST_F(RenderMemory, SharingWithoutMemoryLeavesBothAsTheyWere) {
  unsigned long count = 0;
  for (unsigned long at = 1; at < 100; ++at) {
    const TScene giver(kSize, kSize);
    const TScene taker(kSize, kSize);
    bool failed = false;
    bool shared = false;
    {
      const TMallocWatch watch(at);
      shared = giver->_Share(taker.Get());
      failed = watch.Failed();
      EXPECT_EQ(failed ? 0 : 1, watch.LiveBlocks()) << "the table";
    }
    EXPECT_EQ(!failed, shared);
    EXPECT_EQ(failed, giver->m_Textures == nullptr);
    EXPECT_EQ(giver->m_Textures, taker->m_Textures);
    if (!failed) {
      break;
    }
    ++count;
    EXPECT_TRUE(giver->_Share(taker.Get()));
  }
  EXPECT_EQ(1u, count);
}

// --- Buffers and vertex arrays

class RenderNamesMemory : public RenderMemory {
protected:
  using TNames = void (TRenderCPU::*)(int, unsigned int*);

  // Five names are asked for beside a free one and `there` others.
  static void ExpectNamesTogether(TNames gen, TNames remove) {
    for (const int there : {0, 1, 17}) {
      const unsigned long count = FailEachThrow(
          [&](TRenderCPU& gl) {
            std::vector<unsigned int> ids(static_cast<std::size_t>(there) + 1);
            (gl.*gen)(there + 1, ids.data());
            (gl.*remove)(1, ids.data()); // a free name among those that are taken
          },
          [&](TRenderCPU& gl) {
            unsigned int ids[5] = {};
            (gl.*gen)(5, ids);
          },
          [&](TRenderCPU& gl, bool failed) {
            unsigned int next = 0;
            (gl.*gen)(1, &next);
            EXPECT_EQ(failed ? 1u : static_cast<unsigned int>(there + 6), next);
            ExpectDraws(gl);
          });
      EXPECT_GE(count, 5u);
    }
  }
};

TEST_F(RenderNamesMemory, NamesOfBuffersComeTogetherOrNotAtAll) {
  ExpectNamesTogether(&TRenderCPU::GenBuffers, &TRenderCPU::DeleteBuffers);
}

TEST_F(RenderNamesMemory, NamesOfVertexArraysComeTogetherOrNotAtAll) {
  ExpectNamesTogether(&TRenderCPU::GenVertexArrays, &TRenderCPU::DeleteVertexArrays);
}

TEST_F(RenderMemory, ABufferWithoutMemoryKeepsItsContents) {
  const std::vector<unsigned char> first(100, 0x11);
  const std::vector<unsigned char> second(5000, 0x22);
  for (const bool named : {false, true}) {
    const unsigned long count = FailEachThrow(
        [&](TRenderCPU& gl) {
          unsigned int id = 0;
          gl.GenBuffers(1, &id);
          gl.BindBuffer(GL_ARRAY_BUFFER, id);
          gl.BufferData(GL_ARRAY_BUFFER, 100, first.data(), GL_STREAM_DRAW);
        },
        [&](TRenderCPU& gl) {
          if (named) {
            gl.NamedBufferData(1, 5000, second.data(), GL_DYNAMIC_DRAW);
          } else {
            gl.BufferData(GL_ARRAY_BUFFER, 5000, second.data(), GL_DYNAMIC_DRAW);
          }
        },
        [&](TRenderCPU& gl, bool failed) {
          EXPECT_EQ(failed ? first : second, gl.m_Buffers[0]->Data);
          EXPECT_EQ(failed ? unsigned{GL_STREAM_DRAW} : unsigned{GL_DYNAMIC_DRAW},
                    gl.m_Buffers[0]->Usage);
          ExpectDraws(gl);
        });
    EXPECT_EQ(1u, count);
  }
}

// A size that no block can have is exhausted memory like any other.
TEST_F(RenderMemory, ABufferOfAllBytesThereAre) {
  const TScene s(kSize, kSize);
  unsigned int id = 0;
  s->GenBuffers(1, &id);
  s->BindBuffer(GL_ARRAY_BUFFER, id);
  s->BufferData(GL_ARRAY_BUFFER, 3, "ab", GL_STATIC_DRAW);
  EXPECT_THROW(s->BufferData(GL_ARRAY_BUFFER, INT64_MAX, nullptr, GL_STREAM_DRAW), std::bad_alloc);
  EXPECT_EQ(3u, s->m_Buffers[0]->Data.size());
  EXPECT_EQ(unsigned{GL_STATIC_DRAW}, s->m_Buffers[0]->Usage);
}

// --- Stacks

TEST_F(RenderMemory, APushWithoutMemoryLeavesTheStackAsItWas) {
  struct TPush {
    const char* Name;
    TStep Push;
    std::function<std::size_t(const TRenderCPU&)> Depth;
  };
  std::vector<TPush> pushes = {
      {"modelview", [](TRenderCPU& gl) { gl.PushMatrix(); },
       [](const TRenderCPU& gl) { return gl.m_ModelViewStack.size(); }},
      {"projection",
       [](TRenderCPU& gl) {
         gl.MatrixMode(GL_PROJECTION);
         gl.PushMatrix();
       },
       [](const TRenderCPU& gl) { return gl.m_ProjectionStack.size(); }},
      {"texture",
       [](TRenderCPU& gl) {
         gl.ActiveTexture(GL_TEXTURE0 + 3);
         gl.MatrixMode(GL_TEXTURE);
         gl.PushMatrix();
       },
       [](const TRenderCPU& gl) { return gl.m_TexUnits[3].TexMatrixStack.size(); }},
      {"arrays", [](TRenderCPU& gl) { gl.PushClientAttrib(~0u); },
       [](const TRenderCPU& gl) { return gl.m_ClientAttribStack.size(); }}};
  for (unsigned int bit = 1; bit != 0; bit <<= 1) {
    pushes.push_back({"attributes of one kind", [bit](TRenderCPU& gl) { gl.PushAttrib(bit); },
                      [](const TRenderCPU& gl) { return gl.m_AttribStack.size(); }});
  }
  pushes.push_back({"all attributes", [](TRenderCPU& gl) { gl.PushAttrib(~0u); },
                    [](const TRenderCPU& gl) { return gl.m_AttribStack.size(); }});
  for (const TPush& push : pushes) {
    for (const int before : {0, 1, 4}) {
      const unsigned long count = FailEachThrow(
          [&](TRenderCPU& gl) {
            for (int i = 0; i < before; ++i) {
              push.Push(gl);
            }
          },
          push.Push,
          [&](TRenderCPU& gl, bool failed) {
            EXPECT_EQ(static_cast<std::size_t>(before + (failed ? 0 : 1)), push.Depth(gl))
                << push.Name;
          });
      EXPECT_GE(count, before == 0 ? 1u : 0u) << push.Name;
    }
  }
}

// --- Sizes

// The old surfaces go before the new ones come: without memory the context is no longer created.
TEST_F(RenderMemory, ASizeWithoutMemory) {
  const unsigned long count = FailEach([](TRenderCPU& gl) { MakeTexture(gl); },
                                       [](TRenderCPU& gl) { return gl.SetSize(16, 12); },
                                       [](TRenderCPU& gl, bool failed) {
                                         EXPECT_EQ(!failed, gl.m_Created);
                                         EXPECT_EQ(failed ? 0 : 16, gl.m_Width);
                                         EXPECT_EQ(failed, gl.m_ColorSurface == nullptr);
                                         if (failed) {
                                           gl.Clear(true, true, true);
                                           EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, gl.GetError());
                                           EXPECT_FALSE(gl.SetSize(16, 12));
                                           EXPECT_TRUE(gl.Create(16, 12, nullptr));
                                         }
                                         ExpectDraws(gl);
                                       });
  EXPECT_GE(count, 6u) << "three surfaces and their pixels";
}

// --- Programs

// The standard shaders come back without an allocation, and a program of the caller's is taken
// without one.
TEST_F(RenderMemory, ProgramsAreExchangedWithoutAnyMemory) {
  const TScene s(kSize, kSize);
  const zx_test::THeld<Zx3D::TProgramCPU> program;
  const zx_test::THeld<zx_test::TPassVertexShader> vertex;
  const zx_test::THeld<zx_test::TSeeingFragmentShader> fragment;
  const TMallocWatch watch(1);
  program->SetShaderV(vertex.Get());
  program->SetShaderF(fragment.Get());
  s->SetProgram(program.Get());
  s->SetProgram(nullptr);
  s->Uniform(3, 1.0, 2.0, 3.0, 4.0);
  EXPECT_EQ(0u, watch.Allocations());
}

// --- What throws a message

// Without memory for its text it is `std::bad_alloc` that is thrown, or the message without it;
// either way nothing has changed.
TEST_F(RenderMemory, MessagesWithoutMemory) {
  const TStep calls[] = {[](TRenderCPU& gl) { gl.Viewport(1, 0, kSize, kSize); },
                         [](TRenderCPU& gl) { gl.ShadeModel(GL_FLAT); },
                         [](TRenderCPU& gl) { gl.BindTexture(0x0DE0, 1); },
                         [](TRenderCPU& gl) { gl.MoveTexImage2D(GL_TEXTURE_2D, 2, nullptr); },
                         [](TRenderCPU& gl) { gl.CopyTexImage2D(0, 0, 0, 0, 0, 0, 0, 0); },
                         [](TRenderCPU& gl) { gl.IsEnabled(GL_ALPHA_TEST); }};
  for (const TStep& call : calls) {
    const TScene s(kSize, kSize);
    const auto before = zx_test::EverythingLeft(*s);
    for (unsigned long at = 1; at < 100; ++at) {
      bool thrown = false;
      bool failed = false;
      long left = 0;
      {
        const TMallocWatch watch(at);
        try {
          call(*s);
        } catch (const TZxMessage&) {
          thrown = true;
        } catch (const std::bad_alloc&) {
          thrown = true;
        }
        failed = watch.Failed();
        left = watch.LiveBlocks();
      }
      EXPECT_TRUE(thrown);
      EXPECT_EQ(0, left);
      EXPECT_EQ(before, zx_test::EverythingLeft(*s));
      if (!failed) {
        break;
      }
    }
  }
}

// --- The rest needs none

TEST_F(RenderMemory, AllOtherOperationsGoWithout) {
  const TScene s(kSize, kSize);
  TRenderCPU& gl = *s;
  const unsigned int id = MakeTexture(gl);
  MakeTexture(gl);
  unsigned int buffer = 0;
  gl.GenBuffers(1, &buffer);
  TDataSurface image;
  ASSERT_TRUE(image.Create(2, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  const std::vector<vec_t_<double, 2>> outline = {{-0.5, -0.5}, {0.5, -0.5}, {0, 0.5}};
  const std::vector<std::vector<vec_t_<double, 2>>> domain = {outline, outline};
  std::uint8_t pixels[4 * kSize * kSize] = {};
  const float light[4] = {1, 2, 3, 1};
  TDataSurface* detached = nullptr;
  unsigned long allocations = 0;
  {
    const TMallocWatch watch(1);
    gl.BindTexture(GL_TEXTURE_2D, id);
    gl.TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    gl.MoveTexImage2D(GL_TEXTURE_2D, 0, &image);
    gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    gl.DrawPixels(kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    gl.ReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    gl.BindBuffer(GL_ARRAY_BUFFER, buffer);
    gl.BufferData(GL_ARRAY_BUFFER, 0, nullptr, GL_STATIC_DRAW);
    gl.MapBuffer(GL_ARRAY_BUFFER, GL_READ_WRITE);
    gl.UnmapBuffer(GL_ARRAY_BUFFER);
    gl.BindBuffer(GL_ARRAY_BUFFER, 0);
    gl.Lightfv(GL_LIGHT0, GL_POSITION, light);
    gl.Materialfv(GL_FRONT, GL_DIFFUSE, light);
    gl.Polygon(outline, {1, 0, 0}, 1, {0, 1, 0}, 1);
    gl.EnableClientState(GL_VERTEX_ARRAY);
    gl.Domain(domain, {1, 0, 0}, 1, {0, 1, 0}, 1);
    gl.DisableClientState(GL_VERTEX_ARRAY);
    gl.Rotated(30, 1, 2, 3);
    gl.Frustum(-1, 1, -1, 1, 1, 10);
    gl.Clear(true, true, true);
    detached = gl.DetachTexture(id);
    const unsigned int other = id + 1;
    gl.DeleteTextures(1, &other);
    gl.DeleteBuffers(1, &buffer);
    gl.GetError();
    gl.GetString(GL_VENDOR);
    allocations = watch.Allocations();
  }
  EXPECT_EQ(0u, allocations);
  delete detached;
}

} // namespace
