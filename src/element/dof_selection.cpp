// Selection of degrees of freedom from an element matrix with six per node.
#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Copies the degrees of freedom listed in idof(1..nsel) of every node block
// of `src` to positions 1..nsel of the same block of `dst`, in list order;
// positions nsel+1.. of each destination block keep what they held. One
// entry at a time in this loop order: a host may pass one matrix as both
// source and destination, and then the order decides which entries are read
// before they are overwritten.
template <class Real>
void select_node_dofs(const Array2<const Real>& src, const Array2<Real>& dst, Index nnode,
                      const Array1<const std::int32_t>& idof, Index nsel) {
    const NodeBlocks six{6};
    for (Index a = 1; a <= nnode; ++a)
        for (Index r = 1; r <= nsel; ++r)
            for (Index b = 1; b <= nnode; ++b)
                for (Index q = 1; q <= nsel; ++q)
                    dst(six.index(b, q), six.index(a, r)) =
                        src(six.index(b, idof(q)), six.index(a, idof(r)));
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void BUILDESTIF1DOTNET(const int32_t* NNODE, const int32_t* NSEL, const int32_t* LDK,
                                  const float* ESRC, float* EDST, const int32_t* IDOF) noexcept {
    select_node_dofs(host_array(ESRC, {0, *LDK}), host_array(EDST, {0, *LDK}), *NNODE,
                     host_array(IDOF), *NSEL);
}

extern "C" void shellfe_select_dofs(const int32_t* NNODE, const int32_t* NSEL, const int32_t* LDK,
                                    const double* ESRC, double* EDST,
                                    const int32_t* IDOF) noexcept {
    select_node_dofs(host_array(ESRC, {0, *LDK}), host_array(EDST, {0, *LDK}), *NNODE,
                     host_array(IDOF), *NSEL);
}
