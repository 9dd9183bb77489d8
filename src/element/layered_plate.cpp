// Layered plate rigidities, in the working precision with a fixed order of
// operations.
#include "element/layered_plate.hpp"

#include "element/angles.hpp"
#include "frame/precision.hpp"

#include "shellfe.h"

#include <cmath>
#include <optional>

namespace shellfe {

namespace {

// Transverse shear correction 5/6, applied as a division by 1.2.
template <class Real>
constexpr Real kShearCorrectionDivisor = literal<Real>(1.2);
static_assert(kShearCorrectionDivisor<float> == 1.2f);
// The same folded with the 2 of G = E / 2(1 + nu).
template <class Real>
constexpr Real kFoldedShearDivisor = literal<Real>(2.4);
static_assert(kFoldedShearDivisor<float> == 2.4f);
constexpr Index kLastPropertyColumn = 17;

// Sine and cosine of a layer's material angle (column 17, degrees).
template <class Real>
SinCosOf<Real> layer_trig(const LayeredPlate<Real>& p, Index layer) {
    return angle_sin_cos(p.layers(layer, 17));
}

// Modulus, Poisson's ratio and total thickness of a plate of two identical,
// unrotated, isotropic layers, which has a closed form.
template <class Real>
struct UniformPair {
    Real e, nu, t;
};

// Exact comparisons: any difference, or a NaN anywhere, takes the layered
// path (nullopt).
template <class Real>
std::optional<UniformPair<Real>> uniform_isotropic_pair(const LayeredPlate<Real>& p) {
    if (p.nlay != 2) return std::nullopt;
    const auto& t = p.layers;
    for (Index j = 1; j <= kLastPropertyColumn; ++j) {
        if (!(t(1, j) == t(2, j))) return std::nullopt;
    }
    if (!(t(1, 17) == Real(0) && t(1, 1) == t(1, 8) && t(1, 10) == t(1, 11))) return std::nullopt;
    return UniformPair<Real>{t(1, 8), t(1, 2), std::fabs(p.z(3) - p.z(1))};
}

// Rotated reduced stiffness of one layer in bending, components x, y, xy.
// Deliberately, column 8 of the layer table enters the x-x term and column 1
// the y-y term at zero angle (the reverse of the membrane material), and the
// coupling is formed as E8 * nu21 / den: layered models of existing hosts
// were calibrated with this assignment. That coupling is E8/E1 times the
// plane-stress one, nu * E8 / den, which a host of the extension may choose.
template <class Real>
Matrix3Of<Real> layer_bending_stiffness(const LayeredPlate<Real>& p, Index layer) {
    const auto& t = p.layers;
    const Real e1 = t(layer, 1);
    const Real nu = t(layer, 2);
    const Real e8 = t(layer, 8);
    const Real g = t(layer, 9);
    const auto [s, c] = layer_trig(p, layer);

    const Real nu21 = (nu * e8) / e1;
    const Real den = Real(1) - nu * nu21;
    const Real qa = e8 / den;
    const Real qb = e1 / den;
    const Real qc = p.formulas.physical_bending_coupling ? (nu * e8) / den : (e8 * nu21) / den;

    const Real c2 = c * c;
    const Real s2 = s * s;
    const Real pp = Real(2) * qc + Real(4) * g;
    const Real h = (qc - qb) + Real(2) * g;
    const Real f = (qa - qc) - Real(2) * g;
    const Real c4s4 = c2 * c2 + s2 * s2;

    Matrix3Of<Real> q;
    q(1, 1) = pp * s2 * c2 + (c2 * qa * c2 + s2 * qb * s2);
    q(2, 2) = s2 * qa * s2 + c2 * qb * c2 + pp * c2 * s2;
    q(1, 2) = c4s4 * qc + ((qa + qb) - Real(4) * g) * c2 * s2;
    q(1, 3) = (f * c2 + h * s2) * s * c;
    q(2, 3) = (f * s2 + h * c2) * s * c;
    q(3, 3) = c4s4 * g + (((qa + qb) - Real(2) * qc) - Real(2) * g) * c2 * s2;
    q(2, 1) = q(1, 2);
    q(3, 1) = q(1, 3);
    q(3, 2) = q(2, 3);
    return q;
}

}  // namespace

template <class Real>
Matrix3Of<Real> bending_rigidities(const LayeredPlate<Real>& p) {
    Matrix3Of<Real> d;
    if (const auto pair = uniform_isotropic_pair(p)) {
        const auto [e, nu, t] = *pair;
        const Real dd = (((e * t) * t) * t) / ((Real(1) - nu * nu) * Real(12));
        d(1, 1) = dd;
        d(2, 2) = dd;
        d(2, 1) = nu * dd;
        d(1, 2) = nu * dd;
        d(3, 3) = ((Real(1) - nu) * Real(0.5)) * dd;
        return d;
    }
    // Each entry sums its layers in order from zero; the layer matrix is
    // symmetric, so both off-diagonal entries receive identical sums.
    for (Index layer = 1; layer <= p.nlay; ++layer) {
        const Matrix3Of<Real> q = layer_bending_stiffness(p, layer);
        const Real zb = p.z(layer);
        const Real zt = p.z(layer + 1);
        const Real dz3 = zt * zt * zt - zb * zb * zb;
        for (Index c = 1; c <= 3; ++c) {
            for (Index r = 1; r <= 3; ++r) d(r, c) = d(r, c) + (dz3 * q(r, c)) / Real(3);
        }
    }
    return d;
}

template <class Real>
Matrix2Of<Real> shear_rigidities(const LayeredPlate<Real>& p) {
    Matrix2Of<Real> d;
    if (const auto pair = uniform_isotropic_pair(p)) {
        const auto [e, nu, t] = *pair;
        // G t 5/6 with G = E / 2(1 + nu): the factor 2 and the 1.2 are folded.
        const Real ss = (e * t) / (nu * kFoldedShearDivisor<Real> + kFoldedShearDivisor<Real>);
        d(1, 1) = ss;
        d(2, 2) = ss;
        return d;
    }
    for (Index layer = 1; layer <= p.nlay; ++layer) {
        const auto& t = p.layers;
        const Real g10 = t(layer, 10) / kShearCorrectionDivisor<Real>;
        const Real g11 = t(layer, 11) / kShearCorrectionDivisor<Real>;
        const auto [s, c] = layer_trig(p, layer);
        Matrix2Of<Real> q;
        q(1, 1) = c * g11 * c + s * g10 * s;
        q(2, 2) = c * g10 * c + s * g11 * s;
        // Deliberately (g10 - g11): the shear moduli turn by -theta where
        // the bending and membrane moduli turn by +theta, as the compatible
        // hosts' layered models were calibrated; (g11 - g10) turns them
        // with the layer.
        q(1, 2) = p.formulas.physical_shear_rotation ? ((g11 - g10) * c) * s
                                                     : ((g10 - g11) * c) * s;
        q(2, 1) = q(1, 2);
        const Real dz = p.z(layer + 1) - p.z(layer);
        for (Index col = 1; col <= 2; ++col) {
            for (Index r = 1; r <= 2; ++r) d(r, col) = d(r, col) + dz * q(r, col);
        }
    }
    return d;
}

template <class Real>
void form_plate_rigidities(const LayeredPlate<Real>& plate, std::int32_t ibend,
                           std::int32_t ishear, const Array2<Real>& dbend,
                           const Array2<Real>& dshear) {
    if (ibend == 1) {
        store(bending_rigidities(plate), dbend);
    } else if (ishear == 1) {
        store(shear_rigidities(plate), dshear);
    }
}

#define SHELLFE_LAYERED_PLATE(Real)                                                            \
    template Matrix3Of<Real> bending_rigidities(const LayeredPlate<Real>&);                   \
    template Matrix2Of<Real> shear_rigidities(const LayeredPlate<Real>&);                     \
    template void form_plate_rigidities(const LayeredPlate<Real>&, std::int32_t, std::int32_t, \
                                        const Array2<Real>&, const Array2<Real>&);
SHELLFE_LAYERED_PLATE(float)
SHELLFE_LAYERED_PLATE(double)
#undef SHELLFE_LAYERED_PLATE

}  // namespace shellfe

using namespace shellfe;

extern "C" void MODPBDLLDOTNET(float* DBEND, float* DSHEAR, const int32_t* IBEND,
                               const int32_t* ISHEAR, const float* PROP, const float* ZLAY,
                               const int32_t* NLAY) noexcept {
    form_plate_rigidities(layered_plate(PROP, ZLAY, *NLAY), *IBEND, *ISHEAR,
                          host_array(DBEND, {0, 3}), host_array(DSHEAR, {0, 2}));
}

extern "C" void shellfe_plate_rigidities(double* DBEND, double* DSHEAR, const int32_t* IBEND,
                                         const int32_t* ISHEAR, const double* PROP,
                                         const double* ZLAY, const int32_t* NLAY,
                                         const int32_t* OPTIONS) noexcept {
    form_plate_rigidities(layered_plate(PROP, ZLAY, *NLAY, layer_formulas(*OPTIONS)), *IBEND,
                          *ISHEAR, host_array(DBEND, {0, 3}), host_array(DSHEAR, {0, 2}));
}
