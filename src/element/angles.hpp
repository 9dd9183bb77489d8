// Material angles: entered in degrees, turned to radians in single precision
// with the single-precision value of pi, then sine and cosine.
#pragma once

#include <cmath>

namespace shellfe {

inline constexpr float kPi = 3.1415927f;

inline float degrees_to_radians(float degrees) { return (degrees * kPi) / 180.0f; }

struct SinCos {
    float s;
    float c;
};

// The single-precision sine and cosine of a single-precision angle, correctly
// rounded: evaluated in double and rounded once. The C libraries' own
// single-precision sin and cos differ from each other in the last bit for a
// few percent of angles (7 degrees among them), which would make material
// matrices differ between the Linux library and the Windows DLL.
inline SinCos sin_cos(float radians) {
    const double r = static_cast<double>(radians);
    return {static_cast<float>(std::sin(r)), static_cast<float>(std::cos(r))};
}

}  // namespace shellfe
