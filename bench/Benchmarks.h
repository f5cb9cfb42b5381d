#ifndef ZORV2_LBX_BENCH_BENCHMARKS_H
#define ZORV2_LBX_BENCH_BENCHMARKS_H

#include "Workloads.h"

#include <memory>

namespace bench {

// Each registers its benchmarks with Google Benchmark and its rows with the
// table, in table order.
void registerArchive(std::shared_ptr<Archives> archives);
void registerTool(std::shared_ptr<Archives> archives);
void registerKinds();
void registerGraphics();

// `zorv2-lbx-bench --peak FILE PROGRAM ARGS...` runs PROGRAM from a
// process of this program's size at its start, and writes to FILE the peak
// resident memory of PROGRAM's process in KiB, the seconds from its start to
// its end, and the processor seconds it used; its exit status is PROGRAM's.
constexpr const char* PEAK_OPTION = "--peak";
int runMeasuringPeak(char** argv);

} // namespace bench

#endif
