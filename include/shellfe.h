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
 * Results are the same bits on every platform and CPU (Linux library and
 * Windows DLL alike), for every input, NaNs included; CI checks this on
 * every routine. The element routines, the error estimate, the dense
 * products and ORIENT2D moreover write every NaN result (from NaN or infinite input, or a
 * division by zero) as the positive quiet NaN 0x7FC00000 (in double
 * 0x7FF8000000000000), whatever NaNs it arose from, so that their NaNs
 * stay the same from one build and version to the next.
 * An infinite or NaN material angle has sine and cosine NaN.
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
 * All five give the same bits on every CPU and platform, NaNs included: an
 * entry that is NaN is always the positive quiet NaN (0x7FC00000, in double
 * 0x7FF8000000000000), whatever NaNs the factors held.
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

/* ------------------------------------------------------------------------
 * Global assembly and loads
 *
 * The global stiffness and mass matrices are symmetric and held as their
 * upper triangle, either in compressed-row storage (row by row, from node
 * matrices gathered element by element) or in skyline storage (element by
 * element). Degree of freedom d of node n is global equation
 * (n-1)*NDOFN + d, or (NUMNOD(n)-1)*NDOF + d where the host renumbers
 * nodes; equation numbers are 32-bit and wrap around as the host's own do.
 *
 * Here a table "with row length L+1" is stored row after row: entry (i, j)
 * is at flat position i*(L+1) + j. IELNOD(a, IELEM) is the node in slot a of
 * element IELEM. Counters (NNZ, NROWS, NNZCNT) continue from the host's
 * values; matrices and vectors are added into, never cleared.
 * ------------------------------------------------------------------------ */

/* Appends one row of a compressed-row global matrix, called once per global
 * equation in ascending order. First IROWPTR(NROWS) = NNZ+1 and NROWS is
 * increased, so every call begins (and counts) a row even if it stores
 * nothing. Then for each listed node n = NODLST(j), j = 1..NODLST(0), and
 * d = 1..NDOFS: equation e = (n-1)*NDOFN + d is skipped when IFIX(e) == 1;
 * otherwise v = SNODE(IROWN*(LDNM+1) + (j-1)*NDOFN + d) is stored when
 * |v| > 1.0e-10f: NNZ is increased, ICOL(NNZ-1) = e, VAL(NNZ-1) = v.
 * Positions count from 0; IFIX is indexed by the equation itself, one ahead
 * of ICOL and VAL. Entries are stored in list order, ascending d within a
 * node; nothing is sorted, and the closing row pointer is the host's.
 * Arguments 6, 11 and 14 are not used. */
SHELLFE_API void ADDTOCRSSTIFFDLLDOTNET(const int32_t* NDOFS, const int32_t* LDNM, int32_t* NNZ,
                                        int32_t* IROWPTR, int32_t* ICOL, const void* UNUSED6,
                                        int32_t* NROWS, const int32_t* IFIX, const float* SNODE,
                                        double* VAL, const void* UNUSED11, const int32_t* IROWN,
                                        const int32_t* NODLST, const void* UNUSED14,
                                        const int32_t* NDOFN) SHELLFE_NOEXCEPT;

/* ADDTOCRSSTIFFDLLDOTNET for a double-precision node (mass) matrix DNODE.
 * The cut-off is the single-precision 1.0e-10 widened to double,
 * 1.000000013351432e-10, not the double 1.0e-10: hosts rely on the same
 * entries being kept as in the single-precision route. */
SHELLFE_API void ADDTOCRSMASSDLLDLL(const int32_t* NDOFS, const int32_t* LDNM, int32_t* NNZ,
                                    int32_t* IROWPTR, int32_t* ICOL, const void* UNUSED6,
                                    int32_t* NROWS, const int32_t* IFIX, const double* DNODE,
                                    double* VAL, const void* UNUSED11, const int32_t* IROWN,
                                    const int32_t* NODLST, const void* UNUSED14,
                                    const int32_t* NDOFN) SHELLFE_NOEXCEPT;

/* Gathers the couplings of node INODE from one element into the node matrix;
 * called once per element at the node, after the host has cleared SNODE and
 * filled LOCNOD for the node's neighbours. For each slot e with
 * IELNOD(e, IELEM) == INODE:
 *   - springs, once per node: while IVISIT(INODE) is 0, for d = 1..NDOFE
 *     with ISPRF(d-1, INODE) == 1, SPRING((INODE-1)*NDOFE + IDOFMAP(d)) is
 *     added to ESTIF(a, a), a = (e-1)*NDOFE + IDOFMAP(d); then
 *     IVISIT(INODE) = -1. ESTIF is changed in place;
 *   - for r = 1..NDOFE, s = 1..NENOD, c = 1..NDOFE, with row equation
 *     i = (INODE-1)*NDOFN + r, m = IELNOD(s, IELEM), column equation
 *     j = (m-1)*NDOFN + c and v = ESTIF((e-1)*NDOFE + r, (s-1)*NDOFE + c):
 *     if i <= j, NNZCNT counts v when |v| > 1.0e-10f and v is added to
 *     SNODE(r, (LOCNOD(m)-1)*NDOFN + c) whatever its size; for every i, j,
 *     FLOAD(i) -= UPRES(j)*v when |UPRES(j)| >= 1.0e-10f. The strict and the
 *     inclusive comparison differ on purpose.
 * ESTIF, IELNOD, ISPRF and SNODE are tables stored row after row.
 * Arguments 8, 16 and 18 are not used. */
SHELLFE_API void BUILDALLNODESTIFFDLLDOTNET(float* ESTIF, const int32_t* INODE,
                                            const int32_t* NENOD, float* SNODE,
                                            const int32_t* IELEM, const float* SPRING,
                                            int32_t* IVISIT, const void* UNUSED8,
                                            const int32_t* IELNOD, const int32_t* ISPRF,
                                            const int32_t* NDOFE, const int32_t* NDOFN,
                                            const int32_t* LDES, const int32_t* LDSF,
                                            const int32_t* LDNM, const void* UNUSED16,
                                            const int32_t* LDCN, const void* UNUSED18,
                                            const float* UPRES, float* FLOAD, const int32_t* LOCNOD,
                                            int32_t* NNZCNT,
                                            const int32_t* IDOFMAP) SHELLFE_NOEXCEPT;

/* BUILDALLNODESTIFFDLLDOTNET with a double-precision load vector FLOAD: each
 * correction UPRES(j)*v is formed in single precision, widened and
 * subtracted in double. */
SHELLFE_API void BUILDALLNODESTIFFDLLDOTNET01(float* ESTIF, const int32_t* INODE,
                                              const int32_t* NENOD, float* SNODE,
                                              const int32_t* IELEM, const float* SPRING,
                                              int32_t* IVISIT, const void* UNUSED8,
                                              const int32_t* IELNOD, const int32_t* ISPRF,
                                              const int32_t* NDOFE, const int32_t* NDOFN,
                                              const int32_t* LDES, const int32_t* LDSF,
                                              const int32_t* LDNM, const void* UNUSED16,
                                              const int32_t* LDCN, const void* UNUSED18,
                                              const float* UPRES, double* FLOAD,
                                              const int32_t* LOCNOD, int32_t* NNZCNT,
                                              const int32_t* IDOFMAP) SHELLFE_NOEXCEPT;

/* Gathers the couplings of node INODE from one double-precision element mass
 * matrix into the node mass matrix, as BUILDALLNODESTIFFDLLDOTNET gathers
 * stiffness but with no springs and no load correction. NNZCNT counts the
 * contributions above 1.000000013351432e-10 (the single-precision 1.0e-10
 * widened). Arguments 6, 11 and 13 are not used. */
SHELLFE_API void BUILDALLNODEMASSDLL(const double* EMASS, const int32_t* INODE,
                                     const int32_t* NENOD, double* DNODE, const int32_t* IELEM,
                                     const void* UNUSED6, const int32_t* IELNOD,
                                     const int32_t* NDOFE, const int32_t* NDOFN,
                                     const int32_t* LDES, const void* UNUSED11, const int32_t* LDNM,
                                     const void* UNUSED13, const int32_t* LDCN,
                                     const int32_t* LOCNOD, int32_t* NNZCNT) SHELLFE_NOEXCEPT;

/* Adds one shell element stiffness into skyline storage. The coupling of
 * equations J <= I lives at SKY(IDIAG(I+1) - I + J) and is added only when
 * I - J < NBAND; other couplings are dropped. For slots a = 1..8 holding a
 * node (IELNOD(a, IELEM) > 0) and k = 1..NDOF, the element row is
 * p = (a-1)*NDOF + IDOFMAP(k); for every slot b = 1..a (empty ones
 * included, as they stand) and l = 1..NDOF the column is
 * q = (b-1)*NDOF + IDOFMAP(l), taken when q <= p. Node n's degree of
 * freedom d is equation (NUMNOD(n)-1)*NDOF + d. The lower triangle of the
 * symmetric element matrix, placed at (max, min) of the equations, adds
 * every coupling once. Arguments 3, 12 and 13 are not used. */
SHELLFE_API void ADDSHELLTOSDLLDOTNET(const float* ESTIF, const int32_t* IELNOD,
                                      const void* UNUSED3, const int32_t* IDIAG,
                                      const int32_t* NBAND, const int32_t* NDOF, double* SKY,
                                      const int32_t* NUMNOD, const int32_t* IDOFMAP,
                                      const int32_t* IELEM, const int32_t* LDCN,
                                      const void* UNUSED12, const void* UNUSED13,
                                      const int32_t* LDES) SHELLFE_NOEXCEPT;

/* ADDSHELLTOSDLLDOTNET for an element of NSLOT node slots whose matrix is
 * in element order: element positions (a-1)*NDOF + k, no map. Arguments 3,
 * 11 and 12 are not used. */
SHELLFE_API void ADDSHELLTOSDOTNET(const float* ESTIF, const int32_t* IELNOD, const void* UNUSED3,
                                   const int32_t* IDIAG, const int32_t* NBAND, const int32_t* NDOF,
                                   double* SKY, const int32_t* NUMNOD, const int32_t* IELEM,
                                   const int32_t* LDCN, const void* UNUSED11, const void* UNUSED12,
                                   const int32_t* LDES, const int32_t* NSLOT) SHELLFE_NOEXCEPT;

/* Scatters an element load vector. For slots a = 1..NENOD, node
 * n = |IELNOD(a, IELEM)| and d = 1..NDOF, f = ELOAD((a-1)*NDOF + d) is
 * subtracted from NODFRC(d, n) and added to
 * GLOAD((NUMNOD(n)-1)*NDOF + P(d)), P = 4, 6, 5, 1, 3, 2 for d = 1..6 and
 * P(d) = 2 beyond six. NODFRC is indexed by the element's own degree of
 * freedom and the node number itself. Argument 10 is not used. */
SHELLFE_API void FELOADTOGLOADDOTNET(const int32_t* NENOD, const int32_t* IELNOD,
                                     const int32_t* LDCN, const int32_t* NUMNOD,
                                     const int32_t* LDNF, const int32_t* NDOF, float* GLOAD,
                                     const float* ELOAD, float* NODFRC, const void* UNUSED10,
                                     const int32_t* IELEM) SHELLFE_NOEXCEPT;

/* FELOADTOGLOADDOTNET with a double-precision global load vector; the
 * per-node forces stay in single precision. */
SHELLFE_API void FELOADTOGLOADDOTNET01(const int32_t* NENOD, const int32_t* IELNOD,
                                       const int32_t* LDCN, const int32_t* NUMNOD,
                                       const int32_t* LDNF, const int32_t* NDOF, double* GLOAD,
                                       const float* ELOAD, float* NODFRC, const void* UNUSED10,
                                       const int32_t* IELEM) SHELLFE_NOEXCEPT;

/* Index IPT (1..NPT) of the point (XPT(i), YPT(i)) nearest to (XP, YP), the
 * distance formed in single precision: the lowest index among equal
 * distances, and 0 when no point lies nearer than 1.0e8 (or NPT < 1). A
 * NaN distance never wins. */
SHELLFE_API void FINDLOADPOINT(const int32_t* NPT, int32_t* IPT, const float* XP, const float* YP,
                               const float* XPT, const float* YPT) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Mesh bookkeeping
 *
 * Node-to-member incidence, coincident and mid-side node merging, beams on
 * element edges, table comparison and the natural coordinates of a point.
 * Tables "with row length L+1" are stored row after row, entry (i, j) at
 * flat position i*(L+1) + j; member slot tables hold the node of slot s
 * (1..8) of member j at (s, j). Merged nodes are flagged IDEL(n) = -1 and
 * keep their numbers.
 * ------------------------------------------------------------------------ */

/* Node-to-member incidence. For members j = 1..NMEM and slots s = 1..8 with
 * n = MEMSLT(s, j) > 0, member j is appended to the record of node n
 * (count at NODMEM(51n), members after it) and MAXMEM becomes the largest
 * count reached, at least 1. Records hold 50 members; the capacity is not
 * checked. Counts continue from what the host left. Argument 1 is not used. */
SHELLFE_API void FEMEMBERSTONODES1DOTNET(const void* UNUSED1, const int32_t* NMEM, int32_t* MAXMEM,
                                         int32_t* NODMEM, const int32_t* MEMSLT) SHELLFE_NOEXCEPT;

/* Merges coincident nodes. For a = 1..NNODE-1 with IDEL(a) == 0, every later
 * node b with IDEL(b) == 0 that lies within 0.001 of a in each of x, y and z
 * (strictly, a box, not a sphere) and has members (NODMEM(b, 0) >= 1) is
 * merged into a: every slot of its members naming b is set to a, and
 * IDEL(b) = -1. Nodes are not renumbered and NODMEM is not updated. Each
 * node is compared with a itself, not with a growing cluster, so a chain of
 * close nodes may split. The result equals that of comparing every pair in
 * this order; the search itself uses a grid and runs in about linear time. */
SHELLFE_API void PACKNODFE1DOTNET(int32_t* IDEL, const int32_t* NODMEM, const int32_t* NNODE,
                                  int32_t* MEMSLT, const int32_t* NMEM, const int32_t* LDNMEM,
                                  const float* XYZN) SHELLFE_NOEXCEPT;

/* Matches beams to element edges. For beam b (end nodes IBN1(b), IBN2(b)),
 * elements e = 1, 2, ... with ELTAB(0, e) == 0 are tested for the beam's
 * nodes in adjacent slots (1,2), (2,3), ..., (7,8), (8,1), in either order.
 * A match sets IBINFO(b) = ELTAB(9, e) and IBMFLG = -1 at both end nodes.
 * The search moves to the next element only while IBINFO(b) is 0: it stops
 * at the first match with a non-zero value, and a beam that is non-zero on
 * entry is compared with element 1 only. */
SHELLFE_API void SETBEAMINFODLLDOTNET(const int32_t* NBEAM, const int32_t* NEL,
                                      const int32_t* ELTAB, const int32_t* IBN1,
                                      const int32_t* IBN2, int32_t* IBINFO,
                                      int32_t* IBMFLG) SHELLFE_NOEXCEPT;

/* Compares entries (1..NROWT, 1..MCOL) of two tables stored row after row.
 * In double precision, S sums the magnitudes |ARRA| and D the differences
 * |ARRA - ARRB| (formed in single precision), each term counted only above
 * 1.0e-8. ISAME = -1 (the same) when S <= 1.0e-7f and D <= 1.0e-7f, or
 * S > 1.0e-7f and (D/S)*100 <= 1.0e-5f, the thresholds being single
 * values widened; 0 otherwise. ARRA is the reference: swapping the tables
 * can change the answer. */
SHELLFE_API void COMPAREARRAY(const float* ARRA, const float* ARRB, const int32_t* MCOL,
                              const int32_t* NROWT, int32_t* ISAME) SHELLFE_NOEXCEPT;

/* Merges duplicate mid-side nodes. Nodes NBASE+1..NTOT are the mid-side
 * nodes, four per element in element order: node NBASE+q fills slot 2r of
 * element e, q = 4(e-1) + r. Each live node j (ascending) absorbs every
 * other live mid-side node k within TOLM of it in both XYP rows (strictly):
 * IDEL(k) = -1 and ELSLOT(2r, e) of k's own slot becomes j. Every pair is
 * resolved in favour of the lower number; node NBASE+1 is never absorbed.
 * The result equals that of comparing every pair; the search itself uses
 * a grid and runs in about linear time. */
SHELLFE_API void PACKMESHNODESDOTNET(int32_t* IDEL, const int32_t* NBASE, const int32_t* NTOT,
                                     const float* XYP, int32_t* ELSLOT, const int32_t* LDEL,
                                     const float* TOLM) SHELLFE_NOEXCEPT;

/* Natural coordinates of the point (XP, YP, ZP) in the quadrilateral whose
 * corners are the nodes in slots 1, 3, 5, 7 of row IEL of IELNOD. Points
 * and corners are projected onto the plane axes (-c1*c3, c4, -c3*c2) and
 * (c2, 0, -c1), and the bilinear map is inverted in closed form in double
 * precision. Outside points are clamped to the border without a signal; a
 * degenerate element gives XI = 0; an impossible root gives NaN. Argument
 * 10 is not used. */
SHELLFE_API void NORMALISEDCORDDOTNET(const int32_t* IEL, float* XI, float* ETA, const float* XP,
                                      const float* YP, const float* ZP, const int32_t* IELNOD,
                                      const float* XYZN, const int32_t* LDCN, const void* UNUSED10,
                                      const float* DC1, const float* DC2, const float* DC3,
                                      const float* DC4, const int32_t* NNODE) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Planar geometry and triangulation
 *
 * Plane geometry for a triangulating mesher, all in double precision.
 * Points are arrays of doubles from 1: x, y (and z for TRIAREA3D). The
 * node coordinate table XY is declared (LDN+1, 3) from 1: node n's x is at
 * flat position n-1 and its y at n-1 + (LDN+1); z is not read.
 *
 * ORIENT2D, CHECKNEWTRIANG and GETNEARNODES decide orientations with an
 * adaptive-precision predicate: a plain determinant where its error bound
 * settles the sign, exact expansion arithmetic where it does not. The host
 * computes the five constants once, with eps = 2^-53:
 *   CCWERRBOUNDA   = (3 + 16*eps)*eps
 *   CCWERRBOUNDB   = (2 + 12*eps)*eps
 *   CCWERRBOUNDC   = (9 + 64*eps)*eps*eps
 *   RESULTERRBOUND = (3 + 8*eps)*eps
 *   SPLITTER       = 134217729.0          (2^27 + 1)
 * With these, the sign is exact whenever no product of coordinate
 * differences overflows or underflows and no difference exceeds about
 * 2^996 in magnitude (beyond which the exact stages' splitting overflows
 * and the result is NaN), with one exception kept for
 * compatibility: the last stage merges expansion components in an order
 * that can, rarely, leave exactly collinear points with a tiny nonzero
 * result (far below the plain determinant's rounding error) instead of 0.
 * Where ORIENT2D's result is NaN (from a NaN or infinite coordinate, or
 * from the overflow above), it is always the positive quiet NaN
 * 0x7FF8000000000000.
 * ------------------------------------------------------------------------ */

/* Distance of two points, sqrt((PB.x-PA.x)^2 + (PB.y-PA.y)^2), without
 * scaling against overflow. */
SHELLFE_API double POINTDIST2D(const double* PA, const double* PB) SHELLFE_NOEXCEPT;

/* Intersection of the lines through P1-P2 and Q1-Q2. Returns 0 if the first
 * segment is shorter than LENTOL, -1 if the second is (a segment exactly
 * LENTOL long passes), 10 if PARTOL*PARTOL > |cross product of P2-P1 and
 * Q2-Q1| (the raw product, so the test scales with both lengths), and
 * otherwise 11 with S and T, the parameters of the crossing along P1->P2
 * and Q1->Q2. S and T are written only for 11; whether the crossing lies
 * on both segments (both in [0, 1]) is the caller's test. */
SHELLFE_API int32_t LINEINTERSECT2D(const double* P1, const double* P2, const double* Q1,
                                    const double* Q2, double* S, double* T,
                                    const double* LENTOL, const double* PARTOL) SHELLFE_NOEXCEPT;

/* Orientation of three points: positive if PA, PB, PC run counter-clockwise,
 * negative if clockwise, 0 if collinear (but for the rare exception in the
 * section comment above); the magnitude approximates
 * twice the signed area of the triangle. Well-separated points cost one
 * plain determinant; nearly collinear ones are settled in up to three
 * further stages of increasing precision. */
SHELLFE_API double ORIENT2D(const double* PA, const double* PB, const double* PC,
                            const double* CCWERRBOUNDA, const double* CCWERRBOUNDB,
                            const double* CCWERRBOUNDC, const double* SPLITTER,
                            const double* RESULTERRBOUND) SHELLFE_NOEXCEPT;

/* Area of the triangle PA, PB, PC in space: half the length of
 * (PB-PA) x (PC-PA). */
SHELLFE_API double TRIAREA3D(const double* PA, const double* PB,
                             const double* PC) SHELLFE_NOEXCEPT;

/* May the triangle on base edge a = EDGES(IEDGE, 1), b = EDGES(IEDGE, 2)
 * with apex P be added to the mesh? EDGES is declared (0:LDE, 1:2) and its
 * rows 0..NEDGE-1 are in use. Every other edge c-d is checked in row order,
 * and the first failing test rejects (returns 2):
 *   1. the side P-a crosses c-d (skipped if c or d is a or NODEX);
 *   2. the side P-b crosses c-d (skipped if c or d is b or NODEX);
 *   3. node c lies in the triangle a, b, P (skipped if c is a, b or NODEX);
 *   4. the same for node d.
 * Sides cross when the segment intersection returns 11 with both parameters
 * in [0, 1], ends included; short or parallel pairs never cross. A node lies
 * in the triangle when all three orientations (a, b, node), (b, P, node),
 * (P, a, node) are positive, or when one of them is below ONTOL in
 * magnitude (twice the signed area, not a distance) and the other two are
 * positive; a clockwise triangle contains no node. Returns 1 (accepted)
 * when every edge passes, and for NEDGE < 1. Note the places of the
 * constants: arguments 7 to 10, and RESULTERRBOUND last. */
SHELLFE_API int32_t CHECKNEWTRIANG(const int32_t* IEDGE, const int32_t* NODEX, const double* P,
                                   const double* XY, const int32_t* NEDGE, const int32_t* EDGES,
                                   const double* CCWERRBOUNDA, const double* CCWERRBOUNDB,
                                   const double* CCWERRBOUNDC, const double* SPLITTER,
                                   const int32_t* LDE, const int32_t* LDN, const double* LENTOL,
                                   const double* PARTOL, const double* ONTOL,
                                   const double* RESULTERRBOUND) SHELLFE_NOEXCEPT;

/* Copies the NV node numbers of each element KFIRST, KFIRST+1, ..., NLAST of
 * ELEMNOD, declared (0:NLAST, 1:NV), into VERTS from its first entry on,
 * element after element. NLAST is both the last element gathered and the
 * table's row bound. Nothing is written when NLAST < KFIRST or NV < 1.
 * Arguments 3 and 5 are not used. */
SHELLFE_API void GETELEMENTVERTICES(int32_t* VERTS, const int32_t* ELEMNOD, const void* UNUSED3,
                                    const int32_t* NLAST, const void* UNUSED5,
                                    const int32_t* KFIRST, const int32_t* NV) SHELLFE_NOEXCEPT;

/* Candidate apexes for a triangle on base edge NA->NB. The nodes of TABLE,
 * declared (0:LDT, 1:NCOL), rows 0..NROW-1 scanned row after row, that lie
 * on the left of NA->NB or on its line are collected in NEAR, each once and
 * never NA or NB: the at most KMAX nearest to P (a full list drops a node
 * unless it is strictly nearer than the farthest entry, and of equally far
 * entries the first is replaced). The list is then sorted nearest first by
 * a selection sort that moves only the displaced entry's distance, and
 * NWITHIN counts the leading entries whose distance, as that sort leaves
 * it, is not greater than RADIUS. Because the sort does not write the
 * minimum's distance into its new place, NWITHIN can differ from the count
 * of a proper sort; hosts rely on the value as it is. Pass NNEAR = 0; it
 * receives the list length, which is also returned. Note the places of the
 * constants: arguments 11 to 14, and RESULTERRBOUND at 17. */
SHELLFE_API int32_t GETNEARNODES(const int32_t* NA, const int32_t* NB, const double* P,
                                 const double* XY, const int32_t* NROW, const int32_t* TABLE,
                                 const double* RADIUS, int32_t* NWITHIN, int32_t* NNEAR,
                                 int32_t* NEAR, const double* CCWERRBOUNDA,
                                 const double* CCWERRBOUNDB, const double* CCWERRBOUNDC,
                                 const double* SPLITTER, const int32_t* LDT, const int32_t* LDN,
                                 const double* RESULTERRBOUND, const int32_t* KMAX,
                                 const int32_t* NCOL) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Stress recovery and error estimation
 *
 * An energy-type measure of the difference between the host's smoothed
 * bending moments (Mx, My, Mxy) and an element's own, one element per
 * call, added to accumulators the host zeroes before a sweep.
 * ------------------------------------------------------------------------ */

/* Moment error of element IEL. At the 3x3 points (GPOS(1, i), GPOS(1, j)),
 * i outer, j inner, p = 3(i-1)+j, for every family (triangles are sampled
 * at the same tensor points): with N1..N8 the element's shape functions
 * (family IETYP(IEL, 1)), the smoothed moments s* = sum N_k SIGS(., k), the
 * element's s = sum N_k SIGE(9(IEL-1)+k, ICSIG+.), the thickness
 * sum N_k TNODE(IEL, k) over k = 1..NNODT (at most 9) written to PROP(IMAT, 3), and
 * C the inverse (in double, Gauss-Jordan without pivoting) of the bending
 * rigidities of the layered plate PLAY, ZLAY, NLAY, the density is
 *   rho = (|e1 c1| + |e2 c2| + |e3 c3|) WDET(p, IEL),  e = s* - s, c = C e.
 * Then ERRN(|CONN(IEL, k)|) += N_k rho for k = 1..8, ERRT += (N1+..+N8) rho
 * and ERRE(IEL) += |rho|. Arguments 6 and 21 are not used. */
SHELLFE_API void STERRORDLLDOTNET(const float* SIGE, const int32_t* IEL, const int32_t* IETYP,
                                  const int32_t* NELEM, const float* GPOS, const void* UNUSED6,
                                  const int32_t* NNODT, const float* TNODE, const float* PLAY,
                                  const float* ZLAY, const int32_t* NLAY, const int32_t* CONN,
                                  float* ERRN, float* ERRT, float* PROP, const float* WDET,
                                  const float* SIGS, float* ERRE, const int32_t* ICSIG,
                                  const int32_t* NSROW, const void* UNUSED21,
                                  const int32_t* NMAT, const int32_t* IMAT) SHELLFE_NOEXCEPT;

/* STERRORDLLDOTNET with the first-dimension bound of IETYP and CONN passed
 * as NELEMC; NELEM bounds TNODE alone. */
SHELLFE_API void STERRORDLLDOTNET1(const float* SIGE, const int32_t* IEL, const int32_t* IETYP,
                                   const int32_t* NELEM, const float* GPOS, const void* UNUSED6,
                                   const int32_t* NNODT, const float* TNODE, const float* PLAY,
                                   const float* ZLAY, const int32_t* NLAY, const int32_t* CONN,
                                   float* ERRN, float* ERRT, float* PROP, const float* WDET,
                                   const float* SIGS, float* ERRE, const int32_t* ICSIG,
                                   const int32_t* NSROW, const void* UNUSED21,
                                   const int32_t* NMAT, const int32_t* IMAT,
                                   const int32_t* NELEMC) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Result post-processing
 *
 * Quantities for display after the solution. Tables "with row length L+1"
 * are stored row after row: entry (i, j) at flat position i*(L+1) + j.
 * Found-item counters (NMFND, NNFND) are continued from the host's values.
 * ------------------------------------------------------------------------ */

/* Casts a net around node NSTART: spreading element by element through
 * the NODMEM records, it gathers the nodes whose z is within 0.001 of
 * NSTART's and whose plan distance from it is below RADIUS (both strict,
 * in single precision), and spreads only through gathered nodes. Reports
 * the largest (VHIGH), smallest (VLOW) and average (VAVG) of the gathered
 * values RES(ICOMP + 1 + NCOMP(q-1), ICASE), and PEAK, the larger of
 * |VHIGH| and |VLOW|. With nothing gathered, VHIGH = -99999997952.0,
 * VLOW = 99999997952.0, VAVG = 0 and PEAK = 99999997952.0. The cost is in
 * proportion to the net, not to the mesh. */
SHELLFE_API void CASTNETFMDOTNET(float* PEAK, const float* RES, const int32_t* ICASE,
                                 const int32_t* ICOMP, const int32_t* NCOMP, const int32_t* NNODE,
                                 const float* XYZN, const float* RADIUS, const int32_t* NSTART,
                                 float* VHIGH, float* VLOW, const int32_t* NODMEM,
                                 const int32_t* NELEM, const int32_t* LDMEM, const int32_t* LDCN,
                                 const int32_t* IELNOD, float* VAVG,
                                 const int32_t* LDRES) SHELLFE_NOEXCEPT;

/* Members of group IGRP+1 with a node closer than RAD (in space) to node
 * IPEAK are appended to MFND in ascending order, and those nodes to NFND in
 * order of discovery, each once per call; NMFND and NNFND are continued. */
SHELLFE_API void GETPEAKMEMNODESDOTNET(const int32_t* NMEM, const int32_t* MEMTAB,
                                       const int32_t* MEMGRP, const int32_t* MEMNOD,
                                       const float* XYZN, const int32_t* IPEAK, const float* RAD,
                                       int32_t* NMFND, int32_t* MFND, int32_t* NNFND,
                                       int32_t* NFND, const int32_t* LDXYZ,
                                       const int32_t* IGRP) SHELLFE_NOEXCEPT;

/* GETPEAKMEMNODESDOTNET restricted to active members, MEMTAB(1, j) = 1. */
SHELLFE_API void GETPEAKMEMNODESDOTNET1(const int32_t* NMEM, const int32_t* MEMTAB,
                                        const int32_t* MEMGRP, const int32_t* MEMNOD,
                                        const float* XYZN, const int32_t* IPEAK, const float* RAD,
                                        int32_t* NMFND, int32_t* MFND, int32_t* NNFND,
                                        int32_t* NFND, const int32_t* LDXYZ,
                                        const int32_t* IGRP) SHELLFE_NOEXCEPT;

/* GETPEAKMEMNODESDOTNET1 remembering only the last 512 nodes it listed, as
 * 16-bit numbers: a call that lists more than 512 distinct nodes can list
 * a node again. Node numbers compare modulo 65536, and the ring starts all
 * zero, so nodes 0, 65536, 131072, ... are never listed. */
SHELLFE_API void GETPEAKMEMNODESDOTNET2(const int32_t* NMEM, const int32_t* MEMTAB,
                                        const int32_t* MEMGRP, const int32_t* MEMNOD,
                                        const float* XYZN, const int32_t* IPEAK, const float* RAD,
                                        int32_t* NMFND, int32_t* MFND, int32_t* NNFND,
                                        int32_t* NFND, const int32_t* LDXYZ,
                                        const int32_t* IGRP) SHELLFE_NOEXCEPT;

/* Colour bands of one element in a contour plot. Each corner i = 1..NCORN
 * gets the band k of BNDLIM(k-1) < t < BNDLIM(k), t = (VCORN(i) - VMIN) /
 * (VMAX - VMIN), or -k when t is within 1e-6 of BNDLIM(k) (on a limit);
 * no match gives band NBND above BNDLIM(0), else 1 (corner 1 starts from
 * IBINIT, which is reset to 0). IBRAW receives these bands. A corner on a
 * limit then joins the lower band if both neighbours (cyclic for 4 and 8
 * corners) are lower, the upper if both are higher, and otherwise stays;
 * IBAND receives the result. NCOLR is the spread of the bands first
 * assigned, or 1 when four corners (NCORN != 8) end in one band. When the
 * spread is 2, ISPLIT = -1 if two bands split corners 1..4 in halves;
 * otherwise ISPLIT is left as it was. IBAND(1..4) are read whatever NCORN
 * is: give IBAND at least five entries. MODE = -999 forces
 * NCOLR = 1 when every corner is within TOL of point IREFA of XYZR; MODE
 * >= 1 forces band IBFIX and value VLO on every corner when all values lie
 * between VLO and VHI and the corners' mean distance from point IREFB is
 * below 1.25 TOL. */
SHELLFE_API void CHECKNUMCOLOURDOTNET(int32_t* NCOLR, const float* BNDLIM, float* VCORN,
                                      int32_t* IBINIT, const int32_t* NCORN, const float* VMIN,
                                      const float* VMAX, const int32_t* NBND, int32_t* IBAND,
                                      int32_t* ISPLIT, const int32_t* MODE, const int32_t* IBFIX,
                                      const int32_t* IREFA, const float* VLO, const float* VHI,
                                      const float* XYZC, const int32_t* IREFB,
                                      const int32_t* LDRF, const int32_t* LDXC, const float* TOL,
                                      const float* XYZR, int32_t* IBRAW) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Panel meshing
 *
 * The shape functions of the panel kinds (the same ones the element
 * routines integrate) and the mapping of reference cells onto a curved
 * panel, in single precision.
 * ------------------------------------------------------------------------ */

/* Shape functions of kind NTYPE at (XI, ETA): SHP(i, 1) the value of
 * function i = 1..9, SHP(i, 2) its derivative in xi, SHP(i, 3) in eta (kind
 * 4, the quintic Hermite line: the second derivative in xi). All 40 entries
 * of SHP (0:9, 0:3) are written; row 0, column 0 and rows beyond the kind's
 * functions are 0, and an unknown kind gives all zeros. Kind 1 or 2: eight
 * serendipity functions plus the centre bubble, not corrected for it. */
SHELLFE_API void SFR1DLLDOTNET(float* SHP, const float* XI, const float* ETA,
                               const int32_t* NTYPE) SHELLFE_NOEXCEPT;

/* Maps the reference cell with first corner (XI, ETA) and side DELTA onto
 * the panel of nodes XYZ(1..8, 1..3) (kind NTYPE, as for SFR1DLLDOTNET):
 * corner k = 1..4, at (xi, eta), (xi+d, eta), (xi+d, eta+d) and
 * ((xi+d)-d, eta+d), receives PTS(k, c) = sum N_i XYZ(i, c) and VALS(k) =
 * sum N_i NODVAL(i) over i = 1..8. Note ETA before XI. */
SHELLFE_API void SUBDIVIDEPANELDLLDOTNET(const float* XYZ, float* PTS, float* VALS,
                                         const float* ETA, const float* XI, const float* DELTA,
                                         const int32_t* NTYPE,
                                         const float* NODVAL) SHELLFE_NOEXCEPT;

/* ------------------------------------------------------------------------
 * Double-precision extension
 *
 * The element and assembly route in double precision. The compatible
 * routines above keep their single-precision arithmetic bit for bit; on
 * fine meshes of thin plates that arithmetic, not the element, limits the
 * answer (the transverse shear stiffness, (a/h)^2 times the bending
 * stiffness, must cancel in the bending modes, and every rounding of an
 * entry is amplified by that factor). These routines evaluate the same
 * formulas in double throughout.
 *
 * Each routine mirrors the compatible routine its comment names: the same
 * arguments in the same order, the same array layouts and loop orders,
 * every real argument double instead of float. A host switches route by
 * changing its array types (and, for the plate routines and the layer
 * rigidities, passing OPTIONS last). Thresholds are the compatible
 * routines' single-precision constants widened to double (1.0e-7 for a
 * degenerate point, 0.001 radian for an unrotated material, 0.0001 for the
 * drilling caps, 1.0e-10 for counted entries and prescribed displacements).
 * Material angles are reduced exactly in degrees before their sine and
 * cosine, so that 90 degrees gives exactly 0 and 1. The results are the
 * same bits on every platform; unlike the compatible routines they may
 * improve between minor versions.
 *
 * Compressed-row rows are already double: append the rows of a double node
 * matrix with ADDTOCRSMASSDLLDLL.
 * ------------------------------------------------------------------------ */

/* OPTIONS bits of the layer formulas. With OPTIONS = 0 the extension keeps
 * the compatible routines' formulas, physically questionable ones included,
 * so that switching a host to double changes nothing but rounding. */

/* Transverse shear moduli of a rotated layer turned by +theta, as its
 * bending and membrane moduli are; the compatible formula turns them by
 * -theta, so a layer's shear principal axes lie mirrored against its
 * bending axes (the same at 0 and 90 degrees, swapped at 45). Measured on a
 * layer with G10 = 2000, G11 = 3000 turned by 30 degrees: the coupling
 * DSHEAR(1,2) changes sign (-36.1 to +36.1); the centre deflection of an
 * 8x8 plate of it at a/h = 100 moves by -2.5e-4 relative. */
#define SHELLFE_PHYSICAL_SHEAR_ROTATION 1
/* Bending coupling Q12 = nu*E8/den, the plane-stress coupling of the
 * layer's moduli; the compatible formula is nu*E8^2/(E1*den), which is too
 * large by E8/E1 (equal only for E1 = E8). Measured on a layer with
 * E1 = 12000, E8 = 30000, nu = 0.3 turned by 30 degrees: DBEND(1,2) falls by
 * 44 %, and the centre deflection of an 8x8 plate of it at a/h = 100 grows
 * by 8.6 %. */
#define SHELLFE_PHYSICAL_BENDING_COUPLING 2

/* Layer rigidities as MODPBDLLDOTNET, in double precision: DBEND (0:3,
 * 0:3) when IBEND = 1, otherwise DSHEAR (0:2, 0:2) when ISHEAR = 1. With
 * OPTIONS = 0 the formulas are the compatible ones; see
 * SHELLFE_PHYSICAL_SHEAR_ROTATION and SHELLFE_PHYSICAL_BENDING_COUPLING. */
SHELLFE_API void shellfe_plate_rigidities(double* DBEND, double* DSHEAR, const int32_t* IBEND,
                                          const int32_t* ISHEAR, const double* PROP,
                                          const double* ZLAY, const int32_t* NLAY,
                                          const int32_t* OPTIONS) SHELLFE_NOEXCEPT;

/* Jacobian determinant and Cartesian derivatives as JACOB2DLLDOTNET, in
 * double precision throughout: the determinant is not rounded to single
 * precision, and the derivatives are not rounded after each addition. */
SHELLFE_API void shellfe_jacobian(double* CARTD, const double* DERIV, double* DETJ,
                                  const double* ELCOD, const int32_t* NENOD) SHELLFE_NOEXCEPT;

/* Rotated orthotropic plane-stress matrix as MODIPDLLDOTNET, in double
 * precision. */
SHELLFE_API void shellfe_membrane_material(double* DMAT, const double* PROP, const int32_t* IMAT,
                                           const int32_t* NMAT) SHELLFE_NOEXCEPT;

/* Membrane stiffness of one element as STIFFP003DOTNET, in double
 * precision. The material is formed as the element forms it (upper
 * triangle, mirrored). */
SHELLFE_API void shellfe_membrane_stiffness(const int32_t* NGPX, const int32_t* NGPY,
                                            const int32_t* NTYPE, const double* GPOS,
                                            int32_t* NGPT, const int32_t* IEL,
                                            const int32_t* NNODE, const double* XY,
                                            const double* TNODE, const void* UNUSED10,
                                            const int32_t* IMAT, double* PROP, const double* GWEI,
                                            const void* UNUSED14, const int32_t* NELEM,
                                            const int32_t* NMAT, const void* UNUSED17,
                                            const void* UNUSED18, const int32_t* NNODT,
                                            double* ESTIF, double* DETJ) SHELLFE_NOEXCEPT;

/* Plate-bending stiffness as STIFFP001DOTNET, in double precision, with
 * the layer rigidities of shellfe_plate_rigidities and its OPTIONS. */
SHELLFE_API void shellfe_plate_bending_stiffness(const int32_t* NGPX, const int32_t* NGPY,
                                                 const int32_t* NTYPE, const double* GPOS,
                                                 int32_t* NGPT, const int32_t* IEL,
                                                 int32_t* NGPT2, const void* UNUSED8,
                                                 const int32_t* NNODE, const double* XY,
                                                 const double* TNODE, const void* UNUSED12,
                                                 const int32_t* IMAT, double* PROP,
                                                 const int32_t* IOFF, double* ESTIF,
                                                 const double* GWEI, const void* UNUSED18,
                                                 const void* UNUSED19, const int32_t* NELEM,
                                                 const int32_t* NMAT, const int32_t* LDES,
                                                 const int32_t* NDOFN, const int32_t* NNODT,
                                                 const double* PLAY, const double* ZLAY,
                                                 const int32_t* NLAY, double* DETJ,
                                                 const int32_t* OPTIONS) SHELLFE_NOEXCEPT;

/* Transverse-shear stiffness as STIFFP002DOTNET, in double precision, with
 * the layer rigidities of shellfe_plate_rigidities and its OPTIONS. */
SHELLFE_API void shellfe_plate_shear_stiffness(const int32_t* NGPX, const int32_t* NGPY,
                                               const int32_t* NTYPE, const double* GPOS,
                                               int32_t* NGPT, const int32_t* IEL,
                                               const int32_t* NNODE, const double* XY,
                                               const double* TNODE, const void* UNUSED10,
                                               const int32_t* IMAT, double* PROP,
                                               const int32_t* IOFF, double* ESTIF,
                                               const double* GWEI, const void* UNUSED16,
                                               const int32_t* NELEM, const int32_t* NMAT,
                                               const int32_t* LDES, const int32_t* NDOFN,
                                               const int32_t* NNODT, const double* PLAY,
                                               const double* ZLAY, const int32_t* NLAY,
                                               double* DETJ,
                                               const int32_t* OPTIONS) SHELLFE_NOEXCEPT;

/* In-plane merge and drilling stiffness as STIESTDLLDOTNET, on double-
 * precision matrices; the drilling value 10.0, the 0.0001 floor and RATIO
 * are compared in double. */
SHELLFE_API void shellfe_finish_shell_element(const double* ESTIF2, double* ESTIF,
                                              const int32_t* NENOD, int32_t* NODFLG,
                                              const int32_t* NDOFN, const int32_t* LDES,
                                              const void* UNUSED7, const int32_t* LDCN,
                                              const int32_t* IELEM, const int32_t* IELNOD,
                                              const double* RATIO) SHELLFE_NOEXCEPT;

/* Degree-of-freedom selection as BUILDESTIF1DOTNET, on double-precision
 * matrices. */
SHELLFE_API void shellfe_select_dofs(const int32_t* NNODE, const int32_t* NSEL,
                                     const int32_t* LDK, const double* ESRC, double* EDST,
                                     const int32_t* IDOF) SHELLFE_NOEXCEPT;

/* Node matrix gathering as BUILDALLNODESTIFFDLLDOTNET, with the element
 * matrix, node matrix, springs, prescribed displacements and load vector
 * in double precision (the product UPRES(j)*ESTIF is formed in double).
 * Append the node's rows with ADDTOCRSMASSDLLDLL, which reads a double
 * node matrix and keeps the same entries. */
SHELLFE_API void shellfe_gather_node_stiffness(double* ESTIF, const int32_t* INODE,
                                               const int32_t* NENOD, double* SNODE,
                                               const int32_t* IELEM, const double* SPRING,
                                               int32_t* IVISIT, const void* UNUSED8,
                                               const int32_t* IELNOD, const int32_t* ISPRF,
                                               const int32_t* NDOFE, const int32_t* NDOFN,
                                               const int32_t* LDES, const int32_t* LDSF,
                                               const int32_t* LDNM, const void* UNUSED16,
                                               const int32_t* LDCN, const void* UNUSED18,
                                               const double* UPRES, double* FLOAD,
                                               const int32_t* LOCNOD, int32_t* NNZCNT,
                                               const int32_t* IDOFMAP) SHELLFE_NOEXCEPT;

/* Skyline assembly as ADDSHELLTOSDOTNET, from a double-precision element
 * matrix. */
SHELLFE_API void shellfe_add_shell_to_skyline(const double* ESTIF, const int32_t* IELNOD,
                                              const void* UNUSED3, const int32_t* IDIAG,
                                              const int32_t* NBAND, const int32_t* NDOF,
                                              double* SKY, const int32_t* NUMNOD,
                                              const int32_t* IELEM, const int32_t* LDCN,
                                              const void* UNUSED11, const void* UNUSED12,
                                              const int32_t* LDES,
                                              const int32_t* NSLOT) SHELLFE_NOEXCEPT;

/* Skyline assembly as ADDSHELLTOSDLLDOTNET (eight slots, IDOFMAP), from a
 * double-precision element matrix. */
SHELLFE_API void shellfe_add_shell_to_skyline_mapped(const double* ESTIF, const int32_t* IELNOD,
                                                     const void* UNUSED3, const int32_t* IDIAG,
                                                     const int32_t* NBAND, const int32_t* NDOF,
                                                     double* SKY, const int32_t* NUMNOD,
                                                     const int32_t* IDOFMAP, const int32_t* IELEM,
                                                     const int32_t* LDCN, const void* UNUSED12,
                                                     const void* UNUSED13,
                                                     const int32_t* LDES) SHELLFE_NOEXCEPT;


#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* SHELLFE_H */
