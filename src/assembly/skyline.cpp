// Shell element matrices added straight into a skyline global matrix.
#include <algorithm>

#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// The upper triangle of a symmetric global matrix, column by column: the
// coupling of equations J <= I at diag(I + 1) - I + J (the diagonal of
// equation I is at diag(I + 1), the shift of one being the host's format).
// Couplings with I - J >= band are not held and are dropped.
struct Skyline {
    Array1<const std::int32_t> diag;
    Array1<double> sky;
    Index band;

    template <class Real>
    void add(std::int32_t r, std::int32_t c, Real v) const {
        const Index i = std::max(r, c);
        const Index j = std::min(r, c);
        if (i - j < band) sky(diag(i + 1) - i + j) += static_cast<double>(v);
    }
};

// Where degree of freedom d of a node sits in the element matrix's node
// block: as numbered, or through the host's map.
struct ElementOrder {
    Index operator()(Index d) const { return d; }
};
struct MappedOrder {
    Array1<const std::int32_t> map;
    Index operator()(Index d) const { return map(d); }
};

template <class Real>
struct ShellElement {
    RowTable<const Real> estif;
    RowTable<const std::int32_t> ielnod;
    Index ielem;
    Index slots;
    Index ndof;
    Array1<const std::int32_t> numnod;  // node number -> place in the equation order
};

// Adds the lower triangle of the element matrix, in element positions, at
// (max, min) of the global equations: every coupling of the symmetric
// matrix enters the stored upper triangle once, whatever the numbering.
// Empty slots (node 0 or less) are skipped as rows but not as columns,
// where they are read as they stand: deliberate, as hosts leave empty slots
// only after the last used one.
template <class Real, class Position>
void add_shell(const ShellElement<Real>& el, const Position& position, const Skyline& sky) {
    const NodeBlocks blocks{el.ndof};
    for (Index a = 1; a <= el.slots; ++a) {
        const std::int32_t na = el.ielnod(a, el.ielem);
        if (na <= 0) continue;
        for (Index k = 1; k <= el.ndof; ++k) {
            const std::int32_t row = blocks.equation(el.numnod(na), static_cast<std::int32_t>(k));
            const Index p = blocks.index(a, position(k));
            for (Index b = 1; b <= a; ++b) {
                const std::int32_t nb = el.ielnod(b, el.ielem);
                for (Index l = 1; l <= el.ndof; ++l) {
                    const Index q = blocks.index(b, position(l));
                    if (q > p) continue;
                    const std::int32_t col =
                        blocks.equation(el.numnod(nb), static_cast<std::int32_t>(l));
                    sky.add(row, col, el.estif(p, q));
                }
            }
        }
    }
}

// Binds the host's arguments shared by both routines; they differ in the
// number of slots and in where a degree of freedom sits in a node block.
template <class Real, class Position>
void add_shell(const Real* ESTIF, const std::int32_t* IELNOD, const std::int32_t* IDIAG,
               const std::int32_t* NBAND, const std::int32_t* NDOF, double* SKY,
               const std::int32_t* NUMNOD, const std::int32_t* IELEM, const std::int32_t* LDCN,
               const std::int32_t* LDES, Index slots, const Position& position) {
    add_shell(ShellElement<Real>{.estif = host_rows(ESTIF, {0, *LDES}),
                                 .ielnod = host_rows(IELNOD, {0, *LDCN}),
                                 .ielem = *IELEM,
                                 .slots = slots,
                                 .ndof = *NDOF,
                                 .numnod = host_array(NUMNOD)},
              position,
              Skyline{.diag = host_array(IDIAG), .sky = host_array(SKY), .band = *NBAND});
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void ADDSHELLTOSDLLDOTNET(const float* ESTIF, const int32_t* IELNOD, const void*,
                                     const int32_t* IDIAG, const int32_t* NBAND,
                                     const int32_t* NDOF, double* SKY, const int32_t* NUMNOD,
                                     const int32_t* IDOFMAP, const int32_t* IELEM,
                                     const int32_t* LDCN, const void*, const void*,
                                     const int32_t* LDES) noexcept {
    add_shell(ESTIF, IELNOD, IDIAG, NBAND, NDOF, SKY, NUMNOD, IELEM, LDCN, LDES, 8,
              MappedOrder{host_array(IDOFMAP)});
}

extern "C" void shellfe_add_shell_to_skyline_mapped(
    const double* ESTIF, const int32_t* IELNOD, const void*, const int32_t* IDIAG,
    const int32_t* NBAND, const int32_t* NDOF, double* SKY, const int32_t* NUMNOD,
    const int32_t* IDOFMAP, const int32_t* IELEM, const int32_t* LDCN, const void*, const void*,
    const int32_t* LDES) noexcept {
    add_shell(ESTIF, IELNOD, IDIAG, NBAND, NDOF, SKY, NUMNOD, IELEM, LDCN, LDES, 8,
              MappedOrder{host_array(IDOFMAP)});
}

extern "C" void ADDSHELLTOSDOTNET(const float* ESTIF, const int32_t* IELNOD, const void*,
                                  const int32_t* IDIAG, const int32_t* NBAND, const int32_t* NDOF,
                                  double* SKY, const int32_t* NUMNOD, const int32_t* IELEM,
                                  const int32_t* LDCN, const void*, const void*,
                                  const int32_t* LDES, const int32_t* NSLOT) noexcept {
    add_shell(ESTIF, IELNOD, IDIAG, NBAND, NDOF, SKY, NUMNOD, IELEM, LDCN, LDES, *NSLOT,
              ElementOrder{});
}

extern "C" void shellfe_add_shell_to_skyline(const double* ESTIF, const int32_t* IELNOD,
                                             const void*, const int32_t* IDIAG,
                                             const int32_t* NBAND, const int32_t* NDOF,
                                             double* SKY, const int32_t* NUMNOD,
                                             const int32_t* IELEM, const int32_t* LDCN,
                                             const void*, const void*, const int32_t* LDES,
                                             const int32_t* NSLOT) noexcept {
    add_shell(ESTIF, IELNOD, IDIAG, NBAND, NDOF, SKY, NUMNOD, IELEM, LDCN, LDES, *NSLOT,
              ElementOrder{});
}
