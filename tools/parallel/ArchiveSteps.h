#ifndef ZORV2_LBX_TOOLS_PARALLEL_ARCHIVESTEPS_H
#define ZORV2_LBX_TOOLS_PARALLEL_ARCHIVESTEPS_H

#include "tools/modding/Files.h"
#include "tools/parallel/Workers.h"
#include "tools/platform/Report.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <future>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lbxtool {

// How a command takes archives entry by entry. `open` and `work` run on the
// workers, several at once: they only read and compute, keeping what they
// make in the Archive (work for entry k in a place of its own). The others
// run on the calling thread, one after the other in the order of the
// archives and their entries, and do whatever the command does to the world.
template <typename Archive>
class ArchiveSteps {
public:
    virtual ~ArchiveSteps() = default;
    // For each path, in order, before anything else: its size, which sets
    // the lead; throws unless the command takes it. By default an archive:
    // a regular file, or nothing, which opening then reports.
    virtual std::uintmax_t takenSize(const std::string& path) const
    {
        requireRegularFile(path);
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(path, unknown);
        return unknown ? 0 : size;
    }
    // For each path taken, in order: the number of entries it is taken in.
    virtual std::size_t plan(std::size_t archive) = 0;
    virtual std::unique_ptr<Archive> open(std::size_t archive, std::size_t entries) = 0;
    virtual void begin(Archive&) {}
    virtual void work(Archive& archive, std::size_t entry) = 0;
    virtual void deliver(Archive& archive, std::size_t entry) = 0;
    virtual void finish(Archive& archive) = 0;
    // How many entries each worker may work on ahead of the one delivered
    // next (see inOrder), given the archives' size over their entries'
    // count. What a worker made waits in memory for its turn, and it grows
    // with the entry: small entries may have more ahead, so that a worker
    // does not run out of them while the calling thread computes a large
    // one (export of 20 archives of small entries: the worker waited for
    // room 0.3-0.6 s a run with 16 entries, not at all with 64).
    virtual std::size_t leadPerWorker(std::uintmax_t averageEntry) const
    {
        constexpr std::uintmax_t HELD_PER_WORKER = std::uintmax_t{4} << 20; // of entries as stored
        constexpr std::uintmax_t MOST_AHEAD = 64;
        if (averageEntry == 0)
            return MOST_AHEAD;
        return static_cast<std::size_t>(
            std::clamp<std::uintmax_t>(HELD_PER_WORKER / averageEntry, LEAD_PER_WORKER, MOST_AHEAD));
    }
};

// The units of work of archives taken through steps: opening each archive,
// then each of its entries; and what became of each archive so far.
template <typename Archive>
class ArchiveRun {
public:
    ArchiveRun(const std::vector<std::string>& paths, ArchiveSteps<Archive>& steps)
        : steps(steps), tracks(paths.size()), first(paths.size())
    {
        for (std::size_t a = 0; a < paths.size(); ++a) {
            try {
                const std::uintmax_t size = steps.takenSize(paths[a]);
                tracks[a].entries = steps.plan(a);
                archiveBytes += size;
            } catch (...) {
                tracks[a].unfit = std::current_exception();
            }
            tracks[a].path = paths[a];
            first[a] = units.size();
            units.push_back({a, OPENING});
            for (std::size_t k = 0; k < tracks[a].entries; ++k)
                units.push_back({a, k});
        }
    }

    std::size_t count() const { return units.size(); }

    // The archives' size over their entries' count.
    std::uintmax_t averageEntry() const
    {
        const std::size_t entries = units.size() - tracks.size();
        return entries == 0 ? 0 : archiveBytes / entries;
    }

    // Each archive is opened while the entries of the one before are worked on.
    std::vector<std::size_t> takingOrder() const
    {
        std::vector<std::size_t> order;
        for (std::size_t a = 0; a < tracks.size(); ++a) {
            if (a == 0)
                order.push_back(first[a]);
            if (a + 1 < tracks.size())
                order.push_back(first[a + 1]);
            for (std::size_t k = 0; k < tracks[a].entries; ++k)
                order.push_back(first[a] + 1 + k);
        }
        return order;
    }

    void compute(std::size_t u)
    {
        Track& track = tracks[units[u].archive];
        if (units[u].entry != OPENING) {
            track.ready.wait();
            if (track.opened && !track.failed)
                steps.work(*track.opened, units[u].entry);
            return;
        }
        struct Opened {
            std::promise<void>& done;
            ~Opened() { done.set_value(); }
        } opened{track.openDone};
        if (track.unfit)
            std::rethrow_exception(track.unfit);
        track.opened = steps.open(units[u].archive, track.entries);
    }

    // What one thread would not have computed, once its archive failed, is
    // not said either.
    void deliver(std::size_t u, const Outcome& outcome)
    {
        Track& track = tracks[units[u].archive];
        const std::size_t entry = units[u].entry;
        const bool last = entry == OPENING ? track.entries == 0 : entry + 1 == track.entries;
        if (!track.failed) {
            try {
                outcome.said.say();
                if (outcome.failure)
                    std::rethrow_exception(outcome.failure);
                step(track, entry, last);
            } catch (const std::exception& e) {
                reportError(e.what());
                track.failed = true;
                status = EXIT_FAILED;
            }
        }
        if (last) {
            track.progress.reset();
            track.opened.reset();
        }
    }

    int status = EXIT_DONE;

private:
    static constexpr std::size_t OPENING = std::numeric_limits<std::size_t>::max();

    struct Track {
        std::exception_ptr unfit;
        std::size_t entries = 0;
        std::string path;
        std::unique_ptr<Archive> opened;
        std::optional<WorkProgress> progress; // from its opening on, as it is delivered
        std::promise<void> openDone;
        std::shared_future<void> ready = openDone.get_future().share();
        std::atomic<bool> failed{false};
    };
    struct Unit {
        std::size_t archive;
        std::size_t entry; // or OPENING
    };

    void step(Track& track, std::size_t entry, bool last)
    {
        if (entry == OPENING) {
            steps.begin(*track.opened);
            track.progress.emplace(track.path, track.entries);
        } else {
            steps.deliver(*track.opened, entry);
            track.progress->advance();
        }
        if (!last)
            return;
        track.progress.reset(); // before what finishing prints
        steps.finish(*track.opened);
    }

    ArchiveSteps<Archive>& steps;
    std::vector<Track> tracks;
    std::vector<Unit> units;
    std::vector<std::size_t> first; // each archive's opening unit
    std::uintmax_t archiveBytes = 0; // of those planned
};

// Takes each archive of `paths` through `steps`, its entries spread over up
// to `jobs` workers (0: one a core), the next archive opened while the
// entries of one are worked on. A failure of an archive (no regular file, an
// exception from any of its steps) is reported as one line in its turn, and
// its remaining steps are left out. Returns the exit status: 1 if an archive
// failed.
template <typename Archive>
int forEachArchive(unsigned int jobs, const std::vector<std::string>& paths, ArchiveSteps<Archive>& steps)
{
    ArchiveRun<Archive> run(paths, steps);
    inOrder(
        jobs, run.count(), [&run](std::size_t u) { run.compute(u); },
        [&run](std::size_t u, const Outcome& outcome) { run.deliver(u, outcome); }, run.takingOrder(),
        steps.leadPerWorker(run.averageEntry()));
    return run.status;
}

} // namespace lbxtool

#endif
