// Layered plate bending and transverse shear rigidities (MODPBDLLDOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// DBEND (0:3, 0:3) and DSHEAR (0:2, 0:2), sentinel-filled, after one call.
struct Rigidities {
    Floats d{3, 3, kSentinel}, s{2, 2, kSentinel};
};
Rigidities rigidities(const Laminate& lam, int32_t ibend = 1, int32_t ishear = 0) {
    Rigidities r;
    MODPBDLLDOTNET(r.d.ptr(), r.s.ptr(), &ibend, &ishear, lam.prop.ptr(), lam.zlay.ptr(), &lam.nlay);
    return r;
}
// Entries (1..n, 1..n) exactly `want`, row by row; row and column 0 untouched.
void expectMatrix(const Floats& m, const std::vector<float>& want) {
    const int n = int(m.rows) - 1;
    for (int i = 0; i <= n; ++i)
        for (int j = 0; j <= n; ++j)
            EXPECT_EQ(m(i, j), i && j ? want[(i - 1) * n + j - 1] : kSentinel) << i << "," << j;
}

}  // namespace

TEST(LayeredPlate, TwoIdenticalIsotropicLayersTakeTheClosedForm) {
    // D = E t^3 / 12(1 - nu^2) and S = 5/6 G t with G = E / 2(1 + nu), as
    // grouped here (the other groupings round apart for these data), whatever
    // the (equal) transverse moduli say. Bending wins when both are asked for.
    const float e = 30000.0f, nu = 0.15f;
    Laminate two = isotropicPlate(e, nu, 0.18f, 2);
    for (int l = 1; l <= 2; ++l) two.prop(l, 10) = two.prop(l, 11) = 0.3f * e;
    const float t = std::fabs(two.zlay(3) - two.zlay(1));
    const float d = (((e * t) * t) * t) / ((1.0f - nu * nu) * 12.0f), s = (e * t) / (nu * 2.4f + 2.4f);
    ASSERT_NE(d, (e * (t * t * t)) / ((1.0f - nu * nu) * 12.0f));
    ASSERT_NE(s, float(double(e) * t / (double(nu) * 2.4 + 2.4)));
    const Rigidities bend = rigidities(two, 1, 1), shear = rigidities(two, 0, 1);
    expectMatrix(bend.d, {d, nu * d, 0, nu * d, d, 0, 0, 0, ((1.0f - nu) * 0.5f) * d});
    expectMatrix(shear.s, {s, 0, 0, s});
    EXPECT_TRUE(all_bits(bend.s, kSentinel) && all_bits(shear.d, kSentinel));
    // Three equal layers take the layered sum, which agrees within rounding.
    const Laminate three = isotropicPlate(e, nu, 0.18f, 3);
    const Rigidities bend3 = rigidities(three), shear3 = rigidities(three, 0, 1);
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j) {
            EXPECT_NEAR(bend3.d(i, j), bend.d(i, j), 2e-6 * d) << i << j;
            if (i < 3 && j < 3) {
                EXPECT_NEAR(shear3.s(i, j), shear.s(i, j), 2e-6 * s) << i << j;
            }
        }
}

TEST(LayeredPlate, ClosedFormNeedsEveryCondition) {
    // Faces 0, 0.1, 0.3: the closed form takes t = 0.3 about its own middle,
    // the layered sum measures from z = 0 and comes out four times stiffer.
    const float e = 30000.0f, nu = 0.2f;
    const double closed = e * 0.027 / (12 * (1 - double(nu) * nu));
    const Layer iso = isotropicLayer(e, nu);
    const Laminate base({iso, iso}, {0.0f, 0.1f, 0.3f});
    auto isClosed = [&](const Laminate& lam) {
        const float d = rigidities(lam).d(1, 1);
        EXPECT_TRUE(std::abs(d - closed) < 1e-6 * closed || d > 3 * closed) << d;
        return std::abs(d - closed) < 1e-6 * closed;
    };
    EXPECT_TRUE(isClosed(base));
    EXPECT_TRUE(isClosed(Laminate({iso, iso}, {0.3f, 0.1f, 0.0f})));  // |ZLAY(3) - ZLAY(1)|
    Laminate col0 = base, negZero = base;
    col0.prop(2, 0) = 5.0f;                             // column 0 is not compared
    negZero.prop(1, 17) = negZero.prop(2, 17) = -0.0f;  // -0.0 == 0.0
    EXPECT_TRUE(isClosed(col0) && isClosed(negZero));
    for (int j = 1; j <= 17; ++j) {
        Laminate lam = base;
        lam.prop(2, j) += j == 17 ? 10.0f : lam.prop(2, j) == 0 ? 1.0f : 0.01f * lam.prop(2, j);
        EXPECT_FALSE(isClosed(lam)) << "column " << j;
    }
    Laminate turned = base, e1e8 = base, g10g11 = base, nan = base;
    for (int l = 1; l <= 2; ++l) {
        turned.prop(l, 17) = 30.0f;
        e1e8.prop(l, 1) = 0.9f * e;
        g10g11.prop(l, 10) = 1000.0f;
        nan.prop(l, 5) = kNaN;  // compared, never used
    }
    const Laminate threeLayers({iso, iso, iso}, {0.0f, 0.1f, 0.2f, 0.3f});
    for (const Laminate& lam : {turned, e1e8, g10g11, nan, threeLayers}) EXPECT_FALSE(isClosed(lam));
}

TEST(LayeredPlate, UnrotatedLayersInSinglePrecision) {
    // One orthotropic layer between asymmetric faces: column 8 on x, column 1
    // on y, and the coupling deliberately E8 nu21 / den, not nu E8 / den.
    const float zb = -0.1f, zt = 0.15f, e1 = kPly.e1, e8 = kPly.e8, nu = kPly.nu;
    const float z3 = zt * zt * zt - zb * zb * zb, nu21 = (nu * e8) / e1, den = 1.0f - nu * nu21;
    const float dxy = (z3 * ((e8 * nu21) / den)) / 3.0f;
    expectMatrix(rigidities(Laminate({kPly}, {zb, zt})).d,
                 {(z3 * (e8 / den)) / 3.0f, dxy, 0, dxy, (z3 * (e1 / den)) / 3.0f, 0, 0, 0,
                  (z3 * kPly.g) / 3.0f});
    // Shear: G11/1.2 on x, G10/1.2 on y, layers added bottom to top. (These
    // moduli make /1.2 and *(5/6), and the two layer orders, round apart.)
    const Laminate three({{1, 0, 1, 1, 1700.0f, 1700.0f, 0},
                          {1, 0, 1, 1, 1565.0f, 2148.0f, 0},
                          {1, 0, 1, 1, 1881.0f, 1881.0f, 0}},
                         {-0.13f, -0.04f, 0.07f, 0.11f});
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
    expectMatrix(rigidities(three, 0, 1).s, {want1, 0, 0, want2});
}

TEST(LayeredPlate, RotatedLayersSumTheirTransformedStiffness) {
    const Laminate lam({{12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 30.0f},
                        {9000.0f, 0.25f, 21000.0f, 4000.0f, 2500.0f, 1500.0f, -45.0f},
                        {12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 90.0f}},
                       {-0.12f, -0.02f, 0.05f, 0.12f});
    const Rigidities c = rigidities(lam), s = rigidities(lam, 0, 1);
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
            EXPECT_TRUE(same_bits(c.d(i, j), c.d(j, i)));
            if (i < 3 && j < 3) {
                EXPECT_NEAR(s.s(i, j), sr[std::min(i, j) - 1][std::max(i, j) - 1], 2e-6 * sr[0][0])
                    << i << j;
            }
        }
    EXPECT_TRUE(same_bits(s.s(2, 1), s.s(1, 2)));
    // At 90 degrees the moduli swap: a single such layer, against a zero-angle one.
    Layer quarter = kPly;
    quarter.theta = 90.0f;
    const Floats zero = rigidities(Laminate({kPly}, {-0.1f, 0.1f})).d;
    const Floats ninety = rigidities(Laminate({quarter}, {-0.1f, 0.1f})).d;
    EXPECT_NEAR(ninety(1, 1), zero(2, 2), 1e-6f * zero(1, 1));
    EXPECT_NEAR(ninety(2, 2), zero(1, 1), 1e-6f * zero(1, 1));
}

TEST(LayeredPlate, SwitchesAndEmptyLaminate) {
    const Laminate lam({kPly, kPly}, {-0.1f, 0.0f, 0.05f});
    // Which matrix is written (1 bending, 2 shear): bending wins, only 1 switches on.
    for (auto [bend, shear, written] : {std::tuple{1, 1, 1}, {0, 0, 0}, {2, 1, 2}, {0, 2, 0}}) {
        const Rigidities c = rigidities(lam, bend, shear);
        EXPECT_EQ(all_bits(c.d, kSentinel), written != 1) << bend << shear;
        EXPECT_EQ(all_bits(c.s, kSentinel), written != 2) << bend << shear;
    }
    // No layers on the layered path: the written entries are zero.
    const Laminate none({}, {});
    expectMatrix(rigidities(none).d, std::vector<float>(9, 0.0f));
    expectMatrix(rigidities(none, 0, 1).s, std::vector<float>(4, 0.0f));
}
