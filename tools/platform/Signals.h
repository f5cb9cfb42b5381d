#ifndef ZORV2_LBX_TOOLS_PLATFORM_SIGNALS_H
#define ZORV2_LBX_TOOLS_PLATFORM_SIGNALS_H

#include <csignal>
#include <string>

// A signal that ends the tool half-way (Ctrl-C, a kill, a closed terminal
// or pipe) would leave the temporary file of a write behind; these remove
// it first, and the tool then ends by the signal as it would have.
namespace lbxtool {

// Takes over the signals that end a program by default, except those the
// tool was started with ignored (as nohup leaves a hangup), for the rest of
// the process's life. Called once, before any write.
void removeTemporariesOnSignal();

// While it stands, the file at `path` is removed when one of those signals
// ends the tool. Any thread may hold one; a path longer than the room kept
// for it, or more at once than that room, is left to the write's own
// cleanup.
class RemovedOnSignal {
public:
    explicit RemovedOnSignal(const std::string& path);
    ~RemovedOnSignal();
    RemovedOnSignal(const RemovedOnSignal&) = delete;
    RemovedOnSignal& operator=(const RemovedOnSignal&) = delete;

private:
    int slot;
};

// While it stands, those signals wait on the calling thread, and threads it
// starts keep them waiting for their lives: a file made and registered under
// it cannot be left behind between the two, as long as every other thread
// of the process waits too.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

private:
    sigset_t former;
};

} // namespace lbxtool

#endif
