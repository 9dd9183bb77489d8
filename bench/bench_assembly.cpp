// Global stiffness assembly of an N x N slab of eight-node plate elements
// (six degrees of freedom per node, N = 50, 100, 200) by three routes on the
// same element matrices, and the two node merges on the slab as a panel
// mesher leaves it.
//
//   cmake -S . -B build-bench -DSHELLFE_BUILD_BENCHMARKS=ON && cmake --build build-bench -j2
//   build-bench/bin/bench_assembly --benchmark_repetitions=3
//
// Assembly routes, each producing the upper triangle of the global matrix:
//   crs_host_order   what a host does with the compressed-row routines: per
//                    node, clear the node matrix, fill LOCNOD for the node's
//                    neighbours, gather every element at the node with
//                    BUILDALLNODESTIFFDLLDOTNET (no springs, no prescribed
//                    displacements), append the node's six rows with
//                    ADDTOCRSSTIFFDLLDOTNET, and finally close IROWPTR.
//                    Only neighbours numbered at or above the node are
//                    listed: the blocks of lower ones are never gathered.
//                    IROWPTR, ICOL and VAL are allocated per assembly, ICOL
//                    and VAL at an upper bound counted from the neighbour
//                    lists (every candidate entry of every listed block).
//   skyline          ADDSHELLTOSDOTNET (NSLOT = 8) element by element into a
//                    skyline zeroed per assembly; nodes renumbered row by row
//                    through NUMNOD to narrow the profile. At N = 200 the
//                    profile (2.2e9 entries) is beyond a 32-bit IDIAG, and
//                    the benchmark says so instead of running.
//   eigen            Eigen's SparseMatrix<double>::setFromTriplets from the
//                    upper-triangle couplings of every element, the triplet
//                    list built per assembly.
// Neighbour lists, node-to-element incidence (FEMEMBERSTONODES1DOTNET),
// NUMNOD and IDIAG are built once, outside the timed region. Eight distinct
// symmetric element matrices are generated once and element e uses number
// e mod 8, identically in every route: the element matrices are not what
// is measured, and no route pays for streaming them from memory.
//
// peak_heap: the highest number of live heap bytes, counted from just
// before a route's own arrays are built (topology, host arrays, scratch)
// until after its assemblies; the mesh and the element matrices, shared by
// all routes, are not counted. Every heap block in the process counts with
// the size the allocator reserved for it (glibc builds only).
//
// Before its timings every benchmark checks one untimed result: the sum of
// the compressed-row and skyline entries against the element matrices and,
// where Eigen is installed, every entry against Eigen's; the merges against
// the expected merged nodes and redirected slots. That first run also
// warms the allocator: freed memory stays in the process, as
// in a long-running host, so that the timings show assembly and not the
// kernel handing out fresh pages (on a virtual machine their first touch
// can cost more than the assembly itself).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "shellfe.h"
#include "slab_mesh.hpp"

#if defined(SHELLFE_HAVE_EIGEN)
#include <Eigen/SparseCore>
#endif

#if defined(__GLIBC__)
#include <malloc.h>
#endif

// ---- heap accounting -------------------------------------------------------
//
// Eigen takes the index arrays of a sparse matrix from malloc and its values
// from new[]; the library and the standard containers allocate with new.
// Only the C allocator sees all of them, so that is what is replaced here,
// forwarding to glibc's own entry points.

namespace heap {
std::atomic<long long> live{0}, peak{0};

inline void add(void* p) {
#if defined(__GLIBC__)
    if (!p) return;
    const auto size = static_cast<long long>(malloc_usable_size(p));
    const long long now = live.fetch_add(size, std::memory_order_relaxed) + size;
    long long high = peak.load(std::memory_order_relaxed);
    while (now > high && !peak.compare_exchange_weak(high, now, std::memory_order_relaxed)) {
    }
#else
    (void)p;
#endif
}
inline void remove(void* p) {
#if defined(__GLIBC__)
    if (p) live.fetch_sub(static_cast<long long>(malloc_usable_size(p)), std::memory_order_relaxed);
#else
    (void)p;
#endif
}
// Starts a measurement: the peak restarts from what is live now.
inline long long start() {
    const long long now = live.load(std::memory_order_relaxed);
    peak.store(now, std::memory_order_relaxed);
    return now;
}
inline double peak_since(long long base) {
    return static_cast<double>(peak.load(std::memory_order_relaxed) - base);
}
constexpr bool counted() {
#if defined(__GLIBC__)
    return true;
#else
    return false;
#endif
}
}  // namespace heap

#if defined(__GLIBC__)
extern "C" {
void* __libc_malloc(std::size_t);
void __libc_free(void*);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);
void* __libc_valloc(std::size_t);
void* __libc_pvalloc(std::size_t);

void* malloc(std::size_t n) noexcept {
    void* p = __libc_malloc(n);
    heap::add(p);
    return p;
}
void free(void* p) noexcept {
    heap::remove(p);
    __libc_free(p);
}
void* calloc(std::size_t n, std::size_t size) noexcept {
    void* p = __libc_calloc(n, size);
    heap::add(p);
    return p;
}
void* realloc(void* p, std::size_t n) noexcept {
    const long long before = p ? static_cast<long long>(malloc_usable_size(p)) : 0;
    void* q = __libc_realloc(p, n);
    if (q || n == 0) heap::live.fetch_sub(before, std::memory_order_relaxed);
    heap::add(q);
    return q;
}
void* reallocarray(void* p, std::size_t n, std::size_t size) noexcept {
    if (size && n > std::numeric_limits<std::size_t>::max() / size) return nullptr;
    return realloc(p, n * size);
}
void* memalign(std::size_t align, std::size_t n) noexcept {
    void* p = __libc_memalign(align, n);
    heap::add(p);
    return p;
}
void* aligned_alloc(std::size_t align, std::size_t n) noexcept { return memalign(align, n); }
int posix_memalign(void** out, std::size_t align, std::size_t n) noexcept {
    void* p = memalign(align, n);
    if (!p) return 12;  // ENOMEM
    *out = p;
    return 0;
}
void* valloc(std::size_t n) noexcept {
    void* p = __libc_valloc(n);
    heap::add(p);
    return p;
}
void* pvalloc(std::size_t n) noexcept {
    void* p = __libc_pvalloc(n);
    heap::add(p);
    return p;
}
}
#endif

namespace {

constexpr int32_t kDof = 6;               // degrees of freedom per node
constexpr int32_t kSlots = 8;             // nodes per element
constexpr int32_t kLdes = kSlots * kDof;  // element matrices are (0:48, 0:48)
constexpr int32_t kNodmemRecord = 51;     // count and 50 members per node
constexpr int kDistinct = 8;              // distinct element matrices
constexpr int32_t kUpperPerElement = kLdes * (kLdes + 1) / 2;

template <class T>
std::unique_ptr<T[]> uninitialised(std::size_t n) {
    return std::unique_ptr<T[]>(new T[n]);
}

// Symmetric element matrices, rows stored one after another: diagonal 5 to
// 15, off-diagonal entries of either sign and magnitude 0.5 to 1.5, so that
// nothing falls below the storage cut-off.
struct ElementMatrices {
    std::vector<float> k;
    ElementMatrices() : k(static_cast<std::size_t>(kDistinct) * (kLdes + 1) * (kLdes + 1), 0.0f) {
        std::uint32_t s = 2024;
        for (int m = 0; m < kDistinct; ++m)
            for (int p = 1; p <= kLdes; ++p)
                for (int q = 1; q <= p; ++q) {
                    s = s * 1664525u + 1013904223u;
                    const float v = (p == q ? 10.0f : ((s >> 31) ? 1.0f : -1.0f)) *
                                    (0.5f + float(s >> 8) / float(1 << 24));
                    at(m, p, q) = v;
                    at(m, q, p) = v;
                }
    }
    float& at(int m, int p, int q) {
        return k[(static_cast<std::size_t>(m) * (kLdes + 1) + p) * (kLdes + 1) + q];
    }
    float* of(int32_t elem) {
        return k.data() + static_cast<std::size_t>(elem % kDistinct) * (kLdes + 1) * (kLdes + 1);
    }
};

ElementMatrices& element_matrices() {
    static ElementMatrices m;
    return m;
}

// A finished slab (one mid-side node per edge) and what every route shares.
struct Slab {
    SlabMesh mesh;
    int32_t nelem, nnode, neq;
    double element_sum = 0.0;  // sum of every coupling of every element, each once
#if defined(SHELLFE_HAVE_EIGEN)
    // The upper triangle, row-major, assembled by Eigen: the reference the
    // library's routes are compared with.
    Eigen::SparseMatrix<double, Eigen::RowMajor> reference;
#endif
    explicit Slab(int n) : mesh(n, n), nelem(mesh.nelem), nnode(mesh.nnode), neq(mesh.nnode * kDof) {
        for (int32_t e = 1; e <= nelem; ++e) {
            const float* k = element_matrices().of(e);
            for (int p = 1; p <= kLdes; ++p)
                for (int q = 1; q <= p; ++q) element_sum += double(k[p * (kLdes + 1) + q]);
        }
    }
    // 0-based global equations of the element's 48 positions.
    void equations(int32_t e, int32_t* eq) {
        for (int a = 1; a <= kSlots; ++a)
            for (int d = 1; d <= kDof; ++d) eq[(a - 1) * kDof + d - 1] = (mesh.node(a, e) - 1) * kDof + d - 1;
    }
};

Slab& slab(int n) {
    static std::map<int, std::unique_ptr<Slab>> cache;
    auto& s = cache[n];
    if (!s) s = std::make_unique<Slab>(n);
    return *s;
}

bool close_to(double a, double b, double tol) {
    return std::fabs(a - b) <= tol * std::max(1.0, std::fabs(b));
}

// ---- route 1: node matrices and compressed rows, in the host's order -------

struct CompressedRow {
    std::unique_ptr<int32_t[]> irowptr, icol;
    std::unique_ptr<double[]> val;
    int32_t nnz = 0, nrows = 0, nnzcnt = 0;
};

struct CompressedRowRoute {
    Slab& s;
    int32_t ldnm = 0;
    std::size_t capacity = 0;
    std::vector<int32_t> nodmem;  // FEMEMBERSTONODES1DOTNET records
    std::vector<int32_t> lists;   // per node: count, then neighbours >= node, ascending
    std::vector<std::size_t> list_at;
    std::vector<int32_t> locnod, ivisit, ifix, isprf, idofmap;
    std::vector<float> snode, spring, upres, fload;

    explicit CompressedRowRoute(Slab& slab_) : s(slab_), nodmem(kNodmemRecord * std::size_t(s.nnode + 1), 0) {
        int32_t maxmem = 0;
        FEMEMBERSTONODES1DOTNET(nullptr, &s.nelem, &maxmem, nodmem.data(), s.mesh.ielnod.data());
        list_at.resize(s.nnode + 1);
        std::vector<int32_t> near;
        int32_t widest = 0;
        for (int32_t n = 1; n <= s.nnode; ++n) {
            near.clear();
            const int32_t* rec = nodmem.data() + std::size_t(kNodmemRecord) * n;
            for (int32_t k = 1; k <= rec[0]; ++k)
                for (int a = 1; a <= kSlots; ++a)
                    if (const int32_t m = s.mesh.node(a, rec[k]); m >= n) near.push_back(m);
            std::sort(near.begin(), near.end());
            near.erase(std::unique(near.begin(), near.end()), near.end());
            list_at[n] = lists.size();
            lists.push_back(int32_t(near.size()));
            lists.insert(lists.end(), near.begin(), near.end());
            widest = std::max(widest, int32_t(near.size()));
            capacity += near.size() * kDof * kDof;
        }
        ldnm = widest * kDof;
        snode.assign(std::size_t(kDof + 1) * (ldnm + 1), 0.0f);
        locnod.assign(s.nnode + 1, 0);
        ivisit.assign(s.nnode + 1, -1);  // no springs to add
        ifix.assign(s.neq + 1, 0);
        upres.assign(s.neq + 1, 0.0f);
        fload.assign(s.neq + 1, 0.0f);
        isprf.assign(std::size_t(kDof) * (s.nnode + 1), 0);
        spring.assign(std::size_t(kDof) * s.nnode + kDof + 1, 0.0f);
        idofmap.resize(kDof + 1);
        std::iota(idofmap.begin(), idofmap.end(), 0);
    }

    CompressedRow assemble() {
        const int32_t nenod = kSlots, ndof = kDof, ldes = kLdes, ldsf = s.nnode, ldcn = s.mesh.ldcn;
        CompressedRow m;
        m.irowptr = uninitialised<int32_t>(std::size_t(s.neq) + 1);
        m.icol = uninitialised<int32_t>(capacity);
        m.val = uninitialised<double>(capacity);
        for (int32_t n = 1; n <= s.nnode; ++n) {
            const int32_t* nodlst = lists.data() + list_at[n];
            const int32_t c = nodlst[0];
            // Rows 1..6, each up to the last listed block.
            std::fill_n(snode.begin() + (ldnm + 1), std::size_t(kDof - 1) * (ldnm + 1) + c * kDof + 1, 0.0f);
            for (int32_t j = 1; j <= c; ++j) locnod[nodlst[j]] = j;
            const int32_t* rec = nodmem.data() + std::size_t(kNodmemRecord) * n;
            for (int32_t k = 1; k <= rec[0]; ++k) {
                const int32_t e = rec[k];
                BUILDALLNODESTIFFDLLDOTNET(
                    element_matrices().of(e), &n, &nenod, snode.data(), &e, spring.data(), ivisit.data(),
                    nullptr, s.mesh.ielnod.data(), isprf.data(), &ndof, &ndof, &ldes, &ldsf, &ldnm, nullptr,
                    &ldcn, nullptr, upres.data(), fload.data(), locnod.data(), &m.nnzcnt, idofmap.data());
            }
            for (int32_t r = 1; r <= kDof; ++r)
                ADDTOCRSSTIFFDLLDOTNET(&ndof, &ldnm, &m.nnz, m.irowptr.get(), m.icol.get(), nullptr, &m.nrows,
                                       ifix.data(), snode.data(), m.val.get(), nullptr, &r, nodlst, nullptr,
                                       &ndof);
        }
        m.irowptr[m.nrows] = m.nnz + 1;
        return m;
    }

    // Empty string when the matrix is the expected one.
    std::string check(const CompressedRow& m) const {
        // Every candidate is stored except the lower triangle of each
        // node's own block, which is never gathered.
        const std::size_t expected = capacity - std::size_t(s.nnode) * (kDof * (kDof - 1) / 2);
        if (m.nrows != s.neq || std::size_t(m.nnz) != expected) return "wrong number of rows or entries";
        double sum = 0.0;
        for (int32_t k = 0; k < m.nnz; ++k) sum += m.val[k];
        if (!close_to(sum, s.element_sum, 1e-6)) return "sum of entries differs from the element matrices";
#if defined(SHELLFE_HAVE_EIGEN)
        const auto& ref = s.reference;
        if (ref.nonZeros() != m.nnz) return "entry count differs from Eigen's";
        for (int32_t r = 0; r <= s.neq; ++r)
            if (m.irowptr[r] - 1 != ref.outerIndexPtr()[r]) return "row pointers differ from Eigen's";
        for (int32_t k = 0; k < m.nnz; ++k)
            if (m.icol[k] - 1 != ref.innerIndexPtr()[k] || !close_to(m.val[k], ref.valuePtr()[k], 1e-5))
                return "entries differ from Eigen's";
#endif
        return {};
    }
};

// ---- route 2: element by element into skyline storage ----------------------

struct SkylineRoute {
    Slab& s;
    std::vector<int32_t> numnod, idiag;
    std::vector<double> sky;
    int32_t nband = 0;
    std::int64_t profile = 0;

    explicit SkylineRoute(Slab& slab_) : s(slab_), numnod(s.nnode + 1, 0), idiag(s.neq + 2, 0) {
        // Number the nodes row by row (by y, then x): the host's way to a
        // narrow profile.
        std::vector<int32_t> order(s.nnode);
        std::iota(order.begin(), order.end(), 1);
        std::sort(order.begin(), order.end(), [&](int32_t a, int32_t b) {
            return s.mesh.y[a] != s.mesh.y[b] ? s.mesh.y[a] < s.mesh.y[b] : s.mesh.x[a] < s.mesh.x[b];
        });
        for (int32_t k = 0; k < s.nnode; ++k) numnod[order[k]] = k + 1;
        std::vector<int32_t> lowest(s.nnode + 1);
        std::iota(lowest.begin(), lowest.end(), 0);
        for (int32_t e = 1; e <= s.nelem; ++e) {
            int32_t low = s.nnode;
            for (int a = 1; a <= kSlots; ++a) low = std::min(low, numnod[s.mesh.node(a, e)]);
            for (int a = 1; a <= kSlots; ++a) {
                int32_t& l = lowest[numnod[s.mesh.node(a, e)]];
                l = std::min(l, low);
            }
        }
        // Column I holds rows from the first equation of its lowest
        // neighbour down to I; SKY(0) is not used.
        for (int32_t k = 1; k <= s.nnode; ++k)
            for (int32_t d = 1; d <= kDof; ++d) {
                const int32_t eq = (k - 1) * kDof + d, height = eq - (lowest[k] - 1) * kDof;
                profile += height;
                nband = std::max(nband, height);
                idiag[eq + 1] = int32_t(std::min<std::int64_t>(profile, std::numeric_limits<int32_t>::max()));
            }
        if (fits()) sky.assign(std::size_t(profile) + 1, 0.0);
    }
    // IDIAG is 32-bit: a profile beyond it cannot be addressed.
    bool fits() const { return profile < std::numeric_limits<int32_t>::max(); }

    void assemble() {
        const int32_t ndof = kDof, ldes = kLdes, nslot = kSlots, ldcn = s.mesh.ldcn;
        std::fill(sky.begin(), sky.end(), 0.0);
        for (int32_t e = 1; e <= s.nelem; ++e)
            ADDSHELLTOSDOTNET(element_matrices().of(e), s.mesh.ielnod.data(), nullptr, idiag.data(), &nband,
                              &ndof, sky.data(), numnod.data(), &e, &ldcn, nullptr, nullptr, &ldes, &nslot);
    }

    std::string check() const {
        const double sum = std::accumulate(sky.begin(), sky.end(), 0.0);
        if (!close_to(sum, s.element_sum, 1e-9)) return "sum of entries differs from the element matrices";
#if defined(SHELLFE_HAVE_EIGEN)
        const auto& ref = s.reference;
        for (int32_t r = 0; r < s.neq; ++r)
            for (auto k = ref.outerIndexPtr()[r]; k < ref.outerIndexPtr()[r + 1]; ++k) {
                const int32_t c = ref.innerIndexPtr()[k];
                const int32_t a = (numnod[r / kDof + 1] - 1) * kDof + r % kDof + 1;
                const int32_t b = (numnod[c / kDof + 1] - 1) * kDof + c % kDof + 1;
                const int32_t i = std::max(a, b), j = std::min(a, b);
                if (!close_to(sky[std::size_t(idiag[i + 1] - i + j)], ref.valuePtr()[k], 1e-12))
                    return "entries differ from Eigen's";
            }
#endif
        return {};
    }
};

// ---- route 3: Eigen's triplet assembly --------------------------------------

#if defined(SHELLFE_HAVE_EIGEN)
template <class Matrix>
Matrix eigen_assemble(Slab& s) {
    std::vector<Eigen::Triplet<double, int>> t;
    t.reserve(std::size_t(s.nelem) * kUpperPerElement);
    int32_t eq[kLdes];
    for (int32_t e = 1; e <= s.nelem; ++e) {
        const float* k = element_matrices().of(e);
        s.equations(e, eq);
        for (int p = 1; p <= kLdes; ++p)
            for (int q = 1; q <= p; ++q) {
                const int32_t i = eq[p - 1], j = eq[q - 1];
                t.emplace_back(std::min(i, j), std::max(i, j), double(k[p * (kLdes + 1) + q]));
            }
    }
    Matrix m(s.neq, s.neq);
    m.setFromTriplets(t.begin(), t.end());
    return m;
}
#endif

// ---- benchmarks ----------------------------------------------------------------

void publish_peak(benchmark::State& state, double peak) {
    if (heap::counted())
        state.counters["peak_heap"] =
            benchmark::Counter(peak, benchmark::Counter::kDefaults, benchmark::Counter::OneK::kIs1024);
}

// entries: what the matrix storage holds (for the skyline, its whole profile).
void publish(benchmark::State& state, double peak, double entries) {
    publish_peak(state, peak);
    state.counters["entries"] = entries;
}

Slab& prepared_slab(int n) {
    Slab& s = slab(n);
#if defined(SHELLFE_HAVE_EIGEN)
    if (s.reference.rows() == 0)
        s.reference = eigen_assemble<Eigen::SparseMatrix<double, Eigen::RowMajor>>(s);
#endif
    return s;
}

void crs_host_order(benchmark::State& state) {
    Slab& s = prepared_slab(int(state.range(0)));
    const long long base = heap::start();
    CompressedRowRoute route(s);
    int32_t nnz = 0;
    {
        const CompressedRow m = route.assemble();  // untimed, checked
        if (const std::string why = route.check(m); !why.empty()) state.SkipWithError(why.c_str());
        nnz = m.nnz;
    }
    for (auto _ : state) {
        CompressedRow m = route.assemble();
        benchmark::DoNotOptimize(m.val.get());
        benchmark::ClobberMemory();
    }
    publish(state, heap::peak_since(base), nnz);
}

void skyline(benchmark::State& state) {
    Slab& s = prepared_slab(int(state.range(0)));
    const long long base = heap::start();
    SkylineRoute route(s);
    if (!route.fits()) {
        const std::string why = "profile of " + std::to_string(route.profile) +
                                " entries is beyond a 32-bit IDIAG (" +
                                std::to_string(route.profile * 8 >> 30) + " GiB)";
        state.SkipWithError(why.c_str());
        return;
    }
    route.assemble();
    if (const std::string why = route.check(); !why.empty()) state.SkipWithError(why.c_str());
    for (auto _ : state) {
        route.assemble();
        benchmark::DoNotOptimize(route.sky.data());
        benchmark::ClobberMemory();
    }
    publish(state, heap::peak_since(base), double(route.profile));
}

#if defined(SHELLFE_HAVE_EIGEN)
void eigen_triplets(benchmark::State& state) {
    Slab& s = prepared_slab(int(state.range(0)));
    const long long base = heap::start();
    double nnz = 0;
    eigen_assemble<Eigen::SparseMatrix<double>>(s);  // warms the allocator
    for (auto _ : state) {
        Eigen::SparseMatrix<double> m = eigen_assemble<Eigen::SparseMatrix<double>>(s);
        benchmark::DoNotOptimize(m.valuePtr());
        benchmark::ClobberMemory();
        nnz = double(m.nonZeros());
    }
    publish(state, heap::peak_since(base), nnz);
}
#endif

// ---- node merging ----------------------------------------------------------------

// The slab as a panel mesher leaves it: every element with its own four
// mid-side nodes, numbered after the corners, so that each interior edge
// has two coincident ones.
struct UnmergedSlab {
    int n;
    SlabMesh mesh;
    std::vector<int32_t> slots, nodmem, idel, expected_slots, expected_idel;
    std::vector<float> xyz, xyp;  // rows x, y, z / rows -, x, y
    int32_t merged = 0;

    explicit UnmergedSlab(int n_)
        : n(n_),
          mesh(n_, n_, 1.0f, false),
          slots(mesh.ielnod),
          nodmem(kNodmemRecord * std::size_t(mesh.nnode + 1), 0),
          idel(mesh.nnode + 1, 0),
          expected_slots(mesh.ielnod),
          expected_idel(mesh.nnode + 1, 0),
          xyz(3 * std::size_t(mesh.nnode + 1), 0.0f),
          xyp(3 * std::size_t(mesh.nnode + 1), 0.0f) {
        int32_t maxmem = 0;
        FEMEMBERSTONODES1DOTNET(nullptr, &mesh.nelem, &maxmem, nodmem.data(), mesh.ielnod.data());
        const std::size_t row = mesh.nnode + 1;
        for (int32_t k = 1; k <= mesh.nnode; ++k) {
            xyz[k] = xyp[row + k] = mesh.x[k];
            xyz[row + k] = xyp[2 * row + k] = mesh.y[k];
        }
        // Each interior edge: the two elements' mid-side slots both name the
        // lower of their two nodes, and the higher one is merged away.
        auto slot = [&](std::vector<int32_t>& t, int s, int e) -> int32_t& {
            return t[std::size_t(s) * (mesh.ldcn + 1) + e];
        };
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) {
                const int e = 1 + i + j * n;
                auto pair = [&](int s, int other, int other_slot) {
                    const int32_t a = mesh.node(s, e), b = mesh.node(other_slot, other);  // a < b
                    slot(expected_slots, other_slot, other) = a;
                    expected_idel[b] = -1;
                    ++merged;
                };
                if (i + 1 < n) pair(4, e + 1, 8);  // right edge, left edge of the next
                if (j + 1 < n) pair(6, e + n, 2);  // top edge, bottom edge of the one above
            }
    }
    void reset() {
        std::fill(idel.begin(), idel.end(), 0);
        slots = mesh.ielnod;
    }
    std::string check() const {
        const auto count = std::count(idel.begin(), idel.end(), -1);
        if (count != merged || count != 2 * n * (n - 1)) return "wrong number of merged nodes";
        if (idel != expected_idel || slots != expected_slots) return "wrong nodes merged or slots redirected";
        return {};
    }
};

UnmergedSlab& unmerged_slab(int n) {
    static std::map<int, std::unique_ptr<UnmergedSlab>> cache;
    auto& s = cache[n];
    if (!s) s = std::make_unique<UnmergedSlab>(n);
    return *s;
}

template <class Merge>
void merge(benchmark::State& state, Merge run) {
    UnmergedSlab& s = unmerged_slab(int(state.range(0)));
    s.reset();
    const long long base = heap::start();
    run(s);
    const double peak = heap::peak_since(base);
    if (const std::string why = s.check(); !why.empty()) state.SkipWithError(why.c_str());
    for (auto _ : state) {
        state.PauseTiming();
        s.reset();
        state.ResumeTiming();
        run(s);
        benchmark::ClobberMemory();
    }
    publish_peak(state, peak);
    state.counters["nodes"] = s.mesh.nnode;
    state.counters["merged"] = s.merged;
}

void coincident_nodes(benchmark::State& state) {
    merge(state, [](UnmergedSlab& s) {
        const int32_t nnode = s.mesh.nnode, nmem = s.mesh.nelem, ldnmem = kNodmemRecord - 1;
        PACKNODFE1DOTNET(s.idel.data(), s.nodmem.data(), &nnode, s.slots.data(), &nmem, &ldnmem,
                         s.xyz.data());
    });
}

void midside_nodes(benchmark::State& state) {
    merge(state, [](UnmergedSlab& s) {
        const int32_t nbase = s.mesh.ncorner, ntot = s.mesh.nnode, ldel = s.mesh.ldcn;
        const float tolm = 1.0e-3f;
        PACKMESHNODESDOTNET(s.idel.data(), &nbase, &ntot, s.xyp.data(), s.slots.data(), &ldel, &tolm);
    });
}

// Few iterations: one assembly at N = 200 takes seconds by some routes.
int assembly_iterations(int n) { return n <= 50 ? 10 : n <= 100 ? 4 : 2; }
int merge_iterations(int n) { return n <= 50 ? 40 : n <= 100 ? 10 : 4; }

template <class Fn>
void register_sizes(const char* name, Fn fn, int (*iterations)(int)) {
    for (int n : {50, 100, 200})
        benchmark::RegisterBenchmark(name, fn)
            ->Arg(n)
            ->Iterations(iterations(n))
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
}

[[maybe_unused]] const bool registered = [] {
#if defined(__GLIBC__)
    // Every block from the heap proper, and freed memory kept for reuse.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
#endif
    register_sizes("crs_host_order", crs_host_order, assembly_iterations);
    register_sizes("skyline_ADDSHELLTOSDOTNET", skyline, assembly_iterations);
#if defined(SHELLFE_HAVE_EIGEN)
    register_sizes("eigen_setFromTriplets", eigen_triplets, assembly_iterations);
#endif
    register_sizes("PACKNODFE1DOTNET", coincident_nodes, merge_iterations);
    register_sizes("PACKMESHNODESDOTNET", midside_nodes, merge_iterations);
    return true;
}();

}  // namespace

BENCHMARK_MAIN();
