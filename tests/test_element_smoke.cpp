// A host may pass its material table as the plate routines' layer table. The
// thickness that a plate routine writes into PROP(IMAT, 3) then takes part in
// the closed-form test of the layered rigidities, so the rigidities must be
// formed after that write, at every point.
#include "shellfe.h"

#include "host_array.hpp"

#include <gtest/gtest.h>

namespace {

// Two identical isotropic layers, except that column 3 of row 1 is `t1`.
HostMatrix<float> two_layers(float t1, float t2) {
    HostMatrix<float> p(2, 17);
    for (int row = 1; row <= 2; ++row) {
        p(row, 1) = 30000.0f, p(row, 2) = 0.2f, p(row, 8) = 30000.0f, p(row, 9) = 12500.0f;
        p(row, 10) = 12500.0f, p(row, 11) = 12500.0f;
    }
    p(1, 3) = t1, p(2, 3) = t2;
    return p;
}

// Bending then shear of an 8-node side-2 square, one point at the centre,
// nodal thickness 0.25 (interpolated exactly), triple at 1..3 of 3 per node.
struct Plate {
    HostMatrix<float> xy{9, 2}, tnode{1, 9, 0.25f}, gpos{2, 2}, gwei{2, 2}, zlay{3, 0}, estif{24, 24};
    Plate() {
        const float nx[9] = {0, -1, 0, 1, 1, 1, 0, -1, -1}, ny[9] = {0, -1, -1, -1, 0, 1, 1, 1, 0};
        for (int k = 1; k <= 8; ++k) xy(k, 1) = nx[k], xy(k, 2) = ny[k];
        gpos(1, 1) = 0.0f, gwei(1, 1) = 2.0f;
        zlay(1, 0) = -0.125f, zlay(2, 0) = 0.0f, zlay(3, 0) = 0.125f;
    }
    void run(HostMatrix<float>& prop, HostMatrix<float>& play) {
        int32_t one = 1, ntype = 1, ngpt = 0, ngpt2 = 0, iel = 1, nnode = 8, imat = 1, ioff = 0,
                nelem = 1, nmat = 2, ldes = 24, ndofn = 3, nlay = 2;
        float detj = 0.0f;
        STIFFP001DOTNET(&one, &one, &ntype, gpos.ptr(), &ngpt, &iel, &ngpt2, nullptr, &nnode,
                        xy.ptr(), tnode.ptr(), nullptr, &imat, prop.ptr(), &ioff, estif.ptr(),
                        gwei.ptr(), nullptr, nullptr, &nelem, &nmat, &ldes, &ndofn, &nnode,
                        play.ptr(), zlay.ptr(), &nlay, &detj);
        STIFFP002DOTNET(&one, &one, &ntype, gpos.ptr(), &ngpt, &iel, &nnode, xy.ptr(), tnode.ptr(),
                        nullptr, &imat, prop.ptr(), &ioff, estif.ptr(), gwei.ptr(), nullptr, &nelem,
                        &nmat, &ldes, &ndofn, &nnode, play.ptr(), zlay.ptr(), &nlay, &detj);
        EXPECT_EQ(detj, 1.0f);
    }
};

bool same_matrix(const HostMatrix<float>& a, const HostMatrix<float>& b) {
    for (size_t i = 0; i < a.data.size(); ++i)
        if (!same_bits(a.data[i], b.data[i])) return false;
    return true;
}

TEST(PlateElementSharedTables, RigiditiesSeeTheThicknessJustWritten) {
    // Separate tables: the closed form (rows equal) and the layered path.
    Plate closed, layered;
    HostMatrix<float> prop = two_layers(0.0f, 0.0f);
    HostMatrix<float> equal_rows = two_layers(0.25f, 0.25f), unequal_rows = two_layers(0.0f, 0.25f);
    closed.run(prop, equal_rows);
    layered.run(prop, unequal_rows);
    ASSERT_FALSE(same_matrix(closed.estif, layered.estif)) << "the two paths must round apart";

    // Shared table, row 1 differing in column 3 on entry: the routine writes
    // 0.25 there first, so the rows are equal when the rigidities are formed.
    Plate shared;
    HostMatrix<float> table = two_layers(0.0f, 0.25f);
    shared.run(table, table);
    EXPECT_EQ(table(1, 3), 0.25f);
    EXPECT_TRUE(same_matrix(shared.estif, closed.estif));

    // And the other way round: equal on entry, unequal once written.
    Plate broken;
    HostMatrix<float> table2 = two_layers(0.5f, 0.5f);
    broken.run(table2, table2);
    EXPECT_TRUE(same_matrix(broken.estif, layered.estif));
}

}  // namespace
