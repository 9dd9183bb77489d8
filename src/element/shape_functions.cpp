// Shape functions of the plane element families, in single or double
// precision: the constants are exact in both.
#include "element/shape_functions.hpp"

namespace shellfe {

namespace {

// Eight serendipity functions plus the centre bubble. The bubble is added as
// it is: the eight others are deliberately not corrected for it, so with nine
// nodes the functions do not sum to one. Hosts built their nine-node
// elements on exactly these functions.
template <class Real>
void quadrilateral8(Real xi, Real eta, ShapeTableOf<Real>& s) {
    for (int k = 1; k <= 7; k += 2) {  // corners
        const Real xk = kQuadrilateralNodes[k].xi;
        const Real ek = kQuadrilateralNodes[k].eta;
        const Real sx = xi * xk;  // exact: xk is +-1
        const Real se = eta * ek;
        const Real ax = Real(1.0) + sx;
        const Real ae = Real(1.0) + se;
        s.value[k] = ((ax * ae) * ((sx + se) - Real(1.0))) * Real(0.25);
        s.d_dxi[k] = ((Real(0.25) * xk) * ae) * ((Real(2.0) * sx) + se);
        s.d_deta[k] = ((Real(0.25) * ek) * ax) * (sx + (Real(2.0) * se));
    }
    const Real bx = Real(1.0) - xi * xi;    // 1 - xi^2
    const Real be = Real(1.0) - eta * eta;  // 1 - eta^2
    for (int k = 2; k <= 6; k += 4) {  // mid-sides on eta = -1 and eta = 1
        const Real ek = kQuadrilateralNodes[k].eta;
        const Real ae = Real(1.0) + eta * ek;
        s.value[k] = (Real(0.5) * bx) * ae;
        s.d_dxi[k] = -xi * ae;
        s.d_deta[k] = (Real(0.5) * bx) * ek;
    }
    for (int k = 4; k <= 8; k += 4) {  // mid-sides on xi = 1 and xi = -1
        const Real xk = kQuadrilateralNodes[k].xi;
        const Real ax = Real(1.0) + xi * xk;
        s.value[k] = (Real(0.5) * ax) * be;
        s.d_dxi[k] = (Real(0.5) * xk) * be;
        s.d_deta[k] = -eta * ax;
    }
    s.value[9] = bx * be;
    s.d_dxi[9] = (-Real(2.0) * xi) * be;
    s.d_deta[9] = (-Real(2.0) * eta) * bx;
}

// Quadratic triangle in area coordinates xi, eta, L = 1 - xi - eta; corners
// 1, 3, 5 at xi = 1, eta = 1, L = 1, mid-sides 2, 4, 6 between them.
template <class Real>
void triangle6(Real xi, Real eta, ShapeTableOf<Real>& s) {
    const Real l = (Real(1.0) - xi) - eta;
    s.value[1] = (Real(2.0) * xi - Real(1.0)) * xi;
    s.value[2] = (Real(4.0) * xi) * eta;
    s.value[3] = (Real(2.0) * eta - Real(1.0)) * eta;
    s.value[4] = (Real(4.0) * eta) * l;
    s.value[5] = (Real(2.0) * l - Real(1.0)) * l;
    s.value[6] = (Real(4.0) * xi) * l;

    s.d_dxi[1] = Real(4.0) * xi - Real(1.0);
    s.d_dxi[2] = Real(4.0) * eta;
    s.d_dxi[3] = Real(0.0);
    s.d_dxi[4] = -Real(4.0) * eta;
    s.d_dxi[5] = Real(1.0) - Real(4.0) * l;
    s.d_dxi[6] = Real(4.0) * (l - xi);

    s.d_deta[1] = Real(0.0);
    s.d_deta[2] = Real(4.0) * xi;
    s.d_deta[3] = Real(4.0) * eta - Real(1.0);
    s.d_deta[4] = Real(4.0) * (l - eta);
    s.d_deta[5] = Real(1.0) - Real(4.0) * l;
    s.d_deta[6] = -Real(4.0) * xi;
}

// Quintic Hermite functions of a three-node line (value and slope functions
// at xi = -1, 0, 1); the eta column receives the second derivatives.
template <class Real>
void hermite_line(Real xi, ShapeTableOf<Real>& s) {
    const Real x2 = xi * xi;
    const Real x3 = x2 * xi;
    const Real x4 = x3 * xi;
    const Real x5 = x4 * xi;

    s.value[1] = ((x2 - Real(1.25) * x3) - Real(0.5) * x4) + Real(0.75) * x5;
    s.value[2] = Real(0.25) * (((x2 - x3) - x4) + x5);
    s.value[3] = (Real(1.0) - Real(2.0) * x2) + x4;
    s.value[4] = (xi - Real(2.0) * x3) + x5;
    s.value[5] = ((x2 + Real(1.25) * x3) - Real(0.5) * x4) - Real(0.75) * x5;
    s.value[6] = Real(0.25) * (((-x2 - x3) + x4) + x5);

    s.d_dxi[1] = ((Real(2.0) * xi - Real(3.75) * x2) - Real(2.0) * x3) + Real(3.75) * x4;
    s.d_dxi[2] = ((Real(0.5) * xi - Real(0.75) * x2) - x3) + Real(1.25) * x4;
    s.d_dxi[3] = -Real(4.0) * xi + Real(4.0) * x3;
    s.d_dxi[4] = (Real(1.0) - Real(6.0) * x2) + Real(5.0) * x4;
    s.d_dxi[5] = ((Real(2.0) * xi + Real(3.75) * x2) - Real(2.0) * x3) - Real(3.75) * x4;
    s.d_dxi[6] = ((-Real(0.5) * xi - Real(0.75) * x2) + x3) + Real(1.25) * x4;

    s.d_deta[1] = ((Real(2.0) - Real(7.5) * xi) - Real(6.0) * x2) + Real(15.0) * x3;
    s.d_deta[2] = ((Real(0.5) - Real(1.5) * xi) - Real(3.0) * x2) + Real(5.0) * x3;
    s.d_deta[3] = -Real(4.0) + Real(12.0) * x2;
    s.d_deta[4] = -Real(12.0) * xi + Real(20.0) * x3;
    s.d_deta[5] = ((Real(2.0) + Real(7.5) * xi) - Real(6.0) * x2) - Real(15.0) * x3;
    s.d_deta[6] = ((-Real(0.5) - Real(1.5) * xi) + Real(3.0) * x2) + Real(5.0) * x3;
}

template <class Real>
void triangle3(Real xi, Real eta, ShapeTableOf<Real>& s) {
    s.value[1] = xi;
    s.value[2] = eta;
    s.value[3] = (Real(1.0) - xi) - eta;
    s.d_dxi[1] = Real(1.0);
    s.d_dxi[2] = Real(0.0);
    s.d_dxi[3] = -Real(1.0);
    s.d_deta[1] = Real(0.0);
    s.d_deta[2] = Real(1.0);
    s.d_deta[3] = -Real(1.0);
}

}  // namespace

template <class Real>
void evaluate_shape_functions(std::int32_t ntype, Real xi, Real eta, ShapeTableOf<Real>& shape) {
    shape = ShapeTableOf<Real>{};
    switch (ntype) {
        case kQuadrilateral8:
        case kQuadrilateral8Alt: quadrilateral8(xi, eta, shape); break;
        case kTriangle6: triangle6(xi, eta, shape); break;
        case kHermiteLine: hermite_line(xi, shape); break;
        case kTriangle3: triangle3(xi, eta, shape); break;
        default: break;  // unknown family: all zero
    }
}

template void evaluate_shape_functions(std::int32_t, float, float, ShapeTableOf<float>&);
template void evaluate_shape_functions(std::int32_t, double, double, ShapeTableOf<double>&);

}  // namespace shellfe
