// Material angles: entered in degrees; their sine and cosine as each
// precision takes them.
#pragma once

#include "frame/precision.hpp"

namespace shellfe {

template <class Real>
inline constexpr Real kPiOf = literal<Real>(3.14159265358979323846);
static_assert(kPiOf<float> == 3.1415927f);
inline constexpr float kPi = kPiOf<float>;

// Radians from degrees, with pi in the working precision.
template <class Real>
inline Real degrees_to_radians(Real degrees) {
    return (degrees * kPiOf<Real>) / Real(180);
}

template <class Real>
struct SinCosOf {
    Real s;
    Real c;
};
using SinCos = SinCosOf<float>;

// The bits of the sine and the cosine of an infinite or NaN angle: the
// positive quiet NaN, whatever the sign or payload of the angle, so that
// every platform gives the same material matrices for such input.
inline constexpr unsigned kAngleNaNBits = 0x7FC00000u;

// The single-precision sine and cosine of a single-precision angle,
// correctly rounded for every finite angle, with an exact argument reduction
// for large ones (sin_cos.cpp). The platforms' own functions cannot serve:
// glibc's and the Windows runtime's differ in the last bit, the
// single-precision ones for a few per cent of ordinary angles and the
// double-precision ones from about 1.8e9 degrees on, and they give NaNs of
// different signs for infinite or NaN angles.
SinCos sin_cos(float radians) noexcept;

// Sine and cosine of an angle in degrees, in double precision, the same
// bits on every platform: the angle is reduced exactly in degrees (so that
// multiples of 90 degrees give exact zeros and ones) and the rest turned to
// radians as a double-double, within about one ulp. An infinite or NaN angle
// gives the canonical NaN for both.
SinCosOf<double> sin_cos_degrees(double degrees) noexcept;

// Sine and cosine of a material angle given in degrees. Single precision
// turns it into radians first and rounds there, as hosts of the compatible
// routines expect; double precision reduces it in degrees.
inline SinCos angle_sin_cos(float degrees) { return sin_cos(degrees_to_radians(degrees)); }
inline SinCosOf<double> angle_sin_cos(double degrees) { return sin_cos_degrees(degrees); }

}  // namespace shellfe
