// Element stiffness throughput: elements per second and floating-point
// operations per second of the membrane and plate element routines.
//
//   cmake -S . -B build-bench -DSHELLFE_BUILD_BENCHMARKS=ON && cmake --build build-bench -j2
//   build-bench/bin/bench_elements
//
// FLOP per element is counted by analysis of what the routines execute
// (every float or double add, subtract, multiply and divide once; negations,
// sine and cosine not counted), including the products with the zero entries
// of the strain-displacement vectors, which the routines form like any other.
// The plate element runs through both routes, the compatible single-precision
// routines and the double-precision extension, on the same element.
// The membrane element is also compared with what a host would otherwise
// write around the library: tabulated shape functions, the Jacobian routine,
// the material routine and two dense products per point into a full matrix.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "shellfe.h"

namespace {

// A host array (0:L, 0:M), column-major, of the compatible routines' float
// or the double route's double.
template <class Real>
struct ArrayOf {
    int32_t L;
    std::vector<Real> v;
    ArrayOf(int32_t l, int32_t m) : L(l), v(static_cast<size_t>(l + 1) * static_cast<size_t>(m + 1), Real(0)) {}
    Real& operator()(int a, int b = 0) { return v[static_cast<size_t>(a) + static_cast<size_t>(b) * (L + 1)]; }
    Real* data() { return v.data(); }
    template <class To>
    ArrayOf<To> as() const {
        ArrayOf<To> out(L, static_cast<int32_t>(v.size() / (L + 1)) - 1);
        for (size_t i = 0; i < v.size(); ++i) out.v[i] = static_cast<To>(v[i]);
        return out;
    }
};
using Array = ArrayOf<float>;

struct Rule {
    Array pos{2, 6}, wei{2, 6};
    explicit Rule(int n) {
        if (n == 2) {
            const float a = 1.0f / std::sqrt(3.0f);
            pos(1, 1) = -a, pos(1, 2) = a, wei(1, 1) = 1.0f, wei(1, 2) = 1.0f;
        } else {
            const float a = std::sqrt(0.6f);
            pos(1, 1) = -a, pos(1, 2) = 0.0f, pos(1, 3) = a;
            wei(1, 1) = 5.0f / 9.0f, wei(1, 2) = 8.0f / 9.0f, wei(1, 3) = 5.0f / 9.0f;
        }
        pos(2, 1) = 1.0f / 3.0f, pos(2, 2) = 1.0f / 3.0f, wei(2, 1) = 0.5f;  // triangle centroid
    }
};

// Straight-sided skewed quadrilateral (8 nodes) or triangle (3 nodes).
Array geometry(int nnode) {
    Array xy(9, 2);
    if (nnode == 3) {
        xy(1, 1) = 2.0f, xy(1, 2) = 0.2f, xy(2, 1) = 0.4f, xy(2, 2) = 1.7f;
        return xy;
    }
    const float c[4][2] = {{0.0f, 0.0f}, {2.2f, 0.3f}, {2.6f, 2.4f}, {-0.2f, 1.9f}};
    for (int i = 0; i < 4; ++i) {
        const float* a = c[i];
        const float* b = c[(i + 1) % 4];
        xy(2 * i + 1, 1) = a[0], xy(2 * i + 1, 2) = a[1];
        xy(2 * i + 2, 1) = 0.5f * (a[0] + b[0]), xy(2 * i + 2, 2) = 0.5f * (a[1] + b[1]);
    }
    return xy;
}

// Material row 1: orthotropic, axes turned by 30 degrees. Layer table: one
// homogeneous layer, which takes the general layered path.
struct Model {
    Array prop{1, 17}, play{1, 17}, zlay{2, 0}, tnode{1, 9};
    Model() {
        for (Array* t : {&prop, &play}) {
            (*t)(1, 1) = 30000.0f, (*t)(1, 2) = 0.2f, (*t)(1, 8) = 18000.0f, (*t)(1, 9) = 9000.0f;
            (*t)(1, 10) = 9000.0f, (*t)(1, 11) = 8000.0f, (*t)(1, 17) = 30.0f;
        }
        zlay(1) = -0.1f, zlay(2) = 0.1f;
        for (int k = 1; k <= 9; ++k) tnode(1, k) = 0.2f;
    }
};

// ---- operation counts ---------------------------------------------------

// Per point, common to all element routines: shape functions, weight,
// Jacobian (8 per geometry node, 3 for the determinant, 4 divisions),
// Cartesian derivatives (8 per node), integration factor, thickness.
double point_flops(int nnode, bool triangle) {
    const double shape = triangle ? 2.0 : 113.0;  // 3-node triangle : 8-node quadrilateral
    const double weight = triangle ? 0.0 : 1.0;
    const int ngeo = nnode == 9 ? 8 : nnode;
    return shape + weight + (8.0 * ngeo + 7.0) + 8.0 * nnode + 1.0 + 2.0 * nnode;
}

// Membrane, per point: B D (5 per entry of 2*nnode x 3), s and s*B (1 + 3n),
// and three multiply-adds for each of the n(n+1)/2 lower-triangle entries.
double membrane_flops(int nnode, bool triangle, int points) {
    const double n = 2.0 * nnode;
    const double per_point = point_flops(nnode, triangle) + 15.0 * n + 1.0 + 3.0 * n + 3.0 * n * (n + 1.0);
    const double material = 66.0;  // rotated plane-stress matrix, once per element
    return material + points * per_point;
}

// Plate, per point: layered rigidities of one layer, the products D g for
// each node's three degrees of freedom, and for every node pair j >= i the
// nine block entries (nc multiplies, nc - 1 adds) and their updates.
double plate_flops(int nnode, bool triangle, int points, int nc) {
    const double pairs = nnode * (nnode + 1) / 2.0;
    const double rigidities = nc == 3 ? 98.0 : 26.0;
    const double products = 3.0 * nc * nnode * (2.0 * nc - 1.0);
    const double blocks = pairs * 9.0 * ((2.0 * nc - 1.0) + 2.0);
    return points * (point_flops(nnode, triangle) + rigidities + products + blocks);
}

void report(benchmark::State& state, double flops) {
    state.counters["elements/s"] = benchmark::Counter(1.0, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["FLOP/element"] = flops;
    state.counters["FLOP/s"] = benchmark::Counter(flops, benchmark::Counter::kIsIterationInvariantRate);
}

// ---- the library's element routines --------------------------------------

// ESTIF is not cleared between iterations (a host clears it per element);
// the sums stay finite and the work per call is the same.
void membrane(benchmark::State& state) {
    const int nnode = static_cast<int>(state.range(0));
    const bool triangle = nnode == 3;
    Rule rule(3);
    Model m;
    Array xy = geometry(nnode), estif(18, 18);
    int32_t ngpx = triangle ? 1 : 3, ngpy = triangle ? 1 : 3, ntype = triangle ? 6 : 1;
    int32_t ngpt = 0, iel = 1, nn = nnode, imat = 1, nelem = 1, nmat = 1, nnodt = nnode;
    float detj = 0.0f;
    for (auto _ : state) {
        STIFFP003DOTNET(&ngpx, &ngpy, &ntype, rule.pos.data(), &ngpt, &iel, &nn, xy.data(),
                        m.tnode.data(), nullptr, &imat, m.prop.data(), rule.wei.data(), nullptr,
                        &nelem, &nmat, nullptr, nullptr, &nnodt, estif.data(), &detj);
        benchmark::DoNotOptimize(estif.data());
        benchmark::ClobberMemory();
    }
    report(state, membrane_flops(nnode, triangle, ngpx * ngpy));
}

// Calls the compatible routine with float arrays, or its double-precision
// mirror, which takes the layer formulas' OPTIONS last (0 here, the
// compatible formulas), with double arrays.
template <class Compatible, class Mirror, class... A>
void either_route(Compatible compatible, Mirror mirror, A... a) {
    static const int32_t options = 0;
    if constexpr ((std::is_same_v<A, double*> || ...))
        mirror(a..., &options);
    else
        compatible(a...);
}

// Bending with a full rule, transverse shear with a reduced one (one point
// each for the triangle), six degrees of freedom per node, triple at 3..5.
// Real = double: the same element through the double-precision route.
template <class Real>
void plate(benchmark::State& state) {
    const int nnode = static_cast<int>(state.range(0));
    const bool triangle = nnode == 3;
    Rule rule3(3), rule2(2);
    Model model;
    const ArrayOf<Real> full_pos = rule3.pos.as<Real>(), full_wei = rule3.wei.as<Real>();
    const ArrayOf<Real> reduced_pos = rule2.pos.as<Real>(), reduced_wei = rule2.wei.as<Real>();
    ArrayOf<Real> prop = model.prop.as<Real>(), play = model.play.as<Real>();
    const ArrayOf<Real> zlay = model.zlay.as<Real>(), tnode = model.tnode.as<Real>();
    const ArrayOf<Real> xy = geometry(nnode).as<Real>();
    ArrayOf<Real> estif(6 * 9, 6 * 9);
    int32_t nb = triangle ? 1 : 3, ns = triangle ? 1 : 2, ntype = triangle ? 6 : 1;
    int32_t ngpt = 0, ngpt2 = 0, iel = 1, nn = nnode, imat = 1, nelem = 1, nmat = 1, ioff = 2;
    int32_t ldes = 6 * 9, ndofn = 6, nnodt = nnode, nlay = 1;
    Real detj = 0;
    for (auto _ : state) {
        either_route(STIFFP001DOTNET, shellfe_plate_bending_stiffness, &nb, &nb, &ntype, full_pos.v.data(), &ngpt, &iel, &ngpt2, nullptr, &nn,
                      xy.v.data(), tnode.v.data(), nullptr, &imat, prop.data(), &ioff,
                      estif.data(), full_wei.v.data(), nullptr, nullptr, &nelem, &nmat, &ldes,
                      &ndofn, &nnodt, play.v.data(), zlay.v.data(), &nlay, &detj);
        either_route(STIFFP002DOTNET, shellfe_plate_shear_stiffness, &ns, &ns, &ntype, reduced_pos.v.data(), &ngpt, &iel, &nn, xy.v.data(),
                    tnode.v.data(), nullptr, &imat, prop.data(), &ioff, estif.data(),
                    reduced_wei.v.data(), nullptr, &nelem, &nmat, &ldes, &ndofn, &nnodt,
                    play.v.data(), zlay.v.data(), &nlay, &detj);
        benchmark::DoNotOptimize(estif.data());
        benchmark::ClobberMemory();
    }
    report(state, plate_flops(nnode, triangle, nb * nb, 3) + plate_flops(nnode, triangle, ns * ns, 2));
}

// ---- the same membrane matrix as a host would assemble it by hand ---------

// Natural derivatives of the eight serendipity functions.
void serendipity_derivatives(float xi, float eta, Array& deriv) {
    const float nx[9] = {0, -1, 0, 1, 1, 1, 0, -1, -1}, ny[9] = {0, -1, -1, -1, 0, 1, 1, 1, 0};
    for (int k = 1; k <= 8; ++k) {
        const float a = nx[k], b = ny[k];
        if (k % 2) {
            deriv(k, 2) = 0.25f * a * (1 + eta * b) * (2 * xi * a + eta * b);
            deriv(k, 3) = 0.25f * b * (1 + xi * a) * (xi * a + 2 * eta * b);
        } else if (a == 0) {
            deriv(k, 2) = -xi * (1 + eta * b);
            deriv(k, 3) = 0.5f * (1 - xi * xi) * b;
        } else {
            deriv(k, 2) = 0.5f * a * (1 - eta * eta);
            deriv(k, 3) = -eta * (1 + xi * a);
        }
    }
}

// Per point: JACOB2DLLDOTNET, B (3 x 16) from the Cartesian derivatives,
// DB = D B and K = B^T DB with MATMULDLLDOTNET (full 16 x 16), then
// ESTIF += t w det K. Shape-function derivatives are tabulated once.
void membrane_by_dense_products(benchmark::State& state) {
    Rule rule(3);
    Model m;
    Array xy = geometry(8), estif(18, 18);
    std::vector<Array> deriv;
    std::vector<float> wpt;
    for (int i = 1; i <= 3; ++i)
        for (int j = 1; j <= 3; ++j) {
            deriv.emplace_back(9, 3);
            serendipity_derivatives(rule.pos(1, i), rule.pos(1, j), deriv.back());
            wpt.push_back(rule.wei(1, i) * rule.wei(1, j));
        }
    Array cartd(9, 2), dmat(3, 3), b(16, 3), bt(3, 16), db(16, 3), k(16, 16);
    int32_t nenod = 8, imat = 1, nmat = 1, three = 3, sixteen = 16;
    float detj = 0.0f;
    for (auto _ : state) {
        MODIPDLLDOTNET(dmat.data(), m.prop.data(), &imat, &nmat);
        for (size_t p = 0; p < deriv.size(); ++p) {
            JACOB2DLLDOTNET(cartd.data(), deriv[p].data(), &detj, xy.data(), &nenod);
            // In the products' row-major view B is (0:3, 0:16) and B^T (0:16, 0:3).
            for (int n = 1; n <= 8; ++n) {
                b(2 * n - 1, 1) = cartd(n, 1), b(2 * n, 2) = cartd(n, 2);
                b(2 * n - 1, 3) = cartd(n, 2), b(2 * n, 3) = cartd(n, 1);
                bt(1, 2 * n - 1) = cartd(n, 1), bt(2, 2 * n) = cartd(n, 2);
                bt(3, 2 * n - 1) = cartd(n, 2), bt(3, 2 * n) = cartd(n, 1);
            }
            MATMULDLLDOTNET(dmat.data(), b.data(), db.data(), &three, &three, &sixteen);
            MATMULDLLDOTNET(bt.data(), db.data(), k.data(), &sixteen, &three, &sixteen);
            const float s = detj * wpt[p] * 0.2f;
            for (int c = 1; c <= 16; ++c)
                for (int r = c; r <= 16; ++r) estif(r, c) += s * k(r, c);
        }
        benchmark::DoNotOptimize(estif.data());
        benchmark::ClobberMemory();
    }
    // Jacobian and derivatives, 2 M K N for each product, the scale and the
    // lower-triangle update.
    const double per_point = (8.0 * 8 + 7.0) + 8.0 * 8 + 2.0 * 3 * 3 * 16 + 2.0 * 16 * 3 * 16 + 2.0 + 2.0 * 136;
    report(state, 66.0 + 9 * per_point);
}

BENCHMARK(membrane)->Name("STIFFP003DOTNET/quad8_3x3")->Arg(8);
BENCHMARK(membrane)->Name("STIFFP003DOTNET/tri3_1pt")->Arg(3);
BENCHMARK(membrane_by_dense_products)->Name("host_dense_products/quad8_3x3");
BENCHMARK(plate<float>)->Name("STIFFP001+002DOTNET/quad8_3x3+2x2")->Arg(8);
BENCHMARK(plate<double>)->Name("shellfe_plate_bending+shear_stiffness/quad8_3x3+2x2")->Arg(8);
BENCHMARK(plate<float>)->Name("STIFFP001+002DOTNET/tri3_1pt+1pt")->Arg(3);
BENCHMARK(plate<double>)->Name("shellfe_plate_bending+shear_stiffness/tri3_1pt+1pt")->Arg(3);

}  // namespace

BENCHMARK_MAIN();
