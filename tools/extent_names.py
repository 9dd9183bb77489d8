"""The names in the extent expressions of the interface description.

An extent is a C integer expression over the routine's int32 scalars, with
min() and max(). Generators that emit it in another setting (C over int64
copies, C# over long copies) rename those names and nothing else.
"""
import re

IDENT = re.compile(r"[A-Za-z_][A-Za-z0-9_]*")


def int32_scalars(routine):
    """The names an extent of `routine` may use, besides min and max."""
    return {a["name"] for a in routine["args"] if a["kind"] == "scalar" and a["type"] == "int32"}


def rename(text, scalars, scalar, function):
    """`text` with each scalar name s as scalar(s) and min/max f as function(f).

    Any other name is an error in the description."""
    def word(m):
        w = m.group(0)
        if w in ("min", "max"):
            return function(w)
        if w not in scalars:
            raise SystemExit("extent %r names %s, which is no int32 scalar of the routine" % (text, w))
        return scalar(w)
    return IDENT.sub(word, text)
