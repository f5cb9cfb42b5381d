#include "tools/Workers.h"

#include "tools/Report.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace lbxtool {

namespace {

struct Slot {
    Outcome outcome;
    bool done = false;
};

// The workers of one run; however the run ends, they are told to stop and
// are waited for before anything they use goes away.
class Crew {
public:
    Crew(std::size_t size, const std::function<void()>& work, std::atomic<bool>& stopping) : stopping(stopping)
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
        stopping = true;
        for (std::thread& thread : threads)
            thread.join();
    }

    std::atomic<bool>& stopping;
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

    std::mutex mutex;
    std::condition_variable finished;
    std::atomic<std::size_t> next{0};
    std::atomic<bool> stopping{false};
    // A task once taken is done, even when the run stops: a later task may
    // wait for an earlier one.
    const auto work = [&] {
        while (!stopping) {
            const std::size_t taken = next++;
            if (taken >= count)
                return;
            const std::size_t i = order.empty() ? taken : order[taken];
            computeInto(i);
            {
                const std::lock_guard<std::mutex> lock(mutex);
                slots[i].done = true;
            }
            finished.notify_all();
        }
    };
    const Crew crew(workers, work, stopping);
    for (std::size_t i = 0; i < count; ++i) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            finished.wait(lock, [&] { return slots[i].done; });
        }
        deliverFrom(i);
    }
}

} // namespace lbxtool
