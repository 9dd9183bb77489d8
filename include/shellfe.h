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
 *   - integers are 32-bit signed, reals are 32-bit unless named double.
 *
 * The routines validate nothing: sizes and indices are the host's
 * responsibility. A NULL or too short output array is written
 * through anyway and crashes the host or corrupts its memory; a count below 1
 * simply does no work. docs/api.md lists, for every argument, the extent a
 * routine may touch.
 *
 * All routines are thread-safe on distinct arrays: the library keeps no
 * mutable static data. Arguments documented as unused must still be passed
 * (any valid address, NULL included).
 *
 * Copyright (c) 2026 the shellfe developers. BSD-3-Clause licence: see LICENSE.
 */
#ifndef SHELLFE_H
#define SHELLFE_H

#include <stdint.h>

/* Version of this header and of the library it declares. */
#define SHELLFE_VERSION_MAJOR 0
#define SHELLFE_VERSION_MINOR 1
#define SHELLFE_VERSION_PATCH 0

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
 *
 * CMAT must not share storage with AMAT or BMAT. The factors are read in
 * packed blocks while CMAT is being written, so an overlapping CMAT receives
 * neither the product of the old values nor that of any fixed update order:
 * its result is unspecified (though never outside CMAT's own entries).
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
 * AMAT keeps leading dimension KDIM+1 although its first index runs to MDIM.
 * With MDIM > KDIM the columns of AMAT therefore overlap: AMAT(i, t) for
 * i > KDIM is the same element as AMAT(i - KDIM - 1, t + 1). A factor wider
 * than it is deep cannot be passed; use MATMULDLLDOTNET on its transpose. */
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
 * 2. Only if IELNOD(IELEM, 0) is 0 (any other value, negative included, skips
 *    this step), gives the last degree of freedom of each
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

/* ------------------------------------------------------------------------
 * Shell element formulation
 *
 * Material matrices, Jacobians and the element stiffness of plane
 * isoparametric membrane and plate elements of up to nine nodes.
 *
 * Arrays shared by the element routines:
 *   PROP  (0:NMAT, 0:17 at least)  material table, one row per material:
 *         column 1 = E1, 2 = nu12, 8 = E2, 9 = G12, 10 and 11 = transverse
 *         shear moduli, 17 = angle of the material axes in degrees.
 *   PLAY  (0:NLAY, 0:17)  layer table with the same columns, one row per layer;
 *   ZLAY  (0:NLAY+1)      layer L lies between ZLAY(L) and ZLAY(L+1).
 *   XY    (0:9, 0:2)      x of node k in XY(k, 1), y in XY(k, 2).
 *   TNODE (0:NELEM, 0:*)  thickness at node k of element IEL in TNODE(IEL, k).
 *   GPOS, GWEI (0:2, 0:*) the host's integration rule: row 1 a 1-D rule
 *         (abscissae, weights) used as a tensor product on quadrilaterals;
 *         row 2 triangle points, point n at (GPOS(2,2n-1), GPOS(2,2n)) with
 *         weight GWEI(2,n).
 *   NTYPE shape functions: 1 or 2 = 8-node serendipity quadrilateral (plus an
 *         optional centre bubble as node 9, which does not enter the
 *         geometry), 3 = 6-node triangle, 4 = 3-node 1-D quintic Hermite,
 *         6 = 3-node triangle; any other code gives zero shape functions.
 *
 * The element routines loop i = 1..NGPX (outer), j = 1..NGPY (inner); for
 * triangles (NTYPE 3 or 6) point j is used on every outer pass, so integrate
 * a triangle once with NGPX = 1. They add into ESTIF and never clear it.
 * Each writes the thickness interpolated at its last point processed into
 * PROP(IMAT, 3). The point counters NGPT and NGPT2 are the host's 32-bit
 * integers and wrap around from 2^31 - 1 to -2^31 as two's complement does.
 * DETJ returns the last point's Jacobian determinant, or -1.0
 * when a point had a determinant below 1.0e-7 (collapsed or clockwise
 * element). NNODE, NENOD and NNODT are at most 9; larger values are treated
 * as 9.
 * ------------------------------------------------------------------------ */

/* Bending rigidities (IBEND = 1) or else, with ISHEAR = 1, transverse shear
 * rigidities of a plate of NLAY rotated orthotropic layers. One matrix per
 * call: DBEND (0:3, 0:3), block (1:3, 1:3) in the order x, y, xy; or DSHEAR
 * (0:2, 0:2), block (1:2, 1:2). Nothing is written with neither switch at 1.
 * Two identical, unrotated layers with PROP(1,1) = PROP(1,8) and
 * PROP(1,10) = PROP(1,11) take the closed form D = E t^3 / (12 (1 - nu^2)).
 * At zero angle column 8 of PROP enters the x-x bending term and column 1
 * the y-y term. PROP is (0:NLAY, 0:17) here. */
SHELLFE_API void MODPBDLLDOTNET(float* DBEND, float* DSHEAR, const int32_t* IBEND,
                                const int32_t* ISHEAR, const float* PROP, const float* ZLAY,
                                const int32_t* NLAY) SHELLFE_NOEXCEPT;

/* Jacobian determinant and Cartesian shape-function derivatives at one point
 * of a plane element of NENOD <= 9 nodes. All three arrays have a fixed first
 * dimension (0:9). Reads DERIV(n, 2) = dN/dxi, DERIV(n, 3) = dN/deta and
 * ELCOD(n, 1..2) = x, y for n = 1..NENOD (a ninth node does not enter the
 * geometry). Writes DETJ (which may be zero or negative, unchecked) and
 * CARTD(n, 1) = dN/dx, CARTD(n, 2) = dN/dy for n = 1..NENOD. */
SHELLFE_API void JACOB2DLLDOTNET(float* CARTD, const float* DERIV, float* DETJ,
                                 const float* ELCOD, const int32_t* NENOD) SHELLFE_NOEXCEPT;

/* Plane-stress matrix of the orthotropic material in row IMAT of PROP
 * (0:NMAT, 0:17), turned by PROP(IMAT, 17) degrees: T Q T^T in the order
 * (sigma_x, sigma_y, tau_xy) / (eps_x, eps_y, gamma_xy). Angles below 0.001
 * radian count as zero. Writes DMAT(1:3, 1:3) of DMAT (0:3, 0:3), exactly
 * symmetric. */
SHELLFE_API void MODIPDLLDOTNET(float* DMAT, const float* PROP, const int32_t* IMAT,
                                const int32_t* NMAT) SHELLFE_NOEXCEPT;

/* Membrane (plane-stress) stiffness of one isoparametric element: u, v per
 * node, degree of freedom 2k-1 = u and 2k = v of node k. Material from row
 * IMAT of PROP, as MODIPDLLDOTNET; thickness interpolated from TNODE(IEL,
 * 1..NNODT) at every point. Adds into the lower triangle (row >= column) of
 * ESTIF (0:18, 0:18), rows and columns 1..2*NNODE. NGPT is increased by one
 * per point. A point with determinant below 1.0e-7 is still integrated, with
 * -1.0 in place of its determinant, and DETJ returns -1.0. Arguments 10, 14,
 * 17 and 18 are not used. */
SHELLFE_API void STIFFP003DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                 const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                 const int32_t* NNODE, const float* XY, const float* TNODE,
                                 const void* UNUSED10, const int32_t* IMAT, float* PROP,
                                 const float* GWEI, const void* UNUSED14, const int32_t* NELEM,
                                 const int32_t* NMAT, const void* UNUSED17, const void* UNUSED18,
                                 const int32_t* NNODT, float* ESTIF, float* DETJ) SHELLFE_NOEXCEPT;

/* Plate-bending stiffness of one element of NNODE <= 9 nodes, with the
 * layered bending rigidities of MODPBDLLDOTNET (PLAY, ZLAY, NLAY) at every
 * point. Degree of freedom c (1 = transverse displacement, 2 and 3 = the
 * rotations) of node n is ESTIF index IOFF + c + NDOFN*(n-1); ESTIF is
 * (0:LDES, 0:*). Adds complete 3x3 node blocks (j, i) with j >= i (the lower
 * block triangle); the displacement rows and columns receive zeros. NGPT is
 * increased by one per point before its shape functions are formed, NGPT2
 * after. At the first point with determinant below 1.0e-7 the routine
 * returns at once with DETJ = -1.0, leaving the element incomplete.
 * Arguments 8, 12, 18 and 19 are not used. */
SHELLFE_API void STIFFP001DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                 const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                 int32_t* NGPT2, const void* UNUSED8, const int32_t* NNODE,
                                 const float* XY, const float* TNODE, const void* UNUSED12,
                                 const int32_t* IMAT, float* PROP, const int32_t* IOFF,
                                 float* ESTIF, const float* GWEI, const void* UNUSED18,
                                 const void* UNUSED19, const int32_t* NELEM, const int32_t* NMAT,
                                 const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                 const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                 float* DETJ) SHELLFE_NOEXCEPT;

/* Transverse-shear companion of STIFFP001DOTNET: the same degrees of freedom,
 * point loop, degenerate-point return and thickness write, with the layered
 * transverse shear rigidities of MODPBDLLDOTNET. All three degrees of freedom
 * of each node receive stiffness. NGPT is increased by one per point.
 * Arguments 10 and 16 are not used. */
SHELLFE_API void STIFFP002DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                 const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                 const int32_t* NNODE, const float* XY, const float* TNODE,
                                 const void* UNUSED10, const int32_t* IMAT, float* PROP,
                                 const int32_t* IOFF, float* ESTIF, const float* GWEI,
                                 const void* UNUSED16, const int32_t* NELEM, const int32_t* NMAT,
                                 const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                 const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                 float* DETJ) SHELLFE_NOEXCEPT;

/* Selects degrees of freedom from a matrix of six per node. For every pair
 * of nodes a, b (1..NNODE) and q, r (1..NSEL):
 *   EDST(6(b-1)+q, 6(a-1)+r) = ESRC(6(b-1)+IDOF(q), 6(a-1)+IDOF(r)).
 * ESRC and EDST are (0:LDK, 0:LDK); IDOF is (0:NSEL) with entries 1..6, may
 * reorder and repeat. Positions NSEL+1..6 of every block keep what EDST
 * held. ESRC and EDST may be the same array (entries are then overwritten in
 * the loop order a, r, b, q before later reads). */
SHELLFE_API void BUILDESTIF1DOTNET(const int32_t* NNODE, const int32_t* NSEL, const int32_t* LDK,
                                   const float* ESRC, float* EDST,
                                   const int32_t* IDOF) SHELLFE_NOEXCEPT;

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* SHELLFE_H */
