// Square dense products, n = 8 .. 512: shellfe against the plain triple
// loop and against single-threaded OpenBLAS (which may fuse and reorder;
// shellfe keeps every product rounded and every sum in order).
//
//   cmake -S . -B build-bench -DSHELLFE_BUILD_BENCHMARKS=ON && cmake --build build-bench -j2
//   build-bench/bin/bench_dense_products
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "shellfe.h"

#if defined(SHELLFE_HAVE_OPENBLAS)
#include <cblas.h>
extern "C" void openblas_set_num_threads(int);
#endif

namespace {

template <class T>
struct Operands {
    int32_t n;
    std::vector<T> a, b, c;  // each (0:n, 0:n)
    explicit Operands(int32_t n_) : n(n_), a(size(n_)), b(size(n_)), c(size(n_)) {
        std::uint32_t s = 12345;
        for (auto* v : {&a, &b})
            for (T& x : *v) {
                s = s * 1664525u + 1013904223u;
                x = T(s >> 8) / T(1 << 24) - T(0.5);
            }
    }
    static size_t size(int32_t n) { return static_cast<size_t>(n + 1) * static_cast<size_t>(n + 1); }
};

void report(benchmark::State& state, int32_t n) {
    const double flops = 2.0 * n * n * n;
    state.counters["GFLOP/s"] = benchmark::Counter(flops * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

template <class T>
void shellfe_product(benchmark::State& state) {
    Operands<T> op(static_cast<int32_t>(state.range(0)));
    for (auto _ : state) {
        if constexpr (sizeof(T) == 4) MATMULDLLDOTNET(op.a.data(), op.b.data(), op.c.data(), &op.n, &op.n, &op.n);
        else MATMULDOUBLEDLLDOTNET(op.a.data(), op.b.data(), op.c.data(), &op.n, &op.n, &op.n);
        benchmark::DoNotOptimize(op.c.data());
        benchmark::ClobberMemory();
    }
    report(state, op.n);
}

// What a host would write by hand: the same loop order, no blocking.
template <class T>
void naive_product(benchmark::State& state) {
    Operands<T> op(static_cast<int32_t>(state.range(0)));
    const ptrdiff_t ld = op.n + 1;
    for (auto _ : state) {
        for (ptrdiff_t i = 1; i <= op.n; ++i) {
            T* c = op.c.data() + i * ld;
            for (ptrdiff_t j = 1; j <= op.n; ++j) c[j] = T(0);
            for (ptrdiff_t t = 1; t <= op.n; ++t) {
                const T s = op.a[t + i * ld];
                const T* b = op.b.data() + t * ld;
                for (ptrdiff_t j = 1; j <= op.n; ++j) c[j] = c[j] + s * b[j];
            }
        }
        benchmark::DoNotOptimize(op.c.data());
        benchmark::ClobberMemory();
    }
    report(state, op.n);
}

#if defined(SHELLFE_HAVE_OPENBLAS)
template <class T>
void openblas_product(benchmark::State& state) {
    openblas_set_num_threads(1);
    Operands<T> op(static_cast<int32_t>(state.range(0)));
    const int n = op.n, ld = op.n + 1;
    // The same entries: C(1:n, 1:n) = B(1:n, 1:n) * A(1:n, 1:n), column-major.
    const T* a = op.a.data() + 1 + ld;
    const T* b = op.b.data() + 1 + ld;
    T* c = op.c.data() + 1 + ld;
    for (auto _ : state) {
        if constexpr (sizeof(T) == 4)
            cblas_sgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0f, b, ld, a, ld, 0.0f, c, ld);
        else
            cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, b, ld, a, ld, 0.0, c, ld);
        benchmark::DoNotOptimize(c);
        benchmark::ClobberMemory();
    }
    report(state, op.n);
}
#endif

void sizes(benchmark::internal::Benchmark* b) {
    for (int n : {8, 16, 32, 64, 128, 256, 512}) b->Arg(n);
}

BENCHMARK(shellfe_product<float>)->Name("MATMULDLLDOTNET")->Apply(sizes);
BENCHMARK(naive_product<float>)->Name("naive_float")->Apply(sizes);
BENCHMARK(shellfe_product<double>)->Name("MATMULDOUBLEDLLDOTNET")->Apply(sizes);
BENCHMARK(naive_product<double>)->Name("naive_double")->Apply(sizes);
#if defined(SHELLFE_HAVE_OPENBLAS)
BENCHMARK(openblas_product<float>)->Name("openblas_sgemm")->Apply(sizes);
BENCHMARK(openblas_product<double>)->Name("openblas_dgemm")->Apply(sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
