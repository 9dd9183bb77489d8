// Fixed-size matrices of the element routines, indexed from 1 as the
// formulas read: m(r, c) is row r, column c.
#pragma once

#include "frame/canonical_nan.hpp"
#include "frame/views.hpp"

namespace shellfe {

template <int R, int C, class Real = float>
struct SmallMatrix {
    Real e[C][R] = {};  // column by column
    Real& operator()(Index r, Index c) { return e[c - 1][r - 1]; }
    Real operator()(Index r, Index c) const { return e[c - 1][r - 1]; }
};

// Writes m into rows 1..R and columns 1..C of a host array, column by column,
// NaN entries as the canonical NaN.
template <int R, int C, class Real>
void store(const SmallMatrix<R, C, Real>& m, const Array2<Real>& out) {
    for (Index c = 1; c <= C; ++c) {
        for (Index r = 1; r <= R; ++r) out(r, c) = canonical(m(r, c));
    }
}

template <class Real>
using Matrix2Of = SmallMatrix<2, 2, Real>;
template <class Real>
using Matrix3Of = SmallMatrix<3, 3, Real>;
using Matrix2 = Matrix2Of<float>;
using Matrix3 = Matrix3Of<float>;

}  // namespace shellfe
