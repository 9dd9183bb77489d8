// Beams that run along an edge of a shell element.
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Whether nodes n1 and n2 fill adjacent slots of element e: the pairs
// (1, 2) .. (7, 8) and the closing pair (8, 1), in either order.
bool on_edge(const RowTable<const std::int32_t>& eltab, Index e, std::int32_t n1, std::int32_t n2) {
    for (Index s = 1; s <= 8; ++s) {
        const std::int32_t p = eltab(s, e);
        const std::int32_t q = eltab(s % 8 + 1, e);
        if ((p == n1 && q == n2) || (p == n2 && q == n1)) return true;
    }
    return false;
}

// For each beam, the elements are searched in order while the beam's value
// is 0: a match copies the element's value (row 9) and flags both end
// nodes. A match with a value of 0 lets the search go on; element 1 is
// always examined, so a beam with a value on entry is compared with element
// 1 only. Both are deliberate and kept as hosts rely on them.
void match_beams(Index nbeam, Index nel, const RowTable<const std::int32_t>& eltab,
                 const Array1<const std::int32_t>& end1, const Array1<const std::int32_t>& end2,
                 const Array1<std::int32_t>& value, const Array1<std::int32_t>& flag) {
    if (nel < 1) return;
    for (Index b = 1; b <= nbeam; ++b) {
        std::int32_t v = value(b);
        for (Index e = 1;; ++e) {
            if (eltab(0, e) == 0 && on_edge(eltab, e, end1(b), end2(b))) {
                v = eltab(9, e);
                value(b) = v;
                flag(end1(b)) = -1;
                flag(end2(b)) = -1;
            }
            if (v != 0 || e >= nel) break;
        }
    }
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void SETBEAMINFODLLDOTNET(const int32_t* NBEAM, const int32_t* NEL, const int32_t* ELTAB,
                                     const int32_t* IBN1, const int32_t* IBN2, int32_t* IBINFO,
                                     int32_t* IBMFLG) noexcept {
    match_beams(*NBEAM, *NEL, host_rows(ELTAB, {0, *NEL}), host_array(IBN1), host_array(IBN2),
                host_array(IBINFO), host_array(IBMFLG));
}
