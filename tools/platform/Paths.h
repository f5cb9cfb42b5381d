#ifndef ZORV2_LBX_TOOLS_PLATFORM_PATHS_H
#define ZORV2_LBX_TOOLS_PLATFORM_PATHS_H

#include <string>
#include <vector>

namespace lbxtool {

// Creates `folder` and its parents unless they exist; throws a message naming it.
void makeFolder(const std::string& folder);

// Creates the folder that the file at `path` goes into, as makeFolder does.
void makeFolderFor(const std::string& path);

// The folder that the file at `path` goes into, made as makeFolderFor makes
// it for a write that may yet fail: unless kept, the folders it made go
// again with it (when still empty), so that a failed command leaves none.
class FolderFor {
public:
    explicit FolderFor(const std::string& path);
    ~FolderFor();
    FolderFor(const FolderFor&) = delete;
    FolderFor& operator=(const FolderFor&) = delete;

    void keep() { made.clear(); }

private:
    std::vector<std::string> made; // the deepest first
};

} // namespace lbxtool

#endif
