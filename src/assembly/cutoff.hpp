// The magnitude below which a global matrix entry counts as zero.
#pragma once

namespace shellfe {

// Entries of magnitude 1.0e-10 or less are not stored. The threshold is a
// single-precision constant; double-precision matrices compare with that
// same value widened (1.000000013351432e-10), not with the double 1.0e-10,
// so that both routes keep the same entries, deliberately and as hosts rely on.
template <class Real>
inline constexpr Real kEntryCutoff = static_cast<Real>(1.0e-10f);

}  // namespace shellfe
