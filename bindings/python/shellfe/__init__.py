"""shellfe from Python: every exported routine as shellfe.NAME(...), with
numpy arrays and Python numbers in the routine's own argument order.

- Arrays are numpy arrays of exactly the routine's type (int32, float32,
  float64), 1-D or Fortran-ordered (the library's arrays are flat and
  column-major; a C-ordered matrix is refused rather than read transposed).
  Each is checked to hold at least as many elements as the routine touches
  for the given counts; outputs are written in place.
- Unused argument slots are not parameters, nor are scalars the routine only
  writes; integer and real scalars are passed as Python numbers.
- A routine returns NAME_result(...), a namedtuple of its function value
  (field `result`, for the routines that return one) followed by the scalars
  and arrays it writes, in argument order; or None when it has neither.
- A wrong type raises TypeError, a wrong size or layout ValueError, each
  naming the routine, the argument, the needed size and dtype.

The shared library is taken from SHELLFE_LIBRARY, this package's directory,
the build tree the package was generated in, or the system search path.
"""
from ._routines import *  # noqa: F401,F403
from ._routines import __all__, BUILD_LIBRARY, _lib as library  # noqa: F401
