#include "Turns.h"

#include "Table.h"

#include <algorithm>
#include <chrono>

namespace bench {

double secondsOf(const std::function<void()>& step, std::size_t times)
{
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < times; ++i)
        step();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

namespace {

constexpr double BLOCK_SECONDS = 0.02;

// How many steps of `side` take about a block's time.
std::size_t blockOf(const Work& side)
{
    return std::max<std::size_t>(1, static_cast<std::size_t>(BLOCK_SECONDS / secondsOf(side.step, 1)));
}

} // namespace

void inTurns(benchmark::State& state, const Work& work, const Work& base)
{
    const std::size_t steps = blockOf(work), baseSteps = blockOf(base);
    double workSeconds = 0, baseSeconds = 0;
    std::size_t inBlock = 0, blocks = 0;
    for (auto _ : state) {
        const double seconds = secondsOf(work.step, 1);
        state.SetIterationTime(seconds);
        workSeconds += seconds;
        if (++inBlock == steps) {
            state.PauseTiming();
            baseSeconds += secondsOf(base.step, baseSteps);
            ++blocks;
            inBlock = 0;
            state.ResumeTiming();
        }
    }
    if (blocks == 0) { // fewer steps than a block: one of the baseline's after them
        baseSeconds = secondsOf(base.step, baseSteps);
        blocks = 1;
    }
    work.after();
    base.after();
    const double baseStep = baseSeconds / static_cast<double>(blocks * baseSteps);
    const double workStep = workSeconds / static_cast<double>(state.iterations());
    state.counters[PAIR_RATIO_COUNTER] = baseStep / workStep;
}

void inPairs(benchmark::State& state, const std::function<double()>& own, const std::function<double()>& base)
{
    static unsigned int pairs = 0;
    double ratios = 0;
    for (auto _ : state) {
        const bool baseFirst = ++pairs % 2 == 1;
        double baseSeconds = baseFirst ? base() : 0;
        const double seconds = own();
        if (!baseFirst)
            baseSeconds = base();
        state.SetIterationTime(seconds);
        ratios += baseSeconds / seconds;
    }
    state.counters[PAIR_RATIO_COUNTER] = benchmark::Counter(ratios, benchmark::Counter::kAvgIterations);
}

} // namespace bench
