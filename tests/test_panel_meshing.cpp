// Panel meshing: panel shape functions (SFR1DLLDOTNET) and the mapping of
// reference cells onto a panel (SUBDIVIDEPANELDLLDOTNET).
#include "fixtures.hpp"

namespace {

using Point = std::array<float, 2>;
// Nodes 1..8 of the quadrilateral, 1..6 of the quadratic triangle (1, 3, 5: linear one's).
const Point kQuad[9] = {{}, {-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}};
const Point kTri[7] = {{}, {1, 0}, {.5f, .5f}, {0, 1}, {0, .5f}, {0, 0}, {.5f, 0}};

Floats shape(int32_t kind, Point at, int axis = 0, float by = 0) {  // SHP (0:9, 0:3)
    Floats shp(9, 3, kSentinel);
    at[axis] += by;
    return SFR1DLLDOTNET(shp.p(), &at[0], &at[1], &kind), shp;
}

// A panel as rows 0..9 of x, y, z (XYZ) and values (NODVAL) in columns 0..3;
// the corners 0..4 of the cell come back the same way (PTS, VALS), row 0 kept.
Floats mapCell(Floats& panel, int32_t kind, float xi, float eta, float delta) {
    Floats out(4, 3, kSentinel);
    SUBDIVIDEPANELDLLDOTNET(panel.p(), out.p(), &out(0, 3), &eta, &xi, &delta, &kind, &panel(0, 3));
    const float row0 = out(0, 0) + out(0, 1) + out(0, 2) + out(0, 3);
    EXPECT_TRUE(out.count(kSentinel) == 4 && row0 == 4 * kSentinel) << kind << " " << xi;
    return out;
}

}  // namespace

TEST(PanelShapeFunctions, NodesStatedPointsAndAllFortyEntries) {
    // {kind, point, functions, rows 1.. of column 1 then (Hermite line) of columns 2, 3}: at a
    // node its own function is 1; the uncorrected bubble makes the nine sum to 2 at the centre;
    // Hermite slope functions have slope 1 at their own node. Elsewhere, unknown kinds: 0.
    const float q = -.25f, h = .5f;
    struct Case { int32_t kind; Point at; int rows; std::vector<float> pin; };
    const Case cases[] = {{1, {0, 0}, 9, {q, h, q, h, q, h, q, h, 1}},
        {2, {1, -1}, 9, {0, 0, 1, 0, 0, 0, 0, 0, 0}}, {6, {0, 0}, 3, {0, 0, 1}},
        {4, {1, kNaN}, 6, {0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 3.5f, 1, 8, 8, -11.5f, 6}},
        {4, {-1, 9}, 6, {1, 0, 0, 0, 0, 0, 0, 1}}, {4, {0, 0}, 6, {0, 0, 1, 0, 0, 0, 0, 0, 0, 1}},
        {5, {.5f, .25f}, 0, {}}, {7, {.5f, .25f}, 0, {}}, {0, {0, 0}, 0, {}}, {-1, {0, 0}, 0, {}}};
    for (const Case& c : cases) {
        const Floats s = shape(c.kind, c.at);
        for (int i = 0; i < 40; ++i) {
            const int r = i % 10, col = i / 10, at = (col - 1) * c.rows + r - 1;
            const bool off = !r || !col || r > c.rows, pinned = off || at < int(c.pin.size());
            EXPECT_TRUE(!pinned || s.v[i] == (off ? 0 : c.pin[at])) << c.kind << " " << i;
        }
    }
    const Floats t = shape(3, {1 / 3.f, 1 / 3.f});  // centroid: corners -1/9, mid-sides 4/9
    for (int r = 1; r <= 6; ++r) EXPECT_NEAR(t(r, 1), r % 2 ? -1 / 9. : 4 / 9., 2e-7) << r;
}

TEST(PanelShapeFunctions, DerivativesAreThoseOfTheValues) {
    // Five-point central differences of the values in xi and in eta; for the Hermite line,
    // whose eta is not read (NaN), of the values and of the first derivatives in xi.
    const double h = 0x1p-5;
    for (int32_t kind : {1, 2, 3, 4, 6})
        for (Point at : {Point{.3125f, -.6875f}, {-.5625f, .1875f}, {1.25f, .875f}, {-1, .5f}})
            for (int dir : {0, 1}) {
                const int from = kind == 4 ? dir + 1 : 1, axis = kind == 4 ? 0 : dir;
                at[1] = kind == 4 ? kNaN : at[1];
                auto f = [&](int k, int r) { return shape(kind, at, axis, float(k * h))(r, from); };
                for (int r = 1; r <= 9; ++r) {
                    const double d = (f(-2, r) - 8. * f(-1, r) + 8. * f(1, r) - f(2, r)) / (12 * h);
                    EXPECT_NEAR(shape(kind, at)(r, 2 + dir), d, 1e-4) << kind << at[0] << " " << r;
                }
            }
}

TEST(PanelSubdivision, PanelsAreMappedCellByCell) {
    // Panels whose x, y, z and values are quadratics of (xi, eta), linear for the linear
    // triangle: each kind reproduces them, exactly at its nodes (the linear triangle: anywhere);
    // unknown kinds give 0. Rows past a kind's nodes: finite garbage; rows 0 and 9: NaN. Cells:
    // the square, a point, sides of 1/2, and (0.1, 0.25) of side 1 whose fourth corner is at
    // (0.1 + 1) - 1, not 0.1 in single precision. ETA before XI.
    auto f = [](int32_t kind, int c, double x, double y) {
        const double quadratic[4] = {2 * x + .5 * y + .3 * y * y, 1.5 * y - .25 * x + .2 * x * y,
                                     1 + .3 * x * x - .4 * x * y + .2 * y * y, 3 - x + 2 * x * x};
        const double linear[4] = {x, y, 2 * y, 4 * x};
        return kind == 6 ? linear[c] : kind > 0 && kind < 4 ? quadratic[c] : 0;
    };
    ASSERT_NE((.1f + 1.f) - 1.f, .1f);
    std::vector<std::array<float, 3>> cells = {{-1, -1, 2}, {.375f, -.5f, 0}, {.1f, .25f, 1}};
    for (int i = 0; i < 16; ++i) cells.push_back({float(i % 4) / 2 - 1, float(i / 4) / 2 - 1, .5f});
    for (int32_t kind : {1, 2, 3, 6, 5, 0, 7}) {
        const int last = std::array{0, 8, 8, 6, 0, 0, 3, 0}[kind];
        auto node = [&](int i) { return kind < 3 ? kQuad[i] : kTri[kind == 3 ? i : 2 * i - 1]; };
        Floats panel(9, 3, kNaN);
        for (int i = 1; i <= 8; ++i)
            for (int c = 0; c < 4; ++c)
                panel(i, c) = i > last ? 3e38f : float(f(kind, c, node(i)[0], node(i)[1]));
        for (auto [xi, eta, d] : cells) {
            const Floats out = mapCell(panel, kind, xi, eta, d);
            const Point corner[4] = {
                {xi, eta}, {xi + d, eta}, {xi + d, eta + d}, {(xi + d) - d, eta + d}};
            for (int i = 0, n = 1; i < 16; ++i, n = 1) {
                const int k = i / 4 + 1, c = i % 4;
                const Point p = corner[k - 1];
                while (n <= last && node(n) != p) ++n;
                const float got = out(k, c), tol = kind == 6 ? 0 : 2e-6f * (1 + std::fabs(got));
                EXPECT_NEAR(got, f(kind, c, p[0], p[1]), tol) << kind << " " << xi << eta << k;
                EXPECT_TRUE(n > last || got == panel(n, c)) << kind << " " << n;
            }
        }
        panel(6, 1) = kNaN;  // unlike finite garbage, a NaN spoils its column, any kind
        EXPECT_TRUE(std::isnan(mapCell(panel, kind, .25f, .25f, .5f)(2, 1))) << kind;
    }
}
