#include "cpu.hpp"

#include <cstdint>

#if defined(SHELLFE_X86_64_KERNELS)
#if defined(_MSC_VER)
#include <immintrin.h>
#include <intrin.h>
#else
#include <cpuid.h>
#endif
#endif

namespace shellfe {
namespace {

struct Features {
    bool avx2 = false;
    bool avx512 = false;
};

#if defined(SHELLFE_X86_64_KERNELS)

struct CpuidRegs {
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
};

CpuidRegs cpuid(std::uint32_t leaf, std::uint32_t subleaf) {
    CpuidRegs r;
#if defined(_MSC_VER)
    int out[4];
    __cpuidex(out, static_cast<int>(leaf), static_cast<int>(subleaf));
    r.eax = static_cast<std::uint32_t>(out[0]);
    r.ebx = static_cast<std::uint32_t>(out[1]);
    r.ecx = static_cast<std::uint32_t>(out[2]);
    r.edx = static_cast<std::uint32_t>(out[3]);
#else
    unsigned a, b, c, d;
    if (__get_cpuid_count(leaf, subleaf, &a, &b, &c, &d)) {
        r.eax = a;
        r.ebx = b;
        r.ecx = c;
        r.edx = d;
    }
#endif
    return r;
}

// Extended control register 0: which register states the OS saves.
std::uint64_t xcr0() {
#if defined(_MSC_VER)
    return _xgetbv(0);
#else
    std::uint32_t lo, hi;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (static_cast<std::uint64_t>(hi) << 32) | lo;
#endif
}

Features detect() {
    Features f;
    const std::uint32_t max_leaf = cpuid(0, 0).eax;
    if (max_leaf < 7) return f;
    const CpuidRegs l1 = cpuid(1, 0);
    const bool osxsave = (l1.ecx >> 27) & 1u;
    const bool avx = (l1.ecx >> 28) & 1u;
    if (!osxsave || !avx) return f;
    const std::uint64_t xcr = xcr0();
    const bool ymm_state = (xcr & 0x6u) == 0x6u;     // SSE and AVX state
    const bool zmm_state = (xcr & 0xE6u) == 0xE6u;   // plus opmask and upper ZMM state
    const CpuidRegs l7 = cpuid(7, 0);
    f.avx2 = ymm_state && ((l7.ebx >> 5) & 1u);
    f.avx512 = f.avx2 && zmm_state && ((l7.ebx >> 16) & 1u);
    return f;
}
#else
Features detect() { return {}; }
#endif

const Features& features() {
    // Initialised once, thread-safely, and never changed afterwards.
    static const Features f = detect();
    return f;
}

}  // namespace

bool isa_supported(Isa isa) noexcept {
    switch (isa) {
        case Isa::portable: return true;
#if defined(SHELLFE_X86_64_KERNELS)
        case Isa::sse2: return true;  // part of x86-64
#else
        case Isa::sse2: return false;
#endif
        case Isa::avx2: return features().avx2;
        case Isa::avx512: return features().avx512;
    }
    return false;
}

Isa best_isa() noexcept {
    if (isa_supported(Isa::avx512)) return Isa::avx512;
    if (isa_supported(Isa::avx2)) return Isa::avx2;
    if (isa_supported(Isa::sse2)) return Isa::sse2;
    return Isa::portable;
}

const char* isa_name(Isa isa) noexcept {
    switch (isa) {
        case Isa::portable: return "portable";
        case Isa::sse2: return "sse2";
        case Isa::avx2: return "avx2";
        case Isa::avx512: return "avx512";
    }
    return "?";
}

}  // namespace shellfe
