// The problem of the membrane example: Cook's skew cantilever, its mesh
// storage and the structured mesh of 8-node quadrilaterals.
#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

constexpr double kWidth = 48.0;           // the loaded edge lies at x = 48
constexpr double kYoung = 1.0, kPoisson = 1.0 / 3.0, kThickness = 1.0;
constexpr double kReference = 23.96;      // v at (48, 52)
constexpr double kCornerReference = 25.19;  // v at (48, 60)
constexpr double kArea = 48.0 * (44.0 + 16.0) / 2.0;
constexpr double kShear = 1.0 / 16.0;     // unit total load over the 16-long edge

struct Point {
    double x, y;
};

// The trapezoid as the image of the unit square: s runs from the clamped
// edge to the loaded one, r from the bottom edge to the top one. Lines of
// constant s or r are straight, so mid-side nodes placed at parameter
// mid-points lie at the middle of straight element sides.
inline Point cook_point(double s, double r) {
    return {kWidth * s, 44.0 * s + r * (44.0 - 28.0 * s)};
}

// A mesh as the host keeps it: nodes numbered from 1 (slot 0 of each node
// array is unused), element node slots in the library's order, the vertical
// nodal loads and the clamped nodes.
struct Mesh {
    int32_t nodes_per_element = 0;
    std::vector<double> x{0.0}, y{0.0}, load_y{0.0};
    std::vector<char> clamped{0};
    std::vector<int32_t> connectivity;  // slot k of element e at e*nodes_per_element + k-1
    int32_t probe = 0, corner = 0;      // nodes at (48, 52) and (48, 60)
    double min_quality = 0.0;           // triangles: 4*sqrt(3)*area / sum of squared sides

    int32_t nodes() const { return static_cast<int32_t>(x.size()) - 1; }
    int32_t elements() const {
        return static_cast<int32_t>(connectivity.size()) / nodes_per_element;
    }
    int32_t node_of(int32_t e, int32_t k) const {
        return connectivity[static_cast<size_t>(e) * nodes_per_element + (k - 1)];
    }
    int32_t add_node(double px, double py) {
        x.push_back(px);
        y.push_back(py);
        load_y.push_back(0.0);
        clamped.push_back(0);
        return nodes();
    }
};

// N x N 8-node quadrilaterals. The nodes are those of a (2N+1) x (2N+1)
// grid less the element centres, numbered column by column from the
// clamped edge; slots run counter-clockwise from the corner at (s, r) =
// (0, 0) with the mid-side nodes in the even slots, as the element expects.
inline Mesh quadrilateral_mesh(int n) {
    Mesh m;
    m.nodes_per_element = 8;
    const int g = 2 * n + 1;
    std::vector<int32_t> id(static_cast<size_t>(g) * g, 0);
    for (int i = 0; i < g; ++i)
        for (int j = 0; j < g; ++j) {
            if (i % 2 == 1 && j % 2 == 1) continue;
            const Point p = cook_point(static_cast<double>(i) / (g - 1),
                                       static_cast<double>(j) / (g - 1));
            const int32_t node = m.add_node(p.x, p.y);
            id[static_cast<size_t>(i) * g + j] = node;
            m.clamped[node] = i == 0;
        }
    auto at = [&](int i, int j) { return id[static_cast<size_t>(i) * g + j]; };
    for (int p = 0; p < n; ++p)
        for (int q = 0; q < n; ++q) {
            const int i = 2 * p, j = 2 * q;
            const int32_t slots[8] = {at(i, j),         at(i + 1, j),     at(i + 2, j),
                                      at(i + 2, j + 1), at(i + 2, j + 2), at(i + 1, j + 2),
                                      at(i, j + 2),     at(i, j + 1)};
            m.connectivity.insert(m.connectivity.end(), slots, slots + 8);
        }
    // Consistent nodal loads of a uniform traction on each quadratic side
    // of the loaded edge: 1/6, 4/6, 1/6 of the side's share.
    const double side = kShear * 16.0 / n;
    for (int q = 0; q < n; ++q) {
        m.load_y[at(g - 1, 2 * q)] += side / 6.0;
        m.load_y[at(g - 1, 2 * q + 1)] += 4.0 * side / 6.0;
        m.load_y[at(g - 1, 2 * q + 2)] += side / 6.0;
    }
    m.probe = at(g - 1, n);
    m.corner = at(g - 1, g - 1);
    return m;
}
