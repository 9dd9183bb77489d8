// The error estimate per element, the result net around a node on slabs
// of two sizes, and the colour bands of an element.
//
//   cmake -S . -B build-bench -DSHELLFE_BUILD_BENCHMARKS=ON && cmake --build build-bench -j2
//   build-bench/bin/bench_results --benchmark_repetitions=5
//
// error_estimate    STERRORDLLDOTNET on one 8-node element of a three-layer
//                   orthotropic plate (one call per iteration).
// result_net/M/R    CASTNETFMDOTNET from the centre node of an M x M slab of
//                   8-node elements (M = 50: 2,500 elements; M = 200: 40,000)
//                   with a radius of R element widths, R = 1, 5, 20. The
//                   counter `gathered` is the number of nodes in the net:
//                   the cost follows it and not the mesh.
// colour_bands      CHECKNUMCOLOURDOTNET on 4-corner elements with values
//                   spread over ten bands, a few thousand elements cycled.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "shellfe.h"
#include "slab_mesh.hpp"

namespace {

void error_estimate(benchmark::State& state) {
    const int32_t iel = 1, nelem = 1, nnodt = 8, nlay = 3, icsig = 0, nsrow = 9, nmat = 1, imat = 1,
                  ietyp[4] = {0, 0, 0, 1};  // IETYP(1, 1) at 3
    int32_t conn[18] = {};
    for (int k = 1; k <= 8; ++k) conn[2 * k + 1] = k;  // (0:1, 0:8): CONN(1, k) at 1 + 2k
    const float g = 0.774596669f;
    const float gpos[12] = {0, 0, 0, 0, -g, 0, 0, 0.0f, 0, 0, g, 0};  // GPOS(1, i) at 1 + 3i
    float tnode[18];
    for (float& t : tnode) t = 0.2f;
    float play[4 * 18] = {};
    const float zlay[5] = {0.0f, -0.1f, -0.05f, 0.05f, 0.1f};  // faces z(1..4)
    for (int l = 1; l <= 3; ++l) {  // PLAY(l, c) at l + 4c
        play[l + 4 * 1] = 3.0e4f;
        play[l + 4 * 2] = 0.2f;
        play[l + 4 * 8] = 1.2e4f;
        play[l + 4 * 9] = 5.0e3f;
        play[l + 4 * 10] = 4.0e3f;
        play[l + 4 * 11] = 4.0e3f;
        play[l + 4 * 17] = 30.0f * float(l - 1);
    }
    std::vector<float> sige(10 * 4, 0.0f), sigs(4 * 9, 0.0f), errn(9, 0.0f), erre(2, 0.0f),
        wdet(20, 0.25f), prop(2 * 18, 0.0f);
    for (int k = 1; k <= 8; ++k)
        for (int m = 1; m <= 3; ++m) {
            sige[k + 10 * m] = float(k * m);
            sigs[m + 4 * k] = float(k * m) + 0.1f * float(k - m);
        }
    float errt = 0.0f;
    for (auto _ : state) {
        STERRORDLLDOTNET(sige.data(), &iel, ietyp, &nelem, gpos, nullptr, &nnodt, tnode, play, zlay,
                         &nlay, conn, errn.data(), &errt, prop.data(), wdet.data(), sigs.data(),
                         erre.data(), &icsig, &nsrow, nullptr, &nmat, &imat);
        benchmark::DoNotOptimize(errt);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(error_estimate);

// An M x M slab with its node-to-element records (0:LDMEM, 0:nnode) and a
// result per node.
struct NetFixture {
    SlabMesh mesh;
    int32_t ldmem = 4;
    std::vector<int32_t> nodmem;
    std::vector<float> xyzn, res;
    explicit NetFixture(int m) : mesh(m, m) {
        nodmem.assign(std::size_t(ldmem + 1) * (mesh.nnode + 1), 0);
        for (int e = 1; e <= mesh.nelem; ++e)
            for (int s = 1; s <= 8; ++s) {
                int32_t* rec = &nodmem[std::size_t(ldmem + 1) * mesh.node(s, e)];
                rec[++rec[0]] = e;
            }
        xyzn.assign(3 * std::size_t(mesh.nnode + 1), 0.0f);
        res.assign(mesh.nnode + 1, 0.0f);
        for (int n = 1; n <= mesh.nnode; ++n) {
            xyzn[n] = mesh.x[n];
            xyzn[n + (mesh.nnode + 1)] = mesh.y[n];
            res[n] = float(n % 97) - 40.0f;
        }
    }
};

void result_net(benchmark::State& state) {
    const int m = int(state.range(0));
    const NetFixture f(m);
    const int32_t icase = 0, icomp = 0, ncomp = 1, nnode = f.mesh.nnode,
                  nstart = 1 + m / 2 + (m / 2) * (m + 1), nelem = f.mesh.nelem, ldcn = f.mesh.ldcn,
                  ldres = nnode;
    const float radius = float(state.range(1)) + 0.01f;
    float peak, vhigh, vlow, vavg;
    for (auto _ : state) {
        CASTNETFMDOTNET(&peak, f.res.data(), &icase, &icomp, &ncomp, &nnode, f.xyzn.data(), &radius,
                        &nstart, &vhigh, &vlow, f.nodmem.data(), &nelem, &f.ldmem, &ldcn,
                        f.mesh.ielnod.data(), &vavg, &ldres);
        benchmark::DoNotOptimize(peak);
    }
    // Nodes gathered: those within the radius, counted once outside the loop.
    int gathered = 0;
    const float xs = f.mesh.x[nstart], ys = f.mesh.y[nstart];
    for (int n = 1; n <= nnode; ++n) {
        const float dx = f.mesh.x[n] - xs, dy = f.mesh.y[n] - ys;
        gathered += radius > std::sqrt(dx * dx + dy * dy);
    }
    state.counters["gathered"] = gathered;
    state.counters["mesh_nodes"] = nnode;
}
BENCHMARK(result_net)->ArgsProduct({{50, 200}, {1, 5, 20}})->Unit(benchmark::kMicrosecond);

void colour_bands(benchmark::State& state) {
    float bndlim[11];
    for (int k = 0; k <= 10; ++k) bndlim[k] = 0.1f * float(k);
    constexpr int kElements = 4096;
    std::vector<float> values(5 * kElements);
    uint32_t s = 12345u;
    for (float& v : values) {
        s = s * 1664525u + 1013904223u;
        v = float(s >> 8) * 0x1p-24f;
    }
    const float xyzc[15] = {}, xyzr[6] = {};
    const int32_t ncorn = 4, nbnd = 10, mode = 0, ibfix = 1, irefa = 1, irefb = 1, ldrf = 1, ldxc = 4;
    const float vmin = 0.0f, vmax = 1.0f, vlo = 0.0f, vhi = 0.0f, tol = 0.0f;
    int32_t iband[5], ibraw[5], ncolr, isplit = 0, ibinit = 0;
    int e = 0;
    for (auto _ : state) {
        float* vcorn = &values[5 * std::size_t(e)];
        CHECKNUMCOLOURDOTNET(&ncolr, bndlim, vcorn, &ibinit, &ncorn, &vmin, &vmax, &nbnd, iband,
                             &isplit, &mode, &ibfix, &irefa, &vlo, &vhi, xyzc, &irefb, &ldrf, &ldxc,
                             &tol, xyzr, ibraw);
        benchmark::DoNotOptimize(ncolr);
        e = (e + 1) % kElements;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(colour_bands);

}  // namespace

BENCHMARK_MAIN();
