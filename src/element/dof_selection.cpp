// Selection of degrees of freedom from an element matrix with six per node.
#include "frame/views.hpp"

#include "shellfe.h"

using namespace shellfe;

namespace {
// Node blocks are six wide in both matrices.
constexpr Index kBlock = 6;
}  // namespace

extern "C" void BUILDESTIF1DOTNET(const int32_t* NNODE, const int32_t* NSEL, const int32_t* LDK,
                                  const float* ESRC, float* EDST, const int32_t* IDOF) noexcept {
    const Index nnode = *NNODE;
    const Index nsel = *NSEL;
    const auto src = upper_bound(ESRC, *LDK);
    const auto dst = upper_bound(EDST, *LDK);
    const auto idof = from_zero(IDOF);
    // One entry at a time in this loop order: a host may pass one matrix as
    // both source and destination, and then the order decides which entries
    // are read before they are overwritten.
    for (Index a = 1; a <= nnode; ++a) {
        for (Index r = 1; r <= nsel; ++r) {
            const Index src_col = kBlock * (a - 1) + idof(r);
            const Index dst_col = kBlock * (a - 1) + r;
            for (Index b = 1; b <= nnode; ++b) {
                for (Index q = 1; q <= nsel; ++q) {
                    dst(kBlock * (b - 1) + q, dst_col) = src(kBlock * (b - 1) + idof(q), src_col);
                }
            }
        }
    }
}
