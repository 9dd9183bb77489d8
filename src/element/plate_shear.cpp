// Transverse-shear stiffness of one plate element, the companion of the
// plate-bending routine on the same degrees of freedom.
#include "element/plate_point_stiffness.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

struct ShearStrains {
    static constexpr int components = 2;  // gxz, gyz
    template <class Real>
    static Matrix2Of<Real> rigidities(const LayeredPlate<Real>& plate) {
        return shear_rigidities(plate);
    }
    // Transverse shear strains of the triple's degrees of freedom of node n:
    // displacement (dN/dy, -dN/dx), rotations (-N, 0) and (0, -N), matching
    // the bending routine's rotation signs.
    template <class Real>
    static NodeStrains<2, Real> of_node(const PointData<Real>& p, Index n) {
        const Real nn = p.shape.value[n];
        const Real zero = 0;
        return {{{p.d_dy[n], -p.d_dx[n]}, {-nn, zero}, {zero, -nn}}};
    }
};

}  // namespace
}  // namespace shellfe

using namespace shellfe;

// The compatible routine and its double-precision mirror, which takes the
// layer formulas' OPTIONS last.
#define SHELLFE_PLATE_SHEAR(NAME, Real, EXTRA, OPTIONS_ARG)                                      \
    extern "C" void NAME(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,         \
                         const Real* GPOS, int32_t* NGPT, const int32_t* IEL,                    \
                         const int32_t* NNODE, const Real* XY, const Real* TNODE, const void*,   \
                         const int32_t* IMAT, Real* PROP, const int32_t* IOFF, Real* ESTIF,      \
                         const Real* GWEI, const void*, const int32_t* NELEM,                    \
                         const int32_t* NMAT, const int32_t* LDES, const int32_t* NDOFN,         \
                         const int32_t* NNODT, const Real* PLAY, const Real* ZLAY,               \
                         const int32_t* NLAY, Real* DETJ EXTRA) noexcept {                       \
        integrate_plate<ShearStrains>(PlateArgs<Real>{                                           \
            .element = {.NGPX = NGPX, .NGPY = NGPY, .NTYPE = NTYPE, .GPOS = GPOS, .GWEI = GWEI,   \
                        .NGPT = NGPT, .NGPT2 = nullptr, .NNODE = NNODE, .XY = XY, .IEL = IEL,    \
                        .TNODE = TNODE, .NELEM = NELEM, .NNODT = NNODT, .IMAT = IMAT,            \
                        .PROP = PROP, .NMAT = NMAT, .DETJ = DETJ},                               \
            .IOFF = IOFF, .NDOFN = NDOFN, .LDES = LDES, .ESTIF = ESTIF, .PLAY = PLAY,            \
            .ZLAY = ZLAY, .NLAY = NLAY, .OPTIONS = OPTIONS_ARG});                                \
    }
SHELLFE_PLATE_SHEAR(STIFFP002DOTNET, float, , nullptr)
SHELLFE_PLATE_SHEAR(shellfe_plate_shear_stiffness, double, SHELLFE_COMMA const int32_t* OPTIONS,
                    OPTIONS)
