// What runs when the loader brings the library in: the creator registry's initialiser and, from the
// compiler's start files, frame_dummy. Read from the file that was built.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>

#include <ZxCore3D/object/TCreator.h>

namespace {

// How the loader finds a pointer's value from where the library lies, and what the compiler's own
// libraries let run: on arm64 one of them looks up which atomic instructions the processor has.
#ifdef __aarch64__
constexpr unsigned kRelative = R_AARCH64_RELATIVE;
constexpr std::size_t kOfTheCompiler = 2;
#else
constexpr unsigned kRelative = R_X86_64_RELATIVE;
constexpr std::size_t kOfTheCompiler = 1;
#endif

class TElf {
public:
  explicit TElf(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    m_Bytes.assign(std::istreambuf_iterator<char>(file), {});
    const auto header = At<Elf64_Ehdr>(0);
    for (unsigned i = 0; i < header.e_shnum; ++i) {
      m_Sections.push_back(At<Elf64_Shdr>(header.e_shoff + i * sizeof(Elf64_Shdr)));
    }
    m_Names = m_Sections.at(header.e_shstrndx).sh_offset;
  }

  template <class T> T At(std::uint64_t offset) const {
    T record;
    std::memcpy(&record, m_Bytes.substr(offset, sizeof record).data(), sizeof record);
    return record;
  }

  std::string Text(std::uint64_t offset) const { return m_Bytes.c_str() + offset; }

  // The section of a name, or null.
  const Elf64_Shdr* Find(const std::string& name) const {
    for (const Elf64_Shdr& section : m_Sections) {
      if (Text(m_Names + section.sh_name) == name) {
        return &section;
      }
    }
    return nullptr;
  }

  template <class T> std::vector<T> Records(const Elf64_Shdr& section) const {
    std::vector<T> records;
    for (std::uint64_t at = 0; at < section.sh_size; at += sizeof(T)) {
      records.push_back(At<T>(section.sh_offset + at));
    }
    return records;
  }

  const Elf64_Shdr& Linked(const Elf64_Shdr& section) const {
    return m_Sections.at(section.sh_link);
  }

private:
  std::string m_Bytes;
  std::vector<Elf64_Shdr> m_Sections;
  std::uint64_t m_Names = 0;
};

std::string LibraryFile() {
  Dl_info info{};
  EXPECT_NE(dladdr(reinterpret_cast<void*>(&Zx3D::RegisterCreator), &info), 0);
  return info.dli_fname;
}

// The functions in a table of pointers, in its order, by the relative relocations that fill it.
std::vector<std::uint64_t> FunctionsIn(const TElf& elf, const Elf64_Shdr& table) {
  std::vector<std::uint64_t> functions(table.sh_size / 8);
  const Elf64_Shdr* relocations = elf.Find(".rela.dyn");
  EXPECT_NE(relocations, nullptr);
  for (const auto& one : elf.Records<Elf64_Rela>(*relocations)) {
    if (one.r_offset - table.sh_addr < table.sh_size) {
      EXPECT_EQ(ELF64_R_TYPE(one.r_info), kRelative);
      functions[(one.r_offset - table.sh_addr) / 8] = static_cast<std::uint64_t>(one.r_addend);
    }
  }
  return functions;
}

std::string NameOf(const TElf& elf, std::uint64_t address) {
  const Elf64_Shdr* symbols = elf.Find(".symtab");
  if (symbols == nullptr) {
    return "";
  }
  for (const auto& symbol : elf.Records<Elf64_Sym>(*symbols)) {
    if (symbol.st_value == address && ELF64_ST_TYPE(symbol.st_info) == STT_FUNC) {
      return elf.Text(elf.Linked(*symbols).sh_offset + symbol.st_name);
    }
  }
  return "";
}

} // namespace

TEST(StaticInitialisers, TheRegistrysIsTheOnlyOne) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer adds its own";
#endif
  const TElf elf(LibraryFile());
  const Elf64_Shdr* table = elf.Find(".init_array");
  ASSERT_NE(table, nullptr);
  const auto functions = FunctionsIn(elf, *table);
  std::vector<std::string> names;
  for (const std::uint64_t function : functions) {
    names.push_back(NameOf(elf, function));
  }
  ASSERT_EQ(functions.size(), kOfTheCompiler + 1) << testing::PrintToString(names);
  EXPECT_EQ(elf.Find(".ctors"), nullptr);
  EXPECT_EQ(elf.Find(".preinit_array"), nullptr);
  if (elf.Find(".symtab") != nullptr) {
    EXPECT_EQ(names[0], "frame_dummy");
    EXPECT_NE(names[1].find("TCreator"), std::string::npos) << names[1];
  }
}

TEST(StaticInitialisers, TheirWorkIsDoneBeforeAnyCall) {
  EXPECT_STREQ(Zx3D::TSelfCreatingRef::s_Creator.GetClassName(), "TSelfCreatingRef");
  EXPECT_EQ(Zx3D::GetCreatorByClassName("TSelfCreatingRef"), nullptr);
  EXPECT_TRUE(Zx3D::RegisterCreator(&Zx3D::TSelfCreatingRef::s_Creator));
  EXPECT_TRUE(Zx3D::UnregisterCreator(&Zx3D::TSelfCreatingRef::s_Creator));
}
