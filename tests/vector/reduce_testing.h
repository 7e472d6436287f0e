// Helpers of the reduction and threshold tests: arrays at any byte offset,
// inputs whose sums are exact or depend on the order of the additions, and
// bit comparison of doubles.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace orv::test::reduce {

// count elements of T starting `offset` bytes after a 64-byte boundary, read
// and written bytewise since the offset need not be a multiple of sizeof(T).
template <class T>
class Placed {
public:
    Placed(const std::vector<T>& values, size_t offset)
        : storage_(values.size() * sizeof(T) + 128), count_(values.size()) {
        auto base = reinterpret_cast<uintptr_t>(storage_.data());
        data_ = reinterpret_cast<T*>(((base + 63) & ~uintptr_t{63}) + offset);
        if (!values.empty()) std::memcpy(data_, values.data(), values.size() * sizeof(T));
    }
    T* data() const { return data_; }
    uintptr_t address() const { return reinterpret_cast<uintptr_t>(data_); }
    std::vector<T> values() const {
        std::vector<T> v(count_);
        if (count_) std::memcpy(v.data(), data_, count_ * sizeof(T));
        return v;
    }

private:
    std::vector<unsigned char> storage_;
    size_t count_;
    T* data_;
};

// Small integers: every sum and product of a few thousand of them is exact
// in any order, also in float.
template <class T>
std::vector<T> small_ints(int n, unsigned seed) {
    std::mt19937 g(seed);
    std::uniform_int_distribution<int> d(-8, 8);
    std::vector<T> v(n);
    for (auto& x : v) x = static_cast<T>(d(g));
    return v;
}

// Mixed signs and magnitudes from 2^-20 to 2^40 (2^-10 to 2^20 for float),
// so that different orders of addition give different results.
template <class T>
std::vector<T> mixed(int n, unsigned seed) {
    constexpr int kSpan = sizeof(T) == 8 ? 30 : 15;
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> m(1.0, 2.0);
    std::uniform_int_distribution<int> e(-kSpan + 10, kSpan + 10);
    std::vector<T> v(n);
    for (auto& x : v) x = static_cast<T>((g() & 1 ? -1.0 : 1.0) * std::ldexp(m(g), e(g)));
    return v;
}

inline uint64_t bits(double x) {
    uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    return b;
}
inline uint32_t bits(float x) {
    uint32_t b;
    std::memcpy(&b, &x, sizeof b);
    return b;
}

// Bitwise equality with a readable message.
template <class T>
::testing::AssertionResult same_bits(T got, T want) {
    if (bits(got) == bits(want)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << got << " want " << want << " (bits differ)";
}

// Byte offsets of the sampled alignment classes: every 8-byte phase of a
// 32-byte line, the 4-byte phases between them, and odd offsets.
inline const std::vector<size_t>& offsets() {
    static const std::vector<size_t> o = {0, 8, 16, 24, 4, 12, 20, 28, 1, 3, 13, 31};
    return o;
}

// Lengths 1..100 and around the step sizes and the kernel threshold.
inline const std::vector<int>& short_lengths() {
    static const std::vector<int> l = [] {
        std::vector<int> v;
        for (int n = 1; n <= 100; ++n) v.push_back(n);
        for (int n : {127, 128, 129, 255, 256, 257, 1000, 1001}) v.push_back(n);
        return v;
    }();
    return l;
}

// Runs fn(n, offset) for each length and offset, traced, stopping at the
// first fatal failure.
template <class Fn>
void each_case(Fn fn, const std::vector<int>& lengths = short_lengths(),
               const std::vector<size_t>& offs = offsets()) {
    for (int n : lengths)
        for (size_t off : offs) {
            SCOPED_TRACE(::testing::Message() << "len " << n << " offset " << off);
            fn(n, off);
            if (::testing::Test::HasFatalFailure()) return;
        }
}

}  // namespace orv::test::reduce
