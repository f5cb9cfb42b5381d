#include "Benchmarks.h"
#include "Table.h"

#include "images/Cursor.h"
#include "images/Graphic.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;
namespace fs = std::filesystem;

namespace {

// A modder's folder of archives: copies of the mixed archive under names of
// their own.
constexpr unsigned int SET_SIZE = 20;
// The set takes tens of seconds a run; its rows are the median of three.
constexpr unsigned int SET_REPETITIONS = 3;
// Sequential: the floors, and the tool's rows that the threaded ones are
// held against.
constexpr unsigned int ONE_JOB = 1;
// Every core the machine has.
constexpr unsigned int ALL_JOBS = 0;

const char* const COMMANDS[] = {"export", "unpack", "pack", "verify"};

std::string jobsText(unsigned int jobs)
{
    return jobs == ONE_JOB ? " -j 1" : "";
}

std::string toolName(const std::string& command, unsigned int jobs, unsigned int archives)
{
    return "lbx " + command + jobsText(jobs) + ", " +
           (archives == 1 ? std::to_string(FULL_ARCHIVE) + " entries" : std::to_string(archives) + " archives");
}

const std::string RAW_FRAMES_FLOOR = "decode + write RGBA files, 509 entries";
const std::string CREATE_FLOOR = "read RGBA files + create entries, 509 entries";

// A folder that a benchmark writes into, made before and removed after each
// iteration, outside the time measured.
class FreshFolder {
public:
    FreshFolder(benchmark::State& state, std::string path) : state(state), path(std::move(path))
    {
        state.PauseTiming();
        fs::remove_all(this->path);
        fs::create_directories(this->path);
        state.ResumeTiming();
    }

    ~FreshFolder()
    {
        state.PauseTiming();
        fs::remove_all(path);
        state.ResumeTiming();
    }

    FreshFolder(const FreshFolder&) = delete;
    FreshFolder& operator=(const FreshFolder&) = delete;

    const std::string& operator*() const { return path; }

private:
    benchmark::State& state;
    std::string path;
};

// Runs the lbx tool itself, as a modder does, with what it prints kept out
// of the table: in-process it would lack what its main() sets up, such as
// the way it keeps freed memory. Throws what it said on stderr when it fails.
void runTool(const std::vector<std::string>& arguments, const std::string& said)
{
    std::vector<std::string> command{LBX_COMMAND};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : command)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, said.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t child;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        throw std::runtime_error(std::string("cannot run " LBX_COMMAND ": ") + std::strerror(spawned));
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::ifstream in(said);
        throw std::runtime_error("lbx failed: " + std::string(std::istreambuf_iterator<char>(in), {}));
    }
}

std::vector<std::string> jobsArguments(unsigned int jobs)
{
    if (jobs == ALL_JOBS)
        return {};
    return {"-j", std::to_string(jobs)};
}

std::vector<std::string> operator+(std::vector<std::string> first, const std::vector<std::string>& then)
{
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

// The mixed archive, and the set of copies of it, written on first use.
class ToolWorkloads {
public:
    explicit ToolWorkloads(std::shared_ptr<Archives> archives) : archives(std::move(archives)) {}

    std::vector<std::string> inputs(unsigned int count)
    {
        if (count == 1)
            return {archives->get(FULL_ARCHIVE).path};
        while (copies.size() < count) {
            copies.push_back(path("set/MIXED" + std::to_string(copies.size()) + ".LBX"));
            fs::create_directories(fs::path(copies.back()).parent_path());
            fs::copy_file(archives->get(FULL_ARCHIVE).path, copies.back(), fs::copy_options::overwrite_existing);
        }
        return {copies.begin(), copies.begin() + count};
    }

    // The folders that unpack makes of each input, made once for pack.
    std::vector<std::string> unpacked(unsigned int count)
    {
        const std::string folder = path("unpacked-" + std::to_string(count));
        if (!fs::exists(folder))
            runTool(std::vector<std::string>{"unpack", "-o", folder} + inputs(count), said());
        std::vector<std::string> folders;
        for (const std::string& input : inputs(count))
            folders.push_back(folder + "/" + fs::path(input).stem().string());
        return folders;
    }

    std::string path(const std::string& name) const { return archives->folder().path(name); }

    // Where the tool's stderr goes, to be shown when it fails.
    std::string said() const { return path("said.txt"); }

    const Archive& archive() { return archives->get(FULL_ARCHIVE); }

private:
    std::shared_ptr<Archives> archives;
    std::vector<std::string> copies;
};

void countArchives(benchmark::State& state, const Archive& archive, unsigned int count)
{
    state.SetBytesProcessed(state.iterations() * archive.bytes * count);
    state.SetItemsProcessed(state.iterations() * archive.entries * count);
}

// One command of the tool on `count` archives; pack, which takes one folder
// at a time, packs each folder that unpack made of them.
void runCommand(ToolWorkloads& work, const std::string& command, unsigned int jobs, unsigned int count,
                const std::string& out)
{
    const std::vector<std::string> inputs = work.inputs(count);
    const std::vector<std::string> jobsSet = jobsArguments(jobs);
    if (command == "pack") {
        for (const std::string& folder : work.unpacked(count))
            runTool(std::vector<std::string>{"pack", folder, "-o", out + "/" + fs::path(folder).filename().string() + ".LBX"} +
                        jobsSet,
                    work.said());
    } else if (command == "verify") {
        runTool(std::vector<std::string>{"verify"} + jobsSet + inputs, work.said());
    } else {
        runTool(std::vector<std::string>{command, "-o", out} + jobsSet + inputs, work.said());
    }
}

void toolRun(benchmark::State& state, ToolWorkloads& work, const std::string& command, unsigned int jobs,
             unsigned int count)
{
    // The inputs are made before the clock runs.
    work.inputs(count);
    if (command == "pack")
        work.unpacked(count);
    try {
        for (auto _ : state) {
            FreshFolder out(state, work.path("out"));
            runCommand(work, command, jobs, count, *out);
        }
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
    countArchives(state, work.archive(), count);
}

// How every frame of an archive is stored, to create its entry again.
struct FrameSet {
    Content::TYPE type;
    unsigned int entry;
    unsigned short width, height, frames;
    unsigned char clearOnce, clearMod;
    unsigned short paletteOffset, paletteSize;
    unsigned short flags;
};

unsigned short flagsOf(Content::Graphic* graphic)
{
    using Graphic = Content::Graphic;
    unsigned short flags = 0;
    for (Graphic::FLAG flag : {Graphic::RAW, Graphic::CLEAR, Graphic::SHADOWS, Graphic::PALETTE, Graphic::LOOP})
        flags |= graphic->hasFlag(flag) ? flag : 0;
    return flags;
}

std::string frameFile(const std::string& folder, unsigned int entry, unsigned int frame)
{
    return folder + "/" + std::to_string(entry) + "_" + std::to_string(frame) + ".rgba";
}

void writeFile(const std::string& path, const unsigned char* bytes, std::size_t size)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
}

// What exporting or unpacking has to do at least: decode every frame and
// write its RGBA bytes, uncompressed, to a file of its own.
std::vector<FrameSet> writeRawFrames(const std::string& archivePath, const std::string& folder,
                                     unsigned char* palette)
{
    constexpr unsigned int CURSOR_FRAMES = 20, CURSOR_BYTES = 24 * 24 * 4;
    File archive(archivePath);
    std::vector<FrameSet> sets;
    for (unsigned int i = 0; i < archive.size(); ++i) {
        Content* entry = archive.at(i);
        if (entry->type() == Content::GRAPHIC) {
            Content::Graphic* graphic = entry->graphic();
            graphic->setPalette(palette);
            const std::size_t bytes = std::size_t{graphic->width()} * graphic->height() * 4;
            for (unsigned int f = 0; f < graphic->frames(); ++f)
                writeFile(frameFile(folder, i, f), graphic->frame(f), bytes);
            sets.push_back({Content::GRAPHIC, i, graphic->width(), graphic->height(), graphic->frames(),
                            graphic->clearOnce(), graphic->clearMod(), graphic->paletteOffset(),
                            graphic->paletteSize(), flagsOf(graphic)});
        } else if (entry->type() == Content::CURSOR) {
            Content::Cursor* cursor = entry->cursor();
            for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
                writeFile(frameFile(folder, i, f), cursor->get(f), CURSOR_BYTES);
            sets.push_back({Content::CURSOR, i, 24, 24, CURSOR_FRAMES, 0, 0, 0, 0, 0});
        }
    }
    return sets;
}

// What packing has to do at least: read those files back and create the
// entries from them.
void createFromRawFrames(const std::vector<FrameSet>& sets, const std::string& folder, unsigned char* palette)
{
    for (const FrameSet& set : sets) {
        std::vector<std::string> frames;
        std::vector<unsigned char*> pointers;
        for (unsigned int f = 0; f < set.frames; ++f) {
            std::ifstream in(frameFile(folder, set.entry, f), std::ios::binary);
            frames.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
            pointers.push_back(reinterpret_cast<unsigned char*>(frames.back().data()));
        }
        std::unique_ptr<Content> created(
            set.type == Content::GRAPHIC
                ? Content::Graphic::create(pointers.data(), palette, set.width, set.height, set.frames, set.clearOnce,
                                           set.clearMod, set.paletteOffset, set.paletteSize, set.flags)
                : Content::Cursor::create(palette, pointers.data()));
        benchmark::DoNotOptimize(created->data());
    }
}

void rawFramesFloor(benchmark::State& state, ToolWorkloads& work)
{
    Pixels palette = scenePalette();
    for (auto _ : state) {
        FreshFolder out(state, work.path("out"));
        writeRawFrames(work.archive().path, *out, palette.data());
    }
    countArchives(state, work.archive(), 1);
}

void createFloor(benchmark::State& state, ToolWorkloads& work)
{
    Pixels palette = scenePalette();
    const std::string folder = work.path("raw-frames");
    fs::create_directories(folder);
    const std::vector<FrameSet> sets = writeRawFrames(work.archive().path, folder, palette.data());
    for (auto _ : state)
        createFromRawFrames(sets, folder, palette.data());
    countArchives(state, work.archive(), 1);
}

template <typename Body>
benchmark::internal::Benchmark* add(const std::string& name, Body body)
{
    return benchmark::RegisterBenchmark(name.c_str(), body)->UseRealTime();
}

} // namespace

void registerTool(std::shared_ptr<Archives> archives)
{
    auto work = std::make_shared<ToolWorkloads>(std::move(archives));
    add(RAW_FRAMES_FLOOR, [work](benchmark::State& state) { rawFramesFloor(state, *work); });
    add(CREATE_FLOOR, [work](benchmark::State& state) { createFloor(state, *work); });
    addRow(RAW_FRAMES_FLOOR, "", Measure::SPEED);
    addRow(CREATE_FLOOR, "", Measure::SPEED);

    // On one archive each command is held against its floor, and the set
    // of archives shows what the cores add.
    for (const std::string command : COMMANDS) {
        for (unsigned int count : {1u, SET_SIZE}) {
            for (unsigned int jobs : {ONE_JOB, ALL_JOBS}) {
                auto* benchmark = add(toolName(command, jobs, count), [work, command, jobs, count](benchmark::State& state) {
                    toolRun(state, *work, command, jobs, count);
                });
                if (count == SET_SIZE)
                    benchmark->Repetitions(SET_REPETITIONS);
            }
        }
        const std::string one = toolName(command, ALL_JOBS, 1);
        if (command == "verify")
            addRow(one, openName(FULL_ARCHIVE), Measure::TIME, 3);
        else
            addRow(one, command == "pack" ? CREATE_FLOOR : RAW_FRAMES_FLOOR, Measure::SPEED, 0.3);
        addRow(toolName(command, ONE_JOB, 1), one, Measure::TIME);
        addRow(toolName(command, ALL_JOBS, SET_SIZE), toolName(command, ONE_JOB, SET_SIZE), Measure::SPEED, 1.7);
    }
}

} // namespace bench
