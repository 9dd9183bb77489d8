// Material angles: entered in degrees, turned to radians in single precision
// with the single-precision value of pi, then sine and cosine.
#pragma once

namespace shellfe {

inline constexpr float kPi = 3.1415927f;

inline float degrees_to_radians(float degrees) { return (degrees * kPi) / 180.0f; }

struct SinCos {
    float s;
    float c;
};

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

}  // namespace shellfe
