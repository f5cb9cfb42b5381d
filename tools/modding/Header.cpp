#include "tools/modding/Header.h"

#include "archive/File.h"

#include <algorithm>

namespace lbxtool {

namespace {

// Where the header area holds the entry count and the offsets, as the
// library lays it out:
//
//   0  count (2)   2  signature (4)   6  version (2)   8  offsets (4 each, count + 1)
constexpr std::size_t COUNT_OFFSET = 0;
constexpr std::size_t COUNT_SIZE = 2;
constexpr std::size_t TABLE_OFFSET = 8;
constexpr std::size_t OFFSET_SIZE = 4;

} // namespace

ArchiveHeader readHeader(const std::string& path)
{
    ArchiveHeader header;
    header.valid = zorv2::Lbx::File::header(path, &header.error, &header.offsets, &header.tagged);
    return header;
}

std::string withoutOffsets(std::string area, std::size_t entries)
{
    // Taken out, not zeroed: what follows the offsets moves with their
    // number, and the zeros that fill the area to its end grow and shrink.
    if (area.size() > TABLE_OFFSET)
        area.erase(TABLE_OFFSET, (entries + 1) * OFFSET_SIZE);
    area.erase(COUNT_OFFSET, std::min(COUNT_SIZE, area.size()));
    area.erase(area.find_last_not_of('\0') + 1);
    return area;
}

} // namespace lbxtool
