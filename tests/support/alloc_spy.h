// The library's allocator hooks for tests: while an AllocSpy is in scope, it
// counts allocations and frees, records the last size asked for and, with
// failFrom > 0, fails every allocation from the failFrom-th on.
#pragma once

#include <cstddef>

#include "orvcore.h"

namespace orv::test {

struct AllocSpy {
    static inline int mallocs = 0, frees = 0, failFrom = 0;
    static inline size_t lastBytes = 0;
    static inline void* (*realMalloc)(size_t) = nullptr;
    static inline void (*realFree)(void*) = nullptr;

    explicit AllocSpy(int failFromCall = 0) {
        mallocs = frees = 0, lastBytes = 0, failFrom = failFromCall;
        realMalloc = i_malloc, realFree = i_free;
        i_malloc = [](size_t n) -> void* {
            lastBytes = n;
            return ++mallocs >= failFrom && failFrom > 0 ? nullptr : realMalloc(n);
        };
        i_free = [](void* p) { ++frees, realFree(p); };
    }
    ~AllocSpy() { i_malloc = realMalloc, i_free = realFree; }
    AllocSpy(const AllocSpy&) = delete;
    AllocSpy& operator=(const AllocSpy&) = delete;
};

}  // namespace orv::test
