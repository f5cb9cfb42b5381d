#ifndef ZORV2_LBX_TOOLS_SAMPLE_H
#define ZORV2_LBX_TOOLS_SAMPLE_H

#include <string>

namespace lbxtool {

// Writes a small set of archives made with the library's own create
// functions, named after catalogue rows so that palettes resolve through
// the game's tables. Returns the exit status.
int sample(const std::string& folder);

} // namespace lbxtool

#endif
