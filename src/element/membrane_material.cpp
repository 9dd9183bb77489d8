// Plane-stress matrix of an orthotropic material turned against the element
// axes, in single precision with a fixed order of operations.
#include "element/membrane_material.hpp"

#include "element/angles.hpp"

#include "shellfe.h"

#include <cmath>

namespace shellfe {

namespace {
// Below this angle in radians (about 0.0573 degrees) the rotation is skipped
// and the unrotated matrix, with exact zero couplings, is returned. Hosts
// rely on the exact zeros for materials entered with tiny angles.
constexpr float kSmallestRotation = 0.001f;
}  // namespace

OrthotropicMaterial read_orthotropic_material(Array2<const float> prop, Index row) {
    return {prop(row, 1), prop(row, 2), prop(row, 8), prop(row, 9), prop(row, 17)};
}

Matrix3 rotated_plane_stress(const OrthotropicMaterial& m, FormedTriangle formed) {
    const float r = ((m.nu12 * m.nu12) * m.e2) / m.e1;  // nu12 * nu21
    const float den = 1.0f - r;
    const float q22 = m.e2 / den;
    const float q11 = m.e1 / den;
    const float q12 = m.nu12 * q22;
    const float g = m.g12;

    Matrix3 d;
    const float theta = degrees_to_radians(m.angle_deg);
    if (std::fabs(theta) < kSmallestRotation) {
        d(1, 1) = q11;
        d(2, 1) = q12;
        d(1, 2) = q12;
        d(2, 2) = q22;
        d(3, 3) = g;
        return d;  // couplings with the shear component stay exactly zero
    }

    const auto [s, c] = sin_cos(theta);
    const float c2 = c * c;
    const float s2 = s * s;
    const float cs = c * s;
    const float two_cs = 2.0f * cs;

    Matrix3 t;
    t(1, 1) = c2;
    t(1, 2) = s2;
    t(1, 3) = -two_cs;
    t(2, 1) = s2;
    t(2, 2) = c2;
    t(2, 3) = two_cs;
    t(3, 1) = cs;
    t(3, 2) = -cs;
    t(3, 3) = c2 - s2;

    Matrix3 a;  // T Q
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
            const float v = formed == FormedTriangle::lower ? entry(i, j) : entry(j, i);
            d(i, j) = v;
            d(j, i) = v;
        }
    }
    return d;
}

}  // namespace shellfe

using namespace shellfe;

extern "C" void MODIPDLLDOTNET(float* DMAT, const float* PROP, const int32_t* IMAT,
                               const int32_t* NMAT) noexcept {
    // The stand-alone routine forms the lower triangle; the membrane element
    // forms the upper one. Each keeps its own rounding on purpose.
    const OrthotropicMaterial m = read_orthotropic_material(host_array(PROP, {0, *NMAT}), *IMAT);
    store(rotated_plane_stress(m, FormedTriangle::lower), host_array(DMAT, {0, 3}));
}
