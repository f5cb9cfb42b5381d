#include "tools/platform/Report.h"

#include <cstdio>
#include <iostream>
#include <mutex>
#include <set>
#include <sys/ioctl.h>
#include <unistd.h>

namespace lbxtool {

namespace {

// The transcript that this thread's lines go into; none: straight to stderr.
thread_local Transcript* capturing = nullptr;

// Held while anything goes to std::cerr.
std::mutex& errorStream()
{
    static std::mutex turn;
    return turn;
}

// The progress line of the process, under the lock of the error stream.
struct ProgressLine {
    bool silenced = false;
    bool shown = false;
    // The first progress of the command: a second after it, long work shows.
    bool begun = false;
    std::chrono::steady_clock::time_point begin;
};

ProgressLine& progressLine()
{
    static ProgressLine line;
    return line;
}

// Over what a line of text on the terminal was: back to its start, clear it.
const char* const CLEAR_LINE = "\r\033[K";

void clearProgress()
{
    if (!progressLine().shown)
        return;
    std::cerr << CLEAR_LINE << std::flush;
    progressLine().shown = false;
}

// What fits the terminal's width of `text`, its end kept; all of it when the
// width is not known.
std::string fitted(const std::string& text)
{
    struct winsize size;
    if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || text.size() < size.ws_col)
        return text;
    return text.substr(text.size() - (size.ws_col - 1u));
}

void sayNow(bool warning, const std::string& text)
{
    static std::set<std::string> said;
    const std::lock_guard<std::mutex> turn(errorStream());
    // A warning said before says nothing, and leaves the progress shown.
    if (warning && !said.insert(text).second)
        return;
    clearProgress();
    if (warning)
        std::cerr << "lbx: warning: " << text << '\n';
    else
        std::cerr << text;
}

void sayInTurn(bool warning, std::string text)
{
    if (capturing != nullptr)
        capturing->add(warning, std::move(text));
    else
        sayNow(warning, text);
}

} // namespace

void reportError(const std::string& message)
{
    sayInTurn(false, "lbx: " + message + '\n');
}

void warn(const std::string& message)
{
    sayInTurn(true, message);
}

void Transcript::add(bool warning, std::string text)
{
    lines.push_back({warning, std::move(text)});
}

void Transcript::say() const
{
    for (const Line& line : lines)
        sayInTurn(line.warning, line.text);
}

Capture::Capture(Transcript& transcript) : outer(capturing)
{
    capturing = &transcript;
}

Capture::~Capture()
{
    capturing = outer;
}

void relay(const std::string& lines)
{
    if (!lines.empty())
        sayInTurn(false, lines);
}

void TerminalWarnings::warn(const std::string& message)
{
    lbxtool::warn(message);
}

void silenceProgress()
{
    const std::lock_guard<std::mutex> turn(errorStream());
    progressLine().silenced = true;
}

WorkProgress::WorkProgress(std::string what, std::size_t total) : what(std::move(what)), total(total)
{
    const std::lock_guard<std::mutex> turn(errorStream());
    ProgressLine& line = progressLine();
    if (line.begun)
        return;
    line.begun = true;
    line.begin = start;
    line.silenced = line.silenced || !::isatty(STDERR_FILENO);
}

WorkProgress::~WorkProgress()
{
    const std::lock_guard<std::mutex> turn(errorStream());
    clearProgress();
}

void WorkProgress::advance()
{
    using std::chrono::duration;
    constexpr duration<double> SHOWN_AFTER(1.0), DRAWN_EVERY(0.1);
    ++done;
    const Clock::time_point now = Clock::now();
    const std::lock_guard<std::mutex> turn(errorStream());
    ProgressLine& line = progressLine();
    if (line.silenced || now - line.begin < SHOWN_AFTER || (line.shown && now - drawn < DRAWN_EVERY))
        return;
    const double seconds = duration<double>(now - start).count();
    char rate[32];
    std::snprintf(rate, sizeof rate, "%.1f", static_cast<double>(done) / seconds);
    std::cerr << CLEAR_LINE
              << fitted(what + ": " + std::to_string(done) + " of " + std::to_string(total) + " entries, " + rate +
                        " a second")
              << std::flush;
    line.shown = true;
    drawn = now;
}

} // namespace lbxtool
