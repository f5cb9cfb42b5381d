#ifndef ZORV2_LBX_TOOLS_PLATFORM_SIGNALS_H
#define ZORV2_LBX_TOOLS_PLATFORM_SIGNALS_H

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

} // namespace lbxtool

#endif
