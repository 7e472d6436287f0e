// Working format of the double-precision radix-4/8 core, for the steps that
// read or write its data between passes (the large transform keeps sub-arrays
// in it with interleaved 0).
//
// Data are held in planar groups of kLanes64f consecutive elements: the
// kLanes64f real parts, then the kLanes64f imaginary parts. Below e9 a group
// is two elements in 32 bytes (re0 re1 im0 im1); e9 runs every pass on
// 256-bit lanes and uses groups of four elements in 64 bytes
// (re0 re1 re2 re3 im0 im1 im2 im3). A group covers the same bytes as its
// elements in interleaved form, so converting a group in place touches
// nothing else. Twiddle tables of the L1 kind use the same group width.
//
// The split forms (cr) use the two arrays themselves as the planar view:
// element e at pRe[e], pIm[e], which is natural order, so that their result
// does not depend on `interleaved`.
#pragma once

#include <cstddef>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

inline constexpr int kLanes64f = kTier == Tier::e9 ? 4 : 2;

// Offsets, in doubles from the array's start, of the real and the imaginary
// part of element e in the working format.
constexpr std::ptrdiff_t wf64_re(std::ptrdiff_t e) { return 2 * e - e % kLanes64f; }
constexpr std::ptrdiff_t wf64_im(std::ptrdiff_t e) { return wf64_re(e) + kLanes64f; }

}  // namespace
}  // namespace orv::ORV_TIER_NS
