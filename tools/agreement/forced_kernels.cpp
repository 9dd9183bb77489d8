// The dense products with each instruction set forced in turn, for the
// agreement driver. The library picks the widest kernel the CPU supports and
// offers hosts no switch; the driver compiles the same kernel sources and
// reaches them through the internal dispatch, so that every kernel this CPU
// runs is compared, not only the widest.
#include "frame/cpu.hpp"
#include "frame/gemm.hpp"

#include <cstdint>

using namespace shellfe;

namespace {

template <class T>
void product(Isa isa, const T* amat, const T* bmat, T* cmat, std::int32_t mdim,
             std::int32_t kdim, std::int32_t ndim, bool a_transposed, bool b_transposed) {
    // The exported routines' own mapping of AMAT, BMAT and CMAT: AMAT with
    // leading dimension KDIM+1, BMAT and CMAT with NDIM+1, from (1, 1).
    if (mdim < 1 || ndim < 1) return;
    const Index lda = Index(kdim) + 1, ldb = Index(ndim) + 1;
    gemm::Problem<T> p{};
    p.c = cmat + 1 + ldb;
    p.ldc = ldb;
    p.m = mdim;
    p.k = kdim;
    p.n = ndim;
    if (kdim >= 1) {
        const T* a11 = amat + 1 + lda;
        const T* b11 = bmat + 1 + ldb;
        p.a = a_transposed ? gemm::Operand<T>{a11, lda, 1} : gemm::Operand<T>{a11, 1, lda};
        p.b = b_transposed ? gemm::Operand<T>{b11, ldb, 1} : gemm::Operand<T>{b11, 1, ldb};
    }
    gemm::multiply(isa, p);
}

}  // namespace

extern "C" {

int agreement_isa_count(void) { return 4; }

const char* agreement_isa_name(int isa) { return isa_name(static_cast<Isa>(isa)); }

int agreement_isa_supported(int isa) { return isa_supported(static_cast<Isa>(isa)) ? 1 : 0; }

// kind: 0 = A*B, 1 = A*B^T, 2 = A^T*B (float); 3 = A*B, 4 = A*B^T (double).
void agreement_product(int isa, int kind, const void* a, const void* b, void* c,
                       std::int32_t m, std::int32_t k, std::int32_t n) {
    const Isa i = static_cast<Isa>(isa);
    switch (kind) {
        case 0: product(i, static_cast<const float*>(a), static_cast<const float*>(b), static_cast<float*>(c), m, k, n, false, false); break;
        case 1: product(i, static_cast<const float*>(a), static_cast<const float*>(b), static_cast<float*>(c), m, k, n, false, true); break;
        case 2: product(i, static_cast<const float*>(a), static_cast<const float*>(b), static_cast<float*>(c), m, k, n, true, false); break;
        case 3: product(i, static_cast<const double*>(a), static_cast<const double*>(b), static_cast<double*>(c), m, k, n, false, false); break;
        default: product(i, static_cast<const double*>(a), static_cast<const double*>(b), static_cast<double*>(c), m, k, n, false, true); break;
    }
}

}  // extern "C"
