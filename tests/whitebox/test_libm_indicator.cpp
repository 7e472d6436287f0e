// The scalar layer's processor indicator word over scripted processors: it
// is filled from CPUID at the first call of cos, sin or log, and the bodies
// it selects give the same results.
#include <gtest/gtest.h>

#include "fake_cpu.h"

extern "C" uint32_t orv_libm_indicator;
extern "C" double cos(double) noexcept;
extern "C" double sin(double) noexcept;
extern "C" double log(double) noexcept;

namespace orv::test {
namespace {

TEST(LibmIndicator, FilledOnFirstUseFromCpuid) {
    struct Row {
        const char* what;
        uint32_t ecx;
        uint32_t word;
    } rows[] = {
        {"SSE2 only", 0, 0x1},                                     // .A everywhere
        {"SSE3", ecx::SSE3, 0x801},                                 // .L
        {"SSE4.1", ecx::SSE3 | ecx::SSSE3 | ecx::SSE41, 0x2801},    // .N for cos and sin
        {"SSE4.1 without SSE3", ecx::SSE41, 0x1},                   // not a real processor: baseline
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.what);
        for (int fn = 0; fn < 3; ++fn) {
            FakeCpu c;
            c.tuned_vendor().leaf1(0x000506E3, 0, r.ecx, edx::BASE);
            use_cpu(c);
            orv_libm_indicator = 0;
            // The bodies this machine can run agree whatever the word says.
            volatile double two = 2.0;  // a real call, not a folded constant
            double v = fn == 0 ? cos(two) : fn == 1 ? sin(two) : log(two);
            double expected = fn == 0 ? -0.41614683654714241 : fn == 1 ? 0.90929742682568171 : 0.69314718055994531;
            EXPECT_EQ(v, expected);
            EXPECT_EQ(orv_libm_indicator, r.word);
        }
    }
}

}  // namespace
}  // namespace orv::test
