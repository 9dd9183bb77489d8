// Plane-stress matrix of an orthotropic material turned against the element
// axes, in the working precision with a fixed order of operations.
#include "element/membrane_material.hpp"

#include "element/angles.hpp"
#include "frame/precision.hpp"

#include "shellfe.h"

#include <cmath>

namespace shellfe {

namespace {
// Below this angle in radians (about 0.0573 degrees) the rotation is skipped
// and the unrotated matrix, with exact zero couplings, is returned. Hosts
// rely on the exact zeros for materials entered with tiny angles.
template <class Real>
constexpr Real kSmallestRotation = threshold<Real>(0.001f);
}  // namespace

template <class Real>
Matrix3Of<Real> rotated_plane_stress(const OrthotropicMaterial<Real>& m, FormedTriangle formed) {
    const Real r = ((m.nu12 * m.nu12) * m.e2) / m.e1;  // nu12 * nu21
    const Real den = Real(1) - r;
    const Real q22 = m.e2 / den;
    const Real q11 = m.e1 / den;
    const Real q12 = m.nu12 * q22;
    const Real g = m.g12;

    Matrix3Of<Real> d;
    const Real theta = degrees_to_radians(m.angle_deg);
    if (std::fabs(theta) < kSmallestRotation<Real>) {
        d(1, 1) = q11;
        d(2, 1) = q12;
        d(1, 2) = q12;
        d(2, 2) = q22;
        d(3, 3) = g;
        return d;  // couplings with the shear component stay exactly zero
    }

    const auto [s, c] = angle_sin_cos(m.angle_deg);
    const Real c2 = c * c;
    const Real s2 = s * s;
    const Real cs = c * s;
    const Real two_cs = Real(2) * cs;

    Matrix3Of<Real> t;
    t(1, 1) = c2;
    t(1, 2) = s2;
    t(1, 3) = -two_cs;
    t(2, 1) = s2;
    t(2, 2) = c2;
    t(2, 3) = two_cs;
    t(3, 1) = cs;
    t(3, 2) = -cs;
    t(3, 3) = c2 - s2;

    Matrix3Of<Real> a;  // T Q
    a(1, 1) = q11 * c2 + q12 * s2;
    a(2, 1) = q11 * s2 + q12 * c2;
    a(3, 1) = q11 * cs + q12 * (-cs);
    a(1, 2) = q12 * c2 + q22 * s2;
    a(2, 2) = q12 * s2 + q22 * c2;
    a(3, 2) = q12 * cs + q22 * (-cs);
    a(1, 3) = g * (-two_cs);
    a(2, 3) = g * two_cs;
    a(3, 3) = g * (c2 - s2);

    // (T Q T^T)(i, j), summed left to right.
    auto entry = [&](Index i, Index j) {
        return (a(i, 1) * t(j, 1) + a(i, 2) * t(j, 2)) + a(i, 3) * t(j, 3);
    };
    for (Index j = 1; j <= 3; ++j) {
        for (Index i = j; i <= 3; ++i) {
            // formed entry (i, j) below or (j, i) above the diagonal
            const Real v = formed == FormedTriangle::lower ? entry(i, j) : entry(j, i);
            d(i, j) = v;
            d(j, i) = v;
        }
    }
    return d;
}

template Matrix3Of<float> rotated_plane_stress(const OrthotropicMaterial<float>&, FormedTriangle);
template Matrix3Of<double> rotated_plane_stress(const OrthotropicMaterial<double>&,
                                                FormedTriangle);

namespace {

// The stand-alone routine forms the lower triangle; the membrane element
// forms the upper one. Each keeps its own rounding on purpose.
template <class Real>
void membrane_material(Real* DMAT, const Real* PROP, const std::int32_t* IMAT,
                       const std::int32_t* NMAT) {
    const auto m = read_orthotropic_material(host_array(PROP, {0, *NMAT}), *IMAT);
    store(rotated_plane_stress(m, FormedTriangle::lower), host_array(DMAT, {0, 3}));
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void MODIPDLLDOTNET(float* DMAT, const float* PROP, const int32_t* IMAT,
                               const int32_t* NMAT) noexcept {
    membrane_material(DMAT, PROP, IMAT, NMAT);
}

extern "C" void shellfe_membrane_material(double* DMAT, const double* PROP, const int32_t* IMAT,
                                          const int32_t* NMAT) noexcept {
    membrane_material(DMAT, PROP, IMAT, NMAT);
}
