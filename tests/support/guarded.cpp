#include "support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace orv::test {

namespace {
size_t page_size() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
}  // namespace

GuardedBytes::GuardedBytes(size_t bytes, Flush flush, size_t offset) : bytes_(bytes) {
    const size_t page = page_size();
    const size_t span = bytes + offset;
    const size_t body = (span + page - 1) / page * page + (span == 0 ? page : 0);
    mapBytes_ = body + 2 * page;
    void* m = mmap(nullptr, mapBytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) std::abort();
    map_ = static_cast<unsigned char*>(m);
    if (mprotect(map_ + page, body, PROT_READ | PROT_WRITE) != 0) std::abort();
    data_ = flush == Flush::Start ? map_ + page + offset : map_ + page + body - offset - bytes;
}

GuardedBytes::~GuardedBytes() { munmap(map_, mapBytes_); }

}  // namespace orv::test
