#include "Page.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include <ZxCore3D/render/GLEnums.h>

using namespace interface_page;

namespace interface_page {

std::string ErrorName(unsigned int code) {
  switch (code) {
  case GL_INVALID_ENUM:
    return "`GL_INVALID_ENUM`";
  case GL_INVALID_VALUE:
    return "`GL_INVALID_VALUE`";
  case GL_INVALID_OPERATION:
    return "`GL_INVALID_OPERATION`";
  case GL_STACK_UNDERFLOW:
    return "`GL_STACK_UNDERFLOW`";
  case 0xFFFFFFFF:
    return "error 0xFFFFFFFF";
  default:
    return "error " + std::to_string(code);
  }
}

std::string TextOf(const void* result) { return result == nullptr ? "null" : "a pointer"; }
std::string TextOf(const char* result) { return '"' + std::string(result) + '"'; }
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
  int comment = 0;
  while (std::getline(lines, line)) {
    line = Trimmed(line);
    if (TakeFront(&line, "// ---")) {
      section = line;
    } else if (TakeFront(&line, "///")) {
      doc = inDoc ? doc + " " + line : line; // a comment holds for all that follow it
      comment += inDoc ? 0 : 1;
      inDoc = true;
      continue;
    } else if (!declaration.empty() || line.compare(0, 8, "virtual ") == 0) {
      declaration += (declaration.empty() ? "" : " ") + line;
      if (declaration.find("= 0;") != std::string::npos) {
        const std::size_t open = declaration.find('(');
        const std::size_t name = declaration.find_last_of(" *&", open) + 1;
        all.push_back({section, declaration.substr(name, open - name),
                       declaration.substr(8, declaration.find(" = 0;") - 8), doc, comment});
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

/// A call as it is written and what came of it.
using TAnswer = std::pair<std::string, std::string>;

std::vector<TAnswer> Answers(const TRow& row) {
  std::vector<TAnswer> all;
  for (const TProbe& probe : row.Probes) {
    Zx3D::TRenderCPU* r = new Zx3D::TRenderCPU;
    r->Create(8, 8, nullptr);
    all.emplace_back(probe.Call, probe.Run(*r));
    r->Release();
  }
  return all;
}

// --- Families: operations that share a comment share a row

struct TFamily {
  std::vector<TOperation> Operations;
  std::vector<std::vector<TAnswer>> Answers; ///< of each operation
};

bool AnswerAlike(const std::vector<TAnswer>& a, const std::vector<TAnswer>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const TAnswer& x, const TAnswer& y) { return x.second == y.second; });
}

std::string Quoted(const std::string& code) {
  std::string text = "`";
  text += code;
  text += '`';
  return text;
}

/// The answers of the first, if those of all others are the same, or else those of each.
std::string AnswerText(const TFamily& family) {
  const auto& all = family.Answers;
  const bool alike = std::all_of(all.begin(), all.end(), [&all](const std::vector<TAnswer>& one) {
    return AnswerAlike(one, all.front());
  });
  std::string text;
  for (const std::vector<TAnswer>& one : all) {
    for (const TAnswer& answer : one) {
      text += text.empty() ? "" : "; ";
      text += Quoted(answer.first) + ": " + answer.second;
    }
    if (alike) {
      break;
    }
  }
  return text + (!alike || all.size() == 1 ? ""
                 : all.size() == 2         ? "; the other likewise"
                                           : "; the others likewise");
}

std::size_t CommonStart(const std::string& a, const std::string& b) {
  return static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first -
                                  a.begin());
}

std::string ArgumentsOf(const TOperation& operation) {
  const std::size_t open = operation.Signature.find('(') + 1;
  return operation.Signature.substr(open, operation.Signature.rfind(')') - open);
}

/// Many forms of one name: the name and the arguments that all have, and what each adds to them. An
/// ending in letters tells the arguments by itself.
std::string FormsText(const std::vector<TOperation>& operations, std::size_t name) {
  const std::string first = ArgumentsOf(operations.front());
  std::size_t arguments = first.size();
  for (const TOperation& operation : operations) {
    arguments = std::min(arguments, CommonStart(first, ArgumentsOf(operation)));
  }
  const std::size_t comma = first.rfind(", ", arguments);
  const std::string shared = comma == std::string::npos ? "" : first.substr(0, comma + 2);
  std::string head = operations.front().Name.substr(0, name);
  if (!shared.empty()) {
    head += "(" + shared + "...)";
  }
  std::string text;
  for (const TOperation& operation : operations) {
    std::string form = operation.Name.substr(name);
    if (form.empty() && !shared.empty()) {
      form = ArgumentsOf(operation).substr(shared.size());
    } else if (form.empty() || std::isdigit(static_cast<unsigned char>(form.back())) != 0) {
      form = form.empty() ? "" : operation.Name;
      form.append("(").append(ArgumentsOf(operation)).append(")");
    }
    text += text.empty() ? "" : ", ";
    text += Quoted(form);
  }
  return Quoted(head) + " with " + text;
}

/// The signatures as they are, unless there are many of one name.
std::string SignatureText(const std::vector<TOperation>& operations) {
  const std::string& first = operations.front().Name;
  std::size_t name = first.size();
  std::size_t ending = 0;
  for (const TOperation& operation : operations) {
    name = std::min(name, CommonStart(first, operation.Name));
  }
  for (const TOperation& operation : operations) {
    ending = std::max(ending, operation.Name.size() - name);
  }
  if (operations.size() > 4 && ending <= 4) {
    return FormsText(operations, name);
  }
  std::string text;
  for (const TOperation& operation : operations) {
    text += text.empty() ? "" : "<br>";
    text += Quoted(operation.Signature);
  }
  return text;
}

std::string RowText(const TFamily& family) {
  return "| " + Escaped(SignatureText(family.Operations)) + " | " +
         Escaped(family.Operations.front().Doc) + " | " + Escaped(AnswerText(family)) + " |\n";
}

constexpr char kHead[] =
    R"(# The drawing interface

Every operation of `TZxGL` as `TRenderCPU` fills it: what it does, and what a context of 8 by 8
pixels, freshly created, answers to the calls shown. "accepted" is no error and no result. In
the calls `f4`, `d16`, `n4` and so on stand for arrays of so many floats, doubles or integers.

Operations that differ in their arguments only share a row; each of them was called. Where a row
lists endings instead of signatures, the number is that of the arguments, `i` is `int`, `f` `float`,
`d` `double`, `ub` `unsigned char`, and a `v` behind it a pointer to so many of them.

Implementations override these operations, and hosts call them, colours without the underscore: `Color3f` and the
others forward to `_Color3f` and so on.

This page is written by a test program from the header's comments and the library's answers:
`interface_page --write` makes it anew, and the tests fail when it and the library differ.
)";

/// All families in the header's order; empty, with a complaint, when operations and calls do not
/// match one to one, or an operation is not explained or not called.
std::vector<TFamily> Families(const std::string& header) {
  std::vector<TRow> rows;
  for (const auto& part : {StateRows(), VertexRows(), ResourceRows(), LateRows()}) {
    rows.insert(rows.end(), part.begin(), part.end());
  }
  const std::vector<TOperation> operations = ReadOperations(header);
  std::vector<TFamily> families;
  for (std::size_t i = 0; i < operations.size() || i < rows.size(); ++i) {
    if (i >= operations.size() || i >= rows.size() || operations[i].Name != rows[i].Name) {
      std::cerr << "row " << i << ": declared is "
                << (i < operations.size() ? operations[i].Signature : "nothing") << ", listed is "
                << (i < rows.size() ? rows[i].Name : "nothing") << "\n";
      return {};
    }
    if (operations[i].Doc.empty() || rows[i].Probes.empty()) {
      std::cerr << operations[i].Signature << " has no comment or is not called\n";
      return {};
    }
    if (families.empty() || families.back().Operations.front().Comment != operations[i].Comment ||
        families.back().Operations.front().Section != operations[i].Section) {
      families.emplace_back();
    }
    families.back().Operations.push_back(operations[i]);
    families.back().Answers.push_back(Answers(rows[i]));
  }
  return families;
}

/// The whole page; empty where there are no families.
std::string Page(const std::string& header) {
  std::string page, section;
  for (const TFamily& family : Families(header)) {
    if (family.Operations.front().Section != section || page.empty()) {
      section = family.Operations.front().Section;
      page += (page.empty() ? kHead : "") + ("\n## " + section) +
              "\n\n| operation | what it does | what it answers |\n|---|---|---|\n";
    }
    page += RowText(family);
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
