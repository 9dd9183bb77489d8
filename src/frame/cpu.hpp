// Which kernel the dense products may use on this CPU.
#pragma once

namespace shellfe {

// The kernels of the dense products: a portable one in plain C++ that every
// compiler and CPU runs, and the x86-64 vector instruction sets. All of them
// give the same bits.
enum class Isa { portable = 0, sse2 = 1, avx2 = 2, avx512 = 3 };

// The x86-64 kernels are compiled only where the compiler targets x86-64.
#if defined(__x86_64__) || defined(_M_X64)
#define SHELLFE_X86_64_KERNELS 1
#endif

// True when both the CPU and the operating system support `isa`
// (the OS must save the wider registers across context switches).
bool isa_supported(Isa isa) noexcept;

// The widest supported instruction set; detected once, then constant.
Isa best_isa() noexcept;

const char* isa_name(Isa isa) noexcept;

}  // namespace shellfe
