// The charset: every byte back as it was, the letters as translators type
// them, composed or not, and the table files of text hackers.
#include "tests/support/Fixtures.h"
#include "tools/modding/Charset.h"

#include <gtest/gtest.h>

using namespace lbxtool;
using fixtures::thrownBy;

namespace {

std::string everyByte()
{
    std::string bytes;
    for (unsigned int b = 1; b < 256; ++b)
        bytes += static_cast<char>(b);
    return bytes;
}

} // namespace

TEST(Charset, EveryByteComesBackAsItWasInCodePage437)
{
    const Charset cp437 = Charset::codePage437();
    const std::string all = everyByte();
    EXPECT_EQ(cp437.encode(cp437.decode(all)), all);
    for (unsigned int b = 0; b < 256; ++b) {
        const std::string one(1, static_cast<char>(b));
        EXPECT_EQ(cp437.encode(cp437.decode(one)), one) << b;
        EXPECT_EQ(cp437.encode(cp437.decode("x" + one + "\\x41" + one)), "x" + one + "\\x41" + one) << b;
    }
}

TEST(Charset, CodePage437ShowsLettersAndEscapesControlCodes)
{
    const Charset cp437 = Charset::codePage437();
    EXPECT_EQ(cp437.decode("Caf\x82 \x01\x7F\xFF\\"), "Café \\x01\\x7F\\xFF\\\\");
    EXPECT_EQ(cp437.decode("\x80\x9C\xE1\xB0\xDB"), "Ç£ß░█");
    EXPECT_EQ(cp437.name(), "CP437");
    EXPECT_TRUE(cp437.builtIn());
}

TEST(Charset, ComposedAndDecomposedLettersFindTheSameByte)
{
    const Charset cp437 = Charset::codePage437();
    EXPECT_EQ(cp437.encode("Caf\xC3\xA9"), "Caf\x82");  // U+00E9
    EXPECT_EQ(cp437.encode("Cafe\xCC\x81"), "Caf\x82"); // e, U+0301
    // An escape is a byte of its own: an accent behind it has no letter to join.
    EXPECT_EQ(thrownBy([&] { cp437.encode("\\x45\xCC\x81"); }), "'\xCC\x81' (U+0301) is not in the charset CP437 at column 5");
}

TEST(Charset, WhatItCannotWriteIsRefusedWithItsColumn)
{
    const Charset cp437 = Charset::codePage437();
    const struct {
        std::string text, message;
    } cases[] = {
        {"Mo\xD1\x81kva", "'\xD1\x81' (U+0441) is not in the charset CP437 at column 3"},
        {"ab\\q", "a backslash stands alone (write \\\\ for one, \\xHH for a byte) at column 3"},
        {"ab\\x4", "\\x needs 2 hex digits at column 3"},
        {"tab\there", "(U+0009) is not in the charset CP437 at column 4"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy([&] { cp437.encode(c.text); }), c.message) << c.text;
}

TEST(Charset, ATableFileMapsBytesToItsLetters)
{
    const std::string table = "# a font with Cyrillic at the top\n80=\xD0\x90\n81=\xD0\x91\n"
                              "8283=\xD0\xA9\n84=th\n85=e\xCC\x81\n41=A\n42=B\n20= \n";
    const Charset charset = Charset::fromTable(table, "cyrillic.tbl", "fonts/cyrillic.tbl");
    EXPECT_EQ(charset.name(), "cyrillic.tbl");
    EXPECT_FALSE(charset.builtIn());
    EXPECT_EQ(charset.decode("\x80\x81 \x82\x83\x84\x85\x01"), "\xD0\x90\xD0\x91 \xD0\xA9th\xC3\xA9\\x01");
    EXPECT_EQ(charset.encode("\xD0\x90\xD0\x91 \xD0\xA9th\xC3\xA9"), "\x80\x81 \x82\x83\x84\x85");
    // Bytes the table does not map, or only as part of a longer one, come back.
    for (const std::string& bytes : {std::string("\x82\x82\x83\x83"), everyByte()})
        EXPECT_EQ(charset.encode(charset.decode(bytes)), bytes);
}

TEST(Charset, BytesThatWouldReadBackAsOthersAreEscaped)
{
    // "a" and "b" read back as the one byte of "ab"; an accent alone
    // composes with the letter before it.
    const Charset charset =
        Charset::fromTable("61=a\n62=b\n80=ab\n81=\xCC\x81\n65=e\n82=\xC3\xA9\n83=a\n", "x.tbl", "x.tbl");
    for (const std::string& bytes : {std::string("ab"), std::string("e\x81"), std::string("\x83"), std::string("a\x80")})
        EXPECT_EQ(charset.encode(charset.decode(bytes)), bytes) << charset.decode(bytes);
    EXPECT_EQ(charset.decode("\x83"), "\\x83");
}

TEST(Charset, ATableThatIsNotOneIsRefusedWithItsLine)
{
    const struct {
        std::string table, message;
    } cases[] = {
        {"41=A\nA=B\n", "'t.tbl' line 2: not a line of the form HEX=text (such as 82=é)"},
        {"41\n", "'t.tbl' line 1: not a line of the form HEX=text (such as 82=é)"},
        {"41=\n", "'t.tbl' line 1: no text after '='"},
        {"41=A\n41=B\n", "'t.tbl' line 2: 41 is given twice"},
        {"41=\xE9\n", "'t.tbl' line 1: the text is not UTF-8; save the table as UTF-8"},
        {"# nothing\n", "'t.tbl' holds no line of the form HEX=text"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy([&] { Charset::fromTable(c.table, "t.tbl", "t.tbl"); }), c.message) << c.table;
}
