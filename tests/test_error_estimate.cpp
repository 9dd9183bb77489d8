// Moment error estimate of one element (STERRORDLLDOTNET, STERRORDLLDOTNET1).
#include "fixtures.hpp"

namespace {

// Element IEL = 2 or 3 of three as the host holds it, NaN (family 5, node 15) wherever the
// routine may not read: moments in rows 9(IEL - 1) + 1..8 of SIGE (0:30, 0:6) from column
// ICSIG + 1 = 3, the smoothed ones SIGS = SIGE + e, thicknesses up to NNODT in TNODE
// (0:3, 0:9), WDET (0:9, 0:3), three abscissae in row 1 of GPOS (0:2, 0:3). IETYP and CONN
// are laid out by NELEM = 3, or by NELEMC = 5 for the variant. Accumulators start non-zero.
struct Sweep {
    int32_t iel, nelem = 3, nelemc = 5, nnodt, icsig = 2, nsrow = 30, nmat = 3, imat = 2;
    int32_t family;
    Floats sige{30, 6, kNaN}, sigs{3, 9, kNaN}, gpos{2, 3, kNaN}, tnode{3, 9, kNaN};
    Floats wdet{9, 3, kNaN}, prop{3, 17, kSentinel}, errn{15, 0, .5f}, erre{3, 0, .25f};
    float errt = .75f;
    static constexpr int32_t kNodes[10] = {0, 5, -9, 2, 14, -7, 11, 3, 12, 13};
    static constexpr float kW[10] = {0, .5f, 1.25f, -.75f, 2, .375f, 1, -1.5f, .625f, 3};

    Sweep(int32_t el, int32_t fam, int32_t nt, std::array<float, 3> e)
        : iel(el), nnodt(nt), family(fam) {
        std::minstd_rand r(5);
        gpos(1, 1) = -.8f, gpos(1, 2) = .25f, gpos(1, 3) = .7f;
        for (int k = 1; k <= 8; ++k)
            for (int m = 1; m <= 3; ++m)
                sigs(m, k) = (sige(9 * iel - 9 + k, icsig + m) = noise(r)) + e[m - 1];
        for (int k = 1; k <= nnodt; ++k) tnode(iel, k) = .2f + .01f * float(k * k);
        for (int p = 1; p <= 9; ++p) wdet(p, iel) = kW[p];
    }
    void run(Laminate& lam, bool variant) {
        const int32_t n = variant ? nelemc : nelem;
        Host<int32_t> ietyp(n, 1, 5), conn(n, 9, 15);
        ietyp(iel, 1) = family;
        for (int k = 1; k <= 9; ++k) conn(iel, k) = kNodes[k];
        if (variant)
            STERRORDLLDOTNET1(sige.p(), &iel, ietyp.p(), &nelem, gpos.p(), nullptr, &nnodt,
                              tnode.p(), lam.prop.p(), lam.zlay.p(), &lam.nlay, conn.p(),
                              errn.p(), &errt, prop.p(), wdet.p(), sigs.p(), erre.p(), &icsig,
                              &nsrow, nullptr, &nmat, &imat, &nelemc);
        else
            STERRORDLLDOTNET(sige.p(), &iel, ietyp.p(), &nelem, gpos.p(), nullptr, &nnodt,
                             tnode.p(), lam.prop.p(), lam.zlay.p(), &lam.nlay, conn.p(), errn.p(),
                             &errt, prop.p(), wdet.p(), sigs.p(), erre.p(), &icsig, &nsrow,
                             nullptr, &nmat, &imat);
    }
};

// C = D^-1 of the bending rigidities, in double by cofactors (indices cyclic).
std::array<double, 9> compliance(Laminate& lam) {
    const Floats d = rigidities(lam).d;
    auto D = [&](int i, int j) { return double(d(1 + i % 3, 1 + j % 3)); };
    auto cof = [&](int i, int j) {
        return D(i + 1, j + 1) * D(i + 2, j + 2) - D(i + 1, j + 2) * D(i + 2, j + 1);
    };
    const double det = D(0, 0) * cof(0, 0) + D(0, 1) * cof(0, 1) + D(0, 2) * cof(0, 2);
    std::array<double, 9> c;  // C(r, m) at 3r + m
    for (int i = 0; i < 9; ++i) c[i] = cof(i % 3, i / 3) / det;
    return c;
}

}  // namespace

TEST(ErrorEstimate, EnergyOfTheMomentDifferenceSharedByShapeFunction) {
    // With SIGS - SIGE = e at every node the difference at a point is S e, S = N1 + .. + N8,
    // so rho = S^2 R WDET with R = sum_m |e_m (C e)_m|: per component, so that no term
    // cancels another. ERRN(|CONN(k)|) gains N_k rho, ERRT S rho, ERRE |rho| (WDET < 0 at two
    // points); the ninth node nothing. Triangles are sampled at the same 3x3 points (outside
    // them too), the Hermite family's S is not 1, an unknown family adds nothing. e = 0:
    // every accumulator keeps its bits. PROP(IMAT, 3): the last point's thickness over NNODT.
    const float e = 3e4f, t = .18f;
    Laminate iso({{e, .15f, e, e / 2.3f, 9000, 9000, 0}, {e, .15f, e, e / 2.3f, 9000, 9000, 0}},
                 {-t / 2, 0, t / 2});
    Laminate cross = crossPly();
    const std::array<double, 9> ci = compliance(iso), cc = compliance(cross);
    ASSERT_GT(std::fabs(cc[0] * rigidities(cross).d(1, 1) - 1), 1e-3);  // C(1,1) is not 1/D(1,1)
    struct Case { int32_t family, nnodt; bool variant; Laminate* lam; std::array<float, 3> e; };
    const Case cases[] = {{1, 8, false, &iso, {}}, {3, 6, true, &cross, {}},
        {1, 8, false, &cross, {6, 0, 0}}, {2, 3, true, &iso, {5, 0, 0}},
        {1, 9, true, &iso, {6, .5f, 0}}, {6, 3, false, &iso, {.5f, 6, 0}},
        {3, 8, false, &cross, {6, -2, 1}}, {4, 5, true, &cross, {-2, 4, 5}},
        {5, 8, false, &cross, {4, 4, 4}}};
    int negative = 0;  // components whose signed term was negative in some case
    for (const Case& c : cases) {
        const std::array<double, 9>& cm = c.lam == &iso ? ci : cc;
        double r = 0;
        for (int m = 0; m < 3; ++m) {
            const double term = c.e[m] * (cm[m] * c.e[0] + cm[3 + m] * c.e[1] + cm[6 + m] * c.e[2]);
            r += std::fabs(term), negative |= (term < 0) << m;
        }
        if (c.lam == &iso && c.e[1] == 0)  // C(1,1) = 1 / D(1 - nu^2) = 12 / E t^3
            r = c.e[0] * c.e[0] * 12 / (double(e) * t * t * t);
        Sweep s(c.variant ? 3 : 2, c.family, c.nnodt, c.e);  // the variant on element 3
        std::vector<double> want(16), mag(16);
        double errt = 0, erre = 0, thickness = 0;
        for (int p = 1; p <= 9; ++p) {
            Floats n(9, 3);
            float xi = s.gpos(1, (p + 2) / 3), eta = s.gpos(1, (p - 1) % 3 + 1);
            SFR1DLLDOTNET(n.p(), &xi, &eta, &c.family);
            double sum = 0;
            for (int k = 1; k <= 8; ++k) sum += n(k, 1);
            const double rho = sum * sum * r * Sweep::kW[p];
            for (int k = 1, node; k <= 8; ++k) {
                node = std::abs(Sweep::kNodes[k]);
                want[node] += n(k, 1) * rho, mag[node] += std::fabs(n(k, 1) * rho);
            }
            errt += sum * rho, erre += std::fabs(rho), thickness = 0;
            for (int k = 1; k <= c.nnodt; ++k) thickness += n(k, 1) * s.tnode(s.iel, k);
        }
        s.run(*c.lam, c.variant);
        const double tol = r ? 1e-5 : 0;
        for (int i = 0; i <= 15; ++i)
            EXPECT_NEAR(s.errn(i), .5 + want[i], tol * (mag[i] + .1)) << c.family << " " << i;
        EXPECT_NEAR(s.errt, .75 + errt, tol * (erre + .1)) << c.family;
        for (int i = 0; i <= 3; ++i)
            EXPECT_NEAR(s.erre(i), .25 + (i == s.iel) * erre, tol * (erre + .1)) << c.family << i;
        EXPECT_NEAR(s.prop(s.imat, 3), thickness, 1e-6) << c.family << " " << c.nnodt;
        EXPECT_EQ(s.prop.count(kSentinel), 71) << c.family;
    }
    EXPECT_EQ(negative, 7);
}
