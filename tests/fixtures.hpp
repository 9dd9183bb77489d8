// Host arrays (column-major, from 0, pre-filled to show what a routine left
// alone), digests, an eigenvalue solver and the routines' inputs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "shellfe.h"

inline constexpr float kSentinel = -777.25f;
inline const float kNaN = std::nanf("");

template <class T>
struct Host {  // declared (0:u1, 0:u2)
    int rows;
    std::vector<T> v;
    Host(int u1, int u2, T fill = T(0)) : rows(u1 + 1), v(std::size_t(rows) * (u2 + 1), fill) {}
    T& operator()(int a, int b = 0) { return v[std::size_t(a + b * rows)]; }
    T operator()(int a, int b = 0) const { return v[std::size_t(a + b * rows)]; }
    T* p() { return v.data(); }
    long count(T x) const { return long(std::count(v.begin(), v.end(), x)); }
};
using Floats = Host<float>;

// FNV-1a over all bytes: pins what a routine writes and what it leaves alone.
template <class T>
std::uint64_t digest(const Host<T>& h) {
    std::uint64_t x = 14695981039346656037ull;
    const auto* b = reinterpret_cast<const unsigned char*>(h.v.data());
    for (std::size_t i = 0; i < h.v.size() * sizeof(T); ++i) x = (x ^ b[i]) * 1099511628211ull;
    return x;
}
#define EXPECT_DIGEST(h, want) EXPECT_EQ(digest(h), std::uint64_t(want)) << std::hex << digest(h)

// Deterministic values in [-1, 1) with many significant bits.
inline float noise(std::minstd_rand& r) { return float(double(r()) / 0x40000000 - 1); }

// The symmetric matrix (row-major) over degrees of freedom 1..n of an ESTIF
// holding its lower triangle, and eigenvalues, ascending, by cyclic Jacobi.
inline std::vector<double> symmetric(const Floats& e, int n) {
    std::vector<double> k(std::size_t(n) * n);
    for (int i = 0; i < n * n; ++i)
        k[i] = e(1 + std::max(i / n, i % n), 1 + std::min(i / n, i % n));
    return k;
}
inline std::vector<double> eigenvalues(std::vector<double> a, int n) {
    for (int sweep = 0; sweep < 50; ++sweep)
        for (int p = 0; p < n; ++p)
            for (int q = p + 1; q < n; ++q) {
                if (a[p * n + q] == 0) continue;
                const double h = (a[q * n + q] - a[p * n + p]) / (2 * a[p * n + q]);
                const double t = (h < 0 ? -1 : 1) / (std::fabs(h) + std::sqrt(h * h + 1));
                const double c = 1 / std::sqrt(t * t + 1), s = t * c;
                auto rotate = [&](int sk, int sp) {  // entries p and q along k
                    for (int k = 0; k < n; ++k) {
                        double &x = a[k * sk + p * sp], &y = a[k * sk + q * sp], x0 = x;
                        x = c * x0 - s * y, y = s * x0 + c * y;
                    }
                };
                rotate(n, 1), rotate(1, n);  // columns p and q, then rows p and q
            }
    std::vector<double> ev(n);
    for (int i = 0; i < n; ++i) ev[i] = a[i * n + i];
    std::sort(ev.begin(), ev.end());
    return ev;
}

// Row 2 of PROP (0:3, 0:17) from {E1, nu, E2, G, angle}, NaN where not read,
// and DMAT (0:3, 0:3) of MODIPDLLDOTNET for it.
inline Floats materialTable(std::array<float, 5> m) {
    Floats prop(3, 17, kNaN);
    for (int c = 0; c < 5; ++c) prop(2, std::array{1, 2, 8, 9, 17}[c]) = m[c];
    return prop;
}
inline std::array<float, 5> ortho(float angle) { return {30000, 0.35f, 16000, 5000, angle}; }
inline Floats material(std::array<float, 5> m) {
    int32_t imat = 2, nmat = 3;
    Floats d(3, 3, kSentinel);
    return MODIPDLLDOTNET(d.p(), materialTable(m).p(), &imat, &nmat), d;
}

// Layer table (0:NLAY, 0:17) of rows {E1, nu, E8, G, G10, G11, angle}, faces
// ZLAY (0:NLAY+1); DBEND (0:3, 0:3) or DSHEAR (0:2, 0:2) from one call.
struct Laminate {
    int32_t nlay;
    Floats prop, zlay;
    Laminate(const std::vector<std::array<float, 7>>& rows, const std::vector<float>& faces)
        : nlay(int32_t(rows.size())), prop(nlay, 17), zlay(nlay + 1, 0, kNaN) {
        for (int i = 0; i < nlay * 7; ++i)
            prop(1 + i / 7, std::array{1, 2, 8, 9, 10, 11, 17}[i % 7]) = rows[i / 7][i % 7];
        std::copy(faces.begin(), faces.end(), &zlay(1));
    }
};
inline Laminate crossPly() {  // two plies turned against each other
    return Laminate({{3e4f, 0.3f, 12000, 5000, 3000, 2000, 30},
                     {3e4f, 0.3f, 12000, 5000, 2900, 2300, -60}}, {-0.15f, 0, 0.15f});
}
struct Rigidities { Floats d{3, 3, kSentinel}, s{2, 2, kSentinel}; };
inline Rigidities rigidities(Laminate& lam, int32_t ibend = 1, int32_t ishear = 0) {
    Rigidities r;
    MODPBDLLDOTNET(r.d.p(), r.s.p(), &ibend, &ishear, lam.prop.p(), lam.zlay.p(), &lam.nlay);
    return r;
}

// An element as the host holds it: XY (0:9, 0:2), thicknesses in row IEL = 2
// of TNODE (0:3, 0:10), material row IMAT = 2 of PROP, a laminate, the rule
// GPOS, GWEI (0:2, 0:6), ESTIF (0:LDES, 0:LDES); NaN where no routine may read.
struct Element {
    int32_t ngpx, ngpy, ntype = 1, ngpt = 5, iel = 2, ngpt2 = 11, nnode, imat = 2, nelem = 3;
    int32_t nmat = 3, ioff = 0, ldes = 18, ndofn = 3, nnodt;
    Floats xy{9, 2, kNaN}, tnode{3, 10, kNaN}, prop = materialTable(ortho(30)), gpos{2, 6, kNaN};
    Floats gwei{2, 6, kNaN}, estif{18, 18};
    Laminate lam = crossPly();
    bool aliased = false;  // the layer table passed as PROP too
    float detj = kSentinel;

    // Straight sides, counter-clockwise: corners, mid-sides, node 9 inside.
    Element(std::vector<std::array<float, 2>> corners, int n) : nnode(n), nnodt(n) {
        const int m = int(corners.size()), step = n > 3 ? 2 : 1;
        for (int i = 0; i < m; ++i) {
            const auto &a = corners[i], &b = corners[(i + 1) % m];
            xy(step * i + 1, 1) = a[0], xy(step * i + 1, 2) = a[1];
            if (n > 3) xy(2 * i + 2, 1) = (a[0] + b[0]) / 2, xy(2 * i + 2, 2) = (a[1] + b[1]) / 2;
        }
        if (n == 9) xy(9, 1) = 1.1f, xy(9, 2) = 1.2f;
        for (int k = 1; k <= 9; ++k) tnode(iel, k) = 0.1f + 0.03f * float(k);
        tnode(iel, 10) = 50;  // beyond the ninth node: never read
        gauss(3);
    }
    // n = 2 or 3 Gauss points on row 1, three triangle points on row 2.
    void gauss(int n) {
        const float a = std::sqrt(1 / 3.f), b = std::sqrt(0.6f), c = 5 / 9.f, t = 1 / 6.f;
        const float p[2][3] = {{-a, a}, {-b, 0, b}}, w[2][3] = {{1, 1}, {c, 8 / 9.f, c}};
        for (int i = 1; i <= 3; ++i) gpos(1, i) = p[n - 2][i - 1], gwei(1, i) = w[n - 2][i - 1];
        for (int i = 1; i <= 6; ++i) gpos(2, i) = i % 3 ? t : 4 * t, gwei(2, i) = t;
        ngpx = ngpy = n;
    }
    void layout(int32_t dofs, int32_t offset, int32_t upper) {  // zeros (0:upper, 0:upper)
        ndofn = dofs, ioff = offset, ldes = upper, estif = Floats(upper, upper);
    }
    float* mat() { return aliased ? lam.prop.p() : prop.p(); }
    void membrane() {
        STIFFP003DOTNET(&ngpx, &ngpy, &ntype, gpos.p(), &ngpt, &iel, &nnode, xy.p(), tnode.p(),
                        nullptr, &imat, mat(), gwei.p(), nullptr, &nelem, &nmat, nullptr, nullptr,
                        &nnodt, estif.p(), &detj);
    }
    void bending() {
        STIFFP001DOTNET(&ngpx, &ngpy, &ntype, gpos.p(), &ngpt, &iel, &ngpt2, nullptr, &nnode,
                        xy.p(), tnode.p(), nullptr, &imat, mat(), &ioff, estif.p(), gwei.p(),
                        nullptr, nullptr, &nelem, &nmat, &ldes, &ndofn, &nnodt, lam.prop.p(),
                        lam.zlay.p(), &lam.nlay, &detj);
    }
    void shear() {
        STIFFP002DOTNET(&ngpx, &ngpy, &ntype, gpos.p(), &ngpt, &iel, &nnode, xy.p(), tnode.p(),
                        nullptr, &imat, mat(), &ioff, estif.p(), gwei.p(), nullptr, &nelem, &nmat,
                        &ldes, &ndofn, &nnodt, lam.prop.p(), lam.zlay.p(), &lam.nlay, &detj);
    }
};
inline Element distortedQuad(int n = 8) {
    return {{{0, 0}, {2.2f, 0.3f}, {2.6f, 2.4f}, {-0.2f, 1.9f}}, n};
}
inline Element square(float h) { return Element({{-h, -h}, {h, -h}, {h, h}, {-h, h}}, 8); }

// JACOB2DLLDOTNET's DERIV, ELCOD, CARTD (0:9, 0:*) for the distorted quad.
struct Jacobian {
    int32_t nenod = 9;
    Floats deriv{9, 3, kNaN}, elcod = distortedQuad(9).xy, cartd{9, 2, kSentinel};
    float detj = kSentinel;
    Jacobian() {
        std::minstd_rand r(17);
        for (int n = 1; n <= 8; ++n) deriv(n, 2) = noise(r), deriv(n, 3) = noise(r);
        deriv(9, 2) = -0.0f, deriv(9, 3) = 0;  // both d/dx terms -0: the sum starts from +0
    }
    Jacobian& run() {
        return JACOB2DLLDOTNET(cartd.p(), deriv.p(), &detj, elcod.p(), &nenod), *this;
    }
};
