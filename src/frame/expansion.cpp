#include "frame/expansion.hpp"

namespace shellfe {

int expansion_sum(int elen, const double* e, int flen, const double* f, double* h) {
    int ei = 0, fi = 0, hlen = 0;
    double enow = e[0], fnow = f[0];
    // Takes the next component from e or f and moves on in that array.
    const auto next = [&]() {
        double q;
        if (fnow > enow && fnow > -enow) {
            q = enow;
            if (++ei < elen) enow = e[ei];
        } else {
            q = fnow;
            if (++fi < flen) fnow = f[fi];
        }
        return q;
    };
    // Adds a component to the running sum q, keeping the error term unless
    // it is zero (a NaN error term is kept).
    const auto keep = [&](double hh) {
        if (hh != 0.0) h[hlen++] = hh;
    };
    double q = next();
    double qnew, hh;
    if (ei < elen && fi < flen) {
        fast_two_sum(next(), q, qnew, hh);
        q = qnew;
        keep(hh);
        while (ei < elen && fi < flen) {
            two_sum(q, next(), qnew, hh);
            q = qnew;
            keep(hh);
        }
    }
    for (; ei < elen; ++ei) {
        two_sum(q, e[ei], qnew, hh);
        q = qnew;
        keep(hh);
    }
    for (; fi < flen; ++fi) {
        two_sum(q, f[fi], qnew, hh);
        q = qnew;
        keep(hh);
    }
    if (q != 0.0 || hlen == 0) h[hlen++] = q;
    return hlen;
}

}  // namespace shellfe
