// Blocked, vectorised dense product that keeps the summation order.
//
// Computes C(j, i) = sum over t of A(t, i) * B(j, t) for 0 <= j < n,
// 0 <= i < m, 0 <= t < k, with every product rounded to T and the terms of
// each entry added one at a time in increasing t, starting from +0. The
// result is therefore identical to the plain triple loop, bit for bit,
// whatever the instruction set, block sizes or matrix shape.
//
// Each factor is described by two strides so that one driver serves the
// plain and the transposed products: the packing step absorbs the layout.
#pragma once

#include "cpu.hpp"
#include "views.hpp"

namespace shellfe::gemm {

template <class T>
struct Operand {
    const T* base;
    Index row_stride;  // step of the first index
    Index col_stride;  // step of the second index
    const T& operator()(Index a, Index b) const { return base[a * row_stride + b * col_stride]; }
};

template <class T>
struct Problem {
    Operand<T> a;  // a(t, i)
    Operand<T> b;  // b(j, t)
    T* c;          // c[j + i * ldc]
    Index ldc;
    Index m, k, n;
};

// The register tile kernel of one instruction set.
//
// Adds the products of a packed sliver of B (MR rows j, kc steps of t,
// stored t-major) and a packed sliver of A (kc steps of t, NR columns i,
// stored t-major) into an MR x NR tile of C, t in increasing order. With
// `first` the tile starts from +0 instead of being loaded from C.
template <class T>
struct TileKernel {
    int mr;
    int nr;
    void (*run)(Index kc, const T* b_sliver, const T* a_sliver, T* c, Index ldc, bool first);
};

// Cache blocking of one kernel set: kc steps of t per packed panel, a packed
// block of B of at most l2_bytes (kept in L2), nc columns i per packed panel
// of A.
struct Blocking {
    Index kc;
    Index l2_bytes;
    Index nc;
};

// Each instruction set has a wide tile for the bulk of C and a narrow one,
// one vector tall with the same NR, for the rows left over: short columns
// (element-sized matrices) then waste little work on padding. The wide MR is
// a multiple of the narrow one.
template <class T>
struct KernelSet {
    TileKernel<T> wide;
    TileKernel<T> narrow;
    Blocking blocking;
};

// Multiplies with the kernels of `isa`, which must be supported by the CPU.
void multiply(Isa isa, const Problem<float>& p) noexcept;
void multiply(Isa isa, const Problem<double>& p) noexcept;

// Per-instruction-set kernels, each compiled in its own translation unit
// with its own target flags; the portable one everywhere, the others on
// x86-64 only.
KernelSet<float> portable_kernels_f32() noexcept;
KernelSet<double> portable_kernels_f64() noexcept;
KernelSet<float> sse2_kernels_f32() noexcept;
KernelSet<double> sse2_kernels_f64() noexcept;
KernelSet<float> avx2_kernels_f32() noexcept;
KernelSet<double> avx2_kernels_f64() noexcept;
KernelSet<float> avx512_kernels_f32() noexcept;
KernelSet<double> avx512_kernels_f64() noexcept;

}  // namespace shellfe::gemm
