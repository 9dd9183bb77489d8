// The Jacobian step shared by the stand-alone Jacobian routine and the
// element stiffness routines: Jacobian of (xi, eta) -> (x, y), its
// determinant and the Cartesian derivatives of every shape function.
#pragma once

#include "element/shape_functions.hpp"
#include "frame/views.hpp"

namespace shellfe {

// Node count of the geometry: a nine-node element maps with its first eight
// nodes; its centre node is a bubble that does not move the geometry.
inline Index geometry_nodes(Index nnode) { return nnode == 9 ? 8 : nnode; }

// Forms the Jacobian from the natural derivatives dxi(k), deta(k) and node
// coordinates x(k), y(k), k = 1..geometry_nodes(nnode), and writes
// dx(k) = dN_k/dx, dy(k) = dN_k/dy for k = 1..nnode. Returns the
// determinant in the working precision Real.
//
// The Jacobian's products are formed in Real and summed in double; the
// determinant is formed in double and rounded to Real, and the inverse
// divides by that rounded value. Each Cartesian derivative is rounded to
// Real after each of its two additions. In single precision every one of
// these roundings is part of the compatible results (hosts compare them bit
// for bit, and the rounded determinant is also the value they see); in
// double precision they round nothing.
//
// Nothing is checked: a zero determinant gives infinite or NaN derivatives.
// nnode must not exceed 9. Instantiated for float and double.
template <class Real>
Real cartesian_derivatives(Array1<const Real> dxi, Array1<const Real> deta, Array1<const Real> x,
                           Array1<const Real> y, Index nnode, Array1<Real> dx, Array1<Real> dy);

}  // namespace shellfe
