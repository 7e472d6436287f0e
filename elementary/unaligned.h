// Element access without an alignment assumption: callers may hand over
// arrays at any byte address, also ones not aligned to their element size.
#pragma once

#include "internal/orv_tier.h"

namespace orv::ORV_TIER_NS {
namespace {

template <class T>
inline T load(const T* p) {
    T v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
inline void store(T* p, T v) {
    __builtin_memcpy(p, &v, sizeof v);
}

}  // namespace
}  // namespace orv::ORV_TIER_NS
