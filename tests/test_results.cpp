// Result post-processing: the result net, members near a peak, colour bands.
#include <numeric>

#include "fixtures.hpp"
#include "slab_mesh.hpp"

namespace {

using Ints = std::vector<int32_t>;
const float kInf = INFINITY, kBig = 99999997952.0f;

// Two copies of a strip of three eight-node elements, the second numbered from 19 (elements 4
// to 6) at z = Z2 above the first at 0.001, joined by a wall element 7 at their left corners.
// Element 3's own nodes (11, 4, 18, 8, 14) are folded back beside node 1, reached only through
// element 3's left edge at plan distance 2 and more (node 3 exactly 2). Node 37 is in no
// element. Node q's value is SIGN * q; beyond the record counts stands element 3, NaN
// wherever else the routine must not read.
struct Net {
    static constexpr int32_t ldcn = 9, ldmem = 4, ncomp = 3, icomp = 1, icase = 2, ldres = 113;
    Ints ielnod = Ints(90, 4), rec = Ints(5 * 38, 3);
    Floats xyz{37, 2, 0}, res{ldres, 3, kNaN};
    Net(float z2, float sign) {
        SlabMesh s(3, 1);
        const int wall[8] = {1, 5, 19, 23, -1, 5, -19, 23};
        for (int e = 1; e <= 3; ++e)
            for (int k = 1; k <= 8; ++k) {
                const int q = (k + e) % 3 ? s.node(k, e) : -s.node(k, e);
                ielnod[e + 10 * k] = q, ielnod[e + 3 + 10 * k] = q + (q > 0 ? 18 : -18);
                ielnod[7 + 10 * k] = wall[k - 1];
            }
        for (int q = 1; q <= 37; ++q) {
            const int p = (q - 1) % 18 + 1;
            const bool folded = p == 4 || p == 8 || p == 11 || p == 14 || p == 18;
            xyz(q, 0) = 10.5f + s.x[p] - (folded ? 3 : 0), xyz(q, 1) = s.y[p] - 4.25f;
            xyz(q, 2) = q > 18 && q < 37 ? z2 : .001f;
            res(icomp + 1 + ncomp * (q - 1), icase) = sign * float(q);
            rec[5 * q] = 0;
        }
        for (int e = 1; e <= 7; ++e)
            for (int k = 1; k <= 8; ++k)
                if (int32_t* r = &rec[5 * std::abs(ielnod[e + 10 * k])]; r[r[0]] != e)
                    r[++r[0]] = e;
    }
};

// The three peak searches, told apart by position: addresses of a DLL's routines need not
// compare equal where the compiler takes them in different ways.
using PeakSearch = decltype(GETPEAKMEMNODESDOTNET);
PeakSearch* const kSearches[] = {GETPEAKMEMNODESDOTNET, GETPEAKMEMNODESDOTNET1,
                                 GETPEAKMEMNODESDOTNET2};

// Band limits 0, .25, .5, .625, 1 over VMIN = -2, VMAX = 6: values -2, 0, 2, 3, 6 lie on them
// and -1, 1, 2.5, 5 in bands 1 to 4. Corners 1 to 4, and 5 to 8 again, sit 1, 1.5, 2.5, 3 from
// (1, -2, .5), columns 2 and 3 of XYZR; column 1 is far. IBAND and IBRAW of -3 show what is
// not written.
struct Colours {
    int32_t ncolr = -9, ibinit = 0, ncorn, nbnd = 4, isplit = 7, mode = 0, ibfix = 7, irefa = 2,
            irefb = 1, ldrf = 3, ldxc = 9;
    float vmin = -2, vmax = 6, vlo = 0, vhi = 0, tol = 0, lim[5] = {0, .25f, .5f, .625f, 1};
    std::vector<float> v;
    Ints iband = Ints(10, -3), ibraw = iband;
    Floats xyzc{9, 2, kNaN}, xyzr{3, 2, 100};
    Colours(std::vector<float> values, int32_t init = 0)
        : ibinit(init), ncorn(int32_t(values.size())), v(values) {
        v.insert(v.begin(), kSentinel), v.push_back(kSentinel);
        const float p[3] = {1, -2, .5f};
        const float d[4][3] = {{1, 0, 0}, {0, 1.5f, 0}, {0, -1.5f, 2}, {2, 2, 1}};
        for (int r = 0; r < 3; ++r) {
            xyzr(2, r) = xyzr(3, r) = p[r];
            for (int i = 1; i <= 8; ++i) xyzc(i, r) = p[r] + d[(i - 1) % 4][r];
        }
    }
    Colours& run() {
        CHECKNUMCOLOURDOTNET(&ncolr, lim, v.data(), &ibinit, &ncorn, &vmin, &vmax, &nbnd,
                             iband.data(), &isplit, &mode, &ibfix, &irefa, &vlo, &vhi, xyzc.p(),
                             &irefb, &ldrf, &ldxc, &tol, xyzr.p(), ibraw.data());
        return *this;
    }
};

}  // namespace

TEST(ResultNet, SpreadsOnlyThroughGatheredNodesOfItsLevel) {
    // Radius 2 from node 1 gathers element 1 and nodes 10, 13 of element 2 (sum 89); just above
    // 2 also node 3 and through it the folded nodes (sum 147). Level 2, 0.001 away, is never
    // gathered; just under 0.001 it is, and its copy of the patch adds 18 a node.
    struct Case { int32_t start; float radius, z2, sign, high, low, avg; };
    const float r2 = std::nextafter(2.f, kInf), at = .002f, in = std::nextafter(at, 0.f);
    const Case cases[] = {{1, 2, at, 1, 16, 1, 8.9f}, {1, 2, at, -1, -1, -16, -8.9f},
        {1, r2, at, 1, 18, 1, 9.1875f}, {1, 2, in, 1, 34, 1, 17.9f}, {19, 2, at, 1, 34, 19, 26.9f},
        {1, r2, in, 1, 36, 1, 18.1875f}, {37, 2, in, 1, -kBig, kBig, 0}};
    for (const Case& c : cases) {
        Net n(c.z2, c.sign);
        int32_t nnode = 37, nelem = 7;
        float peak = kSentinel, high = kSentinel, low = kSentinel, avg = kSentinel;
        CASTNETFMDOTNET(&peak, n.res.p(), &n.icase, &n.icomp, &n.ncomp, &nnode, n.xyz.p(),
                        &c.radius, &c.start, &high, &low, n.rec.data(), &nelem, &n.ldmem, &n.ldcn,
                        n.ielnod.data(), &avg, &n.ldres);
        const float want = std::max(std::fabs(c.low), c.high);
        EXPECT_TRUE(high == c.high && low == c.low && avg == c.avg && peak == want)
            << c.start << " " << c.radius << " " << c.z2 << ":" << high << low << " " << avg;
    }
}

TEST(PeakMembers, GroupActiveFlagsStrictRadiusOrderAndContinuedLists) {
    // Peak node 6 at (1, 2, 3), RAD = 3, IGRP = 0: group 1. Members {active, group, nodes}:
    // 1 lists 10 and 3 (7 is far); 2 is inactive; 3 and 5 are of groups 0 and 2; 4 lists 6
    // and 1 (5 lies at exactly 3, 3 is listed already); 6 has flag 2; 7 has no nodes; 8 has
    // all at exactly 3. Two calls append after three and two entries the host keeps.
    const std::vector<Ints> members = {{1, 1, 10, 7, 3}, {0, 1, 4, 9}, {1, 0, 2},
        {1, 1, 5, 6, 3, 1}, {1, 2, 2, 8}, {2, 1, 8}, {1, 1}, {1, 1, 5, 9}};
    const float offsets[][3] = {{-2, 0, 0}, {.5f, 0, 0}, {1, 0, 0}, {0, 1, 1}, {1, 2, 2},
                                {0, 0, 0}, {4, 0, 0}, {0, 0, -1}, {2, -1, -2}, {0, -2, 0}};
    int32_t nmem = 8, ipeak = 6, ldxyz = 11, igrp = 0;
    Ints tab(27, -1), grp(9, -1), nod(45, 2);
    Floats xyz(ldxyz, 2, kNaN);
    for (int j = 1; j <= 8; ++j) {
        const Ints& m = members[j - 1];
        tab[9 + j] = m[0], grp[j] = m[1], tab[18 + j] = int32_t(m.size()) - 2;
        for (std::size_t k = 2; k < m.size(); ++k) nod[9 * (k - 1) + j] = m[k];
    }
    for (int i = 0; i < 30; ++i) xyz(i / 3 + 1, i % 3) = float(i % 3 + 1) + offsets[i / 3][i % 3];
    const float rad = 3;
    const Ints all[2] = {{1, 2, 4, 6}, {10, 3, 4, 6, 1, 8}}, active[2] = {{1, 4}, {10, 3, 6, 1}};
    for (int variant = 0; variant < 3; ++variant) {
        const Ints* want = variant ? active : all;
        int32_t nmfnd = 3, nnfnd = 2;
        Ints mfnd(13, -5), nfnd(16, -5), wm(4, -5), wn(3, -5);
        for (int call = 0; call < 2; ++call) {
            kSearches[variant](&nmem, tab.data(), grp.data(), nod.data(), xyz.p(), &ipeak, &rad,
                               &nmfnd, mfnd.data(), &nnfnd, nfnd.data(), &ldxyz, &igrp);
            wm.insert(wm.end(), want[0].begin(), want[0].end());
            wn.insert(wn.end(), want[1].begin(), want[1].end());
        }
        EXPECT_TRUE(nmfnd == int(wm.size()) - 1 && nnfnd == int(wn.size()) - 1);
        wm.resize(mfnd.size(), -5), wn.resize(nfnd.size(), -5);
        EXPECT_TRUE(mfnd == wm && nfnd == wn) << nmfnd << " " << nnfnd;
    }
}

TEST(PeakMembers, OnlyTheRingVariantForgetsAfter512Nodes) {
    // One member lists nodes 1..513 (all at the peak), then 2, 1, 2, 513: node 513 takes
    // node 1's entry of the ring, node 1 coming back takes node 2's.
    int32_t nmem = 1, ipeak = 1, ldxyz = 513, igrp = 4, count = 517;
    Ints tab = {0, 0, 0, 1, 0, count}, grp = {0, 5}, nod(2 * count + 2, 0);
    const int again[] = {2, 1, 2, 513};
    for (int k = 1; k <= count; ++k) nod[2 * k + 1] = k > 513 ? again[k - 514] : k;
    Floats xyz(ldxyz, 2);
    const float rad = 1;
    for (int variant = 0; variant < 3; ++variant) {
        int32_t nmfnd = 0, nnfnd = 0, mfnd[3] = {-5, -5, -5};
        Ints nfnd(520, -5), want(nfnd);
        std::iota(want.begin() + 1, want.begin() + 514, 1);
        if (variant == 2) want[514] = 1, want[515] = 2;
        kSearches[variant](&nmem, tab.data(), grp.data(), nod.data(), xyz.p(), &ipeak, &rad,
                           &nmfnd, mfnd, &nnfnd, nfnd.data(), &ldxyz, &igrp);
        EXPECT_TRUE(nmfnd == 1 && mfnd[1] == 1 && mfnd[2] == -5 && nfnd == want) << nnfnd;
    }
}

TEST(ColourBands, IntervalThenLimitTestThenFallBack) {
    // IBINIT = 3 serves corner 1 only when no band matches it, and is reset. Values above the
    // top and below (or at) the lowest limit fall to bands 4 and 1; NaN matches nothing. A
    // normalised value 2^-20 from a limit, on either side, is marked on it; 17 * 2^-24 is not.
    const float below = std::nextafter(2.f, 0.f), in = 0x1p-17f, out = 17 * 0x1p-21f;
    const std::pair<std::vector<float>, Ints> cases[] = {
        {{7, -3, -2, 6, 2, below, 2 - in, kNaN}, {3, 1, 1, -4, -2, -2, -2, 1}},
        {{1, 2 + in, 2.5f, 5, 0, 3, 2 - out, 2 + out}, {2, -2, 3, 4, -1, -3, 2, 3}}};
    for (const auto& [values, want] : cases) {
        Colours c = Colours(values, 3).run();
        EXPECT_EQ(Ints(c.ibraw.begin() + 1, c.ibraw.end() - 1), want);
        EXPECT_TRUE(c.ibinit == 0 && c.ibraw[0] == -3 && c.ibraw[9] == -3 && c.ncolr == 4);
    }
}

TEST(ColourBands, LimitCornersFollowTheirNeighboursThenCountAndSplit) {
    // {values, bands after resolution, NCOLR, ISPLIT}; value 2 is on the limit between bands 2
    // and 3, 0 between 1 and 2, 3 between 3 and 4. Neighbours wrap for 4 and 8 corners, and a
    // corner resolved earlier counts with its new band. The count spans the bands first assigned.
    struct Case { std::vector<float> v; Ints want; int32_t ncolr, isplit; };
    const float b = 2.5f;
    const Case cases[] = {{{1, 1, b, b}, {2, 2, 3, 3}, 2, -1}, {{1, b, b, 1}, {2, 3, 3, 2}, 2, -1},
        {{1, b, 1, b}, {2, 3, 2, 3}, 2, 7}, {{1, b, b, b}, {2, 3, 3, 3}, 2, 7},
        {{-1, -1, b, b}, {1, 1, 3, 3}, 3, 7}, {{2, 1, b, b}, {2, 2, 3, 3}, 2, -1},
        {{2, b, b, b}, {3, 3, 3, 3}, 1, 7}, {{2, 1, b, 1}, {2, 2, 3, 2}, 2, 7},
        {{-1, 2, 1, b}, {1, 2, 2, 3}, 3, 7}, {{-1, 2, b, 1}, {1, 2, 3, 2}, 3, 7},
        {{1, 2, b, -1}, {2, 2, 3, 1}, 3, 7}, {{b, 2, -1, 1}, {3, 2, 1, 2}, 3, 7},
        {{b, 2, 1, b}, {3, 2, 2, 3}, 2, -1}, {{b, 2, b, 1}, {3, 3, 3, 2}, 2, 7},
        {{2, b, 1, 3}, {3, 3, 2, 3}, 2, 7}, {{2, 3, 1, b}, {3, 3, 2, 3}, 2, 7},
        {{2, -1, 1, 0}, {1, 1, 2, 1}, 2, 7}, {{1, 1, 1, 1, 1, 1, 1, 1}, Ints(8, 2), 1, 7},
        {{1, 1, 1, 1, b, b, b, b}, {2, 2, 2, 2, 3, 3, 3, 3}, 2, 7},
        {{2, -1, -1, 1, -1, -1, 1, 0}, {1, 1, 1, 2, 1, 1, 2, 1}, 2, 7}};
    for (const Case& k : cases) {
        Colours c = Colours(k.v).run();
        EXPECT_EQ(Ints(c.iband.begin() + 1, c.iband.begin() + 1 + c.ncorn), k.want) << k.v[0];
        EXPECT_TRUE(c.ncolr == k.ncolr && c.isplit == k.isplit && c.iband[0] == -3)
            << k.v[0] << " " << k.v[1] << ": " << c.ncolr << " " << c.isplit;
    }
}

TEST(ColourBands, ForcedColourAtAPointOrOverAValueRange) {
    // Bands 2, 3, 2, 3 span two colours. Point test: every corner within TOL (3, one exactly)
    // of point IREFA. Value range, given either way round with closed ends: IBFIX and VLO on
    // every corner when the mean distance 2 from point IREFB is below 1.25 TOL, which for TOL
    // = 1.6 rounds to 2 in single precision.
    struct Case { int32_t mode, irefa, irefb; float tol, vlo, vhi; int forced; int32_t ncolr; };
    const float t = std::nextafter(1.6f, 2.f), t3 = std::nextafter(3.f, 0.f);
    const float v1 = std::nextafter(1.f, 2.f), b = 2.5f;
    const Case cases[] = {{-999, 2, 1, 3, 0, 0, 0, 1}, {-999, 2, 1, t3, 0, 0, 0, 2},
        {-999, 1, 2, 3, 0, 0, 0, 2}, {-998, 2, 3, 9, b, 1, 0, 2}, {0, 1, 3, t, b, 1, 0, 2},
        {1, 1, 3, t, b, 1, 1, 1}, {2, 1, 2, t, 1, b, 1, 1}, {1, 1, 3, 1.6f, b, 1, 0, 2},
        {1, 3, 1, t, b, 1, 0, 2}, {1, 1, 3, t, b, v1, 0, 2}};
    const std::vector<float> twice = {1, b, 1.5f, b, 1, b, 1.5f, b};
    for (const Case& k : cases)
        for (int n : {4, 8}) {  // corners 5 to 8 repeat 1 to 4
            Colours c({twice.begin(), twice.begin() + n});
            c.mode = k.mode, c.irefa = k.irefa, c.irefb = k.irefb, c.tol = k.tol, c.vlo = k.vlo;
            c.vhi = k.vhi;
            std::vector<float> v = c.v;
            Ints bands(n + 2, -3);
            for (int i = 1; i <= n; ++i) bands[i] = k.forced ? (v[i] = k.vlo, 7) : 3 - i % 2;
            c.run().iband.resize(n + 2);
            EXPECT_TRUE(c.v == v && c.iband == bands && c.ncolr == k.ncolr)
                << k.mode << " " << k.tol << " " << n << ": " << c.ncolr;
        }
}
