// AVX2 kernel (256-bit). Compiled with AVX2 enabled; only called after the
// CPU and OS have been checked.
#include <immintrin.h>

#include "gemm.hpp"

namespace shellfe::gemm {
namespace avx2 {

struct VecF {
    using T = float;
    using R = __m256;
    static constexpr int lanes = 8;
    static R zero() { return _mm256_setzero_ps(); }
    static R load(const T* p) { return _mm256_loadu_ps(p); }
    static void store(T* p, R v) { _mm256_storeu_ps(p, v); }
    static R broadcast(const T* p) { return _mm256_broadcast_ss(p); }
    static R mul(R a, R b) { return _mm256_mul_ps(a, b); }
    static R add(R a, R b) { return _mm256_add_ps(a, b); }
    static R canonical_nan(R v) {
        const R nan = _mm256_castsi256_ps(_mm256_set1_epi32(0x7FC00000));
        return _mm256_blendv_ps(v, nan, _mm256_cmp_ps(v, v, _CMP_UNORD_Q));
    }
};

struct VecD {
    using T = double;
    using R = __m256d;
    static constexpr int lanes = 4;
    static R zero() { return _mm256_setzero_pd(); }
    static R load(const T* p) { return _mm256_loadu_pd(p); }
    static void store(T* p, R v) { _mm256_storeu_pd(p, v); }
    static R broadcast(const T* p) { return _mm256_broadcast_sd(p); }
    static R mul(R a, R b) { return _mm256_mul_pd(a, b); }
    static R add(R a, R b) { return _mm256_add_pd(a, b); }
    static R canonical_nan(R v) {
        const R nan = _mm256_castsi256_pd(_mm256_set1_epi64x(0x7FF8000000000000));
        return _mm256_blendv_pd(v, nan, _mm256_cmp_pd(v, v, _CMP_UNORD_Q));
    }
};

#include "gemm_tile.inc"

}  // namespace avx2

// Packed panels of 256 steps of t, a 192 KiB block of B for L2, panels of A
// up to 1024 columns.
constexpr Blocking kBlocking{256, 192 * 1024, 1024};

// 16 registers: 12 accumulators, 2 of B, 1 broadcast.
KernelSet<float> avx2_kernels_f32() noexcept {
    return {{16, 6, &avx2::tile<avx2::VecF, 2, 6>}, {8, 6, &avx2::tile<avx2::VecF, 1, 6>}, kBlocking};
}
KernelSet<double> avx2_kernels_f64() noexcept {
    return {{8, 6, &avx2::tile<avx2::VecD, 2, 6>}, {4, 6, &avx2::tile<avx2::VecD, 1, 6>}, kBlocking};
}

}  // namespace shellfe::gemm
