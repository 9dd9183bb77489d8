// Shape functions of the plane element families and their natural
// derivatives at one point of the reference element.
#pragma once

#include <cstdint>

namespace shellfe {

// Largest number of nodes of any element family (the 8-node quadrilateral
// with its centre bubble).
inline constexpr int kMaxElementNodes = 9;

// Values and natural derivatives of the shape functions at one point, by node
// number 1..9; index 0 is kept so that node k sits at index k, and is zero.
// For the quintic Hermite family the eta column holds second derivatives in
// xi instead.
struct ShapeTable {
    float value[kMaxElementNodes + 1];
    float dxi[kMaxElementNodes + 1];
    float deta[kMaxElementNodes + 1];
};

// Family codes shared by every routine that takes an element kind.
enum ElementFamily : std::int32_t {
    kQuadrilateral8 = 1,      // 1 or 2: serendipity quadrilateral + centre bubble
    kQuadrilateral8Alt = 2,
    kTriangle6 = 3,
    kHermiteLine = 4,         // 3 nodes, value and slope at xi = -1, 0, 1
    kTriangle3 = 6,
};

// True for the families integrated with the triangle rule.
inline bool is_triangle_family(std::int32_t ntype) {
    return ntype == kTriangle6 || ntype == kTriangle3;
}

// Fills the whole table (all ten rows of all three columns) for family
// `ntype` at (xi, eta). An unknown code is not an error: the table comes back
// all zero, which downstream gives a zero Jacobian.
void evaluate_shape_functions(std::int32_t ntype, float xi, float eta, ShapeTable& shape);

}  // namespace shellfe
