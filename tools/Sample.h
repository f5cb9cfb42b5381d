#ifndef ZORV2_LBX_TOOLS_SAMPLE_H
#define ZORV2_LBX_TOOLS_SAMPLE_H

#include <string>

namespace lbxtool {

// Writes a small set of archives made with the library's own create
// functions, named after catalogue rows so that palettes resolve through
// the game's tables. An existing file of one of those names is replaced
// only when `force` is given. Returns the exit status.
int sample(const std::string& folder, bool force);

} // namespace lbxtool

#endif
