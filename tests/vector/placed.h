// Arrays for the vector tests: placed at a chosen address mod 32 against an
// inaccessible page, at their start or (as close as that alignment allows)
// at their end, with a canary in the few bytes between the end and the page.
// Together the two placements catch any access before or after the array.
#pragma once

#include <cstring>
#include <random>
#include <vector>

#include "support/guarded.h"

namespace orv::test {

class Placed {
public:
    static constexpr unsigned char kCanary = 0x5A;

    Placed(size_t bytes, Flush flush, unsigned align)
        : slack_(flush == Flush::End ? (32 - (align + bytes) % 32) % 32 : 0),
          mem_(bytes + slack_, flush, flush == Flush::Start ? align % 32 : 0),
          bytes_(bytes) {
        std::memset(mem_.data() + bytes, kCanary, slack_);
    }
    unsigned char* bytes() const { return mem_.data(); }
    template <class T>
    T* as() const {
        return reinterpret_cast<T*>(mem_.data());
    }
    bool canary_intact() const {
        for (size_t i = 0; i < slack_; ++i)
            if (mem_.data()[bytes_ + i] != kCanary) return false;
        return true;
    }

private:
    size_t slack_;
    GuardedBytes mem_;
    size_t bytes_;
};

// Lengths 1 to 100: every short path and tail.
inline std::vector<long> short_lengths() {
    std::vector<long> v;
    for (long n = 1; n <= 100; ++n) v.push_back(n);
    return v;
}

inline Flush flush_of(unsigned k) { return k % 2 ? Flush::End : Flush::Start; }

}  // namespace orv::test
