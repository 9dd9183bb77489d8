// The adaptive-precision orientation of three plane points.
//
// The plain determinant settles the sign whenever it clears an error bound
// proportional to the magnitudes involved; otherwise up to three further
// stages refine it, the last one in exact expansion arithmetic. The error
// bounds and the splitter come from the host, which computes them once.
#pragma once

#include <cmath>

#include "geometry/planar.hpp"

namespace shellfe {

struct PredicateConstants {
    double ccw_bound_a;   // (3 + 16 eps) eps
    double ccw_bound_b;   // (2 + 12 eps) eps
    double ccw_bound_c;   // (9 + 64 eps) eps^2
    double splitter;      // 2^27 + 1
    double result_bound;  // (3 + 8 eps) eps

    double bound_a() const { return ccw_bound_a; }
    const PredicateConstants& all() const { return *this; }
};

// The constants where the host passes them, read when needed: a single
// call on well-separated points needs only the first bound.
struct HostConstants {
    const double* CCWERRBOUNDA;
    const double* CCWERRBOUNDB;
    const double* CCWERRBOUNDC;
    const double* SPLITTER;
    const double* RESULTERRBOUND;

    double bound_a() const { return *CCWERRBOUNDA; }
    PredicateConstants all() const {
        return {.ccw_bound_a = *CCWERRBOUNDA,
                .ccw_bound_b = *CCWERRBOUNDB,
                .ccw_bound_c = *CCWERRBOUNDC,
                .splitter = *SPLITTER,
                .result_bound = *RESULTERRBOUND};
    }
};

// The plain determinant and its two products.
struct PlainDeterminant {
    double detleft;
    double detright;
    double det;
    double detsum;  // |detleft + detright|
};

// The rest of the first stage, and stages B to D, for the few points whose
// plain determinant does not clear the first bound; kept out of line so
// that the common path stays small wherever it is inlined. If `stage` is
// given it receives the stage that returned (1 to 4). A NaN result (from a
// NaN or infinite coordinate, or from differences beyond about 2^996, where
// splitting a factor overflows) always comes this way, and leaves as the
// canonical NaN whatever its operands were.
double settle_orientation(Point2 a, Point2 b, Point2 c, const PlainDeterminant& plain,
                          const PredicateConstants& k, int* stage);

// Positive if a, b, c run counter-clockwise, negative if clockwise, 0 if
// collinear; about twice the signed area. (The last stage's merge order,
// kept for compatibility, can rarely leave a tiny nonzero for exactly
// collinear points: see expansion_sum.)
//
// The first stage returns the plain determinant when the two products have
// opposite signs, when the first is zero or NaN, or when the determinant
// clears the first error bound. Testing the signs first, as the textbook
// does, costs a mispredicted branch on every other random input. Instead
// the bound test comes first, against |detleft + detright|: for products
// of opposite sign or a zero first product it always passes (the
// determinant is then at least as large in magnitude as that sum), so it
// settles almost every input with one well-predicted branch, and the sign
// cases are sorted out only on the rare inputs that fail it. The values
// returned are the textbook's, NaN included.
template <class Constants>
inline double orientation(Point2 a, Point2 b, Point2 c, const Constants& k, int* stage = nullptr) {
    const double detleft = (a.x - c.x) * (b.y - c.y);
    const double detright = (a.y - c.y) * (b.x - c.x);
    const double det = detleft - detright;
    const double detsum = std::fabs(detleft + detright);
    // Failed by nearly collinear points, by NaN, and by infinite products
    // of opposite sign (whose sum is NaN).
    if (!(std::fabs(det) >= k.bound_a() * detsum)) [[unlikely]]
        return settle_orientation(a, b, c, {detleft, detright, det, detsum}, k.all(), stage);
    if (stage) *stage = 1;
    return det;
}

}  // namespace shellfe
