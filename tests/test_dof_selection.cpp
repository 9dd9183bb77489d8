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
    HostMatrix<int32_t> idof;
    Selection(int32_t nodes, std::vector<int32_t> keep)
        : nnode(nodes), nsel(int32_t(keep.size())), ldk(6 * nodes + 3), src(ldk, ldk),
          dst(ldk, ldk, kSentinel), idof(nsel, 0, 99) {
        for (int q = 1; q <= nsel; ++q) idof(q) = keep[q - 1];
        for (int a = 0; a <= ldk; ++a)
            for (int b = 0; b <= ldk; ++b) src(a, b) = float(1000 * a + b) + 0.5f;
    }
    Selection& run(float* out) {
        BUILDESTIF1DOTNET(&nnode, &nsel, &ldk, src.ptr(), out, idof.ptr());
        return *this;
    }
};

}  // namespace

TEST(DofSelection, SelectedComponentsGoToTheFrontOfEachBlock) {
    // EDST(6(b-1) + q, 6(a-1) + r) = ESRC(6(b-1) + IDOF(q), 6(a-1) + IDOF(r))
    // for q, r <= NSEL; the other positions of each block, and everything
    // beyond the nodes, stay as they were. Spot checks written out by hand.
    const struct {
        std::vector<int32_t> keep;
        int row, col, srcRow, srcCol;                 // srcRow 0: untouched
    } cases[] = {{{1, 2, 3, 4, 5, 6}, 14, 5, 14, 5},  // the whole matrix, both triangles
                 {{3, 4, 5}, 7, 3, 9, 5},
                 {{3, 4, 5}, 10, 3, 0, 0},  // position 4 of a block
                 {{1, 1}, 8, 2, 7, 1},      // one source entry to several places
                 {{6, 2}, 7, 8, 12, 8}};
    for (const auto& k : cases) {
        Selection s(k.keep.size() == 6 ? 3 : 2, k.keep);
        s.run(s.dst.ptr());
        EXPECT_EQ(s.dst(k.row, k.col), k.srcRow ? s.src(k.srcRow, k.srcCol) : kSentinel)
            << k.row << "," << k.col;
        for (int a = 0; a <= s.ldk; ++a)
            for (int b = 0; b <= s.ldk; ++b) {
                const int q = (a - 1) % 6 + 1, r = (b - 1) % 6 + 1;
                const bool inside = a >= 1 && b >= 1 && a <= 6 * s.nnode && b <= 6 * s.nnode;
                const float want = inside && q <= s.nsel && r <= s.nsel
                                       ? s.src(a - q + s.idof(q), b - r + s.idof(r))
                                       : kSentinel;
                EXPECT_EQ(s.dst(a, b), want) << a << "," << b;
            }
    }
}

TEST(DofSelection, InPlaceCopyFollowsTheLoopOrder) {
    // One node, IDOF = (2, 1), one array as source and destination. Column
    // by column, row by row: E(1,1) = E(2,2), E(2,1) = E(1,2), then
    // E(1,2) = E(2,1) and E(2,2) = E(1,1), both already overwritten.
    Selection s(1, {2, 1});
    const float e12 = s.src(1, 2), e22 = s.src(2, 2);
    s.run(s.src.ptr());
    EXPECT_TRUE(s.src(1, 1) == e22 && s.src(2, 1) == e12 && s.src(1, 2) == e12 && s.src(2, 2) == e22);
}

TEST(DofSelection, EmptyCountsWriteNothing) {
    for (auto [nodes, sel] : {std::pair{0, 2}, {2, 0}, {-1, 3}, {2, -1}}) {
        Selection s(2, {1, 2, 3});
        s.nnode = nodes, s.nsel = sel;
        EXPECT_TRUE(all_bits(s.run(s.dst.ptr()).dst, kSentinel)) << nodes << "," << sel;
    }
}
