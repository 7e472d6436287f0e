// The frame's only contact with CPUID, XGETBV and the time-stamp counter.
// cpuid_hw.cpp implements it with the instructions; the tests link their own
// implementation instead, so that every branch of detection and selection
// runs on any machine. There is no run-time switch and no state here.
#pragma once

#include <cstdint>

namespace orv::cpu {

struct Regs {
    uint32_t eax, ebx, ecx, edx;
};

// CPUID with EAX = leaf and ECX = subleaf (both sign-extended from 32 bits),
// EBX and EDX cleared first.
Regs cpuid(int leaf, int subleaf);
// XGETBV with ECX = index: the extended control register, low word first.
uint64_t xgetbv(uint32_t index);
// RDTSC, the two halves joined.
uint64_t rdtsc();

}  // namespace orv::cpu
