// The exported dense matrix products.
//
// All five read AMAT with leading dimension KDIM+1 and BMAT, CMAT with
// leading dimension NDIM+1, whichever factor is transposed: hosts pass square
// factors and rely on that fixed rule. Each routine only describes where its
// factors' entries lie; the blocked kernel does the rest.
#include "gemm.hpp"
#include "shellfe.h"

using namespace shellfe;

namespace {

enum class Layout { plain, transposed };

template <class T>
void product(const T* amat, const T* bmat, T* cmat, std::int32_t mdim, std::int32_t kdim,
             std::int32_t ndim, Layout a_layout, Layout b_layout) {
    if (mdim < 1) return;
    const Index lda = Index(kdim) + 1;
    const Index ldb = Index(ndim) + 1;
    const auto A = upper_bound(amat, lda - 1);
    const auto B = upper_bound(bmat, ldb - 1);
    const auto C = upper_bound(cmat, ldb - 1);
    gemm::Problem<T> p{};
    // a(t, i): AMAT(t, i) for the plain product, AMAT(i, t) when transposed.
    p.a = a_layout == Layout::plain ? gemm::Operand<T>{A.at(1, 1), 1, lda}
                                    : gemm::Operand<T>{A.at(1, 1), lda, 1};
    // b(j, t): BMAT(j, t) for the plain product, BMAT(t, j) when transposed.
    p.b = b_layout == Layout::plain ? gemm::Operand<T>{B.at(1, 1), 1, ldb}
                                    : gemm::Operand<T>{B.at(1, 1), ldb, 1};
    p.c = C.at(1, 1);
    p.ldc = ldb;
    p.m = mdim;
    p.k = kdim;
    p.n = ndim;
    gemm::multiply(best_isa(), p);
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
