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

} // namespace bench

#endif
