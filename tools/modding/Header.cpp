#include "tools/modding/Header.h"

#include "archive/File.h"

#include <algorithm>
#include <cstdint>

namespace lbxtool {

namespace {

// Where the header area holds the entry count and the offsets, as the
// library lays it out:
//
//   0  count (2)   2  signature (4)   6  version (2)   8  offsets (4 each, count + 1)
//   .  tag word "ZORV" (4), written up to 507 entries   .  zeros up to 2048
constexpr std::size_t COUNT_OFFSET = 0;
constexpr std::size_t COUNT_SIZE = 2;
constexpr std::size_t SIGNATURE_OFFSET = 2;
constexpr std::uint32_t SIGNATURE = 0x0000FEAD;
constexpr std::size_t TABLE_OFFSET = 8;
constexpr std::size_t OFFSET_SIZE = 4;
constexpr std::uint32_t TAG_WORD = 0x56524F5A;
constexpr std::size_t WRITER_TAG_LIMIT = 507;

void put(std::string& area, std::size_t at, std::uint64_t value, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        area[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

std::size_t countIn(const std::string& area)
{
    return static_cast<unsigned char>(area[COUNT_OFFSET]) | static_cast<unsigned char>(area[COUNT_OFFSET + 1]) << 8;
}

} // namespace

ArchiveHeader readHeader(const std::string& path)
{
    ArchiveHeader header;
    header.valid = zorv2::Lbx::File::header(path, &header.error, &header.offsets, &header.tagged);
    return header;
}

std::string writtenHeader(const std::vector<std::size_t>& sizes)
{
    std::string area(HEADER_AREA_SIZE, '\0');
    put(area, COUNT_OFFSET, sizes.size(), COUNT_SIZE);
    put(area, SIGNATURE_OFFSET, SIGNATURE, sizeof SIGNATURE);
    std::uint64_t offset = HEADER_AREA_SIZE;
    std::size_t at = TABLE_OFFSET;
    put(area, at, offset, OFFSET_SIZE);
    for (const std::size_t size : sizes) {
        offset += size;
        put(area, at += OFFSET_SIZE, offset, OFFSET_SIZE);
    }
    if (sizes.size() <= WRITER_TAG_LIMIT)
        put(area, at + OFFSET_SIZE, TAG_WORD, sizeof TAG_WORD);
    return area;
}

bool sameTable(const std::string& one, const std::string& other)
{
    if (one.size() < HEADER_AREA_SIZE || other.size() < HEADER_AREA_SIZE || countIn(one) != countIn(other))
        return false;
    const std::size_t table = (countIn(one) + 1) * OFFSET_SIZE;
    return one.compare(COUNT_OFFSET, COUNT_SIZE, other, COUNT_OFFSET, COUNT_SIZE) == 0 &&
           one.compare(TABLE_OFFSET, table, other, TABLE_OFFSET, table) == 0;
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
