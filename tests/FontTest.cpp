#include "images/Font.h"
#include "images/Palette.h"
#include "tests/support/Exercise.h"
#include "tests/support/Fixtures.h"
#include "tests/support/Verdict.h"

#include <gtest/gtest.h>

#include <utility>

using namespace fixtures;

namespace {

constexpr unsigned int HEADER_SIZE = 9116, OFFSETS = 2972;
using Stored = std::vector<std::pair<unsigned int, unsigned int>>; // table position, stored offset

// Constants and fills in place, everything else 0, `glyphBytes` behind the header.
Bytes fontBytes(unsigned int glyphBytes, const Stored& stored = {})
{
    Bytes bytes(HEADER_SIZE + glyphBytes, '\0');
    bytes[0] = 25, bytes[4] = 50;
    std::fill(bytes.begin() + 114, bytes.begin() + 363, 8);
    for (const auto& [position, value] : stored)
        bytes.replace(OFFSETS + 4 * position, 4, le32(value));
    return bytes;
}

} // namespace

TEST(Font, RecognisedByConstantsAndCheckedFillsOnly)
{
    struct Case { unsigned int at; char value; bool font; };
    const Case cases[] = {
        {0, 26, false}, {4, 51, false},  {15, 1, false},  {51, 1, false},  {60, 1, false},  {113, 1, false},
        {114, 0, false}, {362, 0, false}, {8, 1, true},    {14, 1, true},   {52, 1, true},   {59, 1, true},
        {363, 1, true},  {1387, 1, true}, {1400, 1, true}, {1435, 1, true}, {9115, 1, true},
    };
    for (const Case& c : cases) {
        Bytes bytes = fontBytes(0);
        bytes[c.at] = c.value;
        EXPECT_EQ(entryOf(bytes)->type() == Content::FONT, c.font) << "byte " << c.at;
    }
    Bytes tooShort = fontBytes(0);
    tooShort.pop_back();
    EXPECT_NE(entryOf(tooShort)->type(), Content::FONT);
}

TEST(Font, CreatedHeaderReadsBackAndVerifies)
{
    unsigned short heights[6] = {0, 1, 65535, 300, 12, 2};
    unsigned char widths[1536];
    for (unsigned int i = 0; i < 1536; ++i)
        widths[i] = static_cast<unsigned char>(i);
    std::unique_ptr<Content> created(Content::Font::create(nullptr, heights, widths, nullptr));
    ASSERT_EQ(created->type(), Content::FONT);
    ASSERT_EQ(created->size(), HEADER_SIZE);
    Content::Font* font = created->font();
    std::vector<unsigned int> heightsRead, widthsRead, offsetsRead;
    for (unsigned int f = 0; f < 6; ++f) {
        heightsRead.push_back(font->height(f));
        for (unsigned int g = 0; g < 256; ++g)
            widthsRead.push_back(font->width(f, g));
        for (unsigned int g = 0; g <= 256; ++g)
            offsetsRead.push_back(font->offset(f, g));
    }
    EXPECT_EQ(heightsRead, std::vector<unsigned int>(heights, heights + 6));
    EXPECT_EQ(widthsRead, std::vector<unsigned int>(widths, widths + 1536));
    EXPECT_EQ(offsetsRead, std::vector<unsigned int>(6 * 257, HEADER_SIZE));
    // Width 3 (glyph 3 of font 5) by height 2, all transparent.
    std::unique_ptr<unsigned char[]> blank(font->glyph(5, 3));
    EXPECT_EQ(pixelsOf(blank.get(), 6), Pixels(24, 0));

    // Each verifying run installs a palette of the font's own, which the next
    // run and then a caller's palette replace: a leak or a double free shows
    // under the sanitizers.
    EXPECT_NO_THROW(exercise::verifies(*created));
    EXPECT_NO_THROW(exercise::verifies(*created));
    auto callers = fakePalette();
    font->setPalette(callers.get());
}

TEST(Font, StoredZeroStepsBackToTheGlyphBefore)
{
    std::unique_ptr<Content> content = entryOf(fontBytes(40, {{66, 5}, {67, 17}}));
    Content::Font* font = content->font();
    EXPECT_EQ(font->offset(0, 65), 9116u);
    EXPECT_EQ(font->offset(0, 66), 9121u);
    EXPECT_EQ(font->offset(0, 67), 9133u);
    EXPECT_EQ(font->offset(0, 68), 9133u);
    EXPECT_EQ(font->offset(0, 256), 9133u); // glyph 0 of font 1 stores 0: back into font 0
    EXPECT_EQ(font->offset(1, 0), 9116u);
    EXPECT_EQ(font->offset(5, 256), 9156u);
    // Indices past the tables read nothing and answer the end of the entry.
    EXPECT_EQ(font->offset(0, 257), 9156u);
    EXPECT_EQ(font->offset(6, 0), 9156u);

    std::unique_ptr<Content> next = entryOf(fontBytes(40, {{256, 7}}));
    EXPECT_EQ(next->font()->offset(0, 256), 9123u);
    EXPECT_EQ(next->font()->offset(1, 1), 9123u);
}

// The first glyph of non-zero length in file order stops the verifying. Its
// length comes from the stored offsets as they stand, also where they point
// past the entry, which is never read there.
TEST(Font, VerifyingMeasuresEachGlyphByItsStoredOffsets)
{
    struct Case { const char* what; unsigned int glyphBytes; Stored stored; std::string failure, line; };
    const Case cases[] = {
        {"glyph 65 runs up to 66", 40, {{66, 5}, {67, 17}}, "debug font 0 - glyph  65",
         "is     0, should be     5  'size'\n"},
        {"no glyph bytes, glyph 66 past the end", 0, {{66, 5}}, "debug font 0 - glyph  65",
         "is     0, should be     5  'size'\n"},
        {"backwards", 10, {{0, 8}, {1, 3}}, "debug font 5 - glyph 255", "is     0, should be    10  'size'\n"},
        {"end behind the entry", 10, {{0, 4}, {1, 1000}}, "debug font 0 - glyph   0",
         "is     0, should be   996  'size'\n"},
        {"start behind the entry", 10, {{0, 4000}, {1, 5000}}, "debug font 0 - glyph   0",
         "is     0, should be  1000  'size'\n"},
        // 0xFFFFFFFF + 9116 wraps to 9115: from the last byte of the header.
        {"start wraps around", 0, {{0, 0xFFFFFFFF}, {1, 1000}}, "debug font 0 - glyph   0",
         "is     0, should be  1001  'size'\n"},
        {"every glyph at the end", 10, {{0, 10}, {256, 10}, {512, 10}, {768, 10}, {1024, 10}, {1280, 10}},
         "debug font", "is  9116, should be  9126  'size'\n"},
    };
    for (const Case& c : cases) {
        std::unique_ptr<Content> content = entryOf(fontBytes(c.glyphBytes, c.stored));
        ASSERT_EQ(content->type(), Content::FONT) << c.what;
        const Verdict verdict = verdictOf(*content);
        EXPECT_EQ(verdict.failure, c.failure) << c.what;
        EXPECT_EQ(verdict.report, c.failure + " - " + c.line) << c.what;
    }
}
