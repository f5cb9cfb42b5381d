#include "kinds/Text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <memory>

namespace zorv2 {
namespace Lbx {

namespace {

// A table of strings, header fields little-endian:
//
//   0  nr        2              number of records
//   2  textsize  2              bytes in one record
//   4  records   nr x textsize  record i at 4 + i * textsize
//
// A string ends at its record's first zero byte, or fills the record without
// a terminator; whatever follows that zero is ignored when reading.
constexpr unsigned int NR_OFFSET = 0;
constexpr unsigned int TEXTSIZE_OFFSET = 2;
constexpr unsigned int RECORDS_OFFSET = 4;

// Record lengths chosen by create: the two standard ones keep a terminator
// behind every string; beyond them the longest string sets the length alone.
constexpr std::size_t SHORT_RECORD = 100;
constexpr std::size_t LONG_RECORD = 200;

std::size_t chosenRecordLength(std::size_t longest)
{
    if (longest < SHORT_RECORD)
        return SHORT_RECORD;
    if (longest < LONG_RECORD)
        return LONG_RECORD;
    return longest;
}

// A little-endian 16-bit field, cut to its width.
void putWord(char* at, std::size_t value)
{
    at[0] = static_cast<char>(value & 0xFF);
    at[1] = static_cast<char>(value >> 8 & 0xFF);
}

std::size_t longestLength(const std::vector<std::string>& strings)
{
    std::size_t longest = 0;
    for (const std::string& text : strings)
        longest = std::max(longest, text.size());
    return longest;
}

} // namespace

Content::Text::Text(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    if (size < RECORDS_OFFSET)
        return;
    const unsigned int nr = read2(NR_OFFSET);
    const unsigned int textsize = read2(TEXTSIZE_OFFSET);
    // Widened before multiplying: the 16-bit fields would otherwise be
    // promoted to int, whose range their product can leave. The match with
    // the size is also what keeps every record inside the entry.
    if (std::uint64_t{nr} * textsize + RECORDS_OFFSET != size)
        return;
    valid = true;
    keepStrings(nr, textsize);
}

void Content::Text::keepStrings(unsigned int nr, unsigned int textsize)
{
    // Measured first, so that the strings are copied once, into a block of
    // their exact size.
    ends.resize(nr);
    unsigned int total = 0;
    for (unsigned int record = 0; record < nr; ++record) {
        const char* begin = data + RECORDS_OFFSET + std::size_t{record} * textsize;
        const auto* terminator = static_cast<const char*>(std::memchr(begin, '\0', textsize));
        total += terminator ? static_cast<unsigned int>(terminator - begin) : textsize;
        ends[record] = total;
    }
    characters.reserve(total);
    for (unsigned int record = 0; record < nr; ++record) {
        const char* begin = data + RECORDS_OFFSET + std::size_t{record} * textsize;
        characters.append(begin, ends[record] - startOf(record));
    }
}

Content::Text::~Text() = default;

std::string Content::Text::info()
{
    return "";
}

std::string Content::Text::get(unsigned int index)
{
    // An index past the last record has no string; nothing outside the
    // strings is read for it.
    if (index >= ends.size())
        return "";
    const unsigned int begin = startOf(index);
    return characters.substr(begin, ends[index] - begin);
}

unsigned int Content::Text::size()
{
    return static_cast<unsigned int>(ends.size());
}

unsigned int Content::Text::startOf(unsigned int index)
{
    return index == 0 ? 0 : ends[index - 1];
}

Content* Content::Text::create(std::vector<std::string>& strings)
{
    // Nothing is verified here, so the entry is laid out in one block of its
    // size instead of byte by byte under labels that no one reads; the bytes
    // are those of the labelled form below, which verifying holds against
    // every table.
    const std::size_t textsize = chosenRecordLength(longestLength(strings));
    const std::size_t size = RECORDS_OFFSET + strings.size() * textsize;
    std::unique_ptr<char[]> block(new char[size]());
    // The header's fields cut more than 16 bits as the labelled form does; the
    // bytes then no longer fit the header, and genContent refuses them.
    putWord(block.get() + NR_OFFSET, strings.size());
    putWord(block.get() + TEXTSIZE_OFFSET, textsize);
    char* record = block.get() + RECORDS_OFFSET;
    for (const std::string& text : strings) {
        std::copy_n(text.data(), std::min(text.size(), textsize), record);
        record += textsize;
    }
    return genContent(block.release(), static_cast<unsigned int>(size), TEXT);
}

void Content::Text::create(Write& write, std::vector<std::string>& strings)
{
    const std::size_t textsize = addHeader(write, strings);
    // Labels built once, not once a byte.
    const std::string character = "text";
    const std::string fill = "text fill";
    for (const std::string& text : strings) {
        for (std::size_t position = 0; position < textsize; ++position) {
            if (position < text.size())
                write.add1(character, static_cast<unsigned char>(text[position]));
            else
                write.add1(fill, 0);
        }
    }
}

std::size_t Content::Text::addHeader(Write& write, const std::vector<std::string>& strings)
{
    const std::size_t textsize = chosenRecordLength(longestLength(strings));
    // More than 16 bits of either value are cut in its field; the bytes then
    // no longer fit the header, and genContent refuses them.
    write.add2("nr", static_cast<unsigned short>(strings.size()));
    write.add2("textsize", static_cast<unsigned short>(textsize));
    return textsize;
}

Content* Content::Text::createDebug(Content* content)
{
    return createDebug(content, std::cerr);
}

Content* Content::Text::createDebug(Content* content, std::ostream& report)
{
    Text* table = content->text();
    std::vector<std::string> strings;
    strings.reserve(table->size());
    for (unsigned int index = 0; index < table->size(); ++index)
        strings.push_back(table->get(index));

    if (Content* same = rebuiltAsIs(content, [&strings] { return create(strings); }))
        return same;
    Write write;
    write.setDebug("text", content->data(), content->size(), report);
    create(write, strings);
    return genContent(write, TEXT);
}

} // namespace Lbx
} // namespace zorv2
