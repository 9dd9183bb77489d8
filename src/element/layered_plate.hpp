// Bending and transverse shear rigidities of a plate of rotated orthotropic
// layers.
#pragma once

#include "element/small_matrix.hpp"

namespace shellfe {

// A plate's layer data as the host passes it: layer table (0:nlay, 0:17)
// with the columns of the material table, and face coordinates
// (0:nlay+1), layer L between z(L) and z(L+1).
struct LayeredPlate {
    Array2<const float> layers;
    Array1<const float> z;
    Index nlay;
};

inline LayeredPlate layered_plate(const float* play, const float* zlay, std::int32_t nlay) {
    return {host_array(play, {0, nlay}), host_array(zlay), nlay};
}

// Moments (Mx, My, Mxy) per curvatures (kx, ky, kxy).
Matrix3 bending_rigidities(const LayeredPlate& plate);

// Transverse shear forces per transverse shear strains.
Matrix2 shear_rigidities(const LayeredPlate& plate);

}  // namespace shellfe
