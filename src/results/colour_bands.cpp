// How many colour bands of a contour plot one element spans.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "frame/views.hpp"
#include "shellfe.h"

namespace shellfe {
namespace {

struct Bands {
    Array1<const float> limits;  // positions 0..nbnd, normalised, ascending
    Index nbnd;
    float vmin;
    float vmax;
};

struct Corners {
    Array1<float> value;  // VCORN(1..ncorn)
    Index ncorn;
    RowTable<const float> xyz;  // rows 0, 1, 2: x, y, z of corner i in column i
};

struct ForcedColour {
    std::int32_t mode;
    std::int32_t ibfix;
    Index irefa;
    Index irefb;
    float vlo;
    float vhi;
    float tol;
    RowTable<const float> ref;  // reference points, one per column
};

constexpr std::int32_t kPointTest = -999;

// Band of a normalised value: k where limit k-1 < t < limit k, or -k where
// t lies within 1e-6 of limit k (on the upper limit of band k). Limit k's
// interval test comes before its own limit test, so a value just below a
// limit is marked as on it. Without a match the running band `b` is kept
// if non-zero, else the top band above limit 0 and band 1 otherwise.
std::int32_t assign_band(const Bands& bands, float t, std::int32_t b) {
    for (Index k = 1; k <= bands.nbnd; ++k) {
        if (bands.limits(k - 1) < t && t < bands.limits(k)) b = static_cast<std::int32_t>(k);
        if (std::fabs(t - bands.limits(k)) < 1.0e-6f) {
            b = -static_cast<std::int32_t>(k);
            break;
        }
    }
    if (b == 0) b = t > bands.limits(0) ? static_cast<std::int32_t>(bands.nbnd) : 1;
    return b;
}

// Corners 4 and 8 close their ring; other counts have no neighbour beyond
// their ends and read positions 0 and ncorn + 1 as they are.
Index previous_corner(Index i, Index ncorn) {
    return i == 1 && (ncorn == 4 || ncorn == 8) ? ncorn : i - 1;
}
Index next_corner(Index i, Index ncorn) {
    return i == ncorn && (ncorn == 4 || ncorn == 8) ? 1 : i + 1;
}

// A corner on the upper limit of band m joins band m-1 when both
// neighbours lie lower, band m+1 when both lie higher, and otherwise stays
// in band m; corners resolved earlier count with their new band.
void resolve_limits(const Array1<std::int32_t>& iband, Index ncorn) {
    for (Index i = 1; i <= ncorn; ++i) {
        if (iband(i) >= 0) continue;
        const std::int32_t m = -iband(i);
        const std::int32_t p = std::abs(iband(previous_corner(i, ncorn)));
        const std::int32_t q = std::abs(iband(next_corner(i, ncorn)));
        if (p < m) iband(i) = q < m ? m - 1 : m;
        else if (p == m) iband(i) = m;
        else iband(i) = q > m ? m + 1 : m;
    }
}

float distance(const RowTable<const float>& a, Index i, const RowTable<const float>& b, Index j) {
    const float dx = a(0, i) - b(0, j), dy = a(1, i) - b(1, j), dz = a(2, i) - b(2, j);
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

// The two modes that force one colour; returns the band count they leave.
std::int32_t apply_mode(const ForcedColour& f, const Corners& c, const Array1<std::int32_t>& iband,
                        std::int32_t n) {
    if (f.mode == kPointTest) {
        Index near = 0;
        for (Index i = 1; i <= c.ncorn; ++i)
            if (distance(c.xyz, i, f.ref, f.irefa) <= f.tol) ++near;
        return near == c.ncorn ? 1 : n;
    }
    if (f.mode < 1) return n;
    Index inside = 0;
    float total = 0.0f;
    for (Index i = 1; i <= c.ncorn; ++i) {
        const float v = c.value(i);
        if ((f.vlo <= v && v <= f.vhi) || (f.vhi <= v && v <= f.vlo)) ++inside;
        total += distance(c.xyz, i, f.ref, f.irefb);
    }
    if (inside != c.ncorn || !(total / static_cast<float>(c.ncorn) < 1.25f * f.tol)) return n;
    for (Index i = 1; i <= c.ncorn; ++i) {
        iband(i) = f.ibfix;
        c.value(i) = f.vlo;
    }
    return 1;
}

struct BandOutput {
    std::int32_t& ncolr;
    std::int32_t& ibinit;
    std::int32_t& isplit;
    Array1<std::int32_t> iband;
    Array1<std::int32_t> ibraw;
};

void count_colours(const Bands& bands, const Corners& c, const ForcedColour& f,
                   const BandOutput& out) {
    const float range = bands.vmax - bands.vmin;
    std::int32_t lowest = 10000, highest = 0;
    for (Index i = 1; i <= c.ncorn; ++i) {
        const float t = (c.value(i) - bands.vmin) / range;
        const std::int32_t b = assign_band(bands, t, i == 1 ? out.ibinit : 0);
        out.iband(i) = b;
        out.ibraw(i) = b;
        lowest = std::min(lowest, std::abs(b));
        highest = std::max(highest, std::abs(b));
    }
    out.ibinit = 0;
    resolve_limits(out.iband, c.ncorn);
    std::int32_t n = highest - lowest + 1;
    // Two bands splitting the element in halves. (A snapping of corner
    // bands towards the nearest limit belongs here too, but its condition,
    // a sum of magnitudes below -0.001, can never hold, so it changes
    // nothing and is left out.)
    const auto& b = out.iband;
    if (n == 2 && ((b(1) == b(2) && b(2) != b(3) && b(3) == b(4)) ||
                   (b(1) != b(2) && b(2) == b(3) && b(3) != b(4))))
        out.isplit = -1;
    n = apply_mode(f, c, out.iband, n);
    const bool four_alike = b(1) == b(2) && b(2) == b(3) && b(3) == b(4);
    out.ncolr = four_alike && c.ncorn != 8 ? 1 : n;
}

}  // namespace
}  // namespace shellfe

using namespace shellfe;

extern "C" void CHECKNUMCOLOURDOTNET(int32_t* NCOLR, const float* BNDLIM, float* VCORN,
                                     int32_t* IBINIT, const int32_t* NCORN, const float* VMIN,
                                     const float* VMAX, const int32_t* NBND, int32_t* IBAND,
                                     int32_t* ISPLIT, const int32_t* MODE, const int32_t* IBFIX,
                                     const int32_t* IREFA, const float* VLO, const float* VHI,
                                     const float* XYZC, const int32_t* IREFB, const int32_t* LDRF,
                                     const int32_t* LDXC, const float* TOL, const float* XYZR,
                                     int32_t* IBRAW) noexcept {
    count_colours({.limits = host_array(BNDLIM), .nbnd = *NBND, .vmin = *VMIN, .vmax = *VMAX},
                  {.value = host_array(VCORN), .ncorn = *NCORN, .xyz = host_rows(XYZC, {0, *LDXC})},
                  {.mode = *MODE,
                   .ibfix = *IBFIX,
                   .irefa = *IREFA,
                   .irefb = *IREFB,
                   .vlo = *VLO,
                   .vhi = *VHI,
                   .tol = *TOL,
                   .ref = host_rows(XYZR, {0, *LDRF})},
                  {.ncolr = *NCOLR,
                   .ibinit = *IBINIT,
                   .isplit = *ISPLIT,
                   .iband = host_array(IBAND),
                   .ibraw = host_array(IBRAW)});
}
