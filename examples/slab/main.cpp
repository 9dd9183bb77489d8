// slab: a square plate under uniform pressure or a centre point load, simply
// supported ("hard": the rotation about each edge also held) or clamped,
// meshed with N x N eight-node elements and analysed through the library's
// exported routines alone; prints the convergence of the centre deflection
// and moment against reference values of the same plate theory.
#if defined(__unix__) || defined(__APPLE__)
#include <sys/resource.h>
#define SLAB_HAVE_RUSAGE 1
#endif

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "shellfe.h"
#include "slab.hpp"

using namespace slab;

namespace slab {

// Processor time of the process, user and system: on a shared machine it
// tells the work of a stage apart from the time spent waiting for a core.
double cpu_seconds() {
#if defined(SLAB_HAVE_RUSAGE)
    rusage ru{};
    getrusage(RUSAGE_SELF, &ru);
    return double(ru.ru_utime.tv_sec + ru.ru_stime.tv_sec) + 1e-6 * double(ru.ru_utime.tv_usec + ru.ru_stime.tv_usec);
#else
    return 0.0;
#endif
}

// The largest resident set so far (0 where the system does not tell).
double peak_memory_mib() {
#if defined(SLAB_HAVE_RUSAGE)
    rusage ru{};
    getrusage(RUSAGE_SELF, &ru);
#if defined(__APPLE__)
    return double(ru.ru_maxrss) / (1024.0 * 1024.0);  // bytes
#else
    return double(ru.ru_maxrss) / 1024.0;  // kilobytes
#endif
#else
    return 0.0;
#endif
}

}  // namespace slab

namespace {

constexpr double kPi = 3.14159265358979323846;

double seconds_since(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// Reference values, normalised (w D / (q a^4), Mx / (q a^2)); NaN where none
// is known. The simply supported plate under pressure has the Navier double
// series of the same (Mindlin) theory, shear factor 5/6; its moments are the
// thin-plate ones. The clamped plate is tabulated for a/h = 100, nu = 0.3.
struct Reference {
    double w = NAN, mx = NAN;
    const char* source = "";
};

Reference reference(const Options& o) {
    Reference r;
    if (o.load != Load::uniform) return r;  // a point load has unbounded shear deflection
    if (o.support == Support::clamped) {
        if (std::fabs(o.a / o.h - 100.0) < 1e-9 && std::fabs(o.nu - 0.3) < 1e-12)
            r.w = 0.00126786, r.mx = 0.0231, r.source = "clamped Mindlin plate, a/h = 100";
        return r;
    }
    const double D = flexural_rigidity(o), kGh = 5.0 / 6.0 * o.E / (2.0 * (1.0 + o.nu)) * o.h;
    double w = 0.0, mx = 0.0;
    const int terms = 3999;
    for (int m = 1; m <= terms; m += 2)
        for (int n = 1; n <= terms; n += 2) {
            const double sign = ((m + n) / 2 - 1) % 2 ? -1.0 : 1.0;  // sin(m pi/2) sin(n pi/2)
            const double k = (double(m) * m + double(n) * n) / (o.a * o.a);
            const double c = 16.0 / (kPi * kPi * m * n) * sign;
            w += c * (1.0 / (D * std::pow(kPi, 4) * k * k) + 1.0 / (kGh * kPi * kPi * k));
            mx += c / (kPi * kPi * k * k) * (double(m) * m + o.nu * n * n) / (o.a * o.a);
        }
    r.w = w * D / std::pow(o.a, 4);
    r.mx = mx / (o.a * o.a);
    r.source = "Navier series, Mindlin plate";
    return r;
}

bool pictures_failed = false;

struct Row {
    int n;
    int32_t neq, nfree;
    double w, mx;
};

// One analysis on an n x n mesh; false when it could not be completed.
bool analyse(const Options& opt, int n, bool timed, Row& row, double wscale, double mscale) {
    auto t = std::chrono::steady_clock::now();
    double cpu = cpu_seconds();
    auto stage = [&](const char* name) {
        if (timed)
            std::printf("  %-18s %7.2f s wall %7.2f s cpu   peak memory %7.1f MiB\n", name, seconds_since(t),
                        cpu_seconds() - cpu, peak_memory_mib());
        std::fflush(stdout);
        t = std::chrono::steady_clock::now();
        cpu = cpu_seconds();
    };
    Mesh mesh = make_mesh(opt.a, n);
    stage("mesh");
    order_nodes(mesh);
    stage("node ordering");
    System sys;
    std::shared_ptr<Model> model = build_model(opt, mesh, sys);
    stage("element matrices");
    assemble(opt, opt.assembly, *model, mesh, sys);
    stage("assembly");

    // The other assembly route on the same element matrices must give the
    // same displacements.
    std::vector<double> other;
    if (opt.compare && n <= 32) {
        System alt = sys;
        assemble(opt, opt.assembly == Assembly::crs ? Assembly::skyline : Assembly::crs, *model, mesh, alt);
        std::string err;
        double tf = 0, ts = 0;
        if (!solve(alt, other, err, tf, ts)) other.clear();
        stage("other route");
    }
    model.reset();  // the element matrices are not needed beyond assembly

    std::vector<double> u;
    std::string error;
    double t_factor = 0.0, t_solve = 0.0;
    const bool ok = solve(sys, u, error, t_factor, t_solve);
    if (timed) {
        std::printf("  %-18s %7.2f s wall %7.2f s cpu   peak memory %7.1f MiB  (factorisation %.2f s, solve %.2f s, %s)\n",
                    "solution", seconds_since(t), cpu_seconds() - cpu, peak_memory_mib(), t_factor, t_solve,
                    solver_name());
    }
    t = std::chrono::steady_clock::now();
    cpu = cpu_seconds();
    if (!ok) {
        std::fprintf(stderr, "slab: %s\n", error.c_str());
        return false;
    }
    if (!other.empty()) {
        // Rows of nodes, columns of unknowns, as the comparison reads tables.
        const int32_t mcol = sys.ndof, nrowt = mesh.nnode;
        std::vector<float> ta(std::size_t(nrowt + 1) * (mcol + 1), 0.0f), tb(ta);
        for (int32_t k = 0; k < sys.neq; ++k) {
            const std::size_t at = std::size_t(k / mcol + 1) * (mcol + 1) + k % mcol + 1;
            ta[at] = float(u[k]), tb[at] = float(other[k]);
        }
        int32_t isame = 0;
        COMPAREARRAY(ta.data(), tb.data(), &mcol, &nrowt, &isame);
        double diff = 0.0, size = 0.0;
        for (int32_t k = 0; k < sys.neq; ++k) diff = std::max(diff, std::fabs(u[k] - other[k])), size = std::max(size, std::fabs(u[k]));
        std::printf("  compressed-row and skyline displacements %s (COMPAREARRAY; largest difference %.1e of the largest value)\n",
                    isame == -1 ? "agree" : "DIFFER", size > 0.0 ? diff / size : 0.0);
        if (isame != -1 && opt.route == Route::compatible)
            std::printf("  (expected on the compatible route: its node matrices are summed in single precision, the "
                        "skyline in double)\n");
    }
    const Results r = recover(opt, mesh, sys, u);
    row = {n, sys.neq, sys.nfree, r.wc * wscale, r.mxc * mscale};
    if (timed || n == opt.meshes.back()) post_process(opt, mesh, sys, u, r);
    stage("results");
    if (!opt.outdir.empty() && n == opt.meshes.back()) {
        std::string err;
        if (!write_svgs(opt, mesh, r, n, err)) {
            std::fprintf(stderr, "slab: %s\n", err.c_str());
            pictures_failed = true;
        }
        stage("pictures");
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    std::string error;
    bool help = false;
    if (!parse_options(argc, argv, opt, error, help)) {
        std::fprintf(stderr, "slab: %s\n", error.c_str());
        return 2;
    }
    if (help) {
        print_usage(argv[0]);
        return 0;
    }
    const DistributedMode* distributed = nullptr;
    if (opt.petsc) {
        distributed = distributed_mode(error);
        if (!distributed) {
            std::fprintf(stderr, "slab: --petsc: %s\n", error.c_str());
            return 2;
        }
        if (!distributed->start(&argc, &argv)) return 1;
        // One report: the other ranks keep quiet but for errors.
        if (!distributed->root() && !std::freopen("/dev/null", "w", stdout)) return 1;
    }
    const double D = flexural_rigidity(opt);
    const bool uniform = opt.load == Load::uniform;
    const double wscale = D / (uniform ? opt.q * std::pow(opt.a, 4) : opt.P * opt.a * opt.a);
    const double mscale = 1.0 / (uniform ? opt.q * opt.a * opt.a : opt.P);
    const Reference ref = reference(opt);
    std::printf("Square slab a = %g, h = %g (a/h = %g), E = %g, nu = %g, %d layer%s; %s, %s edges\n", opt.a, opt.h,
                opt.a / opt.h, opt.E, opt.nu, opt.layers, opt.layers > 1 ? "s" : "",
                uniform ? "uniform pressure" : "point load at the centre",
                opt.support == Support::hard ? "hard simply supported" : "clamped");
    std::printf("8-node elements, %s unknowns per node, %s route, %s assembly, solved by %s\n",
                opt.dofs == Dofs::plate ? "3 plate" : "6 shell",
                opt.route == Route::precise ? "double-precision" : "compatible single-precision",
                opt.assembly == Assembly::crs ? "compressed-row" : "skyline",
                distributed ? distributed->solver_name() : solver_name());
    if (!std::isnan(ref.w)) std::printf("Reference: %s\n", ref.source);

    std::vector<Row> rows;
    for (int n : opt.meshes) {
        Row row{};
        const bool timed = opt.timings || n >= 100;
        std::printf("-- %dx%d mesh\n", n, n);
        try {
            if (!distributed) {
                if (!analyse(opt, n, timed, row, wscale, mscale)) return 1;
            } else {
                double wc = 0.0, mxc = 0.0;
                if (!distributed->analyse(opt, n, timed, row.nfree, wc, mxc)) pictures_failed = true;
                row.n = n, row.w = wc * wscale, row.mx = mxc * mscale;
            }
        } catch (const std::exception& e) {
            std::fprintf(stderr, "slab: %dx%d mesh: %s\n", n, n, e.what());
            return 1;
        }
        rows.push_back(row);
    }

    const char* wname = uniform ? "w_c D/(q a^4)" : "w_c D/(P a^2)";
    const char* mname = uniform ? "Mx_c/(q a^2)" : "Mx_c/P";
    std::printf("\n%5s %9s %16s %11s %6s %13s %9s\n", "N", "unknowns", wname, "error", "order", mname, "reference");
    for (std::size_t k = 0; k < rows.size(); ++k) {
        const Row& r = rows[k];
        const double e = (r.w - ref.w) / ref.w;
        char err[32] = "-", order[32] = "-", mref[32] = "-";
        if (!std::isnan(ref.w)) std::snprintf(err, sizeof err, "%+.3e", e);
        if (k > 0 && !std::isnan(ref.w) && rows[k - 1].n * 2 == r.n) {
            const double ep = (rows[k - 1].w - ref.w) / ref.w;
            if (e != 0.0) std::snprintf(order, sizeof order, "%.2f", std::log2(std::fabs(ep / e)));
        }
        if (!std::isnan(ref.mx)) std::snprintf(mref, sizeof mref, "%.4f", ref.mx);
        std::printf("%5d %9d %16.11f %11s %6s %13.5f %9s\n", r.n, r.nfree, r.w, err, order, r.mx, mref);
    }
    if (!std::isnan(ref.w)) std::printf("%5s %9s %16.11f\n", "ref", "", ref.w);
    if (opt.digits)
        for (const Row& r : rows) std::printf("centre %d: %.17e %.17e\n", r.n, r.w, r.mx);
    if (distributed) {
        const double peak = distributed->peak_memory_mib();
        std::printf("peak memory %.1f MiB on the largest rank\n", peak);
        std::fflush(stdout);
        distributed->finish();
        return pictures_failed ? 1 : 0;
    }
    std::printf("peak memory %.1f MiB\n", peak_memory_mib());
    return pictures_failed ? 1 : 0;
}
