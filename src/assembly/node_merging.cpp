// Merging of nodes that a mesher left at the same place.
#include <array>
#include <cmath>

#include "assembly/node_grid.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Whether two nodes are within `tolerance` of each other in every axis,
// each difference formed and compared in single precision (a box, not a
// sphere; strict).
template <int Dim>
bool coincide(const std::array<Array1<const float>, Dim>& coords, Index a, Index b, float tolerance) {
    for (int k = 0; k < Dim; ++k)
        if (!(std::fabs(coords[k](b) - coords[k](a)) < tolerance)) return false;
    return true;
}

// Every live node a of first..last, in ascending order, absorbs the live
// nodes after it that coincide with a itself (not with a growing cluster,
// so a chain of close nodes may split): absorb(a, b). The result is that of
// comparing every pair in that order, as hosts rely on; the grid only
// spares the comparisons of nodes that cannot coincide. Nodes whose flag is
// not 0 on entry take no part.
template <int Dim, class Absorb>
void merge_coincident(const std::array<Array1<const float>, Dim>& coords,
                      const Array1<std::int32_t>& idel, Index first, Index last, float tolerance,
                      Absorb absorb) {
    if (!(tolerance > 0.0f)) return;  // nothing lies within it
    const NodeGrid<Dim> grid(coords, first, last, 2.0 * static_cast<double>(tolerance),
                             [&](Index n) { return idel(n) == 0; });
    for (Index a = first; a < last; ++a) {
        if (idel(a) != 0) continue;
        grid.for_each_near(a, [&](Index b) {
            if (b > a && idel(b) == 0 && coincide<Dim>(coords, a, b, tolerance)) absorb(a, b);
        });
    }
}

// Coincident nodes of separately meshed panels: within 0.001 in x, y and z.
// A node that no member uses is left live, deliberately. The node-to-member
// table is not updated.
void merge_coincident_nodes(const Array1<std::int32_t>& idel, const RowTable<const std::int32_t>& nodmem,
                            Index nnode, const RowTable<std::int32_t>& memslt,
                            const RowTable<const float>& xyz) {
    const std::array<Array1<const float>, 3> coords{xyz.row(0), xyz.row(1), xyz.row(2)};
    merge_coincident<3>(coords, idel, 1, nnode, 0.001f, [&](Index a, Index b) {
        const Index count = nodmem(b, 0);
        if (count < 1) return;
        for (Index k = 1; k <= count; ++k) {
            const Index member = nodmem(b, k);
            for (Index s = 1; s <= 8; ++s)
                if (memslt(s, member) == b) memslt(s, member) = static_cast<std::int32_t>(a);
        }
        idel(b) = -1;
    });
}

// Duplicate mid-side nodes nbase+1..ntot, four per element in element
// order: node nbase + q fills slot 2r of element e, q = 4(e - 1) + r. A
// merged node's own slot is found from its number, not searched for, and
// names the surviving node.
void merge_midside_nodes(const Array1<std::int32_t>& idel, Index nbase, Index ntot,
                         const RowTable<const float>& xyp, const RowTable<std::int32_t>& elslot,
                         float tolerance) {
    const std::array<Array1<const float>, 2> coords{xyp.row(1), xyp.row(2)};
    merge_coincident<2>(coords, idel, nbase + 1, ntot, tolerance, [&](Index j, Index k) {
        idel(k) = -1;
        const Index q = k - nbase;
        const Index e = (q + 3) / 4;
        const Index r = q - 4 * (e - 1);
        elslot(2 * r, e) = static_cast<std::int32_t>(j);
    });
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void PACKNODFE1DOTNET(int32_t* IDEL, const int32_t* NODMEM, const int32_t* NNODE,
                                 int32_t* MEMSLT, const int32_t* NMEM, const int32_t* LDNMEM,
                                 const float* XYZN) noexcept {
    const Index nnode = *NNODE;
    if (nnode - 1 < 1) return;
    merge_coincident_nodes(host_array(IDEL), host_rows(NODMEM, {0, *LDNMEM}), nnode,
                           host_rows(MEMSLT, {0, *NMEM}), host_rows(XYZN, {0, nnode}));
}

extern "C" void PACKMESHNODESDOTNET(int32_t* IDEL, const int32_t* NBASE, const int32_t* NTOT,
                                    const float* XYP, int32_t* ELSLOT, const int32_t* LDEL,
                                    const float* TOLM) noexcept {
    const Index nbase = *NBASE, ntot = *NTOT;
    if (ntot - 1 <= nbase) return;
    merge_midside_nodes(host_array(IDEL), nbase, ntot, host_rows(XYP, {0, ntot}),
                        host_rows(ELSLOT, {0, *LDEL}), *TOLM);
}
