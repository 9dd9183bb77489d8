// Bending and transverse shear rigidities of a plate of rotated orthotropic
// layers.
#pragma once

#include "element/small_matrix.hpp"

namespace shellfe {

// Which formulas a rotated orthotropic layer is formed with. The compatible
// routines always use the defaults, formulas their hosts' results were made
// with; the double-precision extension lets a host choose the physical ones.
struct LayerFormulas {
    // Turn the transverse shear moduli by +theta like the bending moduli
    // (the default turns them by -theta).
    bool physical_shear_rotation = false;
    // Form the bending coupling as nu*E8/den (the default nu*E8^2/(E1*den)).
    bool physical_bending_coupling = false;
};

// The extension's OPTIONS bits.
inline LayerFormulas layer_formulas(std::int32_t options) {
    return {.physical_shear_rotation = (options & 1) != 0,
            .physical_bending_coupling = (options & 2) != 0};
}

// A plate's layer data as the host passes it: layer table (0:nlay, 0:17)
// with the columns of the material table, and face coordinates
// (0:nlay+1), layer L between z(L) and z(L+1).
template <class Real>
struct LayeredPlate {
    Array2<const Real> layers;
    Array1<const Real> z;
    Index nlay;
    LayerFormulas formulas;
};

template <class Real>
LayeredPlate<Real> layered_plate(const Real* play, const Real* zlay, std::int32_t nlay,
                                 LayerFormulas formulas = {}) {
    return {host_array(play, {0, nlay}), host_array(zlay), nlay, formulas};
}

// Moments (Mx, My, Mxy) per curvatures (kx, ky, kxy). Instantiated for float
// and double, as is the next.
template <class Real>
Matrix3Of<Real> bending_rigidities(const LayeredPlate<Real>& plate);

// Transverse shear forces per transverse shear strains.
template <class Real>
Matrix2Of<Real> shear_rigidities(const LayeredPlate<Real>& plate);

// The layer routine's switches: the bending matrix when ibend is 1,
// otherwise the shear matrix when ishear is 1, otherwise none.
template <class Real>
void form_plate_rigidities(const LayeredPlate<Real>& plate, std::int32_t ibend,
                           std::int32_t ishear, const Array2<Real>& dbend,
                           const Array2<Real>& dshear);

}  // namespace shellfe
