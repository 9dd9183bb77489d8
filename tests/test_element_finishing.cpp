// Merging the in-plane block into a six-per-node element matrix and the
// drilling stiffness given once per node.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host_array.hpp"
#include "shellfe.h"

namespace {

constexpr int32_t kNdofn = 6;

// Three-node elements of a small mesh; ESTIF is (0:20, 0:20) so that its
// leading dimension differs from the element's 18 degrees of freedom.
struct Finishing : ::testing::Test {
    int32_t nenod = 3, ndofn = kNdofn, ldes = 20, ldcn = 4;
    float ratio = 1000.0f;
    HostMatrix<float> estif2{18, 18, 0.0f};
    HostMatrix<float> estif{20, 20, -9.0f};
    HostMatrix<int32_t> ielnod{4, 3, 0};
    int32_t nodflg[12] = {};

    Finishing() {
        for (int32_t b = 0; b <= 18; ++b)
            for (int32_t a = 0; a <= 18; ++a) estif2(a, b) = float(100 * a + b);
        // element 2 has nodes 5, -7, 9; element 3 shares node 7 and adds 3, 11
        ielnod(2, 1) = 5;
        ielnod(2, 2) = -7;
        ielnod(2, 3) = 9;
        ielnod(3, 1) = 3;
        ielnod(3, 2) = 7;
        ielnod(3, 3) = 11;
    }
    void finish(int32_t ielem) {
        STIESTDLLDOTNET(estif2.ptr(), estif.ptr(), &nenod, nodflg, &ndofn, &ldes, nullptr, &ldcn,
                        &ielem, ielnod.ptr(), &ratio);
    }
    static int32_t drill(int32_t n) { return kNdofn * n; }
};

TEST_F(Finishing, MergesOnlyTheLowerBlockTriangle) {
    ielnod(2, 0) = 1;  // switch on: merge only
    finish(2);
    for (int32_t c = 0; c <= 20; ++c)
        for (int32_t r = 0; r <= 20; ++r) {
            const int32_t p = (r - 1) / kNdofn + 1, s = (r - 1) % kNdofn + 1;
            const int32_t q = (c - 1) / kNdofn + 1, j = (c - 1) % kNdofn + 1;
            const bool merged = r >= 1 && c >= 1 && r <= 18 && c <= 18 && s <= 2 && j <= 2 && p >= q;
            const float want = merged ? -9.0f + estif2(2 * (p - 1) + s, 2 * (q - 1) + j) : -9.0f;
            ASSERT_EQ(estif(r, c), want) << r << "," << c;
        }
    for (int32_t flag : nodflg) EXPECT_EQ(flag, 0);
}

TEST_F(Finishing, DrillingStiffnessOncePerNodeAcrossElements) {
    finish(2);
    EXPECT_EQ(nodflg[5], 1);
    EXPECT_EQ(nodflg[7], 1);  // given as -7
    EXPECT_EQ(nodflg[9], 1);
    // No rotational diagonal above 0.0001 (they hold -9): exactly 10.
    for (int32_t n = 1; n <= 3; ++n) EXPECT_EQ(estif(drill(n), drill(n)), 10.0f);

    // Next element on a fresh matrix: shared node 7 (local 2) keeps what the
    // host put there; nodes 3 and 11 receive theirs.
    estif = HostMatrix<float>(20, 20, -9.0f);
    estif(drill(2), drill(2)) = 123.0f;
    finish(3);
    EXPECT_EQ(estif(drill(1), drill(1)), 10.0f);
    EXPECT_EQ(estif(drill(2), drill(2)), 123.0f);
    EXPECT_EQ(estif(drill(3), drill(3)), 10.0f);
    EXPECT_EQ(nodflg[3] + nodflg[11], 2);
    EXPECT_EQ(nodflg[4] + nodflg[6] + nodflg[8] + nodflg[10] + nodflg[0], 0);
}

// The diagonal the routine leaves for one node with rotational diagonals a, b.
float capped(float a, float b, float ratio) {
    int32_t nenod = 1, ndofn = kNdofn, ldes = 6, ldcn = 1, ielem = 1;
    HostMatrix<float> estif2(18, 18, 0.0f), estif(6, 6, 0.0f);
    HostMatrix<int32_t> ielnod(1, 1, 0);
    ielnod(1, 1) = 1;
    int32_t nodflg[2] = {};
    estif(4, 4) = a;
    estif(5, 5) = b;
    estif(6, 6) = -1.0f;
    STIESTDLLDOTNET(estif2.ptr(), estif.ptr(), &nenod, nodflg, &ndofn, &ldes, nullptr, &ldcn, &ielem,
                    ielnod.ptr(), &ratio);
    return estif(6, 6);
}

TEST(DrillingCap, CapsInTurnAgainstBothRotations) {
    EXPECT_EQ(capped(500.0f, 2000.0f, 0.001f), 500.0f * 0.001f);  // 0.5/2000 is not above 0.001
    EXPECT_EQ(capped(500.0f, 100.0f, 0.001f), 100.0f * 0.001f);   // the second cap sees 0.5
    EXPECT_EQ(capped(2000.0f, 500.0f, 0.001f), 500.0f * 0.001f);
    EXPECT_EQ(capped(1.0f, 1.0f, 1000.0f), 10.0f);  // ratio not exceeded
}

TEST(DrillingCap, ThresholdsAreStrictSinglePrecisionComparisons) {
    const float tiny = 0.0001f;
    EXPECT_EQ(capped(tiny, tiny, 1.0e-6f), 10.0f);  // at the threshold: not a stiffness
    const float above = std::nextafter(tiny, 1.0f);
    EXPECT_EQ(capped(above, 0.0f, 1.0e-6f), above * 1.0e-6f);
    // 10/1000 rounds to exactly 0.01f: equal is not greater.
    EXPECT_EQ(capped(1000.0f, 0.0f, 0.01f), 10.0f);
    const float below = std::nextafter(0.01f, 0.0f);
    EXPECT_EQ(capped(1000.0f, 0.0f, below), 1000.0f * below);
}

TEST(DrillingCap, NotANumberFailsTheTest) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(capped(nan, 0.0f, 0.001f), 10.0f);
    EXPECT_EQ(capped(nan, 5000.0f, 0.001f), 5.0f);
    EXPECT_EQ(capped(500.0f, 2000.0f, nan), 10.0f);  // a NaN ratio never caps
}

TEST_F(Finishing, NoNodesNoWork) {
    nenod = 0;
    finish(2);
    for (float x : estif.data) ASSERT_EQ(x, -9.0f);
    for (int32_t flag : nodflg) EXPECT_EQ(flag, 0);
}

}  // namespace
