// Fixed-size matrices of the element routines, indexed from 1 as the
// formulas read: m(r, c) is row r, column c.
#pragma once

#include "frame/canonical_nan.hpp"
#include "frame/views.hpp"

namespace shellfe {

template <int R, int C>
struct SmallMatrix {
    float e[C][R] = {};  // column by column
    float& operator()(Index r, Index c) { return e[c - 1][r - 1]; }
    float operator()(Index r, Index c) const { return e[c - 1][r - 1]; }
};

// Writes m into rows 1..R and columns 1..C of a host array, column by column,
// NaN entries as the canonical NaN.
template <int R, int C>
void store(const SmallMatrix<R, C>& m, const Array2<float>& out) {
    for (Index c = 1; c <= C; ++c) {
        for (Index r = 1; r <= R; ++r) out(r, c) = canonical(m(r, c));
    }
}

using Matrix2 = SmallMatrix<2, 2>;
using Matrix3 = SmallMatrix<3, 3>;

}  // namespace shellfe
