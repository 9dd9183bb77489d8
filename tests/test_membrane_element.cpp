// Isoparametric membrane element stiffness (STIFFP003DOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// One host call: element IEL = 2 of TNODE (0:3, 0:9), material row IMAT = 2
// of PROP (0:3, 0:17), ESTIF (0:18, 0:18). Unused slots are passed as null.
struct MembraneCall {
    int32_t ngpx = 3, ngpy = 3, ntype = 1, ngpt = 5, iel = 2, nnode, imat = 2, nelem = 3, nmat = 3,
            nnodt;
    Quadrature rule = Quadrature::gauss(3);
    Geometry geo;
    Floats tnode{3, 9, kNaN}, prop, estif{18, 18, 0.0f};
    float detj = kSentinel;
    MembraneCall(const Geometry& g, const Material& m, float thickness = 0.1f)
        : nnode(g.nnode), nnodt(g.nnode), geo(g), prop(materialTable(2, m)) {
        for (int k = 1; k <= nnode; ++k) tnode(iel, k) = thickness;
        if (nnode <= 6) ntype = nnode == 3 ? 6 : 3, ngpx = 1;  // triangles: once over row 2
    }
    MembraneCall& run() {
        STIFFP003DOTNET(&ngpx, &ngpy, &ntype, rule.gpos.ptr(), &ngpt, &iel, &nnode, geo.xy.ptr(),
                        tnode.ptr(), nullptr, &imat, prop.ptr(), rule.gwei.ptr(), nullptr, &nelem, &nmat,
                        nullptr, nullptr, &nnodt, estif.ptr(), &detj);
        return *this;
    }
    float thickness() const { return prop(imat, 3); }
    // One point (xi, eta) of weight w, on whichever row the family reads.
    MembraneCall& onePoint(float xi, float eta, float w) {
        ngpx = ngpy = 1;
        rule.line({xi}, {std::sqrt(w)});
        rule.triangle({xi, eta}, {w});
        return *this;
    }
};

const Material kRotated = turned(kOrtho, 30.0f);

// Unit right triangle x = xi, y = eta, one point of weight 1/2 at (1/4, 1/4):
// B holds only 0 and +-1, and s = det w t = t / 2.
MembraneCall unitTriangle(const Material& m, float thickness) {
    return MembraneCall(rightTriangle(1.0f, 1.0f), m, thickness).onePoint(0.25f, 0.25f, 0.5f);
}

#ifdef SHELLFE_HAVE_EIGEN
// K u for the nodal values of a displacement field (u, v)(x, y).
template <class Field>
Eigen::VectorXd apply(const MembraneCall& c, Field field) {
    Eigen::VectorXd u(2 * c.nnode);
    for (int k = 1; k <= c.nnode; ++k) {
        const std::array<double, 2> uv = field(c.geo.x(k), c.geo.y(k));
        u(2 * k - 2) = uv[0], u(2 * k - 1) = uv[1];
    }
    return symmetricFromLower(c.estif, 2 * c.nnode) * u;
}
#endif

}  // namespace

#ifdef SHELLFE_HAVE_EIGEN
TEST(MembraneElement, RigidBodyModesAndConstantStrainPatch) {
    // Exactly three zero-energy modes, the rigid ones. A linear field gives
    // nodal forces equal to the consistent loads of its constant boundary
    // tractions: 1/6, 2/3, 1/6 of a straight quadratic edge's resultant.
    const double e[3] = {1e-3, -4e-4, 7e-4};  // eps_x, eps_y, gamma_xy
    const Mat3 d = membraneReference(kRotated);
    double sig[3];
    for (int i = 0; i < 3; ++i) sig[i] = d.a[i][0] * e[0] + d.a[i][1] * e[1] + d.a[i][2] * e[2];
    for (const Geometry& g : {squareQuad(2.0f), distortedQuad(8), sixNodeTriangle()}) {
        MembraneCall c(g, kRotated, 0.25f);
        const Eigen::MatrixXd k = symmetricFromLower(c.run().estif, 2 * g.nnode);
        double gap;
        EXPECT_EQ(zeroEnergyModes(k, 1e-6, &gap), 3) << g.nnode;
        EXPECT_GT(gap, 1e-3);
        const double tol = 1e-5 * k.diagonal().maxCoeff();
        EXPECT_LT(apply(c, [](double, double) { return std::array{1.0, 0.0}; }).norm(), tol);
        EXPECT_LT(apply(c, [](double, double) { return std::array{0.0, 1.0}; }).norm(), tol);
        EXPECT_LT(apply(c, [](double x, double y) { return std::array{-y, x}; }).norm(), tol);
        Eigen::VectorXd f = Eigen::VectorXd::Zero(g.nnode * 2);
        for (int i = 0; i < g.nnode / 2; ++i) {
            const int edge[3] = {2 * i + 1, 2 * i + 2, (2 * i + 2) % g.nnode + 1};
            const double dx = g.x(edge[2]) - g.x(edge[0]), dy = g.y(edge[2]) - g.y(edge[0]);
            const double tx = sig[0] * dy - sig[2] * dx, ty = sig[2] * dy - sig[1] * dx;
            for (int k = 0; k < 3; ++k) {
                const double share = (k == 1 ? 2.0 / 3 : 1.0 / 6) * 0.25;  // thickness 0.25
                f(2 * edge[k] - 2) += share * tx, f(2 * edge[k] - 1) += share * ty;
            }
        }
        auto field = [&](double x, double y) {
            return std::array{e[0] * x + 0.5 * e[2] * y, 0.5 * e[2] * x + e[1] * y};
        };
        EXPECT_LT((apply(c, field) - f).norm(), 2e-5 * f.norm()) << g.nnode;
    }
}
#endif

TEST(MembraneElement, NinthNodeIsABubbleOutsideTheGeometry) {
    MembraneCall c(distortedQuad(9), kRotated), moved(distortedQuad(9), kRotated);
    moved.geo.xy(9, 1) = 40.0f, moved.geo.xy(9, 2) = -7.0f;
    c.run(), moved.run();
    EXPECT_TRUE(same_bits(moved.detj, c.detj));
    EXPECT_TRUE(same_bits(moved.estif, c.estif));
    EXPECT_TRUE(c.estif(17, 17) > 0.0f && c.estif(18, 18) > 0.0f);
#ifdef SHELLFE_HAVE_EIGEN
    // The eight serendipity functions are not corrected for the bubble: a
    // translation of nodes 1 to 8 alone is strain-free, one with node 9 is not.
    const Eigen::MatrixXd k = symmetricFromLower(c.estif, 18);
    Eigen::VectorXd u = Eigen::VectorXd::Zero(18);
    for (int n = 0; n < 8; ++n) u(2 * n) = 1.0;
    EXPECT_LT((k * u).norm(), 1e-5 * k(16, 16));
    u(16) = 1.0;
    EXPECT_GT((k * u).norm(), 1e-2 * k(16, 16));
#endif
}

TEST(MembraneElement, DegeneratePointsAreIntegratedWithMinusOne) {
    // Side-4 square: det = 4 counter-clockwise, -4 clockwise and replaced by
    // -1. Mirroring x flips every u, so the clockwise matrix is exactly -1/4
    // of the other, signs flipped between u and v.
    MembraneCall ccw(squareQuad(4.0f), isotropic(21000.0f, 0.25f));
    MembraneCall cw(squareQuad(4.0f, 8, true), isotropic(21000.0f, 0.25f));
    for (MembraneCall* c : {&ccw, &cw}) {
        c->rule.line({-0.5f, 0.5f}, {1.0f, 1.0f});  // dyadic abscissae keep det exact
        c->ngpx = c->ngpy = 2;
        c->run();
    }
    EXPECT_EQ(ccw.detj, 4.0f);
    EXPECT_EQ(cw.detj, -1.0f);
    for (int m = 1; m <= 16; ++m)
        for (int k = 1; k <= m; ++k)
            EXPECT_EQ(cw.estif(m, k), (m % 2 == k % 2 ? -0.25f : 0.25f) * ccw.estif(m, k)) << m << k;
    // The cut, 1.0e-7, compares det = a b (exact in double) rounded to single.
    ASSERT_LT(double(0x1.5798eep-24f) * 1.25, double(1.0e-7f));
    const struct {
        float a, b, detj;
    } cases[] = {{1.0e-7f, 1.0f, 1.0e-7f},
                 {0x1.5798eep-24f, 1.25f, 1.0e-7f},  // below in double, rounds onto the cut
                 {0x1.5798ecp-24f, 1.25f, -1.0f},
                 {std::nextafter(1.0e-7f, 0.0f), 1.0f, -1.0f},
                 {std::nextafter(1.0e-7f, 1.0f), 1.0f, std::nextafter(1.0e-7f, 1.0f)}};
    for (const auto& k : cases) {
        MembraneCall c(rightTriangle(k.a, k.b), isotropic(1000.0f, 0.0f));
        c.ngpy = 1;
        EXPECT_EQ(c.run().detj, k.detj) << k.a;
        EXPECT_TRUE(c.estif(1, 1) != 0.0f && (c.estif(1, 1) < 0) == (k.detj < 0)) << k.a;
    }
}

TEST(MembraneElement, WritesOnlyTheLowerTriangleOfItsDegreesOfFreedom) {
    // Without points (NGPX or NGPY <= 0) nothing changes at all: no count,
    // determinant, thickness or stiffness.
    for (auto [nx, ny] : {std::pair{1, 3}, {0, 3}, {3, 0}, {-1, 2}}) {
        MembraneCall c(sixNodeTriangle(), kRotated);
        c.estif = Floats{18, 18, kSentinel};
        for (int m = 1; m <= 12; ++m)
            for (int k = 1; k <= m; ++k) c.estif(m, k) = 0.0f;
        const Floats before = c.estif;
        c.ngpx = nx, c.ngpy = ny;
        c.run();
        const bool points = nx > 0 && ny > 0;
        EXPECT_EQ(c.ngpt, 5 + (points ? 3 : 0)) << nx << ny;
        EXPECT_EQ(c.detj == kSentinel, !points);
        EXPECT_EQ(same_bits(c.prop, materialTable(2, kRotated)), !points);
        for (int m = 0; m <= 18; ++m)
            for (int k = 0; k <= 18; ++k) {
                if (before(m, k) == kSentinel || !points) {
                    EXPECT_TRUE(same_bits(c.estif(m, k), before(m, k))) << m << "," << k;
                } else if (k == m) {
                    EXPECT_GT(c.estif(m, k), 0.0f);
                }
            }
    }
}

TEST(MembraneElement, TrianglePointsAreRepeatedPerOuterPassWithTheirOwnWeights) {
    // NGPX = 2 adds every triangle point twice, as two calls do, bit for bit.
    MembraneCall twice(sixNodeTriangle(), kRotated);
    for (int k = 1; k <= 6; ++k) twice.tnode(2, k) = 0.1f + 0.03f * float(k);
    MembraneCall once = twice;
    twice.ngpx = 2;
    twice.run(), once.run(), once.run();
    EXPECT_EQ(twice.ngpt, 5 + 6);
    EXPECT_TRUE(same_bits(once.estif, twice.estif));
    // Strains are constant in a three-node triangle: two points of unequal
    // weights give what one point of their total weight gives.
    MembraneCall one = unitTriangle(kRotated, 0.2f), two = one;
    two.ngpy = 2;
    two.rule.triangle({0.25f, 0.25f, 0.5f, 0.125f}, {0.375f, 0.125f});
    one.run(), two.run();
    for (int m = 1; m <= 6; ++m) EXPECT_FLOAT_EQ(two.estif(m, 1), one.estif(m, 1)) << m;
}

TEST(MembraneElement, ThicknessColumnHoldsTheLastPoint) {
    // Thickness linear in (xi, eta), a 2 x 3 rule with distinct abscissae:
    // the last point is (GPOS(1,2), GPOS(1,3)). Only NNODT nodes enter.
    MembraneCall c(squareQuad(2.0f), kRotated);
    c.rule.line({-0.5f, 0.25f, 0.75f}, {0.5f, 1.0f, 0.5f});
    c.ngpx = 2;
    for (int k = 1; k <= 8; ++k) c.tnode(2, k) = 1 + 0.5f * kQuadNodes[k][0] + 0.25f * kQuadNodes[k][1];
    EXPECT_FLOAT_EQ(c.run().thickness(), 1.0f + 0.5f * 0.25f + 0.25f * 0.75f);
    // N = -3/32, 15/128, -15/128 at nodes 1 to 3; thicknesses 1/4, 3/4, 5/4.
    c.nnodt = 3;
    EXPECT_FLOAT_EQ(c.run().thickness(), -0.08203125f);
}

TEST(MembraneElement, ShapeFunctionFamilies) {
    // With TNODE(IEL, k) = 1 for one k only, PROP(IMAT, 3) is N_k at the point.
    auto value = [](const Geometry& g, int ntype, float xi, float eta, int k) {
        MembraneCall c(g, kRotated);
        c.ntype = ntype;
        for (int i = 1; i <= g.nnode; ++i) c.tnode(2, i) = i == k ? 1.0f : 0.0f;
        return c.onePoint(xi, eta, 0.5f).run().thickness();
    };
    // Hermite family at xi = 0.5 (eta unused): values at 1, 3, 5, slopes at 2, 4, 6.
    const float hermite[7] = {0, 0.0859375f, 0.0234375f, 0.5625f, 0.28125f, 0.3515625f, -0.0703125f};
    // Six-node triangle at (0.25, 0.5), L = 0.25.
    const float quadratic[7] = {0, -0.125f, 0.5f, 0.0f, 0.5f, -0.125f, 0.25f};
    for (int k = 1; k <= 6; ++k) {
        EXPECT_EQ(value(sixNodeTriangle(), 4, 0.5f, 0.9f, k), hermite[k]) << k;
        EXPECT_EQ(value(sixNodeTriangle(), 3, 0.25f, 0.5f, k), quadratic[k]) << k;
    }
    EXPECT_EQ(value(squareQuad(2.0f, 9), 1, 0.0f, 0.0f, 9), 1.0f);  // the bubble
    // Hermite derivative columns hold dN/dxi and d2N/dxi2: with x and y
    // picking out nodes m and n, det = N_m' N_n'' - N_n' N_m''.
    for (auto [m, n, det] : {std::tuple{1, 2, 0.00390625f}, {3, 4, 5.0625f}, {5, 6, 0.73828125f}}) {
        MembraneCall c(sixNodeTriangle(), kRotated);
        c.ntype = 4;
        for (int k = 1; k <= 6; ++k) c.geo.xy(k, 1) = k == m, c.geo.xy(k, 2) = k == n;
        EXPECT_EQ(c.onePoint(0.5f, 0.5f, 1.0f).run().detj, det) << m << "," << n;
    }
    // Family codes 1 and 2 are the same element; an unknown family has no
    // shape functions: zero thickness, zero determinant.
    MembraneCall one(distortedQuad(8), kRotated), two = one, unknown = one;
    two.ntype = 2, unknown.ntype = 5;
    EXPECT_TRUE(same_bits(one.run().estif, two.run().estif));
    EXPECT_EQ(unknown.onePoint(0.0f, 0.0f, 1.0f).run().detj, -1.0f);
    EXPECT_EQ(unknown.thickness(), 0.0f);
}

TEST(MembraneElement, UnitTriangleEntriesRoundAsTheElementMustRound) {
    // Node 1's column of B is (1, 0, 0), node 3's u and v columns are
    // (-1, 0, -1) and (0, -1, -1). So ESTIF(1,1), (2,1), (4,1), (4,3) are s
    // times D(1,1), D(3,1), D(2,1), D(2,3), the material formed from its
    // upper triangle (at 123 degrees apart from the stand-alone routine's
    // lower one), and ESTIF(m, 5) = (E0 + BD(m,1) g1) + BD(m,3) g3 with
    // g = s B(5, :): each component added in turn onto the host's entry.
    const Material m = turned(kOrtho, 123.0f);
    MembraneCall c = unitTriangle(m, 0.5f);
    const float e55 = 1234.567f, e65 = -89.0123f, s = 0.25f;
    c.estif(5, 5) = e55, c.estif(6, 5) = e65;
    c.run();
    ASSERT_EQ(c.detj, 1.0f);
    ASSERT_EQ(c.thickness(), 0.5f);
    const Single3 up = singlePrecisionMaterial(m, true), low = singlePrecisionMaterial(m, false);
    ASSERT_NE(up.d[1][2], low.d[1][2]);
    EXPECT_EQ(c.estif(1, 1), up.d[1][1] * s);
    EXPECT_EQ(c.estif(2, 1), up.d[1][3] * s);
    EXPECT_EQ(c.estif(4, 1), up.d[1][2] * s);
    EXPECT_EQ(c.estif(4, 3), up.d[2][3] * s);
    auto bd = [&](int row, int r) { return (row == 5 ? -up.d[1][r] : -up.d[2][r]) - up.d[3][r]; };
    const float want55 = (e55 + bd(5, 1) * -s) + bd(5, 3) * -s,
                want65 = (e65 + bd(6, 1) * -s) + bd(6, 3) * -s;
    EXPECT_EQ(c.estif(5, 5), want55);
    EXPECT_EQ(c.estif(6, 5), want65);
    // Data check: adding the point's matrix entry in one piece rounds differently.
    EXPECT_TRUE(want55 != e55 + (bd(5, 1) * -s + bd(5, 3) * -s) ||
                want65 != e65 + (bd(6, 1) * -s + bd(6, 3) * -s));
    // The 0.001 rad cut applies inside the element as well.
    for (auto [theta, rotated] : {std::pair{0x1.d55df4p-5f, false}, {0x1.d55df6p-5f, true}})
        EXPECT_EQ(unitTriangle(turned(kOrtho, theta), 1.0f).run().estif(2, 1) != 0.0f, rotated) << theta;
}
