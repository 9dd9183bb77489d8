// The exported dense matrix products.
//
// All five read AMAT with leading dimension KDIM+1 and BMAT, CMAT with
// leading dimension NDIM+1, whichever factor is transposed: hosts pass square
// factors and rely on that fixed rule. Each routine only describes where its
// factors' entries lie; the blocked kernel does the rest.
#include "frame/gemm.hpp"
#include "shellfe.h"

using namespace shellfe;

namespace {

enum class Layout { plain, transposed };

template <class T>
void product(const T* amat, const T* bmat, T* cmat, std::int32_t mdim, std::int32_t kdim,
             std::int32_t ndim, Layout a_layout, Layout b_layout) {
    // No result columns or rows: nothing is touched. Addresses inside the
    // arrays are formed only once it is clear the arrays have such entries.
    if (mdim < 1 || ndim < 1) return;
    const Index lda = Index(kdim) + 1;
    const Index ldb = Index(ndim) + 1;
    gemm::Problem<T> p{};
    p.c = host_array(cmat, {0, ndim}).at(1, 1);
    p.ldc = ldb;
    p.m = mdim;
    p.k = kdim;
    p.n = ndim;
    if (kdim >= 1) {
        const T* a11 = host_array(amat, {0, kdim}).at(1, 1);
        const T* b11 = host_array(bmat, {0, ndim}).at(1, 1);
        // a(t, i): AMAT(t, i) for the plain product, AMAT(i, t) when transposed.
        p.a = a_layout == Layout::plain ? gemm::Operand<T>{a11, 1, lda} : gemm::Operand<T>{a11, lda, 1};
        // b(j, t): BMAT(j, t) for the plain product, BMAT(t, j) when transposed.
        p.b = b_layout == Layout::plain ? gemm::Operand<T>{b11, 1, ldb} : gemm::Operand<T>{b11, ldb, 1};
    }
    gemm::multiply(best_isa(), p);  // with kdim < 1: zeros
}

}  // namespace

extern "C" void MATMULDLLDOTNET(const float* AMAT, const float* BMAT, float* CMAT,
                                const int32_t* MDIM, const int32_t* KDIM,
                                const int32_t* NDIM) noexcept {
    product(AMAT, BMAT, CMAT, *MDIM, *KDIM, *NDIM, Layout::plain, Layout::plain);
}

extern "C" void MATMULBTDLLDOTNET(const float* AMAT, const float* BMAT, float* CMAT,
                                  const int32_t* MDIM, const int32_t* KDIM,
                                  const int32_t* NDIM) noexcept {
    product(AMAT, BMAT, CMAT, *MDIM, *KDIM, *NDIM, Layout::plain, Layout::transposed);
}

extern "C" void MATMULATDLLDOTNET(const float* AMAT, const float* BMAT, float* CMAT,
                                  const int32_t* MDIM, const int32_t* KDIM,
                                  const int32_t* NDIM) noexcept {
    product(AMAT, BMAT, CMAT, *MDIM, *KDIM, *NDIM, Layout::transposed, Layout::plain);
}

extern "C" void MATMULDOUBLEDLLDOTNET(const double* AMAT, const double* BMAT, double* CMAT,
                                      const int32_t* MDIM, const int32_t* KDIM,
                                      const int32_t* NDIM) noexcept {
    product(AMAT, BMAT, CMAT, *MDIM, *KDIM, *NDIM, Layout::plain, Layout::plain);
}

extern "C" void MATMULBTDOUBLEDLLDOTNET(const double* AMAT, const double* BMAT, double* CMAT,
                                        const int32_t* MDIM, const int32_t* KDIM,
                                        const int32_t* NDIM) noexcept {
    product(AMAT, BMAT, CMAT, *MDIM, *KDIM, *NDIM, Layout::plain, Layout::transposed);
}
