// The frame's process-wide words: plain data, written at load or on first
// use without synchronisation. Nothing else in the library keeps state.
#pragma once

#include <cstdint>

extern "C" {
// Features enabled for the selected tier; 7 until selection runs.
extern uint64_t ownFeaturesMask;
// Cached detection result and its valid flag (detection runs once).
extern uint64_t ownFeatures;
extern int32_t ownFeaturesAreValid;
// Permission for the AVX tier; only orvEnableCpu writes it, and only 1.
extern int32_t is_avx_cpu_enabled;
// Cached cache-size answer: status 1 means not asked yet.
extern int32_t ownStatus;
extern int32_t cacheSize;
}

#define ORV_FRAME_API extern "C" __attribute__((visibility("default")))
