// Jacobian determinant and Cartesian derivatives (JACOB2DLLDOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// The routine's arrays, first dimension fixed at (0:9). DERIV columns 0 and
// 1 are NaN: they must not be read.
struct JacobianCall {
    int32_t nenod;
    Floats deriv{9, 3, kNaN}, elcod{9, 2, kNaN}, cartd{9, 2, kSentinel};
    float detj = kSentinel;
    JacobianCall& run() {
        JACOB2DLLDOTNET(cartd.ptr(), deriv.ptr(), &detj, elcod.ptr(), &nenod);
        for (int n = 0; n <= 9; ++n)
            for (int a = 0; a <= 2; ++a)
                EXPECT_TRUE((n && a && n <= nenod) || cartd(n, a) == kSentinel) << n << "," << a;
        return *this;
    }
};

// The nodes of g with derivatives of many significant bits: the routine only
// combines the tables, so they need not come from shape functions here.
JacobianCall withGeometry(const Geometry& g) {
    JacobianCall c{g.nnode};
    Lcg rng(17);
    for (int k = 1; k <= g.nnode; ++k) {
        c.elcod(k, 1) = g.x(k), c.elcod(k, 2) = g.y(k);
        c.deriv(k, 2) = float(rng.next()), c.deriv(k, 3) = float(rng.next());
    }
    return c;
}

}  // namespace

TEST(Jacobian, UnitSquareAtItsCentre) {
    // Bilinear square (0,0)-(1,1) at its centre: det = 1/4, d/dx = 2 d/dxi.
    // Numbered clockwise (x mirrored), the negative determinant is returned
    // as it is and d/dx changes sign.
    JacobianCall c{4};
    const float corner[5][2] = {{}, {0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (int n = 1; n <= 4; ++n) {
        c.elcod(n, 1) = corner[n][0], c.elcod(n, 2) = corner[n][1];
        c.deriv(n, 2) = 0.5f * corner[n][0] - 0.25f, c.deriv(n, 3) = 0.5f * corner[n][1] - 0.25f;
    }
    for (float sx : {1.0f, -1.0f}) {
        for (int n = 1; n <= 4; ++n) c.elcod(n, 1) = sx * corner[n][0];
        EXPECT_EQ(c.run().detj, sx * 0.25f);
        for (int n = 1; n <= 4; ++n) {
            EXPECT_EQ(c.cartd(n, 1), sx * 2 * c.deriv(n, 2));
            EXPECT_EQ(c.cartd(n, 2), 2 * c.deriv(n, 3));
        }
    }
}

TEST(Jacobian, NinthNodeTakesNoPartInTheGeometry) {
    JacobianCall c = withGeometry(distortedQuad(9)).run(), moved = c, reshaped = c;
    moved.elcod(9, 1) = 50.0f, moved.elcod(9, 2) = -3.0f;
    EXPECT_TRUE(same_bits(moved.run().detj, c.detj));
    EXPECT_TRUE(same_bits(moved.cartd, c.cartd));
    // A changed bubble derivative changes row 9 only.
    reshaped.deriv(9, 2) += 0.5f, reshaped.deriv(9, 3) -= 0.25f;
    EXPECT_TRUE(same_bits(reshaped.run().detj, c.detj));
    for (int n = 1; n <= 9; ++n)
        for (int a = 1; a <= 2; ++a) EXPECT_EQ(reshaped.cartd(n, a) == c.cartd(n, a), n < 9) << n << a;
}

TEST(Jacobian, RoundsTheDeterminantToSinglePrecisionBeforeInverting) {
    // Single-precision products summed in double, determinant rounded to
    // single, inverse divided by that rounded value, each derivative rounded
    // after each of its two additions. Evaluating all in double or all in
    // single changes some results.
    const JacobianCall c = withGeometry(distortedQuad(8)).run();
    double j[3][3] = {};
    for (int a = 1; a <= 2; ++a)
        for (int b = 1; b <= 2; ++b)
            for (int n = 1; n <= 8; ++n) j[a][b] += double(c.deriv(n, a + 1) * c.elcod(n, b));
    const double dd = j[1][1] * j[2][2] - j[1][2] * j[2][1];
    const float det = float(dd);
    const double inv[3][3] = {{}, {0, j[2][2], -j[1][2]}, {0, -j[2][1], j[1][1]}};
    EXPECT_EQ(c.detj, det);
    int differsFromDouble = 0, differsFromSingle = 0;
    for (int n = 1; n <= 8; ++n)
        for (int a = 1; a <= 2; ++a) {
            const float dxi = c.deriv(n, 2), deta = c.deriv(n, 3);
            const double first = inv[a][1] / det, second = inv[a][2] / det;
            const float want = float(double(float(0.0 + dxi * first)) + deta * second);
            EXPECT_EQ(c.cartd(n, a), want) << n << "," << a;
            differsFromDouble += want != float(dxi * (inv[a][1] / dd) + deta * (inv[a][2] / dd));
            differsFromSingle += want != dxi * float(first) + deta * float(second);
        }
    EXPECT_GT(differsFromDouble, 0);
    EXPECT_GT(differsFromSingle, 0);
}
