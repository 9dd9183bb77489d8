// Portable kernel: plain C++ on scalars, for every compiler and CPU. It
// walks the same tiles in the same order as the vector kernels, one lane
// wide, and so gives the same bits; on x86-64 it serves as the reference the
// vector kernels are tested against.
#include "gemm.hpp"

#include "frame/canonical_nan.hpp"

namespace shellfe::gemm {
namespace portable {

template <class Real>
struct Scalar {
    using T = Real;
    using R = Real;
    static constexpr int lanes = 1;
    static R zero() { return R(0); }
    static R load(const T* p) { return *p; }
    static void store(T* p, R v) { *p = v; }
    static R broadcast(const T* p) { return *p; }
    static R mul(R a, R b) { return a * b; }
    static R add(R a, R b) { return a + b; }
    static R canonical_nan(R v) { return canonical(v); }
};

#include "gemm_tile.inc"

}  // namespace portable

// A 4 x 4 tile keeps its accumulators in registers on any 64-bit target;
// blocks sized for a modest L2.
constexpr Blocking kBlocking{128, 128 * 1024, 512};

KernelSet<float> portable_kernels_f32() noexcept {
    using V = portable::Scalar<float>;
    return {{4, 4, &portable::tile<V, 4, 4>}, {1, 4, &portable::tile<V, 1, 4>}, kBlocking};
}
KernelSet<double> portable_kernels_f64() noexcept {
    using V = portable::Scalar<double>;
    return {{4, 4, &portable::tile<V, 4, 4>}, {1, 4, &portable::tile<V, 1, 4>}, kBlocking};
}

}  // namespace shellfe::gemm
