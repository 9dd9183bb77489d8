// Shape functions of the plane element families, all in single precision.
#include "element/shape_functions.hpp"

namespace shellfe {

namespace {

// Eight serendipity functions plus the centre bubble. The bubble is added as
// it is: the eight others are deliberately not corrected for it, so with nine
// nodes the functions do not sum to one. Hosts built their nine-node
// elements on exactly these functions.
void quadrilateral8(float xi, float eta, ShapeTable& s) {
    for (int k = 1; k <= 7; k += 2) {  // corners
        const float xk = kQuadrilateralNodes[k].xi;
        const float ek = kQuadrilateralNodes[k].eta;
        const float sx = xi * xk;  // exact: xk is +-1
        const float se = eta * ek;
        const float ax = 1.0f + sx;
        const float ae = 1.0f + se;
        s.value[k] = ((ax * ae) * ((sx + se) - 1.0f)) * 0.25f;
        s.d_dxi[k] = ((0.25f * xk) * ae) * ((2.0f * sx) + se);
        s.d_deta[k] = ((0.25f * ek) * ax) * (sx + (2.0f * se));
    }
    const float bx = 1.0f - xi * xi;    // 1 - xi^2
    const float be = 1.0f - eta * eta;  // 1 - eta^2
    for (int k = 2; k <= 6; k += 4) {  // mid-sides on eta = -1 and eta = 1
        const float ek = kQuadrilateralNodes[k].eta;
        const float ae = 1.0f + eta * ek;
        s.value[k] = (0.5f * bx) * ae;
        s.d_dxi[k] = -xi * ae;
        s.d_deta[k] = (0.5f * bx) * ek;
    }
    for (int k = 4; k <= 8; k += 4) {  // mid-sides on xi = 1 and xi = -1
        const float xk = kQuadrilateralNodes[k].xi;
        const float ax = 1.0f + xi * xk;
        s.value[k] = (0.5f * ax) * be;
        s.d_dxi[k] = (0.5f * xk) * be;
        s.d_deta[k] = -eta * ax;
    }
    s.value[9] = bx * be;
    s.d_dxi[9] = (-2.0f * xi) * be;
    s.d_deta[9] = (-2.0f * eta) * bx;
}

// Quadratic triangle in area coordinates xi, eta, L = 1 - xi - eta; corners
// 1, 3, 5 at xi = 1, eta = 1, L = 1, mid-sides 2, 4, 6 between them.
void triangle6(float xi, float eta, ShapeTable& s) {
    const float l = (1.0f - xi) - eta;
    s.value[1] = (2.0f * xi - 1.0f) * xi;
    s.value[2] = (4.0f * xi) * eta;
    s.value[3] = (2.0f * eta - 1.0f) * eta;
    s.value[4] = (4.0f * eta) * l;
    s.value[5] = (2.0f * l - 1.0f) * l;
    s.value[6] = (4.0f * xi) * l;

    s.d_dxi[1] = 4.0f * xi - 1.0f;
    s.d_dxi[2] = 4.0f * eta;
    s.d_dxi[3] = 0.0f;
    s.d_dxi[4] = -4.0f * eta;
    s.d_dxi[5] = 1.0f - 4.0f * l;
    s.d_dxi[6] = 4.0f * (l - xi);

    s.d_deta[1] = 0.0f;
    s.d_deta[2] = 4.0f * xi;
    s.d_deta[3] = 4.0f * eta - 1.0f;
    s.d_deta[4] = 4.0f * (l - eta);
    s.d_deta[5] = 1.0f - 4.0f * l;
    s.d_deta[6] = -4.0f * xi;
}

// Quintic Hermite functions of a three-node line (value and slope functions
// at xi = -1, 0, 1); the eta column receives the second derivatives.
void hermite_line(float xi, ShapeTable& s) {
    const float x2 = xi * xi;
    const float x3 = x2 * xi;
    const float x4 = x3 * xi;
    const float x5 = x4 * xi;

    s.value[1] = ((x2 - 1.25f * x3) - 0.5f * x4) + 0.75f * x5;
    s.value[2] = 0.25f * (((x2 - x3) - x4) + x5);
    s.value[3] = (1.0f - 2.0f * x2) + x4;
    s.value[4] = (xi - 2.0f * x3) + x5;
    s.value[5] = ((x2 + 1.25f * x3) - 0.5f * x4) - 0.75f * x5;
    s.value[6] = 0.25f * (((-x2 - x3) + x4) + x5);

    s.d_dxi[1] = ((2.0f * xi - 3.75f * x2) - 2.0f * x3) + 3.75f * x4;
    s.d_dxi[2] = ((0.5f * xi - 0.75f * x2) - x3) + 1.25f * x4;
    s.d_dxi[3] = -4.0f * xi + 4.0f * x3;
    s.d_dxi[4] = (1.0f - 6.0f * x2) + 5.0f * x4;
    s.d_dxi[5] = ((2.0f * xi + 3.75f * x2) - 2.0f * x3) - 3.75f * x4;
    s.d_dxi[6] = ((-0.5f * xi - 0.75f * x2) + x3) + 1.25f * x4;

    s.d_deta[1] = ((2.0f - 7.5f * xi) - 6.0f * x2) + 15.0f * x3;
    s.d_deta[2] = ((0.5f - 1.5f * xi) - 3.0f * x2) + 5.0f * x3;
    s.d_deta[3] = -4.0f + 12.0f * x2;
    s.d_deta[4] = -12.0f * xi + 20.0f * x3;
    s.d_deta[5] = ((2.0f + 7.5f * xi) - 6.0f * x2) - 15.0f * x3;
    s.d_deta[6] = ((-0.5f - 1.5f * xi) + 3.0f * x2) + 5.0f * x3;
}

void triangle3(float xi, float eta, ShapeTable& s) {
    s.value[1] = xi;
    s.value[2] = eta;
    s.value[3] = (1.0f - xi) - eta;
    s.d_dxi[1] = 1.0f;
    s.d_dxi[2] = 0.0f;
    s.d_dxi[3] = -1.0f;
    s.d_deta[1] = 0.0f;
    s.d_deta[2] = 1.0f;
    s.d_deta[3] = -1.0f;
}

}  // namespace

void evaluate_shape_functions(std::int32_t ntype, float xi, float eta, ShapeTable& shape) {
    shape = ShapeTable{};
    switch (ntype) {
        case kQuadrilateral8:
        case kQuadrilateral8Alt: quadrilateral8(xi, eta, shape); break;
        case kTriangle6: triangle6(xi, eta, shape); break;
        case kHermiteLine: hermite_line(xi, shape); break;
        case kTriangle3: triangle3(xi, eta, shape); break;
        default: break;  // unknown family: all zero
    }
}

}  // namespace shellfe
