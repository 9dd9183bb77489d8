#!/usr/bin/env python3
"""Write the C# P/Invoke layer of shellfe from the interface description.

    generate.py interface.json Shellfe.Generated.cs

Two static classes come out: Shellfe.Native, one DllImport per exported
routine with the C argument list as is, and Shellfe.Checked, the same
methods after a length check of every array whose extent the description
knows. Nothing here is per routine: a routine added to the description
appears in both classes on the next build.
"""
import json
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
from extent_names import IDENT, int32_scalars, rename  # noqa: E402

SCALAR = {"int32": "int", "float": "float", "double": "double"}
RETURNS = {"void": "void", "int32": "int", "double": "double"}


def cs_type(arg):
    if arg["intent"] == "ignored" or arg["type"] == "any":
        return "IntPtr"
    base = SCALAR[arg["type"]]
    return base + "[]" if arg["kind"] == "array" else "ref " + base


def cs_extent(expr, scalars):
    """The C extent as a C# long expression over long copies of the counts.

    The counts are widened so that a product of large counts cannot wrap
    into a small or negative length and let a short array through. Integer
    division truncates in both languages, and comparisons and && || already
    yield bools, so min/max are the only spelling that differs."""
    return rename(expr, scalars, lambda w: "l" + w, lambda f: "Math." + f.capitalize())


def xml(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def doc(r, out, indent):
    out.append(indent + "/// <summary>%s</summary>" % xml(r["summary"]))
    for a in r["args"]:
        text = a.get("meaning", "")
        if a["kind"] == "array":
            if a.get("extent") is not None:
                text += " [%s, length at least %s]" % (a["intent"], a["extent"])
            else:
                text += " [%s, length not checked: %s]" % (a["intent"], a.get("extent_note", ""))
        elif a["intent"] == "ignored":
            text += " [ignored: pass IntPtr.Zero]"
        else:
            text += " [%s]" % a["intent"]
        out.append(indent + '/// <param name="%s">%s</param>' % (a["name"], xml(text)))


def signature(r):
    return ", ".join("%s %s" % (cs_type(a), a["name"]) for a in r["args"])


def call_args(r):
    return ", ".join(("ref " if cs_type(a).startswith("ref ") else "") + a["name"] for a in r["args"])


def generate(desc):
    lib = desc["library"]
    out = [
        "// Generated at build time from the interface description; do not edit.",
        "using System;",
        "using System.Runtime.InteropServices;",
        "",
        "namespace Shellfe",
        "{",
        "    /// <summary>The exported routines as the library declares them: every",
        "    /// scalar by reference, every array as its first element, ignored",
        "    /// slots as IntPtr. Nothing is checked.</summary>",
        "    public static class Native",
        "    {",
        '        public const string Library = "%s";' % lib,
    ]
    for r in desc["routines"]:
        out.append("")
        doc(r, out, "        ")
        out.append("        [DllImport(Library, CallingConvention = CallingConvention.Cdecl, "
                   "EntryPoint = \"%s\", ExactSpelling = true)]" % r["name"])
        out.append("        public static extern %s %s(%s);" % (RETURNS[r["returns"]], r["name"], signature(r)))
    out += [
        "    }",
        "",
        "    /// <summary>The routines of <see cref=\"Native\"/> behind a length check:",
        "    /// an array shorter than the routine will touch for the given counts",
        "    /// throws ArgumentException before the call, instead of corrupting",
        "    /// memory. Arrays whose length the data decide are passed unchecked.</summary>",
        "    public static class Checked",
        "    {",
        "        static void Need(Array given, long needed, string routine, string name)",
        "        {",
        "            if (needed <= 0) return;",
        "            if (given == null)",
        "                throw new ArgumentNullException(name, string.Format(",
        "                    \"{0}: {1} needs length {2}, given null\", routine, name, needed));",
        "            if (given.Length < needed)",
        "                throw new ArgumentException(string.Format(",
        "                    \"{0}: {1} needs length {2}, given {3}\", routine, name, needed, given.Length), name);",
        "        }",
    ]
    for r in desc["routines"]:
        scalars = int32_scalars(r)
        checked = [a for a in r["args"] if a["kind"] == "array" and a.get("extent") is not None]
        used = sorted({w for a in checked for w in IDENT.findall(a["extent"]) if w in scalars})
        out.append("")
        doc(r, out, "        ")
        out.append("        public static %s %s(%s)" % (RETURNS[r["returns"]], r["name"], signature(r)))
        out.append("        {")
        for w in used:
            out.append("            long l%s = %s;" % (w, w))
        for a in checked:
            out.append('            Need(%s, %s, "%s", "%s");'
                       % (a["name"], cs_extent(a["extent"], scalars), r["name"], a["name"]))
        ret = "" if r["returns"] == "void" else "return "
        out.append("            %sNative.%s(%s);" % (ret, r["name"], call_args(r)))
        out.append("        }")
    out += ["    }", "}", ""]
    return "\n".join(out)


def main():
    if len(sys.argv) != 3:
        raise SystemExit("usage: generate.py interface.json output.cs")
    with open(sys.argv[1], encoding="utf-8") as f:
        text = generate(json.load(f))
    with open(sys.argv[2], "w", encoding="utf-8", newline="\n") as f:
        f.write(text)


if __name__ == "__main__":
    main()
