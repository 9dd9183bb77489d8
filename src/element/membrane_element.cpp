// Membrane (plane-stress) stiffness of one isoparametric element with the
// two in-plane translations u, v per node.
#include "element/integration_points.hpp"
#include "element/membrane_material.hpp"
#include "frame/canonical_nan.hpp"

#include "shellfe.h"

namespace shellfe {
namespace {

// The in-plane element matrix has the fixed shape (0:18, 0:18).
constexpr Index kMembraneUpperBound = 18;
constexpr Index kMembraneDofs = 2 * kMaxElementNodes;
static_assert(kMembraneDofs == kMembraneUpperBound);

// Adds s * B D B^T at one point into the lower triangle of the membrane
// matrix. Strain rows of B: 1 = ex, 2 = ey, 3 = gxy over degrees of freedom
// 2k-1 = u, 2k = v of node k.
template <class Real>
void add_point_stiffness(const PointData<Real>& p, Index nnode, const Matrix3Of<Real>& d,
                         const Array2<Real>& estif) {
    const Index n = 2 * nnode;
    // B and B D by strain component, indexed by degree of freedom from 1;
    // the zeros of B take part in the products like the other entries.
    Real b[3][kMembraneDofs + 1];
    Real bd[3][kMembraneDofs + 1];
    const NodeBlocks uv{2};
    for (Index k = 1; k <= nnode; ++k) {
        const Index u = uv.index(k, 1), v = uv.index(k, 2);
        b[0][u] = p.d_dx[k];
        b[0][v] = 0;
        b[1][u] = 0;
        b[1][v] = p.d_dy[k];
        b[2][u] = p.d_dy[k];
        b[2][v] = p.d_dx[k];
    }
    for (Index r = 1; r <= 3; ++r) {
        const Real d1 = d(1, r), d2 = d(2, r), d3 = d(3, r);
        Real* out = bd[r - 1];
        for (Index m = 1; m <= n; ++m) out[m] = (b[0][m] * d1 + b[1][m] * d2) + b[2][m] * d3;
    }

    const Real s = p.det_weight * p.thickness;
    for (Index c = 1; c <= n; ++c) {
        const Real g1 = s * b[0][c];
        const Real g2 = s * b[1][c];
        const Real g3 = s * b[2][c];
        // Column c from the diagonal down. Each entry receives the three
        // strain components' terms in order 1, 2, 3, each addition rounded,
        // exactly as three successive sweeps over the column would give;
        // the rows are independent, so this loop vectorises without
        // changing a bit.
        const auto col = estif.column(c);
        const Real* bd1 = bd[0];
        const Real* bd2 = bd[1];
        const Real* bd3 = bd[2];
        for (Index m = c; m <= n; ++m) {
            Real v = col(m);
            v = v + bd1[m] * g1;
            v = v + bd2[m] * g2;
            v = v + bd3[m] * g3;
            col(m) = v;
        }
    }
}

// Integrates the membrane stiffness of one element into the lower triangle
// of its (0:18, 0:18) matrix. Unlike a plate element, this one integrates a
// degenerate point too, with -1.0 in place of its determinant.
template <class Real>
void integrate_membrane(const ElementPoints<Real>& e, const Matrix3Of<Real>& d,
                        const Array2<Real>& estif) {
    bool added = false;
    for_each_integration_point(e, DegeneratePoint::integrate_with_minus_one,
                               [&](const PointData<Real>& p) {
        add_point_stiffness(p, e.nnode, d, estif);
        added = true;
    });
    // NaN entries leave as the canonical NaN. Every entry of the triangle
    // receives every point, so one sweep at the end gives the bits that
    // canonicalising each addition would, at a fraction of the cost.
    if (!added) return;
    const Index n = 2 * e.nnode;
    for (Index c = 1; c <= n; ++c) {
        const auto col = estif.column(c);
        bool any_nan = false;  // tested first: the test vectorises, the store would not
        for (Index m = c; m <= n; ++m) any_nan |= col(m) != col(m);
        if (any_nan)
            for (Index m = c; m <= n; ++m) col(m) = canonical(col(m));
    }
}

// The host's arguments bound to views; the material is the same at every
// point and is formed once.
template <class Real>
void membrane_stiffness(const ElementArgs<Real>& args, Real* ESTIF) {
    const ElementPoints<Real> e = element_points(args);
    // The material depends only on columns 1, 2, 8, 9 and 17 of its row,
    // which the point loop never writes (it writes column 3), so the matrix
    // is the same at every point and is formed once. The element forms the
    // upper triangle, unlike the stand-alone material routine: its hosts'
    // reference matrices were made that way.
    const Matrix3Of<Real> d = rotated_plane_stress(
        read_orthotropic_material(host_array<const Real>(args.PROP, {0, *args.NMAT}), *args.IMAT),
        FormedTriangle::upper);
    integrate_membrane(e, d, host_array(ESTIF, {0, kMembraneUpperBound}));
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

#define SHELLFE_MEMBRANE_STIFFNESS(NAME, Real)                                                  \
    extern "C" void NAME(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,       \
                         const Real* GPOS, int32_t* NGPT, const int32_t* IEL,                  \
                         const int32_t* NNODE, const Real* XY, const Real* TNODE, const void*, \
                         const int32_t* IMAT, Real* PROP, const Real* GWEI, const void*,       \
                         const int32_t* NELEM, const int32_t* NMAT, const void*, const void*,  \
                         const int32_t* NNODT, Real* ESTIF, Real* DETJ) noexcept {             \
        membrane_stiffness<Real>({.NGPX = NGPX, .NGPY = NGPY, .NTYPE = NTYPE, .GPOS = GPOS,    \
                                  .GWEI = GWEI, .NGPT = NGPT, .NGPT2 = nullptr,                \
                                  .NNODE = NNODE, .XY = XY, .IEL = IEL, .TNODE = TNODE,        \
                                  .NELEM = NELEM, .NNODT = NNODT, .IMAT = IMAT, .PROP = PROP,  \
                                  .NMAT = NMAT, .DETJ = DETJ},                                 \
                                 ESTIF);                                                       \
    }
SHELLFE_MEMBRANE_STIFFNESS(STIFFP003DOTNET, float)
SHELLFE_MEMBRANE_STIFFNESS(shellfe_membrane_stiffness, double)
