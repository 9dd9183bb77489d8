// Shape functions of the plane element families, their natural derivatives
// at one point of the reference element, and the reference nodes they
// belong to. The element routines, the panel routines and the error
// estimate all evaluate them here.
#pragma once

#include <algorithm>
#include <cstdint>

#include "frame/views.hpp"

namespace shellfe {

// Largest number of nodes of any element family (the 8-node quadrilateral
// with its centre bubble); the fixed node tables of the element routines
// hold this many rows.
inline constexpr int kMaxElementNodes = 9;

// A node count as hosts pass it, limited to the rows the tables hold: counts
// above nine are treated as nine.
inline Index element_nodes(std::int32_t count) { return std::min<Index>(count, kMaxElementNodes); }

// Family codes shared by every routine that takes an element kind.
enum ElementFamily : std::int32_t {
    kQuadrilateral8 = 1,  // 1 or 2: serendipity quadrilateral + centre bubble
    kQuadrilateral8Alt = 2,
    kTriangle6 = 3,
    kHermiteLine = 4,  // 3 nodes, value and slope at xi = -1, 0, 1
    kTriangle3 = 6,
};

// True for the families integrated with the triangle rule.
inline bool is_triangle_family(std::int32_t ntype) {
    return ntype == kTriangle6 || ntype == kTriangle3;
}

// A point of the reference element.
struct NaturalPoint {
    float xi;
    float eta;
};

// Reference nodes 1..9 of the quadrilateral families, counter-clockwise from
// (-1, -1), corners and mid-sides alternating, the centre last. Entry 0 is
// kept so that node k sits at index k.
inline constexpr NaturalPoint kQuadrilateralNodes[kMaxElementNodes + 1] = {
    {0, 0}, {-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {0, 0}};

// Reference nodes 1..6 of the quadratic triangle in area coordinates: the
// corners 1, 3, 5 at xi = 1, eta = 1 and L = 1 - xi - eta = 1, the mid-sides
// 2, 4, 6 between them. The linear triangle's nodes 1, 2, 3 are the corners
// in the same order.
inline constexpr NaturalPoint kTriangleNodes[7] = {
    {0, 0}, {1, 0}, {0.5f, 0.5f}, {0, 1}, {0, 0.5f}, {0, 0}, {0.5f, 0}};

// Values and natural derivatives of the shape functions at one point, by node
// number 1..9; index 0 is kept so that node k sits at index k, and is zero.
template <class Real>
struct ShapeTableOf {
    Real value[kMaxElementNodes + 1];
    Real d_dxi[kMaxElementNodes + 1];
    // dN/deta; for the quintic Hermite line, which has no eta, d2N/dxi2: the
    // element routines treat it like d/deta, which is what hosts of that
    // family expect.
    Real d_deta[kMaxElementNodes + 1];
};
using ShapeTable = ShapeTableOf<float>;

// Fills the whole table (all ten rows of all three columns) for family
// `ntype` at (xi, eta). An unknown code is not an error: the table comes back
// all zero, which downstream gives a zero Jacobian. Instantiated for float
// and double.
template <class Real>
void evaluate_shape_functions(std::int32_t ntype, Real xi, Real eta, ShapeTableOf<Real>& shape);

}  // namespace shellfe
