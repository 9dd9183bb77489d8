// Planar geometry for the mesher: distances, areas, segment intersection,
// orientation, vertex gathering, triangle acceptance and near-node search.
#include "fixtures.hpp"

namespace {

using Pt = std::array<double, 3>;  // x, y and a z that no plane routine may read
using Ints = std::vector<int32_t>;
const double kNaND = std::nan(""), kInfD = INFINITY;
Pt pt(double x, double y) { return {x, y, kNaND}; }

// The predicate constants as a host computes them.
struct Bounds {
    double a, b, c, r, split = 0x1p27 + 1;
};
constexpr double kEps = 0x1p-53;
const Bounds kHost = {(3 + 16 * kEps) * kEps, (2 + 12 * kEps) * kEps, (9 + 64 * kEps) * kEps * kEps,
                      (3 + 8 * kEps) * kEps};

double orient(Pt a, Pt b, Pt c, const Bounds& k = kHost) {
    return ORIENT2D(a.data(), b.data(), c.data(), &k.a, &k.b, &k.c, &k.split, &k.r);
}

}  // namespace

TEST(PlanarMeasures, DistanceAndAreaClosedForms) {
    // Offsets 3 and 4 that a mixed-up coordinate turns into 2 and 5; the area
    // case has all three cross-product components non-zero: (-6, 6, -3) / 2.
    EXPECT_EQ(POINTDIST2D(pt(1, 2).data(), pt(4, 6).data()), 5);
    EXPECT_EQ(POINTDIST2D(pt(4, 6).data(), pt(1, 2).data()), 5);
    EXPECT_EQ(POINTDIST2D(pt(-1, 5).data(), pt(-1, 5).data()), 0);
    const std::array<Pt, 3> tris[] = {{{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
        {{{1, -1, 2}, {2, 1, 4}, {3, 0, 0}}}, {{{0, 0, 0}, {1, 0, 0}, {0, 0, 2}}},
        {{{0, 0, 0}, {0, 3, 0}, {0, 0, 2}}}, {{{1, 1, 1}, {2, 3, 4}, {3, 5, 7}}}};
    const double area[] = {.5, 4.5, 1, 3, 0};
    for (int i = 0; i < 5; ++i)
        for (int r = 0; r < 3; ++r)  // every rotation and the reversed order
            for (bool rev : {false, true}) {
                const Pt &a = tris[i][r], &b = tris[i][(r + (rev ? 2 : 1)) % 3],
                         &c = tris[i][(r + (rev ? 1 : 2)) % 3];
                EXPECT_EQ(TRIAREA3D(a.data(), b.data(), c.data()), area[i]) << i << r << rev;
            }
}

TEST(SegmentIntersection, CodesInOrderStrictTolerancesAndParameters) {
    // S and T keep their sentinels unless the code is 11. PARTOL is squared and
    // compared with the raw cross product: perpendicular short segments count as
    // parallel, long segments 0.57 degrees apart do not.
    struct Case { Pt p1, p2, q1, q2; double lentol, partol; int32_t code; double s, t; };
    const double u = kSentinel, five = 5, over = std::nextafter(five, kInfD);
    const Case cases[] = {
        {pt(0, 0), pt(0, .25), pt(1, 1), pt(1, 1), .5, 0, 0, u, u},
        {pt(0, 0), pt(3, 4), pt(1, 1), pt(1.25, 1), .5, 0, -1, u, u},
        {pt(0, 0), pt(3, 4), pt(3, 0), pt(-1, 3), five, 0, 11, 9. / 25, 12. / 25},
        {pt(0, 0), pt(3, 4), pt(3, 0), pt(-1, 3), over, 0, 0, u, u},
        {pt(0, 0), pt(6, 8), pt(3, 0), pt(-1, 3), over, 0, -1, u, u},
        {pt(0, 0), pt(3, 4), pt(3, 0), pt(4, 0), five, 0, -1, u, u},
        {pt(0, 0), pt(2, 0), pt(1, -1), pt(1, 1), 1, 2, 11, .5, .5},
        {pt(0, 0), pt(2, 0), pt(1, -1), pt(1, 1), 1, std::nextafter(2., 3.), 10, u, u},
        {pt(0, 0), pt(1, 0), pt(.5, -.125), pt(.5, .25), .1, .5, 11, .5, 1. / 3},
        {pt(0, 0), pt(2, 0), pt(1, -1), pt(1, 1), 1, 3, 10, u, u},
        {pt(0, 0), pt(100, 0), pt(0, 1), pt(100, 2), 1, 1, 11, -1, -1},
        {pt(0, 0), pt(.5, 0), pt(.25, -.25), pt(.25, .25), .1, .75, 10, u, u},
        {pt(0, 0), pt(4, 0), pt(1, -1), pt(1, 1), 1, 1e-3, 11, .25, .5},
        {pt(0, 0), pt(1, 0), pt(3, 1), pt(3, 2), 1, 1e-3, 11, 3, -1},
        {pt(0, 0), pt(2, 2), pt(0, 3), pt(3, 0), 1, 1, 11, .75, .5}};  // negative cross product
    for (const Case& c : cases) {
        double s = u, t = u;
        EXPECT_EQ(LINEINTERSECT2D(c.p1.data(), c.p2.data(), c.q1.data(), c.q2.data(), &s, &t,
                                  &c.lentol, &c.partol), c.code) << c.q2[0] << " " << c.partol;
        EXPECT_TRUE(s == c.s && t == c.t) << std::hexfloat << s << " " << t;
    }
}

TEST(Orientation, SignsExactZerosLaterStagesAndNaN) {
    EXPECT_EQ(orient(pt(0, 0), pt(1, 0), pt(0, 1)), 1);
    EXPECT_EQ(orient(pt(1, 0), pt(0, 1), pt(0, 0)), 1);
    EXPECT_EQ(orient(pt(1, 0), pt(0, 0), pt(0, 1)), -1);
    EXPECT_EQ(orient(pt(1, 2), pt(4, 3), pt(2, 7)), 14);
    EXPECT_EQ(orient(pt(2, 7), pt(4, 3), pt(1, 2)), -14);
    // Collinear: equal products (no tails), then differences with tails that
    // only the exact expansion settles.
    EXPECT_EQ(orient(pt(0, 0), pt(1, 1), pt(2, 2)), 0);
    EXPECT_EQ(orient(pt(.1, .1), pt(.2, .2), pt(.7, .7)), 0);
    // Points a few ulps off y = 0.3 x + 0.1, each returning from its own stage
    // with a value the next stage would change: stage B keeps the determinant of
    // the rounded differences (exact: 0x1.bccp-53); stage D would give
    // 0x1.ed76666666667p-51 for the second; the third is exact only in stage D.
    const std::array<Pt, 3> near[] = {{pt(0x1.d90cccccccccdp+1, 0x1.356e147ae147cp+0),
                                          pt(0x1.0b5999999999ap+0, 0x1.a73851eb851e9p-2),
                                          pt(0x1.6a0cccccccccdp+1, 0x1.e5a8f5c28f5c3p-1)},
                                         {pt(0x1.092cccccccccdp+1, 0x1.7168f5c28f5c2p-1),
                                          pt(0x1.0356666666666p+2, 0x1.50ce147ae147cp+0),
                                          pt(0x1.aa66666666666p-2, 0x1.cca3d70a3d709p-3)},
                                         {pt(0x1.2c4cccccccccdp+1, 0x1.9b8f5c28f5c27p-1),
                                          pt(0x1.864cccccccccdp+1, 0x1.03c7ae147ae13p+0),
                                          pt(0x1.78ccccccccccdp-3, 0x1.3dd70a3d70a41p-3)},
                                         {pt(4.4, -7.4), pt(9.4, 8), pt(-4.6, 9.9)}};
    const double want[] = {0x1.15ep-52, 0x1.ed76666666666p-51, -0x1.8p-107, 0x1.c233333333334p+7};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(orient(near[i][0], near[i][1], near[i][2]), want[i]) << i;
    // Bounds that stop the third case in stage A (its plain determinant is 0), B,
    // C, or not in C once RESULTERRBOUND raises its bound; the first case exactly
    // at stage B's bound (not strict), then one ulp below it; the well-separated
    // fourth in stage B, whose sum of four components rounds otherwise.
    const double atB = 0x1.2b53d75b85774p-52;
    const std::tuple<int, Bounds, double> forced[] = {{2, {0, 1, 1, 1}, 0},
        {2, {1, 0, 1, 1}, -0x1.56p-55}, {2, {1, 1, 0, 0}, -0x1p-106},
        {2, {1, 1, 0, 1}, -0x1.8p-107}, {0, {1, atB, 1, 1}, 0x1.15ep-52},
        {0, {1, std::nextafter(atB, 1.), 1, 1}, 0x1.bccp-53},
        {3, {1, 0, 1, 1}, 0x1.c233333333333p+7}};
    for (const auto& [i, k, w] : forced)
        EXPECT_EQ(orient(near[i][0], near[i][1], near[i][2], k), w) << i;
    for (int i = 0; i < 6; ++i) {  // NaN in any coordinate
        std::array<Pt, 3> p = near[0];
        p[i / 2][i % 2] = kNaND;
        EXPECT_TRUE(std::isnan(orient(p[0], p[1], p[2]))) << i;
    }
}

TEST(ElementVertices, FromKfirstThroughTheTablesLastRowElementAfterElement) {
    // ELEMNOD (0:NLAST, 1:NV) holds 100 K + j, then a column of -5; VERTS is of -7.
    struct Case { int32_t nlast, kfirst, nv; Ints want; };
    const Case cases[] = {{3, 1, 2, {101, 102, 201, 202, 301, 302}}, {3, 3, 3, {301, 302, 303}},
        {2, 0, 2, {1, 2, 101, 102, 201, 202}}, {0, 0, 1, {1}}, {3, 4, 2, {}}, {3, 1, 0, {}},
        {3, 1, -2, {}}};
    for (const Case& c : cases) {
        const int rows = c.nlast + 1;
        Ints tab(std::size_t(rows * (std::max(c.nv, 0) + 1)), -5), verts(12, -7), want = c.want;
        for (int k = 0; k < rows; ++k)
            for (int j = 1; j <= c.nv; ++j) tab[std::size_t(k + (j - 1) * rows)] = 100 * k + j;
        GETELEMENTVERTICES(verts.data(), tab.data(), nullptr, &c.nlast, nullptr, &c.kfirst, &c.nv);
        want.resize(12, -7);
        EXPECT_EQ(verts, want) << c.nlast << " " << c.kfirst << " " << c.nv;
    }
}

TEST(TriangleAcceptance, CandidatesOnASquareMeshFront) {
    // Square 0..4, nodes 1..8 counter-clockwise from the origin every 2; a front
    // edge at y = 2.5 held both ways (rows 0 and 9); a short constraint 12-13 at
    // y = 1; dangling edges 9-11 and 4-14; the chord 1-3 through node 2. Rows from
    // NEDGE and nodes from 15 are garbage: the line 15-16 cuts every triangle.
    const double xy[][2] = {{0, 0}, {2, 0}, {4, 0}, {4, 2}, {4, 4}, {2, 4}, {0, 4}, {0, 2},
        {1, 2.5}, {3, 2.5}, {1, 1.5}, {1.875, 1}, {2.125, 1}, {3.5, 2.5}, {-10, .75}, {10, .75},
        {-7, 9}, {9, -7}};
    const int32_t rows[][2] = {{10, 9}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {5, 6}, {6, 7}, {7, 8},
        {8, 1}, {9, 10}, {12, 13}, {9, 11}, {1, 3}, {4, 14}, {15, 16}, {16, 15}, {17, 18}};
    int32_t lde = 16, ldn = 17;
    std::vector<double> nodes(3 * 18, kNaND);
    Ints edges(2 * 17);
    for (int n = 0; n < 18; ++n) nodes[n] = xy[n][0], nodes[n + 18] = xy[n][1];
    for (int k = 0; k < 17; ++k) edges[k] = rows[k][0], edges[k + 17] = rows[k][1];
    struct Case { int32_t iedge, nodex; double px, py; int32_t nedge; double ontol; int32_t want; };
    const double on = 1e-9;
    const Case cases[] = {
        {1, 0, 1, 1, 12, on, 1}, {1, 0, 1, 1, 13, on, 2},  // the chord meets P-b at b: T = 1
        {1, 0, 2.125, 1.125, 12, on, 2},   // a sliver whose sides cut 12-13, both nodes outside
        {1, 0, 2.125, 1.125, 0, on, 1},
        {0, 0, 2, .5, 12, on, 2}, {9, 0, 2, .5, 12, on, 1},  // 12, 13 inside; clockwise
        {0, 0, 2, .5, 1, on, 1},           // only the base edge
        {12, 0, 3, .5, 13, on, 2}, {12, 0, 3, .5, 13, 0, 1},  // node 2 on the base
        {12, 2, 3, .5, 13, on, 1},         // NODEX need not be the apex: node 2 is left out
        {3, 0, 3, 3, 14, on, 2}, {3, 0, 3, 3, 14, 0, 1},  // node 14 on side b-P
        {1, 0, 3.75, 3.125, 9, 0, 2},      // node 10 on P-a: S = 0 along row 0
        {1, 0, 1, 2.5, 9, on, 2},          // P at node 9: S = 1, T = 0
        {1, 9, 1, 2.5, 9, on, 1},          // ... as node 9 itself: no crossing test on row 0
        {1, 9, 1, 2.5, 12, on, 2}};        // ... but node 11 of edge 9-11 lies inside
    const double lentol = 1e-9, partol = 1e-9;
    for (const Case& c : cases) {
        const Pt p = pt(c.px, c.py);
        EXPECT_EQ(CHECKNEWTRIANG(&c.iedge, &c.nodex, p.data(), nodes.data(), &c.nedge,
                                 edges.data(), &kHost.a, &kHost.b, &kHost.c, &kHost.split, &lde,
                                 &ldn, &lentol, &partol, &c.ontol, &kHost.r), c.want)
            << c.iedge << " " << c.nodex << " " << c.px << "," << c.py << " " << c.nedge;
    }
}

TEST(NearNodes, LeftOfTheBaseNearestOnceSortedAndCountedAsTheSortLeavesThem) {
    // Base 1 (-10, 0) -> 2 (10, 0), P at the origin. Distances: 3 at 1, 4 at 1 on
    // the right, 5 at 3 and 9 at 5 on the line, 6 at 2, 7, 8, 12 at 5, 10 at 10;
    // 11 at 0.5 stands only in rows, the column and XY rows beyond those scanned.
    const double xy[][2] = {{-10, 0}, {10, 0}, {0, 1}, {0, -1}, {3, 0}, {0, 2}, {4, 3}, {-3, 4},
                            {-5, 0}, {6, 8}, {0, .5}, {-4, 3}};
    std::vector<double> nodes(3 * 16, 0.25);  // XY (LDN = 15): nodes 13.. at (0.25, 0.25)
    for (int n = 0; n < 12; ++n) nodes[n] = xy[n][0], nodes[n + 16] = xy[n][1];
    Host<int32_t> table(6, 4, 11);  // TABLE (0:6, 1:3) and a column 4 beyond NCOL
    const int32_t rows[4][3] = {{1, 7, 4}, {8, 2, 9}, {3, 7, 6}, {5, 10, 12}};
    for (int i = 0; i < 12; ++i) table(i / 3, 1 + i % 3) = rows[i / 3][i % 3];
    // Scanning row after row, 7, 8, 9, 3 fill four places; 6 replaces 7 (the first
    // of the farthest), 5 replaces 8 (the first again) and 12 ties with 9 and is
    // dropped. The sort moves 3 first but leaves its own distance 2 in front, so
    // the stored distances run 2, 3, 5, 5: RADIUS 3 counts 2 where the true
    // distances 1, 2, 3, 5 would count 3. With two places, 3 replaces 7 and only
    // a rescan reaching the last entry lets 6 replace 8.
    struct Case { int32_t kmax, nrow; double radius; Ints want; int32_t within; };
    const Case cases[] = {{4, 4, 3, {3, 6, 5, 9}, 2}, {4, 4, .5, {3, 6, 5, 9}, 0},
        {1, 4, 1, {3}, 1}, {2, 4, 2, {3, 6}, 2}, {7, 4, 5, {3, 6, 5, 7, 8, 9, 12}, 7},
        {9, 4, 10, {3, 6, 5, 7, 8, 9, 12, 10}, 8}, {4, 0, 1, {}, 0}};
    for (const Case& c : cases) {
        int32_t na = 1, nb = 2, ldt = 6, ldn = 15, ncol = 3, nwithin = -3, nnear = 0;
        Ints near(10, -7), want = c.want;
        const Pt p = pt(0, 0);
        const int32_t n = GETNEARNODES(&na, &nb, p.data(), nodes.data(), &c.nrow, &table(0, 1),
                                       &c.radius, &nwithin, &nnear, near.data(), &kHost.a,
                                       &kHost.b, &kHost.c, &kHost.split, &ldt, &ldn, &kHost.r,
                                       &c.kmax, &ncol);
        want.resize(10, -7);
        EXPECT_TRUE(n == int32_t(c.want.size()) && nnear == n && nwithin == c.within)
            << c.kmax << " " << n << " " << nnear << " " << nwithin;
        EXPECT_EQ(near, want) << c.kmax;
    }
}
