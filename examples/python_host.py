"""A Python host: bind the library with ctypes and call it as a Fortran-style
host does, every argument by reference, arrays column-major from index 0.

    python3 examples/python_host.py build/lib/libshellfe.so
"""
import ctypes
import sys

lib = ctypes.CDLL(sys.argv[1] if len(sys.argv) > 1 else "libshellfe.so")
i32, f32 = ctypes.c_int32, ctypes.c_float


def column_major(upper1, upper2, fill=0.0):
    """A float array (0:upper1, 0:upper2) and an index function for it."""
    rows = upper1 + 1
    data = (f32 * (rows * (upper2 + 1)))(*([fill] * (rows * (upper2 + 1))))
    return data, lambda a, b: a + b * rows


# Plane-stress matrix of an orthotropic material turned by 30 degrees.
prop, p = column_major(1, 17)
prop[p(1, 1)], prop[p(1, 2)], prop[p(1, 8)], prop[p(1, 9)], prop[p(1, 17)] = (
    30000.0, 0.25, 12000.0, 5000.0, 30.0)
dmat, d = column_major(3, 3)
lib.MODIPDLLDOTNET(dmat, prop, ctypes.byref(i32(1)), ctypes.byref(i32(1)))
print("D at 30 degrees:")
for r in range(1, 4):
    print("".join(f"{dmat[d(r, c)]:12.1f}" for c in range(1, 4)))

# C = A*B in the row-major view: A (0:2, 0:3), B (0:3, 0:2), C (0:2, 0:2).
m, k, n = 2, 3, 2
a, ia = column_major(k, m)  # AMAT(t, i)
b, ib = column_major(n, k)  # BMAT(j, t)
c, ic = column_major(n, m, fill=-1.0)
for i in range(1, m + 1):
    for t in range(1, k + 1):
        a[ia(t, i)] = i + t
for t in range(1, k + 1):
    for j in range(1, n + 1):
        b[ib(j, t)] = t - j
lib.MATMULDLLDOTNET(a, b, c, ctypes.byref(i32(m)), ctypes.byref(i32(k)), ctypes.byref(i32(n)))
want = [[sum((i + t) * (t - j) for t in range(1, k + 1)) for j in range(1, n + 1)] for i in range(1, m + 1)]
got = [[c[ic(j, i)] for j in range(1, n + 1)] for i in range(1, m + 1)]
print("A*B =", got)
sys.exit(0 if got == want and abs(dmat[d(1, 2)] - dmat[d(2, 1)]) == 0 else 1)
