#include "geometry/orientation.hpp"

#include "frame/canonical_nan.hpp"
#include "frame/expansion.hpp"

namespace shellfe {

namespace {

// Stages B to D; `detsum` bounds the magnitude of the two products.
double refine_orientation(Point2 a, Point2 b, Point2 c, double detsum, const PredicateConstants& k,
                          int* stage) {
    const auto reached = [stage](int s) {
        if (stage) *stage = s;
    };
    const double acx = a.x - c.x, bcx = b.x - c.x;
    const double acy = a.y - c.y, bcy = b.y - c.y;

    // Stage B: the determinant of the rounded differences, exactly.
    reached(2);
    const Halves sacx = split(acx, k.splitter), sbcy = split(bcy, k.splitter);
    const Halves sacy = split(acy, k.splitter), sbcx = split(bcx, k.splitter);
    double detleft, detlefttail, detright, detrighttail;
    two_product(sacx, sbcy, detleft, detlefttail);
    two_product(sacy, sbcx, detright, detrighttail);
    double B[4];
    two_two_diff(detleft, detlefttail, detright, detrighttail, B);
    double det = estimate(4, B);
    const double bound_b = k.ccw_bound_b * detsum;
    if (det >= bound_b || -det >= bound_b) return det;

    // Stage C: a first-order correction for the rounding of the differences.
    reached(3);
    const double acxtail = two_diff_tail(a.x, c.x, acx);
    const double bcxtail = two_diff_tail(b.x, c.x, bcx);
    const double acytail = two_diff_tail(a.y, c.y, acy);
    const double bcytail = two_diff_tail(b.y, c.y, bcy);
    if (acxtail == 0.0 && acytail == 0.0 && bcxtail == 0.0 && bcytail == 0.0) return det;
    const double bound_c = k.ccw_bound_c * detsum + k.result_bound * std::fabs(det);
    det += (acx * bcytail + bcy * acxtail) - (acy * bcxtail + bcx * acytail);
    if (det >= bound_c || -det >= bound_c) return det;

    // Stage D: the exact determinant as an expansion. Every factor is split
    // once, however many products it enters.
    reached(4);
    const Halves sacxt = split(acxtail, k.splitter), sbcyt = split(bcytail, k.splitter);
    const Halves sacyt = split(acytail, k.splitter), sbcxt = split(bcxtail, k.splitter);
    double u[4], C1[8], C2[12], D[16];
    // u = p * q - r * s, exactly.
    const auto cross = [&u](const Halves& p, const Halves& q, const Halves& r, const Halves& s) {
        double s1, s0, t1, t0;
        two_product(p, q, s1, s0);
        two_product(r, s, t1, t0);
        two_two_diff(s1, s0, t1, t0, u);
    };
    cross(sacxt, sbcy, sacyt, sbcx);
    const int c1len = expansion_sum(4, B, 4, u, C1);
    cross(sacx, sbcyt, sacy, sbcxt);
    const int c2len = expansion_sum(c1len, C1, 4, u, C2);
    cross(sacxt, sbcyt, sacyt, sbcxt);
    const int dlen = expansion_sum(c2len, C2, 4, u, D);
    return D[dlen - 1];
}

}  // namespace

double settle_orientation(Point2 a, Point2 b, Point2 c, const PlainDeterminant& plain,
                          const PredicateConstants& k, int* stage) {
    // Opposite signs, or a zero or NaN first product: the plain determinant
    // stands, as the first stage's sign tests have it.
    const bool same_sign = (plain.detleft > 0.0 && !(plain.detright <= 0.0)) ||
                           (plain.detleft < 0.0 && !(plain.detright >= 0.0));
    if (!same_sign) {
        if (stage) *stage = 1;
        return canonical(plain.det);
    }
    return canonical(refine_orientation(a, b, c, plain.detsum, k, stage));
}

}  // namespace shellfe
