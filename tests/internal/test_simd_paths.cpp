// Every kernel of the dense products, the portable one and each instruction
// set, gives the bits of the plain loop on every shape and layout, with
// infinities, NaN, subnormals and -0 in the mix.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "frame/cpu.hpp"
#include "frame/gemm.hpp"

namespace {

using shellfe::Index;
using shellfe::Isa;

// a(t, i) and b(j, t), each stored plainly or transposed.
template <class T>
struct Dense {
    Index m, k, n;
    bool at, bt;
    std::vector<T> a, b;
    Dense(Index m_, Index k_, Index n_, bool at_, bool bt_)
        : m(m_), k(k_), n(n_), at(at_), bt(bt_), a(k_ * m_), b(n_ * k_) {
        if (n == 37) {  // every product -0 (+0 only from a start at +0), and 0 * inf
            std::fill(a.begin(), a.end(), T(-1)), std::fill(b.begin(), b.end(), T(0));
            a[k] = T(0), b[n] = std::numeric_limits<T>::infinity();
            return;
        }
        std::uint64_t s = std::uint64_t(m * 31 + k * 7 + n);
        for (auto* v : {&a, &b})
            for (T& x : *v) {
                s = s * 6364136223846793005ull + 1442695040888963407ull;
                x = T(double(s >> 11) * 0x1.0p-50 - 4.0);
            }
        if (k > 2 && m > 1 && n > 3) {
            a[1 + k] = std::numeric_limits<T>::infinity();
            b[3 + n * 2] = std::numeric_limits<T>::quiet_NaN();
            b[2] = std::numeric_limits<T>::denorm_min() * T(3);
            a[0] = T(-0.0);
        }
    }
    T A(Index t, Index i) const { return at ? a[i + t * m] : a[t + i * k]; }
    T B(Index j, Index t) const { return bt ? b[t + j * k] : b[j + t * n]; }
    std::vector<T> run(Isa isa) const {
        std::vector<T> c(n * m + 1, T(7));
        shellfe::gemm::Problem<T> p{};
        p.a = at ? shellfe::gemm::Operand<T>{a.data(), m, 1} : shellfe::gemm::Operand<T>{a.data(), 1, k};
        p.b = bt ? shellfe::gemm::Operand<T>{b.data(), k, 1} : shellfe::gemm::Operand<T>{b.data(), 1, n};
        p.c = c.data(), p.ldc = n, p.m = m, p.k = k, p.n = n;
        shellfe::gemm::multiply(isa, p);
        return c;
    }
    std::vector<T> plain_loop() const {
        std::vector<T> c(n * m + 1, T(7));
        for (Index i = 0; i < m; ++i)
            for (Index j = 0; j < n; ++j) {
                T s = T(0);
                for (Index t = 0; t < k; ++t) s = s + A(t, i) * B(j, t);
                c[j + i * n] = s;
            }
        return c;
    }
};

class EachKernel : public ::testing::TestWithParam<Isa> {
protected:
    void SetUp() override {
        if (!shellfe::isa_supported(GetParam()))
            GTEST_SKIP() << shellfe::isa_name(GetParam()) << " is not available on this CPU";
    }
    template <class T>
    void check() {
        const Index shapes[][3] = {{1, 1, 1},    {2, 3, 5},    {7, 16, 48}, {9, 255, 17},
                                   {8, 256, 96}, {13, 513, 49}, {1, 40, 200}, {1100, 3, 5},
                                   {5, 3, 700},  {3, 10, 65},  {4, 9, 20},  {2, 3, 37}};
        for (const auto& s : shapes)
            for (int layout = 0; layout < 3; ++layout) {
                const Dense<T> d(s[0], s[1], s[2], layout == 2, layout == 1);
                // NaN payloads may differ with operand order; compare NaN-ness first.
                std::vector<T> got = d.run(GetParam()), want = d.plain_loop();
                for (size_t q = 0; q < got.size(); ++q)
                    if (std::isnan(want[q]) && std::isnan(got[q])) got[q] = want[q];
                EXPECT_EQ(std::memcmp(got.data(), want.data(), got.size() * sizeof(T)), 0)
                    << shellfe::isa_name(GetParam()) << " m=" << s[0] << " k=" << s[1]
                    << " n=" << s[2] << " layout=" << layout;
            }
    }
};

TEST_P(EachKernel, SinglePrecisionMatchesThePlainLoop) { check<float>(); }
TEST_P(EachKernel, DoublePrecisionMatchesThePlainLoop) { check<double>(); }

INSTANTIATE_TEST_SUITE_P(DenseKernel, EachKernel,
                         ::testing::Values(Isa::portable, Isa::sse2, Isa::avx2, Isa::avx512),
                         [](const auto& info) { return std::string(shellfe::isa_name(info.param)); });

TEST(DenseKernel, DispatchPicksTheWidestSupportedKernel) {
    const Isa best = shellfe::best_isa();
    EXPECT_TRUE(shellfe::isa_supported(best) && shellfe::isa_supported(Isa::portable));
    for (Isa wider : {Isa::sse2, Isa::avx2, Isa::avx512})
        EXPECT_TRUE(!shellfe::isa_supported(wider) || int(best) >= int(wider)) << int(wider);
    std::printf("dense kernels run on %s\n", shellfe::isa_name(best));
}

}  // namespace
