// Degree-of-freedom selection from six-per-node element matrices
// (BUILDESTIF1DOTNET).
#include "element_fixtures.hpp"

using namespace fixtures;

namespace {

// ESRC non-symmetric with distinct entries, EDST sentinel-filled, both
// (0:LDK, 0:LDK) with three spare rows and columns; IDOF(0) unused (99).
struct Selection {
    int32_t nnode, nsel, ldk;
    Floats src, dst;
    HostArray<int32_t> idof;
    Selection(int32_t nodes, std::vector<int32_t> keep)
        : nnode(nodes), nsel(int32_t(keep.size())), ldk(6 * nodes + 3), src(ldk, ldk, 0.0f),
          dst(ldk, ldk, kSentinel), idof(nsel, 0, 99) {
        for (int q = 1; q <= nsel; ++q) idof(q) = keep[q - 1];
        for (int a = 0; a <= ldk; ++a)
            for (int b = 0; b <= ldk; ++b) src(a, b) = float(1000 * a + b) + 0.5f;
    }
    Selection& run() {
        BUILDESTIF1DOTNET(&nnode, &nsel, &ldk, src.data(), dst.data(), idof.data());
        return *this;
    }
    // What EDST(row, col) must hold: the selected source entry, or untouched.
    float expected(int row, int col) const {
        const int q = (row - 1) % 6 + 1, r = (col - 1) % 6 + 1;
        const bool inside = row >= 1 && col >= 1 && row <= 6 * nnode && col <= 6 * nnode;
        if (!inside || q > nsel || r > nsel) return kSentinel;
        return src(row - q + idof(q), col - r + idof(r));
    }
    void expectAll() const {
        for (int a = 0; a <= ldk; ++a)
            for (int b = 0; b <= ldk; ++b) EXPECT_EQ(dst(a, b), expected(a, b)) << a << "," << b;
    }
};

}  // namespace

TEST(DofSelection, SelectedComponentsGoToTheFrontOfEachBlock) {
    Selection all(3, {1, 2, 3, 4, 5, 6});  // the whole matrix, both triangles
    all.run().expectAll();
    EXPECT_EQ(all.dst(14, 5), all.src(14, 5));
    Selection middle(2, {3, 4, 5});  // positions 4 to 6 of every block untouched
    middle.run().expectAll();
    EXPECT_EQ(middle.dst(7, 3), middle.src(9, 5));
    EXPECT_EQ(middle.dst(10, 3), kSentinel);
    Selection repeated(2, {1, 1});  // one source entry to several places
    repeated.run().expectAll();
    EXPECT_EQ(repeated.dst(8, 2), repeated.src(7, 1));
    Selection reordered(2, {6, 2});
    reordered.run().expectAll();
    EXPECT_EQ(reordered.dst(7, 8), reordered.src(12, 8));
}

TEST(DofSelection, InPlaceCopyFollowsTheLoopOrder) {
    // One node, IDOF = (2, 1), one array as source and destination. Column
    // by column, row by row: E(1,1) = E(2,2), E(2,1) = E(1,2), then
    // E(1,2) = E(2,1) and E(2,2) = E(1,1), both already overwritten.
    Selection s(1, {2, 1});
    const float e12 = s.src(1, 2), e22 = s.src(2, 2);
    BUILDESTIF1DOTNET(&s.nnode, &s.nsel, &s.ldk, s.src.data(), s.src.data(), s.idof.data());
    EXPECT_EQ(s.src(1, 1), e22);
    EXPECT_EQ(s.src(2, 1), e12);
    EXPECT_EQ(s.src(1, 2), e12);
    EXPECT_EQ(s.src(2, 2), e22);
}

TEST(DofSelection, EmptyCountsWriteNothing) {
    for (auto [nodes, sel] : {std::pair{0, 2}, {2, 0}, {-1, 3}, {2, -1}}) {
        Selection s(2, {1, 2, 3});
        s.nnode = nodes, s.nsel = sel;
        EXPECT_TRUE(s.run().dst.sameBits(Floats{s.ldk, s.ldk, kSentinel})) << nodes << "," << sel;
    }
}
