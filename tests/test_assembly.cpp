// Global assembly and loads: node matrices gathered and appended as compressed
// rows, shell elements added into skyline storage, element loads scattered.
#include <numeric>

#include "fixtures.hpp"
#include "slab_mesh.hpp"

namespace {

const float kCut = 1.0e-10f, kAbove = std::nextafter(kCut, 1.f), kBelow = std::nextafter(kCut, 0.f);
const double kCutD = kCut, kOverD = std::nextafter(kCutD, 1.0);  // the mass cut-off, widened
bool same(double a, double b) { return a == b || (a != a && b != b); }

// A 3x3 slab, symmetric 48x48 element matrices (LDES = 48, index 0 NaN) of
// odd multiples of 2^-8 off a diagonal near 64: every sum formed is exact.
struct Slab {
    SlabMesh mesh{3, 3};
    int32_t ldes = 48, ldcn = mesh.ldcn, nenod = 8, six = 6, *ielnod = mesh.ielnod.data();
    std::vector<std::vector<float>> estif = std::vector(10, std::vector<float>(49 * 49, kNaN));
    std::minstd_rand r{11};
    Slab() {
        for (int i = 0; i < 9 * 48 * 48; ++i) {  // element, row, column
            const int e = i / 2304 + 1, p = i / 48 % 48 + 1, q = i % 48 + 1;
            const float v = (std::floor(noise(r) * 128) + .5f) / 128 + 64 * (p == q);
            if (q <= p) estif[e][p * 49 + q] = estif[e][q * 49 + p] = v;
        }
    }
    template <class Eq>  // row-major from 0, slots 1..nslot of elements 1..nel
    std::vector<double> dense(int neq, Eq eq, int nslot = 8, int nel = 9) {
        std::vector<double> k(std::size_t(neq + 1) * (neq + 1));
        auto at = [&](int e, int p) { return eq(mesh.node(p / 6 + 1, e), p % 6 + 1); };
        for (int e = 1; e <= nel; ++e)
            for (int a = 0; a < 6 * nslot; ++a)
                for (int b = 0; b < 6 * nslot; ++b)
                    k[at(e, a) * (neq + 1) + at(e, b)] += estif[e][(a + 1) * 49 + b + 1];
        return k;
    }
};

}  // namespace

TEST(CompressedRow, SlabGatheredNodeByNodeIsTheDenseUpperTriangle) {
    // Seven equations per node, the elements' six first, every element offered
    // at every node; IFIX = 1 drops columns (not rows), 2 and -1 nothing; each
    // spring enters once; UPRES corrects the load from both triangles.
    Slab s;
    const int32_t nn = s.mesh.nnode, neq = 7 * nn, ld = neq + 1;  // ISPRF rows nn + 1 long
    int32_t ndofn = 7, ldnm = 150, map[7] = {0, 3, 1, 2, 6, 4, 5}, nnz = 3, nrows = 2, cnt = 1000;
    std::vector<int32_t> isprf(246), ivisit(nn + 1), ifix(ld), locnod(nn + 1), list;
    std::vector<int32_t> ptr(neq, -9), col(20000, -9), wptr = ptr, wcol = col;
    std::vector<float> spring(241, kNaN), upres(ld), snode(7 * 151), fload(ld);
    std::vector<double> val(20000, kSentinel), wval = val;
    std::vector<double> k = s.dense(neq, [](int n, int d) { return 7 * (n - 1) + d; });
    for (int n = 3, d = 4; n <= nn; n += 3, d = n % 6 + 1)  // a spring; a flag of -1 is none
        spring[6 * n - 6 + map[d]] = 1000 + n, k[(7 * n - 7 + map[d]) * (ld + 1)] += 1000 + n,
        isprf[(d - 1) * 41 + n] = 1, isprf[d % 6 * 41 + n] = -1;
    for (int j = 1; j <= neq; ++j)
        upres[j] = j % 5 ? 0 : (j % 3 - 1.5f) / 2, ifix[j] = std::array{0, 1, 2, -1}[j % 4];
    for (int32_t n = 1; n <= nn; ++n) {
        list.assign(1, 0);  // the nodes sharing an element with n, ascending
        for (int32_t m = 1; m <= nn; ++m)
            if (k[(7 * n - 6) * ld + 7 * m - 6] != 0) locnod[m] = ++list[0], list.push_back(m);
        std::fill(snode.begin(), snode.end(), 0.f);
        for (int32_t e = 1; e <= 9; ++e)
            BUILDALLNODESTIFFDLLDOTNET(
                s.estif[e].data(), &n, &s.nenod, snode.data(), &e, spring.data(), ivisit.data(),
                nullptr, s.ielnod, isprf.data(), &s.six, &ndofn, &s.ldes, &nn, &ldnm, nullptr,
                &s.ldcn, nullptr, upres.data(), fload.data(), locnod.data(), &cnt, map);
        for (int32_t r = 1; r <= 6; ++r)
            ADDTOCRSSTIFFDLLDOTNET(&s.six, &ldnm, &nnz, ptr.data(), col.data(), nullptr, &nrows,
                                   ifix.data(), snode.data(), val.data(), nullptr, &r, list.data(),
                                   nullptr, &ndofn);
    }
    int m = 3, rows = 2;  // no closing pointer: that is the host's
    for (int i = 1; i <= neq; ++i) {
        ASSERT_EQ(-fload[i], std::inner_product(&upres[1], &upres[0] + ld, &k[i * ld + 1], 0.));
        if (i % 7 == 0) continue;  // no element degree of freedom: no row
        wptr[rows++] = m + 1;
        for (int j = i; j <= neq; ++j)
            if (k[i * ld + j] != 0 && ifix[j] != 1) wcol[m] = j, wval[m++] = k[i * ld + j];
    }
    EXPECT_TRUE(nrows == rows && nnz == m && cnt == 1000 + 9 * 1176 &&
                std::count(ivisit.begin(), ivisit.end(), -1) == nn);  // springs or none
    EXPECT_TRUE(ptr == wptr && col == wcol && val == wval);
}

TEST(NodeMatrix, GatheredAndAppendedAtTheCutOffs) {
    // Element 2 of node 3 (equation 5) or 5 and node 5 (equation 9), NDOFE = 1,
    // NDOFN = 2, gathered for node 5 (visited: no spring) into SNODE(1, 1). Of
    // ESTIF = [.25 K; K D], K (below the diagonal) only takes UPRES(5) K from
    // FLOAD(9) = f0; D is added, counted above the cut-off and takes UPRES(9) D.
    struct { int n1; double d; float k, u5, u9; double f0; int stiff, mass; double f; } const
        cases[] = {{3, kCutD, 2, kCut, 0, 0, 0, 0, -2.0 * kCut},
                   {3, 1.00000002e-10, 2, kBelow, -1, 0, 0, 1, kCut},
                   {3, 1.0000000001e-10, 0, 0, 0, 0, 0, 0, 0},
                   {3, kAbove, 0, 0, 0, 0, 1, 1, 0},
                   {3, kOverD, 0, 0, 0, 0, 0, 1, 0},
                   {3, -3, 7, kNaN, .5f, 0, 1, 1, 1.5},
                   {3, kNaN, 7, 0, kCut, 0, 0, 0, kNaN},
                   {3, 0x1.001p+0, 0, 0, 0x1.001p+0f, 0x1p-30, 1, 1, 0x1p-30 - 0x1.002p+0},
                   {5, 1, 2, 0, 0, 0, 4, 4, 0}};  // node 5 in both slots: four entries
    for (const auto& c : cases) {
        int32_t two = 2, one = 1, ldnm = 5, ldcn = 3, cnt[3] = {40, 40, 40}, map[2] = {0, 1};
        int32_t ielnod[12] = {4, 4, 4, 4, 4, 4, c.n1, 4, 4, 4, 5, 4}, *inode = &ielnod[10];
        int32_t isprf[6] = {0, 0, 0, 0, 0, 1}, ivisit[6] = {0, 0, 0, 0, 0, -1}, locnod[6] = {};
        const double x = kSentinel, mass[9] = {x, x, x, x, .25, c.k, x, c.k, c.d};
        std::vector<double> dnode(12, x), dl(12, x), u(12, 3);
        dnode[7] = 0, dl[9] = c.f0, u[5] = c.u5, u[9] = c.u9, locnod[3] = 2, locnod[5] = 1;
        std::vector<float> estif(mass, mass + 9), sn(dnode.begin(), dnode.end()), sn01 = sn;
        std::vector<float> fl(dl.begin(), dl.end()), upres(u.begin(), u.end()), spring(6, 100);
        auto gather = [&](auto build, float* snode, auto* load, int32_t* n) {
            build(estif.data(), inode, &two, snode, &two, spring.data(), ivisit, nullptr, ielnod,
                  isprf, &one, &two, &two, &ldnm, &ldnm, nullptr, &ldcn, nullptr, upres.data(),
                  load, locnod, n, map);
        };
        gather(BUILDALLNODESTIFFDLLDOTNET, sn.data(), fl.data(), &cnt[0]);
        gather(BUILDALLNODESTIFFDLLDOTNET01, sn01.data(), dl.data(), &cnt[1]);
        BUILDALLNODEMASSDLL(mass, inode, &two, dnode.data(), &two, nullptr, ielnod, &one, &two,
                            &two, nullptr, &ldnm, nullptr, &ldcn, locnod, &cnt[2]);
        EXPECT_TRUE(cnt[0] == 40 + c.stiff && cnt[1] == cnt[0] && cnt[2] == 40 + c.mass) << c.d;
        const double node = c.n1 == 5 ? 5.25 : c.d;
        EXPECT_TRUE(same(sn[7], float(node)) && same(sn01[7], sn[7]) && same(dnode[7], node));
        EXPECT_TRUE(same(fl[9], float(c.f)) && same(dl[9], c.f)) << c.d;
        // Row 1 appended after 3 entries: node 5, kept above the cut-off, then
        // node 3 as the host left it; only IFIX = 1 restrains; empty lists count.
        auto append = [&](auto add, auto* nodes, bool kept, double v) {
            int32_t nnz = 3, nrows = 2, list[3] = {2, 5, 3}, at = 5 + kept;  // next entry
            int32_t ifix[11] = {0, 0, 0, 0, 1, -1, 0, 0, 1, 2, 1};
            std::vector<int32_t> ptr(6, -9), col(7, -9);
            std::vector<double> val(7, x);
            for (int32_t count : {2, 0, -1})
                list[0] = count, add(&one, &ldnm, &nnz, ptr.data(), col.data(), nullptr, &nrows,
                                     ifix, nodes, val.data(), nullptr, &one, list, nullptr, &two);
            EXPECT_TRUE(nnz == at - 1 && nrows == 5 && ptr == (std::vector{-9, -9, 4, at, at, -9}));
            EXPECT_EQ(col, (std::vector{-9, -9, -9, kept ? 9 : 5, kept ? 5 : -9, -9, -9})) << c.d;
            EXPECT_EQ(val, (std::vector{x, x, x, kept ? v : x, x, x, x})) << c.d;
        };
        append(ADDTOCRSSTIFFDLLDOTNET, sn.data(), c.stiff, float(node));
        append(ADDTOCRSMASSDLLDLL, dnode.data(), c.mass, node);
    }
}

TEST(Skyline, SlabIsTheDenseUpperTriangleWithinTheBand) {
    // NUMNOD renumbers; column I runs down to its diagonal at IDIAG(I + 1) from its
    // first coupled row (2^-30 there before, a sentinel after); I - J >= NBAND drops.
    // The mapped routine adds the same; a four-node element just its own couplings.
    Slab s;
    const int nn = s.mesh.nnode, neq = 6 * nn;
    std::vector<int32_t> numnod(nn + 1), top(neq + 1, 1), idiag(neq + 2, -9), quad = s.mesh.ielnod;
    for (int n = 1; n <= nn; ++n) numnod[n] = n * 17 % nn + 1;
    auto eq = [&](int n, int d) { return 6 * (numnod[n] - 1) + d; };
    const std::vector<double> all = s.dense(neq, eq), four = s.dense(neq, eq, 4, 1);
    for (int i = 1, at = 0; i <= neq; idiag[i + 1] = at += i - top[i] + 2, ++i)
        while (all[top[i] * (neq + 1) + i] == 0) ++top[i];  // the first coupled row
    auto sky = [&](const std::vector<double>& k, int nband) {
        std::vector<double> v(idiag[neq + 1] + 2, kSentinel);
        for (int i = 1; i <= neq; ++i)
            for (int j = top[i]; j <= i; ++j)
                v[idiag[i + 1] - i + j] = (i - j < nband ? k[j * (neq + 1) + i] : 0) + 0x1p-30;
        return v;
    };
    int32_t ndof = 6, nslot = 8, perm[7] = {0, 4, 6, 5, 1, 3, 2};
    auto at = [&](int p) { return p / 6 * 6 + perm[p % 6 + 1]; };  // element position from 0
    for (int a = 5; a <= 8; ++a) quad[a * (s.ldcn + 1) + 1] = 0;
    for (int32_t nband : {1 << 20, 37, 1}) {
        std::vector<double> plain = sky({}, 0), mapped = plain, cut = plain;
        for (int32_t e = 1; e <= 9; ++e) {
            std::vector<float> p(49 * 49, kNaN);
            for (int i = 0; i < 48 * 48; ++i)
                p[at(i / 48) * 49 + at(i % 48)] = s.estif[e][(i / 48 + 1) * 49 + i % 48 + 1];
            ADDSHELLTOSDOTNET(s.estif[e].data(), s.ielnod, nullptr, idiag.data(), &nband, &ndof,
                              plain.data(), numnod.data(), &e, &s.ldcn, nullptr, nullptr, &s.ldes,
                              &nslot);
            for (auto [conn, out] : {std::pair{s.ielnod, mapped.data()}, {quad.data(), cut.data()}})
                if (e == 1 || conn == s.ielnod)
                    ADDSHELLTOSDLLDOTNET(p.data(), conn, nullptr, idiag.data(), &nband, &ndof, out,
                                         numnod.data(), perm, &e, &s.ldcn, nullptr, nullptr,
                                         &s.ldes);
        }
        EXPECT_TRUE(plain == sky(all, nband) && mapped == plain && cut == sky(four, nband));
    }
}

TEST(ElementLoads, ReorderedIntoNodeBlocksAndTakenFromNodeForces) {
    // Element 2 of node -3 (the sign is the host's) and 2, which NUMNOD puts first:
    // d goes to offset 4, 6, 5, 1, 3, 2 (a seventh to the sixth's), leaving NODFRC(d,
    // n); the double GLOAD keeps 2^-30. ELOAD((a-1) NDOF + d) = 10a + d; GLOAD gains:
    const std::pair<int32_t, std::vector<float>> cases[] = {
        {6, {0, 24, 26, 25, 21, 23, 22, 14, 16, 15, 11, 13, 12}},
        {7, {0, 24, 53, 25, 21, 23, 22, 0, 14, 33, 15, 11, 13, 12}},
        {3, {0, 0, 0, 0, 21, 23, 22, 11, 13, 12}}};
    for (auto [ndof, want] : cases) {
        int32_t ielnod[] = {0, 0, 0, 0, 1, -3, 0, 1, 2}, numnod[] = {0, 9, 1, 2}, two = 2, ldnf = 5;
        std::vector<float> eload(16, kNaN), fl(48, kSentinel), nf(48, kSentinel), nd = nf;
        std::vector<double> dl(48, kSentinel + 0x1p-30);
        for (int i = 0; i < 2 * ndof; ++i) eload[i + 1] = float(10 * (i / ndof + 1) + i % ndof + 1);
        FELOADTOGLOADDOTNET(&two, ielnod, &two, numnod, &ldnf, &ndof, fl.data(), eload.data(),
                            nf.data(), nullptr, &two);
        FELOADTOGLOADDOTNET01(&two, ielnod, &two, numnod, &ldnf, &ndof, dl.data(), eload.data(),
                              nd.data(), nullptr, &two);
        want.resize(48);
        for (int i = 0; i < 48; ++i) {  // NODFRC(d, n) at 6d + n
            const int d = i / 6, n = i % 6, hit = d && d <= ndof && (n == 2 || n == 3);
            EXPECT_TRUE(nf[i] == nd[i] && nf[i] == kSentinel - hit * float(10 * (4 - n) + d) &&
                        fl[i] == kSentinel + want[i] && dl[i] == kSentinel + 0x1p-30 + want[i]);
        }
    }
}
