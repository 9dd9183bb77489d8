// Bending stiffness of one plate element, with the layered bending
// rigidities evaluated at every integration point.
#include "element/plate_point_stiffness.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

struct Curvatures {
    static constexpr int components = 3;  // kx, ky, kxy
    static Matrix3 rigidities(const LayeredPlate& plate) { return bending_rigidities(plate); }
    // Curvatures of the triple's degrees of freedom of node n: the
    // displacement none, the rotations (-dN/dy, 0, dN/dx) and (0, dN/dx,
    // -dN/dy). These signs fix the hosts' rotation conventions and pair with
    // the transverse-shear routine's.
    static NodeStrains<3> of_node(const PointData& p, Index n) {
        const float a = p.d_dx[n];
        const float b = p.d_dy[n];
        return {{{0.0f, 0.0f, 0.0f}, {-b, 0.0f, a}, {0.0f, a, -b}}};
    }
};

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void STIFFP001DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                int32_t* NGPT2, const void* /*UNUSED8*/, const int32_t* NNODE,
                                const float* XY, const float* TNODE, const void* /*UNUSED12*/,
                                const int32_t* IMAT, float* PROP, const int32_t* IOFF,
                                float* ESTIF, const float* GWEI, const void* /*UNUSED18*/,
                                const void* /*UNUSED19*/, const int32_t* NELEM, const int32_t* NMAT,
                                const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                float* DETJ) noexcept {
    integrate_plate<Curvatures>(
        {.element = {.NGPX = NGPX, .NGPY = NGPY, .NTYPE = NTYPE, .GPOS = GPOS, .GWEI = GWEI,
                     .NGPT = NGPT, .NGPT2 = NGPT2, .NNODE = NNODE, .XY = XY, .IEL = IEL,
                     .TNODE = TNODE, .NELEM = NELEM, .NNODT = NNODT, .IMAT = IMAT, .PROP = PROP,
                     .NMAT = NMAT, .DETJ = DETJ},
         .IOFF = IOFF, .NDOFN = NDOFN, .LDES = LDES, .ESTIF = ESTIF, .PLAY = PLAY, .ZLAY = ZLAY,
         .NLAY = NLAY});
}
