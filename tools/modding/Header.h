#ifndef ZORV2_LBX_TOOLS_MODDING_HEADER_H
#define ZORV2_LBX_TOOLS_MODDING_HEADER_H

#include <string>
#include <vector>

namespace lbxtool {

// An archive's header, read on its own without the entries behind it.
struct ArchiveHeader {
    bool valid = false;
    std::string error;                 // the library's message when it is not valid
    std::vector<unsigned int> offsets; // where each entry starts, and where the last ends
    bool tagged = false;
};

// The header of the archive at `path`; throws, with the library's message,
// only when the file cannot be opened.
ArchiveHeader readHeader(const std::string& path);

// The header area `area` of an archive of `entries` entries without its
// entry count, its offsets and the zeros that end it: what stays when
// entries change size, are added or removed.
std::string withoutOffsets(std::string area, std::size_t entries);

} // namespace lbxtool

#endif
