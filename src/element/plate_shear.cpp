// Transverse-shear stiffness of one plate element, the companion of the
// plate-bending routine on the same degrees of freedom.
#include "element/integration_points.hpp"
#include "element/layered_plate.hpp"
#include "element/plate_point_stiffness.hpp"

#include "shellfe.h"

using namespace shellfe;

extern "C" void STIFFP002DOTNET(const int32_t* NGPX, const int32_t* NGPY, const int32_t* NTYPE,
                                const float* GPOS, int32_t* NGPT, const int32_t* IEL,
                                const int32_t* NNODE, const float* XY, const float* TNODE,
                                const void* /*unused*/, const int32_t* IMAT, float* PROP,
                                const int32_t* IOFF, float* ESTIF, const float* GWEI,
                                const void* /*unused*/, const int32_t* NELEM, const int32_t* NMAT,
                                const int32_t* LDES, const int32_t* NDOFN, const int32_t* NNODT,
                                const float* PLAY, const float* ZLAY, const int32_t* NLAY,
                                float* DETJ) noexcept {
    const Index nnode = clamp_nodes(*NNODE);
    const ElementPoints e{*NGPX,
                          *NGPY,
                          *NTYPE,
                          upper_bound(GPOS, Index{2}),
                          upper_bound(GWEI, Index{2}),
                          nnode,
                          upper_bound(XY, Index{kMaxElementNodes}),
                          upper_bound(TNODE, *NELEM),
                          *IEL,
                          *NNODT,
                          upper_bound(PROP, *NMAT),
                          *IMAT,
                          DegeneratePoint::abandon_element,
                          NGPT,
                          nullptr,
                          DETJ};
    const LayeredPlate plate = layered_plate(PLAY, ZLAY, *NLAY);
    const auto estif = upper_bound(ESTIF, *LDES);
    const Index ioff = *IOFF;
    const Index ndofn = *NDOFN;

    for_each_integration_point(e, [&](const PointData& p) {
        // Per point and after the thickness write, as in the bending routine.
        const Matrix2 s = shear_rigidities(plate);
        // Transverse shear strains (gx, gy) of the triple's degrees of
        // freedom: displacement (dN/dy, -dN/dx), rotations (-N, 0) and
        // (0, -N), matching the bending routine's rotation signs.
        PlateStrains<2> h;
        for (Index n = 1; n <= nnode; ++n) {
            const float nn = p.shape.value[n];
            h.v[0][0][n] = p.dy[n];
            h.v[0][1][n] = -p.dx[n];
            h.v[1][0][n] = -nn;
            h.v[1][1][n] = 0.0f;
            h.v[2][0][n] = 0.0f;
            h.v[2][1][n] = -nn;
        }
        add_plate_point(s, h, nnode, p.factor, estif, ioff, ndofn);
    });
}
