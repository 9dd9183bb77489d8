// Finishing an element matrix: the merge of the in-plane block, the drilling
// stiffness given once per node, and the selection of degrees of freedom.
#include "fixtures.hpp"

namespace {

// Three-node elements 2 (nodes 5, -7, 9) and 3 (nodes 3, 7, 11) in IELNOD
// (0:4, 0:3); ESTIF (0:20, 0:20), six per node, of -9; ESTIF2(a, b) = 100a + b.
struct Mesh {
    int32_t nenod = 3, ndofn = 6, ldes = 20, ldcn = 4, nodflg[12] = {};
    int32_t ielnod[20] = {0, 0, 0, 0, 0, 0, 0, 5, 3, 0, 0, 0, -7, 7, 0, 0, 0, 9, 11, 0};
    float ratio = 1000;
    Floats estif2{18, 18}, estif{20, 20, -9};
    Mesh() { for (int i = 0; i < 19 * 19; ++i) estif2.v[i] = float(i % 19 * 100 + i / 19); }
    void finish(int32_t ielem) {
        STIESTDLLDOTNET(estif2.p(), estif.p(), &nenod, nodflg, &ndofn, &ldes, nullptr, &ldcn,
                        &ielem, ielnod, &ratio);
    }
};

}  // namespace

TEST(ElementFinishing, MergesTheLowerBlockTriangleWhateverTheSwitch) {
    // A switch of either sign merges without drilling and leaves the flags
    // alone; no nodes, nothing at all.
    for (auto [nodes, on] : {std::pair{3, 1}, {3, -1}, {0, 0}}) {
        Mesh f;
        f.nenod = nodes, f.ielnod[2] = on;
        f.finish(2);
        for (int i = 0; i < 21 * 21; ++i) {
            const int r = i % 21, c = i / 21, p = (r + 5) / 6, q = (c + 5) / 6;
            const int s = r - 6 * p + 6, j = c - 6 * q + 6;  // degrees of freedom in the blocks
            const bool merged = r && c && p <= nodes && s <= 2 && j <= 2 && q <= p;
            const float want = merged ? -9 + f.estif2(2 * p - 2 + s, 2 * q - 2 + j) : -9.f;
            ASSERT_EQ(f.estif.v[i], want) << r << "," << c;
        }
        EXPECT_EQ(std::count(f.nodflg, f.nodflg + 12, 0), 12);
    }
}

TEST(ElementFinishing, DrillingStiffnessOncePerNodeAcrossElements) {
    // Rotations at -9 cap nothing: exactly 10. Node 7 (given as -7 before)
    // comes again with element 3 and keeps what the host holds.
    Mesh f;
    f.finish(2);
    EXPECT_TRUE(f.estif(6, 6) == 10 && f.estif(12, 12) == 10 && f.estif(18, 18) == 10);
    f.estif = Floats(20, 20, -9), f.estif(12, 12) = 123;
    f.finish(3);
    EXPECT_TRUE(f.estif(6, 6) == 10 && f.estif(12, 12) == 123 && f.estif(18, 18) == 10);
    for (int n = 0; n < 12; ++n) EXPECT_EQ(f.nodflg[n], n % 2 && n > 1) << n;  // 3, 5, 7, 9, 11
}

TEST(ElementFinishing, DrillingCapsAreStrictSinglePrecisionTestsInTurn) {
    // {a, b, RATIO, result} with rotations a and b: capped by a, then by b
    // testing the first cap's value (one ulp above b, a keeps its cap); 0.0001
    // is no stiffness; 10 / 150 == RATIO is not above; NaN fails every test.
    const float tiny = 0.0001f, above = std::nextafter(tiny, 1.f), s = 0x1.900002p+6f;
    const float r = 10.f / 150, r0 = std::nextafter(r, 0.f);
    const float cases[][4] = {
        {500, 2000, .001f, 500 * .001f}, {500, 100, .001f, 100 * .001f}, {s, 100, .001f, s * .001f},
        {2000, 500, .001f, 500 * .001f}, {1, 1, 1000, 10}, {tiny, tiny, 1e-6f, 10}, {150, 0, r, 10},
        {above, 0, 1e-6f, above * 1e-6f}, {150, 0, r0, 150 * r0}, {kNaN, 0, .001f, 10},
        {kNaN, 5000, .001f, 5000 * .001f}, {500, 2000, kNaN, 10}};
    for (const auto& c : cases) {
        Mesh f;
        f.nenod = 1, f.ratio = c[2], f.estif(4, 4) = c[0], f.estif(5, 5) = c[1];
        f.finish(2);
        EXPECT_EQ(f.estif(6, 6), c[3]) << c[0] << " " << c[1] << " " << c[2];
    }
}

TEST(DofSelection, SelectedComponentsGoToTheFrontOfEachBlock) {
    // EDST(6(b-1)+q, 6(a-1)+r) = ESRC(6(b-1)+IDOF(q), 6(a-1)+IDOF(r)) for
    // q, r <= NSEL, both triangles; the rest of each block and all beyond the
    // nodes keep their values. Counts below 1 copy nothing.
    const std::vector<int32_t> lists[] = {{0, 1, 2, 3, 4, 5, 6}, {0, 3, 4, 5}, {0, 1, 1}, {0, 6, 2},
                                          {0}};
    for (int32_t nodes : {2, 3, 0, -1})
        for (auto idof : lists) {
            int32_t nsel = int32_t(idof.size()) - 1, ldk = 21;
            Floats src(ldk, ldk), dst(ldk, ldk, kSentinel);
            for (std::size_t i = 0; i < src.v.size(); ++i) src.v[i] = float(i) + 0.5f;
            BUILDESTIF1DOTNET(&nodes, &nsel, &ldk, src.p(), dst.p(), idof.data());
            for (int i = 0; i < 22 * 22; ++i) {
                const int a = i % 22, b = i / 22, q = (a + 5) % 6 + 1, r = (b + 5) % 6 + 1;
                const bool kept = a && b && std::max(a, b) <= 6 * nodes && std::max(q, r) <= nsel;
                ASSERT_EQ(dst.v[i], kept ? src(a - q + idof[q], b - r + idof[r]) : kSentinel);
            }
        }
    // In place, IDOF = (2, 1): column by column, row by row, E(1,1) = E(2,2),
    // E(2,1) = E(1,2), then E(1,2) = E(2,1) and E(2,2) = E(1,1), overwritten.
    int32_t nnode = 1, nsel = 2, ldk = 6, idof[3] = {0, 2, 1};
    Floats e(6, 6);
    e(1, 1) = 11, e(2, 1) = 21, e(1, 2) = 12, e(2, 2) = 22;
    BUILDESTIF1DOTNET(&nnode, &nsel, &ldk, e.p(), e.p(), idof);
    EXPECT_TRUE(e(1, 1) == 22 && e(2, 1) == 12 && e(1, 2) == 12 && e(2, 2) == 22);
}
