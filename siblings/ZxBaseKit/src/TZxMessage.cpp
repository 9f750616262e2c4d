#include <ZxBaseKit/TZxMessage.h>

#include <utility>

static ZxTraceSink s_Sink = nullptr;
static void* s_SinkUser = nullptr;

TZxMessage::TZxMessage(std::string text) : m_Text(std::move(text)) {}

TZxMessage::TZxMessage(const char* text) : m_Text(text != nullptr ? text : "") {}

TZxMessage::~TZxMessage() = default;

void TZxMessage::Fill(const std::string& value) {
  const std::string mark = std::string(1, '%').append(std::to_string(m_Next)).append(1, '%');
  for (std::size_t at = m_Text.find(mark); at != std::string::npos;
       at = m_Text.find(mark, at + value.size())) {
    m_Text.replace(at, mark.size(), value);
  }
  ++m_Next;
}

TZxMessage operator<<(const TZxMessage& message, const std::string& value) {
  TZxMessage filled = message;
  filled.Fill(value);
  return filled;
}

TZxMessage operator<<(const TZxMessage& message, const char* value) {
  return message << std::string(value != nullptr ? value : "");
}

TZxMessage operator<<(const TZxMessage& message, int value) {
  return message << std::to_string(value);
}

TZxMessage operator<<(const TZxMessage& message, unsigned int value) {
  return message << std::to_string(value);
}

TZxMessage operator<<(const TZxMessage& message, long value) {
  return message << std::to_string(value);
}

TZxMessage operator<<(const TZxMessage& message, unsigned long value) {
  return message << std::to_string(value);
}

void ZxSetTraceSink(ZxTraceSink sink, void* user) {
  s_Sink = sink;
  s_SinkUser = user;
}

void ZxTraceException(const TZxMessage& message) noexcept {
  if (s_Sink == nullptr) {
    return;
  }
  try {
    s_Sink(message, s_SinkUser);
  } catch (...) {
  }
}
