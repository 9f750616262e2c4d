#pragma once

#include <algorithm>
#include <cstring>
#include <typeinfo>

#include <ZxCore3D/object/TMemoryStream.h>

namespace Zx3D {

/// The short way past the virtual calls for streams that are memory and nothing else. It never does
/// what the long way, one transfer after the other, would not have done.
class TMemoryAccess {
public:
  /// `stream` if it is exactly a `TMemoryStream`, whose transfers nobody has overridden.
  static TMemoryStream* Of(TStream* stream) {
    return stream != nullptr && typeid(*stream) == typeid(TMemoryStream)
               ? static_cast<TMemoryStream*>(stream)
               : nullptr;
  }

  /// Where `size` bytes can be written without growing, or null.
  static unsigned char* Claim(TMemoryStream& stream, unsigned long size) {
    const auto position = static_cast<unsigned long>(stream.m_Position);
    return stream.m_Position >= 0 && size <= stream.m_Capacity - position ? stream.m_Data + position
                                                                          : nullptr;
  }

  /// Ends a write of `size` bytes at what `Claim` returned.
  static void Written(TMemoryStream& stream, unsigned long size) {
    stream.m_Position += static_cast<long>(size);
    stream.m_Size = std::max(stream.m_Size, static_cast<unsigned long>(stream.m_Position));
  }

  /// The bytes at the position, with their count; null if there are none.
  static const unsigned char* Peek(const TMemoryStream& stream, unsigned long* count) {
    const auto position = static_cast<unsigned long>(stream.m_Position);
    if (stream.m_Position < 0 || position >= stream.m_Size) {
      return nullptr;
    }
    *count = stream.m_Size - position;
    return stream.m_Data + position;
  }

  /// Moves behind `size` bytes that `Peek` showed.
  static void Passed(TMemoryStream& stream, unsigned long size) {
    stream.m_Position += static_cast<long>(size);
  }
};

/// Lengths up to this may size an allocation as they stand in a file.
constexpr unsigned long kTrustedLength = 4096;

/// How much more memory is taken at a time when a stream delivers more than it said.
constexpr unsigned long kGrowthStep = 0x40000;

/// The bytes that can still come, as far as the stream knows.
inline unsigned long GetRemaining(const TStream& stream) {
  const long position = stream.GetPos();
  const long size = stream.GetSize();
  return position >= 0 && size > position ? static_cast<unsigned long>(size - position) : 0;
}

/// `ReadAll` of `size` bytes into memory that grows with what arrives. `reserve(n)` makes room for
/// `n` bytes, keeps what is there, and returns where the block begins, or null. What the stream
/// consumes when it falls short is what one `ReadAll` of the whole size would have consumed, as
/// long as its `GetSize` is right.
template <class Reserve>
bool ReadGrowing(TStream& stream, unsigned long size, const Reserve& reserve) {
  unsigned long step = kTrustedLength;
  if (size > step) {
    // One byte more than can come makes a stream that delivers all or nothing refuse at once.
    step = std::max(step, GetRemaining(stream) + 1);
  }
  unsigned long have = 0;
  do {
    const unsigned long want = std::min(size - have, step);
    unsigned char* block = reserve(have + want);
    if (block == nullptr || !stream.ReadAll(block + have, want)) {
      return false;
    }
    have += want;
    step = kGrowthStep;
  } while (have < size);
  return true;
}

} // namespace Zx3D
