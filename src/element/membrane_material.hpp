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
template <class Real>
struct OrthotropicMaterial {
    Real e1;         // modulus along material axis 1
    Real nu12;       // Poisson's ratio
    Real e2;         // modulus along material axis 2
    Real g12;        // in-plane shear modulus
    Real angle_deg;  // material axis 1 against element x, degrees
};

template <class Real>
OrthotropicMaterial<Real> read_orthotropic_material(Array2<const Real> prop, Index row) {
    return {prop(row, 1), prop(row, 2), prop(row, 8), prop(row, 9), prop(row, 17)};
}

// T Q T^T for stresses (sx, sy, txy) and strains (ex, ey, gxy). Angles
// below 0.001 radian are taken as exactly zero. Instantiated for float and
// double.
template <class Real>
Matrix3Of<Real> rotated_plane_stress(const OrthotropicMaterial<Real>& m, FormedTriangle formed);

}  // namespace shellfe
