#include "archive/File.h"

#include "entry/AbstractContent.h"

#include <memory>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

namespace {

// The header area, all fields little-endian:
//
//   0  count       2        entries, at most 509
//   2  signature   4        AD FE 00 00
//   6  version     2        0
//   8  offsets     4 x (count + 1)   offset[0] = 2048, offset[count] = file size
//   .  tag word    4        "ZORV" right behind the table, optional
//   .  fill        up to 2048
//
// Entry i runs from offset[i] up to offset[i + 1]; entries adjoin in table order.
constexpr unsigned int HEADER_AREA_SIZE = 2048;
constexpr unsigned int COUNT_OFFSET = 0;
constexpr unsigned int SIGNATURE_OFFSET = 2;
constexpr unsigned int VERSION_OFFSET = 6;
constexpr unsigned int TABLE_OFFSET = 8;
constexpr unsigned int OFFSET_SIZE = 4;
constexpr unsigned int MAX_ENTRIES = 509;
constexpr unsigned int SIGNATURE = 0x0000FEAD;
constexpr unsigned int TAG_WORD = 0x56524F5A;
// The reader looks for a tag word only up to this count of entries.
constexpr unsigned int READER_TAG_LIMIT = 506;

std::runtime_error cannotOpen(const std::string& path)
{
    return std::runtime_error("could not open '" + path + "'");
}

std::runtime_error invalidIndex(unsigned int index, const std::string& path)
{
    return std::runtime_error("invalid index '" + std::to_string(index) + "' for " + path);
}

bool refuse(std::string* error, const std::string& path, const std::string& reason)
{
    if (error)
        *error = "'" + path + "' is not a valid tesk lbx file (" + reason + ")";
    return false;
}

} // namespace

bool File::header(std::string path, std::string* error, std::vector<unsigned int>* offsets, bool* tagged)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in.good())
        throw cannotOpen(path);
    const auto fileSize = static_cast<unsigned int>(in.tellg());
    if (fileSize < HEADER_AREA_SIZE)
        return refuse(error, path, "too small");

    // Every field lies in the header area, so one read serves all checks. A
    // stream that opens but cannot be read (a directory) counts as unopenable.
    char area[HEADER_AREA_SIZE];
    in.seekg(0);
    if (!in.read(area, HEADER_AREA_SIZE))
        throw cannotOpen(path);

    const unsigned int count = Content::AbstractContent::read2(area, COUNT_OFFSET);
    if (count > MAX_ENTRIES)
        return refuse(error, path, "invalid file count");
    const unsigned int signature = Content::AbstractContent::read4(area, SIGNATURE_OFFSET);
    const unsigned int version = Content::AbstractContent::read2(area, VERSION_OFFSET);

    std::vector<unsigned int> table(count + 1);
    for (unsigned int i = 0; i <= count; ++i) {
        table[i] = Content::AbstractContent::read4(area, TABLE_OFFSET + OFFSET_SIZE * i);
        if (i == 0 && table[i] != HEADER_AREA_SIZE)
            return refuse(error, path, "first offset is invalid");
        if (i > 0 && (table[i] < table[i - 1] || table[i] > fileSize))
            return refuse(error, path, "offset " + std::to_string(i) + " is invalid");
    }
    if (table[count] != fileSize)
        return refuse(error, path, "invalid size");
    if (signature != SIGNATURE)
        return refuse(error, path, "invalid signature");
    if (version != 0)
        return refuse(error, path, "invalid version");

    if (offsets)
        offsets->insert(offsets->end(), table.begin(), table.end());
    if (tagged) {
        const unsigned int tagOffset = TABLE_OFFSET + OFFSET_SIZE * (count + 1);
        *tagged = count <= READER_TAG_LIMIT && Content::AbstractContent::read4(area, tagOffset) == TAG_WORD;
    }
    return true;
}

bool File::check(std::string path)
{
    return header(std::move(path), nullptr, nullptr, nullptr);
}

unsigned int File::size(std::string path)
{
    std::string error;
    std::vector<unsigned int> offsets;
    if (!header(path, &error, &offsets, nullptr))
        throw std::runtime_error(error);
    return static_cast<unsigned int>(offsets.size() - 1);
}

Content* File::at(std::string path, unsigned int index)
{
    std::string error;
    std::vector<unsigned int> offsets;
    if (!header(path, &error, &offsets, nullptr))
        throw std::runtime_error(error);
    if (index >= offsets.size() - 1)
        throw invalidIndex(index, path);

    const unsigned int length = offsets[index + 1] - offsets[index];
    std::unique_ptr<char[]> block(new char[length]);
    std::ifstream in(path, std::ios::binary);
    if (!in.good())
        throw cannotOpen(path);
    in.seekg(offsets[index]);
    if (!in.read(block.get(), length))
        throw cannotOpen(path);

    auto* content = new Content(path + "[" + std::to_string(index) + "]", block.get(), length);
    block.release();
    return content;
}

} // namespace Lbx
} // namespace zorv2
