#include "frame/heap.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
constexpr int kDefaultMmapMax = 65536;  // the C library's own default

}  // namespace

bool ReserveHeap(std::size_t bytes) {
    // Freed memory up to twice the room stays with the process: the next catalogue reuses pages
    // that are already backed.
    mallopt(M_TRIM_THRESHOLD, static_cast<int>(2 * bytes));
    const auto before = reinterpret_cast<std::uintptr_t>(sbrk(0));
    // One allocation of the whole room, taken from the heap rather than from a mapping of its
    // own, makes the heap grow by that much at once; freeing it leaves the room at the top.
    mallopt(M_MMAP_MAX, 0);
    // Through a volatile pointer: the compiler may otherwise drop the pair as having no effect.
    void* volatile room = std::malloc(bytes);
    std::free(room);
    mallopt(M_MMAP_MAX, kDefaultMmapMax);
    const auto after = reinterpret_cast<std::uintptr_t>(sbrk(0));
    if (before == static_cast<std::uintptr_t>(-1) || after < before + bytes / 2)
        return false;
    // Only whole huge pages inside the heap can be advised.
    const std::uintptr_t start = (before + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t end = after & ~(kHugePage - 1);
    if (end <= start)
        return false;
    return madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE) == 0;
}
