"""A slab panel in Python, step by step: an eight-node panel with one curved
edge carries a nodal result (say a bending moment); the library maps a grid
of reference cells onto it and interpolates the result at the cell corners;
the cells are then drawn coloured by their mean value.

    PYTHONPATH=build/bindings/python python3 bindings/python/examples/slab_panel.py [out.png]

With matplotlib installed (python3-matplotlib) it draws the cells into the
picture file out.png (default: slab_panel.png in the current directory); it
prints a one-line summary either way.
"""
import sys

import numpy as np

import shellfe

# %% The panel: corners at odd slots, mid-sides at even ones, counter-clockwise
# from (0, 0); the edge y = 3 bulges outwards. XYZ is (0:9, 1:3).
corners_and_midsides = [(0, 0), (2, 0), (4, 0), (4, 1.5), (4, 3), (2, 3.6), (0, 3), (0, 1.5)]
xyz = np.zeros((10, 3), np.float32, order="F")
xyz[1:9, 0:2] = corners_and_midsides
x, y = xyz[1:9, 0], xyz[1:9, 1]
nodval = np.zeros(10, np.float32)
nodval[1:9] = x * (4 - x) * y / 4  # the nodal result: zero on the supported edges

# %% Map an n-by-n grid of reference cells: each call gives one cell's four
# corners (PTS rows 1..4) and the result there (VALS 1..4).
n, panel_kind = 8, 1
delta = 2.0 / n
pts, vals = np.zeros((5, 3), np.float32, order="F"), np.zeros(5, np.float32)
cells, means = [], []
for i in range(n):
    for j in range(n):
        xi, eta = -1 + i * delta, -1 + j * delta
        shellfe.SUBDIVIDEPANELDLLDOTNET(xyz, pts, vals, eta, xi, delta, panel_kind, nodval)
        cells.append(pts[1:5, 0:2].copy())
        means.append(float(vals[1:5].mean()))

# %% Show it: the cells coloured by their mean result, written to a picture
# file (the Agg backend draws off-screen and never opens a window).
def quad_area(c):  # half the cross product of the diagonals
    d, e = c[2] - c[0], c[3] - c[1]
    return 0.5 * abs(d[0] * e[1] - d[1] * e[0])

area = sum(quad_area(c) for c in cells)
picture = sys.argv[1] if len(sys.argv) > 1 else "slab_panel.png"
try:
    import matplotlib
except ImportError:
    drawn = "matplotlib not installed: nothing drawn"
else:
    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
    from matplotlib.collections import PolyCollection

    fig, ax = plt.subplots()
    mesh = PolyCollection(cells, array=np.array(means), edgecolors="grey")
    ax.add_collection(mesh)
    ax.plot(x, y, "ko")
    ax.autoscale()
    ax.set_aspect("equal")
    ax.set_title(f"{n} x {n} cells of the slab panel, nodes as dots")
    fig.colorbar(mesh, label="result, mean of the cell's corners")
    fig.savefig(picture)
    plt.close(fig)
    drawn = f"drawn to {picture}"

# The summary comes last, so a run that fails while drawing reports nothing.
print(f"{len(cells)} cells covering {area:.3f} (straight-sided: 12.0), "
      f"result from {min(means):.3f} to {max(means):.3f}; {drawn}")
