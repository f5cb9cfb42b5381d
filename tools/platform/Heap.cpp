#include "tools/platform/Heap.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#if defined(__GLIBC__) && defined(__linux__)
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#define LBX_GLIBC_HEAP 1
// Linux 6.1; older systems refuse it, and the pages stay as they are.
#ifndef MADV_COLLAPSE
#define MADV_COLLAPSE 25
#endif
#endif

namespace lbxtool {

#ifdef LBX_GLIBC_HEAP

namespace {

// Blocks up to this size come from the heap and are reused; by default the
// library maps every block above 128 KiB fresh and unmaps it when freed.
constexpr int LARGEST_REUSED_BLOCK = 64 * 1024 * 1024;
// Free memory the heap keeps instead of giving it back.
constexpr int MOST_KEPT_FREE = 512 * 1024 * 1024;
// What a heap grows by at once. A huge page is given only to an aligned
// 2 MiB that its mapping covers whole, and the library grows a heap by what
// each block needs; grown by a stretch and freed, the heap keeps it (see
// MOST_KEPT_FREE) and later blocks are cut from it.
constexpr std::size_t STRETCH = 32 * 1024 * 1024;
// The library's heaps for threads other than the first are reserved at this
// size and alignment, so that a block's heap starts at its address rounded
// down.
constexpr std::uintptr_t THREAD_HEAP = 64 * 1024 * 1024;
constexpr std::uintptr_t PAGE = 4096;
constexpr std::uintptr_t HUGE_PAGE = 2 * 1024 * 1024;

std::atomic<bool> prepared{false};

std::uintptr_t programBreak()
{
    return reinterpret_cast<std::uintptr_t>(sbrk(0));
}

void markForHugePages(std::uintptr_t from, std::uintptr_t to)
{
    madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
}

} // namespace

void prepareProcessHeap()
{
    // Another allocator in front (a sanitizer's) refuses the library's
    // settings, and has no use for a stretch either.
    if (mallopt(M_MMAP_THRESHOLD, LARGEST_REUSED_BLOCK) != 1)
        return;
    mallopt(M_TRIM_THRESHOLD, MOST_KEPT_FREE);
    // The first thread's heap ends at the program break, and grows it.
    const std::uintptr_t before = programBreak();
    void* volatile stretch = std::malloc(STRETCH);
    const std::uintptr_t after = programBreak();
    const std::uintptr_t from = (before + PAGE - 1) & ~(PAGE - 1);
    // One that accepts them (valgrind's) leaves the break alone.
    if (stretch != nullptr && after >= from + STRETCH) {
        markForHugePages(from, after);
        prepared = true;
    }
    std::free(stretch);
}

void prepareThreadHeap()
{
    if (!prepared)
        return;
    void* volatile stretch = std::malloc(STRETCH);
    const auto at = reinterpret_cast<std::uintptr_t>(stretch);
    // A thread that shares the first heap has it marked already.
    if (stretch != nullptr && at >= programBreak()) {
        const std::uintptr_t heap = at & ~(THREAD_HEAP - 1);
        markForHugePages(heap, heap + THREAD_HEAP);
        // Its first 2 MiB, where the library's own records already stand,
        // keeps 4 KiB pages unless made one huge page now; most small
        // blocks come from there.
        madvise(reinterpret_cast<void*>(heap), HUGE_PAGE, MADV_COLLAPSE);
    }
    std::free(stretch);
}

#else

void prepareProcessHeap() {}
void prepareThreadHeap() {}

#endif

} // namespace lbxtool
