#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>

#include <cstring>

#include <gtest/gtest.h>

#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/StdFragmentShader.h>
#include <ZxCore3D/render/StdVertexShader.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TProgramCPU;
using Zx3D::TRenderCPU;

constexpr unsigned int kNone = 0xFFFFFFFF;

/// Knows the names "both", "vertex" and "attribute".
struct TNamedVertex : TPassVertexShader {
  unsigned int GetUniformLocation(const char* name) const override {
    return std::strcmp(name, "both") == 0 ? 3 : std::strcmp(name, "vertex") == 0 ? 0 : kNone;
  }
  unsigned int GetAttribLocation(const char* name) const override {
    return std::strcmp(name, "attribute") == 0 ? 5 : kNone;
  }
};

/// Knows the names "both" and "fragment".
struct TNamedFragment : TSeeingFragmentShader {
  unsigned int GetUniformLocation(const char* name) const override {
    return std::strcmp(name, "both") == 0 ? 4 : std::strcmp(name, "fragment") == 0 ? 6 : kNone;
  }
};

TEST(Program, StartsEmpty) {
  THeld<TProgramCPU> program;
  EXPECT_EQ(1u, program->GetRefCount());
  EXPECT_EQ(nullptr, program->m_ShaderV);
  EXPECT_EQ(nullptr, program->m_ShaderF);
  EXPECT_EQ(nullptr, program->GetShaderV());
  EXPECT_EQ(nullptr, program->GetShaderF());
  EXPECT_EQ(kNone, program->GetAttribLocation("both"));
  EXPECT_EQ(kNone, program->GetUniformLocation("both"));
  EXPECT_EQ(kNone, program->GetSubroutineIndex(0x8B31, "both"));
}

TEST(Program, HoldsAReferenceOnEach) {
  THeld<TPassVertexShader> v1;
  THeld<TPassVertexShader> v2;
  THeld<TSeeingFragmentShader> f1;
  THeld<TSeeingFragmentShader> f2;
  {
    THeld<TProgramCPU> program;
    program->SetShaderV(v1.Get());
    program->SetShaderF(f1.Get());
    EXPECT_EQ(v1.Get(), program->GetShaderV());
    EXPECT_EQ(f1.Get(), program->GetShaderF());
    EXPECT_EQ(2u, v1->GetRefCount());
    EXPECT_EQ(2u, f1->GetRefCount());
    program->SetShaderV(v1.Get()); // the held one: no effect
    program->SetShaderF(f1.Get());
    EXPECT_EQ(2u, v1->GetRefCount());
    EXPECT_EQ(2u, f1->GetRefCount());
    program->SetShaderV(v2.Get());
    program->SetShaderF(f2.Get());
    EXPECT_EQ(1u, v1->GetRefCount());
    EXPECT_EQ(1u, f1->GetRefCount());
    EXPECT_EQ(2u, v2->GetRefCount());
    EXPECT_EQ(2u, f2->GetRefCount());
    program->SetShaderV(nullptr);
    EXPECT_EQ(nullptr, program->GetShaderV());
    EXPECT_EQ(1u, v2->GetRefCount());
    program->SetShaderV(nullptr);
    program->SetShaderF(nullptr);
    EXPECT_EQ(1u, f2->GetRefCount());
    program->SetShaderV(v1.Get());
    program->SetShaderF(f1.Get());
  }
  EXPECT_EQ(1u, v1->GetRefCount()); // the destructor lets go
  EXPECT_EQ(1u, f1->GetRefCount());
}

TEST(Program, AsksTheVertexShaderFirst) {
  THeld<TNamedVertex> vertex;
  THeld<TNamedFragment> fragment;
  THeld<TProgramCPU> program;
  program->SetShaderF(fragment.Get());
  EXPECT_EQ(4u, program->GetUniformLocation("both"));
  EXPECT_EQ(kNone, program->GetAttribLocation("attribute"));
  program->SetShaderV(vertex.Get());
  EXPECT_EQ(3u, program->GetUniformLocation("both"));
  EXPECT_EQ(0u, program->GetUniformLocation("vertex"));
  EXPECT_EQ(6u, program->GetUniformLocation("fragment"));
  EXPECT_EQ(kNone, program->GetUniformLocation("neither"));
  EXPECT_EQ(5u, program->GetAttribLocation("attribute"));
  EXPECT_EQ(kNone, program->GetAttribLocation("both"));
  EXPECT_EQ(kNone, program->GetSubroutineIndex(0x8B31, "vertex"));
  program->SetShaderF(nullptr);
  EXPECT_EQ(kNone, program->GetUniformLocation("fragment"));
}

TEST(Program, OfTheStandardShadersKnowsNoNames) {
  TScene s;
  for (const char* name : {"", "color", "gl_Vertex"}) {
    EXPECT_EQ(kNone, s->GetProgram()->GetUniformLocation(name));
    EXPECT_EQ(kNone, s->GetProgram()->GetAttribLocation(name));
  }
}

TEST(SetProgram, InstallsThePair) {
  THeld<TPassVertexShader> vertex;
  THeld<TSeeingFragmentShader> fragment(true);
  THeld<TProgramCPU> program;
  program->SetShaderV(vertex.Get());
  program->SetShaderF(fragment.Get());
  EXPECT_EQ(nullptr, vertex->m_Render);
  TScene s;
  s->SetProgram(program.Get());
  EXPECT_EQ(program.Get(), s->GetProgram());
  EXPECT_EQ(vertex.Get(), s->m_VertexShader);
  EXPECT_EQ(fragment.Get(), s->m_FragmentShader);
  EXPECT_EQ(s.Get(), vertex->m_Render);
  EXPECT_EQ(s.Get(), fragment->m_Render);
  EXPECT_EQ(2u, program->GetRefCount());
  EXPECT_EQ(3u, vertex->GetRefCount());
  EXPECT_EQ(3u, fragment->GetRefCount());
  EXPECT_TRUE(s->m_CalcDepth);
  EXPECT_EQ(nullptr, s->m_StdVertexShader->m_Render);
  EXPECT_EQ(nullptr, s->m_StdFragmentShader->m_Render);
  EXPECT_EQ(2u, s->m_StdVertexShader->GetRefCount());
  EXPECT_EQ(1u, s->m_DefaultProgram->GetRefCount());

  s->SetProgram(program.Get()); // twice changes no count
  EXPECT_EQ(2u, program->GetRefCount());
  EXPECT_EQ(3u, vertex->GetRefCount());

  s->SetProgram(nullptr);
  EXPECT_EQ(s->m_DefaultProgram, s->GetProgram());
  EXPECT_EQ(s->m_StdVertexShader, s->m_VertexShader);
  EXPECT_EQ(s->m_StdFragmentShader, s->m_FragmentShader);
  EXPECT_EQ(s.Get(), s->m_StdVertexShader->m_Render);
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(nullptr, fragment->m_Render);
  EXPECT_EQ(1u, program->GetRefCount());
  EXPECT_EQ(2u, vertex->GetRefCount());
  EXPECT_FALSE(s->m_CalcDepth);
  EXPECT_EQ(0u, s->GetError());
}

TEST(SetProgram, FillsUpWithTheStandardShaders) {
  TScene s;
  THeld<TSeeingFragmentShader> fragment;
  THeld<TProgramCPU> program;
  program->SetShaderF(fragment.Get());
  s->SetProgram(program.Get());
  EXPECT_EQ(s->m_StdVertexShader, s->m_VertexShader);
  EXPECT_EQ(fragment.Get(), s->m_FragmentShader);
  s->Color4d(0.25, 0.5, 0.75, 1.0);
  DrawFullQuad(*s);
  EXPECT_EQ(64u, fragment->Seen.size());
  EXPECT_EQ((TPixel{64, 128, 191, 255}), s.Color(3, 3));

  THeld<TPassVertexShader> vertex;
  THeld<TProgramCPU> other;
  other->SetShaderV(vertex.Get());
  s->SetProgram(other.Get());
  EXPECT_EQ(vertex.Get(), s->m_VertexShader);
  EXPECT_EQ(s->m_StdFragmentShader, s->m_FragmentShader);

  THeld<TProgramCPU> empty;
  s->SetProgram(empty.Get());
  EXPECT_EQ(s->m_StdVertexShader, s->m_VertexShader);
  EXPECT_EQ(s->m_StdFragmentShader, s->m_FragmentShader);
  EXPECT_EQ(empty.Get(), s->GetProgram());
}

TEST(SetProgram, ReadsTheShadersAtInstallationOnly) {
  TScene s;
  THeld<TSeeingFragmentShader> first;
  THeld<TSeeingFragmentShader> second;
  THeld<TProgramCPU> program;
  program->SetShaderF(first.Get());
  s->SetProgram(program.Get());
  program->SetShaderF(second.Get());
  EXPECT_EQ(first.Get(), s->m_FragmentShader);
  s->SetProgram(program.Get()); // the same one: stops
  EXPECT_EQ(first.Get(), s->m_FragmentShader);
  s->SetProgram(nullptr);
  s->SetProgram(program.Get());
  EXPECT_EQ(second.Get(), s->m_FragmentShader);
}

struct TOtherProgram : Zx3D::TProgram {
  unsigned int GetAttribLocation(const char*) const override { return 0; }
  unsigned int GetUniformLocation(const char*) const override { return 0; }
  unsigned int GetSubroutineIndex(unsigned int, const char*) const override { return 0; }
};

TEST(SetProgram, RejectsAProgramOfAnotherKind) {
  TScene s;
  THeld<TProgramCPU> program;
  s->SetProgram(program.Get());
  THeld<TOtherProgram> other;
  s->SetProgram(other.Get());
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  EXPECT_EQ(program.Get(), s->GetProgram());
  EXPECT_EQ(1u, other->GetRefCount());
}

TEST(SetShaders, CountAndTellTheContext) {
  TScene s;
  THeld<TPassVertexShader> vertex;
  THeld<TSeeingFragmentShader> fragment(true);
  s->_SetVertexShader(vertex.Get());
  s->_SetFragmentShader(fragment.Get());
  EXPECT_EQ(2u, vertex->GetRefCount());
  EXPECT_EQ(2u, fragment->GetRefCount());
  EXPECT_EQ(s.Get(), vertex->m_Render);
  EXPECT_TRUE(s->m_CalcDepth);
  s->_SetVertexShader(vertex.Get());
  s->_SetFragmentShader(fragment.Get());
  EXPECT_EQ(2u, vertex->GetRefCount());
  EXPECT_EQ(2u, fragment->GetRefCount());
  s->_SetVertexShader(nullptr);
  s->_SetFragmentShader(nullptr);
  EXPECT_EQ(s->m_StdVertexShader, s->m_VertexShader);
  EXPECT_EQ(s->m_StdFragmentShader, s->m_FragmentShader);
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(nullptr, fragment->m_Render);
  EXPECT_EQ(1u, vertex->GetRefCount());
  EXPECT_EQ(1u, fragment->GetRefCount());
  EXPECT_FALSE(s->m_CalcDepth);
}

TEST(SetShaders, OutliveTheCallersReference) {
  TScene s;
  auto* const vertex = new TPassVertexShader;
  s->_SetVertexShader(vertex);
  EXPECT_EQ(1u, vertex->Release());
  DrawFullQuad(*s);
  EXPECT_EQ(4, vertex->Executes);
}

TEST(SetShaders, AShaderInTwoContextsHasTheLast) {
  TScene a;
  TScene b;
  THeld<TPassVertexShader> vertex;
  a->_SetVertexShader(vertex.Get());
  b->_SetVertexShader(vertex.Get());
  EXPECT_EQ(b.Get(), vertex->m_Render);
  EXPECT_EQ(3u, vertex->GetRefCount());
}

TEST(Program, DefaultStaysWhatItWasMadeWith) {
  // A default program whose shaders were taken out leaves null for the installed pair's place to
  // the standard ones.
  TScene s;
  THeld<TProgramCPU> program;
  s->m_DefaultProgram->SetShaderV(nullptr);
  s->SetProgram(program.Get());
  s->SetProgram(nullptr);
  EXPECT_EQ(s->m_StdVertexShader, s->m_VertexShader);
}

TEST(CustomShaders, InterpolatesExactlyItsSlots) {
  for (int slots = 1; slots <= 8; ++slots) {
    TScene s(4, 4);
    THeld<TPassVertexShader> vertex(slots);
    THeld<TSeeingFragmentShader> fragment;
    fragment->UseOwnColor = true;
    s->_SetVertexShader(vertex.Get());
    s->_SetFragmentShader(fragment.Get());
    for (int i = 3; i < 8; ++i) {
      s->VertexAttrib(i, vec_t_<double, 4>{1.0 * i, 2.0 * i, 3.0 * i, 4.0 * i});
    }
    for (std::size_t i = 0; i < 8; ++i) {
      s->m_VarFragment[i] = {-7, -7, -7, -7};
    }
    DrawFullQuad(*s);
    ASSERT_EQ(16u, fragment->Seen.size());
    for (const TSeenFragment& f : fragment->Seen) {
      for (std::size_t i = 3; i < 8; ++i) {
        const double expected = static_cast<int>(i) < slots ? static_cast<double>(i) : -7.0;
        EXPECT_DOUBLE_EQ(expected, f.Slots[i].x) << slots << ", " << i;
        EXPECT_DOUBLE_EQ(static_cast<int>(i) < slots ? 4.0 * expected : -7.0, f.Slots[i].w);
      }
    }
  }
}

TEST(CustomShaders, PositionIsSlotZeroWhateverTheTableSays) {
  struct TOdd : TPassVertexShader {
    TOdd() : TPassVertexShader(3) {}
    void Begin() override {
      TPassVertexShader::Begin();
      m_Render->m_VarPosition = 2;
    }
  };
  TScene s(4, 4);
  THeld<TOdd> odd;
  s->_SetVertexShader(odd.Get());
  DrawFullQuad(*s);
  EXPECT_EQ(16, s.Painted());
}

TEST(CustomShaders, ReadsUniformsAndAttributesFromTheContext) {
  struct TReading : TPassVertexShader {
    void Execute(TRenderCPU::VAR_DATA* v) override {
      (*v)[0] = m_Render->m_CurAttrib[0];
      (*v)[1] = m_Render->m_Uniforms[3];
    }
  };
  TScene s(4, 4);
  THeld<TReading> reading;
  s->_SetVertexShader(reading.Get());
  s->Uniform(3, 1.0, 0.5, 0.0, 1.0);
  s->Begin(GL_POINTS);
  s->VertexAttrib(0, vec_t_<double, 2>{Clip(1, 4), Clip(2, 4)});
  s->End();
  EXPECT_EQ((TPixel{255, 128, 0, 255}), s.Color(1, 2));
}

// --- Shaders without a created context

TEST(ShadersWithoutCreate, AreGivenBackWhenTheContextGoes) {
  THeld<TPassVertexShader> vertex;
  THeld<TSeeingFragmentShader> fragment;
  {
    TRenderCPU r;
    r._SetVertexShader(vertex.Get());
    r._SetFragmentShader(fragment.Get());
    EXPECT_EQ(&r, vertex->m_Render);
    EXPECT_EQ(2u, vertex->GetRefCount());
    EXPECT_EQ(2u, fragment->GetRefCount());
  }
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(nullptr, fragment->m_Render);
  EXPECT_EQ(1u, vertex->GetRefCount());
  EXPECT_EQ(1u, fragment->GetRefCount());
}

TEST(ShadersWithoutCreate, AreGivenBackWhenTheyCameAfterDestroy) {
  THeld<TPassVertexShader> vertex;
  THeld<TSeeingFragmentShader> fragment(true);
  {
    TScene s;
    s->Destroy();
    s->_SetVertexShader(vertex.Get());
    s->_SetFragmentShader(fragment.Get());
    EXPECT_TRUE(s->m_CalcDepth);
  }
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(nullptr, fragment->m_Render);
  EXPECT_EQ(1u, vertex->GetRefCount());
  EXPECT_EQ(1u, fragment->GetRefCount());
}

TEST(ShadersWithoutCreate, AreGivenBackByDestroyItself) {
  THeld<TPassVertexShader> vertex;
  THeld<TSeeingFragmentShader> fragment(true);
  TRenderCPU r;
  r._SetVertexShader(vertex.Get());
  r._SetFragmentShader(fragment.Get());
  r.Destroy();
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(nullptr, r.m_VertexShader);
  EXPECT_EQ(nullptr, r.m_FragmentShader);
  EXPECT_FALSE(r.m_CalcDepth);
  EXPECT_EQ(1u, vertex->GetRefCount());
  EXPECT_EQ(1u, fragment->GetRefCount());
}

// Its default program takes their place.
TEST(ShadersWithoutCreate, AreReplacedByCreate) {
  THeld<TPassVertexShader> vertex;
  TRenderCPU r;
  r._SetVertexShader(vertex.Get());
  ASSERT_TRUE(r.Create(2, 2, nullptr));
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(1u, vertex->GetRefCount());
  EXPECT_EQ(r.m_StdVertexShader, r.m_VertexShader);
}

TEST(ShadersWithoutCreate, OfAProgramAreGivenBackAsWell) {
  THeld<TPassVertexShader> vertex;
  THeld<TProgramCPU> program;
  program->SetShaderV(vertex.Get());
  {
    TScene s;
    s->Destroy();
    s->SetProgram(program.Get());
    EXPECT_EQ(s.Get(), vertex->m_Render);
  }
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(1u, program->GetRefCount());
  EXPECT_EQ(2u, vertex->GetRefCount()); // the program's and ours
}

} // namespace
