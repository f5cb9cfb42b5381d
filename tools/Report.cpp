#include "tools/Report.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <mutex>
#include <set>
#include <sstream>
#include <unistd.h>

namespace lbxtool {

namespace {

// The transcript that this thread's lines go into; none: straight to stderr.
thread_local Transcript* capturing = nullptr;

// Held while anything goes to std::cerr, and while std::cerr is lent out.
std::recursive_mutex& errorStream()
{
    static std::recursive_mutex turn;
    return turn;
}

void sayNow(bool warning, const std::string& text)
{
    static std::set<std::string> said;
    const std::lock_guard<std::recursive_mutex> turn(errorStream());
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

// Puts std::cerr back however the run ends.
class RedirectedErrors {
public:
    explicit RedirectedErrors(std::streambuf* to) : saved(std::cerr.rdbuf(to)), tied(std::cerr.tie(nullptr)) {}
    ~RedirectedErrors()
    {
        std::cerr.rdbuf(saved);
        std::cerr.tie(tied);
    }
    RedirectedErrors(const RedirectedErrors&) = delete;
    RedirectedErrors& operator=(const RedirectedErrors&) = delete;

private:
    std::streambuf* saved;
    std::ostream* tied;
};

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

void withLibraryReport(bool keep, const std::function<void()>& run)
{
    std::ostringstream report;
    std::exception_ptr failure;
    {
        const std::lock_guard<std::recursive_mutex> turn(errorStream());
        const RedirectedErrors redirected(report.rdbuf());
        try {
            run();
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (keep && !report.str().empty())
        sayInTurn(false, report.str());
    if (failure)
        std::rethrow_exception(failure);
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
