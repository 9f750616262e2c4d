#pragma once

#include <cstdint>
#include <string>

#include <ZxBaseKit/TRef.h>
#include <ZxCore3D/types/Export.h>
#include <ZxPixelKit/DATASURFACE.h>

class TZxMessage;
class TZxStream;
struct TSaveImageHint;

namespace Zx3D {

/// A counted image: one raster record, whose block it owns and frees by `free`. An object belongs
/// to one thread at a time; only its count is atomic.
class ZX_CORE3D_API TImageSurface : public zx::TRef {
public:
  /// An empty surface with a count of 1.
  TImageSurface();
  TImageSurface(const TImageSurface&) = delete;
  TImageSurface& operator=(const TImageSurface&) = delete;
  ~TImageSurface() override;

  /// Makes the data size `n` bytes. The present size changes nothing; 0 frees the block and empties
  /// the record; else the block, with the extra size on top, is reallocated, and keeps what both
  /// sizes have. False when memory is exhausted or the sum overflows, with all as it was.
  virtual bool SetDataSize(unsigned long n);

  /// Makes an image of `w` by `h` pixels with the given strides in bytes. The data size becomes
  /// `rowStride` times `h`, by the rule of `SetDataSize`. That many bytes are copied from `data`;
  /// they may lie inside the present block, and are copied twice then if its size changes. If
  /// `data` is null, the block keeps its content, which is undefined where it is new. Sizes and
  /// strides are stored in 32 bits. False, with all as it was, when memory is exhausted or the data
  /// size overflows.
  virtual bool SetImage2D(unsigned long w, unsigned long h, unsigned long pixelStride,
                          unsigned long rowStride, DATA_FORMAT f, DATA_TYPE t, int channels,
                          void* data);

  /// The form above with tight pixels and rows: the pixel stride is the size of `t` times
  /// `channels`, the row stride that times `w`.
  bool SetImage2D(unsigned long w, unsigned long h, DATA_FORMAT f, DATA_TYPE t, int channels,
                  void* data);

  /// Frees the own block and takes over the record `s` and its block, which comes from `malloc`.
  /// The extra size becomes 0. `s` stays as it is; its block must not be freed through it.
  void AttachDataSurface(const DATASURFACE& s);

  /// The same, but for the extra size, which becomes the data size of `s`.
  void Attach(DATASURFACE& s);

  /// The image; its block is owned.
  DATASURFACE m_Surface;

  /// Bytes that `SetDataSize` allocates on top of what is asked for.
  std::uint64_t m_ExtraSize;
};

/// Loads an image file, as the function of ZxPixelKit of this name does, into a new object.
///
/// True: `*out` receives the object, whose one reference belongs to the caller. False, with `*out`
/// as it was, when the file can't be read or is no sound image. `hint` is passed through and may be
/// null.
ZX_CORE3D_API bool LoadImage(const std::string& name, TSaveImageHint* hint, TImageSurface** out);

/// The same from the bytes between a stream's position and its end.
ZX_CORE3D_API bool LoadImage(TZxStream* stream, TSaveImageHint* hint, TImageSurface** out);

/// The forms that can say why: when the result is false, `*reason` becomes a phrase that stands
/// behind the file's name and a colon. A result of true leaves it alone, and it may be null.
ZX_CORE3D_API bool LoadImage(const std::string& name, TSaveImageHint* hint, TImageSurface** out,
                             TZxMessage* reason);
ZX_CORE3D_API bool LoadImage(TZxStream* stream, TSaveImageHint* hint, TImageSurface** out,
                             TZxMessage* reason);

} // namespace Zx3D
