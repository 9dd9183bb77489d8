// Members of a group, and their nodes, near a peak of a result.
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

// Which members are searched.
struct AllMembers {
    static bool searched(std::int32_t /*active_flag*/) { return true; }
};
struct ActiveMembers {
    static bool searched(std::int32_t active_flag) { return active_flag == 1; }
};

// Memory of the nodes listed in this call: one flag per node number.
class NodeFlags {
public:
    explicit NodeFlags(Index highest) : flags_(static_cast<std::size_t>(highest < 0 ? 0 : highest) + 1) {}
    // Remembers n; false if it was remembered already.
    bool remember(std::int32_t n) {
        auto&& flag = flags_[static_cast<std::size_t>(n)];
        if (flag) return false;
        flag = true;
        return true;
    }

private:
    std::vector<bool> flags_;
};

// Memory of the last 512 nodes listed, as 16-bit numbers in a ring that
// starts all zero. A search that lists more than 512 distinct nodes
// overwrites the oldest and can list a node a second time; hosts of this
// variant rely on that bound. Numbers compare modulo 65536.
class NodeRing {
public:
    explicit NodeRing(Index /*highest*/) {}
    bool remember(std::int32_t n) {
        const auto v = static_cast<std::uint16_t>(n);
        for (const std::uint16_t e : ring_)
            if (e == v) return false;
        ring_[next_] = v;
        next_ = (next_ + 1) % ring_.size();
        return true;
    }

private:
    std::array<std::uint16_t, 512> ring_{};
    std::size_t next_ = 0;
};

struct Members {
    Index nmem;
    RowTable<const std::int32_t> table;  // (1, j) active flag, (2, j) node count
    Array1<const std::int32_t> group;
    RowTable<const std::int32_t> nodes;  // (1..c, j)
};

// A list the host continues: `count` entries so far, the next at count+1.
struct FoundList {
    std::int32_t& count;
    Array1<std::int32_t> items;
    void append(std::int32_t v) { items(++count) = v; }
};

template <class Filter, class Memory>
void find_near_peak(const Members& m, const RowTable<const float>& xyz, Index ldxyz,
                    std::int32_t ipeak, float rad, std::int32_t group, FoundList members,
                    FoundList nodes) {
    Memory listed(ldxyz);
    const float px = xyz(0, ipeak), py = xyz(1, ipeak), pz = xyz(2, ipeak);
    for (Index j = 1; j <= m.nmem; ++j) {
        const Index c = m.table(2, j);
        if (m.group(j) != group || !Filter::searched(m.table(1, j)) || c < 1) continue;
        bool member_listed = false;
        for (Index k = 1; k <= c; ++k) {
            const std::int32_t n = m.nodes(k, j);
            const float dx = xyz(0, n) - px, dy = xyz(1, n) - py, dz = xyz(2, n) - pz;
            if (!(std::sqrt(dx * dx + dy * dy + dz * dz) < rad)) continue;
            if (!member_listed) {
                members.append(static_cast<std::int32_t>(j));
                member_listed = true;
            }
            if (listed.remember(n)) nodes.append(n);
        }
    }
}

// IGRP + 1 as the host computes it, wrapping around in 32 bits.
std::int32_t group_after(std::int32_t igrp) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(igrp) + 1u);
}

template <class Filter, class Memory>
void peak_search(const int32_t* NMEM, const int32_t* MEMTAB, const int32_t* MEMGRP,
                 const int32_t* MEMNOD, const float* XYZN, const int32_t* IPEAK, const float* RAD,
                 int32_t* NMFND, int32_t* MFND, int32_t* NNFND, int32_t* NFND,
                 const int32_t* LDXYZ, const int32_t* IGRP) {
    const Dim member_columns{0, *NMEM};
    find_near_peak<Filter, Memory>({.nmem = *NMEM,
                                    .table = host_rows(MEMTAB, member_columns),
                                    .group = host_array(MEMGRP),
                                    .nodes = host_rows(MEMNOD, member_columns)},
                                   host_rows(XYZN, {0, *LDXYZ}), *LDXYZ, *IPEAK, *RAD, group_after(*IGRP),
                                   {.count = *NMFND, .items = host_array(MFND)},
                                   {.count = *NNFND, .items = host_array(NFND)});
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

#define SHELLFE_PEAK_SEARCH(NAME, FILTER, MEMORY)                                                 \
    extern "C" void NAME(const int32_t* NMEM, const int32_t* MEMTAB, const int32_t* MEMGRP,     \
                         const int32_t* MEMNOD, const float* XYZN, const int32_t* IPEAK,         \
                         const float* RAD, int32_t* NMFND, int32_t* MFND, int32_t* NNFND,        \
                         int32_t* NFND, const int32_t* LDXYZ, const int32_t* IGRP) noexcept {    \
        peak_search<FILTER, MEMORY>(NMEM, MEMTAB, MEMGRP, MEMNOD, XYZN, IPEAK, RAD, NMFND, MFND, \
                                    NNFND, NFND, LDXYZ, IGRP);                                   \
    }

SHELLFE_PEAK_SEARCH(GETPEAKMEMNODESDOTNET, AllMembers, NodeFlags)
SHELLFE_PEAK_SEARCH(GETPEAKMEMNODESDOTNET1, ActiveMembers, NodeFlags)
SHELLFE_PEAK_SEARCH(GETPEAKMEMNODESDOTNET2, ActiveMembers, NodeRing)
