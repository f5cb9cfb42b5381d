#ifndef ZORV2_LBX_BENCH_TABLE_H
#define ZORV2_LBX_BENCH_TABLE_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

// How a row is held against its baseline: by the time one iteration takes,
// or by the throughput (items, else bytes, per second) over the same work;
// or, for a run of the tool, by its peak of resident memory against the
// size of the archive it worked on (no baseline; the limit in bytes).
enum class Measure { TIME, SPEED, PEAK };

// The counters of a tool's run that a PEAK row reads.
constexpr const char* PEAK_COUNTER = "peak_bytes";
constexpr const char* ARCHIVE_COUNTER = "archive_bytes";

// What a benchmark that times its work in pairs with a baseline reports: the
// baseline's time over its own (see addPairedRow).
constexpr const char* PAIR_RATIO_COUNTER = "pair_ratio";

// One line of the table. `baseline` names another benchmark of the same run;
// `limit` is the target on the ratio (an upper bound for TIME, a lower bound
// for SPEED), 0 when the row only shows its ratio.
struct Row {
    std::string name;
    std::string baseline;
    Measure measure;
    double limit;
    bool paired = false; // its ratio is the benchmark's own, from pairs
};

// The rows in table order; each benchmark file appends its own.
std::vector<Row>& rows();
void addRow(std::string name, std::string baseline, Measure measure, double limit = 0);
// A row of a benchmark that runs its baseline's work itself, in turns with
// its own, so that a slow stretch of the machine falls on both sides alike:
// the ratio is the median over the repetitions of what each measured.
void addPairedRow(std::string name, std::string baseline, Measure measure, double limit);

// Keeps the measurements of the run (the median when there are repetitions)
// and reports progress on stderr, so that stdout carries only the table.
class TableReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& context) override;
    void ReportRuns(const std::vector<Run>& runs) override;

    // Prints the table and the closing "targets met" line; true when every
    // target was met.
    bool printTable(std::ostream& out);

private:
    struct Result {
        double seconds;
        double bytesPerSecond;
        double itemsPerSecond;
        double peakBytes;
        double archiveBytes;
        double pairRatio; // the baseline's time over its own, when it ran in pairs
    };

    const Result* find(const std::string& name);
    const Result* baselineOf(const Row& row, const Result* result);
    double ratio(const Row& row, const Result& result, const Result& base);

    std::map<std::string, Result> results;
};

} // namespace bench

#endif
