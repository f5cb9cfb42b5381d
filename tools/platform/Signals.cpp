#include "tools/platform/Signals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <unistd.h>

namespace lbxtool {

namespace {

// Those whose default action ends the process.
constexpr int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE};

// A command writes one file at a time on each of its threads.
constexpr std::size_t SLOTS = 32;
constexpr std::size_t PATH_ROOM = 4096;

// One path to remove. The handler may run on any thread, while another
// frees the slot and takes it for the next file: `generation` is odd while
// the path is whole, and the handler trusts a copy of the path only if the
// generation did not move while it copied.
struct Slot {
    std::atomic<bool> taken{false};
    std::atomic<unsigned int> generation{0};
    std::atomic<char> path[PATH_ROOM];
};

static_assert(std::atomic<unsigned int>::is_always_lock_free && std::atomic<char>::is_always_lock_free,
              "a signal handler may only touch lock-free atomics");

Slot slots[SLOTS];

void removeHeld(Slot& slot)
{
    const unsigned int generation = slot.generation.load(std::memory_order_acquire);
    if (generation % 2 == 0)
        return;
    char path[PATH_ROOM];
    for (std::size_t i = 0; i < PATH_ROOM; ++i)
        path[i] = slot.path[i].load(std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_acquire);
    if (slot.generation.load(std::memory_order_relaxed) == generation)
        ::unlink(path);
}

sigset_t endingSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : ENDING_SIGNALS)
        sigaddset(&set, signal);
    return set;
}

// Only calls that are safe in a handler. The signal's own action is the
// default again (SA_RESETHAND) and it is blocked while this runs: raised
// here, it ends the process as soon as this returns.
extern "C" void removeAndEnd(int signal)
{
    const int saved = errno;
    for (Slot& slot : slots)
        removeHeld(slot);
    ::raise(signal);
    errno = saved;
}

} // namespace

void removeTemporariesOnSignal()
{
    struct sigaction action = {};
    action.sa_handler = removeAndEnd;
    action.sa_flags = SA_RESETHAND;
    action.sa_mask = endingSignals(); // a second Ctrl-C waits for the first to finish
    for (const int signal : ENDING_SIGNALS) {
        struct sigaction former;
        if (::sigaction(signal, nullptr, &former) == 0 && former.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

RemovedOnSignal::RemovedOnSignal(const std::string& path) : slot(-1)
{
    if (path.size() >= PATH_ROOM)
        return;
    for (std::size_t s = 0; s < SLOTS; ++s) {
        if (slots[s].taken.exchange(true, std::memory_order_acquire))
            continue;
        Slot& taken = slots[s];
        // The generation moved when the slot was freed; a handler that reads
        // any of the new path sees that.
        std::atomic_thread_fence(std::memory_order_release);
        for (std::size_t i = 0; i <= path.size(); ++i)
            taken.path[i].store(i < path.size() ? path[i] : '\0', std::memory_order_relaxed);
        taken.generation.fetch_add(1, std::memory_order_release);
        slot = static_cast<int>(s);
        return;
    }
}

RemovedOnSignal::~RemovedOnSignal()
{
    if (slot < 0)
        return;
    slots[slot].generation.fetch_add(1, std::memory_order_release);
    slots[slot].taken.store(false, std::memory_order_release);
}

HeldSignals::HeldSignals()
{
    const sigset_t ending = endingSignals();
    ::pthread_sigmask(SIG_BLOCK, &ending, &former);
}

HeldSignals::~HeldSignals()
{
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

} // namespace lbxtool
