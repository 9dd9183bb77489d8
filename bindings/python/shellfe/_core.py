"""Loading of the shared library and the checks every generated wrapper makes
before it hands an argument to the library, which validates nothing itself."""
import ctypes
import ctypes.util
import operator
import os
import sys

import numpy as np

_I32, _F32, _F64 = np.dtype(np.int32), np.dtype(np.float32), np.dtype(np.float64)

if sys.platform == "win32":
    _NAMES = ("shellfe.dll",)
elif sys.platform == "darwin":
    _NAMES = ("libshellfe.dylib",)
else:
    _NAMES = ("libshellfe.so", "libshellfe.so.0")


def load_library(build_library=None):
    """The shared library, from the first place that has it: the path in the
    SHELLFE_LIBRARY environment variable, this package's own directory (a
    bundled copy), the library the build tree made the package for, then the
    system's search path."""
    explicit = os.environ.get("SHELLFE_LIBRARY")
    if explicit:
        # A wrong explicit path is an error, never a silent fall-back.
        return ctypes.CDLL(explicit)
    here = os.path.dirname(os.path.abspath(__file__))
    candidates = [os.path.join(here, n) for n in _NAMES]
    if build_library:
        candidates.append(build_library)
    for path in candidates:
        if os.path.exists(path):
            return ctypes.CDLL(path)
    found = ctypes.util.find_library("shellfe")
    for name in ([found] if found else []) + list(_NAMES):
        try:
            return ctypes.CDLL(name)
        except OSError:
            pass
    raise OSError("shellfe: shared library not found; set SHELLFE_LIBRARY to its path, "
                  "place it next to the shellfe package or install it on the library path")


def _cdiv(a, b):
    """C's integer division: the quotient truncated toward zero."""
    q = abs(a) // abs(b)
    return q if (a < 0) == (b < 0) else -q


def _cmod(a, b):
    return a - b * _cdiv(a, b)


def _how(extent, **values):
    given = ", ".join(f"{k}={v}" for k, v in values.items())
    return f"{extent} with {given}" if given else extent


def _int32(routine, name, value):
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, (int, np.integer)):
        raise TypeError(f"{routine}: {name} must be an integer (int32), got {type(value).__name__}")
    value = operator.index(value)
    if not -2**31 <= value < 2**31:
        raise ValueError(f"{routine}: {name} = {value} does not fit in int32")
    return value


def _real(routine, name, value):
    if isinstance(value, (bool, np.bool_)) or not isinstance(value, (int, float, np.integer, np.floating)):
        raise TypeError(f"{routine}: {name} must be a real number, got {type(value).__name__}")
    return float(value)


def _array(routine, name, arr, dtype, writable, needed, how):
    """The address of `arr` once it is fit to pass as argument `name`: an
    ndarray of exactly `dtype`, flat in memory in column-major order, writable
    if the routine writes it, and holding at least `needed` elements (None:
    the data decide the size, which is not checked). `how` describes the
    size in errors: a string or a callable giving one."""
    size = None if needed is None else max(needed, 0)

    def fail(exc, problem):
        if size is None:
            want = f"{dtype.name} elements (size decided by the data, not checked: {how})"
        else:
            want = f"at least {size} {dtype.name} elements ({how() if callable(how) else how})"
        raise exc(f"{routine}: {name} must be a numpy array of {want}; {problem}")

    if not isinstance(arr, np.ndarray):
        fail(TypeError, f"got {type(arr).__name__}")
    if arr.dtype != dtype:
        fail(TypeError, f"got dtype {arr.dtype}")
    if not arr.flags.f_contiguous:
        # C order is column-major order too when at most one dimension is
        # longer than 1; a C-ordered matrix would be read transposed.
        if arr.flags.c_contiguous:
            fail(ValueError, f"got a C-ordered array of shape {arr.shape}: pass a 1-D array "
                             "or a Fortran-ordered one (numpy.asfortranarray)")
        fail(ValueError, f"got a non-contiguous array of shape {arr.shape}")
    if not arr.flags.aligned:
        fail(ValueError, "got a misaligned array")
    if writable and not arr.flags.writeable:
        fail(ValueError, "got a read-only array, but the routine writes it")
    if size is not None and arr.size < size:
        fail(ValueError, f"got {arr.size}")
    return arr.ctypes.data
