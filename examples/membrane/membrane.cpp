// Cook's skew cantilever, the classic plane-stress benchmark, analysed end to
// end through the library as a host application would do it.
//
// The trapezoid (0,0), (48,44), (48,60), (0,44), clamped at x = 0, carries a
// unit shear load spread evenly over its free edge x = 48; E = 1, nu = 1/3,
// thickness 1. The vertical displacement at the middle of the loaded edge,
// (48, 52), converges to 23.96; the top corner (48, 60) to about 25.19.
//
// The trapezoid is meshed twice:
//   - N x N 8-node quadrilaterals, integrated with 2x2 or 3x3 Gauss points
//     by STIFFP003DOTNET (single precision, the compatible route) or by
//     shellfe_membrane_stiffness (the double-precision route);
//   - 3-node constant-strain triangles from the small advancing-front
//     triangulator in advancing_front.hpp, built on GETNEARNODES and
//     CHECKNEWTRIANG.
// Both are assembled node by node into compressed rows (node matrices from
// BUILDALLNODESTIFFDLLDOTNET or shellfe_gather_node_stiffness, rows appended
// by ADDTOCRSSTIFFDLLDOTNET or ADDTOCRSMASSDLLDLL, the clamped equations
// left out through IFIX) and solved with Eigen's sparse LDL^T.
//
//   membrane                      the default tables and the two SVG meshes
//   membrane --help               the options
#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "advancing_front.hpp"
#include "cook.hpp"
#include "shellfe.h"
#include "svg.hpp"

namespace {

// ---------------------------------------------------------------------------
// Element matrices and assembly, written once for both routes. The two routes
// differ only in the real type of the element, node and load arrays and in
// the routine names; Route<Real> binds the names.

template <class Real> struct Route;

template <> struct Route<float> {
    static constexpr const char* name = "compatible";
    static void stiffness(const int32_t* ngp, const int32_t* ntype, const float* gpos,
                          int32_t* ngpt, const int32_t* iel, const int32_t* nnode, const float* xy,
                          const float* tnode, const int32_t* imat, float* prop, const float* gwei,
                          const int32_t* nelem, const int32_t* nmat, float* estif, float* detj) {
        STIFFP003DOTNET(ngp, ngp + 1, ntype, gpos, ngpt, iel, nnode, xy, tnode, nullptr, imat, prop,
                        gwei, nullptr, nelem, nmat, nullptr, nullptr, nnode, estif, detj);
    }
    template <class... A> static void gather(A... a) { BUILDALLNODESTIFFDLLDOTNET(a...); }
    template <class... A> static void append(A... a) { ADDTOCRSSTIFFDLLDOTNET(a...); }
};

template <> struct Route<double> {
    static constexpr const char* name = "double";
    static void stiffness(const int32_t* ngp, const int32_t* ntype, const double* gpos,
                          int32_t* ngpt, const int32_t* iel, const int32_t* nnode,
                          const double* xy, const double* tnode, const int32_t* imat, double* prop,
                          const double* gwei, const int32_t* nelem, const int32_t* nmat,
                          double* estif, double* detj) {
        shellfe_membrane_stiffness(ngp, ngp + 1, ntype, gpos, ngpt, iel, nnode, xy, tnode, nullptr,
                                   imat, prop, gwei, nullptr, nelem, nmat, nullptr, nullptr, nnode,
                                   estif, detj);
    }
    template <class... A> static void gather(A... a) { shellfe_gather_node_stiffness(a...); }
    // The double node matrix's rows go through the mass appender, which
    // reads double and keeps the same entries as the stiffness appender.
    template <class... A> static void append(A... a) { ADDTOCRSMASSDLLDLL(a...); }
};

constexpr int kEstifLd = 19;              // ESTIF (0:18, 0:18)
constexpr int kEstifSize = kEstifLd * kEstifLd;
constexpr int32_t kDofs = 2;              // u, v per node

// Element stiffness matrices of the whole mesh, each mirrored into a full
// 19 x 19 block: the library forms the lower triangle, and the node
// gathering reads both triangles (its row is the gathered node's, its
// column any node of the element).
template <class Real>
std::vector<Real> element_matrices(const Mesh& mesh, int rule, int* degenerate) {
    // Integration tables GPOS, GWEI (0:2, 0:3): row 1 the one-dimensional
    // Gauss rule of the quadrilaterals, row 2 the triangle points.
    Real gpos[3 * 4] = {}, gwei[3 * 4] = {};
    if (mesh.nodes_per_element == 8) {
        const double g2 = 1.0 / std::sqrt(3.0), g3 = std::sqrt(0.6);
        const double pts[2][3] = {{-g2, g2, 0.0}, {-g3, 0.0, g3}};
        const double wts[2][3] = {{1.0, 1.0, 0.0}, {5.0 / 9.0, 8.0 / 9.0, 5.0 / 9.0}};
        for (int n = 1; n <= rule; ++n) {
            gpos[1 + 3 * n] = static_cast<Real>(pts[rule - 2][n - 1]);
            gwei[1 + 3 * n] = static_cast<Real>(wts[rule - 2][n - 1]);
        }
    } else {
        // One point at the centroid, weight 1/2 (the reference triangle's area).
        gpos[2 + 3 * 1] = gpos[2 + 3 * 2] = static_cast<Real>(1.0 / 3.0);
        gwei[2 + 3 * 1] = static_cast<Real>(0.5);
    }
    // One material (row 1 of PROP (0:1, 0:17)) and one row of nodal
    // thicknesses (TNODE (0:1, 0:9)), shared by every element.
    Real prop[2 * 18] = {}, tnode[2 * 10] = {};
    prop[1 + 2 * 1] = static_cast<Real>(kYoung);
    prop[1 + 2 * 2] = static_cast<Real>(kPoisson);
    prop[1 + 2 * 8] = static_cast<Real>(kYoung);
    prop[1 + 2 * 9] = static_cast<Real>(kYoung / (2.0 * (1.0 + kPoisson)));
    for (int k = 1; k <= 9; ++k) tnode[1 + 2 * k] = static_cast<Real>(kThickness);

    const int32_t ntype = mesh.nodes_per_element == 8 ? 1 : 6;
    const int32_t ngp[2] = {mesh.nodes_per_element == 8 ? rule : 1,
                            mesh.nodes_per_element == 8 ? rule : 1};
    const int32_t nnode = mesh.nodes_per_element, one = 1;
    std::vector<Real> all(static_cast<size_t>(mesh.elements()) * kEstifSize);
    *degenerate = 0;
    for (int32_t e = 0; e < mesh.elements(); ++e) {
        Real xy[10 * 3] = {};  // XY (0:9, 0:2)
        for (int k = 1; k <= nnode; ++k) {
            const int32_t n = mesh.node_of(e, k);
            xy[k + 10 * 1] = static_cast<Real>(mesh.x[n]);
            xy[k + 10 * 2] = static_cast<Real>(mesh.y[n]);
        }
        Real* estif = &all[static_cast<size_t>(e) * kEstifSize];
        Real detj = 0;
        int32_t ngpt = 0;
        Route<Real>::stiffness(ngp, &ntype, gpos, &ngpt, &one, &nnode, xy, tnode, &one, prop, gwei,
                               &one, &one, estif, &detj);
        if (detj == Real(-1)) ++*degenerate;
        for (int c = 1; c <= 2 * nnode; ++c)
            for (int m = c + 1; m <= 2 * nnode; ++m) estif[c + kEstifLd * m] = estif[m + kEstifLd * c];
    }
    return all;
}

// The upper triangle of the global stiffness in compressed rows, one row per
// equation; the clamped equations' rows are left empty.
struct Crs {
    int32_t rows = 0, nnz = 0;
    std::vector<int32_t> rowptr, col;  // 1-based values, as the library writes them
    std::vector<double> val;
};

template <class Real>
Crs assemble(const Mesh& mesh, std::vector<Real>& estif) {
    const int32_t nnodes = mesh.nodes(), nelem = mesh.elements(), neq = kDofs * nnodes;
    const int32_t nslot = mesh.nodes_per_element;

    // Connectivity IELNOD with row length nelem + 1: entry (slot, element).
    const int32_t ldcn = nelem;
    std::vector<int32_t> ielnod(static_cast<size_t>(nslot + 1) * (ldcn + 1), 0);
    std::vector<std::vector<int32_t>> at_node(nnodes + 1);
    for (int32_t e = 0; e < nelem; ++e)
        for (int32_t k = 1; k <= nslot; ++k) {
            const int32_t n = mesh.node_of(e, k);
            ielnod[static_cast<size_t>(k) * (ldcn + 1) + (e + 1)] = n;
            at_node[n].push_back(e);
        }

    // No springs and no prescribed displacements: their tables stay zero.
    const int32_t ldes = kEstifLd - 1, ldsf = nnodes, ndofe = kDofs, ndofn = kDofs;
    const std::vector<int32_t> isprf(static_cast<size_t>(kDofs) * (ldsf + 1), 0);
    const int32_t idofmap[kDofs + 1] = {0, 1, 2};
    std::vector<int32_t> ivisit(nnodes + 1, 0), locnod(nnodes + 1, 0);
    std::vector<Real> spring(static_cast<size_t>(kDofs) * (nnodes + 1), 0);
    std::vector<Real> upres(neq + 1, 0), fload(neq + 1, 0);

    Crs crs;
    crs.rowptr.resize(neq + 1);
    std::vector<int32_t> fixed(neq + 1, 0);
    for (int32_t n = 1; n <= nnodes; ++n)
        if (mesh.clamped[n])
            for (int d = 1; d <= kDofs; ++d) fixed[(n - 1) * kDofs + d] = 1;

    std::vector<int32_t> nodlst;
    const int32_t empty_list[1] = {0};
    std::vector<Real> snode;
    int32_t nnzcnt = 0;
    for (int32_t n = 1; n <= nnodes; ++n) {
        // The node's neighbours in ascending order, so that every row's
        // columns ascend.
        nodlst.assign(1, 0);
        for (const int32_t e : at_node[n])
            for (int32_t k = 1; k <= nslot; ++k) nodlst.push_back(mesh.node_of(e, k));
        std::sort(nodlst.begin() + 1, nodlst.end());
        nodlst.erase(std::unique(nodlst.begin() + 1, nodlst.end()), nodlst.end());
        nodlst[0] = static_cast<int32_t>(nodlst.size()) - 1;
        for (int32_t j = 1; j <= nodlst[0]; ++j) locnod[nodlst[j]] = j;

        const int32_t ldnm = kDofs * nodlst[0];
        snode.assign(static_cast<size_t>(kDofs + 1) * (ldnm + 1), Real(0));
        for (const int32_t e : at_node[n]) {
            const int32_t ielem = e + 1;
            Route<Real>::gather(&estif[static_cast<size_t>(e) * kEstifSize], &n, &nslot,
                                snode.data(), &ielem, spring.data(), ivisit.data(), nullptr,
                                ielnod.data(), isprf.data(), &ndofe, &ndofn, &ldes, &ldsf, &ldnm,
                                nullptr, &ldcn, nullptr, upres.data(), fload.data(), locnod.data(),
                                &nnzcnt, idofmap);
        }
        for (int32_t r = 1; r <= kDofs; ++r) {
            const int32_t eq = (n - 1) * kDofs + r;
            crs.col.resize(static_cast<size_t>(crs.nnz) + ldnm);
            crs.val.resize(static_cast<size_t>(crs.nnz) + ldnm);
            // A clamped equation's row is begun but left empty: its
            // couplings to free columns would otherwise land in it.
            const int32_t* list = fixed[eq] == 1 ? empty_list : nodlst.data();
            Route<Real>::append(&ndofn, &ldnm, &crs.nnz, crs.rowptr.data(), crs.col.data(),
                                nullptr, &crs.rows, fixed.data(), snode.data(), crs.val.data(),
                                nullptr, &r, list, nullptr, &ndofn);
        }
    }
    crs.rowptr[crs.rows] = crs.nnz + 1;  // the closing pointer is the host's
    crs.col.resize(crs.nnz);
    crs.val.resize(crs.nnz);
    return crs;
}

// Solves K u = f with K's upper triangle in compressed rows; the clamped
// equations get a unit diagonal and a zero load.
std::vector<double> solve(const Mesh& mesh, const Crs& crs) {
    const int32_t neq = crs.rows;
    std::vector<int> outer(neq + 1), inner;
    std::vector<double> values;
    inner.reserve(crs.nnz + neq);
    values.reserve(crs.nnz + neq);
    for (int32_t r = 0; r < neq; ++r) {
        outer[r] = static_cast<int>(inner.size());
        if (crs.rowptr[r] == crs.rowptr[r + 1]) {
            inner.push_back(r);
            values.push_back(1.0);
        }
        for (int32_t k = crs.rowptr[r] - 1; k < crs.rowptr[r + 1] - 1; ++k) {
            inner.push_back(crs.col[k] - 1);
            values.push_back(crs.val[k]);
        }
    }
    outer[neq] = static_cast<int>(inner.size());
    const Eigen::Map<const Eigen::SparseMatrix<double, Eigen::RowMajor, int>> upper(
        neq, neq, outer[neq], outer.data(), inner.data(), values.data());
    const Eigen::SparseMatrix<double> k = upper;

    Eigen::VectorXd f = Eigen::VectorXd::Zero(neq);
    for (int32_t n = 1; n <= mesh.nodes(); ++n)
        if (!mesh.clamped[n]) f[(n - 1) * kDofs + 1] = mesh.load_y[n];
    Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Upper> ldlt(k);
    if (ldlt.info() != Eigen::Success) throw std::runtime_error("the stiffness matrix is singular");
    const Eigen::VectorXd u = ldlt.solve(f);
    return std::vector<double>(u.data(), u.data() + neq);
}

struct Result {
    int32_t elements = 0, nodes = 0, equations = 0, stored = 0, degenerate = 0;
    double probe = 0, corner = 0;
};

template <class Real>
Result analyse(const Mesh& mesh, int rule) {
    Result res;
    std::vector<Real> estif = element_matrices<Real>(mesh, rule, &res.degenerate);
    const Crs crs = assemble<Real>(mesh, estif);
    const std::vector<double> u = solve(mesh, crs);
    res.elements = mesh.elements();
    res.nodes = mesh.nodes();
    res.equations = crs.rows;
    res.stored = crs.nnz;
    res.probe = u[(mesh.probe - 1) * kDofs + 1];
    res.corner = mesh.corner > 0 ? u[(mesh.corner - 1) * kDofs + 1] : NAN;
    return res;
}

Result analyse(const Mesh& mesh, int rule, bool double_route) {
    return double_route ? analyse<double>(mesh, rule) : analyse<float>(mesh, rule);
}

// ---------------------------------------------------------------------------
// Command line

struct Options {
    std::vector<int> quads = {2, 4, 8, 16, 32};
    std::vector<int> tris = {4, 8, 16, 32, 64};
    std::vector<int> rules = {3, 2};
    std::vector<bool> routes = {true, false};  // double, compatible
    std::string out = ".";
    bool svg = true, check = false;
    int svg_quads = 8, svg_tris = 16;
};

const char* const kUsage =
    "usage: membrane [options]\n"
    "  --quads N[,N...]     8-node quadrilateral meshes, N x N elements (default 2,4,8,16,32;\n"
    "                       'none' for no quadrilaterals)\n"
    "  --tris N[,N...]      triangle meshes with boundary spacing 48/N (default 4,8,16,32,64;\n"
    "                       'none' for no triangles)\n"
    "  --rule 2|3|both      Gauss rule of the quadrilaterals (default both; 3 is the full rule)\n"
    "  --route double|compatible|both\n"
    "                       double-precision element and node matrices (shellfe_ routines)\n"
    "                       or the compatible single-precision routines (default both)\n"
    "  --out DIR            directory of the SVG pictures (default the current directory)\n"
    "  --svg-quads N        quadrilateral mesh drawn (default 8)\n"
    "  --svg-tris N         triangulation drawn (default 16)\n"
    "  --no-svg             write no pictures\n"
    "  --check              exit with status 1 unless the 8-node meshes of N >= 16 lie within\n"
    "                       0.5 % of 23.96 and the triangles' error falls with every density\n"
    "  --help               this text\n";

[[noreturn]] void usage_error(const std::string& message) {
    std::fprintf(stderr, "membrane: %s\n%s", message.c_str(), kUsage);
    std::exit(2);
}

int parse_size(const std::string& option, const std::string& text, int limit) {
    errno = 0;
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno == ERANGE)
        usage_error(option + ": '" + text + "' is not a whole number");
    if (v < 1) usage_error(option + ": the mesh size must be positive, not " + text);
    if (v > limit) usage_error(option + ": " + text + " is larger than " + std::to_string(limit));
    return static_cast<int>(v);
}

std::vector<int> parse_sizes(const std::string& option, const std::string& text, int limit) {
    std::vector<int> sizes;
    if (text == "none") return sizes;
    size_t start = 0;
    while (true) {
        const size_t comma = text.find(',', start);
        sizes.push_back(parse_size(option, text.substr(start, comma - start), limit));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    return sizes;
}

Options parse(int argc, char** argv) {
    Options o;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 >= argc) usage_error(a + " needs a value");
            return argv[++i];
        };
        if (a == "--help" || a == "-h") {
            std::fputs(kUsage, stdout);
            std::exit(0);
        } else if (a == "--quads") {
            o.quads = parse_sizes(a, value(), 256);
        } else if (a == "--tris") {
            o.tris = parse_sizes(a, value(), 256);
        } else if (a == "--rule") {
            const std::string v = value();
            if (v == "2" || v == "3") o.rules = {v[0] - '0'};
            else if (v == "both") o.rules = {3, 2};
            else usage_error("--rule: expected 2, 3 or both, not '" + v + "'");
        } else if (a == "--route") {
            const std::string v = value();
            if (v == "double") o.routes = {true};
            else if (v == "compatible") o.routes = {false};
            else if (v == "both") o.routes = {true, false};
            else usage_error("--route: expected double, compatible or both, not '" + v + "'");
        } else if (a == "--out") {
            o.out = value();
        } else if (a == "--svg-quads") {
            o.svg_quads = parse_size(a, value(), 256);
        } else if (a == "--svg-tris") {
            o.svg_tris = parse_size(a, value(), 256);
        } else if (a == "--no-svg") {
            o.svg = false;
        } else if (a == "--check") {
            o.check = true;
        } else {
            usage_error("unknown option '" + a + "'");
        }
    }
    return o;
}

double relative_error(double v) { return (v - kReference) / kReference; }

}  // namespace

int main(int argc, char** argv) {
    const Options opt = parse(argc, argv);
    bool ok = true;
    try {
        const Predicates pred;  // the orientation predicate's constants, once
        std::printf("Cook's skew cantilever: trapezoid (0,0) (48,44) (48,60) (0,44), clamped at x = 0,\n"
                    "unit shear load on x = 48, E = 1, nu = 1/3, t = 1, plane stress.\n"
                    "Vertical displacement v at (48, 52) against the reference %.2f\n"
                    "(the top corner (48, 60) converges to about %.2f).\n",
                    kReference, kCornerReference);

        for (const int rule : opt.quads.empty() ? std::vector<int>{} : opt.rules)
            for (const bool dbl : opt.routes) {
                std::printf("\n8-node quadrilaterals, %dx%d Gauss points, %s route\n", rule, rule,
                            dbl ? Route<double>::name : Route<float>::name);
                std::printf("%5s %9s %7s %9s %9s %11s %11s %11s\n", "N", "elements", "nodes",
                            "equations", "stored", "v(48,52)", "rel. error", "v(48,60)");
                for (const int n : opt.quads) {
                    const Result r = analyse(quadrilateral_mesh(n), rule, dbl);
                    std::printf("%5d %9d %7d %9d %9d %11.5f %+11.3e %11.5f\n", n, r.elements,
                                r.nodes, r.equations, r.stored, r.probe, relative_error(r.probe),
                                r.corner);
                    if (r.degenerate) std::printf("      %d elements with a degenerate point\n",
                                                  r.degenerate);
                    if (opt.check && n >= 16 && std::fabs(relative_error(r.probe)) > 0.005) {
                        std::fprintf(stderr, "membrane: %dx%d quadrilaterals (rule %d, %s) are "
                                     "%.3f %% from the reference, more than 0.5 %%\n", n, n, rule,
                                     dbl ? "double" : "compatible",
                                     100.0 * relative_error(r.probe));
                        ok = false;
                    }
                }
            }

        if (!opt.tris.empty()) {
            std::vector<Mesh> meshes;
            for (const int n : opt.tris) meshes.push_back(triangle_mesh(n, pred));
            for (const bool dbl : opt.routes) {
                std::printf("\n3-node triangles (constant strain, one point), advancing front, "
                            "%s route\n", dbl ? Route<double>::name : Route<float>::name);
                std::printf("%5s %7s %9s %7s %9s %9s %11s %11s %9s\n", "N", "spacing",
                            "triangles", "nodes", "equations", "stored", "v(48,52)",
                            "rel. error", "min. q");
                double last_error = INFINITY;
                for (size_t i = 0; i < meshes.size(); ++i) {
                    const int n = opt.tris[i];
                    const Mesh& mesh = meshes[i];
                    const Result r = analyse(mesh, 1, dbl);
                    const double err = relative_error(r.probe);
                    std::printf("%5d %7.3f %9d %7d %9d %9d %11.5f %+11.3e %9.3f\n", n, kWidth / n,
                                r.elements, r.nodes, r.equations, r.stored, r.probe, err,
                                mesh.min_quality);
                    if (opt.check && !(std::fabs(err) < last_error)) {
                        std::fprintf(stderr, "membrane: the triangles' error did not fall from "
                                     "%.4g to N = %d (%.4g)\n", last_error, n, std::fabs(err));
                        ok = false;
                    }
                    last_error = std::fabs(err);
                }
            }
        }

        if (opt.svg) {
            const std::string q = opt.out + "/membrane_quads.svg";
            const std::string t = opt.out + "/membrane_triangles.svg";
            write_svg(q, quadrilateral_mesh(opt.svg_quads),
                      std::to_string(opt.svg_quads) + " x " + std::to_string(opt.svg_quads) +
                          " 8-node quadrilaterals");
            write_svg(t, triangle_mesh(opt.svg_tris, pred),
                      "advancing-front triangles, spacing 48/" + std::to_string(opt.svg_tris));
            std::printf("\nwrote %s and %s\n", q.c_str(), t.c_str());
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "membrane: %s\n", e.what());
        return 1;
    }
    return ok ? 0 : 1;
}
