#include "tools/parallel/Workers.h"

#include "tools/platform/Heap.h"
#include "tools/platform/Signals.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace lbxtool {

namespace {

using Compute = std::function<void(std::size_t)>;
using Deliver = std::function<void(std::size_t, const Outcome&)>;

struct Slot {
    Outcome outcome;
    bool done = false;
};

// The tasks of one run, each computed into a slot of its own and delivered
// from it.
class Tasks {
public:
    Tasks(std::size_t count, const Compute& compute, const Deliver& deliver)
        : slots(count), compute(compute), deliver(deliver)
    {
    }

    // Computes task `i`, keeping what it says and how it ended for its turn.
    void computeInto(std::size_t i)
    {
        const Capture capture(slots[i].outcome.said);
        try {
            compute(i);
        } catch (...) {
            slots[i].outcome.failure = std::current_exception();
        }
    }

    void deliverFrom(std::size_t i)
    {
        const Outcome outcome = std::move(slots[i].outcome);
        deliver(i, outcome);
    }

    std::size_t count() const { return slots.size(); }
    // Read and written under the lock of the run.
    bool& done(std::size_t i) { return slots[i].done; }

private:
    std::vector<Slot> slots;
    const Compute& compute;
    const Deliver& deliver;
};

// What the workers of one run and the calling thread share, and the rules by
// which they take tasks.
class Progress {
public:
    Progress(Tasks& tasks, std::size_t workers, const std::vector<std::size_t>& order, std::size_t leadPerWorker)
        : tasks(tasks), lead(workers * leadPerWorker), order(order)
    {
    }

    // The next task in the order of taking, if one may be taken now.
    std::optional<std::size_t> take(std::unique_lock<std::mutex>&)
    {
        if (over() || !roomAhead())
            return std::nullopt;
        const std::size_t next = taken++;
        return order.empty() ? next : order[next];
    }

    // Computes a task taken; the calling thread waits for no other task, and
    // takes those done after it without waiting.
    void computeTaken(std::size_t i)
    {
        tasks.computeInto(i);
        bool awaited;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            tasks.done(i) = true;
            awaited = i == delivered;
        }
        if (awaited)
            computed.notify_one();
    }

    // A worker's life. A task once taken is done, even when the run stops: a
    // later task may wait for an earlier one.
    void work()
    {
        for (;;) {
            std::optional<std::size_t> task;
            {
                std::unique_lock<std::mutex> lock(mutex);
                room.wait(lock, [&] { return over() || roomAhead(); });
                task = take(lock);
            }
            if (!task)
                return;
            computeTaken(*task);
        }
    }

    // The calling thread: it computes while task `i` is not done and there
    // is one to take, then delivers `i`.
    void deliverInTurn(std::size_t i)
    {
        for (;;) {
            std::unique_lock<std::mutex> lock(mutex);
            if (tasks.done(i))
                break;
            if (const std::optional<std::size_t> task = take(lock)) {
                lock.unlock();
                computeTaken(*task);
                continue;
            }
            computed.wait(lock, [&] { return tasks.done(i); });
            break;
        }
        tasks.deliverFrom(i);
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ++delivered;
        }
        room.notify_all();
    }

    void stop()
    {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            stopping = true;
        }
        room.notify_all();
    }

private:
    // Under the lock: whether no more tasks will be taken, and whether the
    // workers may take one more ahead of the deliveries.
    bool over() const { return stopping || taken == tasks.count(); }
    bool roomAhead() const { return taken < delivered + lead; }

    Tasks& tasks;
    const std::size_t lead;
    const std::vector<std::size_t>& order;
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
    Crew(std::size_t size, Progress& progress) : progress(progress)
    {
        // Workers never write a file: a signal that ends the tool goes to
        // the thread that does, which then holds it while a file it makes
        // is not yet known to the handler.
        const HeldSignals inherited;
        try {
            for (std::size_t i = 0; i < size; ++i)
                threads.emplace_back([&progress] {
                    prepareThreadHeap();
                    progress.work();
                });
        } catch (...) {
            stop();
            throw;
        }
    }

    ~Crew() { stop(); }

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

private:
    void stop()
    {
        progress.stop();
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

void inOrder(unsigned int jobs, std::size_t count, const Compute& compute, const Deliver& deliver,
             const std::vector<std::size_t>& order, std::size_t leadPerWorker)
{
    Tasks tasks(count, compute, deliver);
    const std::size_t workers = std::min<std::size_t>(workerCount(jobs), count);
    if (workers <= 1) {
        for (std::size_t i = 0; i < count; ++i) {
            tasks.computeInto(i);
            tasks.deliverFrom(i);
        }
        return;
    }
    // The calling thread is one of the workers.
    Progress progress(tasks, workers, order, leadPerWorker);
    const Crew crew(workers - 1, progress);
    for (std::size_t i = 0; i < count; ++i)
        progress.deliverInTurn(i);
}

} // namespace lbxtool
