// Element matrices, restraints, loads and the global matrix of the slab.
//
// The same host code runs both routes: the double-precision extension with
// double arrays, or the compatible single-precision routines with float
// arrays, exactly as a host switches route by changing its array types.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <type_traits>

#include "shellfe.h"
#include "slab.hpp"

namespace slab {

namespace {

const int32_t kNoOptions = 0;  // the extension's layer formulas as the compatible ones

// Calls the double-precision routine with double arrays, the compatible one
// with float arrays: the two take the same arguments in the same order.
template <class Real, class Compatible, class Precise, class... A>
void call(Compatible compatible, Precise precise, A... args) {
    if constexpr (std::is_same_v<Real, double>)
        precise(args...);
    else
        compatible(args...);
}

// ---- the element matrices ---------------------------------------------------

// Material, layers and integration rules as host arrays of one precision.
template <class Real>
struct Plate {
    Real gpos3[12] = {}, gwei3[12] = {}, gpos2[12] = {}, gwei2[12] = {};  // (0:2, 0:3)
    Real prop[36] = {};                                                  // (0:1, 0:17)
    std::vector<Real> play, zlay;                                        // (0:NLAY, 0:17), (0:NLAY+1)
    Real tnode[20] = {};                                                 // (0:1, 0:9)
    int32_t nlay;

    explicit Plate(const Options& o) : nlay(o.layers) {
        const double g3 = std::sqrt(0.6), g2 = 1.0 / std::sqrt(3.0);
        const double p3[3] = {-g3, 0.0, g3}, w3[3] = {5.0 / 9.0, 8.0 / 9.0, 5.0 / 9.0};
        for (int i = 1; i <= 3; ++i) gpos3[1 + 3 * i] = Real(p3[i - 1]), gwei3[1 + 3 * i] = Real(w3[i - 1]);
        gpos2[4] = Real(-g2), gpos2[7] = Real(g2), gwei2[4] = gwei2[7] = Real(1);
        std::vector<double> p, z;
        layer_tables(o, p, z);
        play.assign(p.begin(), p.end());
        zlay.assign(z.begin(), z.end());
        for (int c = 0; c <= 17; ++c) prop[1 + 2 * c] = play[1 + std::size_t(nlay + 1) * c];
        for (int k = 1; k <= 9; ++k) tnode[1 + 2 * k] = Real(o.h);
    }
};

}  // namespace

void layer_tables(const Options& o, std::vector<double>& play, std::vector<double>& zlay) {
    const int nlay = o.layers;
    const double G = o.E / (2.0 * (1.0 + o.nu));
    play.assign(18 * std::size_t(nlay + 1), 0.0);
    zlay.assign(nlay + 2, 0.0);
    for (int l = 1; l <= nlay; ++l) {
        double* row = play.data() + l;
        const std::size_t stride = nlay + 1;
        row[1 * stride] = o.E, row[2 * stride] = o.nu, row[8 * stride] = o.E;
        row[9 * stride] = G, row[10 * stride] = G, row[11 * stride] = G;
    }
    for (int l = 1; l <= nlay + 1; ++l) zlay[l] = -0.5 * o.h + o.h * (l - 1) / nlay;
}

namespace {

// The natural coordinates of (x, y) in element e; returns how far from the
// point they map back to.
double natural_coordinates(const Mesh& mesh, int32_t e, float x, float y, float& xi, float& eta) {
    const float z = 0.0f, c0 = 0.0f, c1 = 1.0f;
    float shp[40];
    xi = eta = 0.0f;
    NORMALISEDCORDDOTNET(&e, &xi, &eta, &x, &y, &z, mesh.ielnod.data(), mesh.xyz.data(), &mesh.nelem, nullptr, &c0, &c1,
                         &c0, &c1, &mesh.nnode);
    shape_functions(xi, eta, shp);
    double px = 0, py = 0;
    for (int a = 1; a <= 8; ++a) px += shp[10 + a] * mesh.x(mesh.node(a, e)), py += shp[10 + a] * mesh.y(mesh.node(a, e));
    return std::hypot(px - x, py - y);
}

}  // namespace

bool locate(const Mesh& mesh, float x, float y, int32_t& elem, float& xi, float& eta) {
    const int32_t npt = mesh.nnode;
    int32_t ipt = 0;
    FINDLOADPOINT(&npt, &ipt, &x, &y, mesh.xyz.data(), mesh.xyz.data() + (mesh.nnode + 1));
    if (ipt < 1) return false;
    locate_at(mesh, ipt, x, y, elem, xi, eta);
    return true;
}

void locate_at(const Mesh& mesh, int32_t node, float x, float y, int32_t& elem, float& xi, float& eta) {
    // Of the elements at the node, the one whose natural coordinates of the
    // point map back onto it best.
    const int32_t* rec = mesh.record(node);
    double best = std::numeric_limits<double>::infinity();
    for (int32_t k = 1; k <= rec[0]; ++k) {
        float s = 0.0f, t = 0.0f;
        if (const double d = natural_coordinates(mesh, rec[k], x, y, s, t); d < best) best = d, elem = rec[k], xi = s, eta = t;
    }
}

void shape_functions(float xi, float eta, float* shp) {
    const int32_t ntype = 1;
    SFR1DLLDOTNET(shp, &xi, &eta, &ntype);
}

struct Model {
    int ndof = 3;
    int32_t ldes = 24;
    bool precise = true;
    std::vector<double> kd;  // element matrices, (ldes+1)^2 each, element e at (e-1)
    std::vector<float> kf;
    std::size_t stride() const { return std::size_t(ldes + 1) * (ldes + 1); }
};

namespace {

// Forms every element matrix, stored full and symmetric with ndof unknowns
// per node: plate bending (3x3 points) and transverse shear (2x2) into
// six-unknown node blocks, then either the plate triple selected from them
// or the membrane and drilling stiffness merged in.
template <class Real>
void form_elements(const Options& opt, const Mesh& mesh, Model& model, std::vector<Real>& store) {
    Plate<Real> pl(opt);
    const bool shell = opt.dofs == Dofs::shell;
    const int32_t ld6 = 48, ndofn = 6, ioff = 2, ntype = 1, nnode = 8, iel = 1, one = 1, nb = 3, ns = 2;
    std::vector<Real> k6(49 * 49), sel(49 * 49), k2(19 * 19);
    std::vector<int32_t> nodflg(mesh.nnode + 1, 0);
    const int32_t idof[4] = {0, 3, 4, 5}, nsel = 3;
    const Real ratio = Real(1.0e-3);
    Real xy[30] = {};
    store.assign(model.stride() * mesh.nelem, Real(0));
    for (int32_t e = 1; e <= mesh.nelem; ++e) {
        for (int s = 1; s <= 8; ++s) {
            const int32_t n = mesh.node(s, e);
            xy[s + 10] = Real(mesh.x(n)), xy[s + 20] = Real(mesh.y(n));
        }
        std::fill(k6.begin(), k6.end(), Real(0));
        int32_t ngpt = 0, ngpt2 = 0;
        Real detj = 0;
        call<Real>(STIFFP001DOTNET, [](auto... a) { shellfe_plate_bending_stiffness(a..., &kNoOptions); }, &nb, &nb,
                   &ntype, pl.gpos3, &ngpt, &iel, &ngpt2, nullptr, &nnode, xy, pl.tnode, nullptr, &one, pl.prop, &ioff,
                   k6.data(), pl.gwei3, nullptr, nullptr, &one, &one, &ld6, &ndofn, &nnode, pl.play.data(),
                   pl.zlay.data(), &pl.nlay, &detj);
        if (!(detj > 0)) throw std::runtime_error("element " + std::to_string(e) + " is degenerate");
        call<Real>(STIFFP002DOTNET, [](auto... a) { shellfe_plate_shear_stiffness(a..., &kNoOptions); }, &ns, &ns,
                   &ntype, pl.gpos2, &ngpt, &iel, &nnode, xy, pl.tnode, nullptr, &one, pl.prop, &ioff, k6.data(),
                   pl.gwei2, nullptr, &one, &one, &ld6, &ndofn, &nnode, pl.play.data(), pl.zlay.data(), &pl.nlay,
                   &detj);
        if (shell) {
            std::fill(k2.begin(), k2.end(), Real(0));
            call<Real>(STIFFP003DOTNET, shellfe_membrane_stiffness, &nb, &nb, &ntype, pl.gpos3, &ngpt, &iel, &nnode,
                       xy, pl.tnode, nullptr, &one, pl.prop, pl.gwei3, nullptr, &one, &one, nullptr, nullptr, &nnode,
                       k2.data(), &detj);
            call<Real>(STIESTDLLDOTNET, shellfe_finish_shell_element, k2.data(), k6.data(), &nnode, nodflg.data(),
                       &ndofn, &ld6, nullptr, &mesh.nelem, &e, mesh.ielnod.data(), &ratio);
        }
        // The routines fill the lower triangle (column-major: row p, column
        // q at p + 49 q); the assembly routines read the whole matrix.
        for (int q = 1; q <= 48; ++q)
            for (int p = q + 1; p <= 48; ++p) k6[q + 49 * p] = k6[p + 49 * q];
        Real* out = store.data() + model.stride() * (e - 1);
        if (shell) {
            std::copy(k6.begin(), k6.end(), out);
            continue;
        }
        call<Real>(BUILDESTIF1DOTNET, shellfe_select_dofs, &nnode, &nsel, &ld6, k6.data(), sel.data(), idof);
        for (int b = 0; b < 8; ++b)
            for (int q = 1; q <= 3; ++q)
                for (int a = 0; a < 8; ++a)
                    for (int r = 1; r <= 3; ++r)
                        out[(3 * b + q) + 25 * (3 * a + r)] = sel[(6 * b + q) + 49 * (6 * a + r)];
    }
}

}  // namespace

// Consistent nodal loads of element e under the uniform pressure, w in
// element position 5 of each six-unknown node block (the library's
// element-to-global order puts it on position 3 of the node block).
void uniform_element_load(const Options& opt, const Mesh& mesh, int32_t e, float eload[49]) {
    const double g = std::sqrt(0.6), pos[3] = {-g, 0.0, g}, wei[3] = {5.0 / 9.0, 8.0 / 9.0, 5.0 / 9.0};
    float shp[40];
    double deriv[40], cartd[30], elcod[30] = {}, detj = 0.0;
    const int32_t nen = 8;
    for (int s = 1; s <= 8; ++s) {
        const int32_t n = mesh.node(s, e);
        elcod[s + 10] = mesh.x(n), elcod[s + 20] = mesh.y(n);
    }
    double f[9] = {};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            shape_functions(float(pos[i]), float(pos[j]), shp);
            for (int k = 0; k < 40; ++k) deriv[k] = shp[k];
            shellfe_jacobian(cartd, deriv, &detj, elcod, &nen);
            for (int s = 1; s <= 8; ++s) f[s] += opt.q * shp[10 + s] * wei[i] * wei[j] * detj;
        }
    std::fill(eload, eload + 49, 0.0f);
    for (int s = 1; s <= 8; ++s) eload[6 * (s - 1) + kElementW] = float(f[s]);
}

// The element that holds the point load at the centre (the given one, or
// the one found where 0), and its nodal loads.
int32_t point_element_load(const Options& opt, const Mesh& mesh, float eload[49], int32_t elem) {
    const float c = float(0.5 * opt.a);
    float xi = 0.0f, eta = 0.0f, shp[40];
    if (elem > 0)
        natural_coordinates(mesh, elem, c, c, xi, eta);
    else if (!locate(mesh, c, c, elem, xi, eta))
        throw std::runtime_error("no element found for the point load");
    shape_functions(xi, eta, shp);
    std::fill(eload, eload + 49, 0.0f);
    for (int s = 1; s <= 8; ++s) eload[6 * (s - 1) + kElementW] = float(opt.P * shp[10 + s]);
    return elem;
}

namespace {

// Consistent nodal loads, scattered into six-unknown node blocks through the
// library's element-to-global order; the point load on element `point`
// (none where 0, found here where -1).
void form_loads(const Options& opt, const Mesh& mesh, int32_t point, System& sys) {
    const int32_t nenod = 8, ldnf = mesh.nnode, six = 6;
    std::vector<int32_t> numnod(mesh.nnode + 1);
    std::iota(numnod.begin(), numnod.end(), 0);
    std::vector<double> gload(6 * std::size_t(mesh.nnode) + 1, 0.0);
    std::vector<float> nodfrc(7 * std::size_t(mesh.nnode + 1), 0.0f);
    float eload[49];
    auto scatter = [&](int32_t e) {
        FELOADTOGLOADDOTNET01(&nenod, mesh.ielnod.data(), &mesh.nelem, numnod.data(), &ldnf, &six, gload.data(), eload,
                              nodfrc.data(), nullptr, &e);
    };
    if (opt.load == Load::uniform) {
        for (int32_t e = 1; e <= mesh.nelem; ++e) {
            uniform_element_load(opt, mesh, e, eload);
            scatter(e);
        }
    } else if (point != 0) {
        scatter(point_element_load(opt, mesh, eload, std::max(point, 0)));
    }
    for (int32_t n = 1; n <= mesh.nnode; ++n) sys.load[std::size_t(n - 1) * sys.ndof + sys.wdof] = gload[6 * std::size_t(n - 1) + 3];
}

}  // namespace

// Restraints of node n: hard simple support fixes w and the rotation whose
// slope runs along the edge (theta2 on x = 0, a; theta3 on y = 0, a);
// clamped edges fix all three. f[w] is the node's w flag; returns whether
// the node lies on the boundary.
bool restrain_node(const Options& opt, const Mesh& mesh, int32_t n, int32_t* f, int w) {
    const double tol = 1.0e-3 * opt.a / std::sqrt(double(mesh.nelem));
    const double x = mesh.x(n), y = mesh.y(n);
    const bool xedge = std::fabs(x) < tol || std::fabs(x - opt.a) < tol;
    const bool yedge = std::fabs(y) < tol || std::fabs(y - opt.a) < tol;
    if (!xedge && !yedge) return false;
    f[w] = 1;
    if (opt.support == Support::clamped) f[w + 1] = f[w + 2] = 1;
    if (xedge) f[w + 1] = 1;
    if (yedge) f[w + 2] = 1;
    return true;
}

namespace {

// Restraints by equation; the membrane unknowns of a shell are held on the
// whole boundary.
void restrain(const Options& opt, const Mesh& mesh, System& sys) {
    for (int32_t n = 1; n <= mesh.nnode; ++n) {
        int32_t* f = sys.ifix.data() + std::size_t(n - 1) * sys.ndof;
        if (restrain_node(opt, mesh, n, f, sys.wdof) && sys.ndof == 6) f[1] = f[2] = 1;
    }
    sys.nfree = 0;
    for (int32_t k = 1; k <= sys.neq; ++k) sys.nfree += sys.ifix[k] == 0;
    for (int32_t k = 1; k <= sys.neq; ++k)
        if (sys.ifix[k]) sys.load[k] = 0.0;
}

// ---- assembly -----------------------------------------------------------------

// Per node from first to last: clear the node matrix, list the neighbours
// numbered at or above the node (the upper triangle), gather every element
// at the node, append the node's rows. A restrained equation's row is rolled
// back and given a unit diagonal, so that equation numbers stay those of
// the nodes.
template <class Real>
void assemble_crs(const Mesh& mesh, Model& model, std::vector<Real>& store, System& sys, int32_t first, int32_t last) {
    const int32_t nd = model.ndof, ldes = model.ldes, ldsf = mesh.nnode, nenod = 8;
    std::vector<int32_t> lists, at(last - first + 1), near;
    std::size_t capacity = 0;
    int32_t widest = 0;
    for (int32_t n = first; n <= last; ++n) {
        near.clear();
        const int32_t* rec = mesh.record(n);
        for (int32_t k = 1; k <= rec[0]; ++k)
            for (int s = 1; s <= 8; ++s)
                if (const int32_t m = mesh.node(s, rec[k]); m >= n) near.push_back(m);
        std::sort(near.begin(), near.end());
        near.erase(std::unique(near.begin(), near.end()), near.end());
        at[n - first] = int32_t(lists.size());
        lists.push_back(int32_t(near.size()));
        lists.insert(lists.end(), near.begin(), near.end());
        widest = std::max(widest, int32_t(near.size()));
        capacity += near.size() * nd * nd;
    }
    const int32_t ldnm = widest * nd;
    std::vector<Real> snode(std::size_t(nd + 1) * (ldnm + 1), Real(0)), spring(std::size_t(nd) * mesh.nnode + nd + 1);
    std::vector<Real> upres(sys.neq + 1, Real(0));
    std::vector<double> fload(sys.neq + 1, 0.0);
    std::vector<int32_t> locnod(mesh.nnode + 1, 0), ivisit(mesh.nnode + 1, -1), isprf(std::size_t(nd) * (mesh.nnode + 1));
    std::vector<int32_t> idofmap(nd + 1);
    std::iota(idofmap.begin(), idofmap.end(), 0);
    sys.rowptr.assign(std::size_t(last - first + 1) * nd + 1, 0);
    sys.col.assign(capacity, 0);
    sys.val.assign(capacity, 0.0);
    int32_t nnz = 0, nrows = 0, nnzcnt = 0;
    for (int32_t n = first; n <= last; ++n) {
        const int32_t* nodlst = lists.data() + at[n - first];
        std::fill_n(snode.begin() + (ldnm + 1), std::size_t(nd) * (ldnm + 1), Real(0));
        for (int32_t j = 1; j <= nodlst[0]; ++j) locnod[nodlst[j]] = j;
        const int32_t* rec = mesh.record(n);
        for (int32_t k = 1; k <= rec[0]; ++k) {
            const int32_t e = rec[k];
            call<Real>(BUILDALLNODESTIFFDLLDOTNET01, shellfe_gather_node_stiffness,
                       store.data() + model.stride() * (e - 1), &n, &nenod, snode.data(), &e, spring.data(),
                       ivisit.data(), nullptr, mesh.ielnod.data(), isprf.data(), &nd, &nd, &ldes, &ldsf, &ldnm,
                       nullptr, &mesh.nelem, nullptr, upres.data(), fload.data(), locnod.data(), &nnzcnt,
                       idofmap.data());
        }
        for (int32_t r = 1; r <= nd; ++r) {
            // A double node matrix is appended by the double-matrix row routine.
            call<Real>(ADDTOCRSSTIFFDLLDOTNET, ADDTOCRSMASSDLLDLL, &nd, &ldnm, &nnz, sys.rowptr.data(),
                       sys.col.data(), nullptr, &nrows, sys.ifix.data(), snode.data(), sys.val.data(), nullptr, &r,
                       nodlst, nullptr, &nd);
            const int32_t eq = (n - 1) * nd + r;
            if (sys.ifix[eq]) {
                nnz = sys.rowptr[nrows - 1] - 1;
                sys.col[nnz] = eq, sys.val[nnz] = 1.0, ++nnz;
            }
        }
    }
    sys.rowptr[nrows] = nnz + 1;
    sys.col.resize(nnz), sys.val.resize(nnz);
}

// Element by element into skyline storage, the nodes numbered row by row
// through NUMNOD for a narrow profile; then the couplings are read back
// into compressed rows in the nodes' own numbering for the solver.
template <class Real>
void assemble_skyline(const Options& opt, const Mesh& mesh, Model& model, std::vector<Real>& store, System& sys) {
    const int32_t nd = model.ndof, ldes = model.ldes, nslot = 8;
    std::vector<int32_t> order(mesh.nnode), numnod(mesh.nnode + 1, 0), inverse(mesh.nnode + 1, 0);
    std::iota(order.begin(), order.end(), 1);
    const float tol = float(1.0e-3 * opt.a / std::sqrt(double(mesh.nelem)));
    std::sort(order.begin(), order.end(), [&](int32_t a, int32_t b) {
        return std::fabs(mesh.y(a) - mesh.y(b)) > tol ? mesh.y(a) < mesh.y(b) : mesh.x(a) < mesh.x(b);
    });
    for (int32_t k = 0; k < mesh.nnode; ++k) numnod[order[k]] = k + 1, inverse[k + 1] = order[k];
    std::vector<int32_t> lowest(mesh.nnode + 1);
    std::iota(lowest.begin(), lowest.end(), 0);
    for (int32_t e = 1; e <= mesh.nelem; ++e) {
        int32_t low = mesh.nnode;
        for (int s = 1; s <= 8; ++s) low = std::min(low, numnod[mesh.node(s, e)]);
        for (int s = 1; s <= 8; ++s) lowest[numnod[mesh.node(s, e)]] = std::min(lowest[numnod[mesh.node(s, e)]], low);
    }
    std::vector<int32_t> idiag(sys.neq + 2, 0);
    int64_t profile = 0;
    int32_t nband = 0;
    for (int32_t k = 1; k <= mesh.nnode; ++k)
        for (int32_t d = 1; d <= nd; ++d) {
            const int32_t eq = (k - 1) * nd + d, height = eq - (lowest[k] - 1) * nd;
            profile += height;
            nband = std::max(nband, height);
            idiag[eq + 1] = int32_t(std::min<int64_t>(profile, std::numeric_limits<int32_t>::max()));
        }
    if (profile > (int64_t(64) << 20))  // 512 MiB of skyline
        throw std::runtime_error("the skyline profile (" + std::to_string(profile) +
                                 " entries) is too large for this mesh; use --assembly crs");
    std::vector<double> sky(std::size_t(profile) + 1, 0.0);
    for (int32_t e = 1; e <= mesh.nelem; ++e)
        call<Real>(ADDSHELLTOSDOTNET, shellfe_add_shell_to_skyline, store.data() + model.stride() * (e - 1),
                   mesh.ielnod.data(), nullptr, idiag.data(), &nband, &nd, sky.data(), numnod.data(), &e, &mesh.nelem,
                   nullptr, nullptr, &ldes, &nslot);
    // Read back: column I of the skyline holds rows J = I - height + 1 .. I.
    std::vector<std::vector<std::pair<int32_t, double>>> rows(sys.neq + 1);
    auto natural = [&](int32_t eq) { return (inverse[(eq - 1) / nd + 1] - 1) * nd + (eq - 1) % nd + 1; };
    for (int32_t I = 1; I <= sys.neq; ++I)
        for (int32_t J = I - (idiag[I + 1] - idiag[I]) + 1; J <= I; ++J) {
            const double v = sky[std::size_t(idiag[I + 1] - I + J)];
            if (v == 0.0) continue;
            const int32_t i = natural(I), j = natural(J);
            if (sys.ifix[i] || sys.ifix[j]) continue;
            rows[std::min(i, j)].emplace_back(std::max(i, j), v);
        }
    sys.rowptr.assign(sys.neq + 1, 0);
    sys.col.clear(), sys.val.clear();
    for (int32_t i = 1; i <= sys.neq; ++i) {
        sys.rowptr[i - 1] = int32_t(sys.col.size()) + 1;
        auto& r = rows[i];
        if (sys.ifix[i]) r.assign(1, {i, 1.0});
        std::sort(r.begin(), r.end());
        for (const auto& [c, v] : r) sys.col.push_back(c), sys.val.push_back(v);
        std::vector<std::pair<int32_t, double>>().swap(r);
    }
    sys.rowptr[sys.neq] = int32_t(sys.col.size()) + 1;
}

}  // namespace

std::shared_ptr<Model> build_model(const Options& opt, const Mesh& mesh, System& sys, int32_t point) {
    auto model = std::make_shared<Model>();
    model->ndof = opt.dofs == Dofs::shell ? 6 : 3;
    model->ldes = 8 * model->ndof;
    model->precise = opt.route == Route::precise;
    sys.ndof = model->ndof;
    sys.wdof = model->ndof == 6 ? 3 : 1;
    sys.neq = mesh.nnode * sys.ndof;
    sys.ifix.assign(sys.neq + 1, 0);
    sys.load.assign(sys.neq + 1, 0.0);
    if (model->precise)
        form_elements(opt, mesh, *model, model->kd);
    else
        form_elements(opt, mesh, *model, model->kf);
    form_loads(opt, mesh, point, sys);
    restrain(opt, mesh, sys);
    return model;
}

void assemble(const Options& opt, Assembly how, Model& model, const Mesh& mesh, System& sys, int32_t first,
              int32_t last) {
    if (last == 0) first = 1, last = mesh.nnode;
    if (how == Assembly::crs) {
        if (model.precise)
            assemble_crs(mesh, model, model.kd, sys, first, last);
        else
            assemble_crs(mesh, model, model.kf, sys, first, last);
    } else {
        if (model.precise)
            assemble_skyline(opt, mesh, model, model.kd, sys);
        else
            assemble_skyline(opt, mesh, model, model.kf, sys);
    }
}

double flexural_rigidity(const Options& opt) {
    return opt.E * opt.h * opt.h * opt.h / (12.0 * (1.0 - opt.nu * opt.nu));
}

}  // namespace slab
