#include "LargePages.h"

#include <cstdint>
#include <sys/mman.h>

void LargePages::prefer(void* data, qsizetype size) {
    constexpr std::uintptr_t largePage = 2 * 1024 * 1024;
    if (!data || size < qsizetype(largePage))
        return;
    const auto start = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t first = (start + largePage - 1) & ~(largePage - 1);
    const std::uintptr_t end = (start + std::uintptr_t(size)) & ~(largePage - 1);
    if (end > first)
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}
