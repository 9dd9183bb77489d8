// Finishing a shell element matrix: merge the in-plane block and give each
// node's rotation about the normal an artificial (drilling) stiffness.
#include "shellfe.h"
#include "views.hpp"

#include <cstdlib>

using namespace shellfe;

namespace {

// The in-plane matrix always comes with a first dimension of (0:18): two
// degrees of freedom per node, at most nine nodes.
constexpr Index kInPlaneUpperBound = 18;

constexpr float kDrillingStiffness = 10.0f;
// Rotational diagonals at or below this are treated as absent and do not cap.
constexpr float kNegligibleDiagonal = 0.0001f;

}  // namespace

extern "C" void STIESTDLLDOTNET(const float* ESTIF2, float* ESTIF, const int32_t* NENOD,
                                int32_t* NODFLG, const int32_t* NDOFN, const int32_t* LDES,
                                const void* /*unused*/, const int32_t* LDCN,
                                const int32_t* IELEM, const int32_t* IELNOD,
                                const float* RATIO) noexcept {
    const Index nenod = *NENOD;
    const Index ndofn = *NDOFN;
    const auto in_plane = upper_bound(ESTIF2, kInPlaneUpperBound);
    const auto estif = upper_bound(ESTIF, *LDES);

    // Only node blocks p >= q: the element matrix keeps its data in the
    // lower block triangle, and the upper blocks are deliberately not merged.
    for (Index p = 1; p <= nenod; ++p) {
        for (Index q = 1; q <= p; ++q) {
            for (Index s = 1; s <= 2; ++s) {
                for (Index j = 1; j <= 2; ++j) {
                    estif(ndofn * (p - 1) + s, ndofn * (q - 1) + j) +=
                        in_plane(2 * (p - 1) + s, 2 * (q - 1) + j);
                }
            }
        }
    }

    const auto ielnod = upper_bound(IELNOD, *LDCN);
    const Index ielem = *IELEM;
    if (ielnod(ielem, 0) != 0) return;

    const auto nodflg = from_zero(NODFLG);
    const float ratio = *RATIO;
    for (Index n = 1; n <= nenod; ++n) {
        const Index m = std::abs(ielnod(ielem, n));
        if (nodflg(m) != 0) continue;  // an earlier element gave this node its drilling stiffness
        const Index d = ndofn * n;
        float v = kDrillingStiffness;
        estif(d, d) = v;
        // Cap against each of the two other rotations in turn; the second cap
        // sees the value left by the first. NaN fails both tests.
        const float a = estif(d - 2, d - 2);
        if (a > kNegligibleDiagonal && v / a > ratio) {
            v = a * ratio;
            estif(d, d) = v;
        }
        const float b = estif(d - 1, d - 1);
        if (b > kNegligibleDiagonal && v / b > ratio) estif(d, d) = b * ratio;
        nodflg(m) = 1;
    }
}
