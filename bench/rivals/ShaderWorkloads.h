#pragma once

#include <memory>

#include "../BareShaders.h"
#include "Scene.h"
#include "VertexWorkloads.h"

// Shaders that a caller wrote. Nothing else offers them, so that they are timed alone.
namespace rivals {

using TRenderCPU = Zx3D::TRenderCPU;

// --- Fragment shaders

using zx_bench::TEmptyFragment;

/// How many fragments a frame has; not timed.
class TCountingFragment : public zx_bench::TBareFragment<> {
public:
  bool Execute(TRenderCPU::VAR_DATA*, TRenderCPU::FS_DATA*) override {
    ++Count;
    return true;
  }

  double Count = 0;
};

class TColorFragment : public zx_bench::TBareFragment<> {
public:
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    f->Color = (*v)[1];
    return true;
  }
};

/// Discards each second column.
class TDiscardingFragment : public zx_bench::TBareFragment<> {
public:
  bool Execute(TRenderCPU::VAR_DATA*, TRenderCPU::FS_DATA* f) override { return (f->X & 1) != 0; }
};

class TTexelFragment : public zx_bench::TBareFragment<> {
public:
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    const vec_t_<double, 4>& at = (*v)[static_cast<std::size_t>(m_Render->m_VarTexCoord)];
    m_Render->m_TexUnits[0].Sampler.GetValue(vec_t_<double, 2>{at.x, at.y}, &f->Color);
    return true;
  }
};

// --- Vertex shaders

/// Position and colour, with as many live slots as told.
class TPassVertex : public zx_bench::TBareVertex {
public:
  explicit TPassVertex(int slots) : m_Slots(slots) {}
  void Begin() override {
    m_Render->m_VarPosition = 0;
    m_Render->m_VarColor = 1;
    m_Render->m_VarSecondary = -1;
    m_Render->m_VarBackColor = -1;
    m_Render->m_VarBackSecondary = -1;
    m_Render->m_VarCount = m_Slots;
  }
  void Execute(TRenderCPU::VAR_DATA* v) override {
    const TRenderCPU& gl = *m_Render;
    const MAT4<double>& m = gl.m_ModelViewProjection;
    const vec_t_<double, 4>& p = gl.m_CurVertex;
    vec_t_<double, 4>& out = (*v)[0];
    for (std::size_t i = 0; i < 4; ++i) {
      const int row = static_cast<int>(i);
      out[i] = m[row] * p.x + m[4 + row] * p.y + m[8 + row] * p.z + m[12 + row];
    }
    for (std::size_t i = 1; i < static_cast<std::size_t>(m_Slots); ++i) {
      (*v)[i] = gl.m_CurColor;
    }
  }

private:
  int m_Slots;
};

/// Installs a pair, either of which may be null; the context keeps what it needs.
inline void Install(TRenderCPU& gl, Zx3D::TVertexShaderCPU* vertex,
                    Zx3D::TFragmentShaderCPU* fragment) {
  auto* const program = new Zx3D::TProgramCPU;
  program->SetShaderV(vertex);
  program->SetShaderF(fragment);
  gl.SetProgram(program);
  program->Release();
  if (vertex != nullptr) {
    vertex->Release();
  }
  if (fragment != nullptr) {
    fragment->Release();
  }
}

// --- Families

/// What distinguishes the three families of fragment shaders.
struct TFragmentFamily {
  const char* Name;
  bool Depth;
  bool Perspective;
};

template <class TFragment>
void AddFragment(TScene<TRenderCPU>& scene, const TFragmentFamily& family, const char* name,
                 const std::function<void()>& setUp) {
  scene.Add(family.Name, name, [&scene, family, setUp] {
    TRenderCPU& gl = scene.Gl;
    gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, family.Perspective ? GL_NICEST : GL_FASTEST);
    if (family.Depth) {
      scene.Depth(GL_LEQUAL);
    }
    if (family.Perspective) {
      scene.Perspective();
      gl.Translatef(0, 0, -2);
      gl.Rotatef(20, 1, 0, 0);
    }
    setUp();
    if (family.Depth) {
      Flatten(&scene.Mesh); // what fails the test is no pixel of a shader
    }
    auto* const counter = new TCountingFragment;
    counter->AddRef();
    Install(gl, nullptr, counter);
    scene.Frame();
    scene.Items = counter->Count;
    Install(gl, nullptr, new TFragment);
    counter->Release();
  });
  scene.Variants.back().Unit = "pixels";
}

inline void ListFragments(TScene<TRenderCPU>& scene, const TFragmentFamily& family) {
  const auto quads = [&scene](TSubmission by, float angle) {
    scene.Use(MakeShapes({8, 4, 250000, false, 0.4f, angle}), GL_QUADS, by);
  };
  AddFragment<TEmptyFragment>(scene, family, "empty_large",
                              [=] { quads(TSubmission::Immediate, 0); });
  AddFragment<TEmptyFragment>(scene, family, "empty_rotated_30",
                              [=] { quads(TSubmission::Arrays, 30); });
  AddFragment<TEmptyFragment>(scene, family, "empty_triangles_300px", [&scene] {
    scene.Use(MakeShapes({2000, 3, 300, true}), GL_TRIANGLES);
  });
  AddFragment<TEmptyFragment>(scene, family, "empty_triangles_40px", [&scene] {
    scene.Use(MakeShapes({10000, 3, 40, true}), GL_TRIANGLES, TSubmission::Elements);
  });
  AddFragment<TEmptyFragment>(scene, family, "empty_lit_two_sided", [=, &scene] {
    scene.Lights(1, false);
    scene.Gl.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1); // six live slots
    quads(TSubmission::Immediate, 0);
  });
  AddFragment<TEmptyFragment>(scene, family, "empty_stencil_blended", [=, &scene] {
    scene.Stencil(GL_ALWAYS, 0, GL_KEEP, GL_INCR);
    scene.Blend();
    quads(TSubmission::Immediate, 0);
  });
  AddFragment<TColorFragment>(scene, family, "color", [=] { quads(TSubmission::Immediate, 0); });
  AddFragment<TDiscardingFragment>(scene, family, "discarding",
                                   [=] { quads(TSubmission::Immediate, 0); });
  AddFragment<TTexelFragment>(scene, family, "texel_nearest", [=, &scene] {
    scene.Texture(GL_NEAREST);
    TMesh mesh = MakeShapes({8, 4, 250000, false, 0.4f});
    mesh.TexCoords.assign(static_cast<std::size_t>(2 * mesh.Vertices()), 0.3f);
    scene.Use(mesh, GL_QUADS, TSubmission::Immediate);
  });
}

inline void ListVertexShaders(TScene<TRenderCPU>& scene) {
  const auto add = [&scene](const char* name, int slots, const std::function<void()>& setUp) {
    scene.Add("shader_vertex", name, [&scene, slots, setUp] {
      setUp();
      scene.Items = scene.By == TSubmission::Elements
                        ? static_cast<double>(scene.Mesh.Indices.size())
                        : scene.Mesh.Vertices();
      Install(scene.Gl, new TPassVertex(slots), nullptr);
    });
    scene.Variants.back().Unit = "vertices";
  };
  constexpr int kCount = 30000;
  const auto outside = [&scene](TSubmission by) {
    scene.Use(MakeOutside(kCount, 3, 0.1f), GL_TRIANGLES, by);
  };
  add("outside_arrays", 2, [=] { outside(TSubmission::Arrays); });
  add("outside_immediate", 2, [=] { outside(TSubmission::Immediate); });
  add("outside_elements", 2, [=] { outside(TSubmission::Elements); });
  add("outside_eight_slots", 8, [=] { outside(TSubmission::Arrays); });
  add("culled_arrays", 2, [&scene] {
    scene.Cull(GL_FRONT);
    scene.Use(MakeShapes({kCount, 3, 10, true, 0.9f}), GL_TRIANGLES);
  });
  add("sphere_elements_culled", 2, [&scene] {
    scene.Cull(GL_FRONT_AND_BACK);
    TMesh mesh = MakeSphere(79);
    scene.Use(mesh, GL_TRIANGLES, TSubmission::Elements);
  });
  add("points", 2, [&scene] { scene.Use(MakeShapes({kCount, 1}), GL_POINTS); });
  add("triangles_10px", 2, [&scene] {
    scene.Use(MakeShapes({kCount, 3, 10, true}), GL_TRIANGLES);
  });
}

inline void ListShaders(TScene<TRenderCPU>& scene) {
  ListFragments(scene, {"shader_fragment", false, false});
  ListFragments(scene, {"shader_fragment_depth", true, false});
  ListFragments(scene, {"shader_fragment_perspective", false, true});
  ListVertexShaders(scene);
}

} // namespace rivals
