// Layered plate rigidities, in single precision with a fixed order of
// operations.
#include "element/layered_plate.hpp"

#include "element/angles.hpp"

#include "shellfe.h"

#include <cmath>
#include <optional>

namespace shellfe {

namespace {

// Transverse shear correction 5/6, applied as a division by 1.2.
constexpr float kShearCorrectionDivisor = 1.2f;
constexpr Index kLastPropertyColumn = 17;

// Sine and cosine of a layer's material angle (column 17, degrees).
SinCos layer_trig(const LayeredPlate& p, Index layer) {
    return sin_cos(degrees_to_radians(p.layers(layer, 17)));
}

// Modulus, Poisson's ratio and total thickness of a plate of two identical,
// unrotated, isotropic layers, which has a closed form.
struct UniformPair {
    float e, nu, t;
};

// Exact comparisons: any difference, or a NaN anywhere, takes the layered
// path (nullopt).
std::optional<UniformPair> uniform_isotropic_pair(const LayeredPlate& p) {
    if (p.nlay != 2) return std::nullopt;
    const auto& t = p.layers;
    for (Index j = 1; j <= kLastPropertyColumn; ++j) {
        if (!(t(1, j) == t(2, j))) return std::nullopt;
    }
    if (!(t(1, 17) == 0.0f && t(1, 1) == t(1, 8) && t(1, 10) == t(1, 11))) return std::nullopt;
    return UniformPair{t(1, 8), t(1, 2), std::fabs(p.z(3) - p.z(1))};
}

// Rotated reduced stiffness of one layer in bending, components x, y, xy.
// Deliberately, column 8 of the layer table enters the x-x term and column 1
// the y-y term at zero angle (the reverse of the membrane material), and the
// coupling is formed as E8 * nu21 / den: layered models of existing hosts
// were calibrated with this assignment.
Matrix3 layer_bending_stiffness(const LayeredPlate& p, Index layer) {
    const auto& t = p.layers;
    const float e1 = t(layer, 1);
    const float nu = t(layer, 2);
    const float e8 = t(layer, 8);
    const float g = t(layer, 9);
    const auto [s, c] = layer_trig(p, layer);

    const float nu21 = (nu * e8) / e1;
    const float den = 1.0f - nu * nu21;
    const float qa = e8 / den;
    const float qb = e1 / den;
    const float qc = (e8 * nu21) / den;

    const float c2 = c * c;
    const float s2 = s * s;
    const float pp = 2.0f * qc + 4.0f * g;
    const float h = (qc - qb) + 2.0f * g;
    const float f = (qa - qc) - 2.0f * g;
    const float c4s4 = c2 * c2 + s2 * s2;

    Matrix3 q;
    q(1, 1) = pp * s2 * c2 + (c2 * qa * c2 + s2 * qb * s2);
    q(2, 2) = s2 * qa * s2 + c2 * qb * c2 + pp * c2 * s2;
    q(1, 2) = c4s4 * qc + ((qa + qb) - 4.0f * g) * c2 * s2;
    q(1, 3) = (f * c2 + h * s2) * s * c;
    q(2, 3) = (f * s2 + h * c2) * s * c;
    q(3, 3) = c4s4 * g + (((qa + qb) - 2.0f * qc) - 2.0f * g) * c2 * s2;
    q(2, 1) = q(1, 2);
    q(3, 1) = q(1, 3);
    q(3, 2) = q(2, 3);
    return q;
}

}  // namespace

Matrix3 bending_rigidities(const LayeredPlate& p) {
    Matrix3 d;
    if (const auto pair = uniform_isotropic_pair(p)) {
        const auto [e, nu, t] = *pair;
        const float dd = (((e * t) * t) * t) / ((1.0f - nu * nu) * 12.0f);
        d(1, 1) = dd;
        d(2, 2) = dd;
        d(2, 1) = nu * dd;
        d(1, 2) = nu * dd;
        d(3, 3) = ((1.0f - nu) * 0.5f) * dd;
        return d;
    }
    // Each entry sums its layers in order from zero; the layer matrix is
    // symmetric, so both off-diagonal entries receive identical sums.
    for (Index layer = 1; layer <= p.nlay; ++layer) {
        const Matrix3 q = layer_bending_stiffness(p, layer);
        const float zb = p.z(layer);
        const float zt = p.z(layer + 1);
        const float dz3 = zt * zt * zt - zb * zb * zb;
        for (Index c = 1; c <= 3; ++c) {
            for (Index r = 1; r <= 3; ++r) d(r, c) = d(r, c) + (dz3 * q(r, c)) / 3.0f;
        }
    }
    return d;
}

Matrix2 shear_rigidities(const LayeredPlate& p) {
    Matrix2 d;
    if (const auto pair = uniform_isotropic_pair(p)) {
        const auto [e, nu, t] = *pair;
        // G t 5/6 with G = E / 2(1 + nu): the factor 2 and the 1.2 are folded.
        const float ss = (e * t) / (nu * 2.4f + 2.4f);
        d(1, 1) = ss;
        d(2, 2) = ss;
        return d;
    }
    for (Index layer = 1; layer <= p.nlay; ++layer) {
        const auto& t = p.layers;
        const float g10 = t(layer, 10) / kShearCorrectionDivisor;
        const float g11 = t(layer, 11) / kShearCorrectionDivisor;
        const auto [s, c] = layer_trig(p, layer);
        Matrix2 q;
        q(1, 1) = c * g11 * c + s * g10 * s;
        q(2, 2) = c * g10 * c + s * g11 * s;
        q(1, 2) = ((g10 - g11) * c) * s;
        q(2, 1) = q(1, 2);
        const float dz = p.z(layer + 1) - p.z(layer);
        for (Index col = 1; col <= 2; ++col) {
            for (Index r = 1; r <= 2; ++r) d(r, col) = d(r, col) + dz * q(r, col);
        }
    }
    return d;
}

namespace {

// Which matrix a call forms: the bending matrix when ibend is 1, otherwise
// the shear matrix when ishear is 1, otherwise none. One per call.
void form_plate_rigidities(const LayeredPlate& plate, std::int32_t ibend, std::int32_t ishear,
                           const Array2<float>& dbend, const Array2<float>& dshear) {
    if (ibend == 1) {
        store(bending_rigidities(plate), dbend);
    } else if (ishear == 1) {
        store(shear_rigidities(plate), dshear);
    }
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void MODPBDLLDOTNET(float* DBEND, float* DSHEAR, const int32_t* IBEND,
                               const int32_t* ISHEAR, const float* PROP, const float* ZLAY,
                               const int32_t* NLAY) noexcept {
    form_plate_rigidities(layered_plate(PROP, ZLAY, *NLAY), *IBEND, *ISHEAR,
                          host_array(DBEND, {0, 3}), host_array(DSHEAR, {0, 2}));
}
