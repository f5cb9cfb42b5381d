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

void zero(std::string& area, std::size_t from, std::size_t size)
{
    if (from < area.size())
        area.replace(from, std::min(size, area.size() - from), std::min(size, area.size() - from), '\0');
}

} // namespace

ArchiveHeader readHeader(const std::string& path)
{
    ArchiveHeader header;
    header.valid = zorv2::Lbx::File::header(path, &header.error, &header.offsets, &header.tagged);
    return header;
}

std::string withoutOffsets(std::string area, std::size_t entries)
{
    zero(area, COUNT_OFFSET, COUNT_SIZE);
    zero(area, TABLE_OFFSET, (entries + 1) * OFFSET_SIZE);
    return area;
}

} // namespace lbxtool
