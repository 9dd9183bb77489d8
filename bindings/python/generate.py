#!/usr/bin/env python3
"""Writes the shellfe Python package from the interface description.

    generate.py INTERFACE_JSON PACKAGE_DIR [LIBRARY_PATH]

copies the hand-written package core (shellfe/__init__.py, shellfe/_core.py)
into PACKAGE_DIR and writes PACKAGE_DIR/_routines.py: one checked wrapper per
described routine. LIBRARY_PATH, when given, is where the build put the shared
library; the package tries it after SHELLFE_LIBRARY and its own directory.
"""
import json
import keyword
import os
import re
import shutil
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
CORE_FILES = ("__init__.py", "_core.py")
DTYPES = {"int32": "_I32", "float": "_F32", "double": "_F64"}
CTYPES = {"int32": "_ct.c_int32", "float": "_ct.c_float", "double": "_ct.c_double"}
RESTYPES = {"void": "None", "double": "_ct.c_double", "int32": "_ct.c_int32"}


class ExtentError(ValueError):
    pass


_TOKEN = re.compile(r"\s*(?:(\d+)|([A-Za-z_]\w*)|(&&|\|\||==|!=|<=|>=|[-+*/%()?:<>!,]))")


def _tokens(text):
    pos, out = 0, []
    text = text.strip()
    while pos < len(text):
        m = _TOKEN.match(text, pos)
        if not m:
            raise ExtentError(f"cannot read extent {text!r} at {text[pos:]!r}")
        out.append(m.group(m.lastindex))
        pos = m.end()
    return out


class _ExtentParser:
    """Translates a C integer expression into Python with C's meaning:
    precedence and associativity as in C, / and % truncating toward zero,
    comparisons and logical operators giving 0 or 1. Everything is fully
    parenthesised so that Python's own precedence never matters."""

    def __init__(self, text, scalars):
        self.text, self.toks, self.i = text, _tokens(text), 0
        self.scalars, self.used = scalars, []

    def peek(self):
        return self.toks[self.i] if self.i < len(self.toks) else None

    def take(self, expected=None):
        tok = self.peek()
        if tok is None or (expected is not None and tok != expected):
            raise ExtentError(f"extent {self.text!r}: expected {expected or 'more'}, got {tok!r}")
        self.i += 1
        return tok

    def parse(self):
        out = self.conditional()
        if self.peek() is not None:
            raise ExtentError(f"extent {self.text!r}: unexpected {self.peek()!r}")
        return out

    def conditional(self):
        cond = self.binary(0)
        if self.peek() != "?":
            return cond
        self.take("?")
        yes = self.conditional()
        self.take(":")
        no = self.conditional()
        return f"({yes} if {cond} else {no})"

    LEVELS = (("||",), ("&&",), ("==", "!="), ("<", ">", "<=", ">="), ("+", "-"), ("*", "/", "%"))

    def binary(self, level):
        if level == len(self.LEVELS):
            return self.unary()
        left = self.binary(level + 1)
        while self.peek() in self.LEVELS[level]:
            op = self.take()
            right = self.binary(level + 1)
            if op == "||":
                left = f"int({left} != 0 or {right} != 0)"
            elif op == "&&":
                left = f"int({left} != 0 and {right} != 0)"
            elif op == "/":
                left = f"_cdiv({left}, {right})"
            elif op == "%":
                left = f"_cmod({left}, {right})"
            elif op in ("+", "-", "*"):
                left = f"({left} {op} {right})"
            else:
                left = f"int({left} {op} {right})"
        return left

    def unary(self):
        tok = self.peek()
        if tok in ("-", "+"):
            self.take()
            return f"({tok}{self.unary()})"
        if tok == "!":
            self.take()
            return f"int({self.unary()} == 0)"
        return self.primary()

    def primary(self):
        tok = self.take()
        if tok == "(":
            inner = self.conditional()
            self.take(")")
            return inner  # every operator's output is parenthesised already
        if tok.isdigit():
            return str(int(tok))
        if tok in ("min", "max") and self.peek() == "(":
            self.take("(")
            args = [self.conditional()]
            while self.peek() == ",":
                self.take(",")
                args.append(self.conditional())
            self.take(")")
            return f"{tok}({', '.join(args)})"
        if tok not in self.scalars:
            raise ExtentError(f"extent {self.text!r} names {tok!r}, which is not an integer input of the routine")
        if tok not in self.used:
            self.used.append(tok)
        return tok


def translate_extent(text, scalars):
    """Python expression for the C extent `text` and the scalars it reads."""
    parser = _ExtentParser(text, scalars)
    return parser.parse(), parser.used


def _wrap(text, indent, width=92):
    words, lines, line = text.split(), [], ""
    for word in words:
        if line and len(indent) + len(line) + 1 + len(word) > width:
            lines.append(indent + line)
            line = word
        else:
            line = f"{line} {word}" if line else word
    if line:
        lines.append(indent + line)
    return lines


def _type_name(arg):
    return {"int32": "int32", "float": "float32", "double": "float64"}[arg["type"]]


def _routine(routine):
    name, args = routine["name"], routine["args"]
    for arg in args:
        if not arg["name"].isidentifier() or keyword.iskeyword(arg["name"]):
            raise ValueError(f"{name}: argument {arg['name']!r} is not usable as a Python name")
    params = [a for a in args if a["intent"] != "ignored" and not (a["kind"] == "scalar" and a["intent"] == "out")]
    outputs = [a for a in args if a["intent"] in ("out", "inout")]
    int_inputs = {a["name"] for a in params if a["kind"] == "scalar" and a["type"] == "int32"}
    fields = (["result"] if routine["returns"] != "void" else []) + [a["name"] for a in outputs]
    plain = fields == ["result"]  # a function value alone is returned as it is

    doc = _wrap(routine["summary"], "    ") + ["", "    Arguments (ignored slots and out-only scalars are not parameters):"]
    scalars, arrays, call, ctypes_args = [], [], [], []
    for pos, arg in enumerate(args):
        aname, kind, intent = arg["name"], arg["kind"], arg["intent"]
        if intent == "ignored":
            call.append("None")
            ctypes_args.append("_ct.c_void_p")
            continue
        label = f"{aname}: {_type_name(arg)} {kind}, {intent}"
        if kind == "scalar":
            ctypes_args.append(f"_ct.POINTER({CTYPES[arg['type']]})")
            convert = "_int32" if arg["type"] == "int32" else "_real"
            if intent == "out":
                scalars.append(f"    _{aname} = {CTYPES[arg['type']]}()")
                label += " (returned)"
            else:
                scalars.append(f"    {aname} = {convert}(_N, {aname!r}, {aname})")
                scalars.append(f"    _{aname} = {CTYPES[arg['type']]}({aname})")
                if intent == "inout":
                    label += " (its new value is returned)"
            call.append(f"_ref(_{aname})")
        else:
            ctypes_args.append("_ct.c_void_p")
            writable = intent != "in"
            if arg.get("extent") is not None:
                expr, used = translate_extent(arg["extent"], int_inputs)
                given = "".join(f", {u}={u}" for u in used)
                arrays.append(f"    _{aname} = _array(_N, {aname!r}, {aname}, {DTYPES[arg['type']]}, {writable}, {expr},")
                arrays.append(f"                   lambda: _how({arg['extent']!r}{given}))")
                label += f", at least {arg['extent']} elements"
            else:
                note = arg.get("extent_note") or "decided by the data"
                arrays.append(f"    _{aname} = _array(_N, {aname!r}, {aname}, {DTYPES[arg['type']]}, {writable}, None, {note!r})")
                label += f"; size not checked ({note})"
            call.append(f"_{aname}")
        doc += _wrap(label, "      ")
        if arg.get("meaning"):
            doc += _wrap(arg["meaning"], "          ")
    if plain:
        doc += ["", f"    Returns the function value ({routine['returns']})."]
    elif fields:
        doc += ["", f"    Returns {name}_result({', '.join(fields)})."]
    else:
        doc += ["", "    Returns None."]

    lines = [f"_lib.{name}.argtypes = ({', '.join(ctypes_args)},)",
             f"_lib.{name}.restype = {RESTYPES[routine['returns']]}"]
    if fields and not plain:
        lines.append(f"{name}_result = _namedtuple({name + '_result'!r}, {tuple(fields)!r})")
    lines.append("")
    lines.append(f"def {name}({', '.join(a['name'] for a in params)}):")
    lines.append('    """' + "\n".join(doc).lstrip() + '\n    """')
    lines.append(f"    _N = {name!r}")
    # Scalars first: the array extents are computed from them.
    lines += scalars + arrays
    result = f"_lib.{name}({', '.join(call)})"
    if plain:
        lines.append(f"    return {result}")
    elif fields:
        lines.append(f"    _r = {result}" if routine["returns"] != "void" else f"    {result}")
        values = (["_r"] if routine["returns"] != "void" else []) + [
            f"_{a['name']}.value" if a["kind"] == "scalar" else a["name"] for a in outputs]
        lines.append(f"    return {name}_result({', '.join(values)})")
    else:
        lines.append(f"    {result}")
    return "\n".join(lines) + "\n\n"


def generate(interface, library=None):
    names = [r["name"] for r in interface["routines"]]
    out = ['"""Checked wrappers of the shellfe routines, written by generate.py from the',
           'interface description at build time: edit the description or the generator,',
           'never this file."""',
           "import ctypes as _ct",
           "from collections import namedtuple as _namedtuple",
           "",
           "from ._core import _I32, _F32, _F64, _array, _cdiv, _cmod, _how, _int32, _real, load_library",
           "",
           f"BUILD_LIBRARY = {library!r}",
           "_lib = load_library(BUILD_LIBRARY)",
           "_ref = _ct.byref",
           f"__all__ = {names!r}",
           "", ""]
    for routine in interface["routines"]:
        out.append(_routine(routine))
    return "\n".join(out).rstrip() + "\n"


def write_package(interface_path, package_dir, library=None):
    with open(interface_path, encoding="utf-8") as f:
        interface = json.load(f)
    text = generate(interface, library)
    os.makedirs(package_dir, exist_ok=True)
    for name in CORE_FILES:
        shutil.copyfile(os.path.join(HERE, "shellfe", name), os.path.join(package_dir, name))
    target = os.path.join(package_dir, "_routines.py")
    # Rewritten only when different, so that nothing downstream rebuilds needlessly.
    old = open(target, encoding="utf-8").read() if os.path.exists(target) else None
    if old != text:
        with open(target, "w", encoding="utf-8") as f:
            f.write(text)


if __name__ == "__main__":
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    write_package(sys.argv[1], sys.argv[2], sys.argv[3] if len(sys.argv) == 4 else None)
