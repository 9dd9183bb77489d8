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
    float* material() {
        if (layersAsMaterial) nmat = lam.nlay;
        return layersAsMaterial ? lam.prop.data() : prop.data();
    }
    PlateCall& bend() {
        float* mat = material();
        STIFFP001DOTNET(&ngpx, &ngpy, &ntype, rule.gpos.data(), &ngpt, &iel, &ngpt2, nullptr, &nnode,
                        geo.xy.data(), tnode.data(), nullptr, &imat, mat, &ioff, estif.data(),
                        rule.gwei.data(), nullptr, nullptr, &nelem, &nmat, &ldes, &ndofn, &nnodt,
                        lam.prop.data(), lam.zlay.data(), &lam.nlay, &detj);
        return *this;
    }
    PlateCall& shear() {
        float* mat = material();
        STIFFP002DOTNET(&ngpx, &ngpy, &ntype, rule.gpos.data(), &ngpt, &iel, &nnode, geo.xy.data(),
                        tnode.data(), nullptr, &imat, mat, &ioff, estif.data(), rule.gwei.data(), nullptr,
                        &nelem, &nmat, &ldes, &ndofn, &nnodt, lam.prop.data(), lam.zlay.data(), &lam.nlay,
                        &detj);
        return *this;
    }
    PlateCall& run(bool shearing) { return shearing ? shear() : bend(); }
    // Full element: bending on the 3 x 3 rule, then shear on the 2 x 2 rule.
    PlateCall& both() {
        bend();
        rule = Quadrature::gauss(2);
        ngpx = ngpy = 2;
        return shear();
    }
    int dof(int n, int c) const { return ioff + c + ndofn * (n - 1); }
    float& k(int nj, int r, int ni, int c) { return estif(dof(nj, r), dof(ni, c)); }
};

const Layer kPly{12000.0f, 0.3f, 30000.0f, 5000.0f, 3000.0f, 2000.0f, 0.0f};
// Two rotated layers; column 1 above column 8 keeps the layer coupling
// E8 nu21 / den, and so the bending rigidity, positive definite.
const Laminate kCrossed({{30000.0f, 0.3f, 12000.0f, 5000.0f, 3000.0f, 2000.0f, 30.0f},
                         {30000.0f, 0.3f, 12000.0f, 5000.0f, 2900.0f, 2300.0f, -60.0f}},
                        {-0.15f, 0.0f, 0.15f});
Laminate slab() { return isotropicPlate(30000.0f, 0.2f, 0.3f, 2); }

// The rigidities the routines must use: bending D (0:3, 0:3), shear S (0:2, 0:2).
std::pair<Floats, Floats> rigidities(Laminate lam) {
    Floats d{3, 3, 0.0f}, s{2, 2, 0.0f};
    int32_t one = 1, zero = 0;
    MODPBDLLDOTNET(d.data(), s.data(), &one, &zero, lam.prop.data(), lam.zlay.data(), &lam.nlay);
    MODPBDLLDOTNET(d.data(), s.data(), &zero, &one, lam.prop.data(), lam.zlay.data(), &lam.nlay);
    return {d, s};
}

}  // namespace

TEST(PlateElement, BendingLeavesTheDisplacementRowsAsTheyWere) {
    // Side-2 square, 2 x 2 points of weight 1: det = 1 at every point.
    PlateCall c(squareQuad(2.0f), slab(), kSentinel);
    c.rule = Quadrature::gauss(2);
    c.ngpx = c.ngpy = 2;
    c.bend();
    EXPECT_FLOAT_EQ(c.detj, 1.0f);
    EXPECT_EQ(c.ngpt, 5 + 4);
    EXPECT_EQ(c.ngpt2, 11 + 4);
    EXPECT_FLOAT_EQ(c.prop(2, 3), 0.3f);
    for (int n = 1; n <= 8; ++n)
        for (int m = 1; m <= c.ldes; ++m)
            EXPECT_TRUE(c.estif(m, c.dof(n, 1)) == kSentinel && c.estif(c.dof(n, 1), m) == kSentinel)
                << n << "," << m;
    EXPECT_TRUE(std::isfinite(c.k(5, 2, 5, 2)) && c.k(5, 2, 5, 2) != kSentinel);
}

TEST(PlateElement, CentrePointEntriesFollowTheStrainVectors) {
    // One point at the centre of the side-2 square, weight 4. Corner
    // derivatives vanish there, mid-side ones are +-1/2 and N = 1/2 at
    // mid-sides, -1/4 at corners: every entry is a rigidity times a power of 2.
    const Laminate ply({kPly}, {-0.1f, 0.15f});
    const auto [d, s] = rigidities(ply);
    ASSERT_TRUE(d(1, 1) != d(2, 2) && s(1, 1) != s(2, 2));
    PlateCall c(squareQuad(2.0f), ply);
    c.rule.line({0.0f}, {2.0f});
    c.ngpx = c.ngpy = 1;
    c.bend();
    ASSERT_EQ(c.detj, 1.0f);
    // Node 2 at (0, -1): dN/dy = -1/2. Node 4 at (1, 0): dN/dx = 1/2.
    struct Entry {
        int nj, r, ni, c;
        float want;
    };
    auto expectEntries = [&](std::initializer_list<Entry> entries) {
        for (const Entry& e : entries)
            EXPECT_EQ(c.k(e.nj, e.r, e.ni, e.c), e.want) << e.nj << e.r << e.ni << e.c;
    };
    expectEntries({{2, 2, 2, 2, d(1, 1)}, {2, 3, 2, 3, d(3, 3)}, {4, 2, 4, 2, d(3, 3)},
                   {4, 3, 4, 3, d(2, 2)}, {4, 3, 2, 2, d(1, 2)}, {4, 2, 2, 3, d(3, 3)},
                   {2, 3, 2, 2, 0}, {1, 2, 1, 2, 0}, {2, 1, 2, 1, 0}});
    c.estif = Floats{c.ldes, c.ldes, 0.0f};
    c.shear();
    EXPECT_EQ(c.detj, 1.0f);
    EXPECT_EQ(c.ngpt, 5 + 2);
    EXPECT_EQ(c.ngpt2, 11 + 1);
    expectEntries({{2, 1, 2, 1, s(1, 1)}, {2, 2, 2, 1, s(1, 1)}, {2, 2, 2, 2, s(1, 1)},
                   {2, 3, 2, 3, s(2, 2)}, {4, 1, 4, 1, s(2, 2)}, {4, 3, 4, 1, s(2, 2)}, {4, 3, 2, 3, s(2, 2)},
                   {1, 2, 1, 2, 0.25f * s(1, 1)}, {1, 3, 1, 3, 0.25f * s(2, 2)}, {1, 1, 1, 1, 0}});
}

TEST(PlateElement, PointEntriesRoundInSinglePrecision) {
    // Unit right triangle, one point of weight 0.37: f = 0.37 and node 3 has
    // dN/dx = dN/dy = -1, N = 1/2. Each entry is E0 + f K, K = g_c . (D g_r)
    // summed left to right in single precision. (For these data f K and
    // (f g_c) . (D g_r) round apart.)
    const auto [d, s] = rigidities(kCrossed);
    auto entry = [](const Floats& m, int nc, const float* gc, const float* gr) {
        float p[3], k;
        for (int i = 0; i < nc; ++i) {
            p[i] = m(i + 1, 1) * gr[0];
            for (int j = 1; j < nc; ++j) p[i] = p[i] + m(i + 1, j + 1) * gr[j];
        }
        k = gc[0] * p[0];
        for (int i = 1; i < nc; ++i) k = k + gc[i] * p[i];
        return 1.1f + 0.37f * k;
    };
    const float g2[3] = {1, 0, -1}, g3[3] = {0, -1, 1};                  // curvatures of node 3's rotations
    const float h1[2] = {-1, 1}, h2[2] = {-0.5f, 0}, h3[2] = {0, -0.5f};  // its shear strains
    for (int shear = 0; shear <= 1; ++shear) {
        PlateCall c(rightTriangle(1.0f, 1.0f), kCrossed);
        c.ntype = 6, c.ngpx = c.ngpy = 1;
        c.rule.triangle({0.25f, 0.25f}, {0.37f});
        for (auto [r, q] : {std::pair{3, 2}, {3, 3}, {1, 1}, {3, 1}}) c.k(3, r, 3, q) = 1.1f;
        c.run(shear);
        ASSERT_EQ(c.detj, 1.0f);
        if (!shear) {
            EXPECT_EQ(c.k(3, 3, 3, 2), entry(d, 3, g2, g3));
            EXPECT_EQ(c.k(3, 3, 3, 3), entry(d, 3, g3, g3));
        } else {
            EXPECT_EQ(c.k(3, 1, 3, 1), entry(s, 2, h1, h1));
            EXPECT_EQ(c.k(3, 3, 3, 1), entry(s, 2, h1, h3));
            EXPECT_EQ(c.k(3, 3, 3, 2), entry(s, 2, h2, h3));
        }
    }
}

#ifdef SHELLFE_HAVE_EIGEN
TEST(PlateElement, BendingPlusReducedShearHasOnlyTheRigidBodyModes) {
    // Both strain vectors vanish for theta2 = dw/dy, theta3 = -dw/dx:
    // w = 1; w = y, theta2 = 1; w = x, theta3 = -1.
    for (const Geometry& g : {squareQuad(2.0f), distortedQuad(8)}) {
        PlateCall c(g, kCrossed);
        c.both();
        std::vector<int> dofs(24);
        for (int i = 0; i < 24; ++i) dofs[i] = i + 1;
        const Eigen::MatrixXd k = symmetricFromLower(c.estif, dofs);
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
    // Clockwise numbering (det = -1) and an unknown family (det = 0) stop
    // both routines at their first point: nothing added, no thickness
    // written. Without points (NGPX or NGPY <= 0) nothing at all changes.
    for (int shear = 0; shear <= 1; ++shear)
        for (int variant = 0; variant <= 4; ++variant) {
            const bool points = variant < 2;
            PlateCall c(squareQuad(2.0f, 8, variant == 0), slab(), kSentinel);
            c.ntype = variant == 1 ? 5 : 1;
            if (!points) c.ngpx = variant == 2 ? 0 : variant == 3 ? 2 : -3, c.ngpy = variant == 3 ? 0 : 2;
            c.run(shear);
            EXPECT_EQ(c.detj, points ? -1.0f : kSentinel) << variant;
            EXPECT_EQ(c.ngpt, 5 + points) << variant;
            EXPECT_EQ(c.ngpt2, 11 + (points && !shear)) << variant;
            EXPECT_TRUE(c.estif.sameBits(Floats{c.ldes, c.ldes, kSentinel})) << variant;
            EXPECT_TRUE(std::isnan(c.prop(2, 3))) << variant;
        }
    // A trapezoid whose map folds beyond eta = 1.5 (det = 0.6 - 0.4 eta),
    // points (0, 0) then (0, 2): the first point's contribution stays and
    // PROP(IMAT, 3) holds that point's thickness, the last one processed.
    const Geometry trapezoid = withMidsides({{-1.0f, -1.0f}, {1.0f, -1.0f}, {0.2f, 1.0f}, {-0.2f, 1.0f}});
    for (int shear = 0; shear <= 1; ++shear) {
        PlateCall once(trapezoid, slab()), folded(trapezoid, slab());
        for (int k = 1; k <= 8; ++k) once.tnode(2, k) = folded.tnode(2, k) = 0.2f + 0.1f * kQuadNodes[k][1];
        once.rule.line({0.0f}, {2.0f});
        folded.rule.line({0.0f, 2.0f}, {2.0f, 1.0f});
        once.ngpx = once.ngpy = folded.ngpx = 1;
        folded.ngpy = 2;
        once.run(shear), folded.run(shear);
        EXPECT_FLOAT_EQ(once.detj, 0.6f);
        EXPECT_EQ(folded.detj, -1.0f);
        EXPECT_EQ(folded.ngpt, 5 + 2);
        EXPECT_TRUE(folded.estif.sameBits(once.estif));
        EXPECT_FLOAT_EQ(folded.prop(2, 3), 0.2f);
    }
}

TEST(PlateElement, DeterminantCutInSinglePrecision) {
    const struct {
        float a, b;
        bool integrated;
    } cases[] = {{1.0e-7f, 1.0f, true},
                 {0x1.5798eep-24f, 1.25f, true},  // below the cut in double, on it in single
                 {0x1.5798ecp-24f, 1.25f, false},
                 {std::nextafter(1.0e-7f, 0.0f), 1.0f, false}};
    for (int shear = 0; shear <= 1; ++shear)
        for (const auto& k : cases) {
            PlateCall c(rightTriangle(k.a, k.b), slab());
            c.ntype = 6, c.ngpx = c.ngpy = 1;
            c.run(shear);
            EXPECT_EQ(c.detj, k.integrated ? float(double(k.a) * k.b) : -1.0f) << k.a;
            EXPECT_EQ(c.k(1, 2, 1, 2) != 0.0f, k.integrated) << k.a;
        }
}

TEST(PlateElement, OffsetTripleInsideWideNodeBlocks) {
    // IOFF = 2, NDOFN = 6: the triple takes degrees of freedom 3, 4, 5 of each
    // block, entries equal the compact layout's bit for bit, and nothing
    // outside the lower block triangle of the triple is written.
    PlateCall compact(distortedQuad(8), slab()), wide(distortedQuad(8), slab());
    wide.ioff = 2, wide.ndofn = 6, wide.ldes = 48;
    wide.estif = Floats{48, 48, kSentinel};
    for (int nj = 1; nj <= 8; ++nj)
        for (int ni = 1; ni <= nj; ++ni)
            for (int r = 1; r <= 3; ++r)
                for (int c = 1; c <= 3; ++c) wide.k(nj, r, ni, c) = 0.0f;
    const Floats zeroed = wide.estif;
    compact.both(), wide.both();
    for (int nj = 1; nj <= 8; ++nj)
        for (int ni = 1; ni <= nj; ++ni)
            for (int r = 1; r <= 3; ++r)
                for (int c = 1; c <= 3; ++c)
                    EXPECT_EQ(bits(wide.k(nj, r, ni, c)), bits(compact.k(nj, r, ni, c)))
                        << nj << r << ni << c;
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
        p->bend();
        EXPECT_GT(p->k(9, 2, 9, 2), 0.0f);
        EXPECT_EQ(p->k(9, 1, 9, 1), 0.0f);
        p->shear();
        EXPECT_GT(p->k(9, 1, 9, 1), 0.0f);
    }
    EXPECT_EQ(bits(moved.detj), bits(c.detj));
    EXPECT_TRUE(moved.estif.sameBits(c.estif));
}

TEST(PlateElement, LayerTableMayBeTheMaterialTable) {
    // Two identical rows would take the closed form. With the same table as
    // PROP and IMAT = 1, the thickness written into column 3 before the
    // rigidities are formed makes the rows differ at every point, the first
    // included, and the layered sum is used. (Transverse moduli other than
    // E/2(1 + nu) make the shear closed form differ from the layered sum too.)
    Layer iso = isotropicLayer(30000.0f, 0.2f);
    iso.g10 = iso.g11 = 9000.0f;
    const Laminate shared({iso, iso}, {0.0f, 0.1f, 0.3f});
    Laminate layered = shared;
    layered.prop(1, 3) = 1.0f;
    for (int shear = 0; shear <= 1; ++shear) {
        PlateCall aliased(squareQuad(2.0f), shared), apart(squareQuad(2.0f), layered);
        PlateCall closed(squareQuad(2.0f), shared);
        aliased.layersAsMaterial = true;
        aliased.imat = 1;
        aliased.run(shear), apart.run(shear), closed.run(shear);
        EXPECT_FLOAT_EQ(aliased.lam.prop(1, 3), 0.3f);
        EXPECT_TRUE(aliased.estif.sameBits(apart.estif)) << shear;
        EXPECT_FALSE(aliased.estif.sameBits(closed.estif)) << shear;
    }
}
