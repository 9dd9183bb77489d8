// Command-line options of the slab example. Every value is checked here, so
// that the library never sees a mesh or material it cannot make sense of.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <iterator>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "slab.hpp"

namespace slab {

void print_usage(const char* program) {
    std::printf(
        "usage: %s [options]\n"
        "Square slab of 8-node plate elements; prints a convergence table against reference values.\n"
        "  --size A              side of the square (default 1)\n"
        "  --thickness H         plate thickness (default A/100)\n"
        "  --E VALUE             Young's modulus (default 2.1e11)\n"
        "  --nu VALUE            Poisson's ratio (default 0.3)\n"
        "  --layers K            the thickness as K identical layers (default 1)\n"
        "  --load uniform|point  uniform pressure or a point load at the centre\n"
        "  --q VALUE             pressure of the uniform load (default 1e4)\n"
        "  --P VALUE             force of the point load (default 1e4)\n"
        "  --support hard|clamped  hard simple support or clamped edges (default hard)\n"
        "  --mesh N[,N...]       elements per side, one or a list (default 4,8,16,32)\n"
        "  --assembly crs|skyline  global matrix route (default crs)\n"
        "  --dofs plate|shell    3 plate unknowns per node, or all 6 (default plate)\n"
        "  --route double|compatible  double-precision or single-precision routines (default double)\n"
        "  --svg DIR             directory for the contour plots (default .)\n"
        "  --no-svg              write no plots\n"
        "  --no-compare          do not check the other assembly route\n"
        "  --timings             time every stage (always done from 100x100 elements on)\n"
        "  --digits              also print the centre values with all 17 digits\n"
        "  --petsc               distributed mode, run as mpirun -np P %s --petsc [options]: PETSc\n"
        "                        over MPI, compressed rows (either route, either set of unknowns),\n"
        "                        MUMPS Cholesky unless PETSc options (-ksp_type cg -pc_type gamg)\n"
        "                        say otherwise; -mat_mumps_icntl_22 1 keeps the factor on disk,\n"
        "                        -mat_partitioning_type current divides the nodes in strips\n"
        "  --help                this text\n",
        program, program);
}

namespace {

bool number(const std::string& s, double& v) {
    if (s.empty()) return false;
    char* end = nullptr;
    errno = 0;
    v = std::strtod(s.c_str(), &end);
    return errno == 0 && *end == '\0' && std::isfinite(v);
}

bool integer(const std::string& s, int& v) {
    if (s.empty()) return false;
    char* end = nullptr;
    errno = 0;
    const long l = std::strtol(s.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || l < -1000000 || l > 1000000) return false;
    v = int(l);
    return true;
}

}  // namespace

bool parse_options(int argc, char** argv, Options& opt, std::string& error, bool& help) {
    help = false;
    auto fail = [&](const std::string& what) {
        error = what;
        return false;
    };
    // Options that take a positive number, and those that name one of two.
    const struct { const char* flag; double* value; const char* what; } positives[] = {
        {"--size", &opt.a, "the size"}, {"--thickness", &opt.h, "the thickness"}, {"--E", &opt.E, "Young's modulus"},
        {"--q", &opt.q, "the pressure"}, {"--P", &opt.P, "the point load"}};
    auto pick = [&](const std::string& value, const char* what, auto& out, const char* a, auto va, const char* b,
                    auto vb) {
        if (value != a && value != b) return fail("unknown " + std::string(what) + " '" + value + "' (" + a + " or " + b + ")");
        out = value == a ? va : vb;
        return true;
    };
    // In the distributed mode PETSc reads its own options, single-dash
    // names with or without a value (-ksp_type cg, -log_view).
    const bool distributed = std::any_of(argv + 1, argv + argc, [](const char* a) { return std::string(a) == "--petsc"; });
    auto petsc_option = [](const std::string& a) { return a.size() > 1 && a[0] == '-' && std::isalpha((unsigned char)a[1]); };
    for (int i = 1; i < argc; ++i) {
        const std::string flag = argv[i];
        if (flag == "--help" || flag == "-h") {
            help = true;
            return true;
        }
        if (distributed && petsc_option(flag)) {
            // Its value, if any: whatever follows that is no option name
            // (so -mat_mumps_icntl_4 -1 keeps its negative value).
            if (i + 1 < argc) {
                const std::string next = argv[i + 1];
                if (!petsc_option(next) && next.rfind("--", 0) != 0) ++i;
            }
            continue;
        }
        if (flag == "--no-svg" || flag == "--timings" || flag == "--no-compare" || flag == "--digits" ||
            flag == "--petsc") {
            if (flag == "--no-svg") opt.outdir.clear();
            opt.timings = opt.timings || flag == "--timings";
            opt.compare = opt.compare && flag != "--no-compare";
            opt.digits = opt.digits || flag == "--digits";
            opt.petsc = opt.petsc || flag == "--petsc";
            continue;
        }
        static const char* valued[] = {"--size", "--thickness", "--E", "--nu", "--layers", "--load", "--q",
                                       "--P", "--support", "--mesh", "--assembly", "--dofs", "--route", "--svg"};
        if (std::none_of(std::begin(valued), std::end(valued), [&](const char* v) { return flag == v; }))
            return fail(flag.rfind("--", 0) == 0 ? "unknown option '" + flag + "' (see --help)"
                                                 : "unexpected argument '" + flag + "'");
        if (i + 1 >= argc) return fail("option " + flag + " needs a value");
        const std::string value = argv[++i];
        double x = 0.0;
        int k = 0;
        bool ok = true, done = false;
        for (const auto& p : positives)
            if (flag == p.flag) {
                ok = number(value, x) && x > 0.0;
                if (!ok) return fail(std::string(p.what) + " must be a positive number, not '" + value + "'");
                *p.value = x, done = true;
            }
        if (done) continue;
        if (flag == "--nu") {
            if (!number(value, x) || !(x > -1.0 && x < 0.5))
                return fail("Poisson's ratio must lie in (-1, 0.5), not '" + value + "'");
            opt.nu = x;
        } else if (flag == "--layers") {
            if (!integer(value, k) || k < 1 || k > 100)
                return fail("the number of layers must be an integer from 1 to 100, not '" + value + "'");
            opt.layers = k;
        } else if (flag == "--load") {
            ok = pick(value, "load", opt.load, "uniform", Load::uniform, "point", Load::point);
        } else if (flag == "--support") {
            ok = pick(value, "support", opt.support, "hard", Support::hard, "clamped", Support::clamped);
        } else if (flag == "--assembly") {
            ok = pick(value, "assembly", opt.assembly, "crs", Assembly::crs, "skyline", Assembly::skyline);
        } else if (flag == "--dofs") {
            ok = pick(value, "dofs", opt.dofs, "plate", Dofs::plate, "shell", Dofs::shell);
        } else if (flag == "--route") {
            ok = pick(value, "route", opt.route, "double", Route::precise, "compatible", Route::compatible);
        } else if (flag == "--svg") {
            if (value.empty()) return fail("the picture directory must not be empty");
            opt.outdir = value;
        } else if (flag == "--mesh") {
            opt.meshes.clear();
            std::stringstream list(value);
            std::string item;
            while (std::getline(list, item, ',')) {
                if (!integer(item, k) || k < 1 || k > 400)
                    return fail("mesh sizes must be integers from 1 to 400, not '" + item + "'");
                opt.meshes.push_back(k);
            }
            if (opt.meshes.empty()) return fail("--mesh needs at least one size");
        }
        if (!ok) return false;
    }
    if (opt.h == 0.0) opt.h = opt.a / 100.0;
    if (opt.h > opt.a) return fail("the thickness must not exceed the size of the slab");
    if (opt.petsc && opt.assembly != Assembly::crs)
        return fail("--petsc assembles compressed rows: the skyline is one process's storage");
    return true;
}

}  // namespace slab
