// Points, distances and the segment intersection of the plane geometry.
#pragma once

#include <cmath>
#include <cstdint>

#include "frame/views.hpp"

namespace shellfe {

struct Point2 {
    double x;
    double y;
};

// A host point: a column of doubles from 1 (x at 1, y at 2).
inline Point2 host_point(const double* p) {
    const Array1<const double> a = host_array(p, 1);
    return {a(1), a(2)};
}

// Node n of a coordinate table declared (LDN+1, 3) from 1.
inline Point2 node_point(const Array2<const double>& xy, Index n) { return {xy(n, 1), xy(n, 2)}; }

inline Point2 operator-(Point2 b, Point2 a) { return {b.x - a.x, b.y - a.y}; }

// Length of a vector, without scaling against overflow.
inline double length(Point2 d) { return std::sqrt(d.x * d.x + d.y * d.y); }

inline double distance(Point2 a, Point2 b) { return length(b - a); }

// Result codes of the segment intersection; hosts test these values.
enum SegmentCode : std::int32_t {
    kFirstTooShort = 0,
    kSecondTooShort = -1,
    kParallel = 10,
    kCrossing = 11,
};

// Intersection of the lines through p1-p2 and q1-q2. On kCrossing, s and t
// are the parameters of the crossing along p1->p2 and q1->q2; otherwise
// they are not written. The parallelism test compares the squared
// tolerance with the raw cross product of the two direction vectors,
// deliberately unnormalised, so it scales with both segment lengths.
inline std::int32_t intersect_segments(Point2 p1, Point2 p2, Point2 q1, Point2 q2, double lentol,
                                       double partol, double& s, double& t) {
    const Point2 d1 = p2 - p1;
    if (lentol > length(d1)) return kFirstTooShort;
    const Point2 d2 = q2 - q1;
    if (lentol > length(d2)) return kSecondTooShort;
    const double den = d1.x * d2.y - d1.y * d2.x;
    if (partol * partol > std::fabs(den)) return kParallel;
    const Point2 w = p1 - q1;
    s = (d2.x * w.y - d2.y * w.x) / den;
    t = (d1.x * w.y - d1.y * w.x) / den;
    return kCrossing;
}

}  // namespace shellfe
