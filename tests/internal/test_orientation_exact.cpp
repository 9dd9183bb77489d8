// The orientation predicate against exact rational arithmetic on millions of
// nearly and exactly collinear points, each stage's way out, and the
// expansion sum beneath the last stage.
//
// Every input keeps the predicate inside its guarantee: no product of
// coordinate differences overflows (all coordinates stay below 2^497, and
// the splitter times any of them below 2^1023), and nothing underflows: the
// finest bit of any x coordinate times the finest of any y coordinate stays
// at or above 2^-1074, so every exact product and every tail of one is a
// representable double.
#include <gmp.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <vector>

#include "frame/expansion.hpp"
#include "geometry/orientation.hpp"

namespace {

using shellfe::Point2;

constexpr double kEps = 0x1p-53;  // the constants as a host computes them
const shellfe::PredicateConstants kK{(3 + 16 * kEps) * kEps, (2 + 12 * kEps) * kEps,
                                     (9 + 64 * kEps) * kEps * kEps, 0x1p27 + 1,
                                     (3 + 8 * kEps) * kEps};
const double kInf = std::numeric_limits<double>::infinity();

int sign(double d) { return (d > 0) - (d < 0); }

// The sign of (ax-cx)(by-cy) - (ay-cy)(bx-cx) in rationals (every double is
// one, exactly).
class ExactSign {
    mpq_t v[6];

public:
    ExactSign() { for (auto& q : v) mpq_init(q); }
    ~ExactSign() { for (auto& q : v) mpq_clear(q); }
    int operator()(Point2 a, Point2 b, Point2 c) {
        const double d[6] = {a.x, c.x, b.y, c.y, a.y, b.x};
        for (int i = 0; i < 6; ++i) mpq_set_d(v[i], d[i]);
        mpq_sub(v[0], v[0], v[1]), mpq_sub(v[2], v[2], v[3]);
        mpq_sub(v[4], v[4], v[3]), mpq_sub(v[5], v[5], v[1]);
        mpq_mul(v[0], v[0], v[2]), mpq_mul(v[4], v[4], v[5]);
        const int r = mpq_cmp(v[0], v[4]);
        return (r > 0) - (r < 0);
    }
};

// Calls the predicate, counts the stage that returned, checks the sign.
struct Oracle {
    ExactSign exact;
    long stages[5] = {}, wrong = 0, collinear_nonzero = 0;
    void operator()(Point2 a, Point2 b, Point2 c) {
        int stage = 0;
        const double d = shellfe::orientation(a, b, c, kK, &stage);
        ++stages[stage];
        const int s = exact(a, b, c);
        // The merge order of the last stage can leave a tiny nonzero for
        // exactly collinear points (see MergeRuleCanLeaveANonzero...):
        // counted, not failed. Any other disagreement is a sign error.
        if (s == 0 && d != 0 && stage == 4) ++collinear_nonzero;
        else if (sign(d) != s && ++wrong <= 5)
            ADD_FAILURE() << std::hexfloat << "stage " << stage << ": " << d << " for " << a.x << ' '
                          << a.y << ", " << b.x << ' ' << b.y << ", " << c.x << ' ' << c.y;
    }
    void rotated(int r, Point2 a, Point2 b, Point2 c) {  // the same orientation, any role
        r % 3 == 0 ? (*this)(a, b, c) : r % 3 == 1 ? (*this)(b, c, a) : (*this)(c, a, b);
    }
};

Point2 nudged(Point2 p, int kx, int ky) {  // by kx and ky ulps
    for (; kx; kx -= kx > 0 ? 1 : -1) p.x = std::nextafter(p.x, kx > 0 ? kInf : -kInf);
    for (; ky; ky -= ky > 0 ? 1 : -1) p.y = std::nextafter(p.y, ky > 0 ? kInf : -kInf);
    return p;
}

}  // namespace

TEST(OrientationExact, SignIsExactOnAdversarialPoints) {
    Oracle check;
    // Points ulp by ulp from (0.5, 0.5) against long lines through it of
    // slopes 1, 2, -1 and 1/3, plainly and scaled by 2^k up to about 1e147
    // and down to about 1e-145.
    const Point2 lines[][2] = {{{12, 12}, {24, 24}},
                               {{8.5, 16.5}, {24.5, 48.5}},
                               {{12.5, -11.5}, {24.5, -23.5}},
                               {{12.5, 4.5}, {24.5, 8.5}}};
    for (int k : {0, -480, -97, 61, 490}) {
        const int n = k ? 128 : 256;
        for (const auto& l : lines) {
            const Point2 b{std::ldexp(l[0].x, k), std::ldexp(l[0].y, k)};
            const Point2 c{std::ldexp(l[1].x, k), std::ldexp(l[1].y, k)};
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    check.rotated(i + j, nudged({std::ldexp(0.5, k), std::ldexp(0.5, k)}, i, j), b, c);
        }
    }
    std::mt19937_64 rng(20240611);
    std::uniform_real_distribution<double> unit(-1, 1);
    const auto bits = [&](int n, int e) {  // n significant bits, magnitude in [2^e, 2^(e+1))
        const double m = std::floor(std::ldexp(std::fabs(unit(rng)) * 0.5 + 0.5, n));
        return std::ldexp(rng() & 1 ? m : -m, e + 1 - n);
    };
    const auto pick = [&](int lo, int hi) { return lo + int(rng() % unsigned(hi - lo + 1)); };
    for (int i = 0; i < 300000; ++i) {
        // Exact multiples of a short direction, whose differences round: on
        // the line, nudged off it, with a tiny point near the origin, and a
        // point just off the line at (0, e).
        const double p = pick(1, 7), q = pick(-7, 7) | 1;
        const auto on = [&](double t) { return Point2{t * p, t * q}; };
        const Point2 a = on(bits(50, pick(-6, 0))), b = on(bits(50, pick(-6, 0)));
        const Point2 c = on(bits(50, pick(-60, 0)));
        check.rotated(i, a, b, nudged(c, pick(-2, 2), pick(-2, 2)));
        check.rotated(i, nudged(on(bits(50, pick(-300, -40))), pick(-2, 2), 0), b, c);
        check.rotated(i, Point2{0, bits(50, pick(-300, -120))}, b, c);
        // Points differing in their last bits.
        const Point2 r{unit(rng), unit(rng)};
        check.rotated(i, nudged(r, pick(-3, 3), pick(-3, 3)), nudged(r, pick(-3, 3), pick(-3, 3)), r);
        // Random points.
        for (int r = 0; r < 2; ++r)
            check({unit(rng), unit(rng)}, {unit(rng), unit(rng)}, {unit(rng), unit(rng)});
    }
    std::printf("orientation stages: A %ld, B %ld, C %ld, D %ld; collinear but nonzero %ld\n",
                check.stages[1], check.stages[2], check.stages[3], check.stages[4],
                check.collinear_nonzero);
    for (int s = 1; s <= 4; ++s) EXPECT_GT(check.stages[s], 0) << "stage " << s;
    EXPECT_EQ(check.wrong, 0);
}

TEST(OrientationExact, EachStageReturnsItsOwnWay) {
    // {a, b, c, stage, result}: A on a clear triangle and on collinear points
    // whose first product is zero; B just off the line y = x; C with rounded
    // differences, and with exact ones (all tails zero: B's estimate comes
    // back, zero or not); D on collinear points whose differences round, and
    // on a point 2^-154 off a line through the origin, where the middle sum
    // adds its two smallest components in the wrong magnitude order and the
    // fast two-sum drops bits, far below the determinant.
    const double e = std::nextafter(0.5, 1.0);
    const struct {
        Point2 a, b, c;
        int stage;
        double want;
    } cases[] = {
        {{0, 0}, {1, 0}, {0, 1}, 1, 1},
        {{0, 0}, {1, 0}, {2, 0}, 1, 0},
        {{0.5, 0x1.0000000000051p-1}, {12, 12}, {24, 24}, 2, 0x1.2p-43},
        {{0.5, e}, {12, 12}, {24, 24}, 3, 0x1.8p-50},
        {{0, 0}, {1, 1}, {3, 3}, 3, 0},
        {{0, 0}, {3, 0x1.8000000000001p+1}, {1, 1}, 3, -0x1p-51},
        {{e, e}, {12, 12}, {24, 24}, 4, 0},
        {{0x1.3bcdddb0300a9p-1, 0x1.3bcdddb0300a9p-1}, {-0x1.16a40f9b4f13fp-17, -0x1.16a40f9b4f13fp-17},
         {0x1.956e4ff293d28p-231, 0x1.97f7d57760a48p-159}, 4, -0x1.f747c27624305p-160},
    };
    ExactSign exact;
    for (const auto& k : cases) {
        int stage = 0;
        const double d = shellfe::orientation(k.a, k.b, k.c, kK, &stage);
        EXPECT_EQ(stage, k.stage) << std::hexfloat << k.a.x << ", " << k.a.y;
        EXPECT_EQ(d, k.want) << std::hexfloat << d;
        EXPECT_EQ(sign(d), exact(k.a, k.b, k.c));
        EXPECT_EQ(std::signbit(d), std::signbit(k.want));
    }
    int stage = 0;
    EXPECT_TRUE(std::isnan(shellfe::orientation({0, NAN}, {1, 0}, {0, 1}, kK, &stage)));
    EXPECT_EQ(stage, 1);
}

TEST(OrientationExact, MergeRuleCanLeaveANonzeroForCollinearPoints) {
    // Exactly collinear (all three are multiples of (7, 3)), yet one order of
    // the points returns 2^-161 from the last stage. Taking f's negative
    // components before e's smaller ones leaves the middle sum's components
    // out of magnitude order; the last sum then ends on a component whose
    // sign is not that of the whole. This pins what the library does.
    const Point2 a{-0x1.230a2c68db4adp+2, -0x1.f2ecde6a9c804p+0};
    const Point2 b{-0x1.0c24b56a8e445p-3, -0x1.cbaca4b6aabe4p-5};
    const Point2 c{-0x1.9070d0bb720b5p-52, -0x1.573c20a0aae52p-53};
    EXPECT_EQ(ExactSign()(a, b, c), 0);
    int stage = 0;
    EXPECT_EQ(shellfe::orientation(a, b, c, kK, &stage), 0x1p-161);
    EXPECT_EQ(stage, 4);
    EXPECT_EQ(shellfe::orientation(b, c, a, kK), 0);
    EXPECT_EQ(shellfe::orientation(c, a, b, kK), 0);
}

TEST(OrientationExact, ExpansionSumMergesAndDropsZeros) {
    // {e, f, h}: cancelling expansions leave one zero, unless f's negative
    // components go first and strand e's small one; zeros are dropped; a
    // negative f component larger than e's goes first, so the fast two-sum
    // adds e's after it and 3 * 2^-60 is lost (the textbook merge keeps it).
    const struct {
        std::vector<double> e, f, h;
    } cases[] = {
        {{1}, {-1}, {0}},
        {{-0x1p-60, -1}, {0x1p-60, 1}, {0}},
        {{0x1p-60, 1}, {-0x1p-60, -1}, {-0x1p-60, 0x1p-60}},
        {{0, 0x1p-60, 1}, {0, 0, 0x1p+60}, {0x1p-60, 1, 0x1p+60}},
        {{0x1.8p-60}, {-1, 4}, {3}},
    };
    for (const auto& k : cases) {
        std::vector<double> h(8, -777.25);
        const int n = shellfe::expansion_sum(int(k.e.size()), k.e.data(), int(k.f.size()),
                                             k.f.data(), h.data());
        ASSERT_EQ(n, int(k.h.size())) << std::hexfloat << k.e[0];
        for (int i = 0; i < 8; ++i) EXPECT_EQ(h[i], i < n ? k.h[i] : -777.25) << i;
    }
}
