// What a primitive that a kernel drew leaves in the fragment record. Its slots are computed when
// something may read them: most often the next primitive replaces them.
//
// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/SpanLevels.cpp (SpanLevels.*)

#include <utility>

#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/SlotMath.h>

namespace Zx3D {

namespace {

using TVec4 = vec_t_<double, 4>;

// An edge at one row, or a line at one pixel.
struct TSide {
  const TVec4* Begin;
  const TVec4* End;
  double T = 0.0;

  // From its lower end to the upper one.
  static TSide Upward(const TVec4* a, const TVec4* b) {
    const bool upward = b[0].y >= a[0].y;
    return {upward ? a : b, upward ? b : a};
  }
  double DeltaY() const { return End[0].y - Begin[0].y; }
  void SetRow(int y) { T = (y - Begin[0].y) / DeltaY(); }
  TPair At(int place) const { // two components, counted through all slots
    const TPair begin = PairAt(&Begin[0].x + place);
    return (PairAt(&End[0].x + place) - begin) * T + begin;
  }
};

} // namespace

void TDeferredFragment::KeepVertices() {
  for (int i = 0; i < 3 && Set && Vertex[i] != Kept[i]; ++i) {
    if (i == 2 && MinorEdge == 0) {
      break;
    }
    CopySlots(Kept[i], Vertex[i], Count);
    Vertex[i] = Kept[i];
  }
}

void TRenderEngine::RunTriangleJob(TSpanJob* job) {
  job->StartPrimitive();
  GetSpanKernels()->DrawTriangle(job);
  RecordPrimitive(*job);
}

void TRenderEngine::RunLineJob(TSpanJob* job, const TPrimitive* lines, const TLineWalk* walks,
                               int count) {
  GetSpanKernels()->DrawLines(job, lines, walks, count);
  RecordPrimitive(*job);
}

// Makes sure that what a primitive left for the fragment record outlives its vertices.
void TRenderEngine::KeepDeferred() {
  if (!gl.m_InBeginEnd || gl.m_VertexShader != gl.m_StdVertexShader) {
    ResolveFragment();
  } else {
    DeferredFragment.KeepVertices();
  }
}

// Records what a kernel left of a primitive. Its vertices have to stay until the fragment is
// computed, or `KeepVertices` copies them.
void TRenderEngine::RecordPrimitive(const TSpanJob& job) {
  const TSpanResult& result = job.Result;
  if (result.YSet) {
    gl.m_Fragment.Y = result.Y;
  }
  if (result.DepthSet) {
    gl.m_Fragment.Depth = result.LastDepth;
  }
  if (!result.ColorSet) {
    return;
  }
  gl.m_Fragment.X = result.LastX;
  TDeferredFragment& pending = DeferredFragment;
  pending.Set = true;
  // No state changes within an array draw: the colour can wait for the last triangle.
  pending.Shade = !job.Primitive.RecordColor;
  pending.Front = gl.m_Fragment.FrontFacing;
  if (job.Primitive.RecordColor) {
    gl.m_Fragment.Color = result.LastColor;
  }
  pending.Perspective = job.Primitive.Perspective;
  pending.Count = gl.m_VarCount;
  pending.X = result.LastX;
  pending.Y = result.LastY;
  pending.MinorEdge = result.LastMinorEdge;
  pending.T = result.LastT;
  for (int i = 0; i < 3; ++i) { // no call for three pointers
    pending.Vertex[i] = job.Primitive.Vertex[i];
  }
}

// Computes the slots of the last fragment of a primitive by the operations of the reference path.
void TRenderEngine::ComputeDeferredFragment() {
  TDeferredFragment& pending = DeferredFragment;
  const TVec4* const(&v)[3] = pending.Vertex;
  pending.Set = false;
  const auto finish = [&](const auto& valueAt) {
    const double q = pending.Perspective ? 1.0 / valueAt(2)[1] : 1.0;
    double* const out = &gl.m_VarFragment.Slots[0].x;
    for (int i = 0; i < 4 * pending.Count; i += 2) {
      const TPair value = valueAt(i);
      StorePair(out + i, pending.Perspective ? value * q : value);
    }
    if (pending.Shade) {
      const bool front = gl.m_Fragment.FrontFacing;
      gl.m_Fragment.FrontFacing = pending.Front;
      gl.m_FragmentShader->Execute(&gl.m_VarFragment, &gl.m_Fragment);
      gl.m_Fragment.FrontFacing = front;
    }
  };
  if (pending.MinorEdge == 0) {
    const TSide line = {v[0], v[1], pending.T};
    finish([&](int place) { return line.At(place); });
    return;
  }
  const TSide edges[3] = {TSide::Upward(v[0], v[1]), TSide::Upward(v[1], v[2]),
                          TSide::Upward(v[2], v[0])};
  int major = edges[1].DeltaY() > edges[0].DeltaY() ? 1 : 0;
  major = edges[2].DeltaY() > edges[major].DeltaY() ? 2 : major;
  TSide a = edges[major];
  TSide b = edges[(major + pending.MinorEdge) % 3];
  a.SetRow(pending.Y);
  b.SetRow(pending.Y);
  if (!(b.At(0)[0] >= a.At(0)[0])) {
    std::swap(a, b);
  }
  const double beginX = a.At(0)[0];
  const double t = (pending.X - beginX) / (b.At(0)[0] - beginX);
  finish([&](int place) {
    const TPair begin = a.At(place);
    return (b.At(place) - begin) * t + begin;
  });
}

} // namespace Zx3D
