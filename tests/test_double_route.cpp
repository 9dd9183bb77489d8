// The double-precision route: a simply supported plate solved through it and
// through the compatible routines, the physical layer formulas it offers as
// options, and each of its routines against the compatible one it mirrors.
#include <iostream>

#include "fixtures.hpp"
#include "slab_mesh.hpp"

#if __has_include(<Eigen/Sparse>)
#include <Eigen/Sparse>
#define HAVE_EIGEN 1
#endif

namespace {

const double kPi = 3.14159265358979323846;

template <class R, class T>
Host<R> as(const Host<T>& h) {  // the same table in another real type
    Host<R> r(h.rows - 1, int(h.v.size()) / h.rows - 1);
    std::copy(h.v.begin(), h.v.end(), r.v.begin());
    return r;
}

// The mirror's output against the compatible routine's: what the compatible
// routine left at the sentinel (or NaN) the mirror leaves alone, bit for bit;
// the rest agrees to float rounding of the largest entry.
void expectMirrors(const Host<double>& d, const Host<float>& f, const char* what, double tol = 1e-6) {
    double scale = 0;
    for (float x : f.v)
        scale = x == kSentinel || x != x ? scale : std::max(scale, double(std::fabs(x)));
    int bad = 0;
    for (std::size_t i = 0; i < f.v.size(); ++i) {
        const double x = f.v[i], y = d.v[i];
        const bool ok = x != x ? y != y : x == kSentinel ? y == x : std::fabs(y - x) <= tol * scale;
        if (!ok && bad++ < 5) ADD_FAILURE() << what << " at " << i << ": " << y << " against " << x;
    }
}

// The double route's element routines on a fixture element held in float:
// kind 0 membrane, 1 plate bending, 2 transverse shear.
struct DoubleElement {
    Host<double> estif, prop;
    int32_t ngpt, ngpt2;
    double det = kSentinel;
    DoubleElement(Element el, int kind, int32_t options = 0)
        : estif(as<double>(el.estif)), prop(as<double>(el.prop)), ngpt(el.ngpt), ngpt2(el.ngpt2) {
        Host<double> xy = as<double>(el.xy), tnode = as<double>(el.tnode), gpos = as<double>(el.gpos);
        Host<double> gwei = as<double>(el.gwei), play = as<double>(el.lam.prop);
        Host<double> zlay = as<double>(el.lam.zlay);
        if (kind == 0)
            shellfe_membrane_stiffness(&el.ngpx, &el.ngpy, &el.ntype, gpos.p(), &ngpt, &el.iel,
                                       &el.nnode, xy.p(), tnode.p(), nullptr, &el.imat, prop.p(),
                                       gwei.p(), nullptr, &el.nelem, &el.nmat, nullptr, nullptr,
                                       &el.nnodt, estif.p(), &det);
        else if (kind == 1)
            shellfe_plate_bending_stiffness(
                &el.ngpx, &el.ngpy, &el.ntype, gpos.p(), &ngpt, &el.iel, &ngpt2, nullptr, &el.nnode,
                xy.p(), tnode.p(), nullptr, &el.imat, prop.p(), &el.ioff, estif.p(), gwei.p(), nullptr,
                nullptr, &el.nelem, &el.nmat, &el.ldes, &el.ndofn, &el.nnodt, play.p(), zlay.p(),
                &el.lam.nlay, &det, &options);
        else
            shellfe_plate_shear_stiffness(&el.ngpx, &el.ngpy, &el.ntype, gpos.p(), &ngpt, &el.iel,
                                          &el.nnode, xy.p(), tnode.p(), nullptr, &el.imat, prop.p(),
                                          &el.ioff, estif.p(), gwei.p(), nullptr, &el.nelem, &el.nmat,
                                          &el.ldes, &el.ndofn, &el.nnodt, play.p(), zlay.p(),
                                          &el.lam.nlay, &det, &options);
    }
};

// Eight-node serendipity function of node k (1..8, corners odd) at (xi, eta).
double serendipity(int k, double xi, double eta) {
    const int a = std::array{-1, 0, 1, 1, 1, 0, -1, -1}[k - 1],
              b = std::array{-1, -1, -1, 0, 1, 1, 1, 0}[k - 1];
    if (a && b) return (1 + xi * a) * (1 + eta * b) * (xi * a + eta * b - 1) / 4;
    return a ? (1 + xi * a) * (1 - eta * eta) / 2 : (1 - xi * xi) * (1 + eta * b) / 2;
}
const double kG3[3] = {-0.7745966692414834, 0, 0.7745966692414834}, kW3[3] = {5 / 9., 8 / 9., 5 / 9.};
const double kG2 = 0.5773502691896258;

// One isotropic plate as two equal unrotated layers, which takes the closed form.
Laminate isotropic(float e, float thickness) {
    const float g = e / (2 * 1.3f);
    return Laminate({{e, 0.3f, e, g, g, g, 0}, {e, 0.3f, e, g, g, g, 0}},
                    {-thickness / 2, 0, thickness / 2});
}
struct Closed {  // its rigidities D and 5/6 G t, as the library forms them
    double d, s;
    explicit Closed(const Laminate& lam) {
        const double e = lam.prop(1, 8), nu = lam.prop(1, 2), t = double(lam.zlay(3)) - lam.zlay(1);
        d = e * t * t * t / (12 * (1 - nu * nu)), s = e * t / (2.4 * nu + 2.4);
    }
};

// Centre deflection times D / (q a^4) of the hard simply supported unit
// square: the Navier series of the plate with transverse shear, whose share
// is D / (5/6 G t) times the series of the membrane under the same load.
double navier(double shearRatio) {
    double w = 0;
    for (int m = 1; m < 400; m += 2)
        for (int n = 1; n < 400; n += 2) {
            const double k2 = (m * m + n * n) * kPi * kPi,
                         c = ((m + n) / 2 % 2 ? 16 : -16) / (kPi * kPi * m * n);
            w += c / (k2 * k2) + shearRatio * c / k2;
        }
    return w;
}

// The routines of each route, so that one host program drives both: the
// double ones take the layer OPTIONS last, the compatible ones have none.
template <class Real>
struct Route;
template <>
struct Route<float> {
    template <class... A>
    static void bending(const int32_t*, A... a) { STIFFP001DOTNET(a...); }
    template <class... A>
    static void shear(const int32_t*, A... a) { STIFFP002DOTNET(a...); }
    static constexpr auto gather = &BUILDALLNODESTIFFDLLDOTNET;
    static constexpr auto append = &ADDTOCRSSTIFFDLLDOTNET;
};
template <>
struct Route<double> {
    template <class... A>
    static void bending(const int32_t* o, A... a) { shellfe_plate_bending_stiffness(a..., o); }
    template <class... A>
    static void shear(const int32_t* o, A... a) { shellfe_plate_shear_stiffness(a..., o); }
    static constexpr auto gather = &shellfe_gather_node_stiffness;
    static constexpr auto append = &ADDTOCRSMASSDLLDLL;
};

#ifdef HAVE_EIGEN
// The unit square of n x n eight-node elements under q = 1, hard simply
// supported, moved by (shift, shift), through the route of Real: element
// matrices (3x3 bending, 2x2 shear, DOFs w, theta2 ~ dw/dy, theta3 ~ -dw/dx),
// node matrices gathered node by node, compressed rows of the free equations,
// solved by sparse LDL^T of the upper triangle. Returns the centre's w.
template <class Real>
double centreDeflection(int n, const Laminate& lam, double shift = 0, int32_t options = 0) {
    using R = Route<Real>;
    SlabMesh mesh(n, n, 1.0f / float(n));
    const int32_t nn = mesh.nnode, neq = 3 * nn, ldcn = mesh.ldcn;
    int32_t one = 1, two = 2, three = 3, eight = 8, ldes = 24, ldnm = 63, nlay = lam.nlay, ioff = 0;
    Host<Real> play = as<Real>(lam.prop), zlay = as<Real>(lam.zlay), tnode(1, 9, 1), prop(1, 17);
    Host<Real> gp3(2, 3), gw3(2, 3), gp2(2, 3), gw2(2, 3);
    for (int i = 1; i <= 3; ++i) gp3(1, i) = Real(kG3[i - 1]), gw3(1, i) = Real(kW3[i - 1]);
    gp2(1, 1) = Real(-kG2), gp2(1, 2) = Real(kG2), gw2(1, 1) = gw2(1, 2) = 1;

    std::vector<Host<Real>> estif(mesh.nelem + 1, Host<Real>(24, 24));
    std::vector<std::vector<int32_t>> around(nn + 1);  // elements at each node
    std::vector<double> load(neq + 1);
    const double jac = 0.25 / (double(n) * n);  // det J of every element
    for (int32_t e = 1; e <= mesh.nelem; ++e) {
        Host<Real> xy(9, 2);
        Host<Real>& k = estif[e];
        for (int s = 1; s <= 8; ++s) {
            const int32_t m = mesh.node(s, e);
            xy(s, 1) = Real(mesh.x[m] + shift), xy(s, 2) = Real(mesh.y[m] + shift);
            around[m].push_back(e);
            for (int i = 0; i < 9; ++i)
                load[3 * m - 2] +=
                    serendipity(s, kG3[i / 3], kG3[i % 3]) * kW3[i / 3] * kW3[i % 3] * jac;
        }
        int32_t ngpt = 0, ngpt2 = 0;
        Real det[2] = {};
        R::bending(&options, &three, &three, &one, gp3.p(), &ngpt, &one, &ngpt2, nullptr, &eight,
                   xy.p(), tnode.p(), nullptr, &one, prop.p(), &ioff, k.p(), gw3.p(), nullptr, nullptr,
                   &one, &one, &ldes, &three, &eight, play.p(), zlay.p(), &nlay, &det[0]);
        R::shear(&options, &two, &two, &one, gp2.p(), &ngpt, &one, &eight, xy.p(), tnode.p(), nullptr,
                 &one, prop.p(), &ioff, k.p(), gw2.p(), nullptr, &one, &one, &ldes, &three, &eight,
                 play.p(), zlay.p(), &nlay, &det[1]);
        EXPECT_TRUE(det[0] > 0 && det[1] > 0) << e;
        for (int p = 1; p <= 24; ++p)  // the lower block triangle mirrored
            for (int q = 1; q <= 24; ++q)
                if ((p - 1) / 3 > (q - 1) / 3) k(q, p) = k(p, q);
    }

    // w fixed on every edge; theta2 on x = 0 and x = 1, theta3 on y = 0 and y = 1.
    std::vector<int32_t> ifix(neq + 1), locnod(nn + 1), ivisit(nn + 1), isprf(3 * (nn + 1));
    for (int32_t m = 1; m <= nn; ++m) {
        const bool xEdge = mesh.x[m] == 0 || mesh.x[m] == 1, yEdge = mesh.y[m] == 0 || mesh.y[m] == 1;
        ifix[3 * m - 2] = xEdge || yEdge, ifix[3 * m - 1] = xEdge, ifix[3 * m] = yEdge;
    }
    std::vector<Real> snode(4 * (ldnm + 1)), upres(neq + 1), fload(neq + 1), spring(1);
    std::vector<int32_t> ptr(neq), col(std::size_t(neq) * ldnm), rows, list, map{0, 1, 2, 3};
    std::vector<double> val(col.size());
    int32_t nnz = 0, nrows = 0, counted = 0;
    for (int32_t node = 1; node <= nn; ++node) {
        std::vector<int32_t> near;
        for (int32_t e : around[node])
            for (int s = 1; s <= 8; ++s) near.push_back(mesh.node(s, e));
        std::sort(near.begin(), near.end());
        near.erase(std::unique(near.begin(), near.end()), near.end());
        list.assign(1, 0);
        for (int32_t m : near) locnod[m] = ++list[0], list.push_back(m);
        std::fill(snode.begin(), snode.end(), Real(0));
        for (int32_t e : around[node])
            R::gather(estif[e].p(), &node, &eight, snode.data(), &e, spring.data(), ivisit.data(),
                      nullptr, mesh.ielnod.data(), isprf.data(), &three, &three, &ldes, &nn, &ldnm,
                      nullptr, &ldcn, nullptr, upres.data(), fload.data(), locnod.data(), &counted,
                      map.data());
        for (int32_t r = 1; r <= 3; ++r)
            if (ifix[3 * node - 3 + r] != 1)
                rows.push_back(3 * node - 3 + r),
                    R::append(&three, &ldnm, &nnz, ptr.data(), col.data(), nullptr, &nrows, ifix.data(),
                              snode.data(), val.data(), nullptr, &r, list.data(), nullptr, &three);
    }

    std::vector<int> index(neq + 1, -1);
    int nfree = 0;
    for (int i = 1; i <= neq; ++i) index[i] = ifix[i] == 1 ? -1 : nfree++;
    std::vector<Eigen::Triplet<double>> entries;
    for (int i = 0; i < nrows; ++i)
        for (int k = ptr[i] - 1; k < (i + 1 < nrows ? ptr[i + 1] - 1 : nnz); ++k)
            entries.emplace_back(index[rows[i]], index[col[k]], val[k]);
    Eigen::SparseMatrix<double> stiffness(nfree, nfree);
    stiffness.setFromTriplets(entries.begin(), entries.end());
    Eigen::VectorXd f(nfree);
    for (int i = 1; i <= neq; ++i)
        if (index[i] >= 0) f[index[i]] = load[i];
    Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Upper> ldlt(stiffness);
    EXPECT_EQ(ldlt.info(), Eigen::Success);
    const int32_t centre = 1 + n / 2 + n / 2 * (n + 1);
    return ldlt.solve(f)[index[3 * centre - 2]];
}
#endif

}  // namespace

TEST(DoubleRoute, SimplySupportedPlateConvergesToTheNavierSolution) {
#ifndef HAVE_EIGEN
    GTEST_SKIP() << "Eigen not found";
#else
    // The Mindlin value at a/h = 100 and the Kirchhoff value at a/h = 1000, to
    // the six figures usually quoted; the errors printed are against the series.
    for (auto [ratio, published, tol] : {std::tuple{100, 0.00406446, 1e-6}, {1000, 0.00406235, 1e-5}}) {
        const Laminate lam = isotropic(1e7f, 1.0f / float(ratio));
        const Closed rig(lam);
        const double exact = navier(rig.d / rig.s);
        double err[2][3];
        for (int level = 0; level < 3; ++level) {
            const int n = 8 << level;
            err[0][level] = centreDeflection<double>(n, lam) * rig.d / exact - 1;
            err[1][level] = centreDeflection<float>(n, lam) * rig.d / exact - 1;
            EXPECT_TRUE(std::isfinite(err[1][level]));
            std::cout << "a/h " << ratio << ", " << n << "x" << n << ": error " << err[0][level]
                      << " in double, " << err[1][level] << " through the compatible routines\n";
        }
        const double order = std::log2(err[0][1] / err[0][2]);
        std::cout << "a/h " << ratio << ": observed order " << order << ", series " << exact << "\n";
        RecordProperty("order_" + std::to_string(ratio), std::to_string(order));
        EXPECT_GT(order, 3.5) << ratio;  // no locking, no lost accuracy
        EXPECT_NEAR((1 + err[0][2]) * exact / published - 1, 0, tol) << ratio;
        // The double route's rounding lies far below the element's error, even
        // with coordinates a hundred times the plate's side.
        const double shifted = centreDeflection<double>(32, lam, 100) * rig.d / exact - 1;
        EXPECT_NEAR(shifted, err[0][2], 1e-7) << ratio;
        std::cout << "a/h " << ratio << ", 32x32 moved by (100, 100): error " << shifted << "\n";
    }
#endif
}

TEST(DoubleRoute, PhysicalOptionsTurnShearWithBendingAndCorrectTheCoupling) {
    // One orthotropic layer, E8 > E1 and G11 > G10, 0.1 thick.
    auto layer = [](float e1, float g10, float angle, float t = 0.1f) {
        return Laminate({{e1, 0.3f, 30000, 5000, g10, 3000, angle}}, {-t / 2, t / 2});
    };
    struct Pair { Host<double> d{3, 3, kSentinel}, s{2, 2, kSentinel}; };
    auto rigid = [](const Laminate& lam, int32_t options) {
        Pair r;
        Host<double> prop = as<double>(lam.prop), zlay = as<double>(lam.zlay);
        int32_t on = 1, off = 0, nlay = lam.nlay;
        shellfe_plate_rigidities(r.d.p(), r.s.p(), &on, &off, prop.p(), zlay.p(), &nlay, &options);
        shellfe_plate_rigidities(r.d.p(), r.s.p(), &off, &on, prop.p(), zlay.p(), &nlay, &options);
        return r;
    };
    // Moment per curvature, and shear force per shear strain, along the
    // direction at `deg` degrees (in the index plane of the matrices).
    auto along = [](const Host<double>& m, double deg) {
        const double c = std::cos(deg * kPi / 180), s = std::sin(deg * kPi / 180);
        const bool bend = m.rows == 4;
        const double v[4] = {0, bend ? c * c : c, bend ? s * s : s, 2 * c * s};
        double x = 0;
        for (int i = 1; i < m.rows; ++i)
            for (int j = 1; j < m.rows; ++j) x += v[i] * m(i, j) * v[j];
        return x;
    };
    for (int32_t options = 0; options < 4; ++options) {
        // Turned by 30 degrees, the layer's bending stiffness is its unturned
        // one turned by +30; its shear stiffness too with the physical
        // rotation, and by -30 with the compatible one.
        const Pair flat = rigid(layer(12000, 2000, 0), options),
                   turned = rigid(layer(12000, 2000, 30), options);
        const double shear = options & SHELLFE_PHYSICAL_SHEAR_ROTATION ? 30 : -30;
        for (double delta : {0., 20., 45., 90., 125.}) {
            EXPECT_NEAR(along(turned.d, 30 + delta), along(flat.d, delta), 1e-12 * flat.d(1, 1))
                << options;
            EXPECT_NEAR(along(turned.s, shear + delta), along(flat.s, delta), 1e-12 * flat.s(1, 1))
                << options;
        }
        const Host<double>& s = turned.s;
        EXPECT_NEAR(std::atan2(2 * s(2, 1), s(1, 1) - s(2, 2)) * 90 / kPi, shear, 1e-10);
        EXPECT_TRUE(s(1, 2) == s(2, 1) && turned.d(1, 3) == turned.d(3, 1) && flat.d(3, 1) == 0);
        // Each option changes only its own matrix, and nothing where its
        // formula coincides with the compatible one (E1 = E8, G10 = G11).
        const Pair plain = rigid(layer(12000, 2000, 30), 0);
        EXPECT_EQ(turned.d.v == plain.d.v, !(options & SHELLFE_PHYSICAL_BENDING_COUPLING));
        EXPECT_EQ(turned.s.v == plain.s.v, !(options & SHELLFE_PHYSICAL_SHEAR_ROTATION));
        EXPECT_EQ(rigid(layer(30000, 2000, 30), options).d.v, rigid(layer(30000, 2000, 30), 0).d.v);
        EXPECT_EQ(rigid(layer(12000, 3000, 30), options).s.v, rigid(layer(12000, 3000, 30), 0).s.v);
        // The coupling of the unturned layer: nu E8^2 / (E1 den) or nu E8 / den.
        const double nu = 0.3f, ratio = 30000 / 12000., den = 1 - nu * nu * ratio, z = 0.05f;
        const double d12 = nu * 30000 / den * (2 * z * z * z / 3);
        EXPECT_NEAR(flat.d(2, 1) / d12, options & SHELLFE_PHYSICAL_BENDING_COUPLING ? 1 : ratio, 1e-13);
    }
    // Through the element, each option reaches the routine of its own matrix.
    Element el = distortedQuad();
    el.lam = layer(12000, 2000, 30), el.layout(3, 0, 24);
    for (int kind : {1, 2}) {
        auto k = [&](int32_t options) { return DoubleElement(el, kind, options).estif.v; };
        EXPECT_TRUE((k(1) == k(0)) == (kind == 1) && (k(2) == k(0)) == (kind == 2)) << kind;
    }
    // What the physical formulas change for this layer at 30 degrees.
    const Pair compatible = rigid(layer(12000, 2000, 30), 0),
               physical = rigid(layer(12000, 2000, 30), 3);
    std::cout << "30-degree layer: D12 changes by " << physical.d(2, 1) / compatible.d(2, 1) - 1
              << ", S12 from " << compatible.s(2, 1) << " to " << physical.s(2, 1) << "\n";
#ifdef HAVE_EIGEN
    const Laminate plate = layer(12000, 2000, 30, 0.01f);
    const double w0 = centreDeflection<double>(8, plate), w3 = centreDeflection<double>(8, plate, 0, 3);
    std::cout << "8x8 plate of it, a/h = 100: centre deflection changes by " << w3 / w0 - 1 << "\n";
    RecordProperty("option_deflection_change", std::to_string(w3 / w0 - 1));
#endif
}

namespace {
float dyadic(std::minstd_rand& r) { return std::floor(noise(r) * 256) / 64; }  // k/64 in [-4, 4)
}  // namespace

TEST(DoubleRouteMirrors, MaterialsAgreeWithTheCompatibleRoutines) {
    // Two plies, one turned layer, the closed form, and three isotropic layers.
    const float g = 2048 / 2.6f;
    const std::array<float, 7> iso{2048, 0.3f, 2048, g, g, g, 0};
    std::vector<Laminate> laminates = {
        crossPly(), Laminate({{12000, 0.3f, 30000, 5000, 2000, 3000, 30}}, {-.05f, .05f}),
        isotropic(2048, 0.25f), Laminate({iso, iso, iso}, {-.125f, 0, .125f, .25f})};
    for (Laminate& lam : laminates)
        for (auto [ibend, ishear] : {std::pair{1, 1}, {0, 1}, {0, 0}}) {
            const Rigidities f = rigidities(lam, ibend, ishear);
            Host<double> d(3, 3, kSentinel), s(2, 2, kSentinel);
            Host<double> prop = as<double>(lam.prop), z = as<double>(lam.zlay);
            int32_t zero = 0;
            shellfe_plate_rigidities(d.p(), s.p(), &ibend, &ishear, prop.p(), z.p(), &lam.nlay, &zero);
            expectMirrors(d, f.d, "DBEND"), expectMirrors(s, f.s, "DSHEAR");
        }
    for (float angle : {0.f, 0.05f, 30.f, -135.f, 90.f}) {  // 0.05 degrees counts as unrotated
        const Floats prop = materialTable(ortho(angle));
        Host<double> d(3, 3, kSentinel), wide = as<double>(prop);
        int32_t imat = 2, nmat = 3;
        shellfe_membrane_material(d.p(), wide.p(), &imat, &nmat);
        expectMirrors(d, material(ortho(angle)), "DMAT");
    }
}

TEST(DoubleRouteMirrors, ElementRoutinesAgreeWithTheCompatibleRoutines) {
    Jacobian jac;
    Host<double> cartd = as<double>(jac.cartd), deriv = as<double>(jac.deriv),
                 elcod = as<double>(jac.elcod);
    double detj = kSentinel;
    shellfe_jacobian(cartd.p(), deriv.p(), &detj, elcod.p(), &jac.nenod);
    jac.run();
    expectMirrors(cartd, jac.cartd, "CARTD");
    EXPECT_NEAR(detj, jac.detj, 1e-6 * detj);
    // The distorted element's determinant needs more than 24 bits, and the
    // derivatives are not rounded to float either.
    int wide = 0;
    for (int n = 1; n <= 9; ++n)
        for (int a = 1; a <= 2; ++a) wide += cartd(n, a) != float(cartd(n, a));
    EXPECT_TRUE(detj != float(detj) && wide > 9) << wide;

    // Membrane (0:18, 0:18) lower triangle; plate triples at offset 2 of six
    // per node, lower block triangle; a clockwise element flags -1.
    const Element clockwise({{-1, -1}, {-1, 1}, {1, 1}, {1, -1}}, 8);
    for (const Element& shape : {distortedQuad(9), clockwise})
        for (int kind = 0; kind < 3; ++kind) {
            Element el = shape;
            if (kind) el.layout(6, 2, 54);
            const int block = kind ? 6 : 1;
            for (int p = 0; p <= el.ldes; ++p)
                for (int q = 0; q <= el.ldes; ++q)
                    el.estif(p, q) = p && q && (p - 1) / block >= (q - 1) / block ? 0.f : kSentinel;
            const DoubleElement d(el, kind);
            (el.*std::array{&Element::membrane, &Element::bending, &Element::shear}[kind])();
            expectMirrors(d.estif, el.estif, "ESTIF");
            expectMirrors(d.prop, el.prop, "PROP");
            EXPECT_TRUE(d.ngpt == el.ngpt && d.ngpt2 == el.ngpt2 && (d.det == -1) == (el.detj == -1));
            EXPECT_NEAR(d.det, el.detj, 1e-6 * std::fabs(d.det)) << kind;
        }
}

TEST(DoubleRouteMirrors, FinishingAndSelectionAgreeWithTheCompatibleRoutines) {
    // Three nodes of six DOFs: the drilling value capped by a (node 4), kept
    // (node -7, diagonals at the 0.0001 floor), or left alone (node 9, flagged).
    std::minstd_rand r(5);
    Floats two(18, 18, kSentinel), full(20, 20, kSentinel), src(20, 20, kSentinel),
        dst(20, 20, kSentinel);
    for (int p = 1; p <= 20; ++p)
        for (int q = 1; q <= 20; ++q) {
            if (p <= 6 && q <= 6) two(p, q) = dyadic(r);
            full(p, q) = dyadic(r), src(p, q) = dyadic(r);
        }
    full(4, 4) = 500, full(5, 5) = 2000, full(10, 10) = full(11, 11) = 0.0001f;
    int32_t nenod = 3, ndofn = 6, ldes = 20, ldcn = 2, ielem = 1,
            ielnod[12] = {0, 0, 0, 0, 4, 0, 0, -7, 0, 0, 9, 0};
    std::vector<int32_t> flags(10), dflags(10);
    flags[9] = dflags[9] = 1;
    Host<double> dfull = as<double>(full), dtwo = as<double>(two);
    const float ratio = 0x1p-10f;
    const double dratio = ratio;
    STIESTDLLDOTNET(two.p(), full.p(), &nenod, flags.data(), &ndofn, &ldes, nullptr, &ldcn, &ielem,
                    ielnod, &ratio);
    shellfe_finish_shell_element(dtwo.p(), dfull.p(), &nenod, dflags.data(), &ndofn, &ldes, nullptr,
                                 &ldcn, &ielem, ielnod, &dratio);
    expectMirrors(dfull, full, "ESTIF");
    EXPECT_EQ(dflags, flags);
    EXPECT_TRUE(dfull(6, 6) == 500 * 0x1p-10 && dfull(12, 12) == 10 && flags[4] == 1 && flags[7] == 1);

    // Components 5, 2, 5 of every node to positions 1..3; 4..6 untouched.
    int32_t nsel = 3, ldk = 20, idof[4] = {0, 5, 2, 5};
    Host<double> dsrc = as<double>(src), ddst = as<double>(dst);
    BUILDESTIF1DOTNET(&nenod, &nsel, &ldk, src.p(), dst.p(), idof);
    shellfe_select_dofs(&nenod, &nsel, &ldk, dsrc.p(), ddst.p(), idof);
    expectMirrors(ddst, dst, "EDST", 0);
}

TEST(DoubleRouteMirrors, AssemblyAgreesWithTheCompatibleRoutines) {
    // Two eight-node elements, three element DOFs per node inside blocks of
    // four, springs on DOF 2 of nodes 3 and 5, prescribed displacements every
    // fifth equation; dyadic values keep the float sums exact.
    SlabMesh mesh(2, 1);
    std::minstd_rand r(9);
    const int32_t nn = mesh.nnode, neq = 4 * nn;
    int32_t eight = 8, three = 3, four = 4, ldes = 24, ldnm = 4 * nn, ldcn = mesh.ldcn;
    std::vector<Floats> estif(3, Floats(24, 24, kSentinel));
    for (int e = 1; e <= 2; ++e)
        for (int p = 1; p <= 24; ++p)
            for (int q = 1; q <= p; ++q) estif[e](p, q) = estif[e](q, p) = dyadic(r) + 16 * (p == q);
    std::vector<Host<double>> destif = {as<double>(estif[0]), as<double>(estif[1]),
                                        as<double>(estif[2])};
    std::vector<int32_t> isprf(3 * (nn + 1)), ivisit(nn + 1), divisit(nn + 1), locnod(nn + 1),
        map{0, 2, 3, 1};
    Floats spring(3 * nn, 0, kSentinel), upres(neq, 0), fload(neq, 0, kSentinel);
    for (int n : {3, 5}) isprf[nn + 1 + n] = 1, spring(3 * n - 3 + map[2]) = float(100 + n);
    for (int i = 5; i <= neq; i += 5) upres(i) = float(i % 3) / 4 - 0.25f;
    Host<double> dspring = as<double>(spring), dupres = as<double>(upres), dfload = as<double>(fload);
    int32_t count = 7, dcount = 7;
    for (int32_t m = 1; m <= nn; ++m) locnod[m] = m;  // every node a neighbour, in order
    for (int32_t node = 1; node <= nn; ++node) {
        Floats snode(ldnm, 3, kSentinel);
        Host<double> dsnode = as<double>(snode);
        for (int32_t e = 1; e <= 2; ++e) {
            BUILDALLNODESTIFFDLLDOTNET(estif[e].p(), &node, &eight, snode.p(), &e, spring.p(),
                                       ivisit.data(), nullptr, mesh.ielnod.data(), isprf.data(), &three,
                                       &four, &ldes, &nn, &ldnm, nullptr, &ldcn, nullptr, upres.p(),
                                       fload.p(), locnod.data(), &count, map.data());
            shellfe_gather_node_stiffness(destif[e].p(), &node, &eight, dsnode.p(), &e, dspring.p(),
                                          divisit.data(), nullptr, mesh.ielnod.data(), isprf.data(),
                                          &three, &four, &ldes, &nn, &ldnm, nullptr, &ldcn, nullptr,
                                          dupres.p(), dfload.p(), locnod.data(), &dcount, map.data());
        }
        expectMirrors(dsnode, snode, "SNODE", 0);
    }
    expectMirrors(dfload, fload, "FLOAD", 0);
    for (int e : {1, 2}) expectMirrors(destif[e], estif[e], "ESTIF with springs", 0);
    EXPECT_TRUE(dcount == count && divisit == ivisit && count > 7);

    // Skyline of the full profile, renumbered, band 20: plain and mapped.
    std::vector<int32_t> numnod(nn + 1), idiag(3 * nn + 2);
    for (int n = 1; n <= nn; ++n) numnod[n] = n * 5 % nn + 1;
    for (int i = 1; i <= 3 * nn; ++i) idiag[i + 1] = i * (i + 1) / 2;
    int32_t band = 20, slots = 8, perm[4] = {0, 3, 1, 2};
    std::vector<double> sky(idiag.back() + 2, kSentinel), dsky = sky, mapped = sky, dmapped = sky;
    for (int32_t e = 1; e <= 2; ++e) {
        ADDSHELLTOSDOTNET(estif[e].p(), mesh.ielnod.data(), nullptr, idiag.data(), &band, &three,
                          sky.data(), numnod.data(), &e, &ldcn, nullptr, nullptr, &ldes, &slots);
        shellfe_add_shell_to_skyline(destif[e].p(), mesh.ielnod.data(), nullptr, idiag.data(), &band,
                                     &three, dsky.data(), numnod.data(), &e, &ldcn, nullptr, nullptr,
                                     &ldes, &slots);
        ADDSHELLTOSDLLDOTNET(estif[e].p(), mesh.ielnod.data(), nullptr, idiag.data(), &band, &three,
                             mapped.data(), numnod.data(), perm, &e, &ldcn, nullptr, nullptr, &ldes);
        shellfe_add_shell_to_skyline_mapped(destif[e].p(), mesh.ielnod.data(), nullptr, idiag.data(),
                                            &band, &three, dmapped.data(), numnod.data(), perm, &e,
                                            &ldcn, nullptr, nullptr, &ldes);
    }
    EXPECT_TRUE(dsky == sky && dmapped == mapped && sky != mapped);
}

TEST(DoubleRoute, NinetyDegreeMaterialsHaveNoCoupling) {
    // At 90 degrees the sine and cosine are exactly 1 and 0: no coupling.
    Host<double> dmat(3, 3), prop = as<double>(materialTable(ortho(90)));
    int32_t imat = 2, nmat = 3, on = 1, off = 0;
    shellfe_membrane_material(dmat.p(), prop.p(), &imat, &nmat);
    EXPECT_TRUE(dmat(3, 1) == 0 && dmat(3, 2) == 0 && dmat(1, 3) == 0 &&
                material(ortho(90))(3, 1) != 0);
    Laminate lam({{3e4f, 0.3f, 12000, 5000, 3000, 2000, 90}}, {-0.1f, 0.1f});
    Host<double> d(3, 3), s(2, 2), play = as<double>(lam.prop), zlay = as<double>(lam.zlay);
    for (int32_t options = 0; options < 4; ++options) {
        shellfe_plate_rigidities(d.p(), s.p(), &on, &off, play.p(), zlay.p(), &lam.nlay, &options);
        shellfe_plate_rigidities(d.p(), s.p(), &off, &on, play.p(), zlay.p(), &lam.nlay, &options);
        EXPECT_TRUE(d(3, 1) == 0 && d(3, 2) == 0 && d(1, 3) == 0 && s(1, 2) == 0 && s(2, 1) == 0)
            << options;
    }
    EXPECT_NE(rigidities(lam).d(3, 1), 0.f);
}

// The double route draws each line where the compatible routines do, at the
// single-precision constant widened, and nothing on the way rounds to float:
// values between the float constant and its decimal show the difference.
TEST(DoubleRoute, ThresholdsAreTheWidenedFloatConstantsAndNothingRoundsToFloat) {
    // Degenerate point: a triangle with det J between 1e-7 and (double)1e-7f.
    Element tri({{1, 0}, {0, 1}, {0, 0}}, 3);
    tri.ntype = 6, tri.ngpx = 1;
    tri.xy(2, 2) = 0;  // replaced in double below
    Host<double> xy = as<double>(tri.xy);
    const double h = 1.00000000584e-7;
    ASSERT_TRUE(h > 1e-7 && h < double(1e-7f));
    xy(2, 2) = h;
    {
        Host<double> tnode = as<double>(tri.tnode), gpos = as<double>(tri.gpos);
        Host<double> gwei = as<double>(tri.gwei), prop = as<double>(tri.prop), k = as<double>(tri.estif);
        double det = kSentinel;
        shellfe_membrane_stiffness(&tri.ngpx, &tri.ngpy, &tri.ntype, gpos.p(), &tri.ngpt, &tri.iel,
                                   &tri.nnode, xy.p(), tnode.p(), nullptr, &tri.imat, prop.p(),
                                   gwei.p(), nullptr, &tri.nelem, &tri.nmat, nullptr, nullptr,
                                   &tri.nnodt, k.p(), &det);
        EXPECT_EQ(det, -1.0);
    }
    // Drilling floor: rotational diagonals of exactly 1e-4 lie above (double)0.0001f.
    {
        Host<double> two(18, 18), full(6, 6);
        full(4, 4) = full(5, 5) = 1e-4;
        int32_t nenod = 1, ndofn = 6, ldes = 6, ldcn = 2, ielem = 1, ielnod[6] = {0, 0, 0, 0, 4, 0};
        std::vector<int32_t> flags(10);
        const double ratio = 0x1p-10;
        shellfe_finish_shell_element(two.p(), full.p(), &nenod, flags.data(), &ndofn, &ldes, nullptr,
                                     &ldcn, &ielem, ielnod, &ratio);
        EXPECT_EQ(full(6, 6), 1e-4 * 0x1p-10);
    }
    // Smallest rotation: angles on either side of (double)0.001f radian.
    for (const double theta : {double(0.001f) * (1 - 1e-8), 0.001 * (1 + 2e-8)}) {
        Host<double> d(3, 3), prop = as<double>(materialTable(ortho(0)));
        prop(2, 17) = theta * 180 / kPi;
        int32_t imat = 2, nmat = 3;
        shellfe_membrane_material(d.p(), prop.p(), &imat, &nmat);
        EXPECT_EQ(d(3, 1), 0.0) << theta;
    }
    // Gathering and skyline: a prescribed displacement of exactly
    // (double)1e-10f moves load; entries that are not floats stay unrounded.
    SlabMesh mesh(2, 1);
    const int32_t nn = mesh.nnode, neq = 4 * nn;
    int32_t eight = 8, three = 3, four = 4, ldes = 24, ldnm = 4 * nn, ldcn = mesh.ldcn, count = 0;
    Host<double> estif(24, 24), snode(ldnm, 3), spring(3 * nn, 0), upres(neq, 0), fload(neq, 0);
    for (int p = 1; p <= 24; ++p)
        for (int q = 1; q <= 24; ++q) estif(p, q) = 0.1 * (p + q) + 16 * (p == q);
    std::vector<int32_t> isprf(3 * (nn + 1)), ivisit(nn + 1), locnod(nn + 1), map{0, 1, 2, 3};
    for (int i = 5; i <= neq; i += 5) upres(i) = double(1e-10f);
    for (int32_t m = 1; m <= nn; ++m) locnod[m] = m;
    int32_t node = 1, e = 1, band = 20;
    shellfe_gather_node_stiffness(estif.p(), &node, &eight, snode.p(), &e, spring.p(), ivisit.data(),
                                  nullptr, mesh.ielnod.data(), isprf.data(), &three, &four, &ldes,
                                  &nn, &ldnm, nullptr, &ldcn, nullptr, upres.p(), fload.p(),
                                  locnod.data(), &count, map.data());
    EXPECT_NE(std::count(fload.v.begin(), fload.v.end(), 0.0), std::ptrdiff_t(fload.v.size()));
    std::vector<int32_t> numnod(nn + 1), idiag(3 * nn + 2);
    for (int n = 1; n <= nn; ++n) numnod[n] = n;
    for (int i = 1; i <= 3 * nn; ++i) idiag[i + 1] = i * (i + 1) / 2;
    std::vector<double> sky(idiag.back() + 2, 0.0);
    shellfe_add_shell_to_skyline(estif.p(), mesh.ielnod.data(), nullptr, idiag.data(), &band, &three,
                                 sky.data(), numnod.data(), &e, &ldcn, nullptr, nullptr, &ldes, &eight);
    EXPECT_GT(std::count_if(sky.begin(), sky.end(), [](double v) { return v != double(float(v)); }), 0);
}

// One matrix as source and destination follows the compatible copy order,
// and rows beyond an element family's nodes read as zero in double too.
TEST(DoubleRouteMirrors, AliasedSelectionAndShortFamiliesAgree) {
    std::minstd_rand r(3);
    Floats m(12, 12);
    for (float& v : m.v) v = dyadic(r);
    Host<double> dm = as<double>(m);
    int32_t nnode = 2, nsel = 3, ldk = 12, idof[4] = {0, 2, 1, 3};
    BUILDESTIF1DOTNET(&nnode, &nsel, &ldk, m.p(), m.p(), idof);
    shellfe_select_dofs(&nnode, &nsel, &ldk, dm.p(), dm.p(), idof);
    expectMirrors(dm, m, "aliased EDST", 0);
    for (int32_t ntype : {3, 5}) {  // six-node triangle and an unknown family, nine thicknesses
        Element el({{0, 0}, {2, 0}, {0, 2}}, 6);
        el.ntype = ntype, el.ngpx = 1, el.nnodt = 9;
        const DoubleElement d(el, 0);
        el.membrane();
        EXPECT_NEAR(d.prop(2, 3), el.prop(2, 3), 1e-6) << ntype;
        EXPECT_EQ(d.det == -1, el.detj == -1) << ntype;
    }
}
