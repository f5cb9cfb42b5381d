#include "Benchmarks.h"
#include "Table.h"

#include "archive/File.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <fstream>
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

// What any reader of the archive has to do at least: get all its bytes.
void readWholeFile(benchmark::State& state, const Archive& archive)
{
    for (auto _ : state) {
        const std::unique_ptr<char[]> bytes = wholeFile(archive);
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * archive.bytes);
    state.SetItemsProcessed(state.iterations() * archive.entries);
}

// What a reader that keeps every entry in a block of its own has to do at
// least: one read a block, straight into it.
void readEntryByEntry(benchmark::State& state, const Archive& archive)
{
    for (auto _ : state) {
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
    }
    state.SetBytesProcessed(state.iterations() * archive.bytes);
    state.SetItemsProcessed(state.iterations() * archive.entries);
}

// What opening has to do at least when every entry is a block of its own,
// which its Content owns and frees: one read of the file, and a copy of each
// entry.
void readWholeFileCopied(benchmark::State& state, const Archive& archive)
{
    for (auto _ : state) {
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
    }
    state.SetBytesProcessed(state.iterations() * archive.bytes);
    state.SetItemsProcessed(state.iterations() * archive.entries);
}

void openArchive(benchmark::State& state, const Archive& archive)
{
    for (auto _ : state) {
        File file(archive.path);
        benchmark::DoNotOptimize(file.size());
    }
    state.SetBytesProcessed(state.iterations() * archive.bytes);
    state.SetItemsProcessed(state.iterations() * archive.entries);
}

void readOneEntry(benchmark::State& state, const Archive& archive)
{
    const unsigned int begin = archive.offsets[PROBED_ENTRY];
    const unsigned int length = archive.offsets[PROBED_ENTRY + 1] - begin;
    for (auto _ : state) {
        std::ifstream in(archive.path, std::ios::binary);
        std::unique_ptr<char[]> bytes(new char[length]);
        in.seekg(begin);
        in.read(bytes.get(), length);
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * length);
    state.SetItemsProcessed(state.iterations());
}

void atOneEntry(benchmark::State& state, const Archive& archive)
{
    const unsigned int length = archive.offsets[PROBED_ENTRY + 1] - archive.offsets[PROBED_ENTRY];
    for (auto _ : state) {
        std::unique_ptr<Content> entry(File::at(archive.path, PROBED_ENTRY));
        benchmark::DoNotOptimize(entry->type());
    }
    state.SetBytesProcessed(state.iterations() * length);
    state.SetItemsProcessed(state.iterations());
}

using Body = void (*)(benchmark::State&, const Archive&);

void add(const std::string& name, std::shared_ptr<Archives> archives, unsigned int entries, Body body)
{
    benchmark::RegisterBenchmark(name.c_str(), [archives, entries, body](benchmark::State& state) {
        body(state, archives->get(entries));
    })->UseRealTime();
}

} // namespace

void registerArchive(std::shared_ptr<Archives> archives)
{
    for (unsigned int entries : ARCHIVE_SIZES) {
        add(wholeFileName(entries), archives, entries, readWholeFile);
        add(openName(entries), archives, entries, openArchive);
        addRow(wholeFileName(entries), "", Measure::TIME);
        addRow(openName(entries), wholeFileName(entries), Measure::TIME);
    }
    // Opening reads and classifies every entry, each into a block of its own
    // that its Content owns: it should cost little more than one read of the
    // file and a copy of each entry.
    add(wholeFileCopiedName(FULL_ARCHIVE), archives, FULL_ARCHIVE, readWholeFileCopied);
    addRow(wholeFileCopiedName(FULL_ARCHIVE), wholeFileName(FULL_ARCHIVE), Measure::TIME);
    addRow(openName(FULL_ARCHIVE), wholeFileCopiedName(FULL_ARCHIVE), Measure::TIME, 1.3);
    // Another reference: each entry read straight into its block.
    add(entryByEntryName(FULL_ARCHIVE), archives, FULL_ARCHIVE, readEntryByEntry);
    addRow(entryByEntryName(FULL_ARCHIVE), wholeFileName(FULL_ARCHIVE), Measure::TIME);
    addRow(openName(FULL_ARCHIVE), entryByEntryName(FULL_ARCHIVE), Measure::TIME);

    for (unsigned int entries : {SMALL_ARCHIVE, FULL_ARCHIVE}) {
        add(entryReadName(entries), archives, entries, readOneEntry);
        add(atName(entries), archives, entries, atOneEntry);
        addRow(entryReadName(entries), "", Measure::TIME);
        addRow(atName(entries), entryReadName(entries), Measure::TIME);
    }
    // Reading one entry must not cost more for the other entries around it.
    addRow(atName(FULL_ARCHIVE), atName(SMALL_ARCHIVE), Measure::TIME, 1.3);
}

} // namespace bench
