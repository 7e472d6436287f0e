// Element access for tier code whose arrays may start at any byte address,
// also one not aligned to the element size: scalar loads and stores go
// through memcpy (one mov). Internal linkage per tier.
#pragma once

#include <cstdint>

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

template <class T>
inline T load_elem(const T* p) {
    T v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
inline void store_elem(T* p, T v) {
    __builtin_memcpy(p, &v, sizeof v);
}

inline uintptr_t address(const void* p) { return reinterpret_cast<uintptr_t>(p); }

}  // namespace
}  // namespace orv::ORV_TIER_NS
