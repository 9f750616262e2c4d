#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <type_traits>
#include <vector>

#include <ZxBaseKit/Export.h>

/// The family's exception: thrown by value, caught by reference.
///
/// Built from a text with the placeholders "%1%", "%2%" and so on. Each `operator<<` fills the
/// lowest placeholder that is still open, whatever its number, in every place where it stands, and
/// returns the message. A value goes in as it is: what looks like a placeholder in it is none. A
/// value with no placeholder left is ignored; a placeholder that never got a value stays in the
/// text.
class ZX_BASEKIT_API TZxMessage : public std::exception {
public:
  /// An empty text.
  TZxMessage() = default;
  /// A text with or without placeholders; null is empty.
  explicit TZxMessage(std::string text);
  explicit TZxMessage(const char* text);
  /// Copies the text and its open placeholders.
  TZxMessage(const TZxMessage&) = default;
  TZxMessage& operator=(const TZxMessage&) = default;
  ~TZxMessage() override;

  /// The text with its placeholders filled.
  const char* what() const noexcept override { return m_Text.c_str(); }
  const std::string& GetText() const noexcept { return m_Text; }

  /// Puts `value` in the place of the lowest open placeholder.
  void Fill(const std::string& value);

private:
  /// An open placeholder: where it stands in the text, its length with both signs, its number.
  struct PLACE {
    std::size_t At;
    std::size_t Size;
    unsigned long Number;
  };

  std::string m_Text;
  std::vector<PLACE> m_Open; ///< in the order of the text
};

/// Each returns the filled message and leaves `message` as it is: a result that is not used is a
/// value lost. Numbers are written as in the "C" locale.
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message,
                                                   const std::string& value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, const char* value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, int value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, unsigned int value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, long value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, unsigned long value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, long long value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message,
                                                   unsigned long long value);
/// One character.
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, char value);
/// The shortest digits that read back as the same number of the type.
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, float value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, double value);
[[nodiscard]] ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, long double value);

/// The arithmetic types that are left, as whole numbers: `bool` as 0 or 1, the one-byte integers
/// and the wide characters by their value. A template, so that no pointer becomes a `bool`.
template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
[[nodiscard]] TZxMessage operator<<(const TZxMessage& message, T value) {
  if constexpr (std::is_signed_v<T>) {
    return message << static_cast<long long>(value);
  } else {
    return message << static_cast<unsigned long long>(value);
  }
}

/// Where traced messages go: `user` is what was given to `ZxSetTraceSink`.
using ZxTraceSink = void (*)(const TZxMessage& message, void* user);

/// Sets the sink of `ZxTraceException`; null takes it away. Not to be called while another thread
/// may trace.
ZX_BASEKIT_API void ZxSetTraceSink(ZxTraceSink sink, void* user);

/// Hands a message to the sink. Without one it does nothing. Never throws: what the sink throws is
/// dropped.
ZX_BASEKIT_API void ZxTraceException(const TZxMessage& message) noexcept;
