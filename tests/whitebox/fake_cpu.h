// A scripted processor behind the library's CPUID layer: the whitebox tests
// link this instead of the real instructions, so every branch of detection,
// selection and the machine facts runs here.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "cpuid.h"

namespace orv::test {

struct FakeCpu {
    std::map<std::pair<uint32_t, uint32_t>, cpu::Regs> leaves;  // absent leaves read as zero
    uint64_t xcr0 = 0;
    uint64_t tsc = 0;

    // Leaf 0 with a highest leaf and the vendor words; leaf 0x80000000.
    FakeCpu& vendor(uint32_t maxLeaf, uint32_t ebx, uint32_t edx, uint32_t ecx);
    FakeCpu& tuned_vendor(uint32_t maxLeaf = 11);
    FakeCpu& other_vendor(uint32_t maxLeaf = 13);
    FakeCpu& unknown_vendor(uint32_t maxLeaf = 13);
    // Leaf 1 registers.
    FakeCpu& leaf1(uint32_t eax, uint32_t ebx, uint32_t ecx, uint32_t edx);
    FakeCpu& set(uint32_t leaf, uint32_t subleaf, cpu::Regs r);
};

// The processor that the CPUID layer reports from now on; the detection cache
// and the cache-size cache are reset so that the next query reads it.
void use_cpu(const FakeCpu& cpu);

// CPUID queries answered since the program started.
long cpuid_calls();

// Leaf-1 ECX and EDX bits.
namespace ecx {
constexpr uint32_t SSE3 = 1u << 0, SSSE3 = 1u << 9, SSE41 = 1u << 19, SSE42 = 1u << 20, MOVBE = 1u << 22,
                   OSXSAVE = 1u << 27, AVX = 1u << 28;
}
namespace edx {
constexpr uint32_t MMX = 1u << 23, SSE = 1u << 25, SSE2 = 1u << 26, HTT = 1u << 28;
constexpr uint32_t BASE = MMX | SSE | SSE2;
}

}  // namespace orv::test
