#include "Benchmarks.h"
#include "Table.h"

#include <benchmark/benchmark.h>

#include <exception>
#include <iostream>

// Runs every benchmark once, in this process, and prints one table of the
// results with each operation's ratio to its baseline. The exit status is 0
// only when every target is met.
int main(int argc, char** argv)
{
    try {
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 2;
        bench::TempDir dir;
        std::cerr << "making the workloads...\n";
        bench::registerArchive(dir);
        bench::registerGraphics();
        bench::registerKinds();

        bench::TableReporter reporter;
        benchmark::RunSpecifiedBenchmarks(&reporter);
        benchmark::Shutdown();
        return reporter.printTable(std::cout) ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        return 2;
    }
}
