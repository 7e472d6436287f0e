// Working format of the single-precision radix-4/8 core, for the steps that
// read or write its data between passes (the large transform keeps sub-arrays
// in it with interleaved 0 and runs its outer levels on it).
//
// Data are held in planar groups of kLanes32f consecutive elements: the
// kLanes32f real parts, then the kLanes32f imaginary parts.
//   m7, n8, y8: groups of four elements in 32 bytes
//               (re0 re1 re2 re3 im0 im1 im2 im3);
//   e9:         groups of eight elements in 64 bytes
//               (re0 ... re7 im0 ... im7), the 256-bit passes' natural shape.
// A group covers the same bytes as its elements in interleaved form, so a
// group converts in place and touches nothing else. The e9 pass with four
// columns (the second pass) works on the half groups with 128-bit lanes.
//
// Twiddle tables of the L1 kind have the same planar shape per group of
// columns: four lanes below e9; on e9 eight lanes in passes of at least eight
// columns and four in the pass of four columns.
//
// The split forms (cr) use the two arrays themselves as the planar view:
// element e at pRe[e], pIm[e], which is natural order, so that their result
// does not depend on `interleaved`.
#pragma once

#include <cstddef>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

inline constexpr int kLanes32f = kTier == Tier::e9 ? 8 : 4;

// Offsets, in floats from the array's start, of the real and the imaginary
// part of element e in the working format.
constexpr std::ptrdiff_t wf32_re(std::ptrdiff_t e) { return 2 * e - e % kLanes32f; }
constexpr std::ptrdiff_t wf32_im(std::ptrdiff_t e) { return wf32_re(e) + kLanes32f; }

}  // namespace
}  // namespace orv::ORV_TIER_NS
