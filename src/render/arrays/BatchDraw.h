#pragma once

#include <algorithm>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/arrays/ArrayDraw.h>
#include <ZxCore3D/render/arrays/BatchFetch.h>
#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace Zx3D {

// How a mode makes shapes of vertices: the first ends at vertex Lead + Step - 1, and each further
// one `Step` vertices later.
struct TShapes {
  unsigned int Mode;
  int Corners; ///< of a shape
  int Step;
  int Lead;
  int Pitch = TVertexBatch::kMost / Corners; ///< shapes of a batch, an even number
  /// A line, or the triangles of a quad, of which any other triangle is the first.
  TShapeColumns Columns[2] = {{std::min(Corners, 3), {0, 1, std::min(Corners, 3) - 1}},
                              {3, {0, 2, 3}}};
  /// The vertex of a batch at an entry of `TVertexBatch`, the corners in the order of drawing. A
  /// batch begins with its first shape's first vertex; that of a fan with the middle.
  std::uint8_t Vertex[TVertexBatch::kMost] = {};

  constexpr TShapes(unsigned int mode, int corners, int step, int lead)
      : Mode(mode), Corners(corners), Step(step), Lead(lead) {
    for (int c = 0; c < corners; ++c) {
      for (int s = 0; s < Pitch; ++s) {
        int vertex = s * step + c;
        if (mode == GL_TRIANGLE_STRIP && c != 2) {
          vertex = s + (c ^ (s & 1)); // the first two change places in every other one
        } else if (mode == GL_TRIANGLE_FAN && c == 0) {
          vertex = 0;
        }
        Vertex[c * Pitch + s] = static_cast<std::uint8_t>(vertex);
      }
    }
  }

  bool AreSeparate() const { return Lead == 0; }
  int Halves() const { return Corners == 4 ? 2 : 1; } ///< triangles of a shape
  /// Whether each shape has records of its own, which take turns.
  bool TakesTurns() const { return AreSeparate() && Corners >= 3; }
};

// By mode.
inline constexpr TShapes kShapes[] = {
    {GL_POINTS, 1, 1, 0},       {GL_LINES, 2, 2, 0},     {GL_LINE_LOOP, 2, 1, 1},
    {GL_LINE_STRIP, 2, 1, 1},   {GL_TRIANGLES, 3, 3, 0}, {GL_TRIANGLE_STRIP, 3, 1, 2},
    {GL_TRIANGLE_FAN, 3, 1, 2}, {GL_QUADS, 4, 4, 0},
};

// --- The arrays of a draw call

struct TBatchDraw {
  struct TSource {
    const TRenderCPU::TVertexAttribPointer* Pointer = nullptr;
    std::size_t Kind = 0;
  };

  const TArrayDraw& Arrays;
  const TElements& Elements;
  const TShapes& Shapes;
  bool Listed;            ///< whether elements do not simply follow each other
  std::uint64_t Tags = 0; ///< of the vertex cache, where shapes may have vertices in common
  TSource Position;
  TSource Values[3]; ///< normal, colour, texture coordinate
  vec_t_<double, 4>* Current[3];
  TVertexBatch Batch;  ///< the corners of the shapes
  TVertexBatch Line;   ///< the vertices themselves, where shapes share them
  TVertexBatch Window; ///< the corners, divided by w, then in the window
  TVertexBatch WindowLine;
  bool HasCorners = false;                 ///< whether `Batch` is filled
  bool IsDivided = false;                  ///< whether `Window` is
  int FirstPlace = 0;                      ///< of a separate triangle's records
  int Lines = 0;                           ///< that are set up and not yet drawn
  unsigned long First = 0;                 ///< element of the batch's first vertex
  int Count = 0;                           ///< vertices of the batch
  int Entries = 0;                         ///< of `Vertices()` that are filled
  bool Fetched = false;                    ///< whether `Vectors` are those of the batch
  unsigned long List[TVertexBatch::kMost]; ///< of the batch's elements, if `Listed`
  vec_t_<double, 4> Vectors[3][TVertexBatch::kMost];

  TBatchDraw(const TArrayDraw& arrays, const TElements& elements, const TShapes& shapes)
      : Arrays(arrays), Elements(elements), Shapes(shapes),
        Listed(elements.IsIndexed() || shapes.Mode == GL_TRIANGLE_FAN) {
    Batch.Pitch = Window.Pitch = shapes.Pitch;
    Line.Pitch = 1; // one shape with all vertices as corners
  }

  bool IsShared() const { return Elements.IsIndexed() || !Shapes.AreSeparate(); }

  // False if positions come from no array. All functions are known, which `Replay` has asked.
  bool Take(TRenderCPU* gl) {
    const auto& known = TRenderCPU::s_AttrGetVals;
    Current[0] = &gl->m_CurNormal;
    Current[1] = &gl->m_CurColor;
    Current[2] = &gl->m_CurTexCoord;
    for (unsigned long k = 0; k < Arrays.ValueCount; ++k) {
      const TRenderCPU::TAttrValue& value = Arrays.Values[k];
      const auto found = std::find(known.begin(), known.end(), value.Pointer->GetValue);
      const TSource source = {value.Pointer, static_cast<std::size_t>(found - known.begin())};
      if (value.Value == &gl->m_CurAttrib[0]) {
        Position = source; // of two arrays for it the last one counts
      }
      for (int i = 0; i < 3; ++i) {
        if (value.Value == Current[i]) {
          Values[i] = source;
        }
      }
    }
    return Position.Pointer != nullptr;
  }

  TFetchList ListFor(const TSource& source) const {
    return {source.Pointer, Listed ? List : nullptr, First, Count};
  }

  unsigned long ElementOf(int vertex) const {
    return Listed ? List[vertex] : First + static_cast<unsigned long>(vertex);
  }

  // Chooses the records of a separate shape's corners: such as are in the cache still, but not
  // those that the deferred fragment has.
  void TakePlaces(const TVertexCache& cache, const TDeferredFragment& fragment) {
    const vec_t_<double, 4>* const kept = fragment.Vertex[0];
    const bool first = kept == cache.Corners[0].Slots || kept == cache.Scaled[0].Slots;
    FirstPlace = first ? Shapes.Corners : 0;
  }

  // Fetches the vertices of `shapes` shapes, from number `first` on, and transforms their
  // positions.
  void FetchBatch(const TSpanKernels& kernels, const double* matrix, int first, int shapes) {
    const int begin = first * Shapes.Step;
    Count = shapes * Shapes.Step + Shapes.Lead;
    Fetched = false;
    if (Listed) {
      unsigned long* out = List;
      Elements.ForEach(
          Count, [begin](int i) { return begin + i; },
          [&out](unsigned long element) { *out++ = element; });
      if (Shapes.Mode == GL_TRIANGLE_FAN) {
        List[0] = Elements.At(0);
      }
    } else {
      First = Elements.At(begin);
    }
    const bool separate = Shapes.AreSeparate();
    HasCorners = separate;
    IsDivided = false;
    TVertexBatch& vertices = Vertices();
    kFetchPositions[Position.Kind](ListFor(Position), separate ? Shapes.Corners : Count, &vertices);
    if (separate) {
      Entries = Shapes.Corners * Batch.Pitch;
      for (int c = 0; c < Shapes.Corners; ++c) {
        ZeroRest(c * Batch.Pitch + shapes, (c + 1) * Batch.Pitch, &Batch);
      }
    } else {
      Entries = (shapes + 7) / 8 * 8 + 8; // vectors, with those past the last shape
      ZeroRest(Count, Entries, &Line);
    }
    kernels.TransformBatch(matrix, Entries, &vertices);
  }

  TVertexBatch& Vertices() { return Shapes.AreSeparate() ? Batch : Line; }

  // What each plane has inside of the corners of `shapes` shapes.
  void FindInside(const TSpanKernels& kernels, int shapes, TInsideBits (*out)[4]) const {
    if (Shapes.AreSeparate()) {
      for (int c = 0; c < Shapes.Corners; ++c) {
        kernels.FindInside(Batch, c * Batch.Pitch, shapes, &(*out)[c]);
      }
      return;
    }
    TInsideBits line;
    kernels.FindInside(Line, 0, Entries, &line);
    for (int plane = 0; plane < kClipPlanes; ++plane) {
      const std::uint64_t bits = line.Plane[plane];
      const bool fan = Shapes.Mode == GL_TRIANGLE_FAN;
      (*out)[0].Plane[plane] = fan ? 0 - (bits & 1) : bits;
      (*out)[1].Plane[plane] = bits >> 1;
      (*out)[2].Plane[plane] = bits >> 2;
    }
  }

  // Fills `Batch` from what stands in `Line`, if it is not filled.
  void FillCorners() {
    if (!HasCorners) {
      CopyCorners(Line, &Batch);
    }
    HasCorners = true;
  }

  void DivideCorners(const TSpanKernels& kernels) {
    if (IsDivided) {
      return;
    }
    IsDivided = true;
    if (Shapes.AreSeparate()) {
      kernels.DivideVertices(Batch, Entries, &Window);
      return;
    }
    kernels.DivideVertices(Line, Entries, &WindowLine);
    CopyCorners(WindowLine.X, Window.X);
    CopyCorners(WindowLine.Y, Window.Y);
  }

  // Takes the corners of triangles to the window.
  void Project(const TSpanKernels& kernels, int width, int height) {
    if (Shapes.AreSeparate()) {
      kernels.ProjectVertices(Batch, Entries, width, height, &Window);
    } else {
      kernels.ProjectVertices(Line, Entries, width, height, &WindowLine);
      CopyCorners(WindowLine, &Window);
    }
  }

  // Vectors are computed whole, past the last vertex.
  static void ZeroRest(int begin, int end, TVertexBatch* batch) {
    for (double* const part : {batch->X, batch->Y, batch->Z}) {
      std::fill(part + begin, part + end, 0.0);
    }
  }

  // One component of vertices that shapes share to the corners of the shapes, as `Shapes.Vertex`
  // places them: most lie side by side.
  void CopyCorners(const double* vertices, double* out) const {
    const int shapes = Entries - 8;
    const int pitch = Shapes.Pitch;
    if (Shapes.Mode == GL_TRIANGLE_STRIP) {
      for (int s = 0; s < shapes; s += 2) {
        out[s] = vertices[s];
        out[s + 1] = vertices[s + 2];
        out[pitch + s] = out[pitch + s + 1] = vertices[s + 1];
      }
    } else {
      const bool fan = Shapes.Mode == GL_TRIANGLE_FAN;
      for (int s = 0; s < shapes; ++s) {
        out[s] = vertices[fan ? 0 : s];
        out[pitch + s] = vertices[s + 1];
      }
    }
    if (Shapes.Corners == 3) {
      std::copy_n(vertices + 2, shapes, out + 2 * pitch);
    }
  }

  void CopyCorners(const TVertexBatch& vertices, TVertexBatch* out) const {
    for (const auto part :
         {&TVertexBatch::X, &TVertexBatch::Y, &TVertexBatch::Z, &TVertexBatch::W}) {
      CopyCorners(vertices.*part, out->*part);
    }
  }

  // Normal, colour or texture coordinate of a vertex of the batch: fetched, or the current one.
  const vec_t_<double, 4>& ValueOf(int i, int vertex) const {
    return Values[i].Pointer != nullptr ? Vectors[i][vertex] : *Current[i];
  }

  // Fetches the other values of the whole batch.
  [[gnu::noinline]] void FetchValues() {
    Fetched = true;
    for (int i = 0; i < 3; ++i) {
      if (Values[i].Pointer != nullptr) {
        kFetchVectors[Values[i].Kind](ListFor(Values[i]), Vectors[i]);
      }
    }
  }
};

} // namespace Zx3D
