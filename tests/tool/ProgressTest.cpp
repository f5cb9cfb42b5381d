// The progress of long work, as a terminal shows it: drawn over itself on
// one line of stderr, cleared for anything else said there and at its end;
// nothing on a pipe, or with --quiet.

#include "tools/platform/Report.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <iostream>
#include <pty.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

enum class Stderr { TERMINAL, NARROW_TERMINAL, QUIET_TERMINAL, PIPE };

// Four entries, the last three after the second that progress waits for,
// with a warning between them and the same again after; then a line on
// stdout.
[[noreturn]] void longWork(Stderr where)
{
    if (where == Stderr::QUIET_TERMINAL)
        lbxtool::silenceProgress();
    {
        lbxtool::WorkProgress progress("BIG.LBX", 4);
        progress.advance();
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        progress.advance();
        lbxtool::warn("a warning");
        progress.advance();
        lbxtool::warn("a warning"); // said before: nothing, and the line stays,
        progress.advance();         // not drawn again within a tenth of a second
    }
    std::cout << "done" << std::endl;
    ::_exit(0);
}

// The work in a child, its stderr and stdout on the far end of `reading`.
struct Child {
    pid_t pid;
    int reading;
};

Child started(Stderr where)
{
    if (where == Stderr::PIPE) {
        int ends[2];
        if (::pipe(ends) != 0)
            return {-1, -1};
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::dup2(ends[1], STDERR_FILENO);
            longWork(where);
        }
        ::close(ends[1]);
        return {pid, ends[0]};
    }
    struct winsize narrow = {};
    narrow.ws_col = 20;
    int reading = -1;
    const pid_t pid = ::forkpty(&reading, nullptr, nullptr, where == Stderr::NARROW_TERMINAL ? &narrow : nullptr);
    if (pid == 0)
        longWork(where);
    return {pid, reading};
}

// All that the child said, once it is gone.
std::string said(const Child& child)
{
    std::string text;
    char buffer[256];
    ssize_t got;
    // A terminal's far end reads EIO, not an end, once the child is gone.
    while ((got = ::read(child.reading, buffer, sizeof buffer)) > 0 || (got < 0 && errno == EINTR))
        text.append(buffer, got > 0 ? static_cast<std::size_t>(got) : 0);
    ::close(child.reading);
    ::waitpid(child.pid, nullptr, 0);
    return text;
}

// `text` with each rate ("2.7 a second") as "N.N a second", and without the
// first entry's line, which shows only if the child stalled for a second
// before it: the drawn lines before the warning are then three, not two.
std::string steady(std::string text)
{
    const std::string rate = " a second", clear = "\r\033[K";
    for (std::size_t at = text.find(rate); at != std::string::npos; at = text.find(rate, at + 1)) {
        std::size_t begin = at;
        while (begin > 0 && (std::isdigit(static_cast<unsigned char>(text[begin - 1])) || text[begin - 1] == '.'))
            --begin;
        text.replace(begin, at - begin, "N.N");
        at = begin + 3;
    }
    const std::size_t second = text.find(clear, clear.size()), third = text.find(clear, second + 1);
    const std::size_t warning = text.find("lbx: warning");
    if (text.rfind(clear, 0) == 0 && third != std::string::npos && third + clear.size() <= warning)
        text.erase(0, second);
    return text;
}

struct Display {
    const char* name;
    Stderr where;
    const char* shown; // a terminal ends lines with \r\n
};

const Display DISPLAYS[] = {
    {"Terminal", Stderr::TERMINAL,
     "\r\033[KBIG.LBX: 2 of 4 entries, N.N a second"
     "\r\033[Klbx: warning: a warning\r\n"
     "\r\033[KBIG.LBX: 3 of 4 entries, N.N a second"
     "\r\033[Kdone\r\n"},
    // Wider than the terminal, the line would wrap and stay; its end shows.
    {"NarrowTerminal", Stderr::NARROW_TERMINAL,
     "\r\033[Ktries, N.N a second"
     "\r\033[Klbx: warning: a warning\r\n"
     "\r\033[Ktries, N.N a second"
     "\r\033[Kdone\r\n"},
    {"Quiet", Stderr::QUIET_TERMINAL, "lbx: warning: a warning\r\ndone\r\n"},
    {"Pipe", Stderr::PIPE, "lbx: warning: a warning\ndone\n"},
};

// All at once, so that their seconds of waiting overlap.
TEST(Progress, ShowsOnlyOnATerminalAndClearsItselfForOtherLines)
{
    std::vector<Child> children;
    for (const Display& display : DISPLAYS)
        children.push_back(started(display.where));
    for (std::size_t i = 0; i < children.size(); ++i) {
        SCOPED_TRACE(DISPLAYS[i].name);
        ASSERT_GE(children[i].pid, 0);
        EXPECT_EQ(steady(said(children[i])), DISPLAYS[i].shown);
    }
}

} // namespace
