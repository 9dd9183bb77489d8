// Correctly rounded single-precision sine and cosine that do not depend on
// the platform's mathematical library.
//
// The argument x = m * 2^k (m an integer below 2^24) is reduced exactly:
// x * 2/pi modulo 4 comes from m times a 128-bit window of the bits of 2/pi
// in integer arithmetic, so the quadrant is exact and the fraction carries
// about 100 correct bits however large x is. The fraction times pi/2 is
// formed as a double-double r, and sine and cosine of r (|r| <= pi/4) are
// polynomials evaluated in double, with the low word of r as a correction.
// The double result is within about one double ulp of the true value, so
// rounding it once to float gives the correctly rounded float except where
// the true value lies within that distance of a midpoint between two
// floats; the few such arguments among all floats are listed with their
// correct results.
//
// Only integer and double arithmetic in a fixed order (no fused
// multiply-add) is used, so every compiler and CPU gives the same bits.
#include "element/angles.hpp"
#include "frame/canonical_nan.hpp"
#include "frame/expansion.hpp"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace shellfe {
namespace {

using u64 = std::uint64_t;

// The bits of 2/pi from the binary point on, preceded by one word of zeros
// so that windows for arguments below 1 start inside the table.
constexpr u64 kTwoOverPi[] = {
    0x0000000000000000u, 0xA2F9836E4E441529u, 0xFC2757D1F534DDC0u,
    0xDB6295993C439041u, 0xFE5163ABDEBBC561u, 0xB7246E3A424DD2E0u,
};

// The 128 bits of 2/pi with weights 2^-s .. 2^-(s+127); s >= -63.
void window(int s, u64& hi, u64& lo) {
    const int p = s + 63;  // bit position in kTwoOverPi, from the top of word 0
    const int w = p / 64, sh = p % 64;
    if (sh == 0) {
        hi = kTwoOverPi[w];
        lo = kTwoOverPi[w + 1];
    } else {
        hi = (kTwoOverPi[w] << sh) | (kTwoOverPi[w + 1] >> (64 - sh));
        lo = (kTwoOverPi[w + 1] << sh) | (kTwoOverPi[w + 2] >> (64 - sh));
    }
}

// (hi, lo) = m * (whi * 2^64 + wlo) modulo 2^128, for m < 2^24.
void multiply_window(u64 m, u64 whi, u64 wlo, u64& hi, u64& lo) {
    const u64 a = m * (wlo & 0xFFFFFFFFu);  // < 2^56
    const u64 b = m * (wlo >> 32);          // < 2^56
    lo = a + (b << 32);
    const u64 carry = lo < a ? 1u : 0u;
    hi = m * whi + (b >> 32) + carry;
}

// Halves a double for exact products.
constexpr double kSplitter = 134217729.0;  // 2^27 + 1

// pi/2 as a sum of two doubles.
constexpr double kHalfPiHi = 0x1.921fb54442d18p+0;
constexpr double kHalfPiLo = 0x1.1a62633145c07p-54;

// Polynomials of sine and cosine on [-pi/4, pi/4] (relative error below
// 2^-58), evaluated at r = x + y with |y| tiny against |x|.
constexpr double S1 = -1.66666666666666324348e-01, S2 = 8.33333333332248946124e-03,
                 S3 = -1.98412698298579493134e-04, S4 = 2.75573137070700676789e-06,
                 S5 = -2.50507602534068634195e-08, S6 = 1.58969099521155010221e-10;
constexpr double C1 = 4.16666666666666019037e-02, C2 = -1.38888888888741095749e-03,
                 C3 = 2.48015872894767294178e-05, C4 = -2.75573143513906633035e-07,
                 C5 = 2.08757232129817482790e-09, C6 = -1.13596475577881948265e-11;

double sin_kernel(double x, double y) {
    const double z = x * x;
    const double v = z * x;
    const double r = S2 + z * (S3 + z * (S4 + z * (S5 + z * S6)));
    return x - ((z * (0.5 * y - v * r) - y) - v * S1);
}

double cos_kernel(double x, double y) {
    const double z = x * x;
    const double r = z * (C1 + z * (C2 + z * (C3 + z * (C4 + z * (C5 + z * C6)))));
    const double hz = 0.5 * z;
    const double w = 1.0 - hz;
    return w + (((1.0 - w) - hz) + (z * r - x * y));
}

// Arguments whose double result lies so close to a midpoint between two
// floats that rounding it would miss; found by comparing every float with a
// high-precision reference. Bits of |x|, then of sin |x| and cos |x|.
struct Exception {
    std::uint32_t x, s, c;
};
constexpr Exception kExceptions[] = {
    {0x46199998u, 0xBEB1FA5Du, 0xBF70090Bu},  // 9830.398
    {0x5F18B878u, 0x3DAD60F7u, 0x3F7F14BBu},  // 1.1e19
    {0x6115CB11u, 0xBE7CC1E1u, 0x3F78142Fu},  // 1.7e20
};

}  // namespace

SinCos sin_cos(float radians) noexcept {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(radians);
    const std::uint32_t abs_bits = bits & 0x7FFFFFFFu;
    const bool negative = (bits >> 31) != 0;
    if (abs_bits >= 0x7F800000u) {
        // Infinite or NaN angle: the positive quiet NaN for both, whatever
        // the sign or payload of the angle.
        const float nan = std::bit_cast<float>(kAngleNaNBits);
        return {nan, nan};
    }

    double s, c;
    if (abs_bits <= 0x3F490FDBu) {  // |x| <= pi/4 rounded up: no reduction
        const double x = static_cast<double>(std::bit_cast<float>(abs_bits));
        s = sin_kernel(x, 0.0);
        c = cos_kernel(x, 0.0);
    } else {
        const int exponent = static_cast<int>(abs_bits >> 23);  // >= 126 here
        const u64 m = (abs_bits & 0x7FFFFFu) | 0x800000u;
        const int k = exponent - 150;  // |x| = m * 2^k
        u64 whi, wlo, phi, plo;
        window(k - 1, whi, wlo);
        // x * 2/pi modulo 4 = (phi, plo) * 2^-126.
        multiply_window(m, whi, wlo, phi, plo);
        unsigned quadrant = static_cast<unsigned>(phi >> 62);
        // The fraction as a signed 128-bit fixed-point number in [-1/2, 1/2),
        // taking a fraction of 1/2 or more to the next quadrant.
        const u64 ghi = (phi << 2) | (plo >> 62);
        const u64 glo = plo << 2;
        quadrant = (quadrant + static_cast<unsigned>(ghi >> 63)) & 3u;
        const std::int64_t top = static_cast<std::int64_t>(ghi);
        const double top_d = static_cast<double>(top);
        const std::int64_t rest = top - static_cast<std::int64_t>(top_d);  // exact, |rest| <= 2^9
        constexpr double two_m64 = 0x1p-64;
        const double f_hi = top_d * two_m64;
        const double f_lo = (static_cast<double>(rest) + static_cast<double>(glo) * two_m64) * two_m64;
        // r = f * pi/2 as a double-double.
        double p, e;
        two_product(f_hi, kHalfPiHi, kSplitter, p, e);
        const double tail = e + (f_hi * kHalfPiLo + f_lo * kHalfPiHi);
        const double r_hi = p + tail;
        const double r_lo = tail - (r_hi - p);
        const double sr = sin_kernel(r_hi, r_lo);
        const double cr = cos_kernel(r_hi, r_lo);
        switch (quadrant) {
            case 0: s = sr; c = cr; break;
            case 1: s = cr; c = -sr; break;
            case 2: s = -sr; c = -cr; break;
            default: s = -cr; c = sr; break;
        }
    }

    float fs = static_cast<float>(s);
    float fc = static_cast<float>(c);
    for (const Exception& ex : kExceptions) {
        if (ex.x == abs_bits) {
            fs = std::bit_cast<float>(ex.s);
            fc = std::bit_cast<float>(ex.c);
        }
    }
    return {negative ? -fs : fs, fc};
}

namespace {
// pi/180 as a sum of two doubles.
constexpr double kDegreeHi = 0x1.1df46a2529d39p-6;
constexpr double kDegreeLo = 0x1.5c1d8becdd291p-62;
}  // namespace

SinCosOf<double> sin_cos_degrees(double degrees) noexcept {
    if (!(degrees - degrees == 0.0)) {  // infinite or NaN
        const double nan = canonical_nan<double>();
        return {nan, nan};
    }
    // |degrees| modulo 360, then the quadrant and the rest in [0, 45]: fmod
    // is exact, and so are the subtractions (Sterbenz), so the reduction
    // loses nothing and multiples of 90 degrees give exact zeros and ones.
    const bool negative = degrees < 0.0;
    double a = std::fmod(negative ? -degrees : degrees, 360.0);
    unsigned quadrant = a >= 270.0 ? 3u : a >= 180.0 ? 2u : a >= 90.0 ? 1u : 0u;
    a = a - 90.0 * quadrant;
    const bool complement = a > 45.0;  // sin(90 - a) = cos a
    if (complement) a = 90.0 - a;
    // r = a * pi/180 as a double-double.
    double p, e;
    two_product(a, kDegreeHi, kSplitter, p, e);
    const double tail = e + a * kDegreeLo;
    const double r_hi = p + tail;
    const double r_lo = tail - (r_hi - p);
    double sr = sin_kernel(r_hi, r_lo);
    double cr = cos_kernel(r_hi, r_lo);
    if (complement) {
        const double t = sr;
        sr = cr;
        cr = t;
    }
    // Negations written as 0 - v, so that exact zeros stay +0.
    double s, c;
    switch (quadrant) {
        case 0: s = sr; c = cr; break;
        case 1: s = cr; c = 0.0 - sr; break;
        case 2: s = 0.0 - sr; c = 0.0 - cr; break;
        default: s = 0.0 - cr; c = sr; break;
    }
    return {negative ? 0.0 - s : s, c};
}

}  // namespace shellfe
