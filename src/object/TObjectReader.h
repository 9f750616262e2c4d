#pragma once

#include <string>

#include <ZxCore3D/object/QUERYHDR.h>
#include <ZxCore3D/object/TVariant.h>
#include <ZxCore3D/object/VariantStorage.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

class TStream;

/// Reads the elements of the persistent format (docs/formats.md) from a stream, and hands ids to a
/// host that resolves them. The first failing read ends an operation with false; the position stays
/// where that read left it. Without a stream every read is false.
///
/// Streams are not trusted: no length makes a read take more memory than the bytes that can still
/// come, apart from a constant.
class ZX_CORE3D_API TObjectReader {
public:
  /// Answers a query; `context` is what `SetQueryFunc` was given.
  using TQueryFunc = unsigned long (*)(void* context, QUERYHDR* query);

  /// A reader without a stream.
  TObjectReader();

  /// A reader of `stream`, which it deletes in the end if `own`.
  TObjectReader(TStream* stream, bool own);

  TObjectReader(const TObjectReader&) = delete;
  TObjectReader& operator=(const TObjectReader&) = delete;
  ~TObjectReader();

  /// Goes over to `stream`. Another stream that was owned is deleted.
  void SetStream(TStream* stream, bool own);

  /// Sets who answers queries; null takes the function away.
  void SetQueryFunc(TQueryFunc function, void* context);

  /// The function's answer to `query`, or 0 without a function.
  unsigned long Query(QUERYHDR* query);

  /// The answer to the search for the item `id` of a kind, or 0 without a function.
  unsigned long FindItemByID(unsigned long id, unsigned long kind);
  unsigned long FindObjectByID(unsigned long id);
  unsigned long FindGeometryByID(unsigned long id);
  unsigned long FindControllerByID(unsigned long id);
  unsigned long FindShaderByID(unsigned long id);
  unsigned long FindProgramByID(unsigned long id);
  unsigned long FindTechniqueByID(unsigned long id);
  unsigned long FindMaterialByID(unsigned long id);
  unsigned long FindTextureByID(unsigned long id);

  /// Makes the scratch hold `size` bytes; false if memory is exhausted.
  bool ReserveTmp(unsigned long size);

  /// Reads a string's length.
  bool ReadStringLen(unsigned long* length);

  /// Reads `length` bytes into `text`, which has room for `length + 1`, terminates them, and reads
  /// the padding.
  bool ReadStringData(char* text, unsigned long length);

  /// Reads `2 * length` bytes into the first bytes of `text`, which has room for `length + 1`
  /// elements, terminates at element `length`, and passes over the padding.
  bool ReadStringData(wchar_t* text, unsigned long length);

  /// Reads a string into `text`, which has room for `size` characters. False, with only the length
  /// consumed, if the stored length is not below `size`.
  bool ReadString(char* text, unsigned long size);
  bool ReadString(wchar_t* text, unsigned long size);

  /// Replaces `*text` by a stored string up to its first zero byte.
  bool ReadString(std::string* text);

  /// Replaces `*text` by a stored wide string up to its first zero element. The units of 2 bytes
  /// fill the elements from the first byte on, without conversion; behind them is zero.
  bool ReadString(std::wstring* text);

private:
  friend class TReaderAccess;

  bool _Read(void* data, unsigned long size);
  bool _ReadPadding(unsigned long length);
  void _SkipWidePadding(unsigned long length);
  const char* _ReadText(unsigned long length);

  TStream* m_Stream;
  bool m_Owned;
  void* m_QueryContext;
  TQueryFunc m_QueryFunc;
  void* m_Scratch;
  unsigned long m_ScratchCapacity;
  [[maybe_unused]] bool m_Reserved;
};

} // namespace Zx3D
