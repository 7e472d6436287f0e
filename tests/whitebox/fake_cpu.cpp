#include "fake_cpu.h"

#include "state.h"

namespace orv::test {
namespace {
FakeCpu g_cpu;
long g_calls = 0;
}  // namespace

long cpuid_calls() { return g_calls; }

FakeCpu& FakeCpu::vendor(uint32_t maxLeaf, uint32_t ebx, uint32_t edx, uint32_t ecx) {
    leaves[{0, 0}] = {maxLeaf, ebx, ecx, edx};
    return *this;
}
FakeCpu& FakeCpu::tuned_vendor(uint32_t maxLeaf) { return vendor(maxLeaf, 0x756e6547u, 0x49656e69u, 0x6c65746eu); }
FakeCpu& FakeCpu::other_vendor(uint32_t maxLeaf) { return vendor(maxLeaf, 0x68747541u, 0x69746e65u, 0x444d4163u); }
FakeCpu& FakeCpu::unknown_vendor(uint32_t maxLeaf) { return vendor(maxLeaf, 0x61626364u, 0x65666768u, 0x696a6b6cu); }
FakeCpu& FakeCpu::leaf1(uint32_t eax, uint32_t ebx, uint32_t ecx, uint32_t edx) {
    leaves[{1, 0}] = {eax, ebx, ecx, edx};
    return *this;
}
FakeCpu& FakeCpu::set(uint32_t leaf, uint32_t subleaf, cpu::Regs r) {
    leaves[{leaf, subleaf}] = r;
    return *this;
}

void use_cpu(const FakeCpu& cpu) {
    g_cpu = cpu;
    ownFeaturesAreValid = 0;
    ownFeatures = 0;
    ownStatus = 1;
    cacheSize = 0;
}

}  // namespace orv::test

// The CPUID layer of this test program.
namespace orv::cpu {

Regs cpuid(int leaf, int subleaf) {
    ++test::g_calls;
    auto key = std::make_pair(static_cast<uint32_t>(leaf), static_cast<uint32_t>(subleaf));
    auto it = test::g_cpu.leaves.find(key);
    if (it == test::g_cpu.leaves.end()) {
        // Leaves without subleaves answer any subleaf.
        it = test::g_cpu.leaves.find({static_cast<uint32_t>(leaf), 0u});
        if (it == test::g_cpu.leaves.end() || leaf == 4 || leaf == 11) return Regs{0, 0, 0, 0};
    }
    return it->second;
}

uint64_t xgetbv(uint32_t) { return test::g_cpu.xcr0; }

uint64_t rdtsc() { return test::g_cpu.tsc += 1000; }

}  // namespace orv::cpu
