#include "tools/Report.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <mutex>
#include <set>
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

void sayNow(bool warning, const std::string& text)
{
    static std::set<std::string> said;
    const std::lock_guard<std::mutex> turn(errorStream());
    if (!warning)
        std::cerr << text;
    else if (said.insert(text).second)
        std::cerr << "lbx: warning: " << text << '\n';
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

std::string unreadableReason(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return std::strerror(errno);
    ::close(descriptor);
    return "";
}

std::runtime_error withReason(const std::exception& failure, const std::string& path)
{
    const std::string reason = unreadableReason(path);
    return std::runtime_error(reason.empty() ? failure.what() : std::string(failure.what()) + " (" + reason + ")");
}

} // namespace lbxtool
