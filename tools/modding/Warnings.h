#ifndef ZORV2_LBX_TOOLS_MODDING_WARNINGS_H
#define ZORV2_LBX_TOOLS_MODDING_WARNINGS_H

#include <string>

namespace lbxtool {

// Where the core's warnings go. The core says what the user should know and
// goes on; the front end decides how it reaches them (the command line says
// each once on stderr, the browser in its console).
class Warnings {
public:
    virtual ~Warnings() = default;
    virtual void warn(const std::string& message) = 0;
};

} // namespace lbxtool

#endif
