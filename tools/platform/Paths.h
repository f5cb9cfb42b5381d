#ifndef ZORV2_LBX_TOOLS_PLATFORM_PATHS_H
#define ZORV2_LBX_TOOLS_PLATFORM_PATHS_H

#include <string>

namespace lbxtool {

// Creates `folder` and its parents unless they exist; throws a message naming it.
void makeFolder(const std::string& folder);

// Creates the folder that the file at `path` goes into, as makeFolder does.
void makeFolderFor(const std::string& path);

} // namespace lbxtool

#endif
