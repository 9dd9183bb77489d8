// Bending stiffness of one plate element, with the layered bending
// rigidities evaluated at every integration point.
#include "element/plate_point_stiffness.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

struct Curvatures {
    static constexpr int components = 3;  // kx, ky, kxy
    template <class Real>
    static Matrix3Of<Real> rigidities(const LayeredPlate<Real>& plate) {
        return bending_rigidities(plate);
    }
    // Curvatures of the triple's degrees of freedom of node n: the
    // displacement none, the rotations (-dN/dy, 0, dN/dx) and (0, dN/dx,
    // -dN/dy). These signs fix the hosts' rotation conventions and pair with
    // the transverse-shear routine's.
    template <class Real>
    static NodeStrains<3, Real> of_node(const PointData<Real>& p, Index n) {
        const Real a = p.d_dx[n];
        const Real b = p.d_dy[n];
        const Real zero = 0;
        return {{{zero, zero, zero}, {-b, zero, a}, {zero, a, -b}}};
    }
};

}  // namespace
}  // namespace shellfe

using namespace shellfe;

// The compatible routine and its double-precision mirror, which takes the
// layer formulas' OPTIONS last.
#define SHELLFE_PLATE_BENDING(NAME, Real, EXTRA, OPTIONS_ARG)                                    \
    extern "C" void NAME(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,         \
                         const Real* GPOS, int32_t* NGPT, const int32_t* IEL, int32_t* NGPT2,    \
                         const void*, const int32_t* NNODE, const Real* XY, const Real* TNODE,   \
                         const void*, const int32_t* IMAT, Real* PROP, const int32_t* IOFF,      \
                         Real* ESTIF, const Real* GWEI, const void*, const void*,                \
                         const int32_t* NELEM, const int32_t* NMAT, const int32_t* LDES,         \
                         const int32_t* NDOFN, const int32_t* NNODT, const Real* PLAY,           \
                         const Real* ZLAY, const int32_t* NLAY, Real* DETJ EXTRA) noexcept {     \
        integrate_plate<Curvatures>(PlateArgs<Real>{                                             \
            .element = {.NGPX = NGPX, .NGPY = NGPY, .NTYPE = NTYPE, .GPOS = GPOS, .GWEI = GWEI,   \
                        .NGPT = NGPT, .NGPT2 = NGPT2, .NNODE = NNODE, .XY = XY, .IEL = IEL,      \
                        .TNODE = TNODE, .NELEM = NELEM, .NNODT = NNODT, .IMAT = IMAT,            \
                        .PROP = PROP, .NMAT = NMAT, .DETJ = DETJ},                               \
            .IOFF = IOFF, .NDOFN = NDOFN, .LDES = LDES, .ESTIF = ESTIF, .PLAY = PLAY,            \
            .ZLAY = ZLAY, .NLAY = NLAY, .OPTIONS = OPTIONS_ARG});                                \
    }
SHELLFE_PLATE_BENDING(STIFFP001DOTNET, float, , nullptr)
SHELLFE_PLATE_BENDING(shellfe_plate_bending_stiffness, double, SHELLFE_COMMA const int32_t* OPTIONS,
                      OPTIONS)
