// Isoparametric membrane element stiffness (STIFFP003DOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// One host call: element IEL = 2 of TNODE (0:3, 0:9), material row IMAT = 2
// of PROP (0:3, 0:17), ESTIF (0:18, 0:18). Unused slots are passed as null.
struct MembraneCall {
    int32_t ngpx = 3, ngpy = 3, ntype = 1, ngpt = 5, iel = 2, nnode, imat = 2, nelem = 3, nmat = 3;
    int32_t nnodt;
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
        STIFFP003DOTNET(&ngpx, &ngpy, &ntype, rule.gpos.data(), &ngpt, &iel, &nnode, geo.xy.data(),
                        tnode.data(), nullptr, &imat, prop.data(), rule.gwei.data(), nullptr, &nelem,
                        &nmat, nullptr, nullptr, &nnodt, estif.data(), &detj);
        return *this;
    }
    float thickness() const { return prop(imat, 3); }
    // One point (xi, eta) of weight w, on whichever row the family reads.
    void onePoint(float xi, float eta, float w) {
        ngpx = ngpy = 1;
        rule.line({xi}, {std::sqrt(w)});
        rule.triangle({xi, eta}, {w});
    }
};

const Material kRotated = {30000.0f, 0.3f, 12000.0f, 5000.0f, 30.0f};

// Unit right triangle x = xi, y = eta, unit thickness, one point of weight
// 1/2 at (1/4, 1/4): B holds only 0 and +-1 and s = f t = 1/2.
MembraneCall unitTriangle(const Material& m, float thickness = 1.0f) {
    MembraneCall c(rightTriangle(1.0f, 1.0f), m, thickness);
    c.onePoint(0.25f, 0.25f, 0.5f);
    return c;
}

#ifdef SHELLFE_HAVE_EIGEN
std::vector<int> dofs(const MembraneCall& c) {
    std::vector<int> d(2 * c.nnode);
    for (int i = 0; i < 2 * c.nnode; ++i) d[i] = i + 1;
    return d;
}
// K u for the nodal values of a displacement field (u, v)(x, y).
using Field = std::function<std::array<double, 2>(double, double)>;
Eigen::VectorXd apply(const MembraneCall& c, const Field& field) {
    Eigen::VectorXd u(2 * c.nnode);
    for (int k = 1; k <= c.nnode; ++k) {
        const auto uv = field(c.geo.x(k), c.geo.y(k));
        u(2 * k - 2) = uv[0], u(2 * k - 1) = uv[1];
    }
    return symmetricFromLower(c.estif, dofs(c)) * u;
}
#endif

}  // namespace

#ifdef SHELLFE_HAVE_EIGEN
TEST(MembraneElement, ExactlyTheThreeRigidBodyModes) {
    for (const Geometry& g : {squareQuad(2.0f), distortedQuad(8), sixNodeTriangle()}) {
        MembraneCall c(g, kRotated), code2(g, kRotated);
        c.run();
        if (g.nnode == 8) {  // family codes 1 and 2 are the same element
            code2.ntype = 2;
            EXPECT_TRUE(code2.run().estif.sameBits(c.estif));
        }
        const Eigen::MatrixXd k = symmetricFromLower(c.estif, dofs(c));
        double gap;
        EXPECT_EQ(zeroEnergyModes(k, 1e-6, &gap), 3) << g.nnode;
        EXPECT_GT(gap, 1e-3);
        const double tol = 1e-5 * k.diagonal().maxCoeff();
        EXPECT_LT(apply(c, [](double, double) { return std::array{1.0, 0.0}; }).norm(), tol);
        EXPECT_LT(apply(c, [](double, double) { return std::array{0.0, 1.0}; }).norm(), tol);
        EXPECT_LT(apply(c, [](double x, double y) { return std::array{-y, x}; }).norm(), tol);
    }
}

TEST(MembraneElement, ConstantStrainPatchTest) {
    // A linear displacement field gives nodal forces equal to the consistent
    // loads of its constant boundary tractions: on a straight quadratic edge
    // 1/6, 2/3, 1/6 of the edge's resultant.
    const double e[3] = {1e-3, -4e-4, 7e-4};  // eps_x, eps_y, gamma_xy
    const Mat3 d = membraneReference(kRotated);
    double sig[3];
    for (int i = 0; i < 3; ++i) sig[i] = d.a[i][0] * e[0] + d.a[i][1] * e[1] + d.a[i][2] * e[2];
    for (const Geometry& g : {distortedQuad(8), sixNodeTriangle()}) {
        MembraneCall c(g, kRotated, 0.25f);
        c.run();
        const int corners = g.nnode / 2;
        Eigen::VectorXd f = Eigen::VectorXd::Zero(g.nnode * 2);
        for (int i = 0; i < corners; ++i) {
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

TEST(MembraneElement, NinthNodeIsABubbleOutsideTheGeometry) {
    MembraneCall c(distortedQuad(9), kRotated), moved(distortedQuad(9), kRotated);
    moved.geo.xy(9, 1) = 40.0f, moved.geo.xy(9, 2) = -7.0f;
    c.run(), moved.run();
    EXPECT_EQ(bits(moved.detj), bits(c.detj));
    EXPECT_TRUE(moved.estif.sameBits(c.estif));
    EXPECT_GT(c.estif(17, 17), 0.0f);
    EXPECT_GT(c.estif(18, 18), 0.0f);
    // The eight serendipity functions are not corrected for the bubble: a
    // translation of nodes 1 to 8 alone is strain-free, one with node 9 is not.
    const Eigen::MatrixXd k = symmetricFromLower(c.estif, dofs(c));
    Eigen::VectorXd u = Eigen::VectorXd::Zero(18);
    for (int n = 0; n < 8; ++n) u(2 * n) = 1.0;
    EXPECT_LT((k * u).norm(), 1e-5 * k(16, 16));
    u(16) = 1.0;
    EXPECT_GT((k * u).norm(), 1e-2 * k(16, 16));
}
#endif

TEST(MembraneElement, ClockwiseElementIsIntegratedWithMinusOne) {
    // Side 4: det = a^2/4 = 4 counter-clockwise (exact at dyadic abscissae),
    // -4 clockwise, replaced by -1. With x
    // mirrored every u degree of freedom changes sign, so the clockwise matrix
    // is exactly -1/4 of the other, signs flipped between u and v.
    MembraneCall ccw(squareQuad(4.0f), isotropic(21000.0f, 0.25f));
    MembraneCall cw(squareQuad(4.0f, 8, true), isotropic(21000.0f, 0.25f));
    for (MembraneCall* c : {&ccw, &cw}) {
        c->rule.line({-0.5f, 0.5f}, {1.0f, 1.0f});
        c->ngpx = c->ngpy = 2;
        c->run();
    }
    EXPECT_EQ(ccw.detj, 4.0f);
    EXPECT_EQ(cw.detj, -1.0f);
    for (int m = 1; m <= 16; ++m)
        for (int k = 1; k <= m; ++k)
            EXPECT_EQ(cw.estif(m, k), (m % 2 == k % 2 ? -0.25f : 0.25f) * ccw.estif(m, k)) << m << k;
}

TEST(MembraneElement, DegenerateDeterminantCutInSinglePrecision) {
    // det = a b exactly in double; the cut compares it after rounding to single.
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
        c.run();
        EXPECT_EQ(c.detj, k.detj) << k.a;
        EXPECT_EQ(c.estif(1, 1) < 0, k.detj < 0) << k.a;  // flagged points still count, times -1
        EXPECT_NE(c.estif(1, 1), 0.0f);
    }
}

TEST(MembraneElement, WritesOnlyTheLowerTriangleOfItsDegreesOfFreedom) {
    MembraneCall c(sixNodeTriangle(), kRotated);
    c.estif = Floats{18, 18, kSentinel};
    for (int m = 1; m <= 12; ++m)
        for (int k = 1; k <= m; ++k) c.estif(m, k) = 0.0f;
    c.run();
    for (int m = 0; m <= 18; ++m)
        for (int k = 0; k <= 18; ++k) {
            if (k < 1 || k > m || m > 12) {
                EXPECT_EQ(c.estif(m, k), kSentinel) << m << "," << k;
            } else if (k == m) {
                EXPECT_GT(c.estif(m, k), 0.0f);
            }
        }
}

TEST(MembraneElement, TrianglePointsAreRepeatedPerOuterPass) {
    // NGPX = 2 adds every triangle point twice, as two calls do, bit for bit.
    MembraneCall twice(sixNodeTriangle(), kRotated);
    for (int k = 1; k <= 6; ++k) twice.tnode(2, k) = 0.1f + 0.03f * float(k);
    MembraneCall once = twice;
    twice.ngpx = 2;
    twice.run(), once.run(), once.run();
    EXPECT_EQ(twice.ngpt, 5 + 6);
    EXPECT_TRUE(once.estif.sameBits(twice.estif));
}

TEST(MembraneElement, NoPointsChangeNothing) {
    for (auto [nx, ny] : {std::pair{0, 3}, {3, 0}, {-1, 2}}) {
        MembraneCall c(distortedQuad(8), kRotated);
        c.estif = Floats{18, 18, kSentinel};
        c.ngpx = nx, c.ngpy = ny;
        c.run();
        EXPECT_EQ(c.ngpt, 5);
        EXPECT_EQ(c.detj, kSentinel);
        EXPECT_TRUE(c.estif.sameBits(Floats{18, 18, kSentinel}));
        EXPECT_TRUE(c.prop.sameBits(materialTable(2, kRotated)));
    }
}

TEST(MembraneElement, ThicknessColumnHoldsTheLastPoint) {
    // Thickness linear in (xi, eta), a 2 x 3 rule with distinct abscissae:
    // the last point is (GPOS(1,2), GPOS(1,3)). Only NNODT nodes enter.
    MembraneCall c(squareQuad(2.0f), kRotated);
    c.rule.line({-0.5f, 0.25f, 0.75f}, {0.5f, 1.0f, 0.5f});
    c.ngpx = 2;
    for (int k = 1; k <= 8; ++k) c.tnode(2, k) = 1 + 0.5f * kQuadNodes[k][0] + 0.25f * kQuadNodes[k][1];
    c.run();
    EXPECT_FLOAT_EQ(c.thickness(), 1.0f + 0.5f * 0.25f + 0.25f * 0.75f);
    // N = -3/32, 15/128, -15/128 at nodes 1 to 3; thicknesses 1/4, 3/4, 5/4.
    c.nnodt = 3;
    c.run();
    EXPECT_FLOAT_EQ(c.thickness(), -0.08203125f);
}

TEST(MembraneElement, ShapeFunctionFamilies) {
    // With TNODE(IEL, k) = 1 for one k only, PROP(IMAT, 3) is N_k at the point.
    auto value = [](const Geometry& g, int ntype, float xi, float eta, int k) {
        MembraneCall c(g, kRotated);
        c.ntype = ntype;
        c.onePoint(xi, eta, 0.5f);
        for (int i = 1; i <= g.nnode; ++i) c.tnode(2, i) = i == k ? 1.0f : 0.0f;
        return c.run().thickness();
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
        c.onePoint(0.5f, 0.5f, 1.0f);
        for (int k = 1; k <= 6; ++k) c.geo.xy(k, 1) = k == m, c.geo.xy(k, 2) = k == n;
        EXPECT_EQ(c.run().detj, det) << m << "," << n;
    }
    // An unknown family has no shape functions: zero thickness, zero determinant.
    MembraneCall c(squareQuad(2.0f), kRotated);
    c.ntype = 5;
    c.onePoint(0.0f, 0.0f, 1.0f);
    c.run();
    EXPECT_EQ(c.detj, -1.0f);
    EXPECT_EQ(c.thickness(), 0.0f);
}

TEST(MembraneElement, MaterialIsFormedFromItsUpperTriangle) {
    // In the unit triangle ESTIF(1,1), (2,1), (4,1), (4,3) are D(1,1),
    // D(3,1), D(2,1), D(2,3) halved, exactly. At 123 degrees the element's
    // upper-triangle formation rounds apart from the stand-alone routine's.
    Material m = kOrtho;
    m.theta = 123.0f;
    MembraneCall c = unitTriangle(m);
    c.run();
    ASSERT_EQ(c.detj, 1.0f);
    ASSERT_EQ(c.thickness(), 1.0f);
    const Single3 up = singlePrecisionMaterial(m, true), low = singlePrecisionMaterial(m, false);
    EXPECT_EQ(c.estif(1, 1), 0.5f * up.d[1][1]);
    EXPECT_EQ(c.estif(2, 1), 0.5f * up.d[1][3]);
    EXPECT_EQ(c.estif(4, 1), 0.5f * up.d[1][2]);
    EXPECT_EQ(c.estif(4, 3), 0.5f * up.d[2][3]);
    EXPECT_NE(up.d[1][2], low.d[1][2]);
    // The 0.001 rad cut applies inside the element as well.
    for (auto [theta, rotated] : {std::pair{0x1.d55df4p-5f, false}, {0x1.d55df6p-5f, true}}) {
        m.theta = theta;
        EXPECT_EQ(unitTriangle(m).run().estif(2, 1) != 0.0f, rotated) << theta;
    }
}

TEST(MembraneElement, EachComponentIsAddedToWhatTheHostLeft) {
    // Node 3 of the unit triangle has B rows (-1, 0, -1) and (0, -1, -1):
    // ESTIF(m, 5) = (E0 + BD(m,1) g1) + BD(m,3) g3 with g = s B(5, :), each
    // component added in turn onto the host's entry.
    Material m = kOrtho;
    m.theta = 37.5f;
    MembraneCall c = unitTriangle(m, 0.3f);
    const float e55 = 1234.567f, e65 = -89.0123f;
    c.estif(5, 5) = e55, c.estif(6, 5) = e65;
    c.run();
    const Single3 d = singlePrecisionMaterial(m, true);
    const float g = 0.5f * c.thickness() * -1.0f;
    auto bd = [&](int row, int r) { return (row == 5 ? -d.d[1][r] : -d.d[2][r]) - d.d[3][r]; };
    const float want55 = (e55 + bd(5, 1) * g) + bd(5, 3) * g;
    const float want65 = (e65 + bd(6, 1) * g) + bd(6, 3) * g;
    EXPECT_EQ(c.estif(5, 5), want55);
    EXPECT_EQ(c.estif(6, 5), want65);
    // Data check: adding the point's matrix entry in one piece rounds differently.
    EXPECT_TRUE(want55 != e55 + (bd(5, 1) * g + bd(5, 3) * g) ||
                want65 != e65 + (bd(6, 1) * g + bd(6, 3) * g));
}
