#include <ZxBaseKit/TZxMessage.h>

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

static ZxTraceSink s_Sink = nullptr;
static void* s_SinkUser = nullptr;

TZxMessage::TZxMessage(std::string text) : m_Text(std::move(text)) {
  for (std::size_t at = m_Text.find('%'); at != std::string::npos;) {
    const std::size_t end = m_Text.find('%', at + 1);
    if (end == std::string::npos) {
      break;
    }
    const char* const last = m_Text.data() + end;
    unsigned long number = 0;
    const auto [stop, error] = std::from_chars(m_Text.data() + at + 1, last, number);
    if (error == std::errc() && stop == last) {
      m_Open.push_back({at, end + 1 - at, number});
      at = m_Text.find('%', end + 1);
    } else {
      at = end; // which may begin a placeholder itself
    }
  }
}

TZxMessage::TZxMessage(const char* text) : TZxMessage(std::string(text != nullptr ? text : "")) {}

TZxMessage::~TZxMessage() = default;

void TZxMessage::Fill(const std::string& value) {
  const auto lowest =
      std::min_element(m_Open.begin(), m_Open.end(),
                       [](const PLACE& a, const PLACE& b) { return a.Number < b.Number; });
  if (lowest == m_Open.end()) {
    return;
  }
  const unsigned long number = lowest->Number;
  std::string text;
  std::vector<PLACE> open;
  std::size_t done = 0; // up to here the text is taken over
  for (const PLACE& place : m_Open) {
    text.append(m_Text, done, place.At - done);
    if (place.Number == number) {
      text += value;
    } else {
      open.push_back({text.size(), place.Size, place.Number});
      text.append(m_Text, place.At, place.Size);
    }
    done = place.At + place.Size;
  }
  text.append(m_Text, done);
  m_Text.swap(text);
  m_Open.swap(open);
}

// Any number that `std::to_chars` writes; no locale has a say in that.
template <class T> static TZxMessage FillNumber(const TZxMessage& message, T value) {
  char text[64];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return message << std::string(text, result.ptr);
}

TZxMessage operator<<(const TZxMessage& message, const std::string& value) {
  TZxMessage filled = message;
  filled.Fill(value);
  return filled;
}

TZxMessage operator<<(const TZxMessage& message, const char* value) {
  return message << std::string(value != nullptr ? value : "");
}

TZxMessage operator<<(const TZxMessage& message, int value) { return FillNumber(message, value); }

TZxMessage operator<<(const TZxMessage& message, unsigned int value) {
  return FillNumber(message, value);
}

TZxMessage operator<<(const TZxMessage& message, long value) { return FillNumber(message, value); }

TZxMessage operator<<(const TZxMessage& message, unsigned long value) {
  return FillNumber(message, value);
}

TZxMessage operator<<(const TZxMessage& message, long long value) {
  return FillNumber(message, value);
}

TZxMessage operator<<(const TZxMessage& message, unsigned long long value) {
  return FillNumber(message, value);
}

TZxMessage operator<<(const TZxMessage& message, float value) { return FillNumber(message, value); }

TZxMessage operator<<(const TZxMessage& message, double value) {
  return FillNumber(message, value);
}

TZxMessage operator<<(const TZxMessage& message, long double value) {
  return FillNumber(message, value);
}

TZxMessage operator<<(const TZxMessage& message, char value) {
  return message << std::string(1, value);
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
