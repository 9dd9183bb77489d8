// The stiffness of a plate element on the bending triple (transverse
// displacement and two rotations) of every node: the point loop and each
// point's contribution, shared by the bending and the transverse-shear
// routines, which differ only in their rigidities and strain vectors.
#pragma once

#include "element/integration_points.hpp"
#include "element/layered_plate.hpp"
#include "element/shape_functions.hpp"
#include "element/small_matrix.hpp"
#include "frame/canonical_nan.hpp"

// A comma inside a macro argument, for the extension's extra OPTIONS
// argument in the macros that declare each compatible routine together with
// its double-precision mirror.
#define SHELLFE_COMMA ,

namespace shellfe {

// Where a plate routine adds its stiffness: degree of freedom c (1..3) of
// node n is index blocks.index(n, c) = IOFF + c + NDOFN (n - 1) of estif,
// (0:LDES, 0:*).
template <class Real>
struct PlateDofs {
    Array2<Real> estif;
    NodeBlocks blocks;
};

// Strain vectors of the three degrees of freedom of one node: v[r-1][m-1] is
// component m of the strain of degree of freedom r. NC = 3 curvatures
// (bending) or 2 transverse shear strains.
template <int NC, class Real>
struct NodeStrains {
    Real v[3][NC];
};

// Adds f * g_i,c . (D g_j,r) to ESTIF(ioff + r + ndofn (j-1), ioff + c +
// ndofn (i-1)) for node pairs j >= i, all nine entries of each block, the
// zero products included; g_n,r is the strain vector strains(n).v[r-1]. Each
// product D g_j,r depends on node j only and is formed once per point; the
// entries themselves are updated in the order i, j, c, r, so that even
// overlapping node blocks (ndofn < ioff + 3) add up as hosts expect.
//
// The strain vectors are mere copies and negations of the point's shape
// functions and derivatives, so they are formed where they are used rather
// than tabulated first (a table of up to 81 entries per point, filled and
// read back, cost more than forming them twice).
template <int NC, class Real, class Strains>
void add_plate_point(const SmallMatrix<NC, NC, Real>& d, Strains&& strains, Index nnode, Real f,
                     const PlateDofs<Real>& dofs) {
    // Node j's degree of freedom r (from 0) sits at q = 3 (j - 1) + r of the
    // flattened tables below, so the loops over node pairs run over one
    // contiguous index and vectorise.
    constexpr int Q = 3 * kMaxElementNodes;
    const Index nq = 3 * nnode;

    // pr[m][q] = (D g_j,r)(m), a left-to-right sum over the strain components.
    Real pr[NC][Q];
    for (int m = 0; m < NC; ++m) {
        Real dm[NC];
        for (int k = 0; k < NC; ++k) dm[k] = d(m + 1, k + 1);
        for (Index j = 1; j <= nnode; ++j) {
            const NodeStrains<NC, Real> g = strains(j);
            for (int r = 0; r < 3; ++r) {
                Real v = dm[0] * g.v[r][0];
                for (int k = 1; k < NC; ++k) v = v + dm[k] * g.v[r][k];
                pr[m][3 * (j - 1) + r] = v;
            }
        }
    }

    Real kk[3][Q];  // kk[c][q]: K(r, c) of the block of nodes (j, i)
    for (Index i = 1; i <= nnode; ++i) {
        const NodeStrains<NC, Real> g = strains(i);
        const Index q0 = 3 * (i - 1);
        for (int c = 0; c < 3; ++c) {
            const Real* gi = g.v[c];
            Real* out = kk[c];
            for (Index q = q0; q < nq; ++q) {
                Real v = gi[0] * pr[0][q];
                for (int m = 1; m < NC; ++m) v = v + gi[m] * pr[m][q];
                out[q] = v;
            }
        }
        const Index col0 = dofs.blocks.index(i, 0);
        for (Index j = i; j <= nnode; ++j) {
            const Index row0 = dofs.blocks.index(j, 0);
            const Index q = 3 * (j - 1);
            for (int c = 0; c < 3; ++c) {
                for (int r = 0; r < 3; ++r) {
                    Real& e = dofs.estif(row0 + r + 1, col0 + c + 1);
                    e = e + f * kk[c][q + r];
                }
            }
        }
    }
}

// Integrates a plate element. The bending and the transverse-shear routines
// are this one block with a different Strain policy, which supplies
//   static constexpr int components;          // NC: 3 curvatures or 2 shear strains
//   template <class Real>
//   static SmallMatrix<NC, NC, Real> rigidities(const LayeredPlate<Real>&);
//   template <class Real>
//   static NodeStrains<NC, Real> of_node(const PointData<Real>&, Index n);
// The policy's functions are called directly and inline at every point and
// node.
//
// A plate element is abandoned at its first degenerate point, unlike the
// membrane element: hosts test DETJ = -1.0 and rebuild the element rather
// than use a stiffness integrated with a flipped sign.
template <class Strain, class Real>
void integrate_plate(const ElementPoints<Real>& e, const LayeredPlate<Real>& plate,
                     const PlateDofs<Real>& dofs) {
    constexpr int NC = Strain::components;
    bool added = false;
    for_each_integration_point(e, DegeneratePoint::abandon_element, [&](const PointData<Real>& p) {
        // Formed afresh at every point, after the thickness is written: a
        // host may pass its material table as the layer table too, and the
        // written column takes part in the closed-form test.
        const SmallMatrix<NC, NC, Real> d = Strain::rigidities(plate);
        add_plate_point(d, [&p](Index n) { return Strain::of_node(p, n); }, e.nnode, p.det_weight,
                        dofs);
        added = true;
    });
    // NaN entries leave as the canonical NaN. Every 3 x 3 block of nodes
    // i <= j receives every point, so one sweep at the end gives the bits
    // that canonicalising each addition would.
    if (!added) return;
    for (Index i = 1; i <= e.nnode; ++i)
        for (Index j = i; j <= e.nnode; ++j)
            for (Index c = 1; c <= 3; ++c)
                for (Index r = 1; r <= 3; ++r) {
                    Real& v = dofs.estif(dofs.blocks.index(j, r), dofs.blocks.index(i, c));
                    if (v != v) v = canonical_nan<Real>();
                }
}

// The host's arguments of the two plate routines, which differ only in their
// order and in NGPT2, which the shear routine does not count. The
// compatible routines have no OPTIONS (null): they keep the default layer
// formulas.
template <class Real>
struct PlateArgs {
    ElementArgs<Real> element;
    const std::int32_t *IOFF, *NDOFN, *LDES;
    Real* ESTIF;
    const Real *PLAY, *ZLAY;
    const std::int32_t* NLAY;
    const std::int32_t* OPTIONS;
};

template <class Strain, class Real>
void integrate_plate(const PlateArgs<Real>& a) {
    const LayerFormulas formulas = a.OPTIONS ? layer_formulas(*a.OPTIONS) : LayerFormulas{};
    integrate_plate<Strain>(element_points(a.element),
                            layered_plate(a.PLAY, a.ZLAY, *a.NLAY, formulas),
                            PlateDofs<Real>{host_array(a.ESTIF, {0, *a.LDES}),
                                            NodeBlocks{*a.NDOFN, *a.IOFF}});
}

}  // namespace shellfe
