#pragma once

#include "Shaders.h"
#include "World.h"

// Bytes as calls for the state: switches, matrices, lights, programs, and the queries of it.

namespace fuzz_render {

inline void Switches(TWorld& w) {
  switch (w.In.Below(20)) {
  case 0:
  case 1:
  case 2:
  case 3:
    w.R->Enable(w.In.Enum());
    break;
  case 4:
    w.R->Disable(w.In.Enum());
    break;
  case 5:
    w.R->PushAttrib(w.In.Raw<unsigned int>());
    break;
  case 6:
    w.R->PopAttrib();
    break;
  case 7: {
    const auto f = w.In.Enums<2>();
    w.R->BlendFunc(f[0], f[1]);
    break;
  }
  case 8:
    w.R->BlendFunc(770, 771);
    break;
  case 9:
    w.R->DepthFunc(w.In.Enum());
    break;
  case 10: {
    const unsigned int function = w.In.Enum();
    const int reference = w.In.Int();
    w.R->StencilFunc(function, reference, w.In.Raw<unsigned int>());
    break;
  }
  case 11: {
    const auto o = w.In.Enums<2>();
    w.R->StencilOp(7680, o[0], o[1]);
    break;
  }
  case 12:
    w.R->StencilMask(w.In.Byte());
    break;
  case 13: {
    const auto m = w.In.Bools<4>();
    w.R->ColorMask(m[0], m[1], m[2], m[3]);
    break;
  }
  case 14:
    w.R->DepthMask(w.In.Bool());
    break;
  case 15:
    w.R->CullFace(w.In.Enum());
    break;
  case 16:
    w.R->FrontFace(w.In.Enum());
    break;
  case 17:
    w.R->Hint(3152, w.In.Enum());
    break;
  case 18: {
    const auto o = w.In.Floats<2>();
    w.R->PolygonOffset(o[0], o[1]);
    break;
  }
  default:
    w.R->ShadeModel(w.In.Enum());
    break;
  }
}

inline void Matrices(TWorld& w) {
  switch (w.In.Below(10)) {
  case 0:
    w.R->MatrixMode(w.In.Enum());
    break;
  case 1:
    w.R->MatrixMode(5888 + w.In.Below(3));
    break;
  case 2:
    w.R->PushMatrix();
    break;
  case 3:
    w.R->PopMatrix();
    break;
  case 4:
    w.R->LoadIdentity();
    break;
  case 5:
    w.R->MultMatrixd(static_cast<const double*>(static_cast<const void*>(kMemory.data())));
    break;
  case 6: {
    const auto n = w.In.Numbers<4>();
    w.R->Frustum(n[0], n[1], n[2], 1, 1, n[3]);
    break;
  }
  case 7: {
    const auto n = w.In.Numbers<4>();
    w.R->Ortho(n[0], 1, n[1], 1, n[2], n[3]);
    break;
  }
  case 8: {
    const auto n = w.In.Numbers<4>();
    w.R->Rotated(n[0] * 90, n[1], n[2], n[3]);
    break;
  }
  default: {
    const auto n = w.In.Numbers<3>();
    w.R->Translated(n[0], n[1], n[2]);
    break;
  }
  }
}

inline void Lights(TWorld& w) {
  const auto v = w.In.Floats<4>();
  switch (w.In.Below(8)) {
  case 0: {
    const unsigned int light = 16384 + w.In.Below(9);
    w.R->Lightfv(light, 4608 + w.In.Below(10), v.data());
    break;
  }
  case 1: {
    const unsigned int light = 16384 + w.In.Below(9);
    w.R->Lightf(light, w.In.Enum(), v[0]);
    break;
  }
  case 2: {
    const unsigned int light = w.In.Below(9);
    w.R->EnableLight(light, w.In.Bool());
    break;
  }
  case 3:
    w.R->EnableLighting(w.In.Bool());
    break;
  case 4:
    w.R->LightModelfv(w.In.Enum(), v.data());
    break;
  case 5:
    w.R->LightModeli(2898, w.In.Bool());
    break;
  case 6: {
    const unsigned int face = 1028 + w.In.Below(5);
    w.R->Materialfv(face, w.In.Enum(), v.data());
    break;
  }
  default: {
    const auto e = w.In.Enums<2>();
    w.R->ColorMaterial(e[0], e[1]);
    break;
  }
  }
}

inline void Queries(TWorld& w) {
  int ints[16] = {};
  float floats[16] = {};
  double doubles[16] = {};
  const unsigned int name = w.In.Enum();
  switch (w.In.Below(8)) {
  case 0:
    w.R->GetIntegerv(name, w.In.Bool() ? ints : nullptr);
    w.Tell(ints);
    break;
  case 1:
    w.R->GetFloatv(name, floats);
    break;
  case 2:
    w.R->GetDoublev(name, doubles);
    break;
  case 3:
    floats[0] = 45;
    w.R->GetLight(16384 + w.In.Below(9), name, floats);
    break;
  case 4:
    w.R->GetVertexAttrib(w.In.Below(9), name, ints);
    break;
  case 5:
    w.R->GetBufferParameter(34962, name, ints);
    w.Tell(ints);
    break;
  case 6:
    w.Tell(w.R->IsEnabled(name));
    break;
  default:
    w.Tell(w.R->GetError());
    break;
  }
}

inline Zx3D::TFragmentShaderCPU* NewFragmentShader(TWorld& w) {
  const unsigned int kind = w.In.Byte();
  if (kind % 2 != 0) {
    return new TWildRowShader((kind & 2) != 0);
  }
  return new TWildFragmentShader((kind & 2) != 0);
}

inline void Programs(TWorld& w) {
  switch (w.In.Below(4)) {
  case 0:
    w.R->SetProgram(nullptr);
    break;
  case 1:
  case 2: {
    auto* vertex = new TWildVertexShader;
    vertex->Count = w.In.Int();
    vertex->Slot = w.In.Int() % 1000;
    Zx3D::TFragmentShaderCPU* fragment = NewFragmentShader(w);
    auto* program = new Zx3D::TProgramCPU;
    program->SetShaderV(w.In.Bool() ? vertex : nullptr);
    program->SetShaderF(w.In.Bool() ? fragment : nullptr);
    w.R->SetProgram(program);
    program->Release();
    vertex->Release();
    fragment->Release();
    break;
  }
  default:
    w.R->Uniform(w.In.Int(), MAT4<double>{});
    break;
  }
}

} // namespace fuzz_render
