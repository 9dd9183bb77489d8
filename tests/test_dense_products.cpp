// The five dense products: the fixed leading-dimension rule, what is and is
// not written, and bit-for-bit agreement with the plain triple loop.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host_array.hpp"
#include "shellfe.h"

namespace {

template <class T>
using Routine = void (*)(const T*, const T*, T*, const int32_t*, const int32_t*,
                         const int32_t*) noexcept;

enum class Form { plain, b_transposed, a_transposed };

template <class T>
struct Member {
    const char* name;
    Routine<T> fn;
    Form form;
};

const Member<float> kSingle[] = {{"MATMULDLLDOTNET", MATMULDLLDOTNET, Form::plain},
                                 {"MATMULBTDLLDOTNET", MATMULBTDLLDOTNET, Form::b_transposed},
                                 {"MATMULATDLLDOTNET", MATMULATDLLDOTNET, Form::a_transposed}};
const Member<double> kDouble[] = {
    {"MATMULDOUBLEDLLDOTNET", MATMULDOUBLEDLLDOTNET, Form::plain},
    {"MATMULBTDOUBLEDLLDOTNET", MATMULBTDOUBLEDLLDOTNET, Form::b_transposed}};

// The operands as the routines must read them: AMAT always with leading
// dimension KDIM+1, BMAT and CMAT always with NDIM+1. Each array gets one
// spare column beyond what the host must allocate, to catch overruns.
template <class T>
struct Case {
    int32_t m, k, n;
    Form form;
    HostMatrix<T> a, b, c;
    // A transposed factor's first index may run past its leading dimension,
    // into the following columns: allocate up to its last entry read.
    static int32_t columns(int32_t ld_upper, int32_t first_max, int32_t second_max) {
        const int32_t ld = std::max(ld_upper, 0) + 1;
        return (std::max(first_max, 0) + std::max(second_max, 0) * ld) / ld + 1;
    }
    Case(int32_t m_, int32_t k_, int32_t n_, Form f, T sentinel)
        : m(m_), k(k_), n(n_), form(f),
          a(k_, f == Form::a_transposed ? columns(k_, m_, k_) : m_ + 1),
          b(n_, f == Form::b_transposed ? columns(n_, k_, n_) : k_ + 1),
          c(n_, m_ + 1, sentinel) {}
    T A(int32_t t, int32_t i) const { return form == Form::a_transposed ? a.data[i + t * a.rows] : a(t, i); }
    T B(int32_t j, int32_t t) const { return form == Form::b_transposed ? b.data[t + j * b.rows] : b(j, t); }
    // The plain loop: products rounded, added in increasing t from +0.
    T reference(int32_t j, int32_t i) const {
        T s = T(0);
        for (int32_t t = 1; t <= k; ++t) s = s + A(t, i) * B(j, t);
        return s;
    }
    void fill(Lcg& rng, bool small_integers) {
        for (auto* arr : {&a, &b})
            for (T& x : arr->data)
                x = small_integers ? T(std::floor(rng.next() * 8)) : T(rng.next() * 3);
    }
};

template <class T>
void expect_product(const Member<T>& fn, int32_t m, int32_t k, int32_t n, bool exact_any_order) {
    SCOPED_TRACE(::testing::Message() << fn.name << " m=" << m << " k=" << k << " n=" << n);
    const T sentinel = T(-12345.5);
    Case<T> cs(m, k, n, fn.form, sentinel);
    Lcg rng(static_cast<std::uint64_t>(m * 1000003 + k * 1009 + n));
    cs.fill(rng, exact_any_order);
    fn.fn(cs.a.ptr(), cs.b.ptr(), cs.c.ptr(), &cs.m, &cs.k, &cs.n);
    int bad = 0;
    for (int32_t i = 0; i <= m + 1; ++i)
        for (int32_t j = 0; j <= n; ++j) {
            const bool written = i >= 1 && i <= m && j >= 1;
            const T want = written ? cs.reference(j, i) : sentinel;
            if (!same_bits(cs.c(j, i), want) && ++bad <= 5)
                ADD_FAILURE() << "C(" << j << "," << i << ") = " << cs.c(j, i) << ", want " << want;
        }
}

// Shapes that cross every tile and block border of the kernels: ragged
// rows and columns, depths beyond one packed block, long columns.
const int32_t kShapes[][3] = {{1, 1, 1},   {3, 5, 7},     {8, 8, 8},    {17, 33, 49},
                              {6, 300, 50}, {50, 257, 97}, {13, 2, 1030}, {200, 64, 3}};

TEST(DenseProducts, AccumulatingFormsMatchThePlainLoopBitForBit) {
    for (const auto& s : kShapes) {
        expect_product(kSingle[0], s[0], s[1], s[2], false);
        expect_product(kSingle[2], s[0], s[1], s[2], false);
        expect_product(kDouble[0], s[0], s[1], s[2], false);
    }
}

TEST(DenseProducts, DotProductFormsAreExactOnIntegers) {
    // Any summation order is allowed here; small integers make every order exact.
    for (const auto& s : kShapes) {
        expect_product(kSingle[1], s[0], s[1], s[2], true);
        expect_product(kDouble[1], s[0], s[1], s[2], true);
    }
}

TEST(DenseProducts, TransposedFactorsKeepTheFixedLeadingDimension) {
    // KDIM != NDIM: BMAT of the A*B^T forms is read with stride NDIM+1, and
    // MDIM != KDIM: AMAT of A^T*B with stride KDIM+1, in both directions.
    for (auto [m, k, n] : {std::tuple{4, 3, 9}, std::tuple{4, 9, 3}, std::tuple{11, 5, 6},
                           std::tuple{3, 7, 5}}) {
        expect_product(kSingle[1], m, k, n, true);
        expect_product(kDouble[1], m, k, n, true);
        expect_product(kSingle[2], m, k, n, false);
    }
}

template <class T, size_t N>
void for_all(const Member<T> (&members)[N], int32_t m, int32_t k, int32_t n, auto&& check) {
    for (const auto& fn : members) {
        SCOPED_TRACE(fn.name);
        Case<T> cs(m, k, n, fn.form, T(-3));
        Lcg rng(7);
        cs.fill(rng, false);
        fn.fn(cs.a.ptr(), cs.b.ptr(), cs.c.ptr(), &cs.m, &cs.k, &cs.n);
        check(cs);
    }
}

TEST(DenseProducts, EmptyDimensions) {
    auto untouched = [](const auto& cs) {
        for (auto x : cs.c.data) ASSERT_EQ(x, -3);
    };
    for (int32_t m : {0, -2}) {  // no result columns: nothing written at all
        for_all(kSingle, m, 4, 5, untouched);
        for_all(kDouble, m, 4, 5, untouched);
    }
    for_all(kSingle, 3, 4, 0, untouched);  // no result rows
    for_all(kDouble, 3, 4, -1, untouched);
    auto zeros = [](const auto& cs) {  // no inner products: zeros, slot 0 and spare column kept
        for (int32_t i = 0; i <= cs.m + 1; ++i)
            for (int32_t j = 0; j <= cs.n; ++j)
                ASSERT_EQ(cs.c(j, i), (i >= 1 && i <= cs.m && j >= 1) ? 0 : -3) << j << "," << i;
    };
    for (int32_t k : {0, -1}) {
        for_all(kSingle, 3, k, 30, zeros);
        for_all(kDouble, 3, k, 30, zeros);
    }
}

// One long column of identical entries so that every vector lane and the
// scalar-width border compute the same two-term sum.
template <class T>
T two_term_sum(Routine<T> fn, Form form, T a1, T b1, T a2, T b2) {
    const int32_t m = 3, k = 2, n = 37;
    Case<T> cs(m, k, n, form, T(99));
    for (int32_t i = 1; i <= m; ++i)
        for (int32_t j = 1; j <= n; ++j) {
            const T av[] = {T(0), a1, a2}, bv[] = {T(0), b1, b2};
            for (int32_t t = 1; t <= k; ++t) {
                (form == Form::a_transposed ? cs.a.data[i + t * cs.a.rows] : cs.a(t, i)) = av[t];
                (form == Form::b_transposed ? cs.b.data[t + j * cs.b.rows] : cs.b(j, t)) = bv[t];
            }
        }
    fn(cs.a.ptr(), cs.b.ptr(), cs.c.ptr(), &cs.m, &cs.k, &cs.n);
    const T first = cs.c(1, 1);
    for (int32_t i = 1; i <= m; ++i)
        for (int32_t j = 1; j <= n; ++j) EXPECT_TRUE(same_bits(cs.c(j, i), first)) << j << "," << i;
    return first;
}

TEST(DenseProducts, ProductsAreRoundedBeforeTheyAreAdded) {
    // -(1+2^-11) + (1+2^-12)^2 is 0 when the product is rounded first and
    // 2^-24 when a fused multiply-add keeps it exact.
    const float u = 1.0f + 0x1.0p-12f, v = -(1.0f + 0x1.0p-11f);
    for (const auto& fn : kSingle) {
        if (fn.form == Form::b_transposed) continue;  // free summation order
        EXPECT_EQ(two_term_sum(fn.fn, fn.form, v, 1.0f, u, u), 0.0f) << fn.name;
    }
    const double ud = 1.0 + 0x1.0p-27, vd = -(1.0 + 0x1.0p-26);
    EXPECT_EQ(two_term_sum(kDouble[0].fn, Form::plain, vd, 1.0, ud, ud), 0.0);
}

TEST(DenseProducts, TermsAreAddedInIncreasingOrderInWorkingPrecision) {
    // (1 + 1e8) - 1e8: 0 in single precision added in order t = 1, 2;
    // 1 when widened to double or summed the other way round.
    const Member<float> acc[] = {kSingle[0], kSingle[2]};
    for (const auto& fn : acc) {
        EXPECT_EQ(two_term_sum(fn.fn, fn.form, 1.0f, 1.0f, 1.0e8f, 1.0f), 1.0e8f);
        Case<float> cs(1, 3, 1, fn.form, 0.0f);
        const float av[] = {0, 1.0f, 1.0e8f, -1.0e8f};
        for (int32_t t = 1; t <= 3; ++t) {
            (fn.form == Form::a_transposed ? cs.a.data[1 + t * cs.a.rows] : cs.a(t, 1)) = av[t];
            cs.b(1, t) = 1.0f;
        }
        fn.fn(cs.a.ptr(), cs.b.ptr(), cs.c.ptr(), &cs.m, &cs.k, &cs.n);
        EXPECT_EQ(cs.c(1, 1), 0.0f) << fn.name;
    }
}

TEST(DenseProducts, SumsStartFromPositiveZero) {
    // A single product of -0 added to the cleared entry gives +0.
    for (const auto& fn : kSingle) {
        Case<float> cs(2, 1, 20, fn.form, 5.0f);
        for (auto& x : cs.a.data) x = -1.0f;
        for (auto& x : cs.b.data) x = 0.0f;
        fn.fn(cs.a.ptr(), cs.b.ptr(), cs.c.ptr(), &cs.m, &cs.k, &cs.n);
        for (int32_t j = 1; j <= 20; ++j) EXPECT_FALSE(std::signbit(cs.c(j, 2))) << fn.name;
    }
}

TEST(DenseProducts, NonFiniteValuesPropagateLikeThePlainLoop) {
    const float inf = std::numeric_limits<float>::infinity();
    Case<float> cs(5, 4, 19, Form::plain, 0.0f);
    Lcg rng(3);
    cs.fill(rng, false);
    cs.a(2, 3) = inf;    // column 3: +-inf, or NaN where it meets a zero
    cs.b(7, 2) = 0.0f;
    cs.b(4, 4) = std::numeric_limits<float>::quiet_NaN();
    cs.b(9, 1) = 0x1.0p-140f;  // subnormal products must not be flushed
    MATMULDLLDOTNET(cs.a.ptr(), cs.b.ptr(), cs.c.ptr(), &cs.m, &cs.k, &cs.n);
    for (int32_t i = 1; i <= 5; ++i)
        for (int32_t j = 1; j <= 19; ++j) {
            const float want = cs.reference(j, i);
            if (std::isnan(want)) {
                EXPECT_TRUE(std::isnan(cs.c(j, i))) << j << "," << i;
            } else {
                EXPECT_TRUE(same_bits(cs.c(j, i), want)) << j << "," << i;
            }
        }
}

}  // namespace
