#include "Benchmarks.h"
#include "Table.h"
#include "Turns.h"

#include "images/Cursor.h"
#include "images/Graphic.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <spawn.h>
#include <sys/resource.h>
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
// Exporting, unpacking or packing the set takes seconds a run: the floor of
// creating its files is the median of three.
constexpr unsigned int SET_REPETITIONS = 3;
// The set with all workers against one: the median of seven pairs.
constexpr unsigned int SET_PAIRS = 7;
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

// The archive a row works on: the mixed one of every kind, or the big one
// of large animations.
enum class Source { MIXED, BIG };
const Source SOURCES[] = {Source::MIXED, Source::BIG};

std::string sourceName(Source source)
{
    return source == Source::MIXED ? std::to_string(FULL_ARCHIVE) + " entries" : "big archive";
}

std::string toolName(const std::string& command, unsigned int jobs, unsigned int archives, Source source)
{
    return "lbx " + command + jobsText(jobs) + ", " +
           (archives == 1 ? sourceName(source) : std::to_string(archives) + " archives");
}

// The row of the floor that `command` is held against on one archive.
std::string floorName(const std::string& command, Source source)
{
    if (command == "verify")
        return "open + re-create entries, " + sourceName(source);
    if (command == "pack")
        return "read RGBA files + create entries, " + sourceName(source);
    return "decode + write RGBA files, " + sourceName(source);
}

// One command for each floor: `export` and `unpack` share theirs.
const char* const FLOOR_COMMANDS[] = {"export", "pack", "verify"};

// The big archive's rows take tens of seconds a run: the median of three,
// and creating its 4,800 frames, which takes a minute, once.
constexpr unsigned int BIG_REPETITIONS = 3;

// What a command of the tool may hold at most on the big archive, with two
// workers: its 100 MB, a few entries' frames and files in hand, and a constant.
constexpr double BIG_PEAK_LIMIT = 1e9;

// A folder of its own that a run writes into, made before its clock runs
// and left in place until the bench ends. Removing the last run's files
// instead would measure the file system: this machine's ext4 has no
// journal, and then skips every inode freed in the last minutes when it
// hands out a new one; after 52,000 files were removed, `lbx export` of the
// set took 12.5 s instead of 4.9 s, most of it in the kernel. What earlier
// runs wrote is flushed to the disk first, so that the system writing it
// back does not take a core from this one.
std::string newFolder(const std::string& under)
{
    static unsigned int made = 0;
    const std::string path = under + "-" + std::to_string(++made);
    fs::create_directories(path);
    ::sync();
    return path;
}

// A folder that the floors write raw frames into over and over (6 GB of the
// big archive's) has its files emptied before and after each use, so that
// every write lands in a file that exists. Removing them would free
// thousands of inodes for the file system to skip (see newFolder); new files
// each time would leave gigabytes for the system to write back while later
// rows run, where an emptied file's pages are dropped unwritten.
void emptyFolder(const std::string& path)
{
    fs::create_directories(path);
    for (const fs::directory_entry& file : fs::directory_iterator(path))
        fs::resize_file(file.path(), 0);
}

// What one run of the tool took: from starting its process to its end, the
// processor time it used (user and system, on all its threads), and its
// peak of resident memory in bytes.
struct ToolTaken {
    double seconds = 0;
    double processor = 0;
    double peak = 0;
};

// Runs the lbx tool itself, as a modder does, with what it prints kept out
// of the table: in-process it would lack what its main() sets up, such as
// the way it keeps freed memory. Throws what it said on stderr when it fails.
// The tool is started through this program's own launcher (`--peak`, see
// Main.cpp), which measures it: the kernel counts in a process's peak the
// memory of the process it was started from until it ran its program, and
// this process holds hundreds of megabytes; and starting the launcher, a
// program as large as this one, costs some 11 ms that are not the tool's.
ToolTaken runTool(const std::vector<std::string>& arguments, const std::string& said)
{
    const std::string peakFile = said + ".peak";
    std::vector<std::string> command{fs::read_symlink("/proc/self/exe").string(), PEAK_OPTION, peakFile, LBX_COMMAND};
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
    ToolTaken taken;
    double kib = 0;
    std::ifstream(peakFile) >> kib >> taken.seconds >> taken.processor;
    constexpr double KIB = 1024;
    taken.peak = kib * KIB;
    return taken;
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

    std::vector<std::string> inputs(unsigned int count, Source source)
    {
        if (count == 1)
            return {archive(source).path};
        while (copies.size() < count) {
            copies.push_back(path("set/MIXED" + std::to_string(copies.size()) + ".LBX"));
            fs::create_directories(fs::path(copies.back()).parent_path());
            fs::copy_file(archives->get(FULL_ARCHIVE).path, copies.back(), fs::copy_options::overwrite_existing);
        }
        return {copies.begin(), copies.begin() + count};
    }

    // The folders that unpack makes of each input, made once for pack.
    std::vector<std::string> unpacked(unsigned int count, Source source)
    {
        const std::string folder =
            path("unpacked-" + (source == Source::BIG ? std::string("big") : std::to_string(count)));
        if (!fs::exists(folder))
            runTool(std::vector<std::string>{"unpack", "-o", folder} + inputs(count, source), said());
        std::vector<std::string> folders;
        for (const std::string& input : inputs(count, source))
            folders.push_back(folder + "/" + fs::path(input).stem().string());
        return folders;
    }

    // What `command` takes, made before the clock runs: the archives, and
    // for pack the folders unpacked of them.
    void prepare(const std::string& command, unsigned int count, Source source)
    {
        inputs(count, source);
        if (command == "pack")
            unpacked(count, source);
    }

    std::string path(const std::string& name) const { return archives->folder().path(name); }

    // Where the tool's stderr goes, to be shown when it fails.
    std::string said() const { return path("said.txt"); }

    const Archive& archive(Source source)
    {
        return source == Source::MIXED ? archives->get(FULL_ARCHIVE) : archives->big();
    }

private:
    std::shared_ptr<Archives> archives;
    std::vector<std::string> copies;
};

void countArchives(benchmark::State& state, const Archive& archive, unsigned int count)
{
    state.SetBytesProcessed(state.iterations() * archive.bytes * count);
    state.SetItemsProcessed(state.iterations() * archive.entries * count);
}

// One command of the tool on `count` archives; pack takes the folders that
// unpack made of them.
ToolTaken runCommand(ToolWorkloads& work, const std::string& command, unsigned int jobs, unsigned int count,
                     Source source, const std::string& out)
{
    const std::vector<std::string> inputs = work.inputs(count, source);
    const std::vector<std::string> jobsSet = jobsArguments(jobs);
    if (command == "pack")
        return runTool(std::vector<std::string>{"pack", "-o", out + "/"} + jobsSet + work.unpacked(count, source),
                       work.said());
    if (command == "verify")
        return runTool(std::vector<std::string>{"verify"} + jobsSet + inputs, work.said());
    return runTool(std::vector<std::string>{command, "-o", out} + jobsSet + inputs, work.said());
}

void toolRun(benchmark::State& state, ToolWorkloads& work, const std::string& command, unsigned int jobs,
             unsigned int count, Source source)
{
    work.prepare(command, count, source);
    double peak = 0;
    try {
        for (auto _ : state) {
            const ToolTaken taken = runCommand(work, command, jobs, count, source, newFolder(work.path("out")));
            state.SetIterationTime(taken.seconds);
            peak = std::max(peak, taken.peak);
        }
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
    countArchives(state, work.archive(source), count);
    state.counters[PEAK_COUNTER] = peak;
    state.counters[ARCHIVE_COUNTER] = static_cast<double>(work.archive(source).bytes);
}

// The set with all workers against one, in pairs (see inPairs). Timed
// apart, minutes from each other in a run of random order, the two sides saw
// different machines: a burst of other work, or a file system that had just
// taken tens of thousands of files, moved the ratio by half.
void pairedSetRun(benchmark::State& state, ToolWorkloads& work, const std::string& command)
{
    work.prepare(command, SET_SIZE, Source::MIXED);
    // Each side says on stderr how busy it kept the cores: a pair whose
    // ratio falls short shows there whether the workers waited (processor
    // time under twice the wall time) or were slowed.
    const auto withJobs = [&](unsigned int jobs) {
        return [&work, &command, jobs] {
            const ToolTaken taken =
                runCommand(work, command, jobs, SET_SIZE, Source::MIXED, newFolder(work.path("out")));
            std::cerr << "  " << toolName(command, jobs, SET_SIZE, Source::MIXED) << ": " << taken.seconds
                      << " s, processor " << taken.processor << " s\n";
            return taken.seconds;
        };
    };
    try {
        inPairs(state, withJobs(ALL_JOBS), withJobs(ONE_JOB));
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
    countArchives(state, work.archive(Source::MIXED), SET_SIZE);
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
        // On a copy, as the tool decodes, so that the frames go with it.
        Content copy(*archive.at(i));
        Content* entry = &copy;
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

// What verifying has to do at least, in one process: open the archive, and
// decode and re-create each entry of a kind the library re-creates, on a
// copy that takes what it decoded along.
void recreateEntries(const std::string& archivePath)
{
    File archive(archivePath);
    for (unsigned int i = 0; i < archive.size(); ++i) {
        const Content::TYPE type = archive.at(i)->type();
        if (type != Content::CURSOR && type != Content::EMPTY && type != Content::FONT && type != Content::GRAPHIC &&
            type != Content::TEXT)
            continue;
        Content copy(*archive.at(i));
        std::ostringstream differing;
        std::unique_ptr<Content> recreated(copy.debugCreate(differing));
        benchmark::DoNotOptimize(recreated->data());
    }
}

// The least that a command has to do on one archive, set up to run again
// and again: `export` and `unpack` write raw frames, `pack` creates the
// entries from them, `verify` re-creates the entries.
class Floor {
public:
    Floor(ToolWorkloads& work, const std::string& command, Source source)
        : archive(work.archive(source).path), source(source), palette(scenePalette()),
          frames(work.path(source == Source::BIG ? "raw-big" : "raw-frames")), rawOut(work.path("raw")),
          kind(command == "verify" ? Kind::RECREATE : command == "pack" ? Kind::CREATE : Kind::WRITE)
    {
        if (kind == Kind::RECREATE)
            return;
        emptyFolder(frames);
        if (kind == Kind::CREATE)
            sets = writeRawFrames(archive, frames, palette.data());
    }

    ~Floor()
    {
        if (kind != Kind::RECREATE)
            emptyFolder(frames);
    }

    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    // The seconds one run took, what it writes into made before.
    double run()
    {
        if (kind == Kind::RECREATE)
            return secondsOf([this] { recreateEntries(archive); });
        if (kind == Kind::CREATE)
            return secondsOf([this] { createFromRawFrames(sets, frames, palette.data()); });
        // The big archive's frames go to the same files each time, emptied
        // right after; the mixed archive's to a new folder.
        const bool big = source == Source::BIG;
        const std::string out = big ? frames : newFolder(rawOut);
        const double seconds = secondsOf([&] { writeRawFrames(archive, out, palette.data()); });
        if (big)
            emptyFolder(out);
        return seconds;
    }

private:
    enum class Kind { WRITE, CREATE, RECREATE };

    const std::string archive;
    const Source source;
    Pixels palette;
    const std::string frames, rawOut;
    const Kind kind;
    std::vector<FrameSet> sets;
};

void floorRun(benchmark::State& state, ToolWorkloads& work, const std::string& command, Source source)
{
    Floor floor(work, command, source);
    for (auto _ : state)
        state.SetIterationTime(floor.run());
    countArchives(state, work.archive(source), 1);
}

// A command with all workers on one archive against its floor, in pairs
// (see inPairs): timed apart, a stretch of the machine running slow fell on
// one side and not the other, and moved `unpack`'s ratio from 0.26x to 0.48x
// from run to run.
void againstFloorRun(benchmark::State& state, ToolWorkloads& work, const std::string& command, Source source)
{
    work.prepare(command, 1, source);
    try {
        Floor floor(work, command, source);
        inPairs(
            state,
            [&] { return runCommand(work, command, ALL_JOBS, 1, source, newFolder(work.path("out"))).seconds; },
            [&] { return floor.run(); });
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
    }
    countArchives(state, work.archive(source), 1);
}

// A file that a command made: where, below its output folder, and its bytes.
struct MadeFile {
    fs::path name;
    std::string bytes;
};

// Every file that `command` makes of the set, in the order of their names.
std::vector<MadeFile> filesMadeBy(ToolWorkloads& work, const std::string& command)
{
    const std::string folder = work.path("made-by-" + command);
    if (!fs::exists(folder))
        runTool(std::vector<std::string>{command, "-o", folder} + work.inputs(SET_SIZE, Source::MIXED), work.said());
    std::vector<MadeFile> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        std::ifstream in(entry.path(), std::ios::binary);
        files.push_back({fs::relative(entry.path(), folder), {std::istreambuf_iterator<char>(in), {}}});
    }
    std::sort(files.begin(), files.end(), [](const MadeFile& a, const MadeFile& b) { return a.name < b.name; });
    return files;
}

// The file system's part of a command on the set: the same files, with the
// same bytes and folders, created by a plain loop in a new folder.
void filesFloor(benchmark::State& state, ToolWorkloads& work, const std::string& command)
{
    const std::vector<MadeFile> files = filesMadeBy(work, command);
    for (auto _ : state) {
        const fs::path out = newFolder(work.path("files"));
        state.SetIterationTime(secondsOf([&] {
            fs::path folder;
            for (const MadeFile& file : files) {
                const fs::path path = out / file.name;
                if (path.parent_path() != folder)
                    fs::create_directories(folder = path.parent_path());
                std::ofstream(path, std::ios::binary)
                    .write(file.bytes.data(), static_cast<std::streamsize>(file.bytes.size()));
            }
        }));
    }
    countArchives(state, work.archive(Source::MIXED), SET_SIZE);
}

std::string filesFloorName(const std::string& command)
{
    return "create the files of lbx " + command + ", " + std::to_string(SET_SIZE) + " archives";
}

// Every row here times itself: the tool by its launcher (see runTool), the
// floors around their work alone.
template <typename Body>
benchmark::internal::Benchmark* add(const std::string& name, Body body)
{
    return benchmark::RegisterBenchmark(name.c_str(), body)->UseManualTime();
}

benchmark::internal::Benchmark* addTool(const std::string& name, unsigned int jobs, unsigned int count, Source source,
                                        const std::shared_ptr<ToolWorkloads>& work, const std::string& command)
{
    return add(name, [work, command, jobs, count, source](benchmark::State& state) {
        toolRun(state, *work, command, jobs, count, source);
    });
}

// The floors of one archive, each a row that only shows its speed.
void addFloors(const std::shared_ptr<ToolWorkloads>& work, Source source)
{
    for (const std::string command : FLOOR_COMMANDS) {
        auto* floor = add(floorName(command, source), [work, command, source](benchmark::State& state) {
            floorRun(state, *work, command, source);
        });
        if (source == Source::BIG)
            floor->Repetitions(command == "pack" ? 1 : BIG_REPETITIONS);
        addRow(floorName(command, source), "", Measure::SPEED);
    }
}

// Each command on one archive against its floor; `verify` against the
// library doing the same work in one process. `paired` when the row timed
// its floor itself.
void addAgainstFloor(const std::string& command, const std::string& name, Source source, bool paired)
{
    const auto row = paired ? addPairedRow : addRow;
    if (command == "verify")
        row(name, floorName(command, source), Measure::TIME, 1.2);
    else
        row(name, floorName(command, source), Measure::SPEED, 0.3);
}

} // namespace

void registerTool(std::shared_ptr<Archives> archives)
{
    auto work = std::make_shared<ToolWorkloads>(std::move(archives));
    for (const Source source : SOURCES)
        addFloors(work, source);

    // On the mixed archive each command is held against its floor, with one
    // worker and with all, and the set of archives shows what the cores add.
    for (const std::string command : COMMANDS) {
        const std::string one = toolName(command, ALL_JOBS, 1, Source::MIXED);
        add(one, [work, command](benchmark::State& state) { againstFloorRun(state, *work, command, Source::MIXED); });
        addAgainstFloor(command, one, Source::MIXED, true);
        const std::string oneJob = toolName(command, ONE_JOB, 1, Source::MIXED);
        addTool(oneJob, ONE_JOB, 1, Source::MIXED, work, command);
        addRow(oneJob, one, Measure::TIME);
        const std::string set = toolName(command, ALL_JOBS, SET_SIZE, Source::MIXED);
        add(set, [work, command](benchmark::State& state) { pairedSetRun(state, *work, command); })
            ->Repetitions(SET_PAIRS);
        addPairedRow(set, toolName(command, ONE_JOB, SET_SIZE, Source::MIXED), Measure::SPEED, 1.7);
        // Where the commands make many files, the file system may be what
        // limits them.
        if (command == "export" || command == "unpack") {
            add(filesFloorName(command), [work, command](benchmark::State& state) {
                filesFloor(state, *work, command);
            })->Repetitions(SET_REPETITIONS);
            addRow(set, filesFloorName(command), Measure::TIME);
        }
    }
    // On the big archive, with all workers: against its floor, and its peak
    // of memory against the archive's size.
    for (const std::string command : COMMANDS) {
        const std::string big = toolName(command, ALL_JOBS, 1, Source::BIG);
        addTool(big, ALL_JOBS, 1, Source::BIG, work, command)->Repetitions(BIG_REPETITIONS);
        addAgainstFloor(command, big, Source::BIG, false);
        addRow(big, "", Measure::PEAK, BIG_PEAK_LIMIT);
    }
}

int runMeasuringPeak(char** argv)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        // The tool sets its memory up itself, as when a modder starts it.
        unsetenv("GLIBC_TUNABLES");
        execv(argv[1], argv + 1);
        _exit(127);
    }
    int status = 0;
    struct rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) < 0)
        return 127;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    const auto seconds = [](const timeval& time) { return static_cast<double>(time.tv_sec) + time.tv_usec / 1e6; };
    std::ofstream(argv[0]) << usage.ru_maxrss << ' ' << taken.count() << ' '
                           << seconds(usage.ru_utime) + seconds(usage.ru_stime) << '\n';
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace bench
