#pragma once

#include <functional>
#include <string>
#include <vector>

#include <ZxBaseKit/TZxMessage.h>

namespace zx_test {

/// Collects what is traced while it lives.
class TTraces {
public:
  TTraces() {
    ZxSetTraceSink(
        [](const TZxMessage& message, void* user) {
          static_cast<TTraces*>(user)->Texts.emplace_back(message.what());
        },
        this);
  }
  ~TTraces() { ZxSetTraceSink(nullptr, nullptr); }
  TTraces(const TTraces&) = delete;
  TTraces& operator=(const TTraces&) = delete;

  std::vector<std::string> Texts;
};

/// Whether `text` is "@file: line: function" with a number for the line.
inline bool IsTrace(const std::string& text, const std::string& file, const std::string& function) {
  const std::string head = "@" + file + ": ";
  const std::string tail = ": " + function;
  if (text.size() <= head.size() + tail.size() || text.compare(0, head.size(), head) != 0 ||
      text.compare(text.size() - tail.size(), tail.size(), tail) != 0) {
    return false;
  }
  const std::string line = text.substr(head.size(), text.size() - head.size() - tail.size());
  return line.find_first_not_of("0123456789") == std::string::npos && line[0] != '0';
}

} // namespace zx_test
