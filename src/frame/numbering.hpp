// Node and degree-of-freedom numbering shared by every routine that places
// values by node: node blocks of element and global matrices, node numbers
// that carry a sign, and the counters hosts let routines continue.
#pragma once

#include <cstdint>

#include "frame/views.hpp"

namespace shellfe {

// Node n (from 1) owns `per_node` consecutive degrees of freedom; a routine
// whose own degrees of freedom start `offset` into each block (the bending
// triple of a six-per-node shell matrix starts at offset 2) numbers its
// degree of freedom d (from 1) of node n as offset + d + per_node (n - 1).
struct NodeBlocks {
    Index per_node;
    Index offset = 0;

    // Position in a host array (a row or column index of a matrix).
    Index index(Index node, Index dof) const { return offset + dof + per_node * (node - 1); }

    // Global equation number as hosts compute it, in 32-bit integers: a
    // model too large for them wraps around as the host's own numbers do,
    // rather than being undefined.
    std::int32_t equation(std::int32_t node, std::int32_t dof) const {
        const std::uint32_t e = static_cast<std::uint32_t>(offset) + static_cast<std::uint32_t>(dof) +
                                static_cast<std::uint32_t>(per_node) *
                                    (static_cast<std::uint32_t>(node) - 1u);
        return static_cast<std::int32_t>(e);
    }
};

// A node reference that may carry a sign (connectivity tables mark nodes that
// way): its magnitude is the node number. Widened first, so that even the
// most negative 32-bit value has a magnitude.
inline Index node_number(std::int32_t reference) {
    const Index n = reference;
    return n < 0 ? -n : n;
}

// Advances a host counter (integration points, stored entries, rows, found
// items) by one and returns the new value. Counters are the host's 32-bit
// integers and wrap around as they do, rather than overflowing.
inline std::int32_t increment(std::int32_t* counter) {
    *counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(*counter) + 1u);
    return *counter;
}

}  // namespace shellfe
