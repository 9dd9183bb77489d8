// Layered plate bending and transverse shear rigidities (MODPBDLLDOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// One call on sentinel-filled DBEND (0:3, 0:3) and DSHEAR (0:2, 0:2).
struct RigidityCall {
    Laminate lam;
    int32_t ibend, ishear;
    Floats dbend{3, 3, kSentinel}, dshear{2, 2, kSentinel};
    RigidityCall(Laminate l, int32_t bend = 1, int32_t shear = 0)
        : lam(std::move(l)), ibend(bend), ishear(shear) {
        MODPBDLLDOTNET(dbend.data(), dshear.data(), &ibend, &ishear, lam.prop.data(), lam.zlay.data(),
                       &lam.nlay);
    }
    float d(int i, int j) const { return dbend(i, j); }
    float s(int i, int j) const { return dshear(i, j); }
};

bool untouched(const Floats& a) { return a.sameBits(Floats{a.L, a.M, kSentinel}); }
bool borderUntouched(const Floats& a) {
    for (int k = 0; k <= a.L; ++k)
        if (a(0, k) != kSentinel || a(k, 0) != kSentinel) return false;
    return true;
}

// Orthotropic layer, column 1 = 12000 and column 8 = 30000.
const Layer kPly{12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 0.0f};

}  // namespace

TEST(LayeredPlate, TwoIdenticalLayersTakeTheClosedForm) {
    const float e = 30000.0f, nu = 0.15f;
    RigidityCall bend(isotropicPlate(e, nu, 0.18f, 2), 1, 1);  // both switches: bending only
    const float t = std::fabs(bend.lam.zlay(3) - bend.lam.zlay(1));
    const float d = (((e * t) * t) * t) / ((1.0f - nu * nu) * 12.0f);
    ASSERT_NE(d, (e * (t * t * t)) / ((1.0f - nu * nu) * 12.0f));  // the grouping is visible here
    EXPECT_EQ(bend.d(1, 1), d);
    EXPECT_EQ(bend.d(2, 2), d);
    EXPECT_EQ(bend.d(2, 1), nu * d);
    EXPECT_EQ(bend.d(1, 2), nu * d);
    EXPECT_EQ(bend.d(3, 3), ((1.0f - nu) * 0.5f) * d);
    for (auto [i, j] : {std::pair{3, 1}, {3, 2}, {1, 3}, {2, 3}}) EXPECT_EQ(bend.d(i, j), 0.0f);
    EXPECT_TRUE(borderUntouched(bend.dbend));
    EXPECT_TRUE(untouched(bend.dshear));
    // Shear from E and nu alone, 5/6 written as a division by 1.2, whatever
    // the (equal) transverse moduli say.
    Laminate lam = isotropicPlate(e, nu, 0.18f, 2);
    for (int l = 1; l <= 2; ++l) lam.prop(l, 10) = lam.prop(l, 11) = 0.3f * e;
    RigidityCall shear(lam, 0, 1);
    const float s = (e * t) / (nu * 2.4f + 2.4f);
    ASSERT_NE(s, float(double(e) * t / (double(nu) * 2.4 + 2.4)));
    EXPECT_EQ(shear.s(1, 1), s);
    EXPECT_EQ(shear.s(2, 2), s);
    EXPECT_EQ(shear.s(2, 1), 0.0f);
    EXPECT_EQ(shear.s(1, 2), 0.0f);
    EXPECT_TRUE(borderUntouched(shear.dshear));
    EXPECT_TRUE(untouched(shear.dbend));
}

TEST(LayeredPlate, ClosedFormNeedsEveryCondition) {
    // Faces 0, 0.1, 0.3: the closed form takes t = 0.3 about its own middle,
    // the layered sum measures from z = 0 and comes out four times stiffer.
    const float e = 30000.0f, nu = 0.2f;
    const double closed = e * 0.027 / (12 * (1 - double(nu) * nu));
    const Layer iso = isotropicLayer(e, nu);
    auto base = [&] { return Laminate({iso, iso}, {0.0f, 0.1f, 0.3f}); };
    auto isClosed = [&](const Laminate& lam) {
        const float d = RigidityCall(lam).d(1, 1);
        EXPECT_TRUE(std::abs(d - closed) < 1e-6 * closed || d > 3 * closed) << d;
        return std::abs(d - closed) < 1e-6 * closed;
    };
    EXPECT_TRUE(isClosed(base()));
    EXPECT_TRUE(isClosed(Laminate({iso, iso}, {0.3f, 0.1f, 0.0f})));  // |ZLAY(3) - ZLAY(1)|
    Laminate col0 = base(), negZero = base();
    col0.prop(2, 0) = 5.0f;                                    // column 0 is not compared
    negZero.prop(1, 17) = negZero.prop(2, 17) = -0.0f;         // -0.0 == 0.0
    EXPECT_TRUE(isClosed(col0));
    EXPECT_TRUE(isClosed(negZero));
    for (int j = 1; j <= 17; ++j) {
        Laminate lam = base();
        lam.prop(2, j) += j == 17 ? 10.0f : lam.prop(2, j) == 0 ? 1.0f : 0.01f * lam.prop(2, j);
        EXPECT_FALSE(isClosed(lam)) << "column " << j;
    }
    Laminate turned = base(), e1e8 = base(), g10g11 = base(), nan = base();
    for (int l = 1; l <= 2; ++l) {
        turned.prop(l, 17) = 30.0f;
        e1e8.prop(l, 1) = 0.9f * e;
        g10g11.prop(l, 10) = 1000.0f;
        nan.prop(l, 5) = kNaN;  // compared, never used
    }
    const Laminate threeLayers({iso, iso, iso}, {0.0f, 0.1f, 0.2f, 0.3f});
    for (const Laminate& lam : {turned, e1e8, g10g11, nan, threeLayers}) EXPECT_FALSE(isClosed(lam));
}

TEST(LayeredPlate, ThreeEqualIsotropicLayersMatchTheClosedForm) {
    const float e = 30000.0f, nu = 0.15f, t = 0.18f;
    RigidityCall three(isotropicPlate(e, nu, t, 3)), two(isotropicPlate(e, nu, t, 2));
    const double d = double(e) * t * t * t / (12 * (1 - double(nu) * nu));
    EXPECT_NEAR(three.d(1, 1), d, 2e-6 * d);
    EXPECT_NEAR(three.d(2, 2), d, 2e-6 * d);
    EXPECT_NEAR(three.d(1, 2), nu * d, 2e-6 * d);
    EXPECT_NEAR(three.d(3, 3), (1 - nu) / 2 * d, 2e-6 * d);
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j) EXPECT_NEAR(three.d(i, j), two.d(i, j), 2e-6 * d);
    EXPECT_EQ(three.d(3, 1), 0.0f);
    EXPECT_EQ(three.d(2, 3), 0.0f);
    RigidityCall shear3(isotropicPlate(e, nu, t, 3), 0, 1), shear2(isotropicPlate(e, nu, t, 2), 0, 1);
    EXPECT_NEAR(shear3.s(1, 1), shear2.s(1, 1), 2e-6 * shear2.s(1, 1));
    EXPECT_NEAR(shear3.s(2, 2), shear2.s(2, 2), 2e-6 * shear2.s(1, 1));
    EXPECT_EQ(shear3.s(2, 1), 0.0f);
}

TEST(LayeredPlate, UnrotatedLayersInSinglePrecision) {
    // One orthotropic layer between asymmetric faces: column 8 on x, column 1
    // on y, and the coupling deliberately E8 nu21 / den, not nu E8 / den.
    RigidityCall c(Laminate({kPly}, {-0.1f, 0.15f}));
    const float zb = -0.1f, zt = 0.15f, e1 = kPly.e1, e8 = kPly.e8, nu = kPly.nu;
    const float z3 = zt * zt * zt - zb * zb * zb, nu21 = (nu * e8) / e1, den = 1.0f - nu * nu21;
    EXPECT_EQ(c.d(1, 1), (z3 * (e8 / den)) / 3.0f);
    EXPECT_EQ(c.d(2, 2), (z3 * (e1 / den)) / 3.0f);
    EXPECT_EQ(c.d(2, 1), (z3 * ((e8 * nu21) / den)) / 3.0f);
    EXPECT_EQ(c.d(1, 2), c.d(2, 1));
    EXPECT_EQ(c.d(3, 3), (z3 * kPly.g) / 3.0f);
    for (auto [i, j] : {std::pair{3, 1}, {3, 2}, {1, 3}, {2, 3}}) EXPECT_EQ(c.d(i, j), 0.0f);
    // Shear: G11/1.2 on x, G10/1.2 on y, layers added bottom to top. (These
    // moduli make /1.2 and *(5/6), and the two layer orders, round apart.)
    Laminate three({{1, 0, 1, 1, 1700.0f, 1700.0f, 0}, {1, 0, 1, 1, 1565.0f, 2148.0f, 0},
                    {1, 0, 1, 1, 1881.0f, 1881.0f, 0}},
                   {-0.13f, -0.04f, 0.07f, 0.11f});
    RigidityCall s(three, 0, 1);
    float want1 = 0, want2 = 0, reversed1 = 0, sixths1 = 0, sixths2 = 0;
    for (int l = 1, r = 3; l <= 3; ++l, --r) {
        const float h = three.zlay(l + 1) - three.zlay(l);
        want1 += h * (three.prop(l, 11) / 1.2f);
        want2 += h * (three.prop(l, 10) / 1.2f);
        sixths1 += h * (three.prop(l, 11) * (5.0f / 6.0f));
        sixths2 += h * (three.prop(l, 10) * (5.0f / 6.0f));
        reversed1 += (three.zlay(r + 1) - three.zlay(r)) * (three.prop(r, 11) / 1.2f);
    }
    ASSERT_TRUE(want1 != reversed1 && want1 != sixths1 && want2 != sixths2);
    EXPECT_EQ(s.s(1, 1), want1);
    EXPECT_EQ(s.s(2, 2), want2);
    EXPECT_EQ(s.s(2, 1), 0.0f);
    EXPECT_EQ(s.s(1, 2), 0.0f);
}

TEST(LayeredPlate, RotatedLayersSumTheirTransformedStiffness) {
    Laminate lam({{12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 30.0f},
                  {9000.0f, 0.25f, 21000.0f, 4000.0f, 2500.0f, 1500.0f, -45.0f},
                  {12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 90.0f}},
                 {-0.12f, -0.02f, 0.05f, 0.12f});
    RigidityCall c(lam), s(lam, 0, 1);
    // Reference in double: bending sum of (zt^3 - zb^3)/3 Qbar with column 8
    // on the material axis; shear sum of (zt - zb) S, S from G11/1.2, G10/1.2.
    const double kRad = 3.14159265358979323846 / 180;
    double d[3][3] = {}, sr[2][2] = {};
    for (int l = 1; l <= 3; ++l) {
        const double e1 = lam.prop(l, 1), nu = lam.prop(l, 2), e8 = lam.prop(l, 8), th = lam.prop(l, 17);
        const double nu21 = nu * e8 / e1, den = 1 - nu * nu21, zb = lam.zlay(l), zt = lam.zlay(l + 1);
        const Mat3 q = rotatedStiffness(e8 / den, e1 / den, e8 * nu21 / den, lam.prop(l, 9), th);
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) d[i][j] += (zt * zt * zt - zb * zb * zb) / 3 * q.a[i][j];
        const double co = std::cos(th * kRad), si = std::sin(th * kRad);
        const double g10 = lam.prop(l, 10) / 1.2, g11 = lam.prop(l, 11) / 1.2;
        sr[0][0] += (zt - zb) * (co * co * g11 + si * si * g10);
        sr[1][1] += (zt - zb) * (co * co * g10 + si * si * g11);
        sr[0][1] += (zt - zb) * (g10 - g11) * co * si;
    }
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j) {
            EXPECT_NEAR(c.d(i, j), d[i - 1][j - 1], 2e-6 * d[0][0]) << i << "," << j;
            EXPECT_EQ(bits(c.d(i, j)), bits(c.d(j, i)));
        }
    for (int i = 1; i <= 2; ++i)
        for (int j = 1; j <= 2; ++j)
            EXPECT_NEAR(s.s(i, j), sr[std::min(i, j) - 1][std::max(i, j) - 1], 2e-6 * sr[0][0]);
    // At 90 degrees the moduli swap: a single such layer, against a zero-angle one.
    Layer turned = kPly;
    turned.theta = 90.0f;
    RigidityCall zero(Laminate({kPly}, {-0.1f, 0.1f})), ninety(Laminate({turned}, {-0.1f, 0.1f}));
    EXPECT_NEAR(ninety.d(1, 1), zero.d(2, 2), 1e-6f * zero.d(1, 1));
    EXPECT_NEAR(ninety.d(2, 2), zero.d(1, 1), 1e-6f * zero.d(1, 1));
    EXPECT_EQ(bits(s.s(2, 1)), bits(s.s(1, 2)));
}

TEST(LayeredPlate, SwitchesAndEmptyLaminate) {
    const Laminate lam({kPly, kPly}, {-0.1f, 0.0f, 0.05f});
    for (auto [bend, shear, wantBend, wantShear] :
         {std::tuple{1, 1, true, false}, {0, 0, false, false}, {2, 1, false, true}, {0, 2, false, false}}) {
        RigidityCall c(lam, bend, shear);
        EXPECT_EQ(!untouched(c.dbend), wantBend) << bend << shear;
        EXPECT_EQ(!untouched(c.dshear), wantShear) << bend << shear;
    }
    // No layers on the layered path: the written entries are zero.
    RigidityCall none(Laminate({}, {})), noneShear(Laminate({}, {}), 0, 1);
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j) EXPECT_EQ(none.d(i, j), 0.0f);
    EXPECT_TRUE(borderUntouched(none.dbend));
    EXPECT_TRUE(noneShear.s(1, 1) == 0.0f && noneShear.s(2, 1) == 0.0f && noneShear.s(2, 2) == 0.0f);
}
