// Arrays placed flush against inaccessible pages, so that a read or write
// outside the caller's array ends the test at the faulting access.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orv::test {

enum class Flush { Start, End };

// A region of `bytes` bytes whose first byte lies `offset` bytes after an
// inaccessible page (Flush::Start), or whose last byte lies `offset` bytes
// before one (Flush::End). The contents start zeroed.
class GuardedBytes {
public:
    GuardedBytes(size_t bytes, Flush flush, size_t offset = 0);
    ~GuardedBytes();
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    unsigned char* data() const { return data_; }
    size_t size() const { return bytes_; }

private:
    unsigned char* map_ = nullptr;
    size_t mapBytes_ = 0;
    unsigned char* data_ = nullptr;
    size_t bytes_ = 0;
};

// Typed view: `count` elements of T at a byte offset that need not be a
// multiple of sizeof(T).
template <class T>
class Guarded {
public:
    Guarded(size_t count, Flush flush, size_t byteOffset = 0)
        : bytes_(count * sizeof(T), flush, byteOffset), count_(count) {}
    T* data() const { return reinterpret_cast<T*>(bytes_.data()); }
    size_t size() const { return count_; }
    T& operator[](size_t i) const { return data()[i]; }

private:
    GuardedBytes bytes_;
    size_t count_;
};

}  // namespace orv::test
