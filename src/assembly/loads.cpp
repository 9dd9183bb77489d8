// Element loads scattered into the global load vector.
#include <algorithm>
#include <cmath>

#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Where element degree of freedom d lands in the global node block: the
// element orders its six as the global block's 4, 6, 5, 1, 3, 2. A seventh
// or later has no place of its own and lands with the sixth; deliberate,
// and kept for hosts that pass more than six.
inline std::int32_t global_offset(Index d) {
    static constexpr std::int32_t kOffset[6] = {4, 6, 5, 1, 3, 2};
    return kOffset[std::min<Index>(d, 6) - 1];
}

// Adds ELOAD to the global loads and takes it off the per-node forces,
// which are kept by the element's own degree of freedom and the node
// number itself. A double load vector adds the widened value; the per-node
// forces stay single.
template <class Load>
void scatter_element_load(Index nenod, const RowTable<const std::int32_t>& ielnod, Index ielem,
                          const Array1<const std::int32_t>& numnod, Index ndof,
                          const Array1<Load>& gload, const Array1<const float>& eload,
                          const RowTable<float>& nodfrc) {
    const NodeBlocks blocks{ndof};
    for (Index a = 1; a <= nenod; ++a) {
        const Index n = node_number(ielnod(a, ielem));
        for (Index d = 1; d <= ndof; ++d) {
            const float f = eload(blocks.index(a, d));
            nodfrc(d, n) -= f;
            gload(blocks.equation(numnod(n), global_offset(d))) += static_cast<Load>(f);
        }
    }
}

template <class Load>
void scatter_element_load(const std::int32_t* NENOD, const std::int32_t* IELNOD,
                          const std::int32_t* LDCN, const std::int32_t* NUMNOD,
                          const std::int32_t* LDNF, const std::int32_t* NDOF, Load* GLOAD,
                          const float* ELOAD, float* NODFRC, const std::int32_t* IELEM) {
    scatter_element_load(*NENOD, host_rows(IELNOD, {0, *LDCN}), *IELEM, host_array(NUMNOD), *NDOF,
                         host_array(GLOAD), host_array(ELOAD), host_rows(NODFRC, {0, *LDNF}));
}

// The lowest index among the points nearest to (xp, yp), or 0 when none
// lies nearer than 1.0e8; distances in single precision, and a NaN
// distance never wins.
std::int32_t nearest_point(Index npt, float xp, float yp, const Array1<const float>& x,
                           const Array1<const float>& y) {
    float best = 1.0e8f;
    std::int32_t found = 0;
    for (Index i = 1; i <= npt; ++i) {
        const float dx = x(i) - xp;
        const float dy = y(i) - yp;
        const float distance = std::sqrt(dx * dx + dy * dy);
        if (distance < best) {
            best = distance;
            found = static_cast<std::int32_t>(i);
        }
    }
    return found;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void FELOADTOGLOADDOTNET(const int32_t* NENOD, const int32_t* IELNOD,
                                    const int32_t* LDCN, const int32_t* NUMNOD,
                                    const int32_t* LDNF, const int32_t* NDOF, float* GLOAD,
                                    const float* ELOAD, float* NODFRC, const void*,
                                    const int32_t* IELEM) noexcept {
    scatter_element_load(NENOD, IELNOD, LDCN, NUMNOD, LDNF, NDOF, GLOAD, ELOAD, NODFRC, IELEM);
}

extern "C" void FELOADTOGLOADDOTNET01(const int32_t* NENOD, const int32_t* IELNOD,
                                      const int32_t* LDCN, const int32_t* NUMNOD,
                                      const int32_t* LDNF, const int32_t* NDOF, double* GLOAD,
                                      const float* ELOAD, float* NODFRC, const void*,
                                      const int32_t* IELEM) noexcept {
    scatter_element_load(NENOD, IELNOD, LDCN, NUMNOD, LDNF, NDOF, GLOAD, ELOAD, NODFRC, IELEM);
}

extern "C" void FINDLOADPOINT(const int32_t* NPT, int32_t* IPT, const float* XP, const float* YP,
                              const float* XPT, const float* YPT) noexcept {
    *IPT = nearest_point(*NPT, *XP, *YP, host_array(XPT), host_array(YPT));
}
