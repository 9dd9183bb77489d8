// A small advancing-front triangulator of Cook's trapezoid, on the library's
// plane geometry: GETNEARNODES proposes apexes for a front edge,
// CHECKNEWTRIANG accepts or rejects each candidate triangle, ORIENT2D and
// TRIAREA3D judge its orientation and shape, LINEINTERSECT2D checks the
// finished mesh and GETELEMENTVERTICES hands over its vertex list.
//
// The front is the list of directed edges that bound the part of the domain
// still to be meshed, each with that part on its left; it starts as the
// boundary, counter-clockwise. Its shortest edge is taken first. The apex
// candidates are, in this order: the front nodes within reach of the ideal
// apex (the point that would make a triangle of the wanted size), the ideal
// apex itself as a new node, and the remaining near front nodes. The first
// candidate whose triangle is counter-clockwise, shaped well enough and
// accepted by CHECKNEWTRIANG is taken; if none is, the shape demand is
// relaxed step by step. A new triangle's sides close the front edges they
// meet and enter the front otherwise. A few sweeps of Laplace smoothing of
// the interior nodes, each move kept only if it keeps every triangle around
// the node counter-clockwise and improves the worst one, finish the mesh.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "cook.hpp"
#include "shellfe.h"

// The five constants of the adaptive orientation predicate, computed once.
struct Predicates {
    double ccwerrbounda, ccwerrboundb, ccwerrboundc, splitter, resulterrbound;
    Predicates() {
        const double eps = std::ldexp(1.0, -53);
        splitter = std::ldexp(1.0, 27) + 1.0;
        resulterrbound = (3.0 + 8.0 * eps) * eps;
        ccwerrbounda = (3.0 + 16.0 * eps) * eps;
        ccwerrboundb = (2.0 + 12.0 * eps) * eps;
        ccwerrboundc = (9.0 + 64.0 * eps) * eps * eps;
    }
    // Positive when a, b, c run counter-clockwise.
    double orient(const double* a, const double* b, const double* c) const {
        return ORIENT2D(a, b, c, &ccwerrbounda, &ccwerrboundb, &ccwerrboundc, &splitter,
                        &resulterrbound);
    }
};

namespace front_detail {

// Node coordinates as the geometry routines read them, XY (LDN+1, 3) from
// 1: node n's x at n-1, y at n-1 + (LDN+1); z stays zero. Grows by
// doubling.
class NodeTable {
public:
    int32_t ldn = 63, count = 0;
    std::vector<double> xy = std::vector<double>(3 * 64, 0.0);

    int32_t add(double x, double y) {
        if (count == ldn + 1) {
            const int32_t rows = 2 * (ldn + 1);
            std::vector<double> bigger(3 * static_cast<size_t>(rows), 0.0);
            for (int c = 0; c < 3; ++c)
                std::copy_n(&xy[static_cast<size_t>(c) * (ldn + 1)], ldn + 1,
                            &bigger[static_cast<size_t>(c) * rows]);
            xy.swap(bigger);
            ldn = rows - 1;
        }
        ++count;
        xy[count - 1] = x;
        xy[count - 1 + static_cast<size_t>(ldn + 1)] = y;
        return count;
    }
    std::array<double, 2> point(int32_t n) const {
        return {xy[n - 1], xy[n - 1 + static_cast<size_t>(ldn + 1)]};
    }
    void move(int32_t n, double x, double y) {
        xy[n - 1] = x;
        xy[n - 1 + static_cast<size_t>(ldn + 1)] = y;
    }
};

// The front as the edge table EDGES (0:LDE, 1:2) of the geometry routines:
// rows 0..size-1 in use, edge k running from (k, 1) to (k, 2). Grows by
// doubling; a removed row is replaced by the last one.
class Front {
public:
    int32_t lde = 63, size = 0;
    std::vector<int32_t> edges = std::vector<int32_t>(2 * 64, 0);

    int32_t a(int32_t k) const { return edges[k]; }
    int32_t b(int32_t k) const { return edges[k + static_cast<size_t>(lde + 1)]; }
    void push(int32_t na, int32_t nb) {
        if (size == lde + 1) {
            const int32_t rows = 2 * (lde + 1);
            std::vector<int32_t> bigger(2 * static_cast<size_t>(rows), 0);
            std::copy_n(&edges[0], lde + 1, &bigger[0]);
            std::copy_n(&edges[lde + 1], lde + 1, &bigger[rows]);
            edges.swap(bigger);
            lde = rows - 1;
        }
        set(size++, na, nb);
    }
    void remove(int32_t k) {
        --size;
        set(k, a(size), b(size));
    }
    int32_t find(int32_t na, int32_t nb) const {
        for (int32_t k = 0; k < size; ++k)
            if (a(k) == na && b(k) == nb) return k;
        return -1;
    }

private:
    void set(int32_t k, int32_t na, int32_t nb) {
        edges[k] = na;
        edges[k + static_cast<size_t>(lde + 1)] = nb;
    }
};

inline double distance(const std::array<double, 2>& p, const std::array<double, 2>& q) {
    return POINTDIST2D(p.data(), q.data());
}

inline double segment_distance(const std::array<double, 2>& p, const std::array<double, 2>& a,
                               const std::array<double, 2>& b) {
    const double dx = b[0] - a[0], dy = b[1] - a[1];
    const double len2 = dx * dx + dy * dy;
    double t = len2 > 0 ? ((p[0] - a[0]) * dx + (p[1] - a[1]) * dy) / len2 : 0.0;
    t = std::clamp(t, 0.0, 1.0);
    return std::hypot(p[0] - (a[0] + t * dx), p[1] - (a[1] + t * dy));
}

// 1 for an equilateral triangle, 0 for a degenerate one.
inline double quality(const std::array<double, 2>& a, const std::array<double, 2>& b,
                      const std::array<double, 2>& c) {
    const double pa[3] = {a[0], a[1], 0.0}, pb[3] = {b[0], b[1], 0.0}, pc[3] = {c[0], c[1], 0.0};
    const double area = TRIAREA3D(pa, pb, pc);
    const double ab = distance(a, b), bc = distance(b, c), ca = distance(c, a);
    return 4.0 * std::sqrt(3.0) * area / (ab * ab + bc * bc + ca * ca);
}

class Triangulator {
public:
    Triangulator(double spacing, const Predicates& pred) : h_(spacing), pred_(pred) {}

    NodeTable nodes;
    Front front;
    std::vector<std::array<int32_t, 3>> triangles;

    // Meshes the region bounded by the current front.
    void run() {
        const int64_t limit = 64 + 16 * static_cast<int64_t>(kArea / (h_ * h_));
        for (int64_t step = 0; front.size > 0; ++step) {
            if (step > limit) throw std::runtime_error("the advancing front did not close");
            int32_t k = 0;
            double shortest = INFINITY;
            for (int32_t e = 0; e < front.size; ++e) {
                const double len = distance(nodes.point(front.a(e)), nodes.point(front.b(e)));
                if (len < shortest) shortest = len, k = e;
            }
            if (!advance(k))
                throw std::runtime_error("no acceptable triangle on the front edge " +
                                         std::to_string(front.a(k)) + "-" +
                                         std::to_string(front.b(k)));
        }
    }

private:
    double h_;
    const Predicates& pred_;

    bool advance(int32_t k) {
        static constexpr double kShape[] = {0.6, 0.35, 0.1, 0.0};
        for (const double q_min : kShape)
            for (const int32_t kmax : {8, 2 * front.size})
                if (try_edge(k, q_min, kmax)) return true;
        return false;
    }

    bool try_edge(int32_t k, double q_min, int32_t kmax) {
        const int32_t na = front.a(k), nb = front.b(k);
        const std::array<double, 2> pa = nodes.point(na), pb = nodes.point(nb);
        const double len = distance(pa, pb);
        // The wanted size, kept within reach of the base so that the
        // triangle is neither a needle nor flat.
        const double size = std::clamp(h_, 0.55 * len, 1.5 * len);
        const double height = std::sqrt(size * size - 0.25 * len * len);
        const std::array<double, 2> ideal = {
            0.5 * (pa[0] + pb[0]) - height * (pb[1] - pa[1]) / len,
            0.5 * (pa[1] + pb[1]) + height * (pb[0] - pa[0]) / len};

        std::vector<int32_t> near(kmax);
        int32_t nwithin = 0, nnear = 0, ncol = 2;
        const double radius = 0.75 * size;
        GETNEARNODES(&na, &nb, ideal.data(), nodes.xy.data(), &front.size, front.edges.data(),
                     &radius, &nwithin, &nnear, near.data(), &pred_.ccwerrbounda,
                     &pred_.ccwerrboundb, &pred_.ccwerrboundc, &pred_.splitter, &front.lde,
                     &nodes.ldn, &pred_.resulterrbound, &kmax, &ncol);

        // Existing nodes within reach first, then the ideal apex, then the
        // rest. NWITHIN is counted on the distances as the routine's sort
        // leaves them, which are not always the sorted ones (the list itself
        // is sorted): it can move the ideal apex up or down the order, never
        // admit a bad triangle.
        std::vector<int32_t> order(near.begin(), near.begin() + nwithin);
        order.push_back(0);
        order.insert(order.end(), near.begin() + nwithin, near.begin() + nnear);

        // PARTOL is squared and compared with the unnormalised cross product
        // of the two sides: 1e-5 h makes sides of about the mesh size
        // parallel below an angle of 1e-10, well above the rounding of
        // points interpolated along one straight boundary, which would
        // otherwise cross at random parameters. ONTOL is twice an area.
        const double lentol = 1e-9 * h_, partol = 1e-5 * h_, ontol = 1e-9 * h_ * h_;
        for (const int32_t cand : order) {
            const std::array<double, 2> pc = cand > 0 ? nodes.point(cand) : ideal;
            if (!(pred_.orient(pa.data(), pb.data(), pc.data()) > 0.0)) continue;
            if (quality(pa, pb, pc) < q_min) continue;
            if (cand == 0 && !room_for(ideal, size)) continue;
            const int32_t nodex = cand;  // 0 is no node
            if (CHECKNEWTRIANG(&k, &nodex, pc.data(), nodes.xy.data(), &front.size,
                               front.edges.data(), &pred_.ccwerrbounda, &pred_.ccwerrboundb,
                               &pred_.ccwerrboundc, &pred_.splitter, &front.lde, &nodes.ldn,
                               &lentol, &partol, &ontol, &pred_.resulterrbound) != 1)
                continue;
            const int32_t nc = cand > 0 ? cand : nodes.add(pc[0], pc[1]);
            triangles.push_back({na, nb, nc});
            front.remove(k);
            close_or_open(na, nc);
            close_or_open(nc, nb);
            return true;
        }
        return false;
    }

    // A new node must keep its distance from the front, or the triangles
    // that later close the gap come out as slivers.
    bool room_for(const std::array<double, 2>& p, double size) const {
        for (int32_t e = 0; e < front.size; ++e) {
            const std::array<double, 2> a = nodes.point(front.a(e)), b = nodes.point(front.b(e));
            if (distance(p, a) < 0.55 * size || segment_distance(p, a, b) < 0.4 * size)
                return false;
        }
        return true;
    }

    // The side from -> to of a new triangle either closes the front edge
    // to -> from it meets, or becomes a front edge itself.
    void close_or_open(int32_t from, int32_t to) {
        const int32_t k = front.find(to, from);
        if (k >= 0) front.remove(k);
        else front.push(from, to);
    }
};

}  // namespace front_detail

// Checks the finished triangulation: every triangle counter-clockwise, the
// areas adding up to the trapezoid's, and no two edges crossing (a sweep
// along x with LINEINTERSECT2D on the pairs whose x ranges overlap).
inline void check_triangulation(const Mesh& m, const Predicates& pred) {
    double area = 0.0;
    std::vector<std::array<int32_t, 2>> edges;
    for (int32_t e = 0; e < m.elements(); ++e) {
        double p[3][3];
        for (int k = 0; k < 3; ++k) {
            const int32_t n = m.node_of(e, k + 1);
            p[k][0] = m.x[n], p[k][1] = m.y[n], p[k][2] = 0.0;
        }
        if (!(pred.orient(p[0], p[1], p[2]) > 0.0))
            throw std::runtime_error("triangle " + std::to_string(e + 1) + " is not counter-clockwise");
        area += TRIAREA3D(p[0], p[1], p[2]);
        for (int k = 0; k < 3; ++k) {
            const int32_t a = m.node_of(e, k + 1), b = m.node_of(e, (k + 1) % 3 + 1);
            if (a < b) edges.push_back({a, b});
            else edges.push_back({b, a});
        }
    }
    if (std::fabs(area - kArea) > 1e-9 * kArea)
        throw std::runtime_error("the triangles cover " + std::to_string(area) + ", not " +
                                 std::to_string(kArea));
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
    auto lo = [&](const std::array<int32_t, 2>& e) { return std::min(m.x[e[0]], m.x[e[1]]); };
    auto hi = [&](const std::array<int32_t, 2>& e) { return std::max(m.x[e[0]], m.x[e[1]]); };
    std::sort(edges.begin(), edges.end(), [&](const auto& p, const auto& q) { return lo(p) < lo(q); });
    const double tol = 1e-12;
    for (size_t i = 0; i < edges.size(); ++i) {
        const double p1[2] = {m.x[edges[i][0]], m.y[edges[i][0]]};
        const double p2[2] = {m.x[edges[i][1]], m.y[edges[i][1]]};
        for (size_t j = i + 1; j < edges.size() && lo(edges[j]) <= hi(edges[i]); ++j) {
            const auto& f = edges[j];
            if (f[0] == edges[i][0] || f[0] == edges[i][1] || f[1] == edges[i][0] ||
                f[1] == edges[i][1])
                continue;
            const double q1[2] = {m.x[f[0]], m.y[f[0]]}, q2[2] = {m.x[f[1]], m.y[f[1]]};
            double s = 0, t = 0;
            if (LINEINTERSECT2D(p1, p2, q1, q2, &s, &t, &tol, &tol) == 11 && s >= 0 && s <= 1 &&
                t >= 0 && t <= 1)
                throw std::runtime_error("two mesh edges cross");
        }
    }
}

inline double quality_of(const Mesh& m, int32_t e) {
    std::array<double, 2> p[3];
    for (int k = 0; k < 3; ++k) p[k] = {m.x[m.node_of(e, k + 1)], m.y[m.node_of(e, k + 1)]};
    return front_detail::quality(p[0], p[1], p[2]);
}

// Laplace smoothing of the nodes after the first `fixed`, which lie on the
// outline. A move is kept only if the node's triangles stay
// counter-clockwise and their worst shape improves.
inline void smooth(Mesh& m, int32_t fixed, const Predicates& pred, int sweeps = 4) {
    std::vector<std::vector<int32_t>> around(m.nodes() + 1), neighbours(m.nodes() + 1);
    for (int32_t e = 0; e < m.elements(); ++e)
        for (int k = 1; k <= 3; ++k) {
            const int32_t n = m.node_of(e, k);
            around[n].push_back(e);
            neighbours[n].push_back(m.node_of(e, k % 3 + 1));
        }
    auto worst = [&](int32_t n) {
        double q = 1.0;
        for (const int32_t e : around[n]) {
            double p[3][2];
            for (int k = 0; k < 3; ++k) p[k][0] = m.x[m.node_of(e, k + 1)], p[k][1] = m.y[m.node_of(e, k + 1)];
            if (!(pred.orient(p[0], p[1], p[2]) > 0.0)) return -1.0;
            q = std::min(q, quality_of(m, e));
        }
        return q;
    };
    for (int sweep = 0; sweep < sweeps; ++sweep)
        for (int32_t n = fixed + 1; n <= m.nodes(); ++n) {
            double cx = 0.0, cy = 0.0;
            for (const int32_t j : neighbours[n]) cx += m.x[j], cy += m.y[j];
            const double before = worst(n), ox = m.x[n], oy = m.y[n];
            m.x[n] = cx / neighbours[n].size();
            m.y[n] = cy / neighbours[n].size();
            if (!(worst(n) > before)) m.x[n] = ox, m.y[n] = oy;
        }
}

// Triangles of about the side 48/N over Cook's trapezoid. Each side of the
// outline is divided evenly at about that spacing, the loaded side into an
// even number of parts so that (48, 52) is a node.
inline Mesh triangle_mesh(int n, const Predicates& pred) {
    const double h = kWidth / n;
    front_detail::Triangulator tri(h, pred);
    const Point corners[4] = {{0, 0}, {48, 44}, {48, 60}, {0, 44}};
    std::vector<int32_t> boundary;
    std::vector<char> on_left;
    int32_t probe = 0, corner = 0;
    std::vector<std::array<int32_t, 2>> loaded;  // sides on x = 48
    for (int side = 0; side < 4; ++side) {
        const Point p0 = corners[side], p1 = corners[(side + 1) % 4];
        const double len = std::hypot(p1.x - p0.x, p1.y - p0.y);
        int parts = std::max(1, static_cast<int>(std::lround(len / h)));
        if (side == 1) parts = std::max(2, 2 * static_cast<int>(std::lround(len / (2 * h))));
        for (int k = 0; k < parts; ++k) {
            const double f = static_cast<double>(k) / parts;
            // The clamped side is x = 0 exactly: its points are placed
            // there, not interpolated.
            const double x = side == 3 ? 0.0 : p0.x + f * (p1.x - p0.x);
            const int32_t node = tri.nodes.add(x, p0.y + f * (p1.y - p0.y));
            boundary.push_back(node);
            on_left.push_back(side == 3 || (side == 0 && k == 0));
            if (side == 1 && 2 * k == parts) probe = node;
            if (side == 2 && k == 0) corner = node;
            if (side == 1 && k > 0) loaded.push_back({node - 1, node});
        }
        if (side == 1) loaded.push_back({boundary.back(), boundary.back() + 1});
    }
    for (size_t i = 0; i < boundary.size(); ++i)
        tri.front.push(boundary[i], boundary[(i + 1) % boundary.size()]);
    tri.run();
    const int32_t nboundary = static_cast<int32_t>(boundary.size());

    // The vertex list of the triangles, handed over from the element table
    // ELEMNOD (0:NLAST, 1:3) as the host's mesh store keeps it.
    const int32_t nlast = static_cast<int32_t>(tri.triangles.size()) - 1, kfirst = 0, nv = 3;
    std::vector<int32_t> elemnod(3 * static_cast<size_t>(nlast + 1));
    for (int32_t e = 0; e <= nlast; ++e)
        for (int j = 0; j < 3; ++j) elemnod[e + static_cast<size_t>(nlast + 1) * j] = tri.triangles[e][j];

    Mesh m;
    m.nodes_per_element = 3;
    m.connectivity.assign(3 * static_cast<size_t>(nlast + 1), 0);
    GETELEMENTVERTICES(m.connectivity.data(), elemnod.data(), nullptr, &nlast, nullptr, &kfirst, &nv);
    for (int32_t node = 1; node <= tri.nodes.count; ++node) {
        const auto p = tri.nodes.point(node);
        m.add_node(p[0], p[1]);
    }
    for (int32_t i = 0; i < nboundary; ++i) m.clamped[boundary[i]] = on_left[i];
    smooth(m, nboundary, pred);
    // A uniform traction on a straight 2-node side: half to each end.
    for (const auto& s : loaded) {
        const double share = kShear * std::fabs(m.y[s[1]] - m.y[s[0]]) / 2.0;
        m.load_y[s[0]] += share;
        m.load_y[s[1]] += share;
    }
    m.probe = probe;
    m.corner = corner;
    m.min_quality = 1.0;
    for (int32_t e = 0; e < m.elements(); ++e)
        m.min_quality = std::min(m.min_quality, quality_of(m, e));
    check_triangulation(m, pred);
    return m;
}
