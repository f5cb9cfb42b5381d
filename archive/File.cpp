#include "archive/File.h"

#include "entry/AbstractContent.h"
#include "entry/Write.h"

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
// The reader looks for a tag word up to 506 entries, the writer writes one up
// to 507: at 507 the word ends 4 bytes short of 2048, where the reader does
// not look; at 508 it would still fit, but neither side uses that room.
constexpr unsigned int READER_TAG_LIMIT = 506;
constexpr unsigned int WRITER_TAG_LIMIT = 507;

std::runtime_error cannotOpen(const std::string& path)
{
    return std::runtime_error("could not open '" + path + "'");
}

std::runtime_error invalidIndex(unsigned int index, const std::string& path)
{
    return std::runtime_error("invalid index '" + std::to_string(index) + "' for " + path);
}

// Every form of push_back checks first, so that a refused entry stays
// entirely the caller's.
void ensureRoom(const std::vector<Content*>& entries)
{
    if (entries.size() >= MAX_ENTRIES)
        throw std::runtime_error("lbx files cannot contain more than " + std::to_string(MAX_ENTRIES) + " files");
}

bool refuse(std::string* error, const std::string& path, const std::string& reason)
{
    if (error)
        *error = "'" + path + "' is not a valid tesk lbx file (" + reason + ")";
    return false;
}

} // namespace

File::File() : isTagged(true)
{
    // With room for every entry reserved, appending never reallocates and so
    // never throws once a push_back has passed ensureRoom.
    entries.reserve(MAX_ENTRIES);
}

File::File(std::string path) : File()
{
    open(std::move(path));
}

File::~File()
{
    clear();
}

void File::open(std::string path)
{
    // The path is taken first and stays even when the archive is refused.
    filePath = std::move(path);
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagWord = false;
    if (!header(filePath, &error, &offsets, &tagWord))
        throw std::runtime_error(error);

    clear();
    isTagged = tagWord;
    std::ifstream in(filePath, std::ios::binary);
    if (!in.good())
        throw cannotOpen(filePath);
    in.seekg(HEADER_AREA_SIZE);
    // Entries adjoin in table order, so one read follows the other.
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        const unsigned int length = offsets[i] - offsets[i - 1];
        std::unique_ptr<char[]> block(new char[length]);
        if (!in.read(block.get(), length))
            throw cannotOpen(filePath);
        push_back(new Content(filePath + "[" + std::to_string(i - 1) + "]", block.get(), length));
        block.release();
    }
}

void File::clear()
{
    for (Content* entry : entries)
        delete entry;
    entries.clear();
    isTagged = true;
}

Content*& File::at(unsigned int index)
{
    if (index >= entries.size())
        throw invalidIndex(index, filePath);
    return entries[index];
}

Content*& File::operator[](unsigned int index)
{
    return at(index);
}

unsigned int File::size()
{
    return static_cast<unsigned int>(entries.size());
}

bool File::tagged()
{
    return isTagged;
}

std::string File::path()
{
    return filePath;
}

void File::push_back(Content* content)
{
    // The one door into the list: every other form ends here.
    ensureRoom(entries);
    entries.push_back(content);
}

void File::push_back(char* data, unsigned int size)
{
    ensureRoom(entries);
    entries.push_back(new Content("added content", data, size));
}

void File::push_back(std::string path)
{
    ensureRoom(entries);
    entries.push_back(new Content(std::move(path)));
}

void File::push_back(std::ifstream& stream, unsigned int begin, unsigned int end)
{
    ensureRoom(entries);
    // begin and end give the length only; the caller has positioned the
    // stream. An end below begin gives an empty entry rather than a 4 GiB one.
    const unsigned int length = end > begin ? end - begin : 0;
    std::unique_ptr<char[]> block(new char[length]());
    stream.read(block.get(), length);
    push_back(block.get(), length);
    block.release();
}

void File::replace(unsigned int index, Content* content)
{
    // The former entry leaves the archive's ownership; the caller, who could
    // fetch it with at() first, deals with it.
    entries[index] = content;
}

void File::write(std::string path)
{
    Content::Write image;
    image.add2("size", static_cast<unsigned short>(entries.size()));
    image.add4("signature?", SIGNATURE);
    image.add2("version?", 0);
    image.add4("offset0", HEADER_AREA_SIZE);
    unsigned int offset = HEADER_AREA_SIZE;
    for (Content* entry : entries) {
        offset += entry->size();
        image.add4("offset", offset);
    }
    if (entries.size() <= WRITER_TAG_LIMIT) {
        isTagged = true;
        image.add4("zorv", TAG_WORD);
    }
    while (image.size() < HEADER_AREA_SIZE)
        image.add1("fill", 0);
    for (Content* entry : entries)
        image.add(entry->data(), entry->size());
    // The whole image stands in memory before the target is opened, so
    // writing over the archive's own source is safe.
    image.write(std::move(path));
}

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
