// AVX-512 kernel (512-bit). Compiled with AVX-512F enabled; only called after
// the CPU and OS have been checked.
#include <immintrin.h>

#include "gemm.hpp"

namespace shellfe::gemm {
namespace avx512 {

struct VecF {
    using T = float;
    using R = __m512;
    static constexpr int lanes = 16;
    static R zero() { return _mm512_setzero_ps(); }
    static R load(const T* p) { return _mm512_loadu_ps(p); }
    static void store(T* p, R v) { _mm512_storeu_ps(p, v); }
    static R broadcast(const T* p) { return _mm512_set1_ps(*p); }
    static R mul(R a, R b) { return _mm512_mul_ps(a, b); }
    static R add(R a, R b) { return _mm512_add_ps(a, b); }
    static R canonical_nan(R v) {
        const R nan = _mm512_castsi512_ps(_mm512_set1_epi32(0x7FC00000));
        return _mm512_mask_blend_ps(_mm512_cmp_ps_mask(v, v, _CMP_UNORD_Q), v, nan);
    }
};

struct VecD {
    using T = double;
    using R = __m512d;
    static constexpr int lanes = 8;
    static R zero() { return _mm512_setzero_pd(); }
    static R load(const T* p) { return _mm512_loadu_pd(p); }
    static void store(T* p, R v) { _mm512_storeu_pd(p, v); }
    static R broadcast(const T* p) { return _mm512_set1_pd(*p); }
    static R mul(R a, R b) { return _mm512_mul_pd(a, b); }
    static R add(R a, R b) { return _mm512_add_pd(a, b); }
    static R canonical_nan(R v) {
        const R nan = _mm512_castsi512_pd(_mm512_set1_epi64(0x7FF8000000000000));
        return _mm512_mask_blend_pd(_mm512_cmp_pd_mask(v, v, _CMP_UNORD_Q), v, nan);
    }
};

#include "gemm_tile.inc"

}  // namespace avx512

// Packed panels of 256 steps of t, a 192 KiB block of B for L2, panels of A
// up to 1024 columns.
constexpr Blocking kBlocking{256, 192 * 1024, 1024};

// 32 registers: 24 accumulators, 3 of B, 1 broadcast.
KernelSet<float> avx512_kernels_f32() noexcept {
    return {{48, 8, &avx512::tile<avx512::VecF, 3, 8>}, {16, 8, &avx512::tile<avx512::VecF, 1, 8>}, kBlocking};
}
KernelSet<double> avx512_kernels_f64() noexcept {
    return {{24, 8, &avx512::tile<avx512::VecD, 3, 8>}, {8, 8, &avx512::tile<avx512::VecD, 1, 8>}, kBlocking};
}

}  // namespace shellfe::gemm
