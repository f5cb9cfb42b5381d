#include "archive/File.h"
#include "entry/Content.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>

using zorv2::Lbx::Content;
using zorv2::Lbx::File;
using namespace fixtures;

namespace {

void put32(std::string& bytes, std::size_t at, unsigned int value)
{
    bytes.replace(at, 4, le32(value));
}

struct Malformed {
    const char* what;
    std::function<void(std::string&)> damage;
    std::string reason;
};

} // namespace

TEST(Header, RefusesEachDamageWithItsReasonInCheckOrder)
{
    // Three entries of 4, 0 and 6 bytes: offsets 2048, 2052, 2052, 2058.
    const std::vector<Malformed> cases = {
        {"2047 bytes", [](std::string& b) { b.resize(2047); }, "too small"},
        {"count 510", [](std::string& b) { b.replace(0, 2, le16(510)); }, "invalid file count"},
        {"first offset", [](std::string& b) { put32(b, 8, 2049); }, "first offset is invalid"},
        {"offset below predecessor", [](std::string& b) { put32(b, 16, 2051); }, "offset 2 is invalid"},
        {"offset past the end", [](std::string& b) { put32(b, 12, 2059); }, "offset 1 is invalid"},
        {"middle offset past the end, last right",
         [](std::string& b) {
             b += "x";
             put32(b, 12, 2060);
             put32(b, 20, 2059);
         },
         "offset 1 is invalid"},
        {"byte behind the last entry", [](std::string& b) { b += "x"; }, "invalid size"},
        {"signature and first offset",
         [](std::string& b) {
             put32(b, 2, 0xBEEF);
             put32(b, 8, 0);
         },
         "first offset is invalid"},
        {"signature and version",
         [](std::string& b) {
             put32(b, 2, 0xBEEF);
             b.replace(6, 2, le16(1));
         },
         "invalid signature"},
        {"signature with a high byte", [](std::string& b) { put32(b, 2, 0x1FEAD); }, "invalid signature"},
        {"version", [](std::string& b) { b.replace(6, 2, le16(1)); }, "invalid version"},
    };
    TempDir dir;
    for (const Malformed& c : cases) {
        std::string bytes = archive({"abcd", "", "efghij"});
        c.damage(bytes);
        const std::string path = dir.file("x.lbx", bytes);
        const std::string message = "'" + path + "' is not a valid tesk lbx file (" + c.reason + ")";

        std::string error = "before";
        std::vector<unsigned int> offsets{7};
        bool tagged = true;
        EXPECT_FALSE(File::header(path, &error, &offsets, &tagged)) << c.what;
        EXPECT_EQ(error, message) << c.what;
        EXPECT_EQ(offsets, std::vector<unsigned int>{7}) << c.what;
        EXPECT_TRUE(tagged) << c.what;
        EXPECT_FALSE(File::header(path, nullptr, nullptr, nullptr)) << c.what;
        EXPECT_FALSE(File::check(path)) << c.what;
        EXPECT_EQ(thrownBy([&] { File::size(path); }), message) << c.what;
        EXPECT_EQ(thrownBy([&] { delete File::at(path, 0); }), message) << c.what;
    }
}

TEST(Header, AcceptsAndReportsOffsetsAndTag)
{
    TempDir dir;
    const std::string path = dir.file("a.lbx", archive({"abcd", "", "efghij"}));
    std::string error = "kept";
    std::vector<unsigned int> offsets{1};
    bool tagged = false;
    ASSERT_TRUE(File::header(path, &error, &offsets, &tagged));
    EXPECT_EQ(error, "kept");
    EXPECT_EQ(offsets, (std::vector<unsigned int>{1, 2048, 2052, 2052, 2058}));
    EXPECT_TRUE(tagged);
    EXPECT_EQ(File::size(path), 3u);

    // Any other four bytes behind the table, and non-zero fill, just mean untagged.
    std::string bytes = archive({"abcd", "", "efghij"}, false);
    bytes.replace(24, 4, "ZORW");
    bytes[2000] = '\x7F';
    ASSERT_TRUE(File::header(dir.file("b.lbx", bytes), nullptr, nullptr, &tagged));
    EXPECT_FALSE(tagged);
}

TEST(Header, EmptyArchiveIsExactly2048Bytes)
{
    TempDir dir;
    EXPECT_TRUE(File::check(dir.file("e.lbx", archive({}))));
    EXPECT_EQ(File::size(dir.path("e.lbx")), 0u);
}

TEST(Header, TagWordIsReadUpTo506Entries)
{
    // The reader looks behind the table only while the count is at most 506.
    TempDir dir;
    for (unsigned int count : {506u, 507u, 508u, 509u}) {
        std::string bytes = archive(std::vector<std::string>(count, "z"), false);
        if (count <= 508)
            bytes.replace(8 + 4 * (count + 1), 4, "ZORV");
        bool tagged = true;
        ASSERT_TRUE(File::header(dir.file("t.lbx", bytes), nullptr, nullptr, &tagged)) << count;
        EXPECT_EQ(tagged, count == 506) << count;
        EXPECT_EQ(File::size(dir.path("t.lbx")), count);
    }
}

TEST(Header, UnopenablePathsThrowWhateverTheOutParameters)
{
    TempDir dir;
    std::filesystem::create_directory(dir.path("folder.lbx"));
    for (const std::string& path : {dir.path("missing.lbx"), dir.path("folder.lbx")}) {
        const std::string message = "could not open '" + path + "'";
        std::string error;
        EXPECT_EQ(thrownBy([&] { File::header(path, &error, nullptr, nullptr); }), message);
        EXPECT_TRUE(error.empty());
        EXPECT_EQ(thrownBy([&] { File::check(path); }), message);
    }
}

TEST(Header, AtReadsOneEntryByIndex)
{
    TempDir dir;
    const std::string path = dir.file("a.lbx", archive({"abcd", "", "efghij"}));

    std::unique_ptr<Content> last(File::at(path, 2));
    EXPECT_EQ(bytesOf(last.get()), "efghij");
    std::unique_ptr<Content> empty(File::at(path, 1));
    EXPECT_EQ(empty->size(), 0u);
    EXPECT_EQ(thrownBy([&] { last->graphic(); }), path + "[2] is of type unknown , not graphic");
    EXPECT_EQ(thrownBy([&] { delete File::at(path, 3); }), "invalid index '3' for " + path);
}
