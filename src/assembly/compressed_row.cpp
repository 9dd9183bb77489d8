// Rows of a compressed-row global matrix, appended one per global equation.
#include <cmath>

#include "assembly/cutoff.hpp"
#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// The host's compressed-row matrix: row pointers from position 0, stored
// entries numbered from 1 (entry k at position k - 1) and the two counters.
struct CompressedRows {
    std::int32_t* nnz;
    std::int32_t* nrows;
    Array1<std::int32_t> row_start;
    Array1<std::int32_t> column;
    Array1<double> value;
};

// Appends one row: the couplings in `node_row` to the first `ndofs` degrees
// of freedom of every listed node, in list order, leaving out restrained
// equations and entries of magnitude at or below the cut-off (NaN included).
// The row is begun before anything else, so an empty row is still counted.
template <class Real>
void append_row(const CompressedRows& m, const Array1<const Real>& node_row,
                const Array1<const std::int32_t>& nodes, const Array1<const std::int32_t>& fixed,
                Index ndofs, const NodeBlocks& blocks) {
    m.row_start(*m.nrows) = static_cast<std::int32_t>(static_cast<std::uint32_t>(*m.nnz) + 1u);
    increment(m.nrows);
    const Index count = nodes(0);
    for (Index j = 1; j <= count; ++j) {
        const std::int32_t n = nodes(j);
        for (Index d = 1; d <= ndofs; ++d) {
            const std::int32_t e = blocks.equation(n, static_cast<std::int32_t>(d));
            if (fixed(e) == 1) continue;
            const Real v = node_row(blocks.index(j, d));
            if (!(std::fabs(v) > kEntryCutoff<Real>)) continue;
            const std::int32_t k = increment(m.nnz);
            m.column(k) = e;
            m.value(k) = static_cast<double>(v);
        }
    }
}

template <class Real>
void append_row(const std::int32_t* NDOFS, const std::int32_t* LDNM, std::int32_t* NNZ,
                std::int32_t* IROWPTR, std::int32_t* ICOL, std::int32_t* NROWS,
                const std::int32_t* IFIX, const Real* NODEM, double* VAL, const std::int32_t* IROWN,
                const std::int32_t* NODLST, const std::int32_t* NDOFN) {
    const CompressedRows m{.nnz = NNZ,
                           .nrows = NROWS,
                           .row_start = host_array(IROWPTR),
                           .column = host_array(ICOL, 1),
                           .value = host_array(VAL, 1)};
    append_row(m, host_rows(NODEM, {0, *LDNM}).row(*IROWN), host_array(NODLST), host_array(IFIX),
               *NDOFS, NodeBlocks{*NDOFN});
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void ADDTOCRSSTIFFDLLDOTNET(const int32_t* NDOFS, const int32_t* LDNM, int32_t* NNZ,
                                       int32_t* IROWPTR, int32_t* ICOL, const void*,
                                       int32_t* NROWS, const int32_t* IFIX, const float* SNODE,
                                       double* VAL, const void*, const int32_t* IROWN,
                                       const int32_t* NODLST, const void*,
                                       const int32_t* NDOFN) noexcept {
    append_row(NDOFS, LDNM, NNZ, IROWPTR, ICOL, NROWS, IFIX, SNODE, VAL, IROWN, NODLST, NDOFN);
}

extern "C" void ADDTOCRSMASSDLLDLL(const int32_t* NDOFS, const int32_t* LDNM, int32_t* NNZ,
                                   int32_t* IROWPTR, int32_t* ICOL, const void*, int32_t* NROWS,
                                   const int32_t* IFIX, const double* DNODE, double* VAL,
                                   const void*, const int32_t* IROWN, const int32_t* NODLST,
                                   const void*, const int32_t* NDOFN) noexcept {
    append_row(NDOFS, LDNM, NNZ, IROWPTR, ICOL, NROWS, IFIX, DNODE, VAL, IROWN, NODLST, NDOFN);
}
