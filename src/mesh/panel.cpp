// Panel shape functions and the mapping of reference cells onto a panel.
#include "element/shape_functions.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Interpolates the values of nodes 1..8 at a point, N1 v1 + N2 v2 + ...
// in node order: the ninth (bubble) function of the quadrilateral takes
// no part.
float interpolate(const ShapeTable& shape, const Array1<const float>& nodal) {
    float sum = shape.value[1] * nodal(1);
    for (Index k = 2; k <= 8; ++k) sum += shape.value[k] * nodal(k);
    return sum;
}

struct Panel {
    Array2<const float> xyz;    // (0:9, 1:3)
    Array1<const float> value;  // (0:9)
    std::int32_t ntype;
};

struct Cell {
    float xi;
    float eta;
    float delta;
};

// The four corners of the cell, counter-clockwise from its first. The
// fourth corner's xi is deliberately recomputed as (xi + d) - d rather
// than taken from the first corner, so it can differ from it by one
// rounding; meshes built before keep their coordinates.
void map_cell(const Panel& panel, const Cell& cell, const Array2<float>& pts,
              const Array1<float>& vals) {
    const float right = cell.xi + cell.delta;
    const float top = cell.eta + cell.delta;
    const NaturalPoint corners[4] = {
        {cell.xi, cell.eta}, {right, cell.eta}, {right, top}, {right - cell.delta, top}};
    for (Index k = 1; k <= 4; ++k) {
        ShapeTable shape;
        evaluate_shape_functions(panel.ntype, corners[k - 1].xi, corners[k - 1].eta, shape);
        for (Index c = 1; c <= 3; ++c) pts(k, c) = interpolate(shape, panel.xyz.column(c));
        vals(k) = interpolate(shape, panel.value);
    }
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void SFR1DLLDOTNET(float* SHP, const float* XI, const float* ETA,
                              const int32_t* NTYPE) noexcept {
    ShapeTable shape;
    evaluate_shape_functions(*NTYPE, *XI, *ETA, shape);
    const Array2<float> shp = host_array(SHP, {0, kMaxElementNodes});
    for (Index i = 0; i <= kMaxElementNodes; ++i) {
        shp(i, 0) = 0.0f;
        shp(i, 1) = shape.value[i];
        shp(i, 2) = shape.d_dxi[i];
        shp(i, 3) = shape.d_deta[i];
    }
}

extern "C" void SUBDIVIDEPANELDLLDOTNET(const float* XYZ, float* PTS, float* VALS, const float* ETA,
                                        const float* XI, const float* DELTA, const int32_t* NTYPE,
                                        const float* NODVAL) noexcept {
    map_cell({.xyz = host_array(XYZ, {0, 9}, 1), .value = host_array(NODVAL), .ntype = *NTYPE},
             {.xi = *XI, .eta = *ETA, .delta = *DELTA}, host_array(PTS, {0, 4}, 1),
             host_array(VALS));
}
