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
    void run() { JACOB2DLLDOTNET(cartd.data(), deriv.data(), &detj, elcod.data(), &nenod); }
    void expectUntouchedOutside() const {
        for (int n = 0; n <= 9; ++n)
            for (int a = 0; a <= 2; ++a)
                if (n == 0 || a == 0 || n > nenod) {
                    EXPECT_EQ(cartd(n, a), kSentinel) << n << "," << a;
                }
    }
};

// Serendipity element (plus bubble) at (xi, eta) with the geometry of g.
JacobianCall quadAt(const Geometry& g, float xi, float eta) {
    JacobianCall c{g.nnode};
    for (int k = 1; k <= 8; ++k) {
        const float a = kQuadNodes[k][0], b = kQuadNodes[k][1];
        if (a != 0 && b != 0) {
            c.deriv(k, 2) = 0.25f * a * (1 + eta * b) * (2 * xi * a + eta * b);
            c.deriv(k, 3) = 0.25f * b * (1 + xi * a) * (xi * a + 2 * eta * b);
        } else if (a == 0) {
            c.deriv(k, 2) = -xi * (1 + eta * b), c.deriv(k, 3) = 0.5f * b * (1 - xi * xi);
        } else {
            c.deriv(k, 2) = 0.5f * a * (1 - eta * eta), c.deriv(k, 3) = -eta * (1 + xi * a);
        }
    }
    c.deriv(9, 2) = -2 * xi * (1 - eta * eta), c.deriv(9, 3) = -2 * eta * (1 - xi * xi);
    for (int k = 1; k <= g.nnode; ++k) c.elcod(k, 1) = g.x(k), c.elcod(k, 2) = g.y(k);
    return c;
}

}  // namespace

TEST(Jacobian, UnitSquareAtItsCentre) {
    // Bilinear square (0,0)-(1,1) at its centre: det = 1/4, d/dx = 2 d/dxi.
    JacobianCall c{4};
    const float corner[5][2] = {{}, {0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (int n = 1; n <= 4; ++n) {
        c.elcod(n, 1) = corner[n][0], c.elcod(n, 2) = corner[n][1];
        c.deriv(n, 2) = 0.5f * corner[n][0] - 0.25f, c.deriv(n, 3) = 0.5f * corner[n][1] - 0.25f;
    }
    c.run();
    EXPECT_EQ(c.detj, 0.25f);
    for (int n = 1; n <= 4; ++n) {
        EXPECT_EQ(c.cartd(n, 1), 2 * c.deriv(n, 2));
        EXPECT_EQ(c.cartd(n, 2), 2 * c.deriv(n, 3));
    }
    c.expectUntouchedOutside();
    // Numbered clockwise (x mirrored): the negative determinant is returned as it is.
    for (int n = 1; n <= 4; ++n) c.elcod(n, 1) = -c.elcod(n, 1);
    c.run();
    EXPECT_EQ(c.detj, -0.25f);
    for (int n = 1; n <= 4; ++n) EXPECT_EQ(c.cartd(n, 1), -2 * c.deriv(n, 2));
}

TEST(Jacobian, NinthNodeTakesNoPartInTheGeometry) {
    JacobianCall c = quadAt(distortedQuad(9), 0.3f, -0.7f);
    c.run();
    c.expectUntouchedOutside();
    JacobianCall moved = c, reshaped = c;
    moved.elcod(9, 1) = 50.0f, moved.elcod(9, 2) = -3.0f;
    moved.run();
    EXPECT_EQ(bits(moved.detj), bits(c.detj));
    EXPECT_TRUE(moved.cartd.sameBits(c.cartd));
    // A changed bubble derivative changes row 9 only.
    reshaped.deriv(9, 2) += 0.5f, reshaped.deriv(9, 3) -= 0.25f;
    reshaped.run();
    EXPECT_EQ(bits(reshaped.detj), bits(c.detj));
    for (int n = 1; n <= 9; ++n)
        for (int a = 1; a <= 2; ++a) EXPECT_EQ(reshaped.cartd(n, a) == c.cartd(n, a), n < 9) << n << a;
}

TEST(Jacobian, RoundsTheDeterminantToSinglePrecisionBeforeInverting) {
    // Single-precision products summed in double, determinant rounded to
    // single, inverse divided by that rounded value, each derivative rounded
    // after each of its two additions. Evaluating all in double or all in
    // single changes some results.
    JacobianCall c = quadAt(distortedQuad(8), 0.3f, -0.7f);
    c.run();
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
