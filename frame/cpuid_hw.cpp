// The CPUID layer on the real processor.
#include "cpuid.h"

namespace orv::cpu {

Regs cpuid(int leaf, int subleaf) {
    Regs r;
    uint32_t eax = static_cast<uint32_t>(leaf), ecx = static_cast<uint32_t>(subleaf);
    uint32_t ebx = 0, edx = 0;
    __asm__ volatile("cpuid" : "+a"(eax), "+b"(ebx), "+c"(ecx), "+d"(edx));
    r.eax = eax; r.ebx = ebx; r.ecx = ecx; r.edx = edx;
    return r;
}

uint64_t xgetbv(uint32_t index) {
    uint32_t lo, hi;
    __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(index));
    return (static_cast<uint64_t>(hi) << 32) | lo;
}

uint64_t rdtsc() {
    uint32_t lo, hi;
    __asm__ volatile("rdtsc" : "=a"(lo), "=d"(hi));
    return (static_cast<uint64_t>(hi) << 32) | lo;
}

}  // namespace orv::cpu
