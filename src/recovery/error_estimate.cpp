// Energy-type error of the bending moments of one element: the smoothed
// moments against the element's own, weighted by the plate's compliance.
#include <cmath>

#include "element/layered_plate.hpp"
#include "element/shape_functions.hpp"
#include "frame/canonical_nan.hpp"
#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Nodes of an element that take part: the bubble's ninth never does.
constexpr Index kNodes = 8;

// The inverse of a 3x3 matrix by Gauss-Jordan elimination in place, with
// the pivots taken on the diagonal in order and no row exchanges: the
// rigidity matrices it serves are positive definite. A zero pivot gives
// infinities or NaN without notice.
void invert_in_place(double a[3][3]) {
    for (int k = 0; k < 3; ++k) {
        const double pivot = a[k][k];
        a[k][k] = 1.0;
        for (int j = 0; j < 3; ++j) a[k][j] = a[k][j] / pivot;
        for (int i = 0; i < 3; ++i) {
            if (i == k) continue;
            const double f = a[i][k];
            a[i][k] = 0.0;
            for (int j = 0; j < 3; ++j) a[i][j] = a[i][j] - f * a[k][j];
        }
    }
}

// The compliance of the plate's bending rigidities, in double.
void compliance(const LayeredPlate<float>& plate, double c[3][3]) {
    const Matrix3 d = bending_rigidities(plate);
    for (int r = 0; r < 3; ++r)
        for (int s = 0; s < 3; ++s) c[r][s] = static_cast<double>(d(r + 1, s + 1));
    invert_in_place(c);
}

// The host's tables of one element.
struct ElementData {
    Index iel;
    Array2<const std::int32_t> ietyp;  // (0:N, 0:*), family in column 1
    Array2<const std::int32_t> conn;   // (0:N, 0:*), nodes in columns 1..8
    Array2<const float> tnode;         // (0:NELEM, 0:*)
    Index nnodt;
    Array2<const float> wdet;  // (0:9, 0:*)
};

// Element moments in rows 9(e-1)+k of SIGE from column ICSIG+1, smoothed
// ones in SIGS(1..3, k).
struct Moments {
    Array2<const float> sige;
    Index icsig;
    Array2<const float> sigs;
};

struct Accumulators {
    Array1<float> errn;
    float& errt;
    Array1<float> erre;
};

struct ThicknessSlot {
    Array2<float> prop;
    Index imat;
};

// The density at one point: |e1 c1| + |e2 c2| + |e3 c3| with e the moment
// difference and c = C e, every product and partial sum in single
// precision. Each component's magnitude is taken on its own, deliberately,
// so that no component's contribution cancels another's.
float error_density(const float e[3], const double c[3][3]) {
    float eps[3];
    for (int m = 0; m < 3; ++m) {
        float sum = static_cast<float>(c[0][m] * static_cast<double>(e[0]));
        sum = sum + static_cast<float>(c[1][m] * static_cast<double>(e[1]));
        eps[m] = sum + static_cast<float>(c[2][m] * static_cast<double>(e[2]));
    }
    return (std::fabs(e[0] * eps[0]) + std::fabs(e[1] * eps[1])) + std::fabs(e[2] * eps[2]);
}

void add_moment_error(const ElementData& el, const Moments& mo, const Array2<const float>& gpos,
                      const LayeredPlate<float>& plate, const ThicknessSlot& thickness,
                      const Accumulators& acc) {
    const std::int32_t family = el.ietyp(el.iel, 1);
    const Index nnodt = element_nodes(static_cast<std::int32_t>(el.nnodt));
    const Index first_row = 9 * (el.iel - 1);
    for (Index i = 1; i <= 3; ++i) {
        for (Index j = 1; j <= 3; ++j) {
            const Index p = 3 * (i - 1) + j;
            ShapeTable shape;
            evaluate_shape_functions(family, gpos(1, i), gpos(1, j), shape);
            const float* n = shape.value;
            float smoothed[3] = {}, own[3] = {};
            for (Index m = 1; m <= 3; ++m)
                for (Index k = 1; k <= kNodes; ++k) {
                    smoothed[m - 1] += n[k] * mo.sigs(m, k);
                    own[m - 1] += n[k] * mo.sige(first_row + k, mo.icsig + m);
                }
            float t = 0.0f;
            for (Index k = 1; k <= nnodt; ++k) t += n[k] * el.tnode(el.iel, k);
            thickness.prop(thickness.imat, 3) = canonical(t);
            // The rigidities are formed after the thickness is written, as
            // a host passing its material table as the layer table expects.
            double c[3][3];
            compliance(plate, c);
            const float e[3] = {smoothed[0] - own[0], smoothed[1] - own[1], smoothed[2] - own[2]};
            const float rho = error_density(e, c) * el.wdet(p, el.iel);
            float nsum = n[1];
            for (Index k = 2; k <= kNodes; ++k) nsum += n[k];
            // NaN sums (a singular plate) are stored as the canonical NaN,
            // which does not depend on the compiler's operand order.
            for (Index k = 1; k <= kNodes; ++k) {
                float& e = acc.errn(node_number(el.conn(el.iel, k)));
                e = canonical(e + n[k] * rho);
            }
            acc.errt = canonical(acc.errt + nsum * rho);
            acc.erre(el.iel) = canonical(acc.erre(el.iel) + std::fabs(rho));
        }
    }
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

// The bound of IETYP and CONN is the only difference between the two
// variants: the first shares NELEM with TNODE.
extern "C" void STERRORDLLDOTNET1(const float* SIGE, const int32_t* IEL, const int32_t* IETYP,
                                  const int32_t* NELEM, const float* GPOS, const void*,
                                  const int32_t* NNODT, const float* TNODE, const float* PLAY,
                                  const float* ZLAY, const int32_t* NLAY, const int32_t* CONN,
                                  float* ERRN, float* ERRT, float* PROP, const float* WDET,
                                  const float* SIGS, float* ERRE, const int32_t* ICSIG,
                                  const int32_t* NSROW, const void*, const int32_t* NMAT,
                                  const int32_t* IMAT, const int32_t* NELEMC) noexcept {
    add_moment_error({.iel = *IEL,
                      .ietyp = host_array(IETYP, {0, *NELEMC}),
                      .conn = host_array(CONN, {0, *NELEMC}),
                      .tnode = host_array(TNODE, {0, *NELEM}),
                      .nnodt = *NNODT,
                      .wdet = host_array(WDET, {0, 9})},
                     {.sige = host_array(SIGE, {0, *NSROW}),
                      .icsig = *ICSIG,
                      .sigs = host_array(SIGS, {0, 3})},
                     host_array(GPOS, {0, 2}), layered_plate(PLAY, ZLAY, *NLAY),
                     {.prop = host_array(PROP, {0, *NMAT}), .imat = *IMAT},
                     {.errn = host_array(ERRN), .errt = *ERRT, .erre = host_array(ERRE)});
}

extern "C" void STERRORDLLDOTNET(const float* SIGE, const int32_t* IEL, const int32_t* IETYP,
                                 const int32_t* NELEM, const float* GPOS, const void* UNUSED6,
                                 const int32_t* NNODT, const float* TNODE, const float* PLAY,
                                 const float* ZLAY, const int32_t* NLAY, const int32_t* CONN,
                                 float* ERRN, float* ERRT, float* PROP, const float* WDET,
                                 const float* SIGS, float* ERRE, const int32_t* ICSIG,
                                 const int32_t* NSROW, const void* UNUSED21, const int32_t* NMAT,
                                 const int32_t* IMAT) noexcept {
    STERRORDLLDOTNET1(SIGE, IEL, IETYP, NELEM, GPOS, UNUSED6, NNODT, TNODE, PLAY, ZLAY, NLAY, CONN,
                      ERRN, ERRT, PROP, WDET, SIGS, ERRE, ICSIG, NSROW, UNUSED21, NMAT, IMAT,
                      NELEM);
}
