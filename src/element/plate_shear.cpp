// Transverse-shear stiffness of one plate element, the companion of the
// plate-bending routine on the same degrees of freedom.
#include "element/plate_point_stiffness.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

struct ShearStrains {
    static constexpr int components = 2;  // gxz, gyz
    static Matrix2 rigidities(const LayeredPlate& plate) { return shear_rigidities(plate); }
    // Transverse shear strains of the triple's degrees of freedom of node n:
    // displacement (dN/dy, -dN/dx), rotations (-N, 0) and (0, -N), matching
    // the bending routine's rotation signs.
    static NodeStrains<2> of_node(const PointData& p, Index n) {
        const float nn = p.shape.value[n];
        return {{{p.d_dy[n], -p.d_dx[n]}, {-nn, 0.0f}, {0.0f, -nn}}};
    }
};

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void STIFFP002DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                const int32_t* NNODE, const float* XY, const float* TNODE,
                                const void* /*UNUSED10*/, const int32_t* IMAT, float* PROP,
                                const int32_t* IOFF, float* ESTIF, const float* GWEI,
                                const void* /*UNUSED16*/, const int32_t* NELEM, const int32_t* NMAT,
                                const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                float* DETJ) noexcept {
    integrate_plate<ShearStrains>(
        {.element = {.NGPX = NGPX, .NGPY = NGPY, .NTYPE = NTYPE, .GPOS = GPOS, .GWEI = GWEI,
                     .NGPT = NGPT, .NGPT2 = nullptr, .NNODE = NNODE, .XY = XY, .IEL = IEL,
                     .TNODE = TNODE, .NELEM = NELEM, .NNODT = NNODT, .IMAT = IMAT, .PROP = PROP,
                     .NMAT = NMAT, .DETJ = DETJ},
         .IOFF = IOFF, .NDOFN = NDOFN, .LDES = LDES, .ESTIF = ESTIF, .PLAY = PLAY, .ZLAY = ZLAY,
         .NLAY = NLAY});
}
