#ifndef ZORV2_LBX_TOOLS_MODDING_HEADER_H
#define ZORV2_LBX_TOOLS_MODDING_HEADER_H

#include <cstddef>
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

// The size of the header area in front of an archive's entries.
constexpr std::size_t HEADER_AREA_SIZE = 2048;
// The most entries an archive holds.
constexpr unsigned int LARGEST_ARCHIVE = 509;

// The header area the library's writer puts before entries of these sizes:
// the count, the offsets, the tag word where it fits, zeros behind.
std::string writtenHeader(const std::vector<std::size_t>& sizes);

// Whether two header areas hold the same entry count and offsets, whatever
// else they hold.
bool sameTable(const std::string& one, const std::string& other);

// The header area `area` of an archive of `entries` entries without its
// entry count, its offsets and the zeros that end it: what stays when
// entries change size, are added or removed.
std::string withoutOffsets(std::string area, std::size_t entries);

} // namespace lbxtool

#endif
