#include "TZxXIniFormat.h"

#include <charconv>
#include <vector>

namespace zx_xini {

namespace {

constexpr std::string_view kBitsPrefix = "0x";
constexpr std::size_t kBitsDigits = 16;

/// Follows strings, comments and brackets of a text just far enough to know how deep it goes.
class TDepthScan {
public:
  explicit TDepthScan(std::string_view text) : m_Text(text) {}

  void RunE() {
    if (m_Text.substr(0, 3) == "\xEF\xBB\xBF") {
      m_At = 3;
    }
    while (m_At < m_Text.size()) {
      StepE();
    }
  }

private:
  struct TBracket {
    unsigned long Dots; ///< of the key before it
    bool IsArray;
  };

  void StepE() {
    const char c = m_Text[m_At];
    switch (c) {
    case '\n':
      EndLine();
      break;
    case ' ':
    case '\t':
    case '\r':
      ++m_At;
      return;
    case '#':
      SkipComment();
      return;
    case '"':
    case '\'':
      SkipString(c);
      m_IsLineStart = false;
      return;
    case '.':
      m_Dots += IsKey() ? 1 : 0;
      break;
    case '=':
      m_IsValue = true;
      break;
    case ',':
      m_Dots = 0;
      m_IsValue = false;
      break;
    case '[':
    case '{':
      Open(c);
      break;
    case ']':
    case '}':
      Close();
      break;
    default:
      break;
    }
    m_IsLineStart = c == '\n';
    if (m_Header + m_Total + m_Dots > kMaxDepth) {
      throw MessageAt(m_Line, m_At - m_LineBegin + 1, "nested too deep");
    }
    ++m_At;
  }

  void EndLine() {
    if (m_IsHeader) {
      m_Header = m_Dots + 1;
      m_IsHeader = false;
    }
    m_Dots = 0;
    m_IsValue = false;
    ++m_Line;
    m_LineBegin = m_At + 1;
  }

  /// A dot in a number is no level.
  bool IsKey() const { return !m_IsValue && (m_Open.empty() || !m_Open.back().IsArray); }

  void Open(char c) {
    if (m_IsHeader) {
      return;
    }
    if (c == '[' && m_IsLineStart && m_Open.empty()) {
      m_IsHeader = true;
      m_Header = 0;
      return;
    }
    m_Open.push_back({m_Dots, c == '['});
    m_Total += m_Dots + 1;
    m_Dots = 0;
    m_IsValue = false;
  }

  void Close() {
    if (m_IsHeader || m_Open.empty()) {
      return;
    }
    m_Total -= m_Open.back().Dots + 1;
    m_Open.pop_back();
    m_Dots = 0;
  }

  void SkipComment() {
    const std::size_t end = m_Text.find('\n', m_At);
    m_At = end == std::string_view::npos ? m_Text.size() : end;
  }

  void SkipString(char quote) {
    const std::string_view triple = quote == '"' ? "\"\"\"" : "'''";
    const bool isMultiLine = m_Text.substr(m_At, 3) == triple;
    m_At += isMultiLine ? 3 : 1;
    while (m_At < m_Text.size()) {
      const char c = m_Text[m_At];
      if (c == '\n') {
        if (!isMultiLine) {
          return;
        }
        ++m_Line;
        m_LineBegin = m_At + 1;
      }
      if (c == '\\' && quote == '"' && m_At + 1 < m_Text.size() && m_Text[m_At + 1] != '\n') {
        m_At += 2;
        continue;
      }
      if (c != quote) {
        ++m_At;
        continue;
      }
      if (!isMultiLine) {
        ++m_At;
        return;
      }
      if (m_Text.substr(m_At, 3) == triple) {
        // Up to two quotes before the closing three belong to the string.
        m_At += 3;
        for (int i = 0; i < 2 && m_At < m_Text.size() && m_Text[m_At] == quote; ++i) {
          ++m_At;
        }
        return;
      }
      ++m_At;
    }
  }

  std::string_view m_Text;
  std::size_t m_At = 0;
  std::size_t m_LineBegin = 0;
  unsigned long m_Line = 1;
  bool m_IsLineStart = true;
  bool m_IsHeader = false;
  bool m_IsValue = false;     ///< behind the equals sign
  unsigned long m_Header = 0; ///< levels of the current section
  unsigned long m_Total = 0;  ///< levels of the open brackets and the keys before them
  unsigned long m_Dots = 0;   ///< dots of the current key
  std::vector<TBracket> m_Open;
};

} // namespace

TZxMessage MessageAt(unsigned long line, unsigned long column, std::string_view what) {
  return TZxMessage("line %1%, column %2%: %3%") << line << column << std::string(what);
}

void CheckDepthE(std::string_view text) { TDepthScan(text).RunE(); }

bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const unsigned int lead = static_cast<unsigned char>(text[i]);
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || size > text.size() - i) {
      return false;
    }
    for (std::size_t j = 1; j < size; ++j) {
      const unsigned int byte = static_cast<unsigned char>(text[i + j]);
      // The second byte tells overlong forms, surrogates and what lies beyond the last code point.
      const unsigned int low = j > 1 ? 0x80 : lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
      const unsigned int high = j > 1 ? 0xBF : lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
      if (byte < low || byte > high) {
        return false;
      }
    }
    i += size;
  }
  return true;
}

std::string BitsToText(std::uint64_t bits) {
  std::string text(kBitsPrefix);
  for (std::size_t i = kBitsDigits; i-- > 0;) {
    text += "0123456789abcdef"[(bits >> (4 * i)) & 0xF];
  }
  return text;
}

bool TextToBits(std::string_view text, std::uint64_t* bits) {
  if (text.size() != kBitsPrefix.size() + kBitsDigits ||
      text.substr(0, kBitsPrefix.size()) != kBitsPrefix) {
    return false;
  }
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + kBitsPrefix.size(), end, *bits, 16);
  return result.ec == std::errc() && result.ptr == end;
}

} // namespace zx_xini
