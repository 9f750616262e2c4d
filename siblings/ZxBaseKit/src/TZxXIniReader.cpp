#include <ZxBaseKit/TZxXIniReader.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "TZxXIniFormat.h"
#include "TomlPlusPlus.h"

namespace {

struct TItem {
  const toml::key* Key;
  const toml::node* Value;
};

bool IsBefore(const toml::key* a, const toml::key* b) {
  if (a->source().begin == b->source().begin) {
    return a->str() < b->str();
  }
  return a->source().begin < b->source().begin;
}

struct TSection {
  const toml::table* Table;
  std::vector<TItem> Items;

  explicit TSection(const toml::table& table) : Table(&table) {
    Items.reserve(table.size());
    for (const auto& [key, value] : table) {
      Items.push_back({&key, &value});
    }
    std::sort(Items.begin(), Items.end(),
              [](const TItem& a, const TItem& b) { return IsBefore(a.Key, b.Key); });
  }
};

TZxMessage MessageAt(const toml::source_position& at, std::string_view what) {
  return zx_xini::MessageAt(at.line, at.column, what);
}

} // namespace

struct TZxXIniReader::TImpl {
  toml::table Root;
  std::vector<TSection> Path;

  const TItem& AtE(unsigned long item) const {
    const std::vector<TItem>& items = Path.back().Items;
    if (item >= items.size()) {
      throw TZxMessage("The section has no item %1%.") << item;
    }
    return items[item];
  }

  [[noreturn]] void RaiseTypeE(unsigned long item, const char* expected) const {
    const TItem& at = AtE(item);
    const TZxMessage what = TZxMessage("\"%1%\" is no %2%")
                            << std::string(at.Key->str()) << expected;
    throw MessageAt(at.Key->source().begin, what.GetText());
  }

  template <class T> T ReadE(unsigned long item, const char* expected) const {
    const auto* value = AtE(item).Value->as<T>();
    if (value == nullptr) {
      RaiseTypeE(item, expected);
    }
    return value->get();
  }
};

static toml::table ParseE(const std::string& text) {
  zx_xini::CheckDepthE(text);
  try {
    return toml::parse(text);
  } catch (const toml::parse_error& error) {
    throw MessageAt(error.source().begin, error.description());
  }
}

TZxXIniReader::TZxXIniReader(const std::string& text) : m_Impl(std::make_unique<TImpl>()) {
  m_Impl->Root = ParseE(text);
  m_Impl->Path.emplace_back(m_Impl->Root);
}

TZxXIniReader::~TZxXIniReader() = default;

unsigned long TZxXIniReader::GetCount() const { return m_Impl->Path.back().Items.size(); }

std::string TZxXIniReader::GetKeyE(unsigned long item) const {
  return std::string(m_Impl->AtE(item).Key->str());
}

unsigned long TZxXIniReader::FindF(const std::string& key, unsigned long from) const {
  const TSection& section = m_Impl->Path.back();
  const auto found = section.Table->find(key);
  if (found == section.Table->cend()) {
    return ~0ul;
  }
  const auto item =
      std::lower_bound(section.Items.begin(), section.Items.end(), &found->first,
                       [](const TItem& a, const toml::key* b) { return IsBefore(a.Key, b); });
  const unsigned long index = static_cast<unsigned long>(item - section.Items.begin());
  return index < from ? ~0ul : index;
}

unsigned long TZxXIniReader::FindFE(const std::string& key, unsigned long from) const {
  const unsigned long item = FindF(key, from);
  if (item == ~0ul) {
    const TZxMessage what = TZxMessage("\"%1%\" is missing") << key;
    throw MessageAt(m_Impl->Path.back().Table->source().begin, what.GetText());
  }
  return item;
}

unsigned long TZxXIniReader::FindFE(const char* key, unsigned long from) const {
  return FindFE(std::string(key != nullptr ? key : ""), from);
}

template <> double TZxXIniReader::ReadE<double>(unsigned long item) const {
  const toml::node& value = *m_Impl->AtE(item).Value;
  if (const auto* number = value.as_floating_point()) {
    return number->get();
  }
  if (const auto* whole = value.as_integer()) {
    return static_cast<double>(whole->get());
  }
  std::uint64_t bits;
  const auto* text = value.as_string();
  if (text == nullptr || !zx_xini::TextToBits(text->get(), &bits)) {
    m_Impl->RaiseTypeE(item, "number");
  }
  double number;
  std::memcpy(&number, &bits, sizeof(number));
  return number;
}

template <> long TZxXIniReader::ReadE<long>(unsigned long item) const {
  return m_Impl->ReadE<std::int64_t>(item, "whole number");
}

template <> bool TZxXIniReader::ReadE<bool>(unsigned long item) const {
  return m_Impl->ReadE<bool>(item, "boolean");
}

template <> std::string TZxXIniReader::ReadE<std::string>(unsigned long item) const {
  return m_Impl->ReadE<std::string>(item, "text");
}

unsigned long TZxXIniReader::BeginSectionE(unsigned long item) {
  const toml::table* table = m_Impl->AtE(item).Value->as_table();
  if (table == nullptr) {
    m_Impl->RaiseTypeE(item, "section");
  }
  m_Impl->Path.emplace_back(*table);
  return m_Impl->Path.size() - 1;
}

void TZxXIniReader::EndSectionE(unsigned long token) {
  if (token == 0 || token >= m_Impl->Path.size()) {
    throw TZxMessage("The reader is in no such section.");
  }
  m_Impl->Path.erase(m_Impl->Path.begin() + static_cast<std::ptrdiff_t>(token), m_Impl->Path.end());
}
