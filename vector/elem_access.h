// Element access for tier code whose arrays may have any alignment, also
// below the element size: scalar loads and stores go through memcpy (one
// mov), and alignment tests read the address. Internal linkage per tier.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

template <class T>
inline T load_elem(const T* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
inline void store_elem(T* p, T v) {
    std::memcpy(p, &v, sizeof v);
}

inline uintptr_t address(const void* p) { return reinterpret_cast<uintptr_t>(p); }

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
