// Host-side arrays as a Fortran-style host declares them: column-major,
// every dimension indexed from 0, the routine given the first upper bound.
// Filled with a sentinel so a test can prove what a routine did not write.
#pragma once

#include <cstddef>
#include <cstring>
#include <cstdint>
#include <vector>

template <class T>
struct HostMatrix {
    std::ptrdiff_t rows;  // first upper bound + 1 (the leading dimension)
    std::ptrdiff_t cols;  // second upper bound + 1
    std::vector<T> data;

    HostMatrix(std::ptrdiff_t upper1, std::ptrdiff_t upper2, T fill = T(0))
        : rows(upper1 + 1), cols(upper2 + 1),
          data(static_cast<std::size_t>(rows * cols), fill) {}

    T& operator()(std::ptrdiff_t a, std::ptrdiff_t b = 0) { return data[a + b * rows]; }
    const T& operator()(std::ptrdiff_t a, std::ptrdiff_t b = 0) const { return data[a + b * rows]; }
    T* ptr() { return data.data(); }
    const T* ptr() const { return data.data(); }
};

// Exact bit pattern comparison: distinguishes +0 from -0 and NaN payloads.
template <class T>
bool same_bits(T a, T b) {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}
template <class T>
bool same_bits(const HostMatrix<T>& a, const HostMatrix<T>& b) {
    return a.rows == b.rows && a.cols == b.cols &&
           std::memcmp(a.ptr(), b.ptr(), a.data.size() * sizeof(T)) == 0;
}
// Every entry bit for bit `fill`: nothing was written.
template <class T>
bool all_bits(const HostMatrix<T>& a, T fill) {
    for (const T& v : a.data)
        if (!same_bits(v, fill)) return false;
    return true;
}

// Deterministic pseudo-random values with many significant bits.
struct Lcg {
    std::uint64_t state;
    explicit Lcg(std::uint64_t seed) : state(seed) {}
    double next() {  // in [-1, 1)
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<double>(state >> 11) * 0x1.0p-52 - 1.0;
    }
};
