// The five dense products: the fixed leading-dimension rule, what is and is
// not written, and the order in which each entry receives its terms.
#include "fixtures.hpp"

namespace {

template <class T>
using Product = void (*)(const T*, const T*, T*, const int32_t*, const int32_t*,
                         const int32_t*) noexcept;

// CMAT (0:NDIM, 0:MDIM+1) of one call, sentinels before. AMAT has leading
// dimension KDIM+1 and BMAT NDIM+1 whichever factor is transposed, and spare
// columns; AMAT(r, c) = a(r, c), BMAT(r, c) = b(r, c).
template <class T, class A, class B>
Host<T> product(Product<T> fn, int32_t m, int32_t k, int32_t n, A a, B b) {
    const int w = std::max({m, k, n, 0}) + 2, ldc = std::max(n, 0);
    Host<T> am(std::max(k, 0), w), bm(ldc, w), cm(ldc, std::max(m, 0) + 1, T(kSentinel));
    for (int i = 0; i < int(am.v.size()); ++i) am.v[i] = a(i % am.rows, i / am.rows);
    for (int i = 0; i < int(bm.v.size()); ++i) bm.v[i] = b(i % bm.rows, i / bm.rows);
    return fn(am.p(), bm.p(), cm.p(), &m, &k, &n), cm;
}
// Values of many bits, or small integers that make any summation order exact.
template <class T>
std::uint64_t golden(Product<T> fn, std::array<int32_t, 3> s, bool integers) {
    std::minstd_rand r(std::uint32_t(s[0] * 7919 + s[1] * 131 + s[2]));
    auto x = [&](int, int) { return integers ? T(std::floor(noise(r) * 8)) : T(noise(r) * 3.3); };
    return digest(product<T>(fn, s[0], s[1], s[2], x, x));
}

}  // namespace

TEST(DenseProducts, GoldenResults) {
    // All of CMAT from each member (the BT forms, free to sum in any order, on
    // integers). KDIM > NDIM or MDIM > KDIM read a transposed factor past its
    // leading dimension; 300, 1030 and 1100 exceed a block of t, rows and
    // columns. MDIM or NDIM < 1 leave CMAT untouched, KDIM < 1 gives zeros.
    const std::pair<std::array<int32_t, 3>, std::uint64_t> shapes[] = {
        {{3, 5, 7}, 0x72fad797f41951e9},     {{17, 300, 49}, 0x2a70bfddf2da8b46},
        {{13, 2, 1030}, 0x24cf9899ed176d4b}, {{1100, 3, 5}, 0xdb1879db0cd3fa1f},
        {{0, 4, 5}, 0xeb31720acdf530a7},     {{3, 4, -1}, 0xf1320a2ae9f04049},
        {{3, 0, 30}, 0xca9e2112fae6ffa9}};
    for (const auto& [s, want] : shapes) {
        const std::uint64_t got[5] = {golden<float>(MATMULDLLDOTNET, s, false),
                                      golden<float>(MATMULATDLLDOTNET, s, false),
                                      golden<double>(MATMULDOUBLEDLLDOTNET, s, false),
                                      golden<float>(MATMULBTDLLDOTNET, s, true),
                                      golden<double>(MATMULBTDOUBLEDLLDOTNET, s, true)};
        const std::uint64_t all = got[0] ^ got[1] * 3 ^ got[2] * 5 ^ got[3] * 7 ^ got[4] * 11;
        EXPECT_EQ(all, want) << std::hex << all << ": " << got[0] << " " << got[1] << " " << got[2]
                             << " " << got[3] << " " << got[4];
    }
}

TEST(DenseProducts, EachProductIsRoundedAndAddedInIncreasingT) {
    // a1 b1 + a2 b2 + a3 b3 down a column of 37: every vector lane and the border.
    for (bool at : {false, true}) {
        auto sum = [at](std::array<float, 4> a, std::array<float, 4> b) {  // entry 0 unused
            auto av = [&](int r, int c) { return a[std::min(at ? c : r, 3)]; };
            const Floats c = product<float>(at ? MATMULATDLLDOTNET : MATMULDLLDOTNET, 1, 3, 37, av,
                                            [&](int, int c) { return b[std::min(c, 3)]; });
            EXPECT_EQ(c.count(kSentinel), 38 + 38 + 1);  // nothing but rows 1..37 of column 1
            return c(37, 1);
        };
        const float u = 1 + 0x1p-12f, v = -(1 + 0x1p-11f);
        EXPECT_EQ(sum({0, v, u, 0}, {0, 1, u, 0}), 0.0f);                 // fused: 2^-24
        EXPECT_EQ(sum({0, 1, 1e8f, -1e8f}, {0, 1, 1, 1}), 0.0f);          // widened or reversed: 1
        EXPECT_FALSE(std::signbit(sum({0, -1, -1, -1}, {0, 0, 0, 0})));   // sums start from +0
        EXPECT_TRUE(std::isnan(sum({0, 0, 1, 0}, {0, INFINITY, 1, 0})));  // no product is skipped
    }
}

TEST(DenseProducts, EmptyProductsTouchNoArray) {
    // No entry to write, so no address inside the arrays is even formed: a
    // host may pass NULL (the sanitizer builds check the pointer arithmetic).
    for (auto [m, k, n] : {std::array{0, 3, 3}, {3, 3, 0}, {3, 3, -5}, {-1, -1, -1}}) {
        MATMULDLLDOTNET(nullptr, nullptr, nullptr, &m, &k, &n);
        MATMULBTDLLDOTNET(nullptr, nullptr, nullptr, &m, &k, &n);
        MATMULATDLLDOTNET(nullptr, nullptr, nullptr, &m, &k, &n);
        MATMULDOUBLEDLLDOTNET(nullptr, nullptr, nullptr, &m, &k, &n);
        MATMULBTDOUBLEDLLDOTNET(nullptr, nullptr, nullptr, &m, &k, &n);
    }
}
