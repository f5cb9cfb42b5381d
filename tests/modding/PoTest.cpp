// PO files as gettext writes and reads them: wrapping that msgcat leaves as
// it is, and the reading of what translators' tools hand back.
#include "tests/support/Fixtures.h"
#include "tools/modding/Po.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

using namespace lbxtool;
using fixtures::thrownBy;

TEST(Po, StringsAreCutAsGettextCutsThem)
{
    EXPECT_EQ(poString("msgid", "Sol"), "msgid \"Sol\"\n");
    EXPECT_EQ(poString("msgid", ""), "msgid \"\"\n");
    EXPECT_EQ(poString("msgstr", "a \"b\" \\x01\n"), "msgstr \"a \\\"b\\\" \\\\x01\\n\"\n");
    EXPECT_EQ(poString("msgid", "one\ntwo"), "msgid \"\"\n\"one\\n\"\n\"two\"\n");
    const std::string words = "A yellow star of middling size, home of a race that learned to sail between the "
                              "stars late and quickly.";
    EXPECT_EQ(poString("msgid", words),
              "msgid \"\"\n\"A yellow star of middling size, home of a race that learned to sail between \"\n"
              "\"the stars late and quickly.\"\n");
}

TEST(Po, WhatItWritesGettextLeavesByteForByte)
{
    if (std::system("command -v msgcat >/dev/null") != 0)
        GTEST_SKIP() << "gettext's msgcat is not installed (scripts/setup installs it)";
    // Words, blanks, escapes, quotes, letters of two columns and box drawing,
    // at every length around the breaks.
    const char* pieces[] = {"a", "word", "longerwordstill", " ", "  ", "-", "\\", "\"", "\xC3\xA9", "\\x01",
                            "\\\\x0A", ",", ".", "!", "(", ")", "/", "\n", "\t", "1234567890", "\xC2\xAB",
                            "\xE2\x95\xAC", "\xE6\xBC\xA2\xE5\xAD\x97", " - ", "'", ";", "\xE2\x80\x94"};
    std::mt19937 random(30);
    std::vector<PoEntry> entries(1);
    entries[0].str = "Content-Type: text/plain; charset=UTF-8\nContent-Transfer-Encoding: 8bit\n";
    for (unsigned int i = 0; i < 400; ++i) {
        PoEntry entry;
        entry.hasContext = true;
        entry.context = "A.LBX 0:" + std::to_string(i);
        for (unsigned int k = random() % 50; k > 0; --k)
            entry.id += pieces[random() % (sizeof pieces / sizeof *pieces)];
        entry.str = i % 3 == 0 ? entry.id : "";
        entry.fuzzy = i % 7 == 0;
        entry.comments = {"at most 99 bytes"};
        entry.references = {"A/A_000.txt:" + std::to_string(i + 1)};
        entries.push_back(entry);
    }
    const fixtures::TempDir dir;
    const std::string written = poText(entries);
    const std::string path = dir.file("a.po", written);
    ASSERT_EQ(std::system(("msgcat '" + path + "' -o '" + dir.path("b.po") + "'").c_str()), 0);
    EXPECT_TRUE(fixtures::readFile(dir.path("b.po")) == written)
        << std::system(("diff '" + path + "' '" + dir.path("b.po") + "' | head -30").c_str());
    const std::vector<PoEntry> read = parsePo(written, path);
    ASSERT_EQ(read.size(), entries.size());
    for (std::size_t i = 0; i < read.size(); ++i)
        EXPECT_TRUE(read[i].id == entries[i].id && read[i].str == entries[i].str &&
                    read[i].fuzzy == (entries[i].fuzzy && !entries[i].str.empty()))
            << i;
}

TEST(Po, ReadingTakesWhatTranslatorsToolsWrite)
{
    const std::string po = "# translator's note\n#, fuzzy\nmsgid \"\"\nmsgstr \"Content-Type: text/plain; "
                           "charset=UTF-8\\n\"\n\n#. at most 9 bytes\n#: A/A_000.txt:1\n#, fuzzy, c-format\n"
                           "#| msgid \"old\"\nmsgctxt \"A.LBX 0:0\"\nmsgid \"a\\tb\"\nmsgstr \"\"\n\"\\101\\x42\\\"\"\n"
                           "\n#~ msgctxt \"A.LBX 0:9\"\n#~ msgid \"gone\"\n#~ msgstr \"weg\"\n"
                           "\n#. at most 9 bytes\nmsgctxt \"A.LBX 0:1\"\nmsgid \"b\"\nmsgstr \"c\"\n";
    const std::vector<PoEntry> entries = parsePo(po, "x.po");
    ASSERT_EQ(entries.size(), 3u) << "an obsolete entry is no entry";
    EXPECT_EQ(entries[2].str, "c") << "the entry behind an obsolete one is one";
    EXPECT_EQ(headerField(entries[0].str, "Content-Type"), "text/plain; charset=UTF-8");
    EXPECT_EQ(entries[1].context, "A.LBX 0:0");
    EXPECT_EQ(entries[1].id, "a\tb");
    EXPECT_EQ(entries[1].str, "AB\"");
    EXPECT_TRUE(entries[1].fuzzy);
    EXPECT_EQ(entries[1].line, 10u);
    EXPECT_EQ(entries[1].strLine, 12u);
    EXPECT_EQ(entries[1].comments, std::vector<std::string>{"at most 9 bytes"});
}

TEST(Po, WhatIsNotPoIsRefusedWithItsLine)
{
    const struct {
        std::string po, message;
    } cases[] = {
        {"msgid \"a\"\n", "'x.po' line 1: the file ends inside an entry"},
        {"msgid \"a\"\nmsgid \"b\"\n", "'x.po' line 2: msgid where msgstr should follow"},
        {"msgstr \"a\"\n", "'x.po' line 1: msgstr without msgid before it"},
        {"msgid \"a\nmsgstr \"\"\n", "'x.po' line 1: a string without its closing quote"},
        {"msgid \"a\" b\nmsgstr \"\"\n", "'x.po' line 1: something after the string's closing quote"},
        {"msgid \"a\\q\"\nmsgstr \"\"\n", "'x.po' line 1: invalid escape '\\q' in a string"},
        {"msgid a\nmsgstr \"\"\n", "'x.po' line 1: a string in double quotes should follow"},
        {"\"a\"\n", "'x.po' line 1: a string that follows no keyword"},
        {"msgid \"a\"\nmsgid_plural \"b\"\n", "'x.po' line 2: plural forms; a text table's records have none"},
        {"msgid \"a\"\nmsgtext \"b\"\n", "'x.po' line 2: 'msgtext' is no PO keyword"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy([&] { parsePo(c.po, "x.po"); }), c.message) << c.po;
}
