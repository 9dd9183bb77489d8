// Host-side fixtures of the element routines: integration tables, element
// shapes, material and layer tables, and double-precision reference mechanics.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "host_array.hpp"
#include "shellfe.h"

#ifdef SHELLFE_HAVE_EIGEN
#include <Eigen/Dense>
#endif

namespace fixtures {

using Floats = HostMatrix<float>;
using Values = std::vector<float>;
inline const float kNaN = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kSentinel = -777.25f;

inline void setRow(Floats& a, int row, const Values& values) {
    for (std::size_t i = 0; i < values.size(); ++i) a(row, int(i) + 1) = values[i];
}

// GPOS and GWEI (0:2, 0:6): row 1 a one-dimensional rule, used as a tensor
// product on quadrilaterals; row 2 triangle points as (xi, eta) pairs.
struct Quadrature {
    Floats gpos{2, 6, kNaN}, gwei{2, 6, kNaN};
    void line(const Values& p, const Values& w) { setRow(gpos, 1, p), setRow(gwei, 1, w); }
    void triangle(const Values& p, const Values& w) { setRow(gpos, 2, p), setRow(gwei, 2, w); }
    // n = 2 or 3 point Gauss on row 1, the three-point triangle rule on row 2.
    static Quadrature gauss(int n) {
        Quadrature q;
        const float a = 1.0f / std::sqrt(3.0f), b = std::sqrt(0.6f), t = 1.0f / 6, u = 2.0f / 3;
        if (n == 2) q.line({-a, a}, {1.0f, 1.0f});
        if (n == 3) q.line({-b, 0.0f, b}, {5.0f / 9, 8.0f / 9, 5.0f / 9});
        q.triangle({t, t, u, t, t, u}, {t, t, t});
        return q;
    }
};

// Natural coordinates of the quadrilateral's nodes 1 to 8 and centre node 9.
inline constexpr float kQuadNodes[10][2] = {{0, 0}, {-1, -1}, {0, -1}, {1, -1}, {1, 0},
                                            {1, 1}, {0, 1},   {-1, 1}, {-1, 0}, {0, 0}};

// Node coordinates XY (0:9, 0:2); rows the element does not use are NaN.
struct Geometry {
    int32_t nnode;
    Floats xy{9, 2, kNaN};
    float x(int k) const { return xy(k, 1); }
    float y(int k) const { return xy(k, 2); }
};
// Straight-sided element from its corners, counter-clockwise: corners at the
// odd nodes, mid-side nodes at the midpoints; node 9 (if any) at `centre`.
inline Geometry withMidsides(const std::vector<std::array<float, 2>>& corners, int nnode = 0,
                             std::array<float, 2> centre = {0, 0}) {
    const int n = int(corners.size());
    Geometry g{nnode ? nnode : 2 * n};
    for (int i = 0; i < n; ++i) {
        const auto &a = corners[i], &b = corners[(i + 1) % n];
        g.xy(2 * i + 1, 1) = a[0], g.xy(2 * i + 1, 2) = a[1];
        g.xy(2 * i + 2, 1) = 0.5f * (a[0] + b[0]), g.xy(2 * i + 2, 2) = 0.5f * (a[1] + b[1]);
    }
    if (g.nnode == 9) g.xy(9, 1) = centre[0], g.xy(9, 2) = centre[1];
    return g;
}
// Square of side `side` about the origin; `mirror` flips x, numbering it clockwise.
inline Geometry squareQuad(float side, int nnode = 8, bool mirror = false) {
    const float h = 0.5f * side, m = mirror ? -h : h;
    return withMidsides({{-m, -h}, {m, -h}, {m, h}, {-m, h}}, nnode);
}
inline Geometry distortedQuad(int nnode = 8) {
    return withMidsides({{0.0f, 0.0f}, {2.2f, 0.3f}, {2.6f, 2.4f}, {-0.2f, 1.9f}}, nnode, {1.1f, 1.2f});
}
inline Geometry sixNodeTriangle() { return withMidsides({{2.0f, 0.2f}, {0.5f, 1.8f}, {-0.1f, 0.1f}}); }
// Three-node triangle (a, 0), (0, b), (0, 0): x = a xi, y = b eta, det = a b.
inline Geometry rightTriangle(float a, float b) {
    Geometry g{3};
    setRow(g.xy, 1, {a, 0}), setRow(g.xy, 2, {0, b}), setRow(g.xy, 3, {0, 0});
    return g;
}

// Material table PROP (0:3, 0:17), material in row `imat`, every entry that
// the routines must not read NaN.
struct Material {
    float e1, nu, e2, g, theta;
};
inline Floats materialTable(int imat, const Material& m) {
    Floats p{3, 17, kNaN};
    p(imat, 1) = m.e1, p(imat, 2) = m.nu, p(imat, 8) = m.e2, p(imat, 9) = m.g, p(imat, 17) = m.theta;
    return p;
}
inline Material isotropic(float e, float nu, float theta = 0) {
    return {e, nu, e, e / (2.0f * (1.0f + nu)), theta};
}
inline Material turned(Material m, float theta) { return m.theta = theta, m; }
inline constexpr Material kOrtho{30000.0f, 0.3f, 12000.0f, 5000.0f, 0.0f};

// Layer table (0:NLAY, 0:17), unread columns 0, and faces ZLAY (0:NLAY+1).
struct Layer {
    float e1, nu, e8, g, g10, g11, theta;
};
struct Laminate {
    int32_t nlay;
    Floats prop, zlay;
    Laminate(const std::vector<Layer>& layers, const Values& faces)
        : nlay(int32_t(layers.size())), prop(nlay, 17), zlay(nlay + 1, 0, kNaN) {
        for (int l = 1; l <= nlay; ++l) {
            const Layer& y = layers[l - 1];
            prop(l, 1) = y.e1, prop(l, 2) = y.nu, prop(l, 8) = y.e8, prop(l, 9) = y.g;
            prop(l, 10) = y.g10, prop(l, 11) = y.g11, prop(l, 17) = y.theta;
        }
        std::copy(faces.begin(), faces.end(), &zlay(1));
    }
};
inline Layer isotropicLayer(float e, float nu) {
    const float g = e / (2.0f * (1.0f + nu));
    return {e, nu, e, g, g, g, 0};
}
// Isotropic plate of thickness t about its mid-surface, in n equal layers.
inline Laminate isotropicPlate(float e, float nu, float t, int n) {
    Values z;
    for (int l = 0; l <= n; ++l) z.push_back(-0.5f * t + t * float(l) / float(n));
    return Laminate(std::vector<Layer>(n, isotropicLayer(e, nu)), z);
}
// Orthotropic layer, column 1 = 12000 and column 8 = 30000.
inline constexpr Layer kPly{12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 0.0f};

// Transformed reduced stiffness in double precision of a sheet whose axis 1
// is turned by theta degrees from x (index 0 = x, 1 = y, 2 = xy, engineering
// shear strain).
struct Mat3 {
    double a[3][3];
};
inline Mat3 rotatedStiffness(double q11, double q22, double q12, double g, double thetaDeg) {
    const double t = thetaDeg * 3.14159265358979323846 / 180.0, c = std::cos(t), s = std::sin(t);
    const double c2 = c * c, s2 = s * s, f = q11 - q12 - 2 * g, h = q12 - q22 + 2 * g;
    Mat3 m{};
    m.a[0][0] = q11 * c2 * c2 + 2 * (q12 + 2 * g) * s2 * c2 + q22 * s2 * s2;
    m.a[1][1] = q11 * s2 * s2 + 2 * (q12 + 2 * g) * s2 * c2 + q22 * c2 * c2;
    m.a[0][1] = m.a[1][0] = (q11 + q22 - 4 * g) * s2 * c2 + q12 * (s2 * s2 + c2 * c2);
    m.a[2][2] = (q11 + q22 - 2 * q12 - 2 * g) * s2 * c2 + g * (s2 * s2 + c2 * c2);
    m.a[2][0] = m.a[0][2] = f * s * c2 * c + h * s2 * s * c;
    m.a[2][1] = m.a[1][2] = f * s2 * s * c + h * s * c2 * c;
    return m;
}
// Plane-stress material of a PROP row: axis 1 carries E1 (column 1).
inline Mat3 membraneReference(const Material& m) {
    const double den = 1.0 - double(m.nu) * m.nu * m.e2 / m.e1;
    return rotatedStiffness(m.e1 / den, m.e2 / den, m.nu * m.e2 / den, m.g, m.theta);
}

// The rotated material matrix rounded as the library must round it: single
// precision, A = T Q first, then A T^T with one triangle formed and mirrored
// (the stand-alone routine forms the lower one, the membrane element the
// upper one).
struct Single3 {
    float d[4][4];
};
inline Single3 singlePrecisionMaterial(const Material& m, bool upper) {
    const float r = ((m.nu * m.nu) * m.e2) / m.e1, den = 1.0f - r;
    const float q22 = m.e2 / den, q11 = m.e1 / den, q12 = m.nu * q22;
    // Sine and cosine correctly rounded to single precision.
    const float th = (3.1415927f * m.theta) / 180.0f;
    const float s = float(std::sin(double(th))), c = float(std::cos(double(th)));
    const float c2 = c * c, s2 = s * s, cs = c * s;
    const float t[4][4] = {{}, {0, c2, s2, -(2.0f * cs)}, {0, s2, c2, 2.0f * cs}, {0, cs, -cs, c2 - s2}};
    float a[4][4] = {};
    a[1][1] = q11 * c2 + q12 * s2, a[2][1] = q11 * s2 + q12 * c2, a[3][1] = q11 * cs + q12 * (-cs);
    a[1][2] = q12 * c2 + q22 * s2, a[2][2] = q12 * s2 + q22 * c2, a[3][2] = q12 * cs + q22 * (-cs);
    a[1][3] = m.g * (-(2.0f * cs)), a[2][3] = m.g * (2.0f * cs), a[3][3] = m.g * (c2 - s2);
    Single3 out{};
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j)
            if (upper ? i <= j : i >= j)
                out.d[i][j] = out.d[j][i] = a[i][1] * t[j][1] + a[i][2] * t[j][2] + a[i][3] * t[j][3];
    return out;
}

#ifdef SHELLFE_HAVE_EIGEN
// Symmetric matrix over ESTIF's degrees of freedom 1 to n from the stored
// lower triangle (row >= column).
inline Eigen::MatrixXd symmetricFromLower(const Floats& e, int n) {
    Eigen::MatrixXd k(n, n);
    for (int a = 0; a < n; ++a)
        for (int b = 0; b < n; ++b) k(a, b) = e(1 + std::max(a, b), 1 + std::min(a, b));
    return k;
}
// Eigenvalues below tol times the largest, none of them negative beyond
// that; `gap` receives the smallest of the others relative to the largest.
inline int zeroEnergyModes(const Eigen::MatrixXd& k, double tol, double* gap) {
    const Eigen::VectorXd ev = Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(k).eigenvalues();
    const double top = ev.maxCoeff();
    int zeros = 0;
    for (int i = 0; i < ev.size(); ++i) {
        EXPECT_GT(ev(i), -tol * top) << "negative eigenvalue " << ev(i);
        zeros += std::abs(ev(i)) < tol * top;
    }
    *gap = ev(zeros) / top;
    return zeros;
}
#endif

}  // namespace fixtures
