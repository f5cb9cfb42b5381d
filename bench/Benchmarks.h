#ifndef ZORV2_LBX_BENCH_BENCHMARKS_H
#define ZORV2_LBX_BENCH_BENCHMARKS_H

#include "Workloads.h"

namespace bench {

// Each registers its benchmarks with Google Benchmark and its rows with the
// table, in table order.
void registerArchive(const TempDir& dir);
void registerKinds();
void registerGraphics();

} // namespace bench

#endif
