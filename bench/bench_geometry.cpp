// The plane geometry of the triangulating mesher: the orientation predicate
// per call, the triangle-acceptance test over whole edge lists and the
// near-node search over a node table.
//
//   cmake -S . -B build-bench -DSHELLFE_BUILD_BENCHMARKS=ON -DSHELLFE_BUILD_TESTS=OFF
//   cmake --build build-bench -j2
//   build-bench/bin/bench_geometry --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
//
// ORIENT2D is timed per call on 4,096 prepared point triples, cycled
// through so that the branch predictor cannot learn one triple:
//   random          uniform in [-1, 1]^2: settled by the plain determinant;
//   near_collinear  (0.5 + i u, 0.5 + j u), i != j, 0 <= i, j < 64, u the
//                   spacing of doubles at 0.5, against the line through
//                   (12, 12) and (24, 24), the three points in every role;
//   collinear       three points t (p, q) exactly on a line through the
//                   origin, p and q small integers and t of 49 significant
//                   bits in binades at least six apart, so that every
//                   coordinate difference rounds and the exact stage has
//                   work to do.
// Each set counts up front, with the library's own predicate compiled into
// this program, which stage settles its triples: the counters stage_A ..
// stage_D are fractions of the set. plain_determinant is the determinant
// alone, with ORIENT2D's calling convention (a function the compiler may
// not inline, taking the three points by pointer), for the cost of the
// robustness.
//
// CHECKNEWTRIANG scans a whole edge list for an accepted candidate: the
// boundary of a regular polygon of E/2 edges, a ring of E/4 edges inside it
// and E/4 spokes joining the two, the candidate standing on the first
// boundary edge with its apex half an edge length inward. GETNEARNODES
// searches a jittered 100 x 100 grid of nodes listed once each in random
// order (NCOL = 1), or named by the 19,800 grid edges (NCOL = 2, every node
// two to four times), for the ten nodes nearest to the middle of a base edge
// in the middle of the grid. Both check their result once before timing.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "geometry/orientation.hpp"
#include "shellfe.h"

namespace {

// The constants as a host computes them.
struct Constants {
    double eps = 0x1p-53;
    double a = (3.0 + 16.0 * eps) * eps;
    double b = (2.0 + 12.0 * eps) * eps;
    double c = (9.0 + 64.0 * eps) * eps * eps;
    double splitter = 0x1p27 + 1.0;
    double result = (3.0 + 8.0 * eps) * eps;
};
const Constants K;

struct Triple {
    double a[2], b[2], c[2];
};

constexpr size_t kTriples = 4096;  // a power of two: the cycle is a mask

// The three points of t in one of the six orders.
Triple permuted(const Triple& t, int order) {
    const double* p[3] = {t.a, t.b, t.c};
    static const int perm[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {1, 0, 2}, {0, 2, 1}, {2, 1, 0}};
    const int* o = perm[order % 6];
    return {{p[o[0]][0], p[o[0]][1]}, {p[o[1]][0], p[o[1]][1]}, {p[o[2]][0], p[o[2]][1]}};
}

std::vector<Triple> random_triples() {
    std::mt19937_64 gen(1);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<Triple> v(kTriples);
    for (Triple& t : v) t = {{u(gen), u(gen)}, {u(gen), u(gen)}, {u(gen), u(gen)}};
    return v;
}

std::vector<Triple> near_collinear_triples() {
    std::mt19937_64 gen(2);
    std::uniform_int_distribution<int> step(0, 63), order(0, 5);
    std::vector<Triple> v(kTriples);
    for (Triple& t : v) {
        int i, j;
        do {
            i = step(gen);
            j = step(gen);
        } while (i == j);
        const Triple base = {{0.5 + i * 0x1p-53, 0.5 + j * 0x1p-53}, {12.0, 12.0}, {24.0, 24.0}};
        t = permuted(base, order(gen));
    }
    return v;
}

std::vector<Triple> collinear_triples() {
    std::mt19937_64 gen(3);
    std::uniform_int_distribution<int> slope(1, 9), binade(0, 4), order(0, 5);
    std::uniform_int_distribution<std::int64_t> bits(std::int64_t{1} << 48, (std::int64_t{1} << 49) - 1);
    std::vector<Triple> v(kTriples);
    for (Triple& t : v) {
        const double p = slope(gen), q = -slope(gen);
        // Binades at least six apart: every difference of two of them
        // needs more than 53 bits.
        double s[3];
        for (int k = 0; k < 3; ++k) s[k] = std::ldexp(static_cast<double>(bits(gen)), 10 * k - 15 + binade(gen) - 48);
        // t p and t q are exact: 49 bits times at most 4 bits.
        t = permuted({{s[0] * p, s[0] * q}, {s[1] * p, s[1] * q}, {s[2] * p, s[2] * q}}, order(gen));
    }
    return v;
}

// The fraction of the set that each stage settles, as counters; also
// checks what every set promises about its signs.
std::string count_stages(benchmark::State& state, const std::vector<Triple>& set, int want_sign) {
    const shellfe::PredicateConstants k{K.a, K.b, K.c, K.splitter, K.result};
    std::array<double, 5> n{};
    for (const Triple& t : set) {
        int stage = 0;
        const double o = shellfe::orientation({t.a[0], t.a[1]}, {t.b[0], t.b[1]}, {t.c[0], t.c[1]}, k, &stage);
        if (want_sign == 0 && o != 0.0) return "a collinear triple did not give 0";
        if (want_sign != 0 && o == 0.0) return "a triple off the line gave 0";
        n[static_cast<size_t>(stage)] += 1.0;
    }
    const char* names[5] = {"", "stage_A", "stage_B", "stage_C", "stage_D"};
    for (int s = 1; s <= 4; ++s) state.counters[names[s]] = n[static_cast<size_t>(s)] / static_cast<double>(set.size());
    return {};
}

const std::vector<Triple>& triple_set(int which) {
    static const std::vector<Triple> sets[3] = {random_triples(), near_collinear_triples(), collinear_triples()};
    return sets[which];
}
const int kSign[3] = {1, 1, 0};  // 1: none collinear, 0: all collinear

void orient2d(benchmark::State& state, int which) {
    const std::vector<Triple>& set = triple_set(which);
    if (const std::string why = count_stages(state, set, kSign[which]); !why.empty()) {
        state.SkipWithError(why.c_str());
        return;
    }
    size_t i = 0;
    for (auto _ : state) {
        const Triple& t = set[i++ & (kTriples - 1)];
        const double o = ORIENT2D(t.a, t.b, t.c, &K.a, &K.b, &K.c, &K.splitter, &K.result);
        benchmark::DoNotOptimize(o);
    }
}

// The determinant with no error bound, called as ORIENT2D is.
[[gnu::noinline]] double plain_determinant(const double* pa, const double* pb, const double* pc) {
    return (pa[0] - pc[0]) * (pb[1] - pc[1]) - (pa[1] - pc[1]) * (pb[0] - pc[0]);
}

void plain(benchmark::State& state, int which) {
    const std::vector<Triple>& set = triple_set(which);
    size_t i = 0;
    for (auto _ : state) {
        const Triple& t = set[i++ & (kTriples - 1)];
        const double o = plain_determinant(t.a, t.b, t.c);
        benchmark::DoNotOptimize(o);
    }
}

// ---- triangle acceptance over an edge list ----------------------------------

struct EdgeList {
    int32_t nedge, lde, ldn;
    std::vector<double> xy;      // (LDN+1, 3) from 1
    std::vector<int32_t> edges;  // (0:LDE, 1:2)
    double apex[2];
};

EdgeList polygon_front(int32_t nedge) {
    const int32_t nouter = nedge / 2, ninner = nedge / 4, nnode = nouter + ninner;
    EdgeList m;
    m.nedge = nedge;
    m.lde = nedge - 1;
    m.ldn = nnode - 1;
    m.xy.assign(3 * static_cast<size_t>(nnode), 0.0);
    const double pi = 3.14159265358979323846;
    auto put = [&](int32_t node, double r, double angle) {
        m.xy[static_cast<size_t>(node - 1)] = r * std::cos(angle);
        m.xy[static_cast<size_t>(node - 1 + nnode)] = r * std::sin(angle);
    };
    for (int32_t k = 0; k < nouter; ++k) put(1 + k, 1.0, 2.0 * pi * k / nouter);
    for (int32_t k = 0; k < ninner; ++k) put(1 + nouter + k, 0.8, 2.0 * pi * k / ninner);
    m.edges.assign(2 * static_cast<size_t>(nedge), 0);
    int32_t row = 0;
    auto edge = [&](int32_t c, int32_t d) {
        m.edges[static_cast<size_t>(row)] = c;
        m.edges[static_cast<size_t>(row + nedge)] = d;
        ++row;
    };
    for (int32_t k = 0; k < nouter; ++k) edge(1 + k, 1 + (k + 1) % nouter);            // boundary, counter-clockwise
    for (int32_t k = 0; k < ninner; ++k) edge(1 + nouter + (k + 1) % ninner, 1 + nouter + k);  // inner ring
    for (int32_t k = 0; k < ninner && row < nedge; ++k) edge(1 + nouter + k, 1 + 2 * k);       // spokes
    while (row < nedge) edge(1 + nouter, 1 + nouter + 1);  // E not a multiple of 4: a repeated inner edge
    // Half an edge length inward from the middle of edge 0 (nodes 1 -> 2).
    const size_t y0 = static_cast<size_t>(nnode);
    const double mx = 0.5 * (m.xy[0] + m.xy[1]), my = 0.5 * (m.xy[y0] + m.xy[y0 + 1]);
    const double len = 2.0 * std::sin(pi / nouter), r = std::hypot(mx, my);
    m.apex[0] = mx * (1.0 - 0.5 * len / r);
    m.apex[1] = my * (1.0 - 0.5 * len / r);
    return m;
}

void checknewtriang(benchmark::State& state) {
    const EdgeList m = polygon_front(static_cast<int32_t>(state.range(0)));
    const int32_t iedge = 0, nodex = -1;
    const double lentol = 1e-9, partol = 1e-9, ontol = 1e-12;
    auto call = [&] {
        return CHECKNEWTRIANG(&iedge, &nodex, m.apex, m.xy.data(), &m.nedge, m.edges.data(), &K.a, &K.b, &K.c,
                              &K.splitter, &m.lde, &m.ldn, &lentol, &partol, &ontol, &K.result);
    };
    if (call() != 1) {
        state.SkipWithError("the candidate was not accepted: the list would not be scanned whole");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(call());
    state.SetItemsProcessed(state.iterations() * m.nedge);  // edges per second
}

// ---- near-node search over a node table -------------------------------------

struct NodeTable {
    int32_t nrow, ldt, ldn, ncol, na, nb;
    std::vector<double> xy;
    std::vector<int32_t> table;  // (0:LDT, 1:NCOL)
    double p[2];
};

NodeTable grid_table(int32_t ncol) {
    constexpr int32_t side = 100, nnode = side * side;
    NodeTable t;
    t.ldn = nnode - 1;
    t.ncol = ncol;
    t.xy.assign(3 * static_cast<size_t>(nnode), 0.0);
    std::mt19937_64 gen(4);
    std::uniform_real_distribution<double> jitter(-0.25, 0.25);
    const auto node = [&](int32_t i, int32_t j) { return 1 + i + side * j; };
    for (int32_t j = 0; j < side; ++j)
        for (int32_t i = 0; i < side; ++i) {
            t.xy[static_cast<size_t>(node(i, j) - 1)] = i + jitter(gen);
            t.xy[static_cast<size_t>(node(i, j) - 1 + nnode)] = j + jitter(gen);
        }
    std::vector<std::array<int32_t, 2>> rows;
    if (ncol == 1) {
        for (int32_t n = 1; n <= nnode; ++n) rows.push_back({n, 0});
    } else {
        for (int32_t j = 0; j < side; ++j)
            for (int32_t i = 0; i < side; ++i) {
                if (i + 1 < side) rows.push_back({node(i, j), node(i + 1, j)});
                if (j + 1 < side) rows.push_back({node(i, j), node(i, j + 1)});
            }
    }
    std::shuffle(rows.begin(), rows.end(), gen);
    t.nrow = static_cast<int32_t>(rows.size());
    t.ldt = t.nrow - 1;
    t.table.assign(static_cast<size_t>(t.nrow) * static_cast<size_t>(ncol), 0);
    for (int32_t k = 0; k < t.nrow; ++k)
        for (int32_t c = 0; c < ncol; ++c)
            t.table[static_cast<size_t>(k + c * t.nrow)] = rows[static_cast<size_t>(k)][static_cast<size_t>(c)];
    t.na = node(50, 50);
    t.nb = node(51, 50);
    t.p[0] = 0.5 * (t.xy[static_cast<size_t>(t.na - 1)] + t.xy[static_cast<size_t>(t.nb - 1)]);
    t.p[1] = 0.5 * (t.xy[static_cast<size_t>(t.na - 1 + nnode)] + t.xy[static_cast<size_t>(t.nb - 1 + nnode)]) + 0.5;
    return t;
}

void getnearnodes(benchmark::State& state) {
    const NodeTable t = grid_table(static_cast<int32_t>(state.range(0)));
    const int32_t kmax = 10;
    const double radius = 1.0;
    std::vector<int32_t> nearl(kmax);
    int32_t nwithin = 0, nnear = 0;
    auto call = [&] {
        nnear = 0;
        return GETNEARNODES(&t.na, &t.nb, t.p, t.xy.data(), &t.nrow, t.table.data(), &radius, &nwithin, &nnear,
                            nearl.data(), &K.a, &K.b, &K.c, &K.splitter, &t.ldt, &t.ldn, &K.result, &kmax, &t.ncol);
    };
    // Untimed check: the ten nearest nodes on the left, by brute force.
    const int32_t got = call();
    std::vector<std::pair<double, int32_t>> all;
    const size_t nn = static_cast<size_t>(t.ldn) + 1;
    const double ax = t.xy[static_cast<size_t>(t.na - 1)], ay = t.xy[static_cast<size_t>(t.na - 1) + nn];
    const double bx = t.xy[static_cast<size_t>(t.nb - 1)], by = t.xy[static_cast<size_t>(t.nb - 1) + nn];
    for (int32_t n = 1; n <= static_cast<int32_t>(nn); ++n) {
        const double x = t.xy[static_cast<size_t>(n - 1)], y = t.xy[static_cast<size_t>(n - 1) + nn];
        if (n == t.na || n == t.nb || (bx - ax) * (y - ay) - (by - ay) * (x - ax) < 0.0) continue;
        all.push_back({std::hypot(x - t.p[0], y - t.p[1]), n});
    }
    std::sort(all.begin(), all.end());
    bool same = got == kmax;
    for (size_t k = 0; same && k < static_cast<size_t>(kmax); ++k) same = nearl[k] == all[k].second;
    if (!same) {
        state.SkipWithError("the near nodes differ from the brute-force ten nearest");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(call());
    state.SetItemsProcessed(state.iterations() * t.nrow * t.ncol);  // table entries per second
    state.counters["within"] = nwithin;
}

BENCHMARK_CAPTURE(orient2d, random, 0)->Name("ORIENT2D/random");
BENCHMARK_CAPTURE(orient2d, near_collinear, 1)->Name("ORIENT2D/near_collinear");
BENCHMARK_CAPTURE(orient2d, collinear, 2)->Name("ORIENT2D/collinear");
BENCHMARK_CAPTURE(plain, random, 0)->Name("plain_determinant/random");
BENCHMARK_CAPTURE(plain, near_collinear, 1)->Name("plain_determinant/near_collinear");
BENCHMARK_CAPTURE(plain, collinear, 2)->Name("plain_determinant/collinear");
BENCHMARK(checknewtriang)->Name("CHECKNEWTRIANG")->ArgNames({"edges"})->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(getnearnodes)->Name("GETNEARNODES/10000_nodes_kmax10")->ArgNames({"ncol"})->Arg(1)->Arg(2);

}  // namespace

BENCHMARK_MAIN();
