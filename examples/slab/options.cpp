// Command-line options of the slab example. Every value is checked here, so
// that the library never sees a mesh or material it cannot make sense of.
#include <cerrno>
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
        "  --help                this text\n",
        program);
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
    for (int i = 1; i < argc; ++i) {
        const std::string flag = argv[i];
        if (flag == "--help" || flag == "-h") {
            help = true;
            return true;
        }
        if (flag == "--no-svg") {
            opt.outdir.clear();
            continue;
        }
        if (flag == "--timings") {
            opt.timings = true;
            continue;
        }
        if (flag == "--no-compare") {
            opt.compare = false;
            continue;
        }
        if (flag.rfind("--", 0) != 0) return fail("unexpected argument '" + flag + "'");
        static const char* valued[] = {"--size", "--thickness", "--E", "--nu", "--layers", "--load", "--q",
                                       "--P", "--support", "--mesh", "--assembly", "--dofs", "--route", "--svg"};
        bool known = false;
        for (const char* v : valued) known = known || flag == v;
        if (!known) return fail("unknown option '" + flag + "' (see --help)");
        if (i + 1 >= argc) return fail("option " + flag + " needs a value");
        const std::string value = argv[++i];
        double x = 0.0;
        auto positive = [&](double& out, const char* what) {
            if (!number(value, x) || !(x > 0.0))
                return fail(std::string(what) + " must be a positive number, not '" + value + "'");
            out = x;
            return true;
        };
        if (flag == "--size") {
            if (!positive(opt.a, "the size")) return false;
        } else if (flag == "--thickness") {
            if (!positive(opt.h, "the thickness")) return false;
        } else if (flag == "--E") {
            if (!positive(opt.E, "Young's modulus")) return false;
        } else if (flag == "--q") {
            if (!positive(opt.q, "the pressure")) return false;
        } else if (flag == "--P") {
            if (!positive(opt.P, "the point load")) return false;
        } else if (flag == "--nu") {
            if (!number(value, x) || !(x > -1.0 && x < 0.5))
                return fail("Poisson's ratio must lie in (-1, 0.5), not '" + value + "'");
            opt.nu = x;
        } else if (flag == "--layers") {
            int k = 0;
            if (!integer(value, k) || k < 1 || k > 100)
                return fail("the number of layers must be an integer from 1 to 100, not '" + value + "'");
            opt.layers = k;
        } else if (flag == "--load") {
            if (value == "uniform") opt.load = Load::uniform;
            else if (value == "point") opt.load = Load::point;
            else return fail("unknown load '" + value + "' (uniform or point)");
        } else if (flag == "--support") {
            if (value == "hard") opt.support = Support::hard;
            else if (value == "clamped") opt.support = Support::clamped;
            else return fail("unknown support '" + value + "' (hard or clamped)");
        } else if (flag == "--assembly") {
            if (value == "crs") opt.assembly = Assembly::crs;
            else if (value == "skyline") opt.assembly = Assembly::skyline;
            else return fail("unknown assembly '" + value + "' (crs or skyline)");
        } else if (flag == "--dofs") {
            if (value == "plate") opt.dofs = Dofs::plate;
            else if (value == "shell") opt.dofs = Dofs::shell;
            else return fail("unknown dofs '" + value + "' (plate or shell)");
        } else if (flag == "--route") {
            if (value == "double") opt.route = Route::precise;
            else if (value == "compatible") opt.route = Route::compatible;
            else return fail("unknown route '" + value + "' (double or compatible)");
        } else if (flag == "--svg") {
            if (value.empty()) return fail("the picture directory must not be empty");
            opt.outdir = value;
        } else if (flag == "--mesh") {
            opt.meshes.clear();
            std::stringstream list(value);
            std::string item;
            while (std::getline(list, item, ',')) {
                int n = 0;
                if (!integer(item, n) || n < 1 || n > 400)
                    return fail("mesh sizes must be integers from 1 to 400, not '" + item + "'");
                opt.meshes.push_back(n);
            }
            if (opt.meshes.empty()) return fail("--mesh needs at least one size");
        }
    }
    if (opt.h == 0.0) opt.h = opt.a / 100.0;
    if (opt.h > opt.a) return fail("the thickness must not exceed the size of the slab");
    return true;
}

}  // namespace slab
