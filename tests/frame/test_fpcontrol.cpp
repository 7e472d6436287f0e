// Floating-point control: MXCSR and x87 helpers, each test restoring the
// caller's state, and the two classification helpers.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

#include "orvcore.h"

namespace {

// Saves and restores both control words around a test.
class FpControl : public ::testing::Test {
protected:
    void SetUp() override {
        mxcsr_ = ps_get_ssx();
        cw_ = ps_get_cw_fpu();
    }
    void TearDown() override {
        orv_set_cw_ssx(mxcsr_);
        orv_set_cw_fpu(cw_);
        orv_clear87();
    }
    Orv64u mxcsr_ = 0, cw_ = 0;
};

TEST_F(FpControl, RoundingOfSseIsSetAndRestored) {
    orv_set_cw_ssx(0x1F80);
    EXPECT_EQ(orv_set_rc_ssx(0), 0x1F80u);  // already round-to-nearest: nothing written
    EXPECT_EQ(ps_get_ssx(), 0x1F80u);
    Orv64u old = orv_set_rc_ssx(0x6000);
    EXPECT_EQ(old, 0x1F80u);
    EXPECT_EQ(ps_get_ssx() & 0x6000u, 0x6000u);
    volatile double a = 1.0, b = 10.0;
    EXPECT_LT(a / b, 0.1);  // toward zero; 0.1 rounds up to nearest
    orv_set_cw_ssx(old);
    EXPECT_EQ(ps_get_ssx(), 0x1F80u);
}

TEST_F(FpControl, SetSsxMergesUnderMaskAndClearRestoresDefault) {
    orv_set_cw_ssx(0x1F80);
    EXPECT_EQ(ps_set_ssx(0x8040 | 0x2000, 0x8040), 0x1F80u);  // only FTZ and DAZ move
    EXPECT_EQ(ps_get_ssx(), 0x1F80u | 0x8040u);
    volatile double x = 1.0, y = 0.0;
    volatile double z = x / y;  // raises the zero-divide flag
    (void)z;
    EXPECT_NE(ps_get_ssx() & 0x4u, 0u);
    EXPECT_EQ(orv_clear_ssx() & 0x8044u, 0x8044u);
    EXPECT_EQ(ps_get_ssx(), 0x1F80u);
}

TEST_F(FpControl, DenormalsAreZeroIsSupported) {
    // Every processor with SSE2 after the first generation supports it.
    EXPECT_EQ(orv_tst_daz_ssx(), 1);
}

TEST_F(FpControl, Control87RoundTripAndItsAsymmetries) {
    // Rounding 0 and 53-bit precision: an empty mask leaves the word as it was.
    orv_set_cw_fpu(0x027F);
    Orv64u p = orv_control87(0, 0);
    EXPECT_EQ(ps_get_cw_fpu() & 0x1F3F, 0x023Fu);
    EXPECT_NE(p & 0x10000u, 0u);
    EXPECT_EQ(p & 0x1Fu, 0x1Fu);  // all exception masks
    EXPECT_NE(p & 0x80000u, 0u);
    // A rounding control read at 0x30 is not written back from there.
    orv_set_cw_fpu(0x0E7F);  // round toward zero, 53-bit
    p = orv_control87(0, 0);
    EXPECT_EQ(p & 0x30u, 0x30u);
    EXPECT_EQ(ps_get_cw_fpu() & 0xC00u, 0u);
    // 24-bit precision reads as the 64-bit pattern and is written back so.
    orv_set_cw_fpu(0x007F);
    p = orv_control87(0, 0);
    EXPECT_EQ(p & 0x30000u, 0u);
    EXPECT_EQ(ps_get_cw_fpu() & 0x300u, 0x300u);
    // Writing: portable rounding 0x300 lands in bits 10 and 11, precision 24.
    p = orv_control87(0x300 | 0x20000, 0x300 | 0x30000);
    EXPECT_EQ(ps_get_cw_fpu() & 0xF00u, 0xC00u);
    EXPECT_EQ(p & 0x30300u, 0x20300u);
}

TEST_F(FpControl, X87StatusAndMergedWrites) {
    orv_set_cw_fpu(0x037F);
    EXPECT_EQ(orv_set_rcpc_fpu(0x200, 0x300), 0x037Fu);
    EXPECT_EQ(ps_get_cw_fpu() & 0x300u, 0x200u);
    EXPECT_EQ(orv_set_rcpc_fpu(0x200, 0x300) & 0x300u, 0x200u);  // no change needed
    EXPECT_EQ(ps_set_cw_fpu(0xC00, 0xC00) & 0xC00u, 0u);
    EXPECT_EQ(ps_get_cw_fpu() & 0xC00u, 0xC00u);
    orv_clear87();
    // An x87 division by zero sets the zero-divide flag (portable 0x8).
    volatile long double one = 1.0L, zero = 0.0L;
    volatile long double inf = one / zero;
    (void)inf;
    EXPECT_NE(orv_status87() & 0x8u, 0u);
    EXPECT_NE(ps_get_sw_fpu() & 0x4u, 0u);
    EXPECT_NE(orv_clear87() & 0x8u, 0u);
    EXPECT_EQ(orv_status87(), 0u);
    EXPECT_EQ(ps_clear_fpu() & 0x3Fu, 0u);
}

TEST(FpClassify, NanAndFinite) {
    const double inf = std::numeric_limits<double>::infinity();
    const double qnan = std::numeric_limits<double>::quiet_NaN();
    const double snan = std::numeric_limits<double>::signaling_NaN();
    const double denorm = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(orv_isnan(inf), 0);
    EXPECT_EQ(orv_isnan(-inf), 0);
    EXPECT_EQ(orv_isnan(qnan), 1);
    EXPECT_EQ(orv_isnan(-qnan), 1);
    EXPECT_EQ(orv_isnan(snan), 1);
    EXPECT_EQ(orv_isnan(DBL_MAX), 0);
    EXPECT_EQ(orv_finite(qnan), 0);
    EXPECT_EQ(orv_finite(inf), 0);
    EXPECT_EQ(orv_finite(denorm), 1);
    EXPECT_EQ(orv_finite(-0.0), 1);
    EXPECT_EQ(orv_finite(DBL_MAX), 1);
}

}  // namespace
