#include "entry/Write.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

using zorv2::Lbx::Content;
using namespace fixtures;

namespace {

std::string generated(Content::Write& write)
{
    std::unique_ptr<char[]> block(write.gen());
    return std::string(block.get(), write.size());
}

// Builds the three fields 25 (4 bytes), 300 (2 bytes), 7 (1 byte) against `reference`.
std::string verify(std::string reference, const std::function<void(Content::Write&)>& build,
                   std::string* thrown)
{
    Content::Write write;
    write.setDebug("font", reference.data(), static_cast<unsigned int>(reference.size()));
    testing::internal::CaptureStderr();
    build(write);
    *thrown = thrownBy([&] { delete[] write.gen(); });
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Write, EncodesLittleEndianAndCutsWideValues)
{
    Content::Write write;
    write.add2("a", 1000);
    write.add4("b", 0x0000FEAD);
    write.add1("c", static_cast<unsigned char>(0x1FF));
    write.add(nullptr, 0);
    char raw[] = {'x', 'y'};
    write.add(raw, 2);
    const std::string built("\xE8\x03\xAD\xFE\x00\x00\xFFxy", 9);
    EXPECT_EQ(generated(write), built);
    EXPECT_EQ(generated(write), built) << "gen leaves the bytes for another call";

    Content::Write empty;
    EXPECT_EQ(generated(empty), "");

    // A builder appended to itself takes its bytes as they stood before.
    write.add(write);
    EXPECT_EQ(generated(write), built + built);
}

TEST(Write, VerifyingReportsEachDifferingFieldAndTheSize)
{
    struct Case {
        const char* what;
        std::string reference;
        std::function<void(Content::Write&)> build;
        std::string lines;
        std::string thrown;
    };
    const std::string same = le32(25) + le16(300) + "\x07";
    const auto exact = [](Content::Write& w) {
        w.add4("start 25", 25);
        w.add2("height", 300);
        w.add1("width", 7);
    };
    const std::vector<Case> cases = {
        {"equal", same, exact, "", ""},
        {"one field", le32(25) + le16(25) + "\x07", exact, "debug font - is   300, should be    25  'height'\n",
         "debug font"},
        {"two fields and a size", le32(1) + le16(300) + std::string("\x08\x00", 2), exact,
         "debug font - is    25, should be     1  'start 25'\n"
         "debug font - is     7, should be     8  'width'\n"
         "debug font - is     7, should be     8  'size'\n",
         "debug font"},
        {"short build", same + "more", exact, "debug font - is     7, should be    11  'size'\n", "debug font"},
        {"not compared", le32(99) + le16(300) + "\x07",
         [](Content::Write& w) {
             w.add4("start fill ?", 25, false);
             w.add2("height", 300);
             w.add1("width", 7);
         },
         "", ""},
        {"wide numbers", le32(1234567),
         [](Content::Write& w) { w.add4("offset", 7654321); },
         "debug font - is 7654321, should be 1234567  'offset'\n", "debug font"},
        // Fields past the end of the reference are not read: the size says it.
        {"past the reference", le16(300), exact, "debug font - is     7, should be     2  'size'\n", "debug font"},
    };
    for (const Case& c : cases) {
        std::string thrown;
        EXPECT_EQ(verify(c.reference, c.build, &thrown), c.lines) << c.what;
        EXPECT_EQ(thrown, c.thrown) << c.what;
    }
}

TEST(Write, MismatchIsOneWay)
{
    std::string reference = "\x01";
    Content::Write write;
    write.setDebug("text", reference.data(), 1);
    testing::internal::CaptureStderr();
    write.add1("nr", 2);
    write.clear();
    write.add1("nr", 1);
    Content::Write copy(write);
    write.setDebug("again", reference.data(), 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "debug text - is     2, should be     1  'nr'\n");
    EXPECT_EQ(thrownBy([&] { delete[] write.gen(); }), "debug again");
    EXPECT_EQ(thrownBy([&] { delete[] copy.gen(); }), "debug text");

    // Without a reference the flag is never looked at.
    Content::Write plain;
    testing::internal::CaptureStderr();
    plain.debugAdd("label", 1, 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "debug  - is     1, should be     2  'label'\n");
    EXPECT_EQ(thrownBy([&] { delete[] plain.gen(); }), "");
}

TEST(Write, SubBuilderIsCheckedAgainstItsOwnSlice)
{
    std::string reference = le16(5) + "ab";
    Content::Write outer;
    outer.setDebug("graphic", reference.data(), 4);
    Content::Write inner;
    inner.setDebug("graphic frame   0", reference.data() + 2, 2);
    testing::internal::CaptureStderr();
    inner.add1("color", 'a');
    inner.add1("color", 'c');

    outer.add2("width", 5);
    EXPECT_EQ(thrownBy([&] { outer.add(inner); }), "debug graphic frame   0");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "debug graphic frame   0 - is    99, should be    98  'color'\n");
    EXPECT_EQ(outer.size(), 2u) << "nothing of a failed sub-builder is appended";
}

TEST(Write, WritesFilesAndRefusesUnwritablePaths)
{
    TempDir dir;
    const std::string path = dir.file("out.bin", std::string(100, 'x'));
    Content::Write write;
    write.add4("value", 0x64636261);
    write.write(path);
    EXPECT_EQ(readFile(path), "abcd");

    const std::string missing = dir.path("no/such/dir/out.bin");
    EXPECT_EQ(thrownBy([&] { write.write(missing); }), "could not write to " + missing);

    // Room made ahead changes nothing that is written.
    Content::Write reserved;
    reserved.reserve(1 << 20);
    reserved.add4("value", 0x64636261);
    EXPECT_EQ(reserved.size(), 4u);
    reserved.write(path);
    EXPECT_EQ(readFile(path), "abcd");

    // A block that gen would refuse is not written either: the file stays.
    std::string reference = "\x01";
    Content::Write differing;
    std::ostringstream report;
    differing.setDebug("text", reference.data(), 1, report);
    differing.add1("nr", 2);
    EXPECT_EQ(thrownBy([&] { differing.write(path); }), "debug text");
    EXPECT_EQ(readFile(path), "abcd");
    EXPECT_EQ(report.str(), "debug text - is     2, should be     1  'nr'\n");
}
