// A grid over node coordinates for finding the nodes near a node.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "frame/views.hpp"

namespace shellfe {

// Sorts nodes first..last into cells of edge `cell` along each of Dim
// coordinates. Two nodes whose coordinates differ by less than cell / 2 in
// every axis lie in the same or in neighbouring cells, so for_each_near()
// offers every such pair: with cell = 2 * tolerance, every node within the
// tolerance of another. Cells are numbered in double precision: a
// floating-point quotient so large that neighbouring cell numbers fall
// together belongs to coordinates whose single-precision neighbours are
// farther apart than any tolerance, and nodes within tolerance of each other
// there have equal coordinates and one cell.
template <int Dim>
class NodeGrid {
  public:
    using Cell = std::array<double, Dim>;

    // Only nodes for which take(n) holds are placed; nodes with a coordinate
    // that is not finite are left out, as they are within no tolerance of
    // anything.
    template <class Take>
    NodeGrid(const std::array<Array1<const float>, Dim>& coords, Index first, Index last,
             double cell, Take take)
        : coords_(coords), cell_(cell) {
        entries_.reserve(static_cast<std::size_t>(last >= first ? last - first + 1 : 0));
        for (Index n = first; n <= last; ++n) {
            if (!take(n)) continue;
            Cell c;
            if (cell_of(n, c)) entries_.push_back({c, n});
        }
        std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
            return a.cell != b.cell ? a.cell < b.cell : a.node < b.node;
        });
    }

    // Calls f(m) for every placed node m in the cells around node n (n
    // itself included), in no particular order.
    template <class F>
    void for_each_near(Index n, F f) const {
        Cell c;
        if (!cell_of(n, c)) return;
        Cell probe;
        visit<0>(c, probe, f);
    }

  private:
    struct Entry {
        Cell cell;
        Index node;
    };

    bool cell_of(Index n, Cell& c) const {
        for (int k = 0; k < Dim; ++k) {
            const float x = coords_[k](n);
            if (!std::isfinite(x)) return false;
            c[k] = std::floor(static_cast<double>(x) / cell_) + 0.0;  // -0 and +0 alike
        }
        return true;
    }

    // Walks the neighbouring cell numbers of the leading axes; along the last
    // axis the three neighbouring cells are one run of the sorted entries.
    template <int K, class F>
    void visit(const Cell& c, Cell& probe, F& f) const {
        if constexpr (K == Dim - 1) {
            probe[K] = c[K] - 1.0;
            const double top = c[K] + 1.0;
            auto it = std::lower_bound(entries_.begin(), entries_.end(), probe,
                                       [](const Entry& e, const Cell& p) { return e.cell < p; });
            for (; it != entries_.end(); ++it) {
                if (!std::equal(probe.begin(), probe.begin() + K, it->cell.begin())) break;
                if (it->cell[K] > top) break;
                f(it->node);
            }
        } else {
            for (double step : {-1.0, 0.0, 1.0}) {
                probe[K] = c[K] + step;
                // Beyond 2^53 neighbouring numbers coincide; visit each once.
                if (step != 0.0 && probe[K] == c[K]) continue;
                visit<K + 1>(c, probe, f);
            }
        }
    }

    std::array<Array1<const float>, Dim> coords_;
    double cell_;
    std::vector<Entry> entries_;
};

}  // namespace shellfe
