// Node-to-member incidence: the members at every node.
#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Records of a fixed 51 integers per node: the count, then up to 50 members.
inline constexpr Index kIncidenceRecord = 51;

// Appends member j to the record of each node in its slots 1..8, in slot
// order, and returns the largest count reached (at least 1). Counts go on
// from what the host left. A node's 51st member lands on the next record's
// count: the capacity is fixed and unchecked, deliberately, as hosts keep
// node valences at 50 or below.
std::int32_t record_members(Index nmem, const RowTable<const std::int32_t>& slots,
                            const RowTable<std::int32_t>& records) {
    std::int32_t most = 1;
    for (Index j = 1; j <= nmem; ++j)
        for (Index s = 1; s <= 8; ++s) {
            const std::int32_t n = slots(s, j);
            if (n <= 0) continue;
            const std::int32_t c = increment(&records(n, 0));
            records(n, c) = static_cast<std::int32_t>(j);
            if (c > most) most = c;
        }
    return most;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void FEMEMBERSTONODES1DOTNET(const void*, const int32_t* NMEM, int32_t* MAXMEM,
                                        int32_t* NODMEM, const int32_t* MEMSLT) noexcept {
    *MAXMEM = record_members(*NMEM, host_rows(MEMSLT, {0, *NMEM}),
                             host_rows(NODMEM, {0, kIncidenceRecord - 1}));
}
