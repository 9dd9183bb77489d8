// Bending stiffness of one plate element, with the layered bending
// rigidities evaluated at every integration point.
#include "element/integration_points.hpp"
#include "element/layered_plate.hpp"
#include "element/plate_point_stiffness.hpp"

#include "shellfe.h"

using namespace shellfe;

namespace {

// Curvatures (kx, ky, kxy) of the triple's degrees of freedom of node n: the
// displacement none, the rotations (-dN/dy, 0, dN/dx) and (0, dN/dx,
// -dN/dy). These signs fix the hosts' rotation conventions and pair with the
// transverse-shear routine's.
NodeStrains<3> curvatures(const PointData& p, Index n) {
    const float a = p.dx[n];
    const float b = p.dy[n];
    return {{{0.0f, 0.0f, 0.0f}, {-b, 0.0f, a}, {0.0f, a, -b}}};
}

}  // namespace

extern "C" void STIFFP001DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                int32_t* NGPT2, const void* /*unused*/, const int32_t* NNODE,
                                const float* XY, const float* TNODE, const void* /*unused*/,
                                const int32_t* IMAT, float* PROP, const int32_t* IOFF,
                                float* ESTIF, const float* GWEI, const void* /*unused*/,
                                const void* /*unused*/, const int32_t* NELEM, const int32_t* NMAT,
                                const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                float* DETJ) noexcept {
    const ElementPoints e = element_points(NGPX, NGPY, NTYPE, GPOS, GWEI, NNODE, XY, TNODE, NELEM,
                                           IEL, NNODT, PROP, NMAT, IMAT, NGPT, NGPT2, DETJ);
    const LayeredPlate plate = layered_plate(PLAY, ZLAY, *NLAY);
    const PlateDofs dofs{upper_bound(ESTIF, *LDES), *IOFF, *NDOFN};
    integrate_plate<3, bending_rigidities, curvatures>(e, plate, dofs);
}
