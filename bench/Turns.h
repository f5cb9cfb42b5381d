#ifndef ZORV2_LBX_BENCH_TURNS_H
#define ZORV2_LBX_BENCH_TURNS_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>

namespace bench {

// How long `step` took to run `times` times, in seconds.
double secondsOf(const std::function<void()>& step, std::size_t times = 1);

// One iteration's work of a benchmark, set up to run again and again, and
// what to do once it is done.
struct Work {
    std::function<void()> step;
    std::function<void()> after = [] {};
};

// Times `work` and `base` in turns, a block of each of about 20 ms: an
// iteration is a step of the work, and after each block of them comes a
// block of the baseline's steps. Reports the baseline's time a step over
// the work's in this repetition as the pair ratio (see addPairedRow).
// Timed apart, in a run of random order, a stretch of the machine running
// slow (this virtual machine's processors have taken 30% and 2.5 times as
// long for minutes) fell on the repetitions of one side and not the other;
// taken a step each, the two sides put each other's buffers out of the
// cache (raw frames fell to 0.66x-0.77x of a palette loop run so), where
// within a block each runs warm, as it does alone.
void inTurns(benchmark::State& state, const Work& work, const Work& base);

// Times `own` and `base` in pairs, where one run of either takes too long
// for blocks of them: each iteration runs both, one right after the other
// (which first alternates), and reports the time of `own`, and the
// baseline's time over its own as the pair ratio. Each returns the seconds
// its run took, timed by itself, so that what it sets up stays out.
void inPairs(benchmark::State& state, const std::function<double()>& own, const std::function<double()>& base);

} // namespace bench

#endif
