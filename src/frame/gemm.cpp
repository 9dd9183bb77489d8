// Blocking and packing around the register tile kernels.
//
// The loops follow the usual cache blocking of dense products: a panel of A
// (kc steps of t by up to nc columns i) is packed once and reused against
// every block of B (mc rows j by kc steps of t), and each packed sliver of A
// stays in L1 while the slivers of B stream past it. Blocks of t are taken in
// increasing order and each tile of C carries its running sums from one block
// to the next, so every entry still receives its terms in increasing t.
#include "gemm.hpp"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace shellfe::gemm {
namespace {

constexpr Index kStackElements = 8192;  // packing space kept on the stack

Index round_up(Index x, Index step) { return (x + step - 1) / step * step; }

// A(t0 .. t0+kt-1, i0 .. i0+mi-1) into slivers of nr columns, t-major,
// columns past mi padded with zeros.
template <class T>
void pack_a(const Operand<T>& a, Index t0, Index kt, Index i0, Index mi, Index nr, T* out) {
    for (Index s = 0; s < mi; s += nr) {
        const Index w = std::min(nr, mi - s);
        T* sliver = out + s * kt;
        for (Index t = 0; t < kt; ++t) {
            T* row = sliver + t * nr;
            for (Index x = 0; x < w; ++x) row[x] = a(t0 + t, i0 + s + x);
            for (Index x = w; x < nr; ++x) row[x] = T(0);
        }
    }
}

// The kernel for the sliver of B starting s rows into a block of mj rows:
// wide while a whole wide sliver fits, narrow (and padded) for the rest.
// Packing and the tile loop both follow this, so the sliver at s starts at
// s * kt in the packed block.
template <class T>
const TileKernel<T>& sliver_kernel(const KernelSet<T>& k, Index s, Index mj) {
    return mj - s >= k.wide.mr ? k.wide : k.narrow;
}

// B(j0 .. j0+mj-1, t0 .. t0+kt-1) into slivers, t-major, rows past mj
// padded with zeros.
template <class T>
void pack_b(const Operand<T>& b, Index j0, Index mj, Index t0, Index kt,
            const KernelSet<T>& kernels, T* out) {
    for (Index s = 0, mr; s < mj; s += mr) {
        mr = sliver_kernel(kernels, s, mj).mr;
        const Index h = std::min(mr, mj - s);
        T* sliver = out + s * kt;
        if (b.row_stride == 1) {
            for (Index t = 0; t < kt; ++t) {
                T* col = sliver + t * mr;
                std::memcpy(col, &b(j0 + s, t0 + t), static_cast<std::size_t>(h) * sizeof(T));
                for (Index y = h; y < mr; ++y) col[y] = T(0);
            }
        } else {
            for (Index y = 0; y < h; ++y)
                for (Index t = 0; t < kt; ++t) sliver[t * mr + y] = b(j0 + s + y, t0 + t);
            if (h < mr)
                for (Index t = 0; t < kt; ++t)
                    for (Index y = h; y < mr; ++y) sliver[t * mr + y] = T(0);
        }
    }
}

template <class T>
void zero_result(const Problem<T>& p) {
    for (Index i = 0; i < p.m; ++i) std::fill_n(p.c + i * p.ldc, p.n, T(0));
}

template <class T>
struct Buffer {
    alignas(64) T local[kStackElements];
    std::unique_ptr<T[]> heap;
    T* get(Index count) {
        if (count <= kStackElements) return local;
        heap.reset(new (std::nothrow) T[static_cast<std::size_t>(count)]);
        return heap.get();
    }
};

template <class T>
void run(const KernelSet<T>& kernels, const Problem<T>& p) {
    if (p.m < 1 || p.n < 1) return;
    if (p.k < 1) {
        zero_result(p);
        return;
    }
    const Index mr = kernels.wide.mr;
    const Index nr = kernels.wide.nr;
    const Blocking& blk = kernels.blocking;
    Index kc = std::min(p.k, blk.kc);
    const Index mc_max = std::max(mr, blk.l2_bytes / (blk.kc * Index(sizeof(T))) / mr * mr);
    Index mc = std::min(round_up(p.n, mr), mc_max);
    Index nc = std::min(round_up(p.m, nr), std::max(nr, blk.nc / nr * nr));

    Buffer<T> buffer;
    T* space = buffer.get(kc * (mc + nc));
    if (space == nullptr) {
        // Out of memory: fall back to one sliver of each, shallow enough to
        // fit the stack. Only the blocking changes, not the arithmetic.
        mc = mr;
        nc = nr;
        kc = std::min(kc, kStackElements / (mr + nr));
        space = buffer.local;
    }
    T* bpack = space;
    T* apack = space + kc * mc;

    alignas(64) T edge[64 * 16];  // one tile, for the ragged borders of C
    for (Index i0 = 0; i0 < p.m; i0 += nc) {
        const Index mi = std::min(nc, p.m - i0);
        for (Index t0 = 0; t0 < p.k; t0 += kc) {
            const Index kt = std::min(kc, p.k - t0);
            const bool first = t0 == 0;
            pack_a(p.a, t0, kt, i0, mi, nr, apack);
            for (Index j0 = 0; j0 < p.n; j0 += mc) {
                const Index mj = std::min(mc, p.n - j0);
                pack_b(p.b, j0, mj, t0, kt, kernels, bpack);
                for (Index ii = 0; ii < mi; ii += nr) {
                    const Index w = std::min(nr, mi - ii);
                    const T* a_sliver = apack + ii * kt;
                    for (Index jj = 0, mr_s; jj < mj; jj += mr_s) {
                        const TileKernel<T>& kern = sliver_kernel(kernels, jj, mj);
                        mr_s = kern.mr;
                        const Index h = std::min(mr_s, mj - jj);
                        const T* b_sliver = bpack + jj * kt;
                        T* c = p.c + (j0 + jj) + (i0 + ii) * p.ldc;
                        if (h == mr_s && w == nr) {
                            kern.run(kt, b_sliver, a_sliver, c, p.ldc, first);
                            continue;
                        }
                        if (!first)
                            for (Index x = 0; x < w; ++x)
                                std::copy_n(c + x * p.ldc, h, edge + x * mr_s);
                        kern.run(kt, b_sliver, a_sliver, edge, mr_s, first);
                        for (Index x = 0; x < w; ++x) std::copy_n(edge + x * mr_s, h, c + x * p.ldc);
                    }
                }
            }
        }
    }
}

KernelSet<float> kernels_f32(Isa isa) {
    switch (isa) {
#if defined(SHELLFE_X86_64_KERNELS)
        case Isa::avx512: return avx512_kernels_f32();
        case Isa::avx2: return avx2_kernels_f32();
        case Isa::sse2: return sse2_kernels_f32();
#endif
        default: return portable_kernels_f32();
    }
}

KernelSet<double> kernels_f64(Isa isa) {
    switch (isa) {
#if defined(SHELLFE_X86_64_KERNELS)
        case Isa::avx512: return avx512_kernels_f64();
        case Isa::avx2: return avx2_kernels_f64();
        case Isa::sse2: return sse2_kernels_f64();
#endif
        default: return portable_kernels_f64();
    }
}

}  // namespace

void multiply(Isa isa, const Problem<float>& p) noexcept { run(kernels_f32(isa), p); }
void multiply(Isa isa, const Problem<double>& p) noexcept { run(kernels_f64(isa), p); }

}  // namespace shellfe::gemm
