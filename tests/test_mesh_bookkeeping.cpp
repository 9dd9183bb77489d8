// Mesh bookkeeping: load point, incidence, node merging, beam edges, tables, natural coordinates.
#include "fixtures.hpp"
#include "slab_mesh.hpp"

namespace {

using Ints = std::vector<int32_t>;
using Pair = std::array<float, 2>;
const float kInf = INFINITY;
float above(float x) { return std::nextafter(x, kInf); }

// What both merges document: every pair compared, in the stated order.
void coincidentPairs(Ints& idel, const Ints& rec, int nn, Ints& slots, int nmem, int ld,
                     const Floats& xyz) {
    auto near = [&](int a, int b, int k) { return std::fabs(xyz(b, k) - xyz(a, k)) < .001f; };
    for (int a = 1; a < nn; ++a)
        for (int b = a + 1; b <= nn && !idel[a]; ++b)
            if (const int32_t* m = &rec[b * (ld + 1)];
                !idel[b] && m[0] > 0 && near(a, b, 0) && near(a, b, 1) && near(a, b, 2)) {
                for (int i = 1; i <= m[0]; ++i)
                    for (int s = 1; s <= 8; ++s)
                        if (int32_t& slot = slots[s * (nmem + 1) + m[i]]; slot == b) slot = a;
                idel[b] = -1;
            }
}
void midsidePairs(Ints& idel, int nb, int nt, const Floats& xy, Ints& slots, int ld, float tol) {
    for (int j = nb + 1; j < nt; ++j)
        for (int k = nb + 2, q = 2; k <= nt && !idel[j]; ++k, ++q)
            if (!idel[k] && k != j && std::fabs(xy(k, 1) - xy(j, 1)) < tol &&
                std::fabs(xy(k, 2) - xy(j, 2)) < tol)
                idel[k] = -1, slots[2 * ((q - 1) % 4 + 1) * (ld + 1) + (q + 3) / 4] = j;
}

}  // namespace

TEST(LoadPoint, LowestIndexAmongTheNearestInSinglePrecision) {
    // {query, points..., {IPT}}: squared distance 1 + 2^-23 is float distance 1,
    // a tie (nearer in double or by squares); nothing at 1e8 or NaN ever wins.
    const float e = 0x1.8p-12f, far = 1e8f;
    const std::vector<Pair> cases[] = {{{.5f, -2}, {1.5f, -2 + e}, {.5f, -1}, {1}}, {{2, 7}, {0}},
        {{0, 0}, {3, 3}, {-1, 0}, {0, 1}, {1, 0}, {2}}, {{0, 0}, {kNaN, 0}, {5, 5}, {0, kNaN}, {2}},
        {{0, 0}, {far, 0}, {0, -far}, {0}}, {{0, 0}, {far, 0}, {std::nextafter(far, 0.f), 0}, {2}}};
    for (const auto& c : cases) {
        std::vector<float> x, y;  // the query goes to position 0, which is not read
        for (std::size_t i = 0; i + 1 < c.size(); ++i) x.push_back(c[i][0]), y.push_back(c[i][1]);
        int32_t npt = int32_t(x.size()) - 1, ipt = 99;
        FINDLOADPOINT(&npt, &ipt, &x[0], &y[0], x.data(), y.data());
        EXPECT_EQ(ipt, c.back()[0]) << npt << " " << x.back();
    }
}

TEST(Incidence, RecordsContinueInMemberOrderAndOverflowIntoTheNextCount) {
    // Member 1 names node 3 twice, member 2 nothing. Node 2 holds a member (77)
    // already, node 4 fifty: member 3, its 51st, lands on node 5's count.
    Ints slots(9 * 5), rec(51 * 7, 77), none(18);  // none: one member (rows of 2), empty
    for (auto [s, j, n] : {std::array{1, 1, 1}, {2, 1, -2}, {3, 1, 2}, {5, 1, 3}, {8, 1, 3},
                           {2, 2, -1}, {1, 3, 2}, {2, 3, 4}, {1, 4, 2}, {3, 4, 1}, {6, 4, 5}})
        slots[s * 5 + j] = n;
    for (int i = 0; i < 51 * 7; i += 51) rec[i] = i == 102 ? 1 : i == 204 ? 50 : 0;
    Ints want = rec;
    for (auto [i, v] : {std::pair{51, 2}, {52, 1}, {53, 4}, {102, 4}, {104, 1}, {105, 3}, {106, 4},
                        {153, 2}, {154, 1}, {155, 1}, {204, 51}, {255, 4}, {259, 4}})
        want[i] = v;
    for (int32_t n : {4, 1, 0}) {  // then nothing is recorded: MAXMEM is 1
        int32_t maxmem = 99;
        FEMEMBERSTONODES1DOTNET(nullptr, &n, &maxmem, rec.data(), (n == 4 ? slots : none).data());
        EXPECT_TRUE(rec == want && maxmem == (n == 4 ? 51 : 1)) << n << " " << maxmem;
    }
}

TEST(NodeMerging, GridSearchesEqualThePairwiseMerges) {
    // Lattice clouds jittered in steps of 0.00025 to 0.001, with -0, NaN, inf, huge
    // values; odd flags, counts and tolerances; records missing or adding members.
    std::minstd_rand r(11);
    for (int round = 0; round < 80; ++round) {
        int32_t nn = 150 + int32_t(r() % 200), nb = int32_t(r() % 4), nmem = 90, ld = 2 + round % 5;
        const float tol = std::array{.001f, .002f, 0.f, -1.f, 1e-30f, kInf, kNaN, 3e38f}[round % 8];
        const float step = std::array{1.f, .0025f, 4e5f, 1e20f}[r() % 4];
        Floats xyz(nn, 2);
        for (float& v : xyz.v)
            v = r() % 40 ? step * float(int(r() % 5) - 2) + .00025f * float(int(r() % 9) - 4)
                         : std::array{-0.f, kNaN, kInf, -3e38f}[r() % 4];
        Ints idel(nn + 1), slots(9 * (nmem + 1)), rec((nn + 1) * (ld + 1)), eslots(9 * nn + 9, -9);
        for (int32_t& f : idel) f = r() % 9 ? 0 : std::array{-1, 3, 1}[r() % 3];
        for (int32_t& s : slots) s = int32_t(r() % (nn + 1)) * (r() % 9 ? 1 : -1);
        for (int i = nmem + 1, n; i < 9 * (nmem + 1); ++i)  // records from the slots, not all
            if ((n = std::max(slots[i], 0) * (ld + 1)) && i % (nmem + 1) && rec[n] < ld && r() % 6)
                rec[n + ++rec[n]] = r() % 12 ? i % (nmem + 1) : 1 + r() % nmem;
        for (int n = 0; n <= nn; n += 1 + int(r() % 20)) rec[n * (ld + 1)] = -int(r() % 2);
        Ints wantIdel = idel, want = slots, midIdel = idel, wantMid = idel, wantE = eslots;
        coincidentPairs(wantIdel, rec, nn, want, nmem, ld, xyz);
        PACKNODFE1DOTNET(idel.data(), rec.data(), &nn, slots.data(), &nmem, &ld, xyz.p());
        midsidePairs(wantMid, nb, nn, xyz, wantE, nn, tol);  // ELSLOT rows of NTOT + 1
        PACKMESHNODESDOTNET(midIdel.data(), &nb, &nn, xyz.p(), eslots.data(), &nn, &tol);
        ASSERT_TRUE(idel == wantIdel && slots == want && midIdel == wantMid && eslots == wantE);
    }
}

TEST(BeamEdges, FirstNonZeroMatchWinsAndTheSearchIsADoWhile) {
    // Element 1 has value 0, 2 is skipped, 3 repeats edge 1-2 reversed, 4 and 5 share
    // 40-41, 4's value 60 is a node too. Beams: {IBN1, IBN2, IBINFO in, out, flagged}.
    const int32_t el[5][10] = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 0},
        {-1, 9, 10, 11, 12, 13, 14, 15, 16, 20}, {0, 2, 1, 31, 32, 33, 34, 35, 36, 30},
        {0, 40, 41, 42, 43, 44, 45, 46, 47, 60}, {0, 50, 51, 41, 40, 52, 53, 54, 55, 50}};
    const int32_t beams[12][5] = {{1, 2, 0, 30, 1}, {4, 3, 99, 0, 1}, {41, 40, 99, 99, 0},
        {41, 40, 0, 60, 1}, {47, 40, 0, 60, 1}, {8, 1, 0, 0, 1}, {9, 10, 0, 0, 0}, {0, 40, 0, 0, 0},
        {43, 45, 0, 0, 0}, {47, 60, 0, 0, 0}, {53, 52, 0, 50, 1}, {55, 50, 7, 7, 0}};
    Ints eltab(10 * 6, -5), n1 = {-9}, n2 = {-9}, info = {-9}, flag(61, 5), want(61, 5);
    for (int i = 0; i < 50; ++i) eltab[i % 10 * 6 + 1 + i / 10] = el[i / 10][i % 10];
    for (const auto& b : beams) n1.push_back(b[0]), n2.push_back(b[1]), info.push_back(b[2]);
    for (const auto& b : beams) for (int k : {0, 1}) want[b[k]] = b[4] ? -1 : want[b[k]];
    int32_t nb = 12, nel = 5, none = 0, one[11] = {0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 5};  // 1 matches
    SETBEAMINFODLLDOTNET(&nb, &nel, eltab.data(), n1.data(), n2.data(), info.data(), flag.data());
    SETBEAMINFODLLDOTNET(&nb, &none, one, n1.data(), n2.data(), info.data(), flag.data());  // no-op
    for (int b = 0; b <= nb; ++b) EXPECT_EQ(info[b], b ? beams[b - 1][3] : -9) << b;
    EXPECT_EQ(flag, want);
}

TEST(TableComparison, ThresholdsAreTheWidenedSingleValues) {
    // Entries (1..20, 1..3) of fa, fb, then {position, a, b}; row and column 0
    // differ wildly. At S = 3, D = 0x1.848e4ap-23 + d is the last D to pass.
    struct Case { float fa, fb; std::vector<std::array<float, 3>> set; int32_t want; };
    const float t8 = 1e-8f, t7 = 1e-7f, d = 0x1.ff60e6p-24f, p = 6e-8f, u8 = above(t8);
    const std::array<float, 3> three = {5, 3, 3}, da = {6, 0, 0x1.848e4ap-23f};
    const Case cases[] = {{3.5f, 3.5f, {}, -1}, {0, 0, {{83, 0, 1}}, 0}, {0, t8, {}, -1},
        {0, u8, {}, 0}, {t8, t8, {{5, t8, t8 + 5e-8f}}, -1}, {u8, u8, {{5, u8, u8 + 5e-8f}}, 0},
        {0, 0, {{83, 0, t7}}, -1}, {0, 0, {{83, 0, above(t7)}}, 0},
        {0, 0, {{9, t7, t7}, {83, 0, 5e-8f}}, -1}, {0, 0, {{9, above(t7), t7}, {83, 0, 5e-8f}}, 0},
        {0, 0, {three, da, {83, 0, d}}, -1}, {0, 0, {three, da, {83, 0, above(d)}}, 0},
        {0, 0, {{9, 100, 100}, {83, 0, 1e-5f}}, -1},  // (D / S) * 100 is 1.0e-5f exactly
        {0, 0, {{9, p, p}, {83, 0, p}}, -1}, {0, 0, {{9, p, p}, {83, p, 0}}, 0},
        {1, 1, {{9, kNaN, 5}, {83, 1, kNaN}}, -1}, {0, 0, {{9, kNaN, 0}, {83, 0, t7}}, -1}};
    for (const Case& c : cases) {
        Floats a(3, 20, 1e6f), b(3, 20, -1e6f);
        for (int i = 5; i < 84; ++i)
            if (i % 4) a.v[i] = c.fa, b.v[i] = c.fb;
        for (auto [i, x, y] : c.set) a.v[int(i)] = x, b.v[int(i)] = y;
        int32_t mcol = 3, nrowt = 20, isame = 7;
        COMPAREARRAY(a.p(), b.p(), &mcol, &nrowt, &isame);
        EXPECT_EQ(isame, c.want) << c.fa << " " << c.fb << " " << c.set.size();
    }
}

TEST(NodeMerging, StrictBoxesChainsSlotsFromNodeNumbersAndASlab) {
    // Nodes 1..12 at (x, y, z); mid-sides 4.. at (y, z), TOLM = 0.001. Coincident: memberless 1
    // takes 2 (0.0009 off), 4 (a float inside), 7, 8 (half off), not 3, 6 (0.001 off); 9 takes
    // 10, not 11 (a chain) or memberless 12. Mid-side: 4 takes 7 (q = 4: slot 8 of element 1)
    // and 8 (q = 5: slot 2 of element 2), 9 takes 10, 11, 12; base nodes take no part.
    const float t = .001f, b = std::nextafter(t, 0.f), h = t / 2;
    Floats xyz(12, 2);  // rows x, y, z of nodes 0..12
    xyz.v = {0, 0, .0009f, t, b, 0, 0, 0, 0, 0, .0006f, .0012f, 0, 0, 0, 0, 0, 0, 9, 9, h, -h, 20,
             20, 20, 20, 0, 0, 0, 0, 0, 0, t, -h, h, 0, 0, 0, 0};
    Ints idel(13), rec(26, 1), slots = {0, 0, 0, 2, 0, 4, 0, 2, 0, -2, 0, 10, 0, 12, 0, 8, 0, 3};
    rec[2] = rec[3] = rec[24] = rec[25] = 0;  // NODMEM rows of 2; MEMSLT rows of 2 (one member)
    int32_t nn = 12, nmem = 1, ld = 1, nbase = 3, lde = 3;
    PACKNODFE1DOTNET(idel.data(), rec.data(), &nn, slots.data(), &nmem, &ld, xyz.p());
    EXPECT_EQ(idel, Ints({0, 0, -1, 0, -1, 0, 0, -1, -1, 0, -1, 0, 0}));
    EXPECT_EQ(slots, Ints({0, 0, 0, 1, 0, 1, 0, 1, 0, -2, 0, 9, 0, 12, 0, 1, 0, 3}));
    Ints side(13), eslots(9 * 4, -9), want = eslots;  // ELSLOT rows of LDEL + 1 = 4
    want[8 * 4 + 1] = want[2 * 4 + 2] = 4, want[6 * 4 + 2] = want[8 * 4 + 2] = want[2 * 4 + 3] = 9;
    for (int32_t ntot : {12, 4, 2}) {  // then one mid-side node or none: nothing changes
        PACKMESHNODESDOTNET(side.data(), &nbase, &ntot, xyz.p(), eslots.data(), &lde, &t);
        EXPECT_TRUE(side == Ints({0, 0, 0, 0, 0, 0, 0, -1, -1, 0, -1, -1, -1}) && eslots == want);
    }
    // A slab with each element's own mid-side nodes: every edge keeps its lower one.
    SlabMesh own(7, 5, .3f, false), shared(7, 5, .3f, true);
    Floats slab(own.nnode, 2, kNaN);
    for (int n = 1; n <= own.nnode; ++n) slab(n, 1) = own.x[n], slab(n, 2) = own.y[n];
    Ints flags(own.nnode + 1), before = own.ielnod, low(shared.nnode + 1, INT32_MAX);
    PACKMESHNODESDOTNET(flags.data(), &(nbase = own.ncorner), &own.nnode, slab.p(),
                        own.ielnod.data(), &own.ldcn, &t);
    auto mid = [](std::size_t i) { return i % 36 && i / 36 % 2 == 0 && i >= 36; };  // rows of 36
    for (std::size_t i = 0; i < before.size(); ++i)
        if (mid(i)) low[shared.ielnod[i]] = std::min(low[shared.ielnod[i]], before[i]);
    for (std::size_t i = 0; i < before.size(); ++i)  // and the surviving node is live
        EXPECT_TRUE(mid(i) ? own.ielnod[i] == low[shared.ielnod[i]] && !flags[own.ielnod[i]]
                           : own.ielnod[i] == before[i]) << i;
    EXPECT_EQ(std::count(flags.begin(), flags.end(), 0), 1 + nbase + 7 * 6 + 8 * 5);
}

TEST(NaturalCoordinates, ExactShapesRootChoiceClampingAndDegenerate) {
    // Corners in slots 1, 3, 5, 7 of row IEL = 2 of IELNOD (0:3, 0:8), XYZN (0:9, 0:2).
    using Quad = std::array<std::array<float, 3>, 4>;
    auto natural = [](const Quad& c, std::array<float, 3> p, std::array<float, 4> dc) {
        Host<int32_t> ielnod(3, 8, 9);  // every other slot names node 9, at NaN
        Floats xyz(9, 2, kNaN);
        for (int i = 0; i < 12; ++i)
            ielnod(2, i / 3 * 2 + 1) = i / 3 * 2 + 2, xyz(i / 3 * 2 + 2, i % 3) = c[i / 3][i % 3];
        int32_t iel = 2, ldcn = 3, nnode = 9;
        float xi = kSentinel, eta = xi;
        NORMALISEDCORDDOTNET(&iel, &xi, &eta, &p[0], &p[1], &p[2], ielnod.p(), xyz.p(), &ldcn,
                             nullptr, &dc[0], &dc[1], &dc[2], &dc[3], &nnode);
        return Pair{xi, eta};
    };
    // Parallelogram (A = 0; eta from v): exact, clamped outside; a rectangle tilted along the
    // projection's null direction (6, 5, 12). Trapezoid: the other root, -2, zeroes both eta
    // denominators; the first is kept up to 1.01 (1 + 2^-7 clamps, 1 + 2^-6 takes -2); B = 0 at 2.
    const Quad par = {{{0, 0, 0}, {1, 4, 0}, {-1, 4, 0}, {-2, 0, 0}}}, dot = {};
    const Quad tilt = {{{0, 0, 0}, {16, 10, 24}, {22, 17, 36}, {6, 7, 12}}};
    const Quad trap = {{{-1, -.5f, 0}, {1, -1.5f, 0}, {1, 1.5f, 0}, {-1, .5f, 0}}};
    const std::tuple<const Quad*, std::array<float, 3>, Pair> cases[] = {
        {&par, {-.5f, 2, 9}, {0, 0}}, {&par, {0, 3, 0}, {.5f, -.25f}}, {&par, {-1, 4, 0}, {1, 1}},
        {&par, {.5f, -2, 0}, {-1, -1}}, {&dot, {1, 2, 7}, {0, 0}},
        {&tilt, {7.5f, 4.25f, 9}, {.5f, -.5f}}, {&tilt, {63, 54, 108}, {1, 1}},
        {&trap, {1.0078125f, .3759765625f, 0}, {1, .25f}}, {&trap, {2, .5f, 0}, {1, .25f}},
        {&trap, {1.015625f, .376953125f, 0}, {-1, 0}}, {&trap, {.5f, .3125f, 0}, {.5f, .25f}}};
    const std::array<float, 4> dc[2] = {{0, 1, 0, 1}, {.5f, 1, .25f, .75f}};  // flat, tilted
    for (const auto& [q, p, want] : cases)
        EXPECT_EQ(natural(*q, p, dc[q == &tilt]), want) << p[0] << " " << p[1] << " " << p[2];
}
