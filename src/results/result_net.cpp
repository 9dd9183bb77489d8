// The extremes and average of a result over the net of nodes around a node.
#include <cmath>
#include <cstdint>
#include <vector>

#include "frame/numbering.hpp"
#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// A set of positive numbers (node or element numbers) that grows with what
// it holds: open addressing over a power-of-two table. A net touches a
// small patch of a large mesh, and a set sized by the patch keeps the cost
// of a call in proportion to the patch rather than to the mesh.
class NumberSet {
public:
    // Adds n; false if it was there already.
    bool insert(std::int32_t n) {
        if (2 * (count_ + 1) > slots_.size()) grow();
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t i = hash(n) & mask;; i = (i + 1) & mask) {
            if (slots_[i] == n) return false;
            if (slots_[i] == kEmpty) {
                slots_[i] = n;
                ++count_;
                return true;
            }
        }
    }

private:
    static constexpr std::int32_t kEmpty = 0;  // numbers start at 1
    static std::size_t hash(std::int32_t n) {
        return static_cast<std::size_t>(static_cast<std::uint32_t>(n) * 0x9E3779B1u);
    }
    void grow() {
        std::vector<std::int32_t> old(slots_.size() < 64 ? 64 : 2 * slots_.size(), kEmpty);
        old.swap(slots_);
        count_ = 0;
        for (const std::int32_t n : old)
            if (n != kEmpty) insert(n);
    }
    std::vector<std::int32_t> slots_;
    std::size_t count_ = 0;
};

struct Mesh {
    Array2<const float> xyzn;                // (0:NNODE, 0:2)
    Array2<const std::int32_t> node_elems;  // (0:LDMEM, 0:*), record per node
    Array2<const std::int32_t> ielnod;      // (0:LDCN, 0:8)
};

struct Result {
    Array2<const float> res;  // (0:LDRES, 0:*)
    Index icase;
    Index icomp;
    Index ncomp;
    float value(Index q) const { return res(icomp + 1 + ncomp * (q - 1), icase); }
};

struct NetSummary {
    float& peak;
    float& vhigh;
    float& vlow;
    float& vavg;
};

// Breadth-first spread from `start` through the elements at each node of
// the frontier. Every element and node is looked at once: a node's flag
// sticks whether or not it joins the net, so a node outside the net is
// never looked at again and the net never spreads through it. The start
// node itself carries no flag until it is met through one of its elements.
void cast_net(const Mesh& mesh, const Result& result, std::int32_t start, float radius,
              const NetSummary& out) {
    out.vhigh = -99999997952.0f;  // nearest single to -1e11
    out.vlow = 99999997952.0f;
    out.vavg = 0.0f;
    const float xs = mesh.xyzn(start, 0), ys = mesh.xyzn(start, 1), zs = mesh.xyzn(start, 2);
    NumberSet seen_nodes, seen_elements;
    std::vector<std::int32_t> frontier{start}, next;
    std::int32_t count = 0;
    float sum = 0.0f;
    while (!frontier.empty()) {
        next.clear();
        for (const std::int32_t p : frontier) {
            const Index c = mesh.node_elems(0, p);
            for (Index r = 1; r <= c; ++r) {
                const std::int32_t e = mesh.node_elems(r, p);
                // Element numbers start at 1; anything else names no element.
                if (e < 1 || !seen_elements.insert(e)) continue;
                for (Index s = 1; s <= 8; ++s) {
                    const std::int32_t q = static_cast<std::int32_t>(node_number(mesh.ielnod(e, s)));
                    if (q == 0 || !seen_nodes.insert(q)) continue;  // 0: empty slot
                    const float dx = mesh.xyzn(q, 0) - xs, dy = mesh.xyzn(q, 1) - ys;
                    if (!(0.001f > std::fabs(mesh.xyzn(q, 2) - zs) &&
                          radius > std::sqrt(dx * dx + dy * dy)))
                        continue;
                    ++count;
                    const float v = result.value(q);
                    sum += v;
                    out.vavg = sum;
                    next.push_back(q);
                    if (v > out.vhigh) out.vhigh = v;
                    if (v < out.vlow) out.vlow = v;
                }
            }
        }
        frontier.swap(next);
    }
    if (count != 0) out.vavg = sum / static_cast<float>(count);
    const float high = std::fabs(out.vhigh), low = std::fabs(out.vlow);
    out.peak = low > high ? low : high;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void CASTNETFMDOTNET(float* PEAK, const float* RES, const int32_t* ICASE,
                                const int32_t* ICOMP, const int32_t* NCOMP, const int32_t* NNODE,
                                const float* XYZN, const float* RADIUS, const int32_t* NSTART,
                                float* VHIGH, float* VLOW, const int32_t* NODMEM,
                                const int32_t* /*NELEM*/, const int32_t* LDMEM,
                                const int32_t* LDCN, const int32_t* IELNOD, float* VAVG,
                                const int32_t* LDRES) noexcept {
    cast_net({.xyzn = host_array(XYZN, {0, *NNODE}),
              .node_elems = host_array(NODMEM, {0, *LDMEM}),
              .ielnod = host_array(IELNOD, {0, *LDCN})},
             {.res = host_array(RES, {0, *LDRES}), .icase = *ICASE, .icomp = *ICOMP,
              .ncomp = *NCOMP},
             *NSTART, *RADIUS, {.peak = *PEAK, .vhigh = *VHIGH, .vlow = *VLOW, .vavg = *VAVG});
}
