#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/state/TargetLayout.h>
#include <ZxCore3D/render/state/TextureBinding.h>

namespace Zx3D {

struct TSpanJob;
struct TDrawState;
struct TPrimitive;
struct TLineWalk;
struct TPointBatch;
struct TArrayDraw;
struct TBatchDraw;
struct TLineEnds;
struct TTriangleRows;
struct TShapeColumns;
struct TElements;
struct TVertexCache;
class TRowFragmentShaderCPU;
enum class TCondition : std::uint8_t;
enum class TPrimitiveKind : std::uint8_t;

/// The arrays of an FS_ROW.
struct TShadedRow {
  static constexpr std::size_t kMost = 64;

  alignas(64) double Slots[8][4][kMost];
  alignas(64) double Color[4][kMost];
  alignas(64) double T[kMost];
  alignas(64) float Depth[kMost];
  alignas(64) int X[kMost];
  alignas(64) bool Keep[kMost];

  vec_t_<double, 4> ColorOf(int i) const {
    return {Color[0][i], Color[1][i], Color[2][i], Color[3][i]};
  }
};

/// The fragment record after a triangle that a kernel drew: its slots, and in an array draw its
/// colour, are computed only when something can read them.
struct TDeferredFragment {
  bool Set = false;
  bool Perspective = false;
  bool Shade = false; ///< the colour is to be computed as well
  bool Front = false;
  int Count = 0; ///< live slots
  int X = 0;
  int Y = 0;
  int MinorEdge = 0; ///< of the fragment's row, 1 or 2: places after the major edge; 0: of a line
  double T = 0.0;    ///< of a line
  const vec_t_<double, 4>* Vertex[3] = {};
  vec_t_<double, 4> Kept[3][kSlots] = {};

  void KeepVertices();
};

/// The factor of a nearest texel by channel, as found for the channel's last constant value.
struct TKnownTints {
  double Channel[4] = {-1, -1, -1, -1};
  float Tint[4] = {-1, -1, -1, -1};
};

/// What stands behind a context's pointer: what the rooms of the renderer call of each other, and
/// what they keep beside the state that hosts see. A context's own members are read as `gl.m_...`.
struct TRenderEngine {
  using VAR_DATA = TRenderCPU::VAR_DATA;
  using FS_DATA = TRenderCPU::FS_DATA;
  using EDGE = TRenderCPU::EDGE;
  using TAttrValue = TRenderCPU::TAttrValue;
  using TTexSampler = TRenderCPU::TTexSampler;
  using TTexUnit = TRenderCPU::TTexUnit;
  using TTextureHold = TRenderCPU::TTextureHold;
  using TTextureTable = TRenderCPU::TTextureTable;
  /// What follows the shading of a vertex: hands on the primitive that it completes.
  using TAssemble = void (TRenderEngine::*)();

  explicit TRenderEngine(TRenderCPU& context) : gl(context) {}
  TRenderEngine(const TRenderEngine&) = delete;
  TRenderEngine& operator=(const TRenderEngine&) = delete;

  TRenderCPU& gl;

  // --- state/DerivedState.cpp: what drawing reads that follows from state

  /// Recomputes what follows from state that changed since the last call, by anyone; true if
  /// anything did. Called by `Begin` and before each primitive.
  bool UpdateDerivedState();
  /// The part of it that a shader may have changed since its primitive began: the targets.
  bool UpdateTargets();
  void MeasureTargets();
  bool UpdateTextures();
  /// Whether texels of unit 0 share memory with a target.
  bool TextureIsTarget() const;

  /// Addresses of pixels; null where there is none, and for a stencil without its test.
  unsigned char* DepthPixel(int x, int y) const { return Targets.Depth.At(x, y); }
  unsigned char* StencilPixel(int x, int y) const {
    return gl.m_StencilTest ? Targets.Stencil.At(x, y) : nullptr;
  }

  TTargets Targets = {};
  std::uint64_t TextureChanges = 0; ///< of the table, up to which the bindings are looked after
  bool DetachedIsBound = false;     ///< a texture that may change without being counted there

  // --- state/Targets.cpp

  /// Takes the frame buffer's surfaces as targets.
  void AdoptSurfaces();
  /// The frame buffer's surfaces, or one surface, are about to go: they are targets no more.
  void ForgetOwnSurfaces();
  void ForgetTarget(const TDataSurface* surface);

  // --- state/Textures.cpp

  void AdoptTextures(TTextureTable* table);
  /// Tells the contexts that share the table.
  void NoteTextureChange();
  void DropBinding(unsigned int unit);
  void UnbindTexture(const TDataSurface* surface);
  /// The active unit's sampler, null without such a unit, and the surface bound there, null if
  /// there is none; both as other contexts of the table left them.
  TTexSampler* ActiveSampler();
  TDataSurface* BoundTexture();
  /// A surface changed: the samplers that hold it choose their function anew.
  void UpdateSamplersOf(const TDataSurface* surface);

  TTextureBinding TextureBindings[kTexUnits];

  // --- stages/Submission.cpp: from vertices to primitives

  template <TAssemble kAssemble> void Take(TRenderCPU& context);
  void AssemblePoint();
  void AssembleLine();
  void AssembleLineStrip();
  void AssembleLineLoop();
  void AssembleTriangle();
  void AssembleTriangleStrip();
  void AssembleTriangleFan();
  void AssembleQuad();

  TAssemble Assemble = nullptr; ///< of the mode, chosen by `Begin`

  // --- stages: from primitives to fragments

  void CutTriangle(VAR_DATA* v, int plane);
  bool IsCulled(bool front) const;
  void SetEdges(VAR_DATA* v, EDGE* edges, int* major);
  void DrawEdges(VAR_DATA* v);
  void InterpolateFragment(const EDGE& e, double t);
  void WalkSpan(const EDGE& span, int y, int first, int last, FS_DATA* fs);
  TCondition SetUpShadedRow() const;
  bool IsLinePixel(int x, int y) const;
  void DrawLinePixel(int x, int y, double t);
  void AskAhead(const double* x, const double* y, std::ptrdiff_t step);
  void DrawTriangle(VAR_DATA* v, TSpanJob* job, TCondition unmet);
  void DrawLine(VAR_DATA* v, TSpanJob* job, TCondition unmet);
  void WalkLine(const TLineWalk& walk);
  bool ClipWalk(TLineWalk* walk);

  /// The fragment shader that was installed, if it computes rows.
  TRowFragmentShaderCPU* RowShader = nullptr;
  TShadedRow* Row() {
    void* at = m_RowMemory;
    std::size_t size = sizeof m_RowMemory;
    return static_cast<TShadedRow*>(std::align(alignof(TShadedRow), sizeof(TShadedRow), at, size));
  }

  // --- arrays: vertices of arrays, replayed

  void Replay(unsigned int mode, int count, const TElements& elements);
  void ReplayDirectly(const TArrayDraw& draw, const TElements& elements, int count, int done);
  bool MayReplayDirectly() const;
  std::uint64_t NextDraw();
  bool LoadShared(const TArrayDraw& draw, std::uint64_t tags, unsigned long element,
                  VAR_DATA* record);
  int ReplayBatches(const TArrayDraw& arrays, const TElements& elements, int count);
  bool MayBatchPoints(TDrawState* state) const;
  int ReplayShapes(TBatchDraw* draw, int shapes);
  void ResumeAfter(TBatchDraw* draw, int vertices);
  void ReplayPoints(TBatchDraw* draw, const TDrawState& state, int count);
  void DrawPoints(const TDrawState& state, const TPointBatch& points,
                  const vec_t_<double, 4>* colors);
  const vec_t_<double, 4>* PointColors(TBatchDraw* draw, int count);
  void DrawBatched(TBatchDraw* draw, int shape);
  bool SetUpInWindow(TBatchDraw* draw, const TShapeColumns& columns, int shape,
                     TPrimitive* primitive);
  bool DrawInWindow(TBatchDraw* draw, const TTriangleRows& rows, const TShapeColumns& columns,
                    int shape);
  bool AddLine(TBatchDraw* draw, const TLineEnds& ends, int shape);
  void DrawLines(TBatchDraw* draw);
  void ShadeCorner(TBatchDraw* draw, int entry, int place);
  void ShadeBatched(TBatchDraw* draw, int entry, VAR_DATA* record);
  void ShadeFetched(TBatchDraw* draw, int vertex, VAR_DATA* record);

  TVertexCache* VertexCache = nullptr;

  // --- kernels/SpanSetup.cpp: choosing a kernel and running it

  /// Set-up; a condition that is returned leaves what is drawn to the reference walker.
  TCondition SetUpDraw(TPrimitiveKind kind, TSpanJob* job);
  TCondition SetUpSources(TPrimitiveKind kind, TPrimitive* primitive) const;
  TCondition SetUpTargets(TDrawState* draw) const;
  TCondition SetUpDepthStencil(TDrawState* draw) const;
  TCondition SetUpPrimitive(TPrimitive* primitive);
  bool IsLive(int slot) const;
  void RunTriangleJob(TSpanJob* job);
  void RunLineJob(TSpanJob* job, const TPrimitive* lines, const TLineWalk* walks, int count);
  void RecordPrimitive(const TSpanJob& job);
  void KeepDeferred();
  void ResolveFragment() {
    if (DeferredFragment.Set) {
      ComputeDeferredFragment();
    }
  }
  void ComputeDeferredFragment();

  double LastY = 0.0; ///< of the triangle before, in the window: `AskAhead`
  TKnownTints KnownTints;
  int ExactRuns = 0; ///< of textures, that take exact coordinates: `CountExactGroups`
  TDeferredFragment DeferredFragment;
  TSpanJob* DrawJob =
      nullptr; ///< set up for all lines or triangles of an array draw, while it lasts

private:
  /// An engine is allocated like any other object, at 16 bytes.
  unsigned char m_RowMemory[sizeof(TShadedRow) + alignof(TShadedRow)] = {};
};

} // namespace Zx3D
