#include "tools/platform/Report.h"

#include <iostream>
#include <mutex>
#include <set>

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

void TerminalWarnings::warn(const std::string& message)
{
    lbxtool::warn(message);
}

} // namespace lbxtool
