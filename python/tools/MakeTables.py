"""Writes what the binding takes from the library's headers: descriptions by name, OpenGL values.

    MakeTables.py OUT HEADER...

OUT becomes a C++ source with the functions `Doc` and `BindGLValues`.
"""

import re
import sys
from pathlib import Path

SCOPE = re.compile(r"^(?:class|struct)\s+(?:[A-Z0-9_]+_API\s+)?(\w+)[^;]*\{")
NAME = re.compile(r"([A-Za-z_]\w*)\s*\(")


def declared(line):
    """The name that a declaration introduces, or None."""
    scope = re.match(r"(?:template <[^>]*> )?(?:class|struct)\s+(?:[A-Z0-9_]+_API\s+)?(\w+)", line)
    if scope:
        return scope.group(1)
    call = NAME.search(re.sub(r"[A-Z0-9_]+_API", "", line))
    return call.group(1) if call else None


def plain(block):
    """A description without the marks of the documentation tool, as paragraphs."""
    text = [re.sub(r"^\s*///<? ?", "", line) for line in block]
    text = [re.sub(r"^\\name ", "", line) for line in text if line.strip() not in ("\\{", "\\}")]
    paragraphs = "\n".join(text).strip().split("\n\n")
    return "\n\n".join(" ".join(p.split()) for p in paragraphs)


def read(header, docs):
    scopes = []  # name and depth of the classes we are in
    depth = 0
    block = []
    running = ""  # of the declarations that share one description
    for line in header.read_text().splitlines():
        text = line.strip()
        if text.startswith("///"):
            if running:
                running = ""
            block.append(line)
            continue
        if not text:
            running = ""
        elif not text.startswith("//"):
            if block:
                running = plain(block)
            name = declared(text.partition("//")[0])  # a remark behind a member may name a call
            if name and running:
                inside = scopes[-1][0] if scopes else ""
                docs.setdefault(f"{inside}::{name}" if inside else name, running)
            scope = SCOPE.match(text)
            if scope and "}" not in text:
                scopes.append((scope.group(1), depth))
        block = []
        depth += text.count("{") - text.count("}") if not text.startswith("//") else 0
        while scopes and depth <= scopes[-1][1]:
            scopes.pop()


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n") + '"'


def main():
    out = Path(sys.argv[1])
    docs = {}
    values = []
    for name in sys.argv[2:]:
        header = Path(name)
        read(header, docs)
        values += re.findall(r"^#define (GL_\w+) ", header.read_text(), re.MULTILINE)
    # The context is described by the interface that it fills.
    for name, text in list(docs.items()):
        if name.startswith("TZxGL::"):
            docs.setdefault("TRenderCPU::" + name.partition("::")[2], text)
    lines = ["// Made from the library's headers.", "#include <string>", "#include <unordered_map>",
             '#include "Common.h"', "", "namespace zxpy {", "",
             "const char* Doc(const std::string& name) {",
             "  static const auto* const docs = new std::unordered_map<std::string, const char*>{"]
    lines += [f"    {{{quoted(name)}, {quoted(text)}}}," for name, text in sorted(docs.items())]
    lines += ["  };", "  const auto found = docs->find(name);",
              '  return found != docs->end() ? found->second : "";', "}", "",
              "void BindGLValues(py::module_& m) {"]
    lines += [f'  m.attr("{name}") = static_cast<unsigned int>({name});' for name in sorted(set(values))]
    lines += ["}", "", "} // namespace zxpy", ""]
    text = "\n".join(lines)
    if not out.exists() or out.read_text() != text:
        out.write_text(text)


main()
