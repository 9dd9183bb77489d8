// Rotated orthotropic plane-stress matrix (MODIPDLLDOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// Material in row IMAT = 2 of PROP (0:3, 0:17); DMAT (0:3, 0:3) sentinel-filled.
struct MaterialCall {
    int32_t imat = 2, nmat = 3;
    Floats prop, dmat{3, 3, kSentinel};
    explicit MaterialCall(const Material& m) : prop(materialTable(2, m)) {
        MODIPDLLDOTNET(dmat.data(), prop.data(), &imat, &nmat);
    }
    float operator()(int i, int j) const { return dmat(i, j); }
    void expectBorderUntouched() const {
        for (int k = 0; k <= 3; ++k) EXPECT_TRUE(dmat(0, k) == kSentinel && dmat(k, 0) == kSentinel);
    }
};

Material turned(Material m, float theta) {
    m.theta = theta;
    return m;
}

// (pi * a) / 180 in single precision is exactly 0.001f for kAtCut and the
// float just below it for kBelowCut; in double, kAtCut would fall below.
const float kAtCut = 0x1.d55df6p-5f;
const float kBelowCut = 0x1.d55df4p-5f;

}  // namespace

TEST(MembraneMaterial, SmallAnglesGiveTheReducedStiffnessWithExactZeros) {
    const Material m = kOrtho;
    const float den = 1.0f - ((m.nu * m.nu) * m.e2) / m.e1;
    const float q22 = m.e2 / den, q11 = m.e1 / den, q12 = m.nu * q22;
    ASSERT_NE(q12, (m.nu * m.e2) / den);  // the grouping of Q12 is visible
    for (float theta : {0.0f, 0.05f, -0.05f, kBelowCut, -kBelowCut}) {
        MaterialCall c(turned(m, theta));
        EXPECT_EQ(c(1, 1), q11);
        EXPECT_EQ(c(2, 2), q22);
        EXPECT_EQ(c(2, 1), q12);
        EXPECT_EQ(c(1, 2), q12);
        EXPECT_EQ(c(3, 3), m.g);
        for (auto [i, j] : {std::pair{3, 1}, {1, 3}, {3, 2}, {2, 3}}) EXPECT_EQ(bits(c(i, j)), 0u);
        c.expectBorderUntouched();
        EXPECT_TRUE(c.prop.sameBits(materialTable(2, turned(m, theta))));  // PROP only read
    }
}

TEST(MembraneMaterial, RotationStartsAtOneThousandthRadianInSinglePrecision) {
    ASSERT_EQ((3.1415927f * kAtCut) / 180.0f, 0.001f);
    ASSERT_EQ((3.1415927f * kBelowCut) / 180.0f, std::nextafter(0.001f, 0.0f));
    for (float theta : {kAtCut, -kAtCut}) {
        MaterialCall c(turned(kOrtho, theta));
        EXPECT_NE(c(3, 1), 0.0f);
        EXPECT_EQ(c(3, 1) < 0, theta < 0);
        const Single3 ref = singlePrecisionMaterial(turned(kOrtho, theta), false);
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) EXPECT_EQ(c(i, j), ref.d[i][j]) << i << "," << j;
    }
}

TEST(MembraneMaterial, RotatedMatrixRoundsAsSinglePrecisionLowerTriangle) {
    // At 123 degrees the lower and the upper triangle round differently, and
    // evaluating in double differs from single in most entries.
    const Material m = turned(kOrtho, 123.0f);
    MaterialCall c(m);
    const Single3 lower = singlePrecisionMaterial(m, false), upper = singlePrecisionMaterial(m, true);
    const Mat3 exact = membraneReference(m);
    int differsFromUpper = 0, differsFromDouble = 0;
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j) {
            EXPECT_EQ(c(i, j), lower.d[i][j]) << i << "," << j;
            EXPECT_EQ(bits(c(i, j)), bits(c(j, i)));
            differsFromUpper += lower.d[i][j] != upper.d[i][j];
            differsFromDouble += lower.d[i][j] != float(exact.a[i - 1][j - 1]);
        }
    EXPECT_GT(differsFromUpper, 0);
    EXPECT_GT(differsFromDouble, 0);
    c.expectBorderUntouched();
}

TEST(MembraneMaterial, RotationPhysics) {
    const float tol = 2e-6f * kOrtho.e1;
    for (float theta : {17.0f, 45.0f, 90.0f, -60.0f, 123.0f, 270.0f}) {
        MaterialCall c(turned(kOrtho, theta));
        const Mat3 ref = membraneReference(turned(kOrtho, theta));
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) EXPECT_NEAR(c(i, j), ref.a[i - 1][j - 1], tol) << theta;
    }
    // A quarter turn exchanges the two moduli; 45 degrees couples by (Q11 - Q22)/4.
    MaterialCall zero(kOrtho), ninety(turned(kOrtho, 90.0f)), diagonal(turned(kOrtho, 45.0f));
    EXPECT_NEAR(ninety(1, 1), zero(2, 2), tol);
    EXPECT_NEAR(ninety(2, 2), zero(1, 1), tol);
    EXPECT_NEAR(diagonal(3, 1), (zero(1, 1) - zero(2, 2)) / 4, tol);
    // Isotropic material does not see the angle.
    MaterialCall iso(isotropic(21000.0f, 0.2f));
    for (float theta : {10.0f, 45.0f, 90.0f, -33.0f, 200.0f}) {
        MaterialCall c(isotropic(21000.0f, 0.2f, theta));
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) EXPECT_NEAR(c(i, j), iso(i, j), 2e-6f * 21000.0f) << theta;
    }
}
