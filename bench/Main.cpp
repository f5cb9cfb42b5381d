#include "Benchmarks.h"
#include "Table.h"

#include <benchmark/benchmark.h>

#include <exception>
#include <iostream>
#include <string>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

// Memory that one iteration frees stays with the process for the next, so
// that every measure is of the work and not of how the allocator happened to
// be tuned by the benchmarks before it: by default the C library hands large
// blocks back to the system and takes them again, a page fault per 4 KiB.
void keepFreedMemory()
{
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1024 * 1024 * 1024);
#endif
}

} // namespace

// Runs every benchmark once, in this process, and prints one table of the
// results with each operation's ratio to its baseline. The exit status is 0
// only when every target is met.
int main(int argc, char** argv)
{
    if (argc > 3 && std::string(argv[1]) == bench::PEAK_OPTION)
        return bench::runMeasuringPeak(argv + 2);
    try {
        keepFreedMemory();
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 2;
        bench::TempDir dir;
        std::cerr << "making the workloads...\n";
        auto archives = std::make_shared<bench::Archives>(dir);
        bench::registerArchive(archives);
        bench::registerGraphics();
        bench::registerKinds();
        bench::registerTool(archives);

        bench::TableReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter);
        benchmark::Shutdown();
        return reporter.printTable(std::cout) ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        return 2;
    }
}
