// Contour plots of the deflection and of Mx as SVG pictures. The colour
// bands of each element come from CHECKNUMCOLOURDOTNET: an element whose
// corners share one band is filled whole; one that spans several is cut
// into cells (values from the element's shape functions), and those cells
// are asked again, down to a cell small enough to take the band of its mean.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "shellfe.h"
#include "slab.hpp"

namespace slab {

namespace {

constexpr int kBands = 10;
constexpr double kSize = 520.0, kLeft = 40.0, kTop = 60.0;

// Blue through green and yellow to red.
std::string band_colour(int band) {
    static const double stops[5][3] = {{49, 54, 149}, {69, 160, 200}, {120, 198, 121}, {254, 224, 100}, {215, 48, 39}};
    const double t = (std::clamp(band, 1, kBands) - 0.5) / kBands * 4.0;
    const int i = std::min(int(t), 3);
    const double f = t - i;
    char s[16];
    std::snprintf(s, sizeof s, "#%02x%02x%02x", int(stops[i][0] + f * (stops[i + 1][0] - stops[i][0])),
                  int(stops[i][1] + f * (stops[i + 1][1] - stops[i][1])),
                  int(stops[i][2] + f * (stops[i + 1][2] - stops[i][2])));
    return s;
}

struct Plot {
    const Mesh& mesh;
    const std::vector<double>& value;
    double a;
    float vmin, vmax;
    float bndlim[kBands + 1];
    std::string cells[kBands + 1];  // outlines of the cells of each band, as one path
    int depth_limit = 0;  // cells no smaller than about 4 pixels

    Plot(const Mesh& m, const std::vector<double>& v, double side) : mesh(m), value(v), a(side) {
        const auto [lo, hi] = std::minmax_element(v.begin() + 1, v.end());
        vmin = float(*lo), vmax = float(*hi);
        if (!(vmax > vmin)) vmax = vmin + 1.0f;
        for (int k = 0; k <= kBands; ++k) bndlim[k] = float(k) / kBands;
        for (double px = kSize / std::sqrt(double(m.nelem)); px > 8.0 && depth_limit < 4; px /= 2) ++depth_limit;
    }
    double sx(double x) const { return kLeft + kSize * x / a; }
    double sy(double y) const { return kTop + kSize * (1.0 - y / a); }

    // Bands of a cell's four corners; returns the number of bands it spans.
    int bands(float v[5], int iband[6]) const {
        int32_t ncolr = 0, ibinit = 0, ncorn = 4, nbnd = kBands, isplit = 0, mode = 0, ibfix = 0, iref = 1, ld = 1,
                ldxc = 4, ibraw[6] = {};
        const float vlo = 0, vhi = 0, tol = 0, xyzc[15] = {}, xyzr[6] = {};
        CHECKNUMCOLOURDOTNET(&ncolr, bndlim, v, &ibinit, &ncorn, &vmin, &vmax, &nbnd, iband, &isplit, &mode, &ibfix,
                             &iref, &vlo, &vhi, xyzc, &iref, &ld, &ldxc, &tol, xyzr, ibraw);
        return ncolr;
    }
    int band_of(float v) const {
        const float t = (v - vmin) / (vmax - vmin);
        return std::clamp(int(t * kBands) + 1, 1, kBands);
    }

    // The cell [s0, s1] x [t0, t1] of element e in natural coordinates.
    void cell(int32_t e, float s0, float s1, float t0, float t1, int depth) {
        const float cs[4] = {s0, s1, s1, s0}, ct[4] = {t0, t0, t1, t1};
        float v[5] = {}, px[4], py[4];
        for (int k = 0; k < 4; ++k) {
            float shp[40];
            shape_functions(cs[k], ct[k], shp);
            double x = 0, y = 0, w = 0;
            for (int s = 1; s <= 8; ++s) {
                const int32_t n = mesh.node(s, e);
                x += shp[10 + s] * mesh.x(n), y += shp[10 + s] * mesh.y(n), w += shp[10 + s] * value[n];
            }
            px[k] = float(x), py[k] = float(y), v[k + 1] = float(w);
        }
        int iband[6] = {};
        const float mean = 0.25f * (v[1] + v[2] + v[3] + v[4]);
        const int n = bands(v, iband);
        if (n > 1 && depth < depth_limit) {
            const float sm = 0.5f * (s0 + s1), tm = 0.5f * (t0 + t1);
            cell(e, s0, sm, t0, tm, depth + 1), cell(e, sm, s1, t0, tm, depth + 1);
            cell(e, s0, sm, tm, t1, depth + 1), cell(e, sm, s1, tm, t1, depth + 1);
            return;
        }
        const int band = n == 1 ? iband[1] : band_of(mean);
        char buf[120];
        std::snprintf(buf, sizeof buf, "M%.1f %.1fL%.1f %.1fL%.1f %.1fL%.1f %.1fZ", sx(px[0]), sy(py[0]), sx(px[1]),
                      sy(py[1]), sx(px[2]), sy(py[2]), sx(px[3]), sy(py[3]));
        cells[band] += buf;
    }
};

bool write_plot(const Options& opt, const Mesh& mesh, const std::vector<double>& value,
                const std::string& file, const std::string& title, const char* unit, double scale,
                std::string& error) {
    Plot p(mesh, value, opt.a);
    for (int32_t e = 1; e <= mesh.nelem; ++e) p.cell(e, -1.0f, 1.0f, -1.0f, 1.0f, 0);
    std::string s;
    char buf[400];
    std::snprintf(buf, sizeof buf,
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" font-family=\"sans-serif\" font-size=\"13\">\n"
                  "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n"
                  "<text x=\"%g\" y=\"30\" font-size=\"16\">%s</text>\n",
                  int(kLeft + kSize + 190), int(kTop + kSize + 50), kLeft, title.c_str());
    s += buf;
    for (int k = 1; k <= kBands; ++k)
        if (!p.cells[k].empty())
            s += "<path fill=\"" + band_colour(k) + "\" stroke=\"" + band_colour(k) + "\" stroke-width=\"0.3\" d=\"" +
                 p.cells[k] + "\"/>\n";
    // The mesh: element edges through the mid-side nodes.
    if (mesh.nelem <= 64 * 64) {
        s += "<g fill=\"none\" stroke=\"#000\" stroke-opacity=\"0.35\" stroke-width=\"0.5\">\n";
        for (int32_t e = 1; e <= mesh.nelem; ++e) {
            std::string d = "M";
            for (int k = 1; k <= 8; ++k) {
                const int32_t n = mesh.node(k, e);
                std::snprintf(buf, sizeof buf, "%.2f %.2f%s", p.sx(mesh.x(n)), p.sy(mesh.y(n)), k < 8 ? "L" : "Z");
                d += buf;
            }
            s += "<path d=\"" + d + "\"/>\n";
        }
        s += "</g>\n";
    }
    // Supports: a heavy line for hard simple support, hatching for clamped
    // edges.
    const double x0 = p.sx(0), x1 = p.sx(opt.a), y0 = p.sy(opt.a), y1 = p.sy(0);
    std::snprintf(buf, sizeof buf, "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" stroke=\"#000\" stroke-width=\"3\"/>\n",
                  x0, y0, x1 - x0, y1 - y0);
    s += buf;
    if (opt.support == Support::clamped) {
        s += "<g stroke=\"#000\" stroke-width=\"1\">\n";
        for (double t = 0; t <= kSize; t += 13) {
            std::snprintf(buf, sizeof buf,
                          "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/><line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/>"
                          "<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/><line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\"/>\n",
                          x0 + t, y0, x0 + t - 8, y0 - 8, x0 + t, y1, x0 + t - 8, y1 + 8, x0, y0 + t, x0 - 8, y0 + t - 8,
                          x1, y0 + t, x1 + 8, y0 + t - 8);
            s += buf;
        }
        s += "</g>\n";
    } else {
        std::snprintf(buf, sizeof buf, "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" stroke=\"#000\" stroke-width=\"1\" stroke-dasharray=\"6 4\"/>\n",
                      x0 - 6, y0 - 6, x1 - x0 + 12, y1 - y0 + 12);
        s += buf;
    }
    // The peak of the plotted value.
    int32_t peak = 1;
    for (int32_t n = 1; n <= mesh.nnode; ++n)
        if (std::fabs(value[n]) > std::fabs(value[peak])) peak = n;
    std::snprintf(buf, sizeof buf,
                  "<circle cx=\"%.1f\" cy=\"%.1f\" r=\"6\" fill=\"none\" stroke=\"#000\" stroke-width=\"2\"/>\n"
                  "<text x=\"%.1f\" y=\"%.1f\" stroke=\"white\" stroke-width=\"4\" paint-order=\"stroke\">peak %.5g %s at (%.3g, %.3g)</text>\n",
                  p.sx(mesh.x(peak)), p.sy(mesh.y(peak)), std::min(p.sx(mesh.x(peak)) + 10, kLeft + kSize - 250), p.sy(mesh.y(peak)) - 10,
                  value[peak] * scale, unit, mesh.x(peak), mesh.y(peak));
    s += buf;
    // Legend: the band limits in the plotted unit.
    const double lx = kLeft + kSize + 40, h = kSize / kBands;
    for (int k = kBands; k >= 1; --k) {
        const double y = kTop + (kBands - k) * h;
        std::snprintf(buf, sizeof buf,
                      "<rect x=\"%.1f\" y=\"%.1f\" width=\"24\" height=\"%.1f\" fill=\"%s\" stroke=\"#000\" stroke-width=\"0.5\"/>\n"
                      "<text x=\"%.1f\" y=\"%.1f\">%.4g</text>\n",
                      lx, y, h, band_colour(k).c_str(), lx + 30, y + 4, (p.vmin + (p.vmax - p.vmin) * k / kBands) * scale);
        s += buf;
    }
    std::snprintf(buf, sizeof buf, "<text x=\"%.1f\" y=\"%.1f\">%.4g</text>\n<text x=\"%.1f\" y=\"%.1f\">%s</text>\n</svg>\n",
                  lx + 30, kTop + kSize + 4, p.vmin * scale, lx, kTop - 12, unit);
    s += buf;
    FILE* f = std::fopen(file.c_str(), "w");
    if (!f || std::fwrite(s.data(), 1, s.size(), f) != s.size()) {
        error = "cannot write " + file;
        if (f) std::fclose(f);
        return false;
    }
    std::fclose(f);
    std::printf("  wrote %s\n", file.c_str());
    return true;
}

}  // namespace

bool write_svgs(const Options& opt, const Mesh& mesh, const Results& r, int n, std::string& error) {
    const bool uniform = opt.load == Load::uniform;
    const double D = flexural_rigidity(opt);
    const double wscale = D / (uniform ? opt.q * std::pow(opt.a, 4) : opt.P * opt.a * opt.a);
    const double mscale = 1.0 / (uniform ? opt.q * opt.a * opt.a : opt.P);
    const std::string what = std::string(uniform ? "uniform load" : "point load") + ", " +
                             (opt.support == Support::hard ? "simply supported" : "clamped") + ", " +
                             std::to_string(n) + "x" + std::to_string(n) + " elements";
    const std::string base = opt.outdir + "/slab_" + (opt.support == Support::hard ? "ss" : "clamped") +
                             (uniform ? "" : "_point");
    return write_plot(opt, mesh, r.w, base + "_deflection.svg", "Deflection w, " + what,
                      uniform ? "w D/(q a^4)" : "w D/(P a^2)", wscale, error) &&
           write_plot(opt, mesh, r.mx, base + "_mx.svg", "Bending moment Mx, " + what,
                      uniform ? "Mx/(q a^2)" : "Mx/P", mscale, error);
}

}  // namespace slab
