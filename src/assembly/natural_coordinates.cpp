// Natural coordinates of a point in a quadrilateral element.
#include <cmath>

#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

struct PlanePoint {
    double u;
    double v;
};

// Coefficients of w(xi, eta) - w_P = a0 + a1 xi + a2 eta + a3 xi eta for the
// bilinear map of the corners (-1,-1), (1,-1), (1,1), (-1,1).
struct Bilinear {
    double a0, a1, a2, a3;
    Bilinear(const double (&w)[4], double wp)
        : a0((w[0] + w[1] + w[2] + w[3]) * 0.25 - wp),
          a1((-w[0] + w[1] + w[2] - w[3]) * 0.25),
          a2((-w[0] - w[1] + w[2] + w[3]) * 0.25),
          a3((w[0] - w[1] + w[2] - w[3]) * 0.25) {}
};

// xi from the quadratic A xi^2 + B xi + C = 0 that eliminating eta leaves,
// rounded to single; `xi` is kept when A or B is NaN. Of the two roots the
// first is kept whenever it lies within 1.01, else the other one is taken
// untested (clamping follows).
float solve_xi(const Bilinear& u, const Bilinear& v, float xi) {
    const double a = v.a3 * u.a1 - v.a1 * u.a3;
    const double b = u.a0 * v.a3 - v.a1 * u.a2 + u.a1 * v.a2 - v.a0 * u.a3;
    const double c = u.a0 * v.a2 - v.a0 * u.a2;
    constexpr double kTiny = static_cast<double>(1.0e-10f);
    const bool a_small = std::fabs(a) <= kTiny, a_large = std::fabs(a) > kTiny;
    const bool b_small = std::fabs(b) <= kTiny, b_large = std::fabs(b) > kTiny;
    if (a_small && b_large) return static_cast<float>(-c / b);
    if (a_large && b_large) {
        const double d = std::sqrt(b * b - 4.0 * a * c);
        const float first = static_cast<float>(-(b + d) / (2.0 * a));
        return std::fabs(first) > 1.01f ? static_cast<float>((d - b) / (2.0 * a)) : first;
    }
    if (a_large && b_small) return static_cast<float>(std::sqrt(-c / a));
    if (a_small && b_small) return 0.0f;
    return xi;
}

// eta from whichever of the two coordinates depends on it more than 1.0e-4.
double solve_eta(const Bilinear& u, const Bilinear& v, double xi) {
    constexpr double kSmall = static_cast<double>(1.0e-4f);
    const double dv = v.a2 + v.a3 * xi;
    const double du = u.a2 + u.a3 * xi;
    if (std::fabs(dv) < kSmall && std::fabs(du) < kSmall) return 0.0;
    if (std::fabs(du) < kSmall && std::fabs(dv) > kSmall) return -(v.a0 + v.a1 * xi) / dv;
    return -(u.a0 + u.a1 * xi) / du;
}

struct Plane {
    double c1, c2, c3, c4;
    // Coordinates along the plane axes (-c1 c3, c4, -c3 c2) and (c2, 0, -c1).
    PlanePoint project(float x, float y, float z) const {
        const double dx = x, dy = y, dz = z;
        return {dx * -(c1 * c3) + dy * c4 + dz * -(c3 * c2), c2 * dx - c1 * dz};
    }
};

// Projects the corners (slots 1, 3, 5, 7) and the point, shifts both plane
// coordinates by their smallest value (starting from 9999999, so farther
// coordinates are not shifted to zero, deliberately), and inverts the
// bilinear map. Both coordinates are clamped to [-1, 1].
void natural_coordinates(const Array2<const std::int32_t>& ielnod, Index iel,
                         const Array2<const float>& xyz, const Plane& plane, float xp, float yp,
                         float zp, float* xi, float* eta) {
    PlanePoint corner[4];
    for (int k = 0; k < 4; ++k) {
        const std::int32_t n = ielnod(iel, 2 * k + 1);
        corner[k] = plane.project(xyz(n, 0), xyz(n, 1), xyz(n, 2));
    }
    const PlanePoint point = plane.project(xp, yp, zp);
    double umin = 9999999.0, vmin = 9999999.0;
    for (const PlanePoint& w : corner) {
        if (w.u < umin) umin = w.u;
        if (w.v < vmin) vmin = w.v;
    }
    if (point.u < umin) umin = point.u;
    if (point.v < vmin) vmin = point.v;
    double cu[4], cv[4];
    for (int k = 0; k < 4; ++k) {
        cu[k] = corner[k].u - umin;
        cv[k] = corner[k].v - vmin;
    }
    const Bilinear u(cu, point.u - umin), v(cv, point.v - vmin);
    const float x = solve_xi(u, v, *xi);
    *xi = x;
    const double e = solve_eta(u, v, static_cast<double>(x));
    *eta = e < -1.0 ? -1.0f : e > 1.0 ? 1.0f : static_cast<float>(e);
    if (x < -1.0f) *xi = -1.0f;
    if (x > 1.0f) *xi = 1.0f;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void NORMALISEDCORDDOTNET(const int32_t* IEL, float* XI, float* ETA, const float* XP,
                                     const float* YP, const float* ZP, const int32_t* IELNOD,
                                     const float* XYZN, const int32_t* LDCN, const void*,
                                     const float* DC1, const float* DC2, const float* DC3,
                                     const float* DC4, const int32_t* NNODE) noexcept {
    const Plane plane{*DC1, *DC2, *DC3, *DC4};
    natural_coordinates(host_array(IELNOD, {0, *LDCN}), *IEL, host_array(XYZN, {0, *NNODE}), plane,
                        *XP, *YP, *ZP, XI, ETA);
}
