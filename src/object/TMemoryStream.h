#pragma once

#include <string>

#include <ZxCore3D/object/TBuffer.h>
#include <ZxCore3D/object/TStream.h>
#include <ZxCore3D/types/Export.h>

namespace Zx3D {

/// A stream over a block of memory. An owning stream grows and frees its block, which comes from
/// `malloc`; an attached one stays within the capacity that it was given. The position may lie
/// behind the size as long as it is within the capacity.
class ZX_CORE3D_API TMemoryStream : public TStream {
public:
  /// Carriage return and line feed, without a terminator.
  static const char s_EOL[2];

  /// An empty stream, which allocates with its first write.
  TMemoryStream();

  /// A stream of the `size` bytes at `data`. With `owned` the stream grows the block by `realloc`
  /// and frees it.
  TMemoryStream(void* data, unsigned long size, bool owned);

  /// The same over a block of `capacity` bytes of which `size` are valid; a size above the capacity
  /// is cut to it.
  TMemoryStream(void* data, unsigned long size, unsigned long capacity, bool owned);

  /// The same over the block that `buffer` tells; `buffer` itself is left as it is.
  TMemoryStream(TBuffer<unsigned char>& buffer, bool owned);

  ~TMemoryStream() override;

  /// `Close`, then as the constructor of the same arguments. A block that the stream holds already
  /// is not freed.
  void SetBuffer(unsigned char* data, unsigned long size, bool owned);
  void SetBuffer(TBuffer<unsigned char>& buffer, bool owned);

  /// Lets the block go, freeing it when owned: the stream is empty and owning then. Nothing changes
  /// when there is no block.
  void Close();

  /// `Close` by another name.
  void Free() { Close(); }

  /// Makes the capacity at least `capacity` bytes, exactly that many where it grows. False when the
  /// stream isn't owning or memory is exhausted.
  bool Reserve(unsigned long capacity);

  /// How many bytes the block has room for.
  unsigned long GetCapacity() const { return m_Capacity; }

  /// The capacity that a write up to `size` bytes grows to.
  static unsigned long CalcCapacity(unsigned long size) { return size + size / 2 + 1024; }

  /// Replaces the content by that of a file; the position becomes 0. False when the file can't be
  /// opened (nothing changes then), when the capacity doesn't suffice and can't grow, or when the
  /// file ends early: the size is the file's then, and what didn't come is zero.
  bool LoadFromFile(const std::string& name);

  /// Writes the whole content to a file, whatever the position, which stays.
  bool SaveToFile(const std::string& name);

  /// Writes `length` characters without a terminator; `~0` and `~0 - 1` measure with `strlen`. A
  /// null pointer is false for any length but 0.
  bool WriteString(const char* text, unsigned long length);

  /// Writes `s_EOL`.
  bool WriteEOL();

  /// Exchanges everything.
  void Swap(TMemoryStream& other);

  bool IsEOS() override;
  bool SetEOS() override;

  /// Reads up to a line feed, a carriage return, or both in this order, which are consumed and not
  /// stored, or up to `bufferSize - 1` characters, and terminates them. A carriage return as the
  /// last character that fits leaves its line feed for the next call. `*length`, if given, receives
  /// the characters stored. False at the end of the stream and for a buffer of 0 bytes.
  bool ReadLine(char* buffer, unsigned long bufferSize, unsigned long* length) override;

  /// The position, in bytes from the beginning.
  long GetPos() const override;

  /// True up to the capacity, and for negative positions, from which no transfer succeeds.
  bool SetPos(long position) override;

  /// How many bytes are valid.
  long GetSize() const override;

  /// Growing shows bytes that were never written, and allocates exactly `size` bytes. Shrinking
  /// pulls the position down to the size and gives no memory back. Negative sizes are false.
  bool SetSize(long size) override;

  /// All the bytes, or none and false.
  bool ReadAll(void* data, unsigned long size) override;

  /// All the bytes, or none and false. A block too small grows to `CalcCapacity` of the new end.
  /// The bytes may come from the stream's own block.
  bool WriteAll(const void* data, unsigned long size) override;

  unsigned long _Read(void* data, unsigned long size) override;

  /// As `WriteAll`, but 0 bytes behind the size move the size up to the position.
  unsigned long _Write(const void* data, unsigned long size) override;

  bool Skip(unsigned long size) override;

  /// Hands out a view into the block, which a write that grows the block leaves dangling. The range
  /// has to lie within the size.
  void* Map(long offset, unsigned long size, bool read, bool write, void** data) override;

  /// Moves the position behind the mapped range.
  bool Unmap(void* mapping) override;

  bool SupportMap() override;

private:
  friend class TMemoryAccess;

  void _Take(void* data, unsigned long size, unsigned long capacity, bool owned);
  bool _Resize(unsigned long capacity);
  bool _Put(const void* data, unsigned long size);

  unsigned char* m_Data;
  unsigned long m_Size;
  unsigned long m_Capacity;
  long m_Position;
  bool m_Owned;
};

} // namespace Zx3D
