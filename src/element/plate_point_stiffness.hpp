// One integration point's contribution to the bending triple (transverse
// displacement and two rotations) of every node of a plate element, shared by
// the bending and the transverse-shear routines.
#pragma once

#include "element/shape_functions.hpp"
#include "element/small_matrix.hpp"

namespace shellfe {

// Strain vectors of the three degrees of freedom of every node:
// v[r-1][m-1][n] is component m of the strain of degree of freedom r of
// node n. NC = 3 curvatures (bending) or 2 transverse shear strains.
template <int NC>
struct PlateStrains {
    float v[3][NC][kMaxElementNodes + 1];
};

// Adds f * g_i,c . (D g_j,r) to ESTIF(ioff + r + ndofn (j-1), ioff + c +
// ndofn (i-1)) for node pairs j >= i, all nine entries of each block, the
// zero products included. Each product D g_j,r depends on node j only and is
// formed once per point; the entries themselves are updated in the order
// i, j, c, r, so that even overlapping node blocks (ndofn < ioff + 3) add up
// as hosts expect.
template <int NC>
void add_plate_point(const SmallMatrix<NC, NC>& d, const PlateStrains<NC>& g, Index nnode, float f,
                     const Array2<float>& estif, Index ioff, Index ndofn) {
    // Node j's degree of freedom r (from 0) sits at q = 3 (j - 1) + r of the
    // flattened tables below, so the loops over node pairs run over one
    // contiguous index and vectorise.
    constexpr int Q = 3 * kMaxElementNodes;
    const Index nq = 3 * nnode;

    // pr[m][q] = (D g_j,r)(m), a left-to-right sum over the strain components.
    float pr[NC][Q];
    for (int m = 0; m < NC; ++m) {
        float dm[NC];
        for (int k = 0; k < NC; ++k) dm[k] = d(m + 1, k + 1);
        for (Index j = 1; j <= nnode; ++j) {
            for (int r = 0; r < 3; ++r) {
                float v = dm[0] * g.v[r][0][j];
                for (int k = 1; k < NC; ++k) v = v + dm[k] * g.v[r][k][j];
                pr[m][3 * (j - 1) + r] = v;
            }
        }
    }

    float kk[3][Q];  // kk[c][q]: K(r, c) of the block of nodes (j, i)
    for (Index i = 1; i <= nnode; ++i) {
        const Index q0 = 3 * (i - 1);
        for (int c = 0; c < 3; ++c) {
            float gi[NC];
            for (int m = 0; m < NC; ++m) gi[m] = g.v[c][m][i];
            float* out = kk[c];
            for (Index q = q0; q < nq; ++q) {
                float v = gi[0] * pr[0][q];
                for (int m = 1; m < NC; ++m) v = v + gi[m] * pr[m][q];
                out[q] = v;
            }
        }
        const Index col0 = ioff + ndofn * (i - 1);
        for (Index j = i; j <= nnode; ++j) {
            const Index row0 = ioff + ndofn * (j - 1);
            const Index q = 3 * (j - 1);
            for (int c = 0; c < 3; ++c) {
                for (int r = 0; r < 3; ++r) {
                    float& e = estif(row0 + r + 1, col0 + c + 1);
                    e = e + f * kk[c][q + r];
                }
            }
        }
    }
}

}  // namespace shellfe
