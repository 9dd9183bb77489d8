// The integration-point loop shared by the element stiffness routines:
// point and weight from the host's rule, shape functions, Jacobian,
// degenerate-point rule, integration factor and interpolated thickness.
#pragma once

#include "element/jacobian.hpp"
#include "element/shape_functions.hpp"

#include <algorithm>
#include <cstdint>

namespace shellfe {

// Jacobian determinants below this mark a collapsed or inverted element.
inline constexpr float kSmallestDeterminant = 1.0e-7f;

// What a routine does at a point whose determinant is below the threshold.
enum class DegeneratePoint {
    // Integrate it anyway with -1.0 in place of the determinant (membrane).
    integrate_with_minus_one,
    // Return at once, leaving the element incomplete (plate routines).
    abandon_element,
};

// Everything an element routine needs from the host to run its points.
struct ElementPoints {
    std::int32_t ngpx, ngpy, ntype;
    Array2<const float> gpos, gwei;  // (0:2, 0:*)
    Index nnode;                     // at most 9
    Array2<const float> xy;          // (0:9, 0:2)
    Array2<const float> tnode;       // (0:NELEM, 0:*)
    Index iel, nnodt;                // nnodt is limited to 9 like nnode
    Array2<float> prop;              // (0:NMAT, 0:*), column 3 of row imat written
    Index imat;
    std::int32_t* ngpt;              // counted before the shape functions
    std::int32_t* ngpt2;             // counted after them; may be null
    float* detj;
};

// One point's data as the element routines see it.
struct PointData {
    ShapeTable shape;
    float dx[kMaxElementNodes + 1];  // dN_k/dx, k = 1..nnode
    float dy[kMaxElementNodes + 1];  // dN_k/dy
    float factor;                    // determinant (or -1.0) times weight
    float thickness;                 // interpolated from the nodal thicknesses
};

// The shape and coordinate tables hold nine nodes; larger counts use those.
inline Index clamp_nodes(std::int32_t n) { return std::min<Index>(n, kMaxElementNodes); }

// The element and its rule from the host's arguments, which all element
// routines name alike. The scalars are read here, once, before any point
// writes to the host's arrays; NGPT2 may be null.
inline ElementPoints element_points(const std::int32_t* NGPX, const std::int32_t* NGPY,
                                    const std::int32_t* NTYPE, const float* GPOS,
                                    const float* GWEI, const std::int32_t* NNODE, const float* XY,
                                    const float* TNODE, const std::int32_t* NELEM,
                                    const std::int32_t* IEL, const std::int32_t* NNODT,
                                    float* PROP, const std::int32_t* NMAT,
                                    const std::int32_t* IMAT, std::int32_t* NGPT,
                                    std::int32_t* NGPT2, float* DETJ) {
    return {.ngpx = *NGPX, .ngpy = *NGPY, .ntype = *NTYPE,
            .gpos = upper_bound(GPOS, Index{2}), .gwei = upper_bound(GWEI, Index{2}),
            .nnode = clamp_nodes(*NNODE), .xy = upper_bound(XY, Index{kMaxElementNodes}),
            .tnode = upper_bound(TNODE, *NELEM), .iel = *IEL, .nnodt = clamp_nodes(*NNODT),
            .prop = upper_bound(PROP, *NMAT), .imat = *IMAT,
            .ngpt = NGPT, .ngpt2 = NGPT2, .detj = DETJ};
}

// Counters wrap like the host's 32-bit integers instead of overflowing.
inline void count_point(std::int32_t* counter) {
    *counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(*counter) + 1u);
}

// Runs body(const PointData&) for i = 1..ngpx (outer), j = 1..ngpy (inner).
// Triangles take point j of the triangle rule on every outer pass, so a host
// integrating a triangle once passes ngpx = 1.
template <class Body>
void for_each_integration_point(const ElementPoints& e, DegeneratePoint on_degenerate,
                                Body&& body) {
    const bool triangle = is_triangle_family(e.ntype);
    const auto x = from_zero(e.xy.at(0, 1));
    const auto y = from_zero(e.xy.at(0, 2));
    PointData p;
    for (Index i = 1; i <= e.ngpx; ++i) {
        for (Index j = 1; j <= e.ngpy; ++j) {
            const float xi = triangle ? e.gpos(2, 2 * j - 1) : e.gpos(1, i);
            const float eta = triangle ? e.gpos(2, 2 * j) : e.gpos(1, j);
            count_point(e.ngpt);
            evaluate_shape_functions(e.ntype, xi, eta, p.shape);
            if (e.ngpt2) count_point(e.ngpt2);

            float det = cartesian_derivatives(from_zero<const float>(p.shape.dxi),
                                              from_zero<const float>(p.shape.deta), x, y, e.nnode,
                                              from_zero(p.dx), from_zero(p.dy));
            *e.detj = det;
            if (det < kSmallestDeterminant) {
                *e.detj = -1.0f;
                if (on_degenerate == DegeneratePoint::abandon_element) return;
                det = -1.0f;
            }

            const float w = triangle ? e.gwei(2, j) : e.gwei(1, i) * e.gwei(1, j);
            p.factor = det * w;

            float t = 0.0f;
            for (Index k = 1; k <= e.nnodt; ++k) t = t + p.shape.value[k] * e.tnode(e.iel, k);
            e.prop(e.imat, 3) = t;
            p.thickness = t;

            body(static_cast<const PointData&>(p));
        }
    }
}

}  // namespace shellfe
