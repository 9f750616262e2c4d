// Tested by: tests/render/Triangles.cpp (Triangles.*, FarTriangles.*)

#include <algorithm>
#include <cmath>
#include <utility>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/KernelConditions.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/Facing.h>
#include <ZxCore3D/render/stages/RowWalk.h>
#include <ZxCore3D/render/stages/SlotMath.h>

namespace Zx3D {

// --- Edges and spans

void TRenderCPU::SetEdge(EDGE* e, VAR_DATA* a, VAR_DATA* b) {
  const bool upward = b->Slots[0].y >= a->Slots[0].y;
  e->Begin = upward ? a : b;
  e->End = upward ? b : a;
  SetDelta(e, m_VarCount);
}

void TRenderCPU::SetSpan(EDGE* e, VAR_DATA* a, VAR_DATA* b) {
  const bool rightward = b->Slots[0].x >= a->Slots[0].x;
  e->Begin = rightward ? a : b;
  e->End = rightward ? b : a;
  SetDelta(e, m_VarCount);
}

void TRenderCPU::Value(const EDGE& e, double t, VAR_DATA* out) {
  for (int i = 0; i < m_VarCount; ++i) {
    const vec_t_<double, 4>& delta = e.Delta.Slots[i];
    const vec_t_<double, 4>& begin = e.Begin->Slots[i];
    out->Slots[i] = {delta.x * t + begin.x, delta.y * t + begin.y, delta.z * t + begin.z,
                     delta.w * t + begin.w};
  }
}

// --- Set-up

// Whether culling discards a triangle of this facing.
bool TRenderEngine::IsCulled(bool front) const {
  return gl.m_CullFaceEnabled && (gl.m_CullFaceMode == GL_FRONT_AND_BACK ||
                                  gl.m_CullFaceMode == (front ? GL_FRONT : GL_BACK));
}

// Divides by w, which becomes 1/w.
static void DivideByW(vec_t_<double, 4>* at) {
  const double r = 1.0 / at->w;
  StoreVector(at, at->x * r, at->y * r, at->z, r);
}

void TRenderCPU::RasterizeTriangle(VAR_DATA* v) {
  vec_t_<double, 4>& p0 = v[0].Slots[0];
  vec_t_<double, 4>& p1 = v[1].Slots[0];
  vec_t_<double, 4>& p2 = v[2].Slots[0];
  DivideByW(&p0);
  DivideByW(&p1);
  DivideByW(&p2);
  const bool front = FacesFront({p0.x, p1.x, p2.x}, {p0.y, p1.y, p2.y}, m_FrontFaceCCW);
  m_Fragment.FrontFacing = front;
  if (m_Engine->IsCulled(front)) {
    return;
  }

  const auto toWindow = [this](vec_t_<double, 4>* at) {
    StoreVector(at, (at->x * 0.5 + 0.5) * m_Width - 0.5, (at->y * 0.5 + 0.5) * m_Height - 0.5,
                (at->z * at->w) * 0.5 + 0.5, at->w);
  };
  toWindow(&p0);
  toWindow(&p1);
  toWindow(&p2);
  // Within an array draw nothing else runs that could change state.
  if (TSpanJob* const job = m_Engine->DrawJob) {
    m_Engine->DrawTriangle(v, job, TCondition::None);
    return;
  }
  m_Engine->UpdateDerivedState();
  m_Engine->AskAhead(&p0.x, &p0.y, sizeof *v / sizeof p0.x);
  TSpanJob job;
  m_Engine->DrawTriangle(v, &job, m_Engine->SetUpDraw(TPrimitiveKind::Triangle, &job));
}

// Asks for pixels of a triangle before it is set up, so that what reads and writes them does not
// wait as long: the one in the middle column of each row. The corners in the window stand `step`
// doubles apart. What is near the triangle before, as in a mesh, is in a cache most often. That
// `LastY` is set here matters to the compiler too: to ask has no effect in its eyes, and the call
// of a function that does nothing else is left out.
void TRenderEngine::AskAhead(const double* x, const double* y, std::ptrdiff_t step) {
  const double rows = y[0] - std::exchange(LastY, y[0]);
  if (!(std::fabs(rows) * static_cast<double>(Targets.Color.RowStride) > kNearBytes)) {
    return;
  }
  const double middle = (x[0] + x[step] + x[2 * step]) * (1.0 / 3.0);
  const double low = std::min({y[0], y[step], y[2 * step]}) + 1.0;
  const double high = std::max({y[0], y[step], y[2 * step]});
  if (!Targets.Kernels ||
      !(middle >= 0.0 && middle < gl.m_Width && high >= 0.0 && low < gl.m_Height)) {
    return;
  }
  const int column = static_cast<int>(middle);
  const int first = static_cast<int>(std::max(low, 0.0));
  const int last =
      std::min(static_cast<int>(std::min(high, gl.m_Height - 1.0)), first + kMostRowsAsked - 1);
  for (int row = first; row <= last; ++row) {
    __builtin_prefetch(Targets.Color.Data + Targets.Color.OffsetOf(column, row), 1);
    if (gl.m_DepthTest || gl.m_DepthMask) {
      __builtin_prefetch(Targets.Depth.Data + Targets.Depth.OffsetOf(column, row), 1);
    }
    if (gl.m_StencilTest) {
      __builtin_prefetch(Targets.Stencil.Data + Targets.Stencil.OffsetOf(column, row), 1);
    }
  }
}

// Draws a triangle in window coordinates, by a kernel unless a condition is unmet: `unmet`, of the
// draw, or one of the triangle's own. The inputs of the job are still to be set up.
void TRenderEngine::DrawTriangle(VAR_DATA* v, TSpanJob* job, TCondition unmet) {
  if (unmet == TCondition::None) { // reads the slots before perspective scales them
    for (int i = 0; i < 3; ++i) {
      job->Primitive.Vertex[i] = v[i].Slots;
    }
    unmet = SetUpPrimitive(&job->Primitive);
  }
  for (int i = 0; i < 3 && gl.m_PerspectiveHint != GL_FASTEST; ++i) {
    ScaleSlots(&v[i], gl.m_VarCount);
  }
  if (Meets(ActiveKernelCounters(), unmet)) {
    RunTriangleJob(job);
    KeepDeferred();
  } else {
    DrawEdges(v);
  }
}

// Directs each edge of a triangle upwards and finds the major one.
void TRenderEngine::SetEdges(VAR_DATA* v, EDGE* edges, int* major) {
  gl.SetEdge(&edges[0], &v[0], &v[1]);
  gl.SetEdge(&edges[1], &v[1], &v[2]);
  gl.SetEdge(&edges[2], &v[2], &v[0]);
  *major = 0;
  for (int i = 1; i < 3; ++i) {
    if (edges[i].Delta.Slots[0].y > edges[*major].Delta.Slots[0].y) {
      *major = i;
    }
  }
}

// The reference path: row by row and pixel by pixel.
void TRenderEngine::DrawEdges(VAR_DATA* v) {
  ResolveFragment();
  int major = 0;
  SetEdges(v, gl.m_Edges, &major);
  if (TKernelCounters* const counters = ActiveKernelCounters()) {
    counters->StartPrimitive();
  }
  gl.DrawSpansBetweenEdges(&gl.m_Edges[major], &gl.m_Edges[(major + 1) % 3], &gl.m_Fragment);
  gl.DrawSpansBetweenEdges(&gl.m_Edges[major], &gl.m_Edges[(major + 2) % 3], &gl.m_Fragment);
}

// --- Rows

void TRenderCPU::DrawSpansBetweenEdges(EDGE* a, EDGE* b, FS_DATA* fs) {
  if (const TSpanKernels* const kernels = GetSpanKernels()) {
    kernels->ShadeRows(m_Engine, *a, *b, fs);
    return;
  }
  ForEachRow(*a, *b, m_Height, [=, this](int y, double ta, double tb) {
    Value(*a, ta, &m_VarEdgeA);
    Value(*b, tb, &m_VarEdgeB);
    SetSpan(&m_Span, &m_VarEdgeA, &m_VarEdgeB);
    fs->Y = y;
    DrawSpan(&m_Span, y, fs);
  });
}

// --- State

void TRenderCPU::CullFace(unsigned int mode) { m_CullFaceMode = mode; }

void TRenderCPU::FrontFace(unsigned int mode) {
  if (mode != GL_CCW && mode != GL_CW) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  m_FrontFaceCCW = mode == GL_CCW;
}

void TRenderCPU::EnableCullFace(bool on) { m_CullFaceEnabled = on; }

void TRenderCPU::SetPerspectiveCorrectionHint(unsigned int hint) { m_PerspectiveHint = hint; }

unsigned int TRenderCPU::GetPerspectiveCorrectionHint() { return m_PerspectiveHint; }

void TRenderCPU::PolygonOffset(float factor, float units) {
  m_PolygonOffsetFactor = factor;
  m_PolygonOffsetUnits = units;
}

void TRenderCPU::EnablePolygonOffsetFill(bool on) { m_PolygonOffsetFill = on; }

void TRenderCPU::PolygonMode(unsigned int face, unsigned int mode) {
  if (face == GL_FRONT || face == GL_FRONT_AND_BACK) {
    m_PolygonModeFront = mode;
  } else if (face == GL_BACK) {
    m_PolygonModeBack = mode;
  }
}

} // namespace Zx3D
