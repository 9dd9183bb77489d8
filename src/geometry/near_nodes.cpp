// Candidate apex nodes for a new triangle on a base edge.
#include <algorithm>
#include <vector>

#include "geometry/orientation.hpp"
#include "geometry/planar.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// The candidate list: node numbers in the host's NEAR (from 1) and their
// distances in a work array of the same capacity.
struct NearList {
    Array1<std::int32_t> node;
    std::vector<double> dist;  // dist[i] for entry i, from 1
    Index count;
    Index capacity;
    Index far = 0;  // entry of the largest distance, 0 while empty

    bool holds(std::int32_t n) const {
        for (Index i = 1; i <= count; ++i)
            if (node(i) == n) return true;
        return false;
    }

    // Appends while there is room; once full, a node strictly nearer than
    // the farthest entry replaces it, and the new farthest is the first of
    // equally far entries.
    void offer(std::int32_t n, double d) {
        if (count < capacity) {
            ++count;
            node(count) = n;
            dist[count] = d;
            if (count == 1 || d > dist[far]) far = count;
        } else if (count > 0 && dist[far] > d) {
            node(far) = n;
            dist[far] = d;
            far = 1;
            for (Index i = 2; i <= count; ++i)
                if (dist[i] > dist[far]) far = i;
        }
    }

    // Selection sort, nearest first; the earliest of equal minima wins.
    // Deliberately only half a swap: the minimum's place receives the
    // displaced entry's distance, but position i keeps its own, larger one.
    // The radius count reads the distances as this leaves them, and hosts
    // rely on its value.
    void sort() {
        for (Index i = 1; i <= count; ++i) {
            Index m = i;
            for (Index j = i + 1; j <= count; ++j)
                if (dist[j] < dist[m]) m = j;
            if (m != i) {
                std::swap(node(i), node(m));
                dist[m] = dist[i];
            }
        }
    }

    // Leading entries not farther than `radius`.
    std::int32_t within(double radius) const {
        Index n = 0;
        while (n < count && !(dist[n + 1] > radius)) ++n;
        return static_cast<std::int32_t>(n);
    }
};

struct BaseEdge {
    std::int32_t a;
    std::int32_t b;
};

// Scans the table row after row and offers every node on the left of a->b
// or on its line, other than a and b and nodes already listed.
void collect(NearList& list, BaseEdge base, Point2 p, const Array2<const double>& xy,
             const Array2<const std::int32_t>& table, Index nrow, Index ncol,
             const PredicateConstants& k) {
    const Point2 a = node_point(xy, base.a), b = node_point(xy, base.b);
    for (Index row = 0; row < nrow; ++row)
        for (Index col = 1; col <= ncol; ++col) {
            const std::int32_t n = table(row, col);
            if (n == base.a || n == base.b || list.holds(n)) continue;
            const Point2 q = node_point(xy, n);
            if (orientation(a, b, q, k) < 0.0) continue;
            list.offer(n, distance(p, q));
        }
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

// A list passed in non-empty is unsupported: its entries take part in the
// duplicate test but have no distances; here they count as distance 0.
extern "C" int32_t GETNEARNODES(const int32_t* NA, const int32_t* NB, const double* P,
                                const double* XY, const int32_t* NROW, const int32_t* TABLE,
                                const double* RADIUS, int32_t* NWITHIN, int32_t* NNEAR,
                                int32_t* NEAR, const double* CCWERRBOUNDA,
                                const double* CCWERRBOUNDB, const double* CCWERRBOUNDC,
                                const double* SPLITTER, const int32_t* LDT, const int32_t* LDN,
                                const double* RESULTERRBOUND, const int32_t* KMAX,
                                const int32_t* NCOL) noexcept {
    const Index capacity = std::max<Index>(*KMAX, 0);
    NearList list{.node = host_array(NEAR, 1),
                  .dist = std::vector<double>(static_cast<std::size_t>(capacity) + 1, 0.0),
                  .count = std::clamp<Index>(*NNEAR, 0, capacity),
                  .capacity = capacity};
    if (list.count > 0) list.far = 1;
    collect(list, {.a = *NA, .b = *NB}, host_point(P), host_array(XY, {1, Index{*LDN} + 1}, 1),
            host_array(TABLE, {0, *LDT}, 1), *NROW, *NCOL,
            HostConstants{.CCWERRBOUNDA = CCWERRBOUNDA,
                           .CCWERRBOUNDB = CCWERRBOUNDB,
                           .CCWERRBOUNDC = CCWERRBOUNDC,
                           .SPLITTER = SPLITTER,
                           .RESULTERRBOUND = RESULTERRBOUND}.all());
    list.sort();
    *NWITHIN = list.within(*RADIUS);
    *NNEAR = static_cast<int32_t>(list.count);
    return *NNEAR;
}
