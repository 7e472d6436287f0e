// The aligned allocator over the replaceable C allocator pointers.
#include <cstdint>
#include <cstdlib>

#include "orvcore.h"
#include "state.h"

extern "C" {
ORV_API void* (*i_malloc)(size_t) = std::malloc;
ORV_API void (*i_free)(void*) = std::free;
ORV_API void* (*i_calloc)(size_t, size_t) = std::calloc;
ORV_API void* (*i_realloc)(void*, size_t) = std::realloc;
ORV_API int i_version = 1;
ORV_API int i_min_version = 0;
}

// 40 extra bytes: 31 to reach a multiple of 32, 8 for the raw pointer stored
// just before the block, and 1 spare. Nothing else is stored.
ORV_FRAME_API void* orvMalloc(int length) {
    if (length < 1) return nullptr;
    auto raw = static_cast<unsigned char*>(i_malloc(static_cast<size_t>(static_cast<int64_t>(length)) + 40));
    if (!raw) return nullptr;
    auto p = reinterpret_cast<unsigned char*>((reinterpret_cast<uintptr_t>(raw) + 39) & ~uintptr_t{31});
    reinterpret_cast<void**>(p)[-1] = raw;
    return p;
}

ORV_FRAME_API void orvFree(void* p) {
    if (p) i_free(static_cast<void**>(p)[-1]);
}
