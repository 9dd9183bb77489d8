// Finishing a shell element matrix: merge the in-plane block and give each
// node's rotation about the normal an artificial (drilling) stiffness.
#include "frame/numbering.hpp"
#include "frame/precision.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// The in-plane matrix always comes with the fixed shape (0:18, 0:18): two
// degrees of freedom per node, at most nine nodes.
constexpr Index kInPlaneUpperBound = 18;

template <class Real>
constexpr Real kDrillingStiffness = Real(10);
// Rotational diagonals at or below this are treated as absent and do not cap.
template <class Real>
constexpr Real kNegligibleDiagonal = threshold<Real>(0.0001f);

// Adds the in-plane matrix (two degrees of freedom per node) into degrees of
// freedom 1 and 2 of every node block of the element matrix. Only node
// blocks p >= q: the element matrix keeps its data in the lower block
// triangle, and the upper blocks are deliberately not merged.
template <class Real>
void merge_in_plane(const Array2<const Real>& in_plane, const Array2<Real>& estif, Index nenod,
                    NodeBlocks blocks) {
    const NodeBlocks pairs{2};
    for (Index p = 1; p <= nenod; ++p)
        for (Index q = 1; q <= p; ++q)
            for (Index s = 1; s <= 2; ++s)
                for (Index j = 1; j <= 2; ++j)
                    estif(blocks.index(p, s), blocks.index(q, j)) +=
                        in_plane(pairs.index(p, s), pairs.index(q, j));
}

// Gives the last degree of freedom of every node not yet flagged a drilling
// stiffness of 10, capped at `ratio` times each of the node's two other
// rotational diagonals in turn, and flags the node: each node receives it
// once per pass, from the first element that reaches it.
template <class Real>
void add_drilling_stiffness(const Array2<Real>& estif, Index nenod, NodeBlocks blocks,
                            const Array2<const std::int32_t>& ielnod, Index ielem,
                            const Array1<std::int32_t>& nodflg, Real ratio) {
    for (Index n = 1; n <= nenod; ++n) {
        const Index m = node_number(ielnod(ielem, n));
        if (nodflg(m) != 0) continue;  // an earlier element gave this node its drilling stiffness
        const Index d = blocks.index(n, blocks.per_node);
        Real v = kDrillingStiffness<Real>;
        estif(d, d) = v;
        // The second cap sees the value left by the first. NaN fails both tests.
        const Real a = estif(d - 2, d - 2);
        if (a > kNegligibleDiagonal<Real> && v / a > ratio) {
            v = a * ratio;
            estif(d, d) = v;
        }
        const Real b = estif(d - 1, d - 1);
        if (b > kNegligibleDiagonal<Real> && v / b > ratio) estif(d, d) = b * ratio;
        nodflg(m) = 1;
    }
}

// The merge always happens; the drilling stiffness only for an element whose
// switch IELNOD(IELEM, 0) is 0 (a host marks elements that bring their own
// rotational stiffness with any other value, negative ones included).
template <class Real>
void finish_element(const Real* ESTIF2, Real* ESTIF, const std::int32_t* NENOD,
                    std::int32_t* NODFLG, const std::int32_t* NDOFN, const std::int32_t* LDES,
                    const std::int32_t* LDCN, const std::int32_t* IELEM,
                    const std::int32_t* IELNOD, const Real* RATIO) {
    const auto estif = host_array(ESTIF, {0, *LDES});
    const auto ielnod = host_array(IELNOD, {0, *LDCN});
    const Index nenod = *NENOD, ielem = *IELEM;
    const NodeBlocks blocks{*NDOFN};
    merge_in_plane(host_array(ESTIF2, {0, kInPlaneUpperBound}), estif, nenod, blocks);
    if (ielnod(ielem, 0) != 0) return;
    add_drilling_stiffness(estif, nenod, blocks, ielnod, ielem, host_array(NODFLG), *RATIO);
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void STIESTDLLDOTNET(const float* ESTIF2, float* ESTIF, const int32_t* NENOD,
                                int32_t* NODFLG, const int32_t* NDOFN, const int32_t* LDES,
                                const void* /*UNUSED7*/, const int32_t* LDCN,
                                const int32_t* IELEM, const int32_t* IELNOD,
                                const float* RATIO) noexcept {
    finish_element(ESTIF2, ESTIF, NENOD, NODFLG, NDOFN, LDES, LDCN, IELEM, IELNOD, RATIO);
}

extern "C" void shellfe_finish_shell_element(const double* ESTIF2, double* ESTIF,
                                             const int32_t* NENOD, int32_t* NODFLG,
                                             const int32_t* NDOFN, const int32_t* LDES,
                                             const void* /*UNUSED7*/, const int32_t* LDCN,
                                             const int32_t* IELEM, const int32_t* IELNOD,
                                             const double* RATIO) noexcept {
    finish_element(ESTIF2, ESTIF, NENOD, NODFLG, NDOFN, LDES, LDCN, IELEM, IELNOD, RATIO);
}
