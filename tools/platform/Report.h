#ifndef ZORV2_LBX_TOOLS_PLATFORM_REPORT_H
#define ZORV2_LBX_TOOLS_PLATFORM_REPORT_H

#include "tools/modding/Warnings.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

// How the lbx tool tells the user what went wrong: one line each on stderr,
// and the exit status.
namespace lbxtool {

// Exit status: success, a bad file or failed operation, a bad command line.
constexpr int EXIT_DONE = 0;
constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;

// One line on stderr; every failure the user sees goes through here.
void reportError(const std::string& message);
// One line on stderr, printed once however often it comes up.
void warn(const std::string& message);

// What a task running beside others says on stderr, kept until its turn
// comes, so that the lines come out as one thread would have said them. A
// warning is held back as it stands: whether it was said before is decided
// when it is said.
class Transcript {
public:
    void add(bool warning, std::string text);
    // Says everything in the order it came.
    void say() const;

private:
    struct Line {
        bool warning;
        std::string text;
    };
    std::vector<Line> lines;
};

// While it stands, what this thread reports and warns goes into `transcript`.
class Capture {
public:
    explicit Capture(Transcript& transcript);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

private:
    Transcript* outer;
};

// Says `lines` on stderr as they stand, in this thread's turn: what the
// library's verifying mode reported.
void relay(const std::string& lines);

// The core's warnings, said as warn() says them.
class TerminalWarnings : public Warnings {
public:
    void warn(const std::string& message) override;
};

// --quiet: no progress is shown for the rest of the process.
void silenceProgress();

// How far long work has come, on one line of stderr that each step draws
// again: "BIG.LBX: 45 of 160 entries, 12.5 a second". Shown only when stderr
// is a terminal, progress is not silenced and the command has run for a
// second; a line said on stderr clears it first, and so does its end.
class WorkProgress {
public:
    // Work on `total` entries of `what`, on the calling thread.
    WorkProgress(std::string what, std::size_t total);
    ~WorkProgress();
    WorkProgress(const WorkProgress&) = delete;
    WorkProgress& operator=(const WorkProgress&) = delete;

    // One more entry done.
    void advance();

private:
    using Clock = std::chrono::steady_clock;

    std::string what;
    std::size_t total;
    std::size_t done = 0;
    Clock::time_point start = Clock::now();
    Clock::time_point drawn;
};

} // namespace lbxtool

#endif
