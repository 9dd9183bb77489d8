// Rotated orthotropic plane-stress (membrane) material matrix.
#pragma once

#include "element/small_matrix.hpp"

namespace shellfe {

// Which triangle of the symmetric result is computed; the other is its
// mirror. The two choices can differ in the last bit off the diagonal, and
// each caller keeps the one its hosts' reference results were made with.
enum class FormedTriangle { lower, upper };

// Moduli of one orthotropic material: columns 1, 2, 8, 9 and 17 of a row of
// the material table.
struct OrthotropicMaterial {
    float e1;         // modulus along material axis 1
    float nu12;       // Poisson's ratio
    float e2;         // modulus along material axis 2
    float g12;        // in-plane shear modulus
    float angle_deg;  // material axis 1 against element x, degrees
};

OrthotropicMaterial read_orthotropic_material(Array2<const float> prop, Index row);

// T Q T^T for stresses (sx, sy, txy) and strains (ex, ey, gxy). Angles
// below 0.001 radian are taken as exactly zero.
Matrix3 rotated_plane_stress(const OrthotropicMaterial& m, FormedTriangle formed);

}  // namespace shellfe
