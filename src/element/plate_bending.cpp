// Bending stiffness of one plate element, with the layered bending
// rigidities evaluated at every integration point.
#include "element/integration_points.hpp"
#include "element/layered_plate.hpp"
#include "element/plate_point_stiffness.hpp"

#include "shellfe.h"

using namespace shellfe;

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
    const Index nnode = clamp_nodes(*NNODE);
    // Unlike the membrane element, a plate element is abandoned at its first
    // degenerate point: hosts test DETJ = -1.0 and rebuild the element
    // rather than use a stiffness integrated with a flipped sign.
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
                          NGPT2,
                          DETJ};
    const LayeredPlate plate = layered_plate(PLAY, ZLAY, *NLAY);
    const auto estif = upper_bound(ESTIF, *LDES);
    const Index ioff = *IOFF;
    const Index ndofn = *NDOFN;

    for_each_integration_point(e, [&](const PointData& p) {
        // Formed afresh at every point, after the thickness is written: a
        // host may pass its material table as the layer table too, and the
        // written column takes part in the closed-form test.
        const Matrix3 d = bending_rigidities(plate);
        // Curvatures (kx, ky, kxy) of the triple's degrees of freedom: the
        // displacement none, the rotations (-dN/dy, 0, dN/dx) and
        // (0, dN/dx, -dN/dy). These signs fix the hosts' rotation
        // conventions and pair with the transverse-shear routine's.
        PlateStrains<3> g;
        for (Index n = 1; n <= nnode; ++n) {
            const float a = p.dx[n];
            const float b = p.dy[n];
            g.v[0][0][n] = 0.0f;
            g.v[0][1][n] = 0.0f;
            g.v[0][2][n] = 0.0f;
            g.v[1][0][n] = -b;
            g.v[1][1][n] = 0.0f;
            g.v[1][2][n] = a;
            g.v[2][0][n] = 0.0f;
            g.v[2][1][n] = a;
            g.v[2][2][n] = -b;
        }
        add_plate_point(d, g, nnode, p.factor, estif, ioff, ndofn);
    });
}
