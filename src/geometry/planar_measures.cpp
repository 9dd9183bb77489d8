// Distances, segment intersection, orientation and triangle areas for the
// host's mesher.
#include <cmath>

#include "geometry/orientation.hpp"
#include "geometry/planar.hpp"
#include "shellfe.h"

using namespace shellfe;

extern "C" double POINTDIST2D(const double* PA, const double* PB) noexcept {
    return distance(host_point(PA), host_point(PB));
}

extern "C" int32_t LINEINTERSECT2D(const double* P1, const double* P2, const double* Q1,
                                   const double* Q2, double* S, double* T, const double* LENTOL,
                                   const double* PARTOL) noexcept {
    return intersect_segments(host_point(P1), host_point(P2), host_point(Q1), host_point(Q2),
                              *LENTOL, *PARTOL, *S, *T);
}

extern "C" double ORIENT2D(const double* PA, const double* PB, const double* PC,
                           const double* CCWERRBOUNDA, const double* CCWERRBOUNDB,
                           const double* CCWERRBOUNDC, const double* SPLITTER,
                           const double* RESULTERRBOUND) noexcept {
    return orientation(host_point(PA), host_point(PB), host_point(PC),
                       HostConstants{.CCWERRBOUNDA = CCWERRBOUNDA,
                           .CCWERRBOUNDB = CCWERRBOUNDB,
                           .CCWERRBOUNDC = CCWERRBOUNDC,
                           .SPLITTER = SPLITTER,
                           .RESULTERRBOUND = RESULTERRBOUND});
}

extern "C" double TRIAREA3D(const double* PA, const double* PB, const double* PC) noexcept {
    const Array1<const double> a = host_array(PA, 1), b = host_array(PB, 1), c = host_array(PC, 1);
    const double ux = b(1) - a(1), uy = b(2) - a(2), uz = b(3) - a(3);
    const double vx = c(1) - a(1), vy = c(2) - a(2), vz = c(3) - a(3);
    const double nx = uy * vz - vy * uz;
    const double ny = uz * vx - ux * vz;
    const double nz = ux * vy - uy * vx;
    return 0.5 * std::sqrt(nx * nx + ny * ny + nz * nz);
}
