// Whether a candidate triangle may be added to a planar mesh under
// construction without crossing an existing edge or enclosing a node.
#include <cmath>

#include "geometry/orientation.hpp"
#include "geometry/planar.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Whether the existing edge c-d and the new side from p to e cross: their
// lines cross with both parameters in [0, 1], ends included. Short and
// parallel pairs never cross.
bool sides_cross(Point2 c, Point2 d, Point2 p, Point2 e, double lentol, double partol) {
    double s, t;
    return intersect_segments(c, d, p, e, lentol, partol, s, t) == kCrossing && s >= 0.0 &&
           s <= 1.0 && t >= 0.0 && t <= 1.0;
}

// Whether q lies in the triangle a, b, p: strictly inside all three sides,
// or within `ontol` (of the orientation value, twice the signed area) of
// one side and strictly inside the other two. A clockwise triangle
// contains nothing.
bool in_triangle(Point2 a, Point2 b, Point2 p, Point2 q, double ontol,
                 const PredicateConstants& k) {
    // Each orientation must be positive or "on" for any rule to hold; the
    // later ones are computed only when the earlier ones leave a chance.
    const double o1 = orientation(a, b, q, k);
    if (!(o1 > 0.0) && !(std::fabs(o1) < ontol)) return false;
    const double o2 = orientation(b, p, q, k);
    if (!(o2 > 0.0) && !(std::fabs(o2) < ontol)) return false;
    const double o3 = orientation(p, a, q, k);
    const bool in1 = o1 > 0.0, in2 = o2 > 0.0, in3 = o3 > 0.0;
    return (std::fabs(o1) < ontol && in2 && in3) || (std::fabs(o2) < ontol && in1 && in3) ||
           (std::fabs(o3) < ontol && in1 && in2) || (in1 && in2 && in3);
}

struct Candidate {
    Index iedge;       // row of the base edge
    std::int32_t nodex;  // node left out of every test
    Point2 apex;
};

struct Tolerances {
    double lentol;
    double partol;
    double ontol;
};

enum : std::int32_t { kAccepted = 1, kRejected = 2 };

// Edges are checked in row order, each against the four tests in turn; the
// first failure rejects. A node shared by several edges is tested once per
// edge.
std::int32_t accept_triangle(const Candidate& cand, const Array2<const double>& xy,
                             const Array2<const std::int32_t>& edges, Index nedge,
                             const Tolerances& tol, const PredicateConstants& k) {
    if (nedge < 1) return kAccepted;
    const std::int32_t na = edges(cand.iedge, 1), nb = edges(cand.iedge, 2);
    const Point2 a = node_point(xy, na), b = node_point(xy, nb), p = cand.apex;
    const std::int32_t x = cand.nodex;
    for (Index row = 0; row < nedge; ++row) {
        if (row == cand.iedge) continue;
        const std::int32_t nc = edges(row, 1), nd = edges(row, 2);
        const Point2 c = node_point(xy, nc), d = node_point(xy, nd);
        const bool clear_of_x = nc != x && nd != x;
        if (clear_of_x && nc != na && nd != na && sides_cross(c, d, p, a, tol.lentol, tol.partol))
            return kRejected;
        if (clear_of_x && nc != nb && nd != nb && sides_cross(c, d, p, b, tol.lentol, tol.partol))
            return kRejected;
        if (nc != na && nc != nb && nc != x && in_triangle(a, b, p, c, tol.ontol, k))
            return kRejected;
        if (nd != na && nd != nb && nd != x && in_triangle(a, b, p, d, tol.ontol, k))
            return kRejected;
    }
    return kAccepted;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" int32_t CHECKNEWTRIANG(const int32_t* IEDGE, const int32_t* NODEX, const double* P,
                                  const double* XY, const int32_t* NEDGE, const int32_t* EDGES,
                                  const double* CCWERRBOUNDA, const double* CCWERRBOUNDB,
                                  const double* CCWERRBOUNDC, const double* SPLITTER,
                                  const int32_t* LDE, const int32_t* LDN, const double* LENTOL,
                                  const double* PARTOL, const double* ONTOL,
                                  const double* RESULTERRBOUND) noexcept {
    const PredicateConstants k =
        HostConstants{.CCWERRBOUNDA = CCWERRBOUNDA,
                           .CCWERRBOUNDB = CCWERRBOUNDB,
                           .CCWERRBOUNDC = CCWERRBOUNDC,
                           .SPLITTER = SPLITTER,
                           .RESULTERRBOUND = RESULTERRBOUND}.all();
    return accept_triangle({.iedge = *IEDGE, .nodex = *NODEX, .apex = host_point(P)},
                           host_array(XY, {1, Index{*LDN} + 1}, 1),
                           host_array(EDGES, {0, *LDE}, 1), *NEDGE,
                           {.lentol = *LENTOL, .partol = *PARTOL, .ontol = *ONTOL}, k);
}
