// Baseline kernel: SSE2, present on every x86-64 CPU.
#include <emmintrin.h>

#include "gemm.hpp"

namespace shellfe::gemm {
namespace sse2 {

struct VecF {
    using T = float;
    using R = __m128;
    static constexpr int lanes = 4;
    static R zero() { return _mm_setzero_ps(); }
    static R load(const T* p) { return _mm_loadu_ps(p); }
    static void store(T* p, R v) { _mm_storeu_ps(p, v); }
    static R broadcast(const T* p) { return _mm_set1_ps(*p); }
    static R mul(R a, R b) { return _mm_mul_ps(a, b); }
    static R add(R a, R b) { return _mm_add_ps(a, b); }
    static R canonical_nan(R v) {
        const R nan = _mm_castsi128_ps(_mm_set1_epi32(0x7FC00000));
        const R is_nan = _mm_cmpunord_ps(v, v);
        return _mm_or_ps(_mm_andnot_ps(is_nan, v), _mm_and_ps(is_nan, nan));
    }
};

struct VecD {
    using T = double;
    using R = __m128d;
    static constexpr int lanes = 2;
    static R zero() { return _mm_setzero_pd(); }
    static R load(const T* p) { return _mm_loadu_pd(p); }
    static void store(T* p, R v) { _mm_storeu_pd(p, v); }
    static R broadcast(const T* p) { return _mm_set1_pd(*p); }
    static R mul(R a, R b) { return _mm_mul_pd(a, b); }
    static R add(R a, R b) { return _mm_add_pd(a, b); }
    static R canonical_nan(R v) {
        const R nan = _mm_castsi128_pd(_mm_set1_epi64x(0x7FF8000000000000));
        const R is_nan = _mm_cmpunord_pd(v, v);
        return _mm_or_pd(_mm_andnot_pd(is_nan, v), _mm_and_pd(is_nan, nan));
    }
};

#include "gemm_tile.inc"

}  // namespace sse2

// Packed panels of 256 steps of t, a 192 KiB block of B for L2, panels of A
// up to 1024 columns.
constexpr Blocking kBlocking{256, 192 * 1024, 1024};

// 16 registers: 12 accumulators, 2 of B, 1 broadcast.
KernelSet<float> sse2_kernels_f32() noexcept {
    return {{8, 6, &sse2::tile<sse2::VecF, 2, 6>}, {4, 6, &sse2::tile<sse2::VecF, 1, 6>}, kBlocking};
}
KernelSet<double> sse2_kernels_f64() noexcept {
    return {{4, 6, &sse2::tile<sse2::VecD, 2, 6>}, {2, 6, &sse2::tile<sse2::VecD, 1, 6>}, kBlocking};
}

}  // namespace shellfe::gemm
