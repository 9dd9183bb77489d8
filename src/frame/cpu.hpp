// Which vector instruction set the dense kernels may use on this CPU.
#pragma once

namespace shellfe {

enum class Isa { sse2 = 0, avx2 = 1, avx512 = 2 };

// True when both the CPU and the operating system support `isa`
// (the OS must save the wider registers across context switches).
bool isa_supported(Isa isa) noexcept;

// The widest supported instruction set; detected once, then constant.
Isa best_isa() noexcept;

const char* isa_name(Isa isa) noexcept;

}  // namespace shellfe
