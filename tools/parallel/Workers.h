#ifndef ZORV2_LBX_TOOLS_PARALLEL_WORKERS_H
#define ZORV2_LBX_TOOLS_PARALLEL_WORKERS_H

#include "tools/platform/Report.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <vector>

// Spreading a command's work over the cores. Work is split into tasks that
// only read and compute, each keeping what it makes in a place of its own,
// and steps that act on the world (write files, print), which run on the
// calling thread in the order one thread would run them. Whatever the number
// of workers, the output is the same.
namespace lbxtool {

// The number of workers `jobs` asks for: itself, or with 0 one a core.
unsigned int workerCount(unsigned int jobs);

// How a compute ended: what it reported and warned, kept for its turn, and
// the exception that ended it, if one did.
struct Outcome {
    Transcript said;
    std::exception_ptr failure;
};

// How many tasks each worker computes at most ahead of the one delivered
// next, unless a run asks for more: what they make waits in memory for its
// turn, and when delivering is the slower part (export writes a file at a
// time) they would otherwise hold a whole set of archives' output, and take
// the core that delivering needs.
constexpr std::size_t LEAD_PER_WORKER = 16;

// The same as
//
//     for (i = 0; i < count; ++i) { compute(i); deliver(i, how compute(i) ended); }
//
// on the calling thread, but with compute running on up to `jobs` workers
// (0: one a core), taken in `order` (a permutation of 0 .. count - 1; empty:
// in index order); a compute may wait for one that comes before it in both
// orders. The workers keep no more than `leadPerWorker` tasks each ahead of
// the deliveries, so `order` may take a task no more than one place later
// than its index. Deliver says what the compute said, unless it drops it.
// An exception from deliver ends the run: no later deliver is called, and it
// comes out here once the workers have stopped. The calling thread is one
// of the workers; with one, everything runs on it.
void inOrder(unsigned int jobs, std::size_t count, const std::function<void(std::size_t)>& compute,
             const std::function<void(std::size_t, const Outcome&)>& deliver,
             const std::vector<std::size_t>& order = {}, std::size_t leadPerWorker = LEAD_PER_WORKER);

} // namespace lbxtool

#endif
