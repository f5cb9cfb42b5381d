#include "Benchmarks.h"
#include "Table.h"
#include "Turns.h"

#include "images/Cursor.h"
#include "images/PixelLayout.h"
#include "kinds/Text.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>

namespace bench {

using zorv2::Lbx::Content;

namespace {

constexpr unsigned int TABLE_STRINGS = 1000;
constexpr std::size_t TEXT_HEADER = 4;

// Laying strings out in records is a copy and a fill per record; the
// library also checks every record's length first.
constexpr double TEXT_CREATE_TARGET = 0.3;

using zorv2::Lbx::layout::PALETTE_BYTES;
using zorv2::Lbx::layout::PIXEL_SIZE;
constexpr std::size_t CURSOR_PIXELS = 20 * 576;

const char* const TEXT_CREATE = "Text::create, 1000 strings";
const char* const TEXT_CREATE_FLOOR = "loop: 1000 strings into records";
const char* const TEXT_READ = "Text read (classify, get all), 1000 strings";
const char* const TEXT_READ_FLOOR = "loop: 1000 records into strings";
const char* const CURSOR_DECODE = "Cursor decode, 20 frames";
const char* const CURSOR_CREATE = "Cursor::create, 20 frames";
const char* const CURSOR_FLOOR = "palette loop, 20 cursor frames";

struct TextTable {
    std::vector<std::string> strings;
    std::unique_ptr<Content> entry;
    std::size_t recordLength;
};

std::shared_ptr<TextTable> makeTable()
{
    auto table = std::make_shared<TextTable>();
    table->strings = messageStrings(TABLE_STRINGS);
    table->entry.reset(Content::Text::create(table->strings));
    table->recordLength = (table->entry->size() - TEXT_HEADER) / TABLE_STRINGS;
    return table;
}

void countTable(benchmark::State& state, const TextTable& table)
{
    state.SetBytesProcessed(state.iterations() * table.entry->size());
    state.SetItemsProcessed(state.iterations() * TABLE_STRINGS);
}

Work creatingTable(TextTable& table)
{
    return {[&table] {
        std::unique_ptr<Content> entry(Content::Text::create(table.strings));
        benchmark::DoNotOptimize(entry->data());
    }};
}

// The least a table writer does: copy each string into its record and zero
// the rest.
Work tableFloor(const TextTable& table)
{
    return {[&table] {
        const std::size_t size = table.entry->size();
        std::unique_ptr<char[]> bytes(new char[size]);
        std::memcpy(bytes.get(), table.entry->data(), TEXT_HEADER);
        char* record = bytes.get() + TEXT_HEADER;
        for (const std::string& text : table.strings) {
            std::memcpy(record, text.data(), text.size());
            std::memset(record + text.size(), 0, table.recordLength - text.size());
            record += table.recordLength;
        }
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    }};
}

void createTableFloor(benchmark::State& state, TextTable& table)
{
    const Work floor = tableFloor(table);
    for (auto _ : state)
        floor.step();
    countTable(state, table);
}

// Held against its floor in turns (see inTurns).
void createTable(benchmark::State& state, TextTable& table)
{
    inTurns(state, creatingTable(table), tableFloor(table));
    countTable(state, table);
}

void readTable(benchmark::State& state, TextTable& table)
{
    const unsigned int size = table.entry->size();
    for (auto _ : state) {
        std::unique_ptr<char[]> bytes(new char[size]);
        std::memcpy(bytes.get(), table.entry->data(), size);
        Content entry("table", bytes.release(), size);
        Content::Text* text = entry.text();
        std::vector<std::string> strings;
        strings.reserve(text->size());
        for (unsigned int i = 0; i < text->size(); ++i)
            strings.push_back(text->get(i));
        benchmark::DoNotOptimize(strings.data());
    }
    countTable(state, table);
}

// The least a table reader does: take the block and cut each record at its
// first zero byte.
void readTableFloor(benchmark::State& state, TextTable& table)
{
    const unsigned int size = table.entry->size();
    for (auto _ : state) {
        std::unique_ptr<char[]> bytes(new char[size]);
        std::memcpy(bytes.get(), table.entry->data(), size);
        std::vector<std::string> strings;
        strings.reserve(TABLE_STRINGS);
        const char* record = bytes.get() + TEXT_HEADER;
        for (unsigned int i = 0; i < TABLE_STRINGS; ++i, record += table.recordLength)
            strings.emplace_back(record, std::find(record, record + table.recordLength, '\0'));
        benchmark::DoNotOptimize(strings.data());
    }
    countTable(state, table);
}

struct CursorWork {
    Frames frames;
    Pixels palette;
    std::unique_ptr<Content> entry;
};

std::shared_ptr<CursorWork> makeCursor()
{
    auto work = std::make_shared<CursorWork>();
    work->frames = cursorFrames();
    work->palette = scenePalette();
    work->entry.reset(Content::Cursor::create(work->palette.data(), work->frames.pointers.data()));
    return work;
}

void countCursor(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * CURSOR_PIXELS * PIXEL_SIZE);
    state.SetItemsProcessed(state.iterations() * CURSOR_PIXELS);
}

void decodeCursor(benchmark::State& state, CursorWork& work)
{
    Content::Cursor* cursor = work.entry->cursor();
    for (auto _ : state) {
        cursor->setPalette(work.palette.data());
        benchmark::DoNotOptimize(cursor->pixarray());
    }
    countCursor(state);
}

void createCursor(benchmark::State& state, CursorWork& work)
{
    for (auto _ : state) {
        std::unique_ptr<Content> entry(Content::Cursor::create(work.palette.data(), work.frames.pointers.data()));
        benchmark::DoNotOptimize(entry->data());
    }
    countCursor(state);
}

void cursorFloor(benchmark::State& state, CursorWork& work)
{
    PaletteLoop loop(work.palette);
    std::vector<std::uint32_t> rgba(CURSOR_PIXELS);
    const auto* indices = reinterpret_cast<const unsigned char*>(work.entry->data()) + PALETTE_BYTES;
    for (auto _ : state) {
        loop.map(indices, CURSOR_PIXELS, rgba.data());
        benchmark::ClobberMemory();
    }
    countCursor(state);
}

void on(const char* name, std::shared_ptr<TextTable> table, void (*body)(benchmark::State&, TextTable&))
{
    benchmark::RegisterBenchmark(name, [table, body](benchmark::State& state) { body(state, *table); })->UseRealTime();
}

void on(const char* name, std::shared_ptr<CursorWork> work, void (*body)(benchmark::State&, CursorWork&))
{
    benchmark::RegisterBenchmark(name, [work, body](benchmark::State& state) { body(state, *work); })->UseRealTime();
}

} // namespace

void registerKinds()
{
    auto table = makeTable();
    on(TEXT_CREATE_FLOOR, table, createTableFloor);
    benchmark::RegisterBenchmark(TEXT_CREATE, [table](benchmark::State& state) {
        createTable(state, *table);
    })->UseManualTime();
    on(TEXT_READ_FLOOR, table, readTableFloor);
    on(TEXT_READ, table, readTable);
    addRow(TEXT_CREATE_FLOOR, "", Measure::SPEED);
    addPairedRow(TEXT_CREATE, TEXT_CREATE_FLOOR, Measure::SPEED, TEXT_CREATE_TARGET);
    addRow(TEXT_READ_FLOOR, "", Measure::SPEED);
    addRow(TEXT_READ, TEXT_READ_FLOOR, Measure::SPEED);

    auto cursor = makeCursor();
    on(CURSOR_FLOOR, cursor, cursorFloor);
    on(CURSOR_DECODE, cursor, decodeCursor);
    on(CURSOR_CREATE, cursor, createCursor);
    addRow(CURSOR_FLOOR, "", Measure::SPEED);
    addRow(CURSOR_DECODE, CURSOR_FLOOR, Measure::SPEED);
    addRow(CURSOR_CREATE, CURSOR_FLOOR, Measure::SPEED);
}

} // namespace bench
