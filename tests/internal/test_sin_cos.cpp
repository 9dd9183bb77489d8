// Sine and cosine of material angles: the correctly rounded float of the
// float angle, from a high-precision reference, at angles where the C
// libraries disagree or round wrongly, where the argument reduction is hard,
// and for infinite and NaN angles. The whole range was checked against the
// reference once; these keep the awkward cases pinned.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "element/angles.hpp"
#include "shellfe.h"

namespace {

using shellfe::degrees_to_radians;
using shellfe::sin_cos;

std::uint32_t bits(float f) { return std::bit_cast<std::uint32_t>(f); }

struct Case {
    float radians, s, c;
};

void expect_case(const Case& k) {
    const auto [s, c] = sin_cos(k.radians);
    EXPECT_EQ(bits(s), bits(k.s)) << std::hexfloat << k.radians;
    EXPECT_EQ(bits(c), bits(k.c)) << std::hexfloat << k.radians;
    // Sine is odd and cosine even, to the bit.
    const auto [sn, cn] = sin_cos(-k.radians);
    EXPECT_EQ(bits(sn), bits(-k.s)) << std::hexfloat << -k.radians;
    EXPECT_EQ(bits(cn), bits(k.c)) << std::hexfloat << -k.radians;
}

}  // namespace

TEST(SinCos, DegreeAnglesAreCorrectlyRounded) {
    // 7 degrees: the C libraries' float sine misses; 90 and 180: the float
    // angle is not the exact right angle; 1.83e9 degrees (bits 0x4EDA938C):
    // glibc and the Windows runtime's double functions disagree.
    const std::pair<float, Case> cases[] = {
        {7.0f, {0, 0x1.f32d46p-4f, 0x1.fc2f02p-1f}},
        {30.0f, {0, 0x1p-1f, 0x1.bb67aep-1f}},
        {45.0f, {0, 0x1.6a09e6p-1f, 0x1.6a09e6p-1f}},
        {90.0f, {0, 0x1p+0f, -0x1.777a5cp-25f}},
        {180.0f, {0, -0x1.777a5cp-24f, -0x1p+0f}},
        {1.0e5f, {0, -0x1.f83696p-1f, 0x1.63d20ap-3f}},
        {std::bit_cast<float>(0x4EDA938Cu), {0, -0x1.2b0188p-6f, -0x1.ffea2cp-1f}},
    };
    for (auto [degrees, k] : cases) {
        k.radians = degrees_to_radians(degrees);
        expect_case(k);
    }
}

TEST(SinCos, HardArgumentsAreCorrectlyRounded) {
    // The three floats whose double evaluation lies too near a midpoint
    // between floats; pi/4 rounded up (the last angle without reduction) and
    // the float above it; 2^24; the largest float; the smallest subnormal.
    const Case cases[] = {
        {0x1.33333p+13f, -0x1.63f4bap-2f, -0x1.e01216p-1f},
        {0x1.3170fp+63f, 0x1.5ac1eep-4f, 0x1.fe2976p-1f},
        {0x1.2b9622p+67f, -0x1.f983c2p-3f, 0x1.f0285ep-1f},
        {0x1.921fb6p-1f, 0x1.6a09e6p-1f, 0x1.6a09e6p-1f},
        {0x1.921fb8p-1f, 0x1.6a09e8p-1f, 0x1.6a09e4p-1f},
        {0x1p+24f, -0x1.8f22f8p-1f, 0x1.40ad68p-1f},
        {0x1.fffffep+127f, -0x1.0b3366p-1f, 0x1.b4bf2cp-1f},
        {0x1p-149f, 0x1p-149f, 0x1p+0f},
    };
    for (const Case& k : cases) expect_case(k);
    const auto [s0, c0] = sin_cos(-0.0f);
    EXPECT_EQ(bits(s0), 0x80000000u);
    EXPECT_EQ(bits(c0), bits(1.0f));
}

TEST(SinCos, InfiniteAndNanAnglesGiveThePositiveQuietNan) {
    // Whatever the sign or payload; degrees beyond 1.08e38 become an
    // infinite radian value.
    const float inf = std::numeric_limits<float>::infinity();
    for (std::uint32_t b : {bits(inf), bits(-inf), 0x7FC00000u, 0xFFC00000u, 0x7F800001u,
                            0xFFFFFFFFu, 0x7FA12345u, bits(degrees_to_radians(3.0e38f))}) {
        const auto [s, c] = sin_cos(std::bit_cast<float>(b));
        EXPECT_EQ(bits(s), 0x7FC00000u) << std::hex << b;
        EXPECT_EQ(bits(c), 0x7FC00000u) << std::hex << b;
    }
}

TEST(SinCos, HugeAngleMaterialMatrixIsTheCorrectlyRoundedOne) {
    // E1 = 2e5, nu = 0.3, E2 = 7e4, G = 3e4 at 1.83e9 degrees: DMAT(3,1)
    // from the correctly rounded sine and cosine (the Windows runtime's x87
    // functions gave 0x450E4E75).
    float prop[18] = {};
    prop[1] = 2e5f, prop[2] = 0.3f, prop[8] = 7e4f, prop[9] = 3e4f;
    prop[17] = std::bit_cast<float>(0x4EDA938Cu);
    float dmat[16] = {};
    const std::int32_t imat = 0, nmat = 0;
    MODIPDLLDOTNET(dmat, prop, &imat, &nmat);
    EXPECT_EQ(bits(dmat[3 + 1 * 4]), 0x450E4E74u);
    EXPECT_EQ(bits(dmat[1 + 3 * 4]), 0x450E4E74u);
}

// The double route reduces angles exactly in degrees: right angles give
// exact zeros and ones, whatever their multiple of 360, sine is odd and
// cosine even to the bit, and every angle is within one ulp of the true
// value (long double reference, reduced in degrees as well, so that the
// reference itself is exact enough).
TEST(SinCosDegrees, RightAnglesAreExactAndOtherAnglesWithinOneUlp) {
    using shellfe::sin_cos_degrees;
    const struct {
        double deg, s, c;
    } exact[] = {{0, 0, 1},    {90, 1, 0},   {180, 0, -1}, {270, -1, 0},
                 {360, 0, 1},  {450, 1, 0},  {-90, -1, 0}, {360 * 0x1p40 + 90, 1, 0}};
    for (const auto& k : exact) {
        const auto [s, c] = sin_cos_degrees(k.deg);
        EXPECT_EQ(s, k.s) << k.deg;
        EXPECT_EQ(c, k.c) << k.deg;
        EXPECT_FALSE(std::signbit(s) && s == 0.0) << "zero sines are +0: " << k.deg;
        EXPECT_FALSE(std::signbit(c) && c == 0.0) << "zero cosines are +0: " << k.deg;
    }
    const auto [s30, c30] = sin_cos_degrees(30.0);
    EXPECT_NEAR(s30, 0.5, 0x1p-53);
    const auto [s45, c45] = sin_cos_degrees(45.0);
    EXPECT_EQ(s45, c45);

    const long double pi = 3.141592653589793238462643383279502884L;
    for (int i = -4000; i <= 4000; ++i) {
        const double deg = i * 0.0917 + 1e-3 * (i % 7);
        const auto [s, c] = sin_cos_degrees(deg);
        const auto [sn, cn] = sin_cos_degrees(-deg);
        EXPECT_EQ(sn, 0.0 - s);
        EXPECT_EQ(cn, c);
        long double d = std::fmod(static_cast<long double>(deg), 360.0L);
        if (d > 180.0L) d -= 360.0L;  // exact; keeps the reference accurate near 360
        if (d < -180.0L) d += 360.0L;
        const long double r = d * pi / 180.0L;
        const double ulp_s = std::nextafter(std::fabs(s), 2.0) - std::fabs(s);
        const double ulp_c = std::nextafter(std::fabs(c), 2.0) - std::fabs(c);
        EXPECT_LE(std::fabs(static_cast<long double>(s) - std::sin(r)), ulp_s) << deg;
        EXPECT_LE(std::fabs(static_cast<long double>(c) - std::cos(r)), ulp_c) << deg;
    }
    for (double bad : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::quiet_NaN()}) {
        const auto [s, c] = sin_cos_degrees(bad);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(s), 0x7FF8000000000000u);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(c), 0x7FF8000000000000u);
    }
}
