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
};

// The constants as the host passes them.
inline PredicateConstants host_constants(const double* CCWERRBOUNDA, const double* CCWERRBOUNDB,
                                         const double* CCWERRBOUNDC, const double* SPLITTER,
                                         const double* RESULTERRBOUND) {
    return {.ccw_bound_a = *CCWERRBOUNDA,
            .ccw_bound_b = *CCWERRBOUNDB,
            .ccw_bound_c = *CCWERRBOUNDC,
            .splitter = *SPLITTER,
            .result_bound = *RESULTERRBOUND};
}

// Stages B to D for points whose plain determinant did not settle the
// sign; `detsum` bounds the magnitude of the two products. If `stage` is
// given it receives the stage that returned (2, 3 or 4).
double refine_orientation(Point2 a, Point2 b, Point2 c, double detsum, const PredicateConstants& k,
                          int* stage = nullptr);

// Positive if a, b, c run counter-clockwise, negative if clockwise, exactly
// 0 if collinear; about twice the signed area.
//
// The first stage is written without data-dependent branches (the signs
// of random products are a coin toss for the branch predictor): the plain
// determinant is returned when the two products have opposite signs, when
// the first is zero or NaN, or when it clears the first error bound, and
// only the remaining, rare case branches off.
inline double orientation(Point2 a, Point2 b, Point2 c, const PredicateConstants& k,
                          int* stage = nullptr) {
    const double detleft = (a.x - c.x) * (b.y - c.y);
    const double detright = (a.y - c.y) * (b.x - c.x);
    const double det = detleft - detright;
    const bool left_positive = detleft > 0.0;
    const bool left_negative = detleft < 0.0;
    // Where both products have one sign (a NaN right product counts as
    // sharing the left one's), |detleft + detright| is the sum of their
    // magnitudes.
    const double detsum = std::fabs(detleft + detright);
    const bool settled = (left_positive & (detright <= 0.0)) | (left_negative & (detright >= 0.0)) |
                         !(left_positive | left_negative) |
                         (std::fabs(det) >= k.ccw_bound_a * detsum);
    if (settled) {
        if (stage) *stage = 1;
        return det;
    }
    return refine_orientation(a, b, c, detsum, k, stage);
}

}  // namespace shellfe
