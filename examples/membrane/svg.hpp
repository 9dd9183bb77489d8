// An SVG picture of a mesh of Cook's trapezoid: the elements, the clamped
// edge hatched, the shear load as arrows and the point (48, 52) marked.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

#include "cook.hpp"

inline void write_svg(const std::string& path, const Mesh& m, const std::string& title) {
    std::FILE* f = std::fopen(path.c_str(), "w");
    if (!f) throw std::runtime_error("cannot write " + path);
    const double scale = 8.0, left = 50.0, top = 50.0;
    auto X = [&](double x) { return left + scale * x; };
    auto Y = [&](double y) { return top + scale * (60.0 - y); };
    const double width = X(48.0) + 100.0, height = Y(0.0) + 40.0;
    std::fprintf(f,
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
                 "viewBox=\"0 0 %.0f %.0f\" font-family=\"sans-serif\" font-size=\"13\">\n"
                 "<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n"
                 "<text x=\"%.1f\" y=\"20\">Cook's membrane: %s</text>\n"
                 "<text x=\"%.1f\" y=\"38\">%d elements, %d nodes</text>\n",
                 width, height, width, height, left - 30.0, title.c_str(), left - 30.0,
                 m.elements(), m.nodes());

    // Elements, their nodes in slot order around the outline.
    std::fprintf(f, "<g fill=\"#e8f0fa\" stroke=\"#24518c\" stroke-width=\"0.8\">\n");
    for (int32_t e = 0; e < m.elements(); ++e) {
        std::fprintf(f, "<polygon points=\"");
        for (int32_t k = 1; k <= m.nodes_per_element; ++k) {
            const int32_t n = m.node_of(e, k);
            std::fprintf(f, "%s%.2f,%.2f", k > 1 ? " " : "", X(m.x[n]), Y(m.y[n]));
        }
        std::fprintf(f, "\"/>\n");
    }
    std::fprintf(f, "</g>\n<g fill=\"#24518c\">\n");
    for (int32_t n = 1; n <= m.nodes(); ++n)
        std::fprintf(f, "<circle cx=\"%.2f\" cy=\"%.2f\" r=\"1.6\"/>\n", X(m.x[n]), Y(m.y[n]));
    std::fprintf(f, "</g>\n");

    // The clamped edge x = 0, hatched on its outer side.
    std::fprintf(f, "<g stroke=\"black\" stroke-width=\"1.2\">\n"
                    "<line x1=\"%.2f\" y1=\"%.2f\" x2=\"%.2f\" y2=\"%.2f\" stroke-width=\"3\"/>\n",
                 X(0), Y(0), X(0), Y(44));
    for (double y = 0.0; y <= 44.0 + 1e-9; y += 2.75)
        std::fprintf(f, "<line x1=\"%.2f\" y1=\"%.2f\" x2=\"%.2f\" y2=\"%.2f\"/>\n", X(0), Y(y),
                     X(0) - 12.0, Y(y) + 12.0);
    std::fprintf(f, "</g>\n<text x=\"%.1f\" y=\"%.1f\" transform=\"rotate(-90 %.1f %.1f)\" "
                    "text-anchor=\"middle\">clamped</text>\n",
                 X(0) - 24.0, Y(22.0), X(0) - 24.0, Y(22.0));

    // The unit shear on x = 48: arrows pointing up, beside the edge.
    std::fprintf(f, "<defs><marker id=\"head\" markerWidth=\"8\" markerHeight=\"8\" refX=\"4\" "
                    "refY=\"4\" orient=\"auto\"><path d=\"M0,0 L8,4 L0,8 z\" fill=\"#c0392b\"/>"
                    "</marker></defs>\n<g stroke=\"#c0392b\" stroke-width=\"1.5\" "
                    "marker-end=\"url(#head)\">\n");
    for (int i = 0; i < 5; ++i) {
        const double y = 44.0 + 16.0 * (i + 0.5) / 5.0;
        std::fprintf(f, "<line x1=\"%.2f\" y1=\"%.2f\" x2=\"%.2f\" y2=\"%.2f\"/>\n", X(48) + 10.0,
                     Y(y) + 10.0, X(48) + 10.0, Y(y) - 10.0);
    }
    std::fprintf(f, "</g>\n<text x=\"%.1f\" y=\"%.1f\" fill=\"#c0392b\">shear 1</text>\n",
                 X(48) + 20.0, Y(52.0) + 4.0);

    // The point where the displacement is compared.
    std::fprintf(f, "<circle cx=\"%.2f\" cy=\"%.2f\" r=\"4\" fill=\"none\" stroke=\"#c0392b\" "
                    "stroke-width=\"2\"/>\n<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\" "
                    "stroke=\"white\" stroke-width=\"4\" paint-order=\"stroke\">"
                    "(48, 52)</text>\n</svg>\n",
                 X(48), Y(52), X(48) - 8.0, Y(52) + 4.0);
    if (std::fclose(f) != 0) throw std::runtime_error("cannot write " + path);
}
