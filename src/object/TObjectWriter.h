#pragma once

#include <string>

#include <ZxCore3D/object/STORE_BLOCK.h>
#include <ZxCore3D/object/TVariant.h>
#include <ZxCore3D/object/VariantStorage.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

class TStream;

/// Writes the elements of the persistent format (docs/formats.md) onto a stream: sized blocks and
/// padded strings. The first failing write ends an operation with false, and what was written so
/// far stays. Without a stream everything is false.
class ZX_CORE3D_API TObjectWriter {
public:
  /// A writer without a stream.
  TObjectWriter();

  /// A writer onto `stream`, which it deletes in the end if `own`.
  TObjectWriter(TStream* stream, bool own);

  TObjectWriter(const TObjectWriter&) = delete;
  TObjectWriter& operator=(const TObjectWriter&) = delete;
  ~TObjectWriter();

  /// Goes over to `stream`. Another stream that was owned is deleted.
  void SetStream(TStream* stream, bool own);

  /// Begins a block: writes a size of 0 and notes in `*block` where the payload begins.
  bool WriteBlockBegin(STORE_BLOCK* block);

  /// Ends a block: puts the payload's size into the place that was kept for it, and comes back to
  /// the end. False if that write fails, and for a record that was never begun.
  bool WriteBlockEnd(STORE_BLOCK* block);

  /// The same; a bare `std::exception` is thrown where those are false.
  void WriteBlockBeginE(STORE_BLOCK* block);
  void WriteBlockEndE(STORE_BLOCK* block);

  /// Writes a string's `length` bytes and its padding. In this and the other string operations a
  /// length of `~0` or `~0 - 1` measures with `strlen` or `wcslen`, and a null pointer measures 0.
  bool WriteStringData(const char* text, unsigned long length);

  /// Writes the first `2 * length` bytes of the array, as units of 2 bytes, and the padding.
  bool WriteStringData(const wchar_t* text, unsigned long length);

  /// Writes length, bytes and padding.
  bool WriteString(const char* text, unsigned long length);
  bool WriteString(const std::string& text);
  bool WriteString(const wchar_t* text, unsigned long length);
  bool WriteString(const std::wstring& text);

private:
  friend class TWriterAccess;

  TStream* m_Stream;
  bool m_Owned;
  [[maybe_unused]] bool m_Reserved;
};

} // namespace Zx3D
