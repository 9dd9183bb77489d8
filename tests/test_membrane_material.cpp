// Rotated orthotropic plane-stress matrix (MODIPDLLDOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// Material in row IMAT = 2 of PROP (0:3, 0:17); DMAT (0:3, 0:3)
// sentinel-filled, its row and column 0 checked untouched and PROP unchanged.
Floats material(const Material& m) {
    int32_t imat = 2, nmat = 3;
    Floats prop = materialTable(2, m), dmat{3, 3, kSentinel};
    MODIPDLLDOTNET(dmat.ptr(), prop.ptr(), &imat, &nmat);
    for (int k = 0; k <= 3; ++k) EXPECT_TRUE(dmat(0, k) == kSentinel && dmat(k, 0) == kSentinel);
    EXPECT_TRUE(same_bits(prop, materialTable(2, m)));
    return dmat;
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
    const float want[4][4] = {{}, {0, q11, q12, 0}, {0, q12, q22, 0}, {0, 0, 0, m.g}};
    for (float theta : {0.0f, 0.05f, -0.05f, kBelowCut, -kBelowCut}) {
        const Floats d = material(turned(m, theta));
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) EXPECT_TRUE(same_bits(d(i, j), want[i][j])) << theta << i << j;
    }
}

TEST(MembraneMaterial, RotatedMatrixRoundsAsSinglePrecisionLowerTriangle) {
    // From 0.001 rad on, in single precision. At 123 degrees the lower and
    // the upper triangle round differently, and evaluating in double differs
    // from single in some entries. The sine of 7 degrees lies so close to a
    // rounding boundary that C libraries' single-precision sin misses the
    // correctly rounded value the library must use on every platform.
    ASSERT_EQ((3.1415927f * kAtCut) / 180.0f, 0.001f);
    ASSERT_EQ((3.1415927f * kBelowCut) / 180.0f, std::nextafter(0.001f, 0.0f));
    for (float theta : {kAtCut, -kAtCut, 7.0f, 123.0f}) {
        const Material m = turned(kOrtho, theta);
        const Floats d = material(m);
        const Single3 lower = singlePrecisionMaterial(m, false),
                      upper = singlePrecisionMaterial(m, true);
        const Mat3 exact = membraneReference(m);
        EXPECT_NE(d(3, 1), 0.0f);  // rotated
        int differsFromUpper = 0, differsFromDouble = 0;
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) {
                EXPECT_EQ(d(i, j), lower.d[i][j]) << theta << ": " << i << "," << j;
                EXPECT_TRUE(same_bits(d(i, j), d(j, i)));
                differsFromUpper += lower.d[i][j] != upper.d[i][j];
                differsFromDouble += lower.d[i][j] != float(exact.a[i - 1][j - 1]);
            }
        EXPECT_TRUE(theta != 123.0f || (differsFromUpper > 0 && differsFromDouble > 0));
    }
}

TEST(MembraneMaterial, RotationPhysics) {
    const float tol = 2e-6f * kOrtho.e1;
    for (float theta : {17.0f, 45.0f, 90.0f, -60.0f, 123.0f, 270.0f}) {
        const Floats d = material(turned(kOrtho, theta));
        const Mat3 ref = membraneReference(turned(kOrtho, theta));
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) EXPECT_NEAR(d(i, j), ref.a[i - 1][j - 1], tol) << theta;
    }
    // A quarter turn exchanges the two moduli; 45 degrees couples by (Q11 - Q22)/4.
    const Floats zero = material(kOrtho), ninety = material(turned(kOrtho, 90.0f));
    EXPECT_NEAR(ninety(1, 1), zero(2, 2), tol);
    EXPECT_NEAR(ninety(2, 2), zero(1, 1), tol);
    EXPECT_NEAR(material(turned(kOrtho, 45.0f))(3, 1), (zero(1, 1) - zero(2, 2)) / 4, tol);
    // Isotropic material does not see the angle.
    const Floats iso = material(isotropic(21000.0f, 0.2f));
    for (float theta : {10.0f, 45.0f, 90.0f, -33.0f, 200.0f}) {
        const Floats d = material(isotropic(21000.0f, 0.2f, theta));
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) EXPECT_NEAR(d(i, j), iso(i, j), 2e-6f * 21000.0f) << theta;
    }
}
