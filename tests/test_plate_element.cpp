// Plate-bending (STIFFP001DOTNET) and transverse-shear (STIFFP002DOTNET)
// element stiffness.
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// One plate element as a host holds it: element IEL = 2 of TNODE (0:3, 0:9),
// PROP (0:3, 0:17) all NaN (the rigidities come from the layer table; only
// PROP(IMAT, 3) is written), ESTIF (0:LDES, 0:LDES). Unused slots are null.
struct PlateCall {
    int32_t ngpx = 3, ngpy = 3, ntype = 1, ngpt = 5, iel = 2, ngpt2 = 11, nnode, imat = 2, ioff = 0;
    int32_t nelem = 3, nmat = 3, ldes, ndofn = 3, nnodt;
    Quadrature rule = Quadrature::gauss(3);
    Geometry geo;
    Laminate lam;
    Floats tnode{3, 9, kNaN}, prop{3, 17, kNaN}, estif;
    bool layersAsMaterial = false;  // pass the layer table as PROP as well
    float detj = kSentinel;
    PlateCall(const Geometry& g, Laminate l, float fill = 0.0f)
        : nnode(g.nnode), ldes(3 * g.nnode), nnodt(g.nnode), geo(g), lam(std::move(l)),
          estif(ldes, ldes, fill) {
        for (int k = 1; k <= nnode; ++k) tnode(iel, k) = 0.3f;
    }
    PlateCall& run(bool shearing) {
        float *mat = layersAsMaterial ? lam.prop.ptr() : prop.ptr(), *gp = rule.gpos.ptr(),
              *gw = rule.gwei.ptr();
        if (shearing)
            STIFFP002DOTNET(&ngpx, &ngpy, &ntype, gp, &ngpt, &iel, &nnode, geo.xy.ptr(), tnode.ptr(),
                            nullptr, &imat, mat, &ioff, estif.ptr(), gw, nullptr, &nelem, &nmat, &ldes,
                            &ndofn, &nnodt, lam.prop.ptr(), lam.zlay.ptr(), &lam.nlay, &detj);
        else
            STIFFP001DOTNET(&ngpx, &ngpy, &ntype, gp, &ngpt, &iel, &ngpt2, nullptr, &nnode, geo.xy.ptr(),
                            tnode.ptr(), nullptr, &imat, mat, &ioff, estif.ptr(), gw, nullptr, nullptr,
                            &nelem, &nmat, &ldes, &ndofn, &nnodt, lam.prop.ptr(), lam.zlay.ptr(),
                            &lam.nlay, &detj);
        return *this;
    }
    // Full element: bending on the 3 x 3 rule, then shear on the 2 x 2 rule.
    PlateCall& both() {
        run(false);
        rule = Quadrature::gauss(2);
        ngpx = ngpy = 2;
        return run(true);
    }
    int dof(int n, int c) const { return ioff + c + ndofn * (n - 1); }
    float& k(int nj, int r, int ni, int c) { return estif(dof(nj, r), dof(ni, c)); }
};

// Two rotated layers; column 1 above column 8 keeps the layer coupling
// E8 nu21 / den, and so the bending rigidity, positive definite.
const Laminate kCrossed({{30000.0f, 0.3f, 12000.0f, 5000.0f, 3000.0f, 2000.0f, 30.0f},
                         {30000.0f, 0.3f, 12000.0f, 5000.0f, 2900.0f, 2300.0f, -60.0f}},
                        {-0.15f, 0.0f, 0.15f});
Laminate slab() { return isotropicPlate(30000.0f, 0.2f, 0.3f, 2); }

// The rigidities the routines must use: bending D (0:3, 0:3), shear S (0:2, 0:2).
std::pair<Floats, Floats> rigidities(const Laminate& lam) {
    Floats d{3, 3, 0.0f}, s{2, 2, 0.0f};
    int32_t one = 1, zero = 0;
    MODPBDLLDOTNET(d.ptr(), s.ptr(), &one, &zero, lam.prop.ptr(), lam.zlay.ptr(), &lam.nlay);
    MODPBDLLDOTNET(d.ptr(), s.ptr(), &zero, &one, lam.prop.ptr(), lam.zlay.ptr(), &lam.nlay);
    return {d, s};
}

}  // namespace

TEST(PlateElement, CentrePointEntriesFollowTheStrainVectors) {
    // One point at the centre of the side-2 square, weight 4, det = 1. Corner
    // derivatives vanish there, mid-side ones are +-1/2, and N = 1/2 at
    // mid-sides, -1/4 at corners: every entry is a rigidity times a power of
    // 2. Node 2 at (0, -1) has dN/dy = -1/2, node 4 at (1, 0) dN/dx = 1/2.
    const Laminate ply({kPly}, {-0.1f, 0.15f});
    const auto [d, s] = rigidities(ply);
    ASSERT_TRUE(d(1, 1) != d(2, 2) && s(1, 1) != s(2, 2));
    struct Entry {
        int nj, r, ni, c;
        float want;
    };
    const std::vector<Entry> entries[2] = {
        {{2, 2, 2, 2, d(1, 1)}, {2, 3, 2, 3, d(3, 3)}, {4, 2, 4, 2, d(3, 3)}, {4, 3, 4, 3, d(2, 2)},
         {4, 3, 2, 2, d(1, 2)}, {4, 2, 2, 3, d(3, 3)}, {2, 3, 2, 2, 0}, {1, 2, 1, 2, 0}},
        {{2, 1, 2, 1, s(1, 1)}, {2, 2, 2, 1, s(1, 1)}, {2, 2, 2, 2, s(1, 1)}, {2, 3, 2, 3, s(2, 2)},
         {4, 1, 4, 1, s(2, 2)}, {4, 3, 4, 1, s(2, 2)}, {4, 3, 2, 3, s(2, 2)},
         {1, 2, 1, 2, 0.25f * s(1, 1)}, {1, 3, 1, 3, 0.25f * s(2, 2)}, {1, 1, 1, 1, 0}}};
    for (int shearing = 0; shearing <= 1; ++shearing) {
        PlateCall c(squareQuad(2.0f), ply);
        c.rule.line({0.0f}, {2.0f});
        c.ngpx = c.ngpy = 1;
        c.run(shearing);
        EXPECT_EQ(c.detj, 1.0f);
        EXPECT_EQ(c.ngpt, 5 + 1);
        EXPECT_EQ(c.ngpt2, 11 + !shearing);  // counted by the bending routine alone
        EXPECT_FLOAT_EQ(c.prop(2, 3), 0.3f);
        for (const Entry& e : entries[shearing])
            EXPECT_EQ(c.k(e.nj, e.r, e.ni, e.c), e.want) << e.nj << e.r << e.ni << e.c;
        for (int n = 1; n <= 8 && !shearing; ++n)  // bending leaves the displacement alone
            for (int m = 1; m <= c.ldes; ++m)
                EXPECT_TRUE(c.estif(m, c.dof(n, 1)) == 0 && c.estif(c.dof(n, 1), m) == 0);
    }
}

TEST(PlateElement, PointEntriesRoundInSinglePrecision) {
    // Unit right triangle, one point of weight 0.37: f = 0.37 and node 3 has
    // dN/dx = dN/dy = -1, N = 1/2. Every entry of its block, both triangles,
    // is E0 + f K, K = g_c . (D g_r) summed left to right in single
    // precision. (For these data f K and (f g_c) . (D g_r) round apart.)
    const auto [d, s] = rigidities(kCrossed);
    const float g[2][3][3] = {{{0, 0, 0}, {1, 0, -1}, {0, -1, 1}},  // curvatures of node 3's triple
                              {{-1, 1}, {-0.5f, 0}, {0, -0.5f}}};   // its shear strains
    for (int shearing = 0; shearing <= 1; ++shearing) {
        const Floats& m = shearing ? s : d;
        const int nc = 3 - shearing;
        PlateCall c(rightTriangle(1.0f, 1.0f), kCrossed);
        c.ntype = 6, c.ngpx = c.ngpy = 1;
        c.rule.triangle({0.25f, 0.25f}, {0.37f});
        for (int r = 1; r <= 3; ++r)
            for (int q = 1; q <= 3; ++q) c.k(3, r, 3, q) = 1.1f;
        ASSERT_EQ(c.run(shearing).detj, 1.0f);
        for (int r = 1; r <= 3; ++r)
            for (int q = 1; q <= 3; ++q) {
                const float *gr = g[shearing][r - 1], *gc = g[shearing][q - 1];
                float p[3], k = 0;
                for (int i = 0; i < nc; ++i) {
                    p[i] = m(i + 1, 1) * gr[0];
                    for (int j = 1; j < nc; ++j) p[i] = p[i] + m(i + 1, j + 1) * gr[j];
                    k = i ? k + gc[i] * p[i] : gc[0] * p[0];
                }
                EXPECT_EQ(c.k(3, r, 3, q), 1.1f + 0.37f * k) << shearing << r << q;
            }
    }
}

#ifdef SHELLFE_HAVE_EIGEN
TEST(PlateElement, BendingPlusReducedShearHasOnlyTheRigidBodyModes) {
    // Both strain vectors vanish for theta2 = dw/dy, theta3 = -dw/dx:
    // w = 1; w = y, theta2 = 1; w = x, theta3 = -1.
    for (const Geometry& g : {squareQuad(2.0f), distortedQuad(8)}) {
        const Eigen::MatrixXd k = symmetricFromLower(PlateCall(g, kCrossed).both().estif, 24);
        double gap;
        EXPECT_EQ(zeroEnergyModes(k, 1e-6, &gap), 3);
        EXPECT_GT(gap, 1e-4);
        auto energy = [&](double w0, double wx, double wy, double t2, double t3) {
            Eigen::VectorXd v(24);
            for (int n = 1; n <= 8; ++n)
                v(3 * n - 3) = w0 + wx * g.x(n) + wy * g.y(n), v(3 * n - 2) = t2, v(3 * n - 1) = t3;
            return (k * v).norm() / (k.diagonal().maxCoeff() * v.norm());
        };
        EXPECT_LT(energy(1, 0, 0, 0, 0), 1e-6);
        EXPECT_LT(energy(0, 0, 1, 1, 0), 1e-6);
        EXPECT_LT(energy(0, 1, 0, 0, -1), 1e-6);
        EXPECT_GT(energy(0, 1, 0, 0, 1), 1e-3);
        EXPECT_GT(energy(0, 0, 1, -1, 0), 1e-3);
    }
}
#endif

TEST(PlateElement, DegeneratePointAbandonsTheElement) {
    // A point below det = 1.0e-7, compared in single precision, stops both
    // routines: DETJ = -1, the point counted, nothing added, no thickness
    // written. Without points (NGPX or NGPY <= 0) nothing at all changes.
    const struct {
        Geometry g;
        int ntype, ngpx, ngpy;
        float detj;  // of the first point; kSentinel: no point at all
    } cases[] = {{squareQuad(2.0f, 8, true), 1, 3, 3, -1.0f},  // clockwise
                 {squareQuad(2.0f), 5, 3, 3, -1.0f},           // unknown family, det = 0
                 {squareQuad(2.0f), 1, 0, 2, kSentinel},
                 {squareQuad(2.0f), 1, 2, 0, kSentinel},
                 {squareQuad(2.0f), 1, -3, 2, kSentinel},
                 {rightTriangle(1.0e-7f, 1.0f), 6, 1, 1, 1.0e-7f},
                 {rightTriangle(0x1.5798eep-24f, 1.25f), 6, 1, 1, 1.0e-7f},  // below it in double only
                 {rightTriangle(0x1.5798ecp-24f, 1.25f), 6, 1, 1, -1.0f},
                 {rightTriangle(std::nextafter(1.0e-7f, 0.0f), 1.0f), 6, 1, 1, -1.0f}};
    for (int shearing = 0; shearing <= 1; ++shearing)
        for (const auto& k : cases) {
            PlateCall c(k.g, slab(), kSentinel);
            c.ntype = k.ntype, c.ngpx = k.ngpx, c.ngpy = k.ngpy;
            c.run(shearing);
            const bool points = k.detj != kSentinel, integrated = k.detj > 0;
            EXPECT_EQ(c.detj, k.detj) << k.g.x(1);
            EXPECT_EQ(c.ngpt, 5 + points);
            EXPECT_EQ(c.ngpt2, 11 + (points && !shearing));
            EXPECT_NE(std::isnan(c.prop(2, 3)), integrated);
            EXPECT_NE(all_bits(c.estif, kSentinel), integrated) << k.g.x(1);
        }
    // A trapezoid whose map folds beyond eta = 1.5 (det = 0.6 - 0.4 eta),
    // points (0, 0) then (0, 2): the first point's contribution stays and
    // PROP(IMAT, 3) holds that point's thickness, the last one processed.
    const Geometry trapezoid =
        withMidsides({{-1.0f, -1.0f}, {1.0f, -1.0f}, {0.2f, 1.0f}, {-0.2f, 1.0f}});
    for (int shearing = 0; shearing <= 1; ++shearing) {
        PlateCall once(trapezoid, slab()), folded(trapezoid, slab());
        for (int k = 1; k <= 8; ++k)
            once.tnode(2, k) = folded.tnode(2, k) = 0.2f + 0.1f * kQuadNodes[k][1];
        once.rule.line({0.0f}, {2.0f});
        folded.rule.line({0.0f, 2.0f}, {2.0f, 1.0f});
        once.ngpx = once.ngpy = folded.ngpx = 1;
        folded.ngpy = 2;
        once.run(shearing), folded.run(shearing);
        EXPECT_FLOAT_EQ(once.detj, 0.6f);
        EXPECT_EQ(folded.detj, -1.0f);
        EXPECT_EQ(folded.ngpt, 5 + 2);
        EXPECT_TRUE(same_bits(folded.estif, once.estif));
        EXPECT_FLOAT_EQ(folded.prop(2, 3), 0.2f);
    }
}

TEST(PlateElement, OffsetTripleInsideWideNodeBlocks) {
    // IOFF = 2, NDOFN = 6: the triple takes degrees of freedom 3, 4, 5 of each
    // block, entries equal the compact layout's bit for bit, all nine of a
    // block are written (diagonal blocks come out symmetric), nothing else.
    PlateCall compact(distortedQuad(8), slab()), wide(distortedQuad(8), slab());
    wide.ioff = 2, wide.ndofn = 6, wide.ldes = 48;
    wide.estif = Floats{48, 48, kSentinel};
    auto eachEntry = [](auto f) {
        for (int nj = 1; nj <= 8; ++nj)
            for (int ni = 1; ni <= nj; ++ni)
                for (int r = 1; r <= 3; ++r)
                    for (int c = 1; c <= 3; ++c) f(nj, r, ni, c);
    };
    eachEntry([&](int nj, int r, int ni, int c) { wide.k(nj, r, ni, c) = 0.0f; });
    const Floats zeroed = wide.estif;
    compact.both(), wide.both();
    eachEntry([&](int nj, int r, int ni, int c) {
        EXPECT_TRUE(same_bits(wide.k(nj, r, ni, c), compact.k(nj, r, ni, c))) << nj << r << ni << c;
        const float scale = std::sqrt(std::fabs(wide.k(nj, r, nj, r) * wide.k(nj, c, nj, c)));
        if (nj == ni) {
            EXPECT_NEAR(wide.k(nj, r, nj, c), wide.k(nj, c, nj, r), 1e-5f * scale) << nj << r << c;
        }
    });
    for (int m = 0; m <= 48; ++m)
        for (int c = 0; c <= 48; ++c)
            if (zeroed(m, c) == kSentinel) {
                EXPECT_EQ(wide.estif(m, c), kSentinel) << m << "," << c;
            }
}

TEST(PlateElement, NinthNodeGetsStiffnessWithoutEnteringTheGeometry) {
    PlateCall c(squareQuad(2.0f, 9), slab()), moved(squareQuad(2.0f, 9), slab());
    moved.geo.xy(9, 1) = 0.7f, moved.geo.xy(9, 2) = -0.4f;
    for (PlateCall* p : {&c, &moved}) {
        p->run(false);
        EXPECT_GT(p->k(9, 2, 9, 2), 0.0f);
        EXPECT_EQ(p->k(9, 1, 9, 1), 0.0f);
        EXPECT_GT(p->run(true).k(9, 1, 9, 1), 0.0f);
    }
    EXPECT_TRUE(same_bits(moved.detj, c.detj));
    EXPECT_TRUE(same_bits(moved.estif, c.estif));
}

TEST(PlateElement, LayerTableMayBeTheMaterialTable) {
    // One table as PROP (IMAT = 1) and as the layer table: the thickness
    // written into column 3 decides, at every point, the first included,
    // whether the two rows are identical and take the closed form. The
    // nodal thicknesses are 0, so exactly 0 is written. (Transverse moduli
    // other than E/2(1 + nu) make the shear closed form differ from the
    // layered sum too.)
    Layer iso = isotropicLayer(30000.0f, 0.2f);
    iso.g10 = iso.g11 = 9000.0f;
    const Laminate equal({iso, iso}, {0.0f, 0.1f, 0.3f});
    Laminate unequal = equal;
    unequal.prop(1, 3) = 1.0f;
    for (int shearing = 0; shearing <= 1; ++shearing) {
        PlateCall closed(squareQuad(2.0f), equal), layered(squareQuad(2.0f), unequal);
        closed.run(shearing), layered.run(shearing);
        ASSERT_FALSE(same_bits(closed.estif, layered.estif));
        // Rows equal on entry differ once written; rows differing only in
        // row 1's column 3 become equal.
        for (auto [row1, row2] : {std::pair{0.5f, 0.5f}, {1.0f, 0.0f}}) {
            PlateCall aliased(squareQuad(2.0f), equal);
            aliased.lam.prop(1, 3) = row1, aliased.lam.prop(2, 3) = row2;
            aliased.layersAsMaterial = true, aliased.imat = 1, aliased.nmat = 2;
            for (int k = 1; k <= 8; ++k) aliased.tnode(2, k) = 0.0f;
            aliased.run(shearing);
            EXPECT_EQ(aliased.lam.prop(1, 3), 0.0f);
            EXPECT_TRUE(same_bits(aliased.estif, (row2 == 0.0f ? closed : layered).estif))
                << shearing << row1;
        }
    }
}
