#pragma once

#include <exception>
#include <string>

#include <ZxBaseKit/Export.h>

/// The family's exception: thrown by value, caught by reference.
///
/// Built from a text with the placeholders "%1%", "%2%" and so on. Each `operator<<` fills the next
/// placeholder, in every place where it stands, and returns the message; a value with no
/// placeholder left is ignored. A placeholder that never got a value stays in the text.
class ZX_BASEKIT_API TZxMessage : public std::exception {
public:
  TZxMessage() = default;
  explicit TZxMessage(std::string text);
  explicit TZxMessage(const char* text);
  TZxMessage(const TZxMessage&) = default;
  TZxMessage& operator=(const TZxMessage&) = default;
  ~TZxMessage() override;

  /// The text with its placeholders filled.
  const char* what() const noexcept override { return m_Text.c_str(); }
  const std::string& GetText() const noexcept { return m_Text; }

  /// Puts `value` in the place of the next placeholder.
  void Fill(const std::string& value);

private:
  std::string m_Text;
  unsigned int m_Next = 1;
};

ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, const std::string& value);
ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, const char* value);
ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, int value);
ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, unsigned int value);
ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, long value);
ZX_BASEKIT_API TZxMessage operator<<(const TZxMessage& message, unsigned long value);

/// Where traced messages go: `user` is what was given to `ZxSetTraceSink`.
using ZxTraceSink = void (*)(const TZxMessage& message, void* user);

/// Sets the sink of `ZxTraceException`; null takes it away. Not to be called while another thread
/// may trace.
ZX_BASEKIT_API void ZxSetTraceSink(ZxTraceSink sink, void* user);

/// Hands a message to the sink. Without one it does nothing. Never throws: what the sink throws is
/// dropped.
ZX_BASEKIT_API void ZxTraceException(const TZxMessage& message) noexcept;
