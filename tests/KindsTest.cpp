#include "kinds/Empty.h"
#include "kinds/Text.h"
#include "tests/support/Fixtures.h"
#include "tests/support/Verdict.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>

using zorv2::Lbx::Content;
using fixtures::entryOf;
using namespace std::string_literals;

namespace {

const std::string marker = "cats rule dogs drool\r\n";
const std::string soundHead = "RIFF\x09\0\0\0WAVEfmt "s;
const std::string raceHead = "\x0d\0\x1f\0"s;

// `size` bytes starting with `head`, zero behind it, with `value` at `at`.
std::string padded(std::size_t size, const std::string& head = "", std::size_t at = 0, char value = 0)
{
    std::string bytes = head + std::string(size - head.size(), '\0');
    if (value != 0)
        bytes[at] = value;
    return bytes;
}

TEST(Kinds, ClassificationOrderSettlesOverlaps)
{
    const struct {
        std::string what, bytes;
        Content::TYPE type;
    } cases[] = {
        {"marker", marker, Content::EMPTY},
        {"marker, one byte changed", padded(22, marker, 0, 'C'), Content::UNKNOWN},
        {"smallest sound", soundHead + "x", Content::SOUND},
        {"sound head alone", padded(16, soundHead, 4, 8), Content::UNKNOWN},
        {"RIFF length one short", padded(17, soundHead, 4, 8), Content::UNKNOWN},
        {"other first chunk", padded(17, soundHead, 12, 'd'), Content::UNKNOWN},
        {"3957 bytes", padded(3957), Content::LEADER},
        {"race, also a table", padded(407, raceHead), Content::RACE},
        {"table of 407 bytes", padded(407, "\1\0\x93\1\1"s), Content::TEXT},
        {"abcost, also a table", padded(56, "\1\0\x34\0"s), Content::ABCOST},
        {"57 bytes, 52 not zero", padded(57, "", 52, 'x'), Content::ABCOST},
        {"56 bytes ending non-zero, a table", padded(56, "\1\0\x34\0"s, 55, 'x'), Content::TEXT},
    };
    for (const auto& c : cases)
        EXPECT_EQ(entryOf(c.bytes)->type(), c.type) << c.what;
}

TEST(Kinds, RecordKindsNameThemselvesAndRefuseDebugCreation)
{
    const struct {
        std::string bytes, info, kind;
    } cases[] = {{soundHead + "x", "  sound         17    ", "sound"},
                 {padded(3957), " leader       3957    Leader", "leader"},
                 {padded(407, raceHead), "   race        407    Race", "race"},
                 {padded(56), " abcost         56    Abcost", "abcost"}};
    for (const auto& c : cases) {
        std::unique_ptr<Content> entry = entryOf(c.bytes);
        EXPECT_EQ(entry->info(), c.info);
        EXPECT_EQ(fixtures::thrownBy([&] { delete entry->debugCreate(); }),
                  "error: debug creation not implemented for " + c.kind + ", sorry.");
    }
}

TEST(Kinds, EmptyEntriesAreCreatedAndVerifiedByteForByte)
{
    Content none;
    EXPECT_EQ(none.typeStr(), "empty");
    EXPECT_EQ(none.data(), nullptr);
    Content copy(none);
    EXPECT_EQ(copy.type(), Content::EMPTY);
    EXPECT_EQ(copy.size(), 0u);
    EXPECT_NE(copy.data(), nullptr);
    for (bool withMarker : {false, true}) {
        std::unique_ptr<Content> created(Content::Empty::create(withMarker));
        const std::string bytes(created->data(), created->size());
        EXPECT_EQ(bytes, withMarker ? marker : "");
        std::unique_ptr<Content> again(created->debugCreate());
        EXPECT_EQ(std::string(again->data(), again->size()), bytes);
    }
}

TEST(Text, DecodesRecordsOrRefusesSizesThatDoNotFitTheHeader)
{
    const struct {
        std::string bytes;
        std::vector<std::string> strings;
    } cases[] = {{"\0\0\x64\0"s, {}}, {"\3\0\0\0"s, {"", "", ""}}, {"\2\0\5\0ab\0\0\0abcde"s, {"ab", "abcde"}},
                 {"\1\0\5\0a\0b\0\0"s, {"a"}}};
    for (const auto& c : cases) {
        // The strings are the table's own: bytes changed after construction
        // do not reach them.
        std::string bytes = c.bytes;
        Content::Text table("t", &bytes[0], static_cast<unsigned int>(bytes.size()), Content::TEXT);
        std::fill(bytes.begin(), bytes.end(), 'z');
        ASSERT_EQ(table.size(), c.strings.size());
        for (unsigned int i = 0; i < c.strings.size(); ++i)
            EXPECT_EQ(table.get(i), c.strings[i]);
        EXPECT_EQ(table.get(static_cast<unsigned int>(c.strings.size())), "");
    }
    // One byte short, too small, and 65535 x 65535 + 4, which leaves the range of int.
    for (std::string bytes : {"\2\0\5\0ab\0\0\0abcd"s, "\0\0\x64"s, "\xff\xff\xff\xff\0\0\0\0"s})
        EXPECT_FALSE(Content::Text("t", &bytes[0], static_cast<unsigned int>(bytes.size()), Content::TEXT).valid);
}

TEST(Text, CreateChoosesRecordLengthFromLongestStringAndReadsBack)
{
    const struct {
        std::vector<std::size_t> lengths;
        unsigned int textsize;
    } cases[] = {{{}, 100},       {{99, 1}, 100}, {{100}, 200},       {{199}, 200},
                 {{200, 3}, 200}, {{201}, 201},   {{65535}, 65535}};
    for (const auto& c : cases) {
        std::vector<std::string> strings;
        for (std::size_t length : c.lengths)
            strings.push_back(std::string(length, static_cast<char>('a' + strings.size())));
        std::unique_ptr<Content> created(Content::Text::create(strings));
        EXPECT_EQ(created->size(), 4 + strings.size() * c.textsize);
        EXPECT_EQ(Content::AbstractContent::read2(created->data(), 2), c.textsize);
        for (unsigned int i = 0; i < strings.size(); ++i)
            EXPECT_EQ(created->text()->get(i), strings[i]);
    }
    // The plain create writes whole records, the labelled form byte by byte:
    // the same bytes, a zero inside a string included.
    std::vector<std::string> strings = {"a\0b"s, std::string(150, 'c'), ""};
    std::unique_ptr<Content> created(Content::Text::create(strings));
    Content::Write labelled;
    Content::Text::create(labelled, strings);
    std::unique_ptr<char[]> bytes(labelled.gen());
    EXPECT_EQ(std::string(bytes.get(), labelled.size()), std::string(created->data(), created->size()));
    EXPECT_EQ(created->text()->get(0), "a");
    // 3953 bytes make the 3957 of a Leader; 65536 no longer fit "textsize".
    for (std::size_t length : {3953u, 65536u}) {
        std::vector<std::string> strings = {std::string(length, 'x')};
        EXPECT_EQ(fixtures::thrownBy([&] { delete Content::Text::create(strings); }), "bug in text creation, sorry");
    }
}

TEST(Text, DebugCreateReproducesCanonicalTablesAndReportsDifferences)
{
    std::vector<std::string> strings = {"first", "", "third"};
    std::unique_ptr<Content> canonical(Content::Text::create(strings));
    const struct {
        std::string bytes, report, failure;
    } cases[] = {
        {std::string(canonical->data(), canonical->size()), "", ""},
        // The longer records run past the stored entry: only the size follows.
        {"\1\0\5\0ab\0\0\0"s,
         "debug text - is   100, should be     5  'textsize'\ndebug text - is   104, should be     9  'size'\n",
         "debug text"},
        {"\1\0\x64\0a\0X"s + std::string(97, '\0'), "debug text - is     0, should be    88  'text fill'\n",
         "debug text"},
    };
    for (const auto& c : cases) {
        std::unique_ptr<Content> stored = entryOf(c.bytes);
        testing::internal::CaptureStderr();
        EXPECT_EQ(fixtures::thrownBy([&] {
                      std::unique_ptr<Content> again(stored->debugCreate());
                      EXPECT_EQ(std::string(again->data(), again->size()), c.bytes);
                  }),
                  c.failure);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.report);
        const fixtures::Verdict verdict = fixtures::verdictOf(*stored);
        EXPECT_EQ(verdict.failure, c.failure);
        EXPECT_EQ(verdict.report, c.report);
    }
}

} // namespace
