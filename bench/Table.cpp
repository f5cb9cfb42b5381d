#include "Table.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace bench {

namespace {

std::string format(const char* pattern, double value, const char* unit)
{
    char text[32];
    std::snprintf(text, sizeof text, pattern, value, unit);
    return text;
}

// Three significant digits with a decimal prefix: 1.23 G, 456 k.
std::string scaled(double value, const char* unit)
{
    if (value <= 0)
        return "-";
    static const char* const prefixes[] = {"", "k", "M", "G", "T"};
    unsigned int step = 0;
    while (value >= 1000 && step + 1 < std::size(prefixes)) {
        value /= 1000;
        ++step;
    }
    return format("%.3g %s/s", value, (std::string(prefixes[step]) + unit).c_str());
}

std::string duration(double seconds)
{
    static const struct {
        double scale;
        const char* unit;
    } units[] = {{1e-9, "ns"}, {1e-6, "us"}, {1e-3, "ms"}, {1, "s"}};
    std::size_t unit = 0;
    while (unit + 1 < std::size(units) && seconds >= units[unit + 1].scale)
        ++unit;
    return format("%.3g %s", seconds / units[unit].scale, units[unit].unit);
}

std::string ratioText(double ratio, Measure measure)
{
    return format("%.3gx %s", ratio, measure == Measure::TIME ? "time" : "speed");
}

// "412 MB peak".
std::string peakText(double bytes)
{
    return format("%.0f %s", bytes / 1e6, "MB peak");
}

std::string targetText(const Row& row)
{
    if (row.limit <= 0)
        return "";
    switch (row.measure) {
    case Measure::TIME: return format("<= %.3gx %s", row.limit, "time");
    case Measure::SPEED: return format(">= %.3gx %s", row.limit, "speed");
    default: return "<= " + peakText(row.limit);
    }
}

double counter(const benchmark::BenchmarkReporter::Run& run, const char* name)
{
    const auto found = run.counters.find(name);
    return found == run.counters.end() ? 0 : found->second.value;
}

} // namespace

std::vector<Row>& rows()
{
    static std::vector<Row> table;
    return table;
}

void addRow(std::string name, std::string baseline, Measure measure, double limit)
{
    rows().push_back({std::move(name), std::move(baseline), measure, limit});
}

void addPairedRow(std::string name, std::string baseline, Measure measure, double limit)
{
    rows().push_back({std::move(name), std::move(baseline), measure, limit, true});
}

bool TableReporter::ReportContext(const Context& context)
{
    PrintBasicContext(&std::cerr, context);
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.error_occurred) {
            std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
            continue;
        }
        // With repetitions the median stands for the benchmark; a single run
        // stands for itself.
        const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
        const bool single = run.run_type == Run::RT_Iteration && run.repetitions <= 1;
        if (!median && !single)
            continue;
        const std::string name = run.run_name.function_name;
        const double seconds = run.GetAdjustedRealTime() / benchmark::GetTimeUnitMultiplier(run.time_unit);
        results[name] = {seconds,
                         counter(run, "bytes_per_second"),
                         counter(run, "items_per_second"),
                         counter(run, PEAK_COUNTER),
                         counter(run, ARCHIVE_COUNTER),
                         counter(run, PAIR_RATIO_COUNTER)};
        std::cerr << name << ": " << duration(seconds) << '\n';
    }
}

const TableReporter::Result* TableReporter::find(const std::string& name)
{
    const auto found = results.find(name);
    return found == results.end() ? nullptr : &found->second;
}

const TableReporter::Result* TableReporter::baselineOf(const Row& row, const Result* result)
{
    if (row.paired) // it measured its baseline itself
        return result != nullptr && result->pairRatio > 0 ? result : nullptr;
    return row.baseline.empty() ? nullptr : find(row.baseline);
}

double TableReporter::ratio(const Row& row, const Result& result, const Result& base)
{
    if (row.paired)
        return row.measure == Measure::TIME ? 1 / result.pairRatio : result.pairRatio;
    if (row.measure == Measure::TIME)
        return result.seconds / base.seconds;
    // Both sides of a pair count the same items; bytes serve where there are none.
    if (result.itemsPerSecond > 0 && base.itemsPerSecond > 0)
        return result.itemsPerSecond / base.itemsPerSecond;
    return result.bytesPerSecond / base.bytesPerSecond;
}

bool TableReporter::printTable(std::ostream& out)
{
    std::size_t nameWidth = std::string("operation").size();
    std::size_t baseWidth = std::string("baseline").size();
    for (const Row& row : rows()) {
        nameWidth = std::max(nameWidth, row.name.size());
        baseWidth = std::max(baseWidth, row.baseline.size());
    }
    auto line = [&](const std::string& name, const std::string& time, const std::string& bytes,
                    const std::string& items, const std::string& baseline, const std::string& ratio,
                    const std::string& target, const std::string& verdict) {
        char text[512];
        std::snprintf(text, sizeof text, "%-*s  %10s  %11s  %11s  %-*s  %-14s  %-15s  %s", static_cast<int>(nameWidth),
                      name.c_str(), time.c_str(), bytes.c_str(), items.c_str(), static_cast<int>(baseWidth),
                      baseline.c_str(), ratio.c_str(), target.c_str(), verdict.c_str());
        std::string trimmed(text);
        trimmed.erase(trimmed.find_last_not_of(' ') + 1);
        out << trimmed << '\n';
    };

    line("operation", "time", "bytes/s", "items/s", "baseline", "ratio", "target", "");
    unsigned int targets = 0;
    unsigned int met = 0;
    for (const Row& row : rows()) {
        const Result* result = find(row.name);
        const Result* base = baselineOf(row, result);
        const bool hasTarget = row.limit > 0;
        targets += hasTarget ? 1 : 0;
        if (!result) {
            line(row.name, "missing", "", "", row.baseline, "", targetText(row), hasTarget ? "NOT MET" : "");
            continue;
        }
        std::string ratio = row.baseline.empty() ? "" : "no baseline";
        std::string verdict = hasTarget ? "NOT MET" : "";
        if (row.measure == Measure::PEAK) {
            // The peak, and how many times the archive's size it is.
            ratio = format("%.3gx %s", result->peakBytes / result->archiveBytes, "archive");
            if (result->peakBytes <= row.limit) {
                ++met;
                verdict = "met";
            }
            line(row.name, duration(result->seconds), "", "", "(peak memory)", peakText(result->peakBytes) + ", " + ratio,
                 targetText(row), verdict);
            continue;
        }
        if (base) {
            const double value = this->ratio(row, *result, *base);
            ratio = ratioText(value, row.measure);
            const bool ok = row.measure == Measure::TIME ? value <= row.limit : value >= row.limit;
            if (hasTarget && ok) {
                ++met;
                verdict = "met";
            }
        }
        line(row.name, duration(result->seconds), scaled(result->bytesPerSecond, "B"),
             scaled(result->itemsPerSecond, ""), row.baseline, ratio, targetText(row), verdict);
    }
    out << "targets met: " << met << " of " << targets << '\n';
    return met == targets;
}

} // namespace bench
