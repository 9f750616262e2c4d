#pragma once

#include <ZxCore3D/render/ShaderCPU.h>

namespace Zx3D {

/// Fragments of one row that passed the tests before shading, from left to right: what
/// `TRowFragmentShaderCPU::ExecuteRow` computes at once.
///
/// Entry i of every array is fragment i, 0 to `Count` - 1. The arrays are apart from one another,
/// aligned to 64 bytes and `kMost` entries long, so that loops may read and write whole vectors
/// past `Count`; what lies there means nothing.
struct FS_ROW {
  static constexpr int kMost = 64; ///< fragments that one call gets at the most

  int Count;        ///< 1 to `kMost`: a longer row comes in several parts
  int Y;            ///< the row
  bool FrontFacing; ///< as in `FS_DATA`
  const int* X;     ///< columns, ascending; where a test failed between them, not neighbours

  /// Component c of slot s of fragment i is `Slots[s][c][i]`. Null for a slot that is not live.
  const double* Slots[8][4];

  /// Red, green, blue and alpha, to be written for each fragment that is kept.
  double* Color[4];

  /// The window depth, as `FS_DATA::Depth`: to be written if `IsCalcDepth` is true, for each
  /// fragment that is kept, and to be left alone otherwise.
  float* Depth;

  /// True throughout at first; false discards the fragment.
  bool* Keep;
};

/// A fragment stage that can compute the fragments of a row at once.
///
/// `ExecuteRow` must give what calling `Execute` for each fragment, from left to right, would:
/// which of them runs is the context's choice. Points, lines and rows in which a pixel's result may
/// depend on the write of another one (targets that share memory with each other or with a bound
/// texture, functions of the caller's own for tests and writes) go through `Execute`. So
/// `ExecuteRow` must neither change the context nor read what earlier fragments of the primitive
/// left: pixels of the targets, or a record. Afterwards `m_Fragment` and `m_VarFragment` hold the
/// last fragment, with `Color`, and a depth of the shader's own, of the last one that was kept.
class ZX_CORE3D_API TRowFragmentShaderCPU : public TFragmentShaderCPU {
public:
  TRowFragmentShaderCPU() = default;
  ~TRowFragmentShaderCPU() override;

  /// What the context asks for when the shader is installed.
  static const boost::uuids::uuid s_Interface;

  /// Answers `s_Interface` with a `TRowFragmentShaderCPU*`, and one reference added.
  bool QueryInterface(const boost::uuids::uuid& id, void** out) override;

  /// Computes the fragments of a row.
  virtual void ExecuteRow(const FS_ROW& row) = 0;
};

} // namespace Zx3D
