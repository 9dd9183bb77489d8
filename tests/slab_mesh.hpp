// A rectangular slab of nx by ny eight-node elements, laid out as hosts keep
// their meshes: connectivity stored row after row (the node in slot a of
// element e at a * (nelem + 1) + e, slots 1..8 counter-clockwise from the
// lower-left corner, corners in odd slots, mid-sides in even ones) and
// coordinates by node number from 1. Shared by the tests and benchmarks.
#pragma once

#include <cstdint>
#include <vector>

struct SlabMesh {
    int nx, ny, nelem, ncorner, nnode;
    std::int32_t ldcn;               // row length less one of ielnod
    std::vector<std::int32_t> ielnod;  // (0:8) rows of ldcn + 1 entries
    std::vector<float> x, y;         // node n at position n

    std::int32_t& node(int slot, int elem) { return ielnod[std::size_t(slot) * (ldcn + 1) + elem]; }

    // Corners are numbered first, row by row. With `shared_midsides` every
    // edge has one mid-side node (a finished mesh); without, every element
    // brings its own four after all corners, node ncorner + 4(e-1) + r in
    // slot 2r, as a panel mesher leaves them before duplicates are merged.
    SlabMesh(int nx_, int ny_, float h = 1.0f, bool shared_midsides = true)
        : nx(nx_), ny(ny_), nelem(nx_ * ny_), ncorner((nx_ + 1) * (ny_ + 1)),
          nnode(ncorner + (shared_midsides ? nx_ * (ny_ + 1) + (nx_ + 1) * ny_ : 4 * nx_ * ny_)),
          ldcn(nx_ * ny_), ielnod(9 * std::size_t(nx_ * ny_ + 1), 0), x(nnode + 1, 0.0f), y(nnode + 1, 0.0f) {
        auto corner = [&](int i, int j) { return 1 + i + j * (nx + 1); };
        for (int j = 0; j <= ny; ++j)
            for (int i = 0; i <= nx; ++i) {
                x[corner(i, j)] = h * float(i);
                y[corner(i, j)] = h * float(j);
            }
        const int horizontal = ncorner;                  // edges along x: nx per row
        const int vertical = ncorner + nx * (ny + 1);    // edges along y: nx + 1 per row
        auto place = [&](int n, float px, float py) { x[n] = px, y[n] = py; };
        for (int j = 0; j < ny; ++j)
            for (int i = 0; i < nx; ++i) {
                const int e = 1 + i + j * nx;
                node(1, e) = corner(i, j);
                node(3, e) = corner(i + 1, j);
                node(5, e) = corner(i + 1, j + 1);
                node(7, e) = corner(i, j + 1);
                int mid[4];  // bottom, right, top, left
                if (shared_midsides) {
                    mid[0] = horizontal + 1 + i + j * nx;
                    mid[1] = vertical + 1 + (i + 1) + j * (nx + 1);
                    mid[2] = horizontal + 1 + i + (j + 1) * nx;
                    mid[3] = vertical + 1 + i + j * (nx + 1);
                } else {
                    for (int r = 0; r < 4; ++r) mid[r] = ncorner + 4 * (e - 1) + r + 1;
                }
                const float x0 = h * float(i), y0 = h * float(j), half = 0.5f * h;
                place(mid[0], x0 + half, y0);
                place(mid[1], x0 + h, y0 + half);
                place(mid[2], x0 + half, y0 + h);
                place(mid[3], x0, y0 + half);
                for (int r = 0; r < 4; ++r) node(2 * (r + 1), e) = mid[r];
            }
    }
};
