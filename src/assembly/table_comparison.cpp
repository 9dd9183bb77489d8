// Comparison of two tables within a relative tolerance.
#include <cmath>

#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// -1 when the summed differences are small against the summed magnitudes of
// the reference `a`, 0 otherwise. Terms of 1.0e-8 or less (and NaN) are left
// out of both sums. The thresholds are single-precision constants widened,
// deliberately, so the decision matches hosts that compare in single.
std::int32_t same_tables(const RowTable<const float>& a, const RowTable<const float>& b, Index mcol,
                         Index nrowt) {
    double size = 0.0;
    double difference = 0.0;
    for (Index r = 1; r <= nrowt; ++r)
        for (Index c = 1; c <= mcol; ++c) {
            const float magnitude = std::fabs(a(r, c));
            const float d = std::fabs(a(r, c) - b(r, c));
            if (magnitude > 1.0e-8f) size += static_cast<double>(magnitude);
            if (d > 1.0e-8f) difference += static_cast<double>(d);
        }
    constexpr double kTiny = static_cast<double>(1.0e-7f);
    constexpr double kPercent = static_cast<double>(1.0e-5f);
    const bool same = size <= kTiny ? difference <= kTiny : (difference / size) * 100.0 <= kPercent;
    return same ? -1 : 0;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void COMPAREARRAY(const float* ARRA, const float* ARRB, const int32_t* MCOL,
                             const int32_t* NROWT, int32_t* ISAME) noexcept {
    *ISAME = same_tables(host_rows(ARRA, {0, *MCOL}), host_rows(ARRB, {0, *MCOL}), *MCOL, *NROWT);
}
