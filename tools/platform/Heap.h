#ifndef ZORV2_LBX_TOOLS_PLATFORM_HEAP_H
#define ZORV2_LBX_TOOLS_PLATFORM_HEAP_H

// How the tool's memory is set up for the life of one command. The tool
// decodes, encodes and frees images of up to megabytes, entry after entry,
// and on a virtual machine every first touch of a fresh 4 KiB page is a trap
// to the host (13 us on the development machine, where verifying the
// 509-entry archive took 800 of them on one worker, 1,400 on two: a fifth
// of its time). On the GNU C library these keep freed memory for the next
// entry and mark each thread's heap for huge pages, where the system hands
// them out on request; elsewhere, and under another allocator (sanitizers,
// valgrind), they do nothing.
namespace lbxtool {

// First thing in main, before any thread starts.
void prepareProcessHeap();

// As a worker thread starts, for its own heap; nothing unless the process's
// heap was prepared, so that programs that did not ask (the tests) keep
// the library's defaults.
void prepareThreadHeap();

} // namespace lbxtool

#endif
