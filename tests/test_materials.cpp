// Materials and the Jacobian: rotated membrane material (MODIPDLLDOTNET), layered
// plate rigidities (MODPBDLLDOTNET), Cartesian derivatives (JACOB2DLLDOTNET).
#include "fixtures.hpp"

namespace {

Laminate isotropicPlate(std::vector<float> faces, float g10 = 3e4f / 2.3f) {
    const std::array<float, 7> layer = {3e4f, 0.15f, 3e4f, 3e4f / 2.3f, g10, g10, 0};
    return Laminate(std::vector(faces.size() - 1, layer), faces);
}

}  // namespace

TEST(MembraneMaterial, Golden) {
    // Below 0.001 radian ((pi a) / 180 in single precision) the reduced stiffness
    // with exact zeros, Q12 = nu Q22 (not nu E2 / den); from there the lower
    // triangle of (T Q) T^T mirrored, with correctly rounded sine and cosine
    // (C libraries' float sine misses at 7 degrees). DMAT pinned whole.
    const float q11 = 0x1.f58404p+14f, q12 = 0x1.76770ep+12f, q22 = 0x1.0b799cp+14f;
    const float at = 0x1.d55df6p-5f, below = 0x1.d55df4p-5f;  // 0.001f rad, the float below
    ASSERT_EQ((3.1415927f * at) / 180, 0.001f);
    ASSERT_NE(q12, (0.35f * 16000) / (1 - ((0.35f * 0.35f) * 16000) / 30000));
    const Floats d0 = material(ortho(0));
    EXPECT_TRUE(d0(1, 1) == q11 && d0(2, 1) == q12 && d0(2, 2) == q22 && d0(3, 3) == 5000);
    const std::uint64_t unrotated = 0x6302642c7b086f45;
    const std::pair<float, std::uint64_t> cases[] = {
        {0, unrotated}, {0.05f, unrotated}, {-below, unrotated}, {at, 0x0cb17dfa4ff9e0c8},
        {-at, 0x05f23b0982fd94c8}, {7, 0x2c70ba3e073538c5}, {37, 0xb97278c1dbc730a3},
        {123, 0x36b4bbb6d00c502e}};
    for (const auto& [angle, want] : cases) {
        const Floats d = material(ortho(angle));
        EXPECT_DIGEST(d, want) << " " << angle;
    }
}

TEST(LayeredPlate, TwoIdenticalIsotropicLayersTakeTheClosedForm) {
    // D = E t^3 / 12(1 - nu^2), S = 5/6 G t, G = E / 2(1 + nu), grouped as
    // below, whatever the (equal) transverse moduli; in three layers, the
    // layered sum, equal up to rounding. One matrix per call, bending first,
    // only 1 switches on; row and column 0 untouched.
    const float e = 30000, nu = 0.15f, t = 0.18f;
    Laminate two = isotropicPlate({-0.09f, 0, 0.09f}, 9000);
    Laminate three = isotropicPlate({-0.09f, -0.03f, 0.03f, 0.09f});
    const float d = (((e * t) * t) * t) / ((1 - nu * nu) * 12), s = (e * t) / (nu * 2.4f + 2.4f);
    ASSERT_NE(d, (e * (t * t * t)) / ((1 - nu * nu) * 12));
    ASSERT_NE(s, ((e * t) / (2 * (1 + nu))) / 1.2f);
    const float dd[9] = {d, nu * d, 0, nu * d, d, 0, 0, 0, ((1 - nu) * 0.5f) * d};
    const Rigidities b2 = rigidities(two), s2 = rigidities(two, 0, 1);
    const Rigidities b3 = rigidities(three);
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(b2.d(1 + i / 3, 1 + i % 3), dd[i]) << i;
        EXPECT_NEAR(b3.d(1 + i / 3, 1 + i % 3), dd[i], 2e-6 * d) << i;
    }
    EXPECT_TRUE(s2.s(1, 1) == s && s2.s(2, 2) == s && s2.s(2, 1) == 0 && s2.s(1, 2) == 0);
    for (auto [bend, shear, which] : {std::array{1, 1, 1}, {0, 0, 0}, {2, 1, 2}, {0, 2, 0}}) {
        const Rigidities r = rigidities(two, bend, shear);
        EXPECT_EQ(r.d.count(kSentinel), which == 1 ? 7 : 16) << bend << shear;
        EXPECT_EQ(r.s.count(kSentinel), which == 2 ? 5 : 9) << bend << shear;
    }
}

TEST(LayeredPlate, ClosedFormNeedsEveryCondition) {
    // Faces 0, 0.1, 0.3: the closed form takes t = |ZLAY(3) - ZLAY(1)| about
    // its own middle, the layered sum measures from z = 0: four times more.
    // Column 0 is not compared, and -0 == 0. No layers: zeros.
    Laminate base = isotropicPlate({0, 0.1f, 0.3f}), col0 = base, minusZero = base, none({}, {});
    const float closed = rigidities(base).d(1, 1);
    EXPECT_NEAR(closed, 30000 * 0.027 / (12 * (1 - 0.0225)), 1e-6 * closed);
    auto isClosed = [&](Laminate lam) { return rigidities(lam).d(1, 1) == closed; };
    col0.prop(2, 0) = 5, minusZero.prop(1, 17) = minusZero.prop(2, 17) = -0.0f;
    EXPECT_TRUE(isClosed(isotropicPlate({0.3f, 0.1f, 0})) && isClosed(col0) && isClosed(minusZero));
    for (int j = 1; j <= 17; ++j) {  // any column of row 2 differing
        Laminate lam = base;
        lam.prop(2, j) = j == 17 ? 10 : lam.prop(2, j) == 0 ? 1 : 0.99f * lam.prop(2, j);
        EXPECT_FALSE(isClosed(lam)) << j;
    }
    for (auto [col, value] : {std::pair{17, 30.f}, {1, 27000.f}, {10, 1000.f}, {5, kNaN}}) {
        Laminate lam = base;  // turned, E1 != E8, G10 != G11, a NaN where only compared
        lam.prop(1, col) = lam.prop(2, col) = value;
        EXPECT_FALSE(isClosed(lam)) << col;
    }
    EXPECT_FALSE(isClosed(isotropicPlate({0, 0.1f, 0.2f, 0.3f})));
    EXPECT_TRUE(rigidities(none).d.count(0) == 9 && rigidities(none, 0, 1).s.count(0) == 4);
}

TEST(LayeredPlate, RotatedLayersGolden) {
    // Turned layers summed in order, in single precision, bending as the library
    // groups each layer's matrix, shear from G11 / 1.2 on x, G10 / 1.2 on y. One
    // ply: column 8 on x, column 1 on y, coupling E8 nu21 / den (not nu E8 / den).
    Laminate lam({{12000, 0.3f, 3e4f, 5000, 1881, 2050, 29},
                  {9000, 0.25f, 21000, 4000, 2530, 1490, -52},
                  {12000, 0.3f, 3e4f, 5000, 2870, 1930, 7}}, {-0.12f, -0.02f, 0.05f, 0.12f});
    const Rigidities b = rigidities(lam), s = rigidities(lam, 0, 1);
    EXPECT_TRUE(b.d(1, 1) == 0x1.581bcp+5f && b.d(3, 1) == 0x1.1c96acp+0f) << b.d(1, 1);
    EXPECT_DIGEST(b.d, 0xc907149e881d3cf2);
    EXPECT_TRUE(s.s(1, 1) == 0x1.95825ap+8f && s.s(2, 2) == 0x1.b492f6p+8f) << s.s(1, 1);
    EXPECT_DIGEST(s.s, 0x8f8a7e7c1b372a31);
    Laminate ply({{12000, 0.3f, 3e4f, 5000, 3000, 2000, 0}}, {-0.1f, 0.15f});
    const Floats d0 = rigidities(ply).d;
    EXPECT_NEAR(d0(1, 1) / d0(2, 2), 2.5, 1e-6);
    EXPECT_NEAR(d0(1, 2) / d0(2, 2), 0.3 * 2.5 * 2.5, 1e-6);
}

TEST(Jacobian, GoldenAndTheNinthNode) {
    // Float products summed in double, the determinant rounded before the
    // inverse, each derivative rounded after each addition. A tenth node counts
    // as the ninth, which gets derivatives but takes no part in the geometry.
    Jacobian j, ten, moved, reshaped, eight;
    ten.nenod = 10, eight.nenod = 8, moved.elcod(9, 1) = 50, reshaped.deriv(9, 2) += 0.5f;
    EXPECT_EQ(j.run().detj, 0x1.58d89p-1f) << std::hexfloat << j.detj;
    EXPECT_DIGEST(j.cartd, 0x42b2cebb722cf0b0);
    for (Jacobian* k : {&ten.run(), &moved.run(), &reshaped.run(), &eight.run()})
        EXPECT_EQ(k->detj, j.detj);
    EXPECT_TRUE(digest(ten.cartd) == digest(j.cartd) && digest(moved.cartd) == digest(j.cartd));
    for (int i = 10; i < 30; ++i) EXPECT_EQ(reshaped.cartd.v[i] == j.cartd.v[i], i % 10 != 9) << i;
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(eight.cartd.v[i], i % 10 == 9 ? kSentinel : j.cartd.v[i]) << i;
}
