// Views of the host's arrays.
//
// Hosts hand over Fortran-style arrays: column-major, each dimension with its
// own lower bound (0 unless a routine declares otherwise) and the first
// dimension's upper bound passed as an argument. A routine binds each array
// once, with host_array() and the bounds the array is declared with, and then
// indexes exactly as its description reads: ESTIF(m, c), XY(k, 1), PA(2). No
// routine does flat-offset arithmetic by hand. Offsets are std::ptrdiff_t;
// values that cross the interface (counts, equation numbers) stay int32_t.
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
    // Address of element a: the start of a contiguous run.
    T* at(Index a) const { return base + (a - lo); }
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
    T* at(Index a, Index b) const { return base + ((a - lo1) + (b - lo2) * rows); }
    // Column b as a one-dimensional array with the same row indices.
    Array1<T> column(Index b) const { return {at(lo1, b), lo1}; }
};

// Column-major three-dimensional array: (a, b, c) at
// (a - lo1) + rows * ((b - lo2) + cols * (c - lo3)).
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

// A table stored row after row: (r, c) at (r - lo1) * width + (c - lo2).
template <class T>
struct RowTable {
    T* base;
    Index width;
    Index lo1 = 0;
    Index lo2 = 0;
    T& operator()(Index r, Index c) const { return base[(r - lo1) * width + (c - lo2)]; }
    // Row r as a one-dimensional array with the same column indices.
    Array1<T> row(Index r) const { return {base + (r - lo1) * width, lo2}; }
};

// A declared dimension (lo:hi), both bounds included.
struct Dim {
    Index lo;
    Index hi;
    Index length() const { return hi - lo + 1; }
};

// The one way to bind a host array, with the bounds it is declared with:
//   host_array(NODFLG)              (0:*)
//   host_array(PA, 1)               (1:*)
//   host_array(ESTIF, {0, LDES})    (0:LDES, 0:*)
//   host_array(PTS, {0, 4}, 1)      (0:4, 1:*)
//   host_array(A, {0, L}, {0, M})   (0:L, 0:M, 0:*)
// The last dimension's upper bound never matters for indexing and is not
// given.
template <class T>
Array1<T> host_array(T* base, Index lo = 0) {
    return {base, lo};
}

template <class T>
Array2<T> host_array(T* base, Dim first, Index lo2 = 0) {
    return {base, first.length(), first.lo, lo2};
}

template <class T>
Array3<T> host_array(T* base, Dim first, Dim second, Index lo3 = 0) {
    return {base, first.length(), second.length(), first.lo, second.lo, lo3};
}

// A table stored row after row whose rows are declared as `columns`, e.g.
// host_rows(SNODE, {0, LDNM}) for rows of LDNM + 1 entries.
template <class T>
RowTable<T> host_rows(T* base, Dim columns, Index lo_row = 0) {
    return {base, columns.length(), lo_row, columns.lo};
}

}  // namespace shellfe
