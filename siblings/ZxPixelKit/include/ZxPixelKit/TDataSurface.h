#pragma once

#include <ZxPixelKit/DATASURFACE.h>
#include <ZxPixelKit/Export.h>

/// A surface that owns its pixels.
///
/// Its block comes from `AllocateSurfaceBlock`: behind `DataSize` bytes of pixels lies one row and
/// one pixel of zeroed slack, so that reading one column or row past the end stays inside it.
class ZX_PIXELKIT_API TDataSurface : public DATASURFACE {
public:
  TDataSurface() noexcept;
  ~TDataSurface();
  TDataSurface(const TDataSurface&) = delete;
  TDataSurface& operator=(const TDataSurface&) = delete;

  /// Makes a surface of `width` by `height` pixels with tight rows, all bytes 0, in the place of
  /// what was there.
  ///
  /// `external`, if not null, is a block of the caller's with tight rows, which the surface uses
  /// and does not own: it must outlive the surface and hold the slack described above if it is to
  /// be sampled with `GL_REPEAT`.
  ///
  /// False, leaving the surface empty, when a size is below 1, `components` is outside 1 to 255,
  /// `type` has no size, a byte count does not fit its field, or memory is exhausted.
  bool Create(int width, int height, DATA_FORMAT format, DATA_TYPE type, int components,
              void* external = nullptr);

  /// Frees an owned block and empties the surface.
  void Destroy() noexcept;

  /// Exchanges pixels and fields.
  void Swap(TDataSurface& other) noexcept;

  /// Takes over a record whose block came from `malloc`; what was there is freed. `record` is left
  /// empty.
  void Adopt(DATASURFACE& record) noexcept;

  /// Whether the block is its own, and freed with it.
  bool IsOwner() const noexcept { return m_Owner; }

private:
  bool m_Owner;
};
