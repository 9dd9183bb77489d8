// Views of the host's arrays.
//
// Hosts hand over Fortran-style arrays: column-major, each dimension with its
// own lower bound (normally 0) and the first dimension's upper bound passed
// as an argument. These views carry the bounds so that a routine indexes
// exactly as its description reads, e.g. ESTIF(m, c) or XY(k, 1), and no
// routine does flat-offset arithmetic by hand. Offsets are std::ptrdiff_t;
// values crossing the interface stay int32_t.
#pragma once

#include <cstddef>
#include <cstdint>

namespace shellfe {

using Index = std::ptrdiff_t;

// One-dimensional array whose first element has index `lo`.
template <class T>
struct Array1 {
    T* base;
    Index lo = 0;
    T& operator()(Index a) const { return base[a - lo]; }
};

// Column-major two-dimensional array: `rows` elements per column, the first
// index starting at `lo1` and the second at `lo2`.
template <class T>
struct Array2 {
    T* base;
    Index rows;
    Index lo1 = 0;
    Index lo2 = 0;
    T& operator()(Index a, Index b) const { return base[(a - lo1) + (b - lo2) * rows]; }
    // Address of element (a, b): the start of a contiguous run down column b.
    T* at(Index a, Index b) const { return base + ((a - lo1) + (b - lo2) * rows); }
};

// Column-major three-dimensional array (lo1:, lo2:, lo3:).
template <class T>
struct Array3 {
    T* base;
    Index rows;
    Index cols;
    Index lo1 = 0;
    Index lo2 = 0;
    Index lo3 = 0;
    T& operator()(Index a, Index b, Index c) const {
        return base[(a - lo1) + rows * ((b - lo2) + cols * (c - lo3))];
    }
};

// A table stored row after row: `width` entries per row, (r, c) at
// (r - lo1) * width + (c - lo2).
template <class T>
struct RowTable {
    T* base;
    Index width;
    Index lo1 = 0;
    Index lo2 = 0;
    T& operator()(Index r, Index c) const { return base[(r - lo1) * width + (c - lo2)]; }
};

// The everyday case: an array declared (0:L, 0:*) with the host passing L.
template <class T>
Array2<T> upper_bound(T* base, std::int32_t L) {
    return Array2<T>{base, static_cast<Index>(L) + 1};
}

template <class T>
Array2<T> upper_bound(T* base, Index L) {
    return Array2<T>{base, L + 1};
}

// An array indexed from 0 in its one dimension.
template <class T>
Array1<T> from_zero(T* base) {
    return Array1<T>{base, 0};
}

}  // namespace shellfe
