"""Writes the type stubs of the package from the signatures that the module itself tells.

    MakeStubs.py OUT
"""

import inspect
import re
import sys
from pathlib import Path

import ZxCore3D
from ZxCore3D import _ZxCore3D as module

HEAD = '''"""Types of the module, made from the module itself by `tools/MakeStubs.py`."""

import os
from typing import Any, Optional, Sequence, Union, overload

import numpy
import numpy.typing

Buffer = Any  # whatever has the buffer protocol

__version__: str
'''

# What the module's signatures say, in the words of older and newer versions of pybind11, and what a type checker wants
# to read.
TYPES = [
    (r"numpy\.ndarray\[numpy\.(?:float64|float32|int32)\]", "numpy.typing.NDArray[Any]"),
    (r"numpy\.ndarray(?!\.|\w|\[)", "numpy.typing.NDArray[Any]"),
    (r"\bbuffer\b", "Buffer"),
    (r"\bsequence\b", "Sequence[Any]"),
    (r"\bhandle\b", "object"),
    (r"os\.PathLike", "Union[str, os.PathLike[str]]"),
    (r"List\[(\w+)\[\d+\]\]", r"Sequence[\1]"),
    (r"Annotated\[list\[(\w+)\], FixedSize\(\d+\)\]", r"Sequence[\1]"),
    (r"\b(?:List|list)\[(\w+)\]", r"Sequence[\1]"),
    (r"\bSequence(?!\[)", "Sequence[Any]"),
    (r"\bZxCore3D\.(?=\w)", ""),
]
RESULTS = [(r"Sequence\[", "list[")]
SIGNATURE = re.compile(r"^(?:\d+\. )?(\w+)\((.*)\) -> (.+)$")


def typed(text, result=False):
    for pattern, wanted in TYPES + (RESULTS if result else []):
        text = re.sub(pattern, wanted, text)
    return text


def split(arguments):
    """The arguments of a signature; commas inside brackets part nothing."""
    parts, depth, part = [], 0, ""
    for c in arguments:
        depth += (c in "[(<") - (c in "])>")
        if c == "," and depth == 0:
            parts.append(part.strip())
            part = ""
        else:
            part += c
    return parts + [part.strip()] if part.strip() else parts


def argument(text):
    if text.startswith("*"):
        name, _, kind = text.partition(": ")
        return name + ": Any"
    name, colon, rest = text.partition(": ")
    if not colon:
        return text
    kind, equals, value = rest.partition(" = ")
    kind = typed(kind)
    # An object of Python's own is whatever the description says.
    if kind == "object":
        kind = "Any"
    if equals and value == "None" and not kind.startswith(("Optional", "Any")):
        kind = f"Optional[{kind}]"
    return f"{name}: {kind}" + (" = ..." if equals else "")


def signatures(doc):
    """Pairs of arguments and result, one for each form, with the description of the first."""
    found = []
    lines = (doc or "").splitlines()
    for line in lines:
        match = SIGNATURE.match(line)
        if match and not (line.startswith(match.group(1)) and match.group(2).startswith("*args")):
            found.append((split(match.group(2)), match.group(3)))
    text = [line for line in lines if not SIGNATURE.match(line) and
            not line.endswith("(*args, **kwargs)") and line != "Overloaded function."]
    return found, "\n".join(text).strip().split("\n\n\n")[0]


def described(text, indent):
    if not text:
        return [indent + "..."]
    lines = text.replace("\\", "\\\\").replace('"""', "'''").splitlines()
    body = [indent + '"""' + lines[0]] + [indent + line if line else "" for line in lines[1:]]
    body[-1] += '"""'
    return body


def function(name, member, indent="", static=False):
    forms, text = signatures(member.__doc__)
    out = []
    for arguments, result in forms:
        if len(forms) > 1:
            out.append(f"{indent}@overload")
        if static:
            out.append(f"{indent}@staticmethod")
        given = [argument(a) for a in arguments]
        if indent and not static:
            given[0] = "self"
        kind = typed(result, result=True)
        kind = "Any" if kind == "object" else kind
        out.append(f"{indent}def {name}({', '.join(given)}) -> {kind}:")
        out += described(text, indent + "    ")
    return out


def result_of(prop):
    match = re.search(r"-> (.+)$", (prop.fget.__doc__ or "").splitlines()[0]) if prop.fget.__doc__ else None
    kind = typed(match.group(1), result=True) if match else "Any"
    return "Any" if kind == "object" else kind


def is_enum(cls):
    return hasattr(cls, "__members__")


def enum(cls):
    out = [f"class {cls.__name__}:", f'    """{cls.__doc__.splitlines()[0]}"""']
    out += [f"    {name}: {cls.__name__}" for name in cls.__members__]
    out += ["    __members__: dict[str, Any]",
            "    def __init__(self, value: int) -> None: ...",
            "    def __int__(self) -> int: ...",
            "    def __index__(self) -> int: ...",
            "    @property", "    def name(self) -> str: ...",
            "    @property", "    def value(self) -> int: ...", ""]
    return out + [f"{name}: {cls.__name__}" for name in cls.__members__] + ["", ""]


def klass(cls):
    bases = [b.__name__ for b in cls.__bases__ if b.__module__ == "ZxCore3D"]
    out = [f"class {cls.__name__}" + (f"({', '.join(bases)})" if bases else "") + ":"]
    out += described((cls.__doc__ or "").strip(), "    ") if cls.__doc__ else []
    for name, member in sorted(vars(cls).items()):
        if name.startswith("__") and name not in ("__init__", "__array__"):
            continue
        if isinstance(member, property):
            out += ["    @property", f"    def {name}(self) -> {result_of(member)}:"]
            out += described((member.__doc__ or "").strip(), "        ")
            if member.fset:
                out += [f"    @{name}.setter",
                        f"    def {name}(self, value: Any) -> None: ..."]
        elif isinstance(member, bytes):
            out.append(f"    {name}: bytes")
        else:
            out += function(name, getattr(cls, name), "    ", isinstance(member, staticmethod))
    return out + ["", ""]


def exception(cls, code):
    out = [f"class {cls.__name__}(Exception):"] + described(cls.__doc__, "    ")
    return out + (["    Code: int"] if code else []) + ["", ""]


def space(name, sub):
    """A namespace, which a stub shows as a class of static functions."""
    out = [f"class {name}:"] + described(sub.__doc__, "    ")
    for member, value in sorted(vars(sub).items()):
        if not member.startswith("__"):
            out += function(member, value, "    ", static=True)
    return out + ["", ""]


def main():
    out = [HEAD]
    values = [(n, v) for n, v in sorted(vars(module).items()) if not n.startswith("__")]
    out += [f"{name}: int" for name, value in values if isinstance(value, int)] + ["", ""]
    for name, value in values:
        if inspect.isclass(value):
            if is_enum(value):
                out += enum(value)
            elif issubclass(value, Exception):
                out += exception(value, name == "GLError")
            else:
                out += klass(value)
    for name, value in values:
        if inspect.ismodule(value):
            out += space(name, value)
        elif inspect.isbuiltin(value):
            out += function(name, value) + [""]
    Path(sys.argv[1]).write_text("\n".join(out).rstrip() + "\n")


assert ZxCore3D.__version__
main()
