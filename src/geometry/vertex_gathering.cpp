// The vertex list of a run of elements.
#include "frame/views.hpp"
#include "shellfe.h"

using namespace shellfe;

// Arguments 3 and 5 are placeholders the host passes for a uniform
// argument list. NLAST is both the last element gathered and the table's
// row bound, so the run always ends at the table's last row.
extern "C" void GETELEMENTVERTICES(int32_t* VERTS, const int32_t* ELEMNOD, const void*,
                                   const int32_t* NLAST, const void*, const int32_t* KFIRST,
                                   const int32_t* NV) noexcept {
    const Index nlast = *NLAST, kfirst = *KFIRST, nv = *NV;
    const Array2<const int32_t> elemnod = host_array(ELEMNOD, {0, nlast}, 1);
    const Array1<int32_t> verts = host_array(VERTS, 1);
    Index p = 1;
    for (Index k = kfirst; k <= nlast; ++k)
        for (Index j = 1; j <= nv; ++j) verts(p++) = elemnod(k, j);
}
