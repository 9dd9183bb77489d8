// The integration-point loop shared by the element stiffness routines:
// point and weight from the host's rule, shape functions, Jacobian,
// degenerate-point rule, integration factor and interpolated thickness.
#pragma once

#include <cstdint>

#include "frame/canonical_nan.hpp"
#include "element/jacobian.hpp"
#include "element/shape_functions.hpp"
#include "frame/numbering.hpp"
#include "frame/precision.hpp"

namespace shellfe {

// Jacobian determinants below this mark a collapsed or inverted element.
template <class Real>
inline constexpr Real kSmallestDeterminant = threshold<Real>(1.0e-7f);

// What a routine does at a point whose determinant is below the threshold.
enum class DegeneratePoint {
    // Integrate it anyway with -1.0 in place of the determinant (membrane).
    integrate_with_minus_one,
    // Return at once, leaving the element incomplete (plate routines).
    abandon_element,
};

// The host's arguments that every element routine takes, by name. Element
// routines fill this with designated initialisers, so that two arguments of
// the same type cannot trade places unnoticed. NGPT2 may be null. Real is
// float for the compatible routines and double for the extension.
template <class Real>
struct ElementArgs {
    const std::int32_t *NGPX, *NGPY, *NTYPE;
    const Real *GPOS, *GWEI;
    std::int32_t *NGPT, *NGPT2;
    const std::int32_t* NNODE;
    const Real* XY;
    const std::int32_t* IEL;
    const Real* TNODE;
    const std::int32_t *NELEM, *NNODT, *IMAT;
    Real* PROP;
    const std::int32_t* NMAT;
    Real* DETJ;
};

// The element and its rule, bound to views.
template <class Real>
struct ElementPoints {
    std::int32_t ngpx, ngpy, ntype;
    Array2<const Real> gpos, gwei;  // (0:2, 0:*)
    Index nnode;                    // at most 9
    Array2<const Real> xy;          // (0:9, 0:2)
    Array2<const Real> tnode;       // (0:NELEM, 0:*)
    Index iel, nnodt;               // nnodt is limited to 9 like nnode
    Array2<Real> prop;              // (0:NMAT, 0:*), column 3 of row imat written
    Index imat;
    std::int32_t* ngpt;   // counted before the shape functions
    std::int32_t* ngpt2;  // counted after them; may be null
    Real* detj;
};

// The scalars are read here, once, before any point writes to the host's
// arrays.
template <class Real>
ElementPoints<Real> element_points(const ElementArgs<Real>& a) {
    return {.ngpx = *a.NGPX, .ngpy = *a.NGPY, .ntype = *a.NTYPE,
            .gpos = host_array(a.GPOS, {0, 2}), .gwei = host_array(a.GWEI, {0, 2}),
            .nnode = element_nodes(*a.NNODE), .xy = host_array(a.XY, {0, kMaxElementNodes}),
            .tnode = host_array(a.TNODE, {0, *a.NELEM}), .iel = *a.IEL,
            .nnodt = element_nodes(*a.NNODT), .prop = host_array(a.PROP, {0, *a.NMAT}),
            .imat = *a.IMAT, .ngpt = a.NGPT, .ngpt2 = a.NGPT2, .detj = a.DETJ};
}

// One point's data as the element routines see it.
template <class Real>
struct PointData {
    ShapeTableOf<Real> shape;
    Real d_dx[kMaxElementNodes + 1];  // dN_k/dx, k = 1..nnode
    Real d_dy[kMaxElementNodes + 1];  // dN_k/dy
    Real det_weight;                  // determinant (or -1.0) times weight
    Real thickness;                   // interpolated from the nodal thicknesses
};

// Runs body(const PointData&) for i = 1..ngpx (outer), j = 1..ngpy (inner).
// Triangles take point j of the triangle rule on every outer pass, so a host
// integrating a triangle once passes ngpx = 1.
template <class Real, class Body>
void for_each_integration_point(const ElementPoints<Real>& e, DegeneratePoint on_degenerate,
                                Body&& body) {
    const bool triangle = is_triangle_family(e.ntype);
    PointData<Real> p;
    for (Index i = 1; i <= e.ngpx; ++i) {
        for (Index j = 1; j <= e.ngpy; ++j) {
            const Real xi = triangle ? e.gpos(2, 2 * j - 1) : e.gpos(1, i);
            const Real eta = triangle ? e.gpos(2, 2 * j) : e.gpos(1, j);
            increment(e.ngpt);
            evaluate_shape_functions(e.ntype, xi, eta, p.shape);
            if (e.ngpt2) increment(e.ngpt2);

            Real det = cartesian_derivatives(
                host_array<const Real>(p.shape.d_dxi), host_array<const Real>(p.shape.d_deta),
                e.xy.column(1), e.xy.column(2), e.nnode, host_array(p.d_dx), host_array(p.d_dy));
            *e.detj = canonical(det);
            if (det < kSmallestDeterminant<Real>) {
                *e.detj = Real(-1);
                if (on_degenerate == DegeneratePoint::abandon_element) return;
                det = Real(-1);
            }

            const Real w = triangle ? e.gwei(2, j) : e.gwei(1, i) * e.gwei(1, j);
            p.det_weight = det * w;

            Real t = 0;
            for (Index k = 1; k <= e.nnodt; ++k) t = t + p.shape.value[k] * e.tnode(e.iel, k);
            e.prop(e.imat, 3) = canonical(t);
            p.thickness = t;

            body(static_cast<const PointData<Real>&>(p));
        }
    }
}

}  // namespace shellfe
