// The one NaN the library returns where a result is not a number.
//
// Which NaN an operation yields depends on the order of its operands in the
// machine code (two NaN operands: the first one's payload survives; an
// invalid operation: the CPU's default NaN, negative on x86), and that
// order is the compiler's choice. Where a routine promises the same bits on
// every platform and in every version, its NaN results go through here.
#pragma once

#include <bit>
#include <cstdint>

namespace shellfe {

template <class Real>
inline constexpr auto kCanonicalNanBits = std::uint32_t{0x7FC00000};
template <>
inline constexpr auto kCanonicalNanBits<double> = std::uint64_t{0x7FF8000000000000};

// The positive quiet NaN with an empty payload.
template <class Real>
inline Real canonical_nan() {
    return std::bit_cast<Real>(kCanonicalNanBits<Real>);
}

// v itself, or the canonical NaN where v is a NaN.
template <class Real>
inline Real canonical(Real v) {
    return v == v ? v : canonical_nan<Real>();
}

}  // namespace shellfe
