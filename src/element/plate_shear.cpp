// Transverse-shear stiffness of one plate element, the companion of the
// plate-bending routine on the same degrees of freedom.
#include "element/integration_points.hpp"
#include "element/layered_plate.hpp"
#include "element/plate_point_stiffness.hpp"

#include "shellfe.h"

using namespace shellfe;

namespace {

// Transverse shear strains (gx, gy) of the triple's degrees of freedom of
// node n: displacement (dN/dy, -dN/dx), rotations (-N, 0) and (0, -N),
// matching the bending routine's rotation signs.
NodeStrains<2> shear_strains(const PointData& p, Index n) {
    const float nn = p.shape.value[n];
    return {{{p.dy[n], -p.dx[n]}, {-nn, 0.0f}, {0.0f, -nn}}};
}

}  // namespace

extern "C" void STIFFP002DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                const int32_t* NNODE, const float* XY, const float* TNODE,
                                const void* /*unused*/, const int32_t* IMAT, float* PROP,
                                const int32_t* IOFF, float* ESTIF, const float* GWEI,
                                const void* /*unused*/, const int32_t* NELEM, const int32_t* NMAT,
                                const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                float* DETJ) noexcept {
    const ElementPoints e = element_points(NGPX, NGPY, NTYPE, GPOS, GWEI, NNODE, XY, TNODE, NELEM,
                                           IEL, NNODT, PROP, NMAT, IMAT, NGPT, nullptr, DETJ);
    const LayeredPlate plate = layered_plate(PLAY, ZLAY, *NLAY);
    const PlateDofs dofs{upper_bound(ESTIF, *LDES), *IOFF, *NDOFN};
    integrate_plate<2, shear_rigidities, shear_strains>(e, plate, dofs);
}
