#include "Benchmarks.h"
#include "Table.h"
#include "Turns.h"

#include "archive/File.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <vector>

namespace bench {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

namespace {

// Three archive sizes show how opening grows; the full one has every entry
// an archive can hold.
constexpr unsigned int ARCHIVE_SIZES[] = {127, 254, FULL_ARCHIVE};
constexpr unsigned int SMALL_ARCHIVE = 16;
// A cursor, present in both archives that File::at is measured on.
constexpr unsigned int PROBED_ENTRY = 9;

std::string wholeFileName(unsigned int entries)
{
    return "ifstream whole file, " + std::to_string(entries) + " entries";
}

std::string entryByEntryName(unsigned int entries)
{
    return "ifstream entry by entry, " + std::to_string(entries) + " entries";
}

std::string atName(unsigned int entries)
{
    return "File::at(path, i), " + std::to_string(entries) + " entries";
}

std::string wholeFileCopiedName(unsigned int entries)
{
    return "whole file, then each entry into a block of its own, " + std::to_string(entries) + " entries";
}

std::string entryReadName(unsigned int entries)
{
    return "ifstream one entry, " + std::to_string(entries) + " entries";
}

// The archive's bytes, read in one go.
std::unique_ptr<char[]> wholeFile(const Archive& archive)
{
    std::ifstream in(archive.path, std::ios::binary | std::ios::ate);
    const auto size = static_cast<std::size_t>(in.tellg());
    std::unique_ptr<char[]> bytes(new char[size]);
    in.seekg(0);
    in.read(bytes.get(), static_cast<std::streamsize>(size));
    return bytes;
}

// A benchmark's work on an archive, and what one step of it takes in.
struct ArchiveWork {
    Work work;
    std::int64_t bytes;
    std::int64_t items;
};

ArchiveWork wholeArchive(const Archive& archive, std::function<void()> step)
{
    return {{std::move(step)}, archive.bytes, archive.entries};
}

// What any reader of the archive has to do at least: get all its bytes.
ArchiveWork readWholeFile(const Archive& archive)
{
    return wholeArchive(archive, [&archive] {
        const std::unique_ptr<char[]> bytes = wholeFile(archive);
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    });
}

// What a reader that keeps every entry in a block of its own has to do at
// least: one read a block, straight into it.
ArchiveWork readEntryByEntry(const Archive& archive)
{
    return wholeArchive(archive, [&archive] {
        std::ifstream in(archive.path, std::ios::binary);
        in.seekg(archive.offsets.front());
        std::vector<std::unique_ptr<char[]>> blocks;
        blocks.reserve(archive.entries);
        for (unsigned int i = 0; i < archive.entries; ++i) {
            const unsigned int length = archive.offsets[i + 1] - archive.offsets[i];
            blocks.emplace_back(new char[length]);
            in.read(blocks.back().get(), length);
        }
        benchmark::DoNotOptimize(blocks.data());
        benchmark::ClobberMemory();
    });
}

// What opening has to do at least when every entry is a block of its own,
// which its Content owns and frees: one read of the file, and a copy of each
// entry.
ArchiveWork readWholeFileCopied(const Archive& archive)
{
    return wholeArchive(archive, [&archive] {
        const std::unique_ptr<char[]> bytes = wholeFile(archive);
        std::vector<std::unique_ptr<char[]>> blocks;
        blocks.reserve(archive.entries);
        for (unsigned int i = 0; i < archive.entries; ++i) {
            const unsigned int length = archive.offsets[i + 1] - archive.offsets[i];
            blocks.emplace_back(new char[length]);
            std::memcpy(blocks.back().get(), bytes.get() + archive.offsets[i], length);
        }
        benchmark::DoNotOptimize(blocks.data());
        benchmark::ClobberMemory();
    });
}

ArchiveWork openArchive(const Archive& archive)
{
    return wholeArchive(archive, [&archive] {
        File file(archive.path);
        benchmark::DoNotOptimize(file.size());
    });
}

ArchiveWork probedEntry(const Archive& archive, std::function<void()> step)
{
    return {{std::move(step)}, archive.offsets[PROBED_ENTRY + 1] - archive.offsets[PROBED_ENTRY], 1};
}

ArchiveWork readOneEntry(const Archive& archive)
{
    return probedEntry(archive, [&archive] {
        const unsigned int begin = archive.offsets[PROBED_ENTRY];
        const unsigned int length = archive.offsets[PROBED_ENTRY + 1] - begin;
        std::ifstream in(archive.path, std::ios::binary);
        std::unique_ptr<char[]> bytes(new char[length]);
        in.seekg(begin);
        in.read(bytes.get(), length);
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    });
}

ArchiveWork atOneEntry(const Archive& archive)
{
    return probedEntry(archive, [&archive] {
        std::unique_ptr<Content> entry(File::at(archive.path, PROBED_ENTRY));
        benchmark::DoNotOptimize(entry->type());
    });
}

using Prepare = ArchiveWork (*)(const Archive&);

void count(benchmark::State& state, const ArchiveWork& done)
{
    state.SetBytesProcessed(state.iterations() * done.bytes);
    state.SetItemsProcessed(state.iterations() * done.items);
}

void add(const std::string& name, std::shared_ptr<Archives> archives, unsigned int entries, Prepare prepare)
{
    benchmark::RegisterBenchmark(name.c_str(), [archives, entries, prepare](benchmark::State& state) {
        const ArchiveWork done = prepare(archives->get(entries));
        for (auto _ : state)
            done.work.step();
        count(state, done);
    })->UseRealTime();
}

// A row held against `baselineName`, the work of `base` on the archive of
// `baseEntries`, timed in turns with it (see inTurns): timed apart, a slow
// stretch of the machine fell on one side (File::at on the full archive took
// 1.34x its time on the small one in one run, 1.0x in the run before).
void addInTurns(const std::string& name, std::shared_ptr<Archives> archives, unsigned int entries, Prepare prepare,
                const std::string& baselineName, unsigned int baseEntries, Prepare base, double limit)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        const ArchiveWork done = prepare(archives->get(entries));
        inTurns(state, done.work, base(archives->get(baseEntries)).work);
        count(state, done);
    })->UseManualTime();
    addPairedRow(name, baselineName, Measure::TIME, limit);
}

} // namespace

void registerArchive(std::shared_ptr<Archives> archives)
{
    for (unsigned int entries : ARCHIVE_SIZES) {
        add(wholeFileName(entries), archives, entries, readWholeFile);
        addRow(wholeFileName(entries), "", Measure::TIME);
        // Opening reads and classifies every entry, each into a block of its
        // own that its Content owns: it should cost little more than one read
        // of the file and a copy of each entry.
        if (entries == FULL_ARCHIVE) {
            add(wholeFileCopiedName(entries), archives, entries, readWholeFileCopied);
            addRow(wholeFileCopiedName(entries), wholeFileName(entries), Measure::TIME);
            addInTurns(openName(entries), archives, entries, openArchive, wholeFileCopiedName(entries), entries,
                       readWholeFileCopied, 1.3);
        } else {
            add(openName(entries), archives, entries, openArchive);
        }
        addRow(openName(entries), wholeFileName(entries), Measure::TIME);
    }
    // Another reference: each entry read straight into its block.
    add(entryByEntryName(FULL_ARCHIVE), archives, FULL_ARCHIVE, readEntryByEntry);
    addRow(entryByEntryName(FULL_ARCHIVE), wholeFileName(FULL_ARCHIVE), Measure::TIME);
    addRow(openName(FULL_ARCHIVE), entryByEntryName(FULL_ARCHIVE), Measure::TIME);

    for (unsigned int entries : {SMALL_ARCHIVE, FULL_ARCHIVE}) {
        add(entryReadName(entries), archives, entries, readOneEntry);
        addRow(entryReadName(entries), "", Measure::TIME);
        // Reading one entry must not cost more for the other entries around it.
        if (entries == FULL_ARCHIVE)
            addInTurns(atName(entries), archives, entries, atOneEntry, atName(SMALL_ARCHIVE), SMALL_ARCHIVE,
                       atOneEntry, 1.3);
        else
            add(atName(entries), archives, entries, atOneEntry);
        addRow(atName(entries), entryReadName(entries), Measure::TIME);
    }
}

} // namespace bench
