// Node matrices: the couplings of one node's degrees of freedom to those of
// its neighbours, gathered element by element before the node's rows are
// appended to a compressed-row matrix.
#include <cmath>

#include "assembly/cutoff.hpp"
#include "frame/numbering.hpp"
#include "frame/precision.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// One element's part in the node matrix of `inode`.
template <class Element, class Real>
struct NodeGather {
    RowTable<Element> element;  // element matrix, local numbers in node blocks of ndofe
    RowTable<Real> node;        // rows 1..ndofe of inode, blocks of ndofn per listed neighbour
    RowTable<const std::int32_t> ielnod;
    Index ielem;
    Array1<const std::int32_t> locnod;  // 1-based place of a node in inode's neighbour list
    std::int32_t inode;
    Index nenod;
    Index ndofe;
    Index ndofn;
    std::int32_t* nnzcnt;
};

// The mass matrices have neither springs nor prescribed displacements.
struct NoSupports {
    template <class G>
    void add_springs(const G&, Index) const {}
    template <class Real>
    void move_to_loads(std::int32_t, std::int32_t, Real) const {}
};

// Nodal springs, added once per node to the element matrix of the first
// element gathered for it, and prescribed displacements moved to the load
// vector. Real is the precision of the element matrix, springs and
// prescribed displacements, Load that of the load vector.
template <class Real, class Load>
struct Supports {
    Array1<const Real> spring;  // by (node - 1) * ndofe + local degree of freedom
    Array1<std::int32_t> visited;
    RowTable<const std::int32_t> flags;  // (d - 1, node) = 1: degree of freedom d has a spring
    Array1<const std::int32_t> dofmap;   // local degree of freedom of the d-th spring
    Array1<const Real> prescribed;       // by equation
    Array1<Load> load;                   // by equation

    template <class G>
    void add_springs(const G& g, Index slot) const {
        if (visited(g.inode) != 0) return;
        const NodeBlocks local{g.ndofe};
        for (Index d = 1; d <= g.ndofe; ++d) {
            if (flags(d - 1, g.inode) != 1) continue;
            const Index a = local.index(slot, dofmap(d));
            g.element(a, a) += spring(local.index(g.inode, dofmap(d)));
        }
        visited(g.inode) = -1;
    }

    // The inclusive comparison differs on purpose from the strict one that
    // counts stored entries. The product is formed in Real: a single
    // precision product is rounded before a double load vector takes it.
    void move_to_loads(std::int32_t i, std::int32_t j, Real v) const {
        const Real u = prescribed(j);
        if (std::fabs(u) >= threshold<Real>(1.0e-10f)) load(i) -= static_cast<Load>(u * v);
    }
};

// Gathers the rows of every slot of the element that holds `inode`: the
// couplings on or above the global diagonal go into the node matrix (and
// are counted when above the cut-off), while every coupling, below the
// diagonal too, moves prescribed displacements to the loads.
template <class Element, class Real, class Extra>
void gather_node(const NodeGather<Element, Real>& g, const Extra& extra) {
    const NodeBlocks local{g.ndofe};
    const NodeBlocks global{g.ndofn};
    for (Index e = 1; e <= g.nenod; ++e) {
        if (g.ielnod(e, g.ielem) != g.inode) continue;
        extra.add_springs(g, e);
        for (Index r = 1; r <= g.ndofe; ++r) {
            const std::int32_t i = global.equation(g.inode, static_cast<std::int32_t>(r));
            for (Index s = 1; s <= g.nenod; ++s) {
                const std::int32_t m = g.ielnod(s, g.ielem);
                const Index place = g.locnod(m);
                for (Index c = 1; c <= g.ndofe; ++c) {
                    const std::int32_t j = global.equation(m, static_cast<std::int32_t>(c));
                    const Real v = g.element(local.index(e, r), local.index(s, c));
                    if (i <= j) {
                        if (std::fabs(v) > kEntryCutoff<Real>) increment(g.nnzcnt);
                        g.node(r, global.index(place, c)) += v;
                    }
                    extra.move_to_loads(i, j, v);
                }
            }
        }
    }
}

// Binds the host's arguments shared by the stiffness and the mass routines.
template <class Element, class Real, class Extra>
void gather_node(Element* ELEM, const std::int32_t* INODE, const std::int32_t* NENOD, Real* NODEM,
                 const std::int32_t* IELEM, const std::int32_t* IELNOD, const std::int32_t* NDOFE,
                 const std::int32_t* NDOFN, const std::int32_t* LDES, const std::int32_t* LDNM,
                 const std::int32_t* LDCN, const std::int32_t* LOCNOD, std::int32_t* NNZCNT,
                 const Extra& extra) {
    const NodeGather<Element, Real> g{.element = host_rows(ELEM, {0, *LDES}),
                                      .node = host_rows(NODEM, {0, *LDNM}),
                                      .ielnod = host_rows(IELNOD, {0, *LDCN}),
                                      .ielem = *IELEM,
                                      .locnod = host_array(LOCNOD),
                                      .inode = *INODE,
                                      .nenod = *NENOD,
                                      .ndofe = *NDOFE,
                                      .ndofn = *NDOFN,
                                      .nnzcnt = NNZCNT};
    gather_node(g, extra);
}

template <class Real, class Load>
void gather_stiffness(Real* ESTIF, const std::int32_t* INODE, const std::int32_t* NENOD,
                      Real* SNODE, const std::int32_t* IELEM, const Real* SPRING,
                      std::int32_t* IVISIT, const std::int32_t* IELNOD, const std::int32_t* ISPRF,
                      const std::int32_t* NDOFE, const std::int32_t* NDOFN, const std::int32_t* LDES,
                      const std::int32_t* LDSF, const std::int32_t* LDNM, const std::int32_t* LDCN,
                      const Real* UPRES, Load* FLOAD, const std::int32_t* LOCNOD,
                      std::int32_t* NNZCNT, const std::int32_t* IDOFMAP) {
    const Supports<Real, Load> supports{.spring = host_array(SPRING),
                                  .visited = host_array(IVISIT),
                                  .flags = host_rows(ISPRF, {0, *LDSF}),
                                  .dofmap = host_array(IDOFMAP),
                                  .prescribed = host_array(UPRES),
                                  .load = host_array(FLOAD)};
    gather_node(ESTIF, INODE, NENOD, SNODE, IELEM, IELNOD, NDOFE, NDOFN, LDES, LDNM, LDCN, LOCNOD,
                NNZCNT, supports);
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void BUILDALLNODESTIFFDLLDOTNET(
    float* ESTIF, const int32_t* INODE, const int32_t* NENOD, float* SNODE, const int32_t* IELEM,
    const float* SPRING, int32_t* IVISIT, const void*, const int32_t* IELNOD, const int32_t* ISPRF,
    const int32_t* NDOFE, const int32_t* NDOFN, const int32_t* LDES, const int32_t* LDSF,
    const int32_t* LDNM, const void*, const int32_t* LDCN, const void*, const float* UPRES,
    float* FLOAD, const int32_t* LOCNOD, int32_t* NNZCNT, const int32_t* IDOFMAP) noexcept {
    gather_stiffness(ESTIF, INODE, NENOD, SNODE, IELEM, SPRING, IVISIT, IELNOD, ISPRF, NDOFE, NDOFN,
                     LDES, LDSF, LDNM, LDCN, UPRES, FLOAD, LOCNOD, NNZCNT, IDOFMAP);
}

extern "C" void BUILDALLNODESTIFFDLLDOTNET01(
    float* ESTIF, const int32_t* INODE, const int32_t* NENOD, float* SNODE, const int32_t* IELEM,
    const float* SPRING, int32_t* IVISIT, const void*, const int32_t* IELNOD, const int32_t* ISPRF,
    const int32_t* NDOFE, const int32_t* NDOFN, const int32_t* LDES, const int32_t* LDSF,
    const int32_t* LDNM, const void*, const int32_t* LDCN, const void*, const float* UPRES,
    double* FLOAD, const int32_t* LOCNOD, int32_t* NNZCNT, const int32_t* IDOFMAP) noexcept {
    gather_stiffness(ESTIF, INODE, NENOD, SNODE, IELEM, SPRING, IVISIT, IELNOD, ISPRF, NDOFE, NDOFN,
                     LDES, LDSF, LDNM, LDCN, UPRES, FLOAD, LOCNOD, NNZCNT, IDOFMAP);
}

extern "C" void shellfe_gather_node_stiffness(
    double* ESTIF, const int32_t* INODE, const int32_t* NENOD, double* SNODE, const int32_t* IELEM,
    const double* SPRING, int32_t* IVISIT, const void*, const int32_t* IELNOD, const int32_t* ISPRF,
    const int32_t* NDOFE, const int32_t* NDOFN, const int32_t* LDES, const int32_t* LDSF,
    const int32_t* LDNM, const void*, const int32_t* LDCN, const void*, const double* UPRES,
    double* FLOAD, const int32_t* LOCNOD, int32_t* NNZCNT, const int32_t* IDOFMAP) noexcept {
    gather_stiffness(ESTIF, INODE, NENOD, SNODE, IELEM, SPRING, IVISIT, IELNOD, ISPRF, NDOFE, NDOFN,
                     LDES, LDSF, LDNM, LDCN, UPRES, FLOAD, LOCNOD, NNZCNT, IDOFMAP);
}

extern "C" void BUILDALLNODEMASSDLL(const double* EMASS, const int32_t* INODE, const int32_t* NENOD,
                                    double* DNODE, const int32_t* IELEM, const void*,
                                    const int32_t* IELNOD, const int32_t* NDOFE,
                                    const int32_t* NDOFN, const int32_t* LDES, const void*,
                                    const int32_t* LDNM, const void*, const int32_t* LDCN,
                                    const int32_t* LOCNOD, int32_t* NNZCNT) noexcept {
    gather_node(EMASS, INODE, NENOD, DNODE, IELEM, IELNOD, NDOFE, NDOFN, LDES, LDNM, LDCN, LOCNOD,
                NNZCNT, NoSupports{});
}
