#include "Page.h"

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

using namespace interface_page;

namespace interface_page {

std::string ErrorName(unsigned int code) {
  switch (code) {
  case 1280:
    return "`GL_INVALID_ENUM`";
  case 1281:
    return "`GL_INVALID_VALUE`";
  case 1282:
    return "`GL_INVALID_OPERATION`";
  case 1284:
    return "`GL_STACK_UNDERFLOW`";
  case 0xFFFFFFFF:
    return "error 0xFFFFFFFF";
  default:
    return "error " + std::to_string(code);
  }
}

std::string TextOf(const void* result) { return result == nullptr ? "null" : "a pointer"; }
std::string TextOf(const char* result) { return "\"" + std::string(result) + "\""; }
std::string TextOf(bool result) { return result ? "true" : "false"; }
std::string TextOf(int result) { return std::to_string(result); }
std::string TextOf(unsigned int result) { return std::to_string(result); }

namespace {

std::string Trimmed(const std::string& s) {
  const std::size_t first = s.find_first_not_of(" \t");
  return first == std::string::npos ? "" : s.substr(first, s.find_last_not_of(" \t") + 1 - first);
}

bool TakeFront(std::string* text, const std::string& front) {
  if (text->compare(0, front.size(), front) != 0) {
    return false;
  }
  *text = Trimmed(text->substr(front.size()));
  return true;
}

} // namespace

std::vector<TOperation> ReadOperations(const std::string& header) {
  std::vector<TOperation> all;
  std::istringstream lines(header);
  std::string line, section, doc, declaration;
  bool inDoc = false;
  while (std::getline(lines, line)) {
    line = Trimmed(line);
    if (TakeFront(&line, "// ---")) {
      section = line;
    } else if (TakeFront(&line, "///")) {
      doc = inDoc ? doc + " " + line : line; // a comment holds for all that follow it
      inDoc = true;
      continue;
    } else if (!declaration.empty() || line.compare(0, 8, "virtual ") == 0) {
      declaration += (declaration.empty() ? "" : " ") + line;
      if (declaration.find("= 0;") != std::string::npos) {
        const std::size_t open = declaration.find('(');
        const std::size_t name = declaration.find_last_of(" *&", open) + 1;
        all.push_back({section, declaration.substr(name, open - name),
                       declaration.substr(8, declaration.find(" = 0;") - 8), doc});
        declaration.clear();
      }
    }
    inDoc = false;
  }
  return all;
}

} // namespace interface_page

namespace {

std::string FileText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    out += c == '|' ? "\\|" : std::string(1, c);
  }
  return out;
}

std::string Answers(const TRow& row) {
  std::string text;
  for (const TProbe& probe : row.Probes) {
    Zx3D::TRenderCPU* r = new Zx3D::TRenderCPU;
    r->Create(8, 8, nullptr);
    text += (text.empty() ? "`" : "; `") + std::string(probe.Call) + "`: " + probe.Run(*r);
    r->Release();
  }
  return text;
}

constexpr char s_Head[] =
    "# The drawing interface\n\n"
    "Every operation of `TZxGL` as `TRenderCPU` fills it: what it does, and what a context of 8 by "
    "8\n"
    "pixels, freshly created, answers to the calls shown. \"accepted\" is no error and no result. "
    "In\n"
    "the calls `f4`, `d16`, `n4` and so on stand for arrays of so many floats, doubles or "
    "integers.\n\n"
    "This page is written by a test program from the header's comments and the library's answers:\n"
    "`interface_page --write` makes it anew, and the tests fail when it and the library differ.\n";

/// The whole page; empty, with a complaint, when rows and declarations do not match.
std::string Page(const std::string& header) {
  std::vector<TRow> rows;
  for (const auto& part : {StateRows(), VertexRows(), ResourceRows(), LateRows()}) {
    rows.insert(rows.end(), part.begin(), part.end());
  }
  const std::vector<TOperation> operations = ReadOperations(header);
  std::string page = s_Head, section;
  for (std::size_t i = 0; i < operations.size() || i < rows.size(); ++i) {
    if (i >= operations.size() || i >= rows.size() || operations[i].Name != rows[i].Name) {
      std::cerr << "row " << i << ": declared is "
                << (i < operations.size() ? operations[i].Signature : "nothing") << ", listed is "
                << (i < rows.size() ? rows[i].Name : "nothing") << "\n";
      return "";
    }
    if (operations[i].Section != section) {
      section = operations[i].Section;
      page +=
          "\n## " + section + "\n\n| operation | what it does | what it answers |\n|---|---|---|\n";
    }
    page += "| `" + Escaped(operations[i].Signature) + "` | " + Escaped(operations[i].Doc) + " | " +
            Escaped(Answers(rows[i])) + " |\n";
  }
  return page;
}

} // namespace

/// interface_page [--write] <header> <page>
int main(int argc, char** argv) {
  const bool write = argc == 4 && std::string(argv[1]) == "--write";
  if (argc != 3 && !write) {
    std::cerr << "interface_page [--write] <header> <page>\n";
    return 2;
  }
  const std::string page = Page(FileText(argv[argc - 2]));
  if (page.empty()) {
    return 1;
  }
  if (write) {
    std::ofstream file(argv[argc - 1], std::ios::binary);
    file << page;
    return file.good() ? 0 : 1;
  }
  std::istringstream is(page), was(FileText(argv[argc - 1]));
  std::string isLine, wasLine;
  for (int number = 1;; ++number) {
    const bool more = static_cast<bool>(std::getline(is, isLine));
    if (static_cast<bool>(std::getline(was, wasLine)) != more || (more && isLine != wasLine)) {
      std::cerr << argv[argc - 1] << ":" << number << " differs from the library's answers.\n"
                << "  page:    " << wasLine << "\n  library: " << isLine << "\n"
                << "Write it anew with --write and look at what has changed.\n";
      return 1;
    }
    if (!more) {
      return 0;
    }
  }
}
