// Element stiffness: the isoparametric membrane (STIFFP003DOTNET) and the
// plate's bending (STIFFP001DOTNET) and transverse shear (STIFFP002DOTNET).
#include "fixtures.hpp"

namespace {

Element sixNodeTriangle() { return Element({{2, 0.2f}, {0.5f, 1.8f}, {-0.1f, 0.1f}}, 6); }
Element triangle(float a, float b) {  // right-angled: x = a xi, y = b eta, det = a b
    Element e({{a, 0}, {0, b}, {0, 0}}, 3);
    return e.ntype = 6, e.ngpx = e.ngpy = 1, e;
}
// Eigenvalues of ESTIF (n degrees of freedom) below 1e-6 of the largest.
int zeroEnergyModes(const Floats& estif, int n) {
    const std::vector<double> ev = eigenvalues(symmetric(estif, n), n);
    int zeros = 0;
    while (std::fabs(ev[zeros]) < 1e-6 * ev.back()) ++zeros;
    EXPECT_GT(ev[zeros], 1e-4 * ev.back());  // the others well apart
    return zeros;
}

}  // namespace

TEST(MembraneElement, RigidBodyModesAndConstantStrainEnergy) {
    // Three zero-energy modes; a constant strain stores exactly t A e.D e, D
    // from the material routine, for each pair of unit strains: u = x; v = y;
    // u = y/2 with v = x/2.
    for (auto [e, area] :
         {std::pair{square(1), 4.0}, {distortedQuad(), 4.96}, {sixNodeTriangle(), 1.755}}) {
        const int n = 2 * e.nnode;
        if (n == 12) e.ntype = 3, e.ngpx = 1;
        for (int k = 1; k <= 9; ++k) e.tnode(2, k) = 0.25f;
        e.membrane();
        EXPECT_EQ(zeroEnergyModes(e.estif, n), 3) << n;
        const std::vector<double> k = symmetric(e.estif, n);
        auto u = [&](int s, int i) {  // degree of freedom i (from 0) under unit strain s
            const double x = e.xy(i / 2 + 1, 1), y = e.xy(i / 2 + 1, 2);
            return s == 0 ? (i % 2 ? 0 : x) : s == 1 ? (i % 2 ? y : 0) : (i % 2 ? x : y) / 2;
        };
        const Floats d = material(ortho(30));
        for (int s = 0; s < 9; ++s) {
            double w = 0;
            for (int i = 0; i < n * n; ++i) w += u(s / 3, i / n) * k[i] * u(s % 3, i % n);
            EXPECT_NEAR(w, 0.25 * area * d(1 + s / 3, 1 + s % 3), 2e-5 * area * d(1, 1)) << n << s;
        }
    }
}

TEST(MembraneElement, Golden) {
    // DETJ, the last point's thickness in PROP(IMAT, 3), all of ESTIF (lower
    // triangle of many bits, the rest sentinels). Node 9 is a bubble outside
    // the geometry; a tenth node or thickness counts as the ninth.
    Element nine = distortedQuad(9), six = sixNodeTriangle(), cw = square(2);
    nine.prop(2, 17) = 123, nine.ngpy = 2, nine.gwei(1, 2) = 1.25f;
    Element ten = nine, two = nine, moved = nine, hermite = six, three = triangle(1.5f, 0.8f);
    ten.nnode = ten.nnodt = 10, two.ntype = 2, moved.xy(9, 1) = 40;
    six.ntype = 3, six.ngpx = 2, six.gwei(2, 2) = 0.25f, six.nnodt = 4;  // points twice
    hermite.ntype = 4, hermite.ngpx = hermite.ngpy = 2, three.ngpy = 3;
    for (int k = 1; k <= 8; ++k) cw.xy(k, 1) = -cw.xy(k, 1);  // clockwise: integrated with -1
    const float d9 = 0x1.43e27cp+0f, t9 = 0x1.86ae44p-2f;
    const std::uint64_t k9 = 0xd344ce338225e9b5;
    const std::tuple<Element, float, float, std::uint64_t> cases[] = {
        {nine, d9, t9, k9}, {ten, d9, t9, k9}, {two, d9, t9, k9}, {moved, d9, t9, k9},
        {six, 0x1.c147aap+1f, 0x1.92c5f8p-3f, 0xe33d51a713795941},
        {hermite, -1, 0x1.851eb8p-3f, 0x19eda874ca45e216},
        {three, 0x1.333334p+0f, 0x1.47ae14p-3f, 0xc921c18cb0aae460},
        {cw, -1, 0x1.03fa9p-2f, 0x1a63c6c0d5103b06}};
    for (auto [e, detj, thickness, estif] : cases) {
        std::minstd_rand r(5);
        e.estif = Floats(18, 18, kSentinel);
        for (int i = 0, n = 2 * std::min(e.nnode, 9); i < 19 * 19; ++i)
            if (i % 19 >= i / 19 && i % 19 <= n && i / 19) e.estif.v[i] = noise(r);
        e.membrane();
        EXPECT_EQ(e.ngpt, 5 + e.ngpx * e.ngpy);
        EXPECT_TRUE(e.detj == detj && e.prop(2, 3) == thickness) << e.detj << " " << e.prop(2, 3);
        EXPECT_DIGEST(e.estif, estif);
    }
}

TEST(ElementStiffness, DegeneratePoints) {
    // Below det = 1.0e-7 (in single precision) DETJ = -1: the membrane takes
    // -1 for the determinant, the plate routines return at once, keeping what
    // earlier points added. Points are counted; no points, no change at all.
    const float cut = 0x1.5798eep-24f;  // times 1.25: below 1.0e-7 in double, onto it in single
    Element folded({{-1, -1}, {1, -1}, {0.2f, 1}, {-0.2f, 1}}, 8);  // det = 0.6 - 0.4 eta
    folded.gpos(1, 2) = folded.gpos(1, 3) = 2;  // points (-b, -b), (-b, 2), (-b, 2)
    const std::tuple<Element, int32_t, int32_t, int32_t, float, int> cases[] = {
        // element, family, NGPX, NGPY, DETJ, points a plate routine integrates
        {triangle(1e-7f, 1), 6, 1, 1, 1e-7f, 1}, {triangle(cut, 1.25f), 6, 1, 1, 1e-7f, 1},
        {triangle(std::nextafter(cut, 0.f), 1.25f), 6, 1, 1, -1, 0},
        {triangle(std::nextafter(1e-7f, 0.f), 1), 6, 1, 1, -1, 0},
        {distortedQuad(), 5, 2, 2, -1, 0},  // unknown family: no shape functions, det 0
        {folded, 1, 1, 3, -1, 1},           {distortedQuad(), 1, 0, 3, kSentinel, 0},
        {distortedQuad(), 1, 3, 0, kSentinel, 0}, {distortedQuad(), 1, -1, 2, kSentinel, 0}};
    for (int routine = 0; routine < 3; ++routine)
        for (auto [e, ntype, ngpx, ngpy, detj, plateAdds] : cases) {
            e.ntype = ntype, e.ngpx = ngpx, e.ngpy = ngpy, e.layout(3, 0, routine ? 24 : 18);
            routine == 0 ? e.membrane() : routine == 1 ? e.bending() : e.shear();
            const bool any = detj != kSentinel, added = routine ? plateAdds > 0 : any;
            const int points = !any ? 0 : routine ? plateAdds + (detj == -1) : ngpx * ngpy;
            EXPECT_EQ(e.detj, detj) << routine << " " << e.xy(1, 1);
            EXPECT_TRUE(e.ngpt == 5 + points && e.ngpt2 == 11 + (routine == 1) * points);
            EXPECT_EQ(std::isnan(e.prop(2, 3)), !added);  // the thickness written
            EXPECT_EQ(e.estif.count(0) < long(e.estif.v.size()), added);
        }
}

TEST(PlateElement, BendingPlusReducedShearHasOnlyTheRigidBodyModes) {
    // Only rigid modes store no energy: w = 1; w = y, rotation 2 = 1; w = x, rotation 3 = -1.
    for (Element e : {square(1), distortedQuad()}) {
        e.layout(3, 0, 24), e.bending(), e.gauss(2), e.shear();
        EXPECT_EQ(zeroEnergyModes(e.estif, 24), 3);
    }
}

TEST(PlateElement, Golden) {
    // Bending (3 x 3 points), then shear (2 x 2) into one ESTIF of many bits,
    // pinned whole. Node n's triple starts after IOFF + NDOFN (n - 1); narrower
    // blocks overlap, adding up in the order i, j, c, r. With the layer table
    // as PROP too, each point writes the thickness before reading the layers.
    auto element = [](int32_t ndofn, int32_t ioff, int32_t nnode = 9, bool aliased = false) {
        Element e = distortedQuad(9);
        e.nnode = e.nnodt = nnode, e.layout(ndofn, ioff, ioff + 3 + ndofn * 8);
        std::minstd_rand r(9);
        for (float& x : e.estif.v) x = noise(r);
        if (aliased) {
            e.lam = Laminate(std::vector(2, std::array{3e4f, 0.2f, 3e4f, 12500.f, 9e3f, 9e3f, 0.f}),
                             {0, 0.1f, 0.3f});
            e.lam.prop(1, 3) = e.lam.prop(2, 3) = 0.5f;  // equal until a thickness is written
            e.aliased = true, e.imat = 1, e.nmat = 2;
        }
        return e;
    };
    const std::pair<Element, std::uint64_t> cases[] = {
        {element(6, 2), 0xa7eb7704f4fdc0ee}, {element(6, 2, 10), 0xa7eb7704f4fdc0ee},
        {element(2, 0), 0xd32b05d75fde775e}, {element(3, 1), 0xc81b295d779eedc1},
        {element(1, 0), 0x06a01c510c7e1714}, {element(6, 2, 9, true), 0xe6568fdd7ff22d1b}};
    for (auto [e, estif] : cases) {
        e.bending(), e.gauss(2), e.shear();
        EXPECT_TRUE(e.ngpt == 5 + 9 + 4 && e.ngpt2 == 11 + 9 && e.detj == 0x1.580b5cp+0f) << e.detj;
        EXPECT_EQ(e.mat()[e.imat + (e.nmat + 1) * 3], 0x1.b4371ap-2f);  // PROP(IMAT, 3)
        EXPECT_DIGEST(e.estif, estif);
    }
}
