// Results after the solution: deflections, bending moments from the
// element curvatures averaged at the nodes, and the library's
// post-processing (error estimate, the result net around the centre, the
// elements near the peak).
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "shellfe.h"
#include "slab.hpp"

namespace slab {

namespace {

// Natural coordinates of the eight nodes, slot by slot.
const float kNodeXi[9] = {0, -1, 0, 1, 1, 1, 0, -1, -1};
const float kNodeEta[9] = {0, -1, -1, -1, 0, 1, 1, 1, 0};

}  // namespace

void bending_rigidities(const Options& opt, double* dbend) {
    std::vector<double> play, zlay;
    layer_tables(opt, play, zlay);
    double dshear[9];
    const int32_t ibend = 1, ishear = 0, nlay = opt.layers, options = 0;
    shellfe_plate_rigidities(dbend, dshear, &ibend, &ishear, play.data(), zlay.data(), &nlay, &options);
}

// From the element's own curvatures: theta2 ~ dw/dy and theta3 ~ -dw/dx,
// so the curvatures -w,xx, -w,yy and -2 w,xy are theta3,x, -theta2,y and
// theta3,y - theta2,x.
void element_moments(const Mesh& mesh, const System& sys, const std::vector<double>& u, const double* db,
                     int32_t e, double m[9][3]) {
    double elcod[30] = {}, deriv[40], cartd[30], detj = 0.0;
    const int32_t nenod = 8;
    for (int s = 1; s <= 8; ++s) {
        const int32_t n = mesh.node(s, e);
        elcod[10 + s] = mesh.x(n), elcod[20 + s] = mesh.y(n);
    }
    for (int k = 1; k <= 8; ++k) {
        float shp[40];
        shape_functions(kNodeXi[k], kNodeEta[k], shp);
        std::copy(shp, shp + 40, deriv);
        shellfe_jacobian(cartd, deriv, &detj, elcod, &nenod);
        double kx = 0, ky = 0, kxy = 0;
        for (int s = 1; s <= 8; ++s) {
            const double* un = u.data() + std::size_t(mesh.node(s, e) - 1) * sys.ndof + sys.wdof;
            const double t2 = un[0], t3 = un[1], dx = cartd[10 + s], dy = cartd[20 + s];
            kx += dx * t3, ky -= dy * t2, kxy += dy * t3 - dx * t2;
        }
        for (int r = 0; r < 3; ++r) m[k][r] = db[(r + 1) + 4 * 1] * kx + db[(r + 1) + 4 * 2] * ky + db[(r + 1) + 4 * 3] * kxy;
    }
}

Results recover(const Options& opt, const Mesh& mesh, const System& sys, const std::vector<double>& u) {
    Results r;
    r.w.assign(mesh.nnode + 1, 0.0);
    r.mx.assign(mesh.nnode + 1, 0.0), r.my.assign(mesh.nnode + 1, 0.0), r.mxy.assign(mesh.nnode + 1, 0.0);
    for (int32_t n = 1; n <= mesh.nnode; ++n) {
        r.w[n] = u[std::size_t(n - 1) * sys.ndof + sys.wdof - 1];
        if (std::fabs(r.w[n]) > std::fabs(r.w[r.peak])) r.peak = n;
    }
    double db[16];
    bending_rigidities(opt, db);
    std::vector<int> count(mesh.nnode + 1, 0);
    for (int32_t e = 1; e <= mesh.nelem; ++e) {
        double m[9][3];
        element_moments(mesh, sys, u, db, e, m);
        for (int k = 1; k <= 8; ++k) {
            const int32_t n = mesh.node(k, e);
            r.mx[n] += m[k][0], r.my[n] += m[k][1], r.mxy[n] += m[k][2], ++count[n];
        }
    }
    for (int32_t n = 1; n <= mesh.nnode; ++n)
        if (count[n]) r.mx[n] /= count[n], r.my[n] /= count[n], r.mxy[n] /= count[n];
    // The centre, interpolated in the element that holds it.
    int32_t e = 0;
    float xi = 0, eta = 0, shp[40], best = 0;
    if (locate(mesh, float(0.5 * opt.a), float(0.5 * opt.a), e, xi, eta)) {
        shape_functions(xi, eta, shp);
        for (int s = 1; s <= 8; ++s) {
            const int32_t n = mesh.node(s, e);
            r.wc += shp[10 + s] * r.w[n], r.mxc += shp[10 + s] * r.mx[n];
            if (r.centre == 0 || shp[10 + s] > best) r.centre = n, best = shp[10 + s];
        }
    }
    return r;
}

float error_estimate(const Options& opt, const Mesh& mesh, const System& sys, const std::vector<double>& u,
                     const Results& r, std::vector<float>& erre, const Carry& carry) {
    const int32_t nelem = mesh.nelem, nnode = mesh.nnode;
    // The element's own moments at its nodes against the nodal averages, in
    // the energy of the bending rigidities.
    const int32_t nsrow = 9 * nelem, icsig = 0, nnodt = 8, nlay = opt.layers, nmat = 1, imat = 1;
    double db[16];
    bending_rigidities(opt, db);
    std::vector<float> sige(std::size_t(nsrow + 1) * 4, 0.0f), tnode(std::size_t(nelem + 1) * 9, 0.0f);
    std::vector<float> wdet(std::size_t(nelem + 1) * 10, 0.0f), errn(nnode + 1, 0.0f);
    erre.assign(nelem + 1, 0.0f);
    std::vector<int32_t> ietyp(std::size_t(nelem + 1) * 2, 0);
    std::vector<double> pd, zd;
    layer_tables(opt, pd, zd);
    std::vector<float> play(pd.begin(), pd.end()), zlay(zd.begin(), zd.end()), prop(36, 0.0f);
    const float g = std::sqrt(0.6f);
    float gpos[12] = {}, wei[4] = {0, 5.0f / 9.0f, 8.0f / 9.0f, 5.0f / 9.0f};
    gpos[4] = -g, gpos[7] = 0.0f, gpos[10] = g;
    for (int32_t e = 1; e <= nelem; ++e) {
        double m[9][3];
        element_moments(mesh, sys, u, db, e, m);
        for (int k = 1; k <= 8; ++k)
            for (int c = 0; c < 3; ++c) sige[(9 * (e - 1) + k) + std::size_t(nsrow + 1) * (icsig + c + 1)] = float(m[k][c]);
        ietyp[e + std::size_t(nelem + 1)] = 1;
        for (int k = 1; k <= 8; ++k) tnode[e + std::size_t(nelem + 1) * k] = float(opt.h);
        float elcod[30] = {}, cartd[30], detj = 0.0f, shp[40];
        const int32_t nenod = 8;
        for (int s = 1; s <= 8; ++s) elcod[10 + s] = mesh.x(mesh.node(s, e)), elcod[20 + s] = mesh.y(mesh.node(s, e));
        for (int i = 1; i <= 3; ++i)
            for (int j = 1; j <= 3; ++j) {
                shape_functions(gpos[1 + 3 * i], gpos[1 + 3 * j], shp);
                JACOB2DLLDOTNET(cartd, shp, &detj, elcod, &nenod);
                wdet[(3 * (i - 1) + j) + 10 * std::size_t(e)] = wei[i] * wei[j] * detj;
            }
    }
    float sigs[36], errt = 0.0f;
    for (int32_t e = 1; e <= nelem; ++e) {
        if (carry) carry(e, false, errt);
        for (int k = 1; k <= 8; ++k) {
            const int32_t n = mesh.node(k, e);
            sigs[1 + 4 * k] = float(r.mx[n]), sigs[2 + 4 * k] = float(r.my[n]), sigs[3 + 4 * k] = float(r.mxy[n]);
        }
        STERRORDLLDOTNET(sige.data(), &e, ietyp.data(), &nelem, gpos, nullptr, &nnodt, tnode.data(), play.data(),
                         zlay.data(), &nlay, mesh.ielnod.data(), errn.data(), &errt, prop.data(), wdet.data(), sigs,
                         erre.data(), &icsig, &nsrow, nullptr, &nmat, &imat);
        if (carry) carry(e, true, errt);
    }
    return errt;
}

void post_process(const Options& opt, const Mesh& mesh, const System& sys, const std::vector<double>& u,
                  const Results& r) {
    const int32_t nelem = mesh.nelem, nnode = mesh.nnode;
    // Error estimate of the moments.
    std::vector<float> erre;
    const float errt = error_estimate(opt, mesh, sys, u, r, erre);
    double energy = 0.0;
    for (int32_t k = 1; k <= sys.neq; ++k) energy += sys.load[k] * u[k - 1];
    const int32_t worst = int32_t(std::max_element(erre.begin() + 1, erre.end()) - erre.begin());
    std::printf("  error estimate (STERRORDLLDOTNET): relative moment error %.3e, largest in element %d at (%.3f, %.3f)\n",
                errt > 0.0f ? std::sqrt(errt / (errt + energy)) : 0.0, worst, 0.5 * (mesh.x(mesh.node(1, worst)) + mesh.x(mesh.node(5, worst))),
                0.5 * (mesh.y(mesh.node(1, worst)) + mesh.y(mesh.node(5, worst))));

    // Mx in a net of radius a/10 around the centre node.
    if (r.centre > 0) {
        const int32_t ldres = 3 * nnode, icase = 1, icomp = 0, ncomp = 3, ldmem = 50;
        std::vector<float> res(std::size_t(ldres + 1) * 2, 0.0f);
        for (int32_t n = 1; n <= nnode; ++n) res[(1 + 3 * (n - 1)) + std::size_t(ldres + 1)] = float(r.mx[n]);
        const float radius = float(0.1 * opt.a);
        float peak = 0, vhigh = 0, vlow = 0, vavg = 0;
        CASTNETFMDOTNET(&peak, res.data(), &icase, &icomp, &ncomp, &nnode, mesh.xyz.data(), &radius, &r.centre, &vhigh,
                        &vlow, mesh.nodmem.data(), &nelem, &ldmem, &nelem, mesh.ielnod.data(), &vavg, &ldres);
        const double s = opt.load == Load::uniform ? opt.q * opt.a * opt.a : opt.P;
        std::printf("  Mx within a/10 of the centre (CASTNETFMDOTNET): %.5f to %.5f, mean %.5f, peak %.5f (x %s)\n",
                    vlow / s, vhigh / s, vavg / s, peak / s, opt.load == Load::uniform ? "q a^2" : "P");
    }

    // Elements and nodes within one element side of the peak deflection.
    {
        std::vector<int32_t> memtab(std::size_t(nelem + 1) * 3, 0), memgrp(nelem + 1, 1), mfnd(nelem + 1, 0),
            nfnd(nnode + 1, 0);
        for (int32_t e = 1; e <= nelem; ++e) memtab[std::size_t(nelem + 1) + e] = 1, memtab[2 * std::size_t(nelem + 1) + e] = 8;
        const float rad = float(1.001 * opt.a / std::sqrt(double(nelem)));
        int32_t nmfnd = 0, nnfnd = 0;
        const int32_t igrp = 0;
        GETPEAKMEMNODESDOTNET(&nelem, memtab.data(), memgrp.data(), mesh.ielnod.data(), mesh.xyz.data(), &r.peak, &rad,
                              &nmfnd, mfnd.data(), &nnfnd, nfnd.data(), &nnode, &igrp);
        std::printf("  peak deflection at node %d (%.4f, %.4f): %d elements and %d nodes within one element side "
                    "(GETPEAKMEMNODESDOTNET)\n",
                    r.peak, mesh.x(r.peak), mesh.y(r.peak), nmfnd, nnfnd);
    }
}

}  // namespace slab
