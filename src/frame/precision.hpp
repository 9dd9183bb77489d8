// Constants of formulas written once for single and double precision.
#pragma once

namespace shellfe {

// A formula's constant in the working precision: the double rounded to
// Real. Callers check with static_assert that a float constant is the one
// the single-precision formula has always used.
template <class Real>
constexpr Real literal(double v) {
    return static_cast<Real>(v);
}

// A threshold of the compatible routines: a single-precision constant, and
// in double precision that same value widened (1.0e-7f is
// 1.0000000116860974e-7), so that both precisions draw the line in one place.
template <class Real>
constexpr Real threshold(float v) {
    return static_cast<Real>(v);
}

}  // namespace shellfe
