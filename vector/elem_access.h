// Alignment steps for tier code whose arrays may start at any byte address.
// Internal linkage per tier.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "internal/orv_unaligned.h"

namespace orv::ORV_TIER_NS {
namespace {

// Elements of size `elem` to step over before p is a multiple of `align`
// bytes, at most n; 0 when p is not even a multiple of the element size, as
// no number of steps would align it then.
inline int steps_to_align(const void* p, size_t elem, size_t align, int n) {
    const uintptr_t a = address(p);
    if (a % elem != 0) return 0;
    const int k = static_cast<int>(((align - a % align) % align) / elem);
    return k < n ? k : n;
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
