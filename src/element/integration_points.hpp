// The integration-point loop shared by the element stiffness routines:
// point and weight from the host's rule, shape functions, Jacobian,
// degenerate-point rule, integration factor and interpolated thickness.
#pragma once

#include <cstdint>

#include "frame/canonical_nan.hpp"
#include "element/jacobian.hpp"
#include "element/shape_functions.hpp"
#include "frame/numbering.hpp"

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

// The host's arguments that every element routine takes, by name. Element
// routines fill this with designated initialisers, so that two arguments of
// the same type cannot trade places unnoticed. NGPT2 may be null.
struct ElementArgs {
    const std::int32_t *NGPX, *NGPY, *NTYPE;
    const float *GPOS, *GWEI;
    std::int32_t *NGPT, *NGPT2;
    const std::int32_t* NNODE;
    const float* XY;
    const std::int32_t* IEL;
    const float* TNODE;
    const std::int32_t *NELEM, *NNODT, *IMAT;
    float* PROP;
    const std::int32_t* NMAT;
    float* DETJ;
};

// The element and its rule, bound to views.
struct ElementPoints {
    std::int32_t ngpx, ngpy, ntype;
    Array2<const float> gpos, gwei;  // (0:2, 0:*)
    Index nnode;                     // at most 9
    Array2<const float> xy;          // (0:9, 0:2)
    Array2<const float> tnode;       // (0:NELEM, 0:*)
    Index iel, nnodt;                // nnodt is limited to 9 like nnode
    Array2<float> prop;              // (0:NMAT, 0:*), column 3 of row imat written
    Index imat;
    std::int32_t* ngpt;   // counted before the shape functions
    std::int32_t* ngpt2;  // counted after them; may be null
    float* detj;
};

// The scalars are read here, once, before any point writes to the host's
// arrays.
inline ElementPoints element_points(const ElementArgs& a) {
    return {.ngpx = *a.NGPX, .ngpy = *a.NGPY, .ntype = *a.NTYPE,
            .gpos = host_array(a.GPOS, {0, 2}), .gwei = host_array(a.GWEI, {0, 2}),
            .nnode = element_nodes(*a.NNODE), .xy = host_array(a.XY, {0, kMaxElementNodes}),
            .tnode = host_array(a.TNODE, {0, *a.NELEM}), .iel = *a.IEL,
            .nnodt = element_nodes(*a.NNODT), .prop = host_array(a.PROP, {0, *a.NMAT}),
            .imat = *a.IMAT, .ngpt = a.NGPT, .ngpt2 = a.NGPT2, .detj = a.DETJ};
}

// One point's data as the element routines see it.
struct PointData {
    ShapeTable shape;
    float d_dx[kMaxElementNodes + 1];  // dN_k/dx, k = 1..nnode
    float d_dy[kMaxElementNodes + 1];  // dN_k/dy
    float det_weight;                  // determinant (or -1.0) times weight
    float thickness;                   // interpolated from the nodal thicknesses
};

// Runs body(const PointData&) for i = 1..ngpx (outer), j = 1..ngpy (inner).
// Triangles take point j of the triangle rule on every outer pass, so a host
// integrating a triangle once passes ngpx = 1.
template <class Body>
void for_each_integration_point(const ElementPoints& e, DegeneratePoint on_degenerate,
                                Body&& body) {
    const bool triangle = is_triangle_family(e.ntype);
    PointData p;
    for (Index i = 1; i <= e.ngpx; ++i) {
        for (Index j = 1; j <= e.ngpy; ++j) {
            const float xi = triangle ? e.gpos(2, 2 * j - 1) : e.gpos(1, i);
            const float eta = triangle ? e.gpos(2, 2 * j) : e.gpos(1, j);
            increment(e.ngpt);
            evaluate_shape_functions(e.ntype, xi, eta, p.shape);
            if (e.ngpt2) increment(e.ngpt2);

            float det = cartesian_derivatives(
                host_array<const float>(p.shape.d_dxi), host_array<const float>(p.shape.d_deta),
                e.xy.column(1), e.xy.column(2), e.nnode, host_array(p.d_dx), host_array(p.d_dy));
            *e.detj = canonical(det);
            if (det < kSmallestDeterminant) {
                *e.detj = -1.0f;
                if (on_degenerate == DegeneratePoint::abandon_element) return;
                det = -1.0f;
            }

            const float w = triangle ? e.gwei(2, j) : e.gwei(1, i) * e.gwei(1, j);
            p.det_weight = det * w;

            float t = 0.0f;
            for (Index k = 1; k <= e.nnodt; ++k) t = t + p.shape.value[k] * e.tnode(e.iel, k);
            e.prop(e.imat, 3) = canonical(t);
            p.thickness = t;

            body(static_cast<const PointData&>(p));
        }
    }
}

}  // namespace shellfe
