// Every instruction set of the dense kernel gives the same bits as the
// plain loop, on every shape and on non-finite and subnormal values.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "cpu.hpp"
#include "gemm.hpp"

namespace {

using shellfe::Index;
using shellfe::Isa;

template <class T>
struct Dense {
    Index m, k, n;
    std::vector<T> a, b;  // a(t, i) at t + i*k, b(j, t) at j*n_stride...
    Dense(Index m_, Index k_, Index n_, std::uint64_t seed) : m(m_), k(k_), n(n_), a(k_ * m_), b(n_ * k_) {
        std::uint64_t s = seed;
        auto next = [&s] {
            s = s * 6364136223846793005ull + 1442695040888963407ull;
            return static_cast<double>(s >> 11) * 0x1.0p-52 - 1.0;
        };
        for (T& x : a) x = T(next() * 4);
        for (T& x : b) x = T(next() * 4);
        if (k > 2 && m > 1 && n > 3) {  // a few special values in the mix
            a[1 + k] = std::numeric_limits<T>::infinity();
            b[3 + n * 2] = std::numeric_limits<T>::quiet_NaN();
            b[2] = std::numeric_limits<T>::denorm_min() * T(3);
            a[0] = T(-0.0);
        }
    }
    // Plain product with b in column-major (j, t) or transposed storage.
    std::vector<T> run(Isa isa, bool b_transposed, bool a_transposed) const {
        std::vector<T> c(static_cast<size_t>(n * m + 1), T(7));
        shellfe::gemm::Problem<T> p{};
        p.a = a_transposed ? shellfe::gemm::Operand<T>{a.data(), m, 1}   // a(t,i) at i + t*m
                           : shellfe::gemm::Operand<T>{a.data(), 1, k};
        p.b = b_transposed ? shellfe::gemm::Operand<T>{b.data(), k, 1}   // b(j,t) at t + j*k
                           : shellfe::gemm::Operand<T>{b.data(), 1, n};
        p.c = c.data();
        p.ldc = n;
        p.m = m;
        p.k = k;
        p.n = n;
        shellfe::gemm::multiply(isa, p);
        return c;
    }
    std::vector<T> reference(bool b_transposed, bool a_transposed) const {
        std::vector<T> c(static_cast<size_t>(n * m + 1), T(7));
        for (Index i = 0; i < m; ++i)
            for (Index j = 0; j < n; ++j) {
                T s = T(0);
                for (Index t = 0; t < k; ++t)
                    s = s + (a_transposed ? a[i + t * m] : a[t + i * k]) *
                                (b_transposed ? b[t + j * k] : b[j + t * n]);
                c[j + i * n] = s;
            }
        return c;
    }
};

template <class T>
bool same_bits(const std::vector<T>& x, const std::vector<T>& y) {
    return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(T)) == 0;
}

class EachIsa : public ::testing::TestWithParam<Isa> {
protected:
    void SetUp() override {
        if (!shellfe::isa_supported(GetParam()))
            GTEST_SKIP() << shellfe::isa_name(GetParam()) << " is not available on this CPU";
    }
};

template <class T>
void check_shapes(Isa isa) {
    const Index shapes[][3] = {{1, 1, 1},   {2, 3, 5},    {7, 16, 48},  {9, 255, 17},
                               {8, 256, 96}, {13, 513, 49}, {1, 40, 200}, {1100, 3, 5},
                               {5, 3, 700},  {3, 10, 65},   {4, 9, 20}};
    for (const auto& s : shapes)
        for (int layout = 0; layout < 3; ++layout) {
            const bool bt = layout == 1, at = layout == 2;
            Dense<T> d(s[0], s[1], s[2], static_cast<std::uint64_t>(s[0] * 31 + s[1] * 7 + s[2]));
            // NaN payloads may differ with operand order; compare NaN-ness first.
            std::vector<T> got = d.run(isa, bt, at), want = d.reference(bt, at);
            for (size_t q = 0; q < got.size(); ++q)
                if (std::isnan(want[q]) && std::isnan(got[q])) got[q] = want[q];
            EXPECT_TRUE(same_bits(got, want)) << shellfe::isa_name(isa) << " m=" << s[0]
                                              << " k=" << s[1] << " n=" << s[2] << " layout=" << layout;
        }
}

TEST_P(EachIsa, SinglePrecisionMatchesThePlainLoop) { check_shapes<float>(GetParam()); }
TEST_P(EachIsa, DoublePrecisionMatchesThePlainLoop) { check_shapes<double>(GetParam()); }

INSTANTIATE_TEST_SUITE_P(DenseKernel, EachIsa, ::testing::Values(Isa::sse2, Isa::avx2, Isa::avx512),
                         [](const auto& info) { return std::string(shellfe::isa_name(info.param)); });

TEST(DenseKernel, DispatchPicksASupportedInstructionSet) {
    const Isa best = shellfe::best_isa();
    EXPECT_TRUE(shellfe::isa_supported(best));
    EXPECT_TRUE(shellfe::isa_supported(Isa::sse2));
    if (shellfe::isa_supported(Isa::avx512)) {
        EXPECT_EQ(best, Isa::avx512);
    }
    std::printf("dense kernels run on %s\n", shellfe::isa_name(best));
}

}  // namespace
