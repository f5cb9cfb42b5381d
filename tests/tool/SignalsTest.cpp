// A signal that ends the tool in the middle of a write, from whatever
// thread it lands on, takes the temporary file with it and leaves the
// target as it was; one ignored from the start stays ignored. A new file
// is not even left by a kill that no handler sees.

#include "tests/support/Fixtures.h"
#include "tools/platform/SafeWrite.h"
#include "tools/platform/Signals.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using fixtures::readFile;

struct Interruption {
    const char* name;
    int signal;
    bool ignoredAtStart; // as nohup starts a program
};

// In a child process that took the signals over as the tool does: a write
// of "new" over `target`, which a kill from another thread interrupts
// half-way. The child's wait status.
int interruptedWrite(const std::string& target, const Interruption& interruption)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (interruption.ignoredAtStart)
            std::signal(interruption.signal, SIG_IGN);
        lbxtool::removeTemporariesOnSignal();
        try {
            lbxtool::SafeWriter().writeFile(target, lbxtool::Existing::Replace, [&](int descriptor, const std::string&) {
                if (::write(descriptor, "ne", 2) != 2)
                    ::_exit(3);
                std::thread([&] { ::kill(::getpid(), interruption.signal); }).join();
                std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the signal lands meanwhile
                if (::write(descriptor, "w", 1) != 1)
                    ::_exit(3);
            });
        } catch (...) {
            ::_exit(4);
        }
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return status;
}

bool anyTemporary(const std::string& folder)
{
    for (const auto& file : std::filesystem::directory_iterator(folder))
        if (file.path().extension() == ".lbx-part")
            return true;
    return false;
}

class Interrupted : public testing::TestWithParam<Interruption> {};

TEST_P(Interrupted, LeavesNoTemporaryAndTheTargetAsItWas)
{
    const Interruption& interruption = GetParam();
    fixtures::TempDir dir;
    const std::string target = dir.file("ARCHIVE.LBX", "old");
    const int status = interruptedWrite(target, interruption);
    if (interruption.ignoredAtStart) {
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
        EXPECT_EQ(readFile(target), "new") << "the write goes on";
    } else {
        ASSERT_TRUE(WIFSIGNALED(status)) << "status " << status;
        EXPECT_EQ(WTERMSIG(status), interruption.signal) << "the tool ends by the signal, as it would have";
        EXPECT_EQ(readFile(target), "old");
    }
    EXPECT_FALSE(anyTemporary(dir.path(""))) << "an .lbx-part file stays behind";
}

const Interruption INTERRUPTIONS[] = {
    {"CtrlC", SIGINT, false},
    {"Kill", SIGTERM, false},
    {"TerminalClosed", SIGHUP, false},
    {"PipeClosed", SIGPIPE, false},
    {"HangupUnderNohup", SIGHUP, true},
};

INSTANTIATE_TEST_SUITE_P(Signals, Interrupted, testing::ValuesIn(INTERRUPTIONS),
                         [](const testing::TestParamInfo<Interruption>& info) { return std::string(info.param.name); });

// Whether `process` has a file open in `folder`: the file it writes.
bool writingInto(pid_t process, const std::string& folder)
{
    std::error_code error;
    for (const auto& open : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd", error))
        if (std::filesystem::read_symlink(open.path(), error).string().rfind(folder, 0) == 0)
            return true;
    return false;
}

TEST(Killed, HalfWayThroughANewFileLeavesNothingOfIt)
{
    fixtures::TempDir dir;
    const std::string target = dir.path("FRAMES.png");
    constexpr std::size_t SIZE = 256u << 20; // long enough to be caught writing
    const pid_t child = ::fork();
    if (child == 0) {
        lbxtool::SafeWriter().writeBytes(target, std::string(SIZE, 'x'), lbxtool::Existing::Refuse);
        ::_exit(0);
    }
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!writingInto(child, dir.path("")) && std::chrono::steady_clock::now() < giveUp)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the write ended before the kill; status " << status;
    EXPECT_TRUE(std::filesystem::is_empty(dir.path(""))) << "a part of the file stays behind";
}

} // namespace
