/*
 * shellfe — finite-element kernels for beam frames and plate/shell slabs.
 *
 * The C interface. Every routine takes all of its arguments by address, as a
 * Fortran-style host passes them, and writes its results back through those
 * addresses. The library owns no model and keeps no state between calls: the
 * host allocates every array at the sizes given here and keeps it.
 *
 * Array layout, shared by all routines:
 *   - arrays are column-major and every dimension is indexed from 0, so an
 *     array declared (0:L, 0:M) holds (L+1)*(M+1) elements and element (a, b)
 *     is at flat position a + b*(L+1). The host passes L, the upper bound of
 *     the first dimension, not the leading dimension L+1;
 *   - routines use indices 1..n of each dimension and leave index 0 alone
 *     unless a routine's comment says otherwise, so a host that declares its
 *     arrays by upper bound gets this layout for free;
 *   - integers are 32-bit signed, reals are 32-bit unless named double;
 *   - nothing is validated: counts of zero or less do no work, sizes and
 *     indices are the host's responsibility.
 *
 * All routines are thread-safe on distinct arrays: the library keeps no
 * mutable static data. Arguments documented as unused must still be passed
 * (any valid address, NULL included).
 */
#ifndef SHELLFE_H
#define SHELLFE_H

#include <stdint.h>

#if defined(SHELLFE_BUILDING_LIBRARY)
#  if defined(_WIN32)
/* The DLL's exports come from its module-definition file. */
#    define SHELLFE_API
#  else
#    define SHELLFE_API __attribute__((visibility("default")))
#  endif
#elif defined(_WIN32)
#  define SHELLFE_API __declspec(dllimport)
#else
#  define SHELLFE_API
#endif

#ifdef __cplusplus
#  define SHELLFE_NOEXCEPT noexcept
extern "C" {
#else
#  define SHELLFE_NOEXCEPT
#endif

/* ------------------------------------------------------------------------
 * Dense matrix products
 *
 * All five share one argument order and one layout rule, whichever factor is
 * transposed: AMAT always has leading dimension KDIM+1, BMAT and CMAT always
 * have leading dimension NDIM+1. In the column-major view, i = 1..MDIM runs
 * over the columns of CMAT, j = 1..NDIM over its rows and t = 1..KDIM is the
 * summation index. Written: CMAT(1..NDIM, 1..MDIM); row 0 and column 0 are
 * left alone. MDIM < 1 leaves CMAT untouched; KDIM < 1 yields zeros.
 *
 * In a row-major host that declares A(0:M, 0:K), B(0:K, 0:N), C(0:M, 0:N)
 * the plain product is C = A*B.
 *
 * The accumulating products (MATMUL, MATMULAT, MATMULDOUBLE) are bit for bit
 * reproducible: every product is rounded to the working precision and the
 * terms of each entry are added in increasing t starting from zero, on every
 * CPU. The dot-product forms (MATMULBT, MATMULBTDOUBLE) may sum in any order.
 * ------------------------------------------------------------------------ */

/* CMAT(j, i) = sum_t AMAT(t, i) * BMAT(j, t)            (C = A*B, float) */
SHELLFE_API void MATMULDLLDOTNET(const float* AMAT, const float* BMAT, float* CMAT,
                                 const int32_t* MDIM, const int32_t* KDIM,
                                 const int32_t* NDIM) SHELLFE_NOEXCEPT;

/* CMAT(j, i) = sum_t AMAT(t, i) * BMAT(t, j)            (C = A*B^T, float)
 * BMAT keeps leading dimension NDIM+1 although its first index runs to KDIM. */
SHELLFE_API void MATMULBTDLLDOTNET(const float* AMAT, const float* BMAT, float* CMAT,
                                   const int32_t* MDIM, const int32_t* KDIM,
                                   const int32_t* NDIM) SHELLFE_NOEXCEPT;

/* CMAT(j, i) = sum_t AMAT(i, t) * BMAT(j, t)            (C = A^T*B, float)
 * AMAT keeps leading dimension KDIM+1 although its first index runs to MDIM. */
SHELLFE_API void MATMULATDLLDOTNET(const float* AMAT, const float* BMAT, float* CMAT,
                                   const int32_t* MDIM, const int32_t* KDIM,
                                   const int32_t* NDIM) SHELLFE_NOEXCEPT;

/* As MATMULDLLDOTNET in double precision. */
SHELLFE_API void MATMULDOUBLEDLLDOTNET(const double* AMAT, const double* BMAT, double* CMAT,
                                       const int32_t* MDIM, const int32_t* KDIM,
                                       const int32_t* NDIM) SHELLFE_NOEXCEPT;

/* As MATMULBTDLLDOTNET in double precision. */
SHELLFE_API void MATMULBTDOUBLEDLLDOTNET(const double* AMAT, const double* BMAT, double* CMAT,
                                         const int32_t* MDIM, const int32_t* KDIM,
                                         const int32_t* NDIM) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Element finishing
 * ------------------------------------------------------------------------ */

/* Finishes one shell element matrix before assembly.
 *
 * 1. Adds the in-plane matrix ESTIF2 (two degrees of freedom per node, fixed
 *    shape (0:18, 0:18), so at most 9 nodes) into degrees of freedom 1 and 2
 *    of every node block of ESTIF (0:LDES, 0:*), NDOFN per node. Only node
 *    blocks (p, q) with p >= q are added: ESTIF carries its data in the lower
 *    block triangle.
 * 2. Unless IELNOD(IELEM, 0) != 0, gives the last degree of freedom of each
 *    node whose NODFLG(|IELNOD(IELEM, n)|) is 0 a drilling stiffness of 10.0,
 *    capped at RATIO times each of the node's two other rotational diagonals
 *    that exceeds 0.0001, and sets that flag to 1. A node already flagged
 *    keeps its diagonal: each node gets its drilling stiffness once per pass.
 *
 * IELNOD is (0:LDCN, 0:NENOD): row IELEM holds the switch in column 0 and the
 * element's node numbers (sign ignored) in columns 1..NENOD. NODFLG is
 * indexed by global node number from 0 and is cleared by the host before a
 * pass over all elements. The seventh argument is not used.
 * Writes ESTIF and NODFLG. */
SHELLFE_API void STIESTDLLDOTNET(const float* ESTIF2, float* ESTIF, const int32_t* NENOD,
                                 int32_t* NODFLG, const int32_t* NDOFN, const int32_t* LDES,
                                 const void* UNUSED7, const int32_t* LDCN, const int32_t* IELEM,
                                 const int32_t* IELNOD, const float* RATIO) SHELLFE_NOEXCEPT;

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* SHELLFE_H */
