#include "tools/Workers.h"

#include "tools/Report.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace lbxtool {

namespace {

struct Slot {
    Outcome outcome;
    bool done = false;
};

// Workers compute at most this many tasks each ahead of the one delivered
// next: what they make waits in memory for its turn, and when delivering is
// the slower part (export writes a file at a time) they would otherwise
// hold a whole set of archives' output, and take the core that delivering
// needs.
constexpr std::size_t LEAD_PER_WORKER = 4;

// What the workers of one run and the calling thread share.
struct Progress {
    std::mutex mutex;
    std::condition_variable computed; // a task is done
    std::condition_variable room;     // a task was delivered, or the run stops
    std::size_t taken = 0;            // in the order of taking
    std::size_t delivered = 0;
    bool stopping = false;
};

// The workers of one run; however the run ends, they are told to stop and
// are waited for before anything they use goes away.
class Crew {
public:
    Crew(std::size_t size, const std::function<void()>& work, Progress& progress) : progress(progress)
    {
        try {
            for (std::size_t i = 0; i < size; ++i)
                threads.emplace_back(work);
        } catch (...) {
            stop();
            throw;
        }
    }

    ~Crew()
    {
        stop();
    }

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

private:
    void stop()
    {
        {
            const std::lock_guard<std::mutex> lock(progress.mutex);
            progress.stopping = true;
        }
        progress.room.notify_all();
        for (std::thread& thread : threads)
            thread.join();
    }

    Progress& progress;
    std::vector<std::thread> threads;
};

} // namespace

unsigned int workerCount(unsigned int jobs)
{
    return jobs != 0 ? jobs : std::max(1u, std::thread::hardware_concurrency());
}

void inOrder(unsigned int jobs, std::size_t count, const std::function<void(std::size_t)>& compute,
             const std::function<void(std::size_t, const Outcome&)>& deliver, const std::vector<std::size_t>& order)
{
    std::vector<Slot> slots(count);
    const auto computeInto = [&](std::size_t i) {
        const Capture capture(slots[i].outcome.said);
        try {
            compute(i);
        } catch (...) {
            slots[i].outcome.failure = std::current_exception();
        }
    };
    const auto deliverFrom = [&](std::size_t i) {
        const Outcome outcome = std::move(slots[i].outcome);
        deliver(i, outcome);
    };

    const std::size_t workers = std::min<std::size_t>(workerCount(jobs), count);
    if (workers <= 1) {
        for (std::size_t i = 0; i < count; ++i) {
            computeInto(i);
            deliverFrom(i);
        }
        return;
    }

    const std::size_t lead = workers * LEAD_PER_WORKER;
    Progress progress;
    // Under the lock: whether no more tasks will be taken, and whether the
    // workers may take one more ahead of the deliveries.
    const auto over = [&] { return progress.stopping || progress.taken == count; };
    const auto roomAhead = [&] { return progress.taken < progress.delivered + lead; };
    // The next task in the order of taking, if one may be taken now.
    const auto take = [&](std::unique_lock<std::mutex>&) -> std::optional<std::size_t> {
        if (over() || !roomAhead())
            return std::nullopt;
        const std::size_t taken = progress.taken++;
        return order.empty() ? taken : order[taken];
    };
    const auto computeTaken = [&](std::size_t i) {
        computeInto(i);
        bool awaited;
        {
            const std::lock_guard<std::mutex> lock(progress.mutex);
            slots[i].done = true;
            awaited = i == progress.delivered;
        }
        // The calling thread waits for no other task, and takes those done
        // after it without waiting.
        if (awaited)
            progress.computed.notify_one();
    };
    // A task once taken is done, even when the run stops: a later task may
    // wait for an earlier one.
    const auto work = [&] {
        for (;;) {
            std::optional<std::size_t> task;
            {
                std::unique_lock<std::mutex> lock(progress.mutex);
                progress.room.wait(lock, [&] { return over() || roomAhead(); });
                task = take(lock);
            }
            if (!task)
                return;
            computeTaken(*task);
        }
    };
    // The calling thread is one of the workers: it computes while the task
    // it delivers next is not done, and there is one to take.
    const Crew crew(workers - 1, work, progress);
    for (std::size_t i = 0; i < count; ++i) {
        for (;;) {
            std::unique_lock<std::mutex> lock(progress.mutex);
            if (slots[i].done)
                break;
            if (const std::optional<std::size_t> task = take(lock)) {
                lock.unlock();
                computeTaken(*task);
                continue;
            }
            progress.computed.wait(lock, [&] { return slots[i].done; });
            break;
        }
        deliverFrom(i);
        {
            const std::lock_guard<std::mutex> lock(progress.mutex);
            ++progress.delivered;
        }
        progress.room.notify_all();
    }
}

} // namespace lbxtool
