#include <ZxBaseKit/TZxXIniWriter.h>

#include <cstring>
#include <limits>
#include <sstream>
#include <vector>

#include "TZxXIniFormat.h"
#include "TomlPlusPlus.h"

struct TZxXIniWriter::TImpl {
  toml::table Root;
  std::vector<toml::table*> Path{&Root};
  TZxMessage Error{"No write has failed."};

  bool IsRefused(const std::string& key) {
    // The formatter leaves keys with these three unquoted when the rest needs no quotes.
    if (!zx_xini::IsUtf8(key) || key.find_first_of("\t\n'") != std::string::npos) {
      Error = TZxMessage("A key is not UTF-8, or has a tab, a line feed or an apostrophe.");
      return true;
    }
    if (Path.back()->contains(key)) {
      Error = TZxMessage("The key \"%1%\" stands in the section already.") << key;
      return true;
    }
    return false;
  }

  template <class T> bool Write(const std::string& key, const T* value) {
    if (value == nullptr) {
      Error = TZxMessage("There is no value for the key \"%1%\".") << key;
      return false;
    }
    if (IsRefused(key)) {
      return false;
    }
    Path.back()->insert(key, *value);
    return true;
  }

  unsigned long BeginE(const std::string& name, bool isCompact) {
    if (IsRefused(name)) {
      throw Error;
    }
    if (Path.size() > zx_xini::kMaxDepth) {
      throw TZxMessage("The section \"%1%\" is nested too deep.") << name;
    }
    toml::table section;
    section.is_inline(isCompact);
    toml::node& node = Path.back()->insert(name, std::move(section)).first->second;
    Path.push_back(node.as_table());
    return Path.size() - 1;
  }
};

TZxXIniWriter::TZxXIniWriter() : m_Impl(std::make_unique<TImpl>()) {}

TZxXIniWriter::~TZxXIniWriter() = default;

template <> bool TZxXIniWriter::WriteS<double>(const std::string& key, const double* value) {
  if (value != nullptr && *value != *value) {
    const double plain = std::numeric_limits<double>::quiet_NaN();
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): the bits of a NaN are what is compared
    if (std::memcmp(value, &plain, sizeof(plain)) != 0) {
      std::uint64_t bits;
      std::memcpy(&bits, value, sizeof(bits));
      const std::string text = zx_xini::BitsToText(bits);
      return m_Impl->Write(key, &text);
    }
  }
  return m_Impl->Write(key, value);
}

template <> bool TZxXIniWriter::WriteS<long>(const std::string& key, const long* value) {
  return m_Impl->Write(key, value);
}

template <> bool TZxXIniWriter::WriteS<bool>(const std::string& key, const bool* value) {
  return m_Impl->Write(key, value);
}

template <>
bool TZxXIniWriter::WriteS<std::string>(const std::string& key, const std::string* value) {
  if (value != nullptr && !zx_xini::IsUtf8(*value)) {
    m_Impl->Error = TZxMessage("The text of the key \"%1%\" is not UTF-8.") << key;
    return false;
  }
  return m_Impl->Write(key, value);
}

void TZxXIniWriter::RaiseErrorE() const { throw m_Impl->Error; }

unsigned long TZxXIniWriter::BeginSectionSE(const std::string& name) {
  return m_Impl->BeginE(name, false);
}

unsigned long TZxXIniWriter::BeginSectionCompactSE(const std::string& name) {
  return m_Impl->BeginE(name, true);
}

void TZxXIniWriter::EndSectionE(unsigned long token) {
  if (token == 0 || token >= m_Impl->Path.size()) {
    throw TZxMessage("No such section is open.");
  }
  m_Impl->Path.resize(token);
}

std::string TZxXIniWriter::GetText() const {
  // Texts stand on one line with escapes, so that any of them comes back byte by byte.
  constexpr toml::format_flags flags = toml::format_flags::allow_unicode_strings;
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << toml::toml_formatter(m_Impl->Root, flags) << '\n';
  return stream.str();
}
