#include "tools/Report.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <set>
#include <unistd.h>

namespace lbxtool {

void reportError(const std::string& message)
{
    std::cerr << "lbx: " << message << '\n';
}

void warn(const std::string& message)
{
    static std::set<std::string> said;
    if (said.insert(message).second)
        std::cerr << "lbx: warning: " << message << '\n';
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
