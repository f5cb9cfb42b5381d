#include "tests/support/Fixtures.h"
#include "tools/modding/TextEscape.h"

#include <gtest/gtest.h>

using lbxtool::escapeText;
using lbxtool::unescapeText;

TEST(TextEscape, WritesEachByteInItsOneForm)
{
    const struct {
        std::string record, line;
    } cases[] = {
        {"", ""},
        {"Sol ~!", "Sol ~!"},
        {"a\\b", "a\\\\b"},
        {"one\ntwo\r\tend", "one\\ntwo\\r\\tend"},
        {std::string("\x01\x1F\x7F", 3), "\\x01\\x1F\\x7F"},
        {"\x80\xC3\xA9\xFF", "\\x80\\xC3\\xA9\\xFF"},
        {"\\x41", "\\\\x41"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(escapeText(c.record), c.line);
        EXPECT_EQ(unescapeText(c.line), c.record) << c.line;
    }
    EXPECT_EQ(unescapeText("\\xc3\\xa9"), "\xC3\xA9");
}

TEST(TextEscape, EveryByteValueSurvivesAndTheLineIsPlainAscii)
{
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    const std::string line = escapeText(all);
    for (const char c : line)
        EXPECT_TRUE(c >= 0x20 && c <= 0x7E) << int(c);
    EXPECT_EQ(unescapeText(line), all);
}

TEST(TextEscape, RefusesAnythingButItsOwnFormsAndSaysWhere)
{
    const struct {
        std::string line, message;
    } cases[] = {
        {"abc\\", "a backslash ends the line at column 4"},
        {"\\q", "unknown escape '\\q' at column 1"},
        {"ab\\x4", "\\x needs 2 hex digits at column 3"},
        {"\\xG1", "\\x needs 2 hex digits at column 1"},
        {"\\x", "\\x needs 2 hex digits at column 1"},
        {"a\tb", "byte 9 must be escaped at column 2: write it \\t"},
        {"\xC3\xA9", "byte 195 must be escaped at column 1: write it \\xC3"},
        {"V\xE9ga", "byte 233 must be escaped at column 2: write it \\xE9"},
        {"x\\\x01", "a backslash before byte 1 at column 2"},
        {"ok\r", "byte 13 must be escaped at column 3: write it \\r"},
        {std::string("a\0", 2), "byte 0 must be escaped at column 2: write it \\x00"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fixtures::thrownBy([&] { unescapeText(c.line); }), c.message) << c.line;
}

// Where the escape of a record's byte stands in the line the user wrote,
// whatever forms the user chose for the bytes before it.
TEST(TextEscape, TheColumnOfARecordsByteInItsLine)
{
    const struct {
        std::string line;
        std::size_t byte, column;
    } cases[] = {
        {"abc", 0, 1},          {"abc", 2, 3},          {"\\x41b\\x00", 2, 6}, {"\\n\\\\\\x00", 2, 5},
        {"a\\X", 1, 2},         {"\\x4", 1, 4},         {"", 0, 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lbxtool::lineColumn(c.line, c.byte), c.column) << c.line << " byte " << c.byte;
}

TEST(TextEscape, LinesAreTakenAsEditorsMeanThem)
{
    const struct {
        std::string text;
        std::vector<std::string> lines;
    } cases[] = {
        {"a\nb\n\n", {"a", "b", ""}},          // the last line break begins no line, a blank line is one
        {"a\r\nb\r\n", {"a", "b"}},            // CRLF
        {"\xEF\xBB\xBF" "a\r\nb", {"a", "b"}}, // a byte-order mark first
        {"a\xEF\xBB\xBF\n", {"a\xEF\xBB\xBF"}}, // anywhere else it is the line's
        {"\xEF\xBB\xBF", {}},
        {"\n", {""}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lbxtool::textLines(c.text), c.lines) << c.text;
}
