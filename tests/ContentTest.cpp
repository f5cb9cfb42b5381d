#include "entry/AbstractContent.h"
#include "entry/Content.h"
#include "entry/Write.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>

using zorv2::Lbx::Content;
using namespace fixtures;

TEST(Content, ReadsAreLittleEndianAtAnyOffset)
{
    char bytes[] = {'\x01', '\xE8', '\x03', '\xAD', '\xFE', '\x00', '\x80'};
    EXPECT_EQ(Content::AbstractContent::read1(bytes, 6), 0x80);
    EXPECT_EQ(Content::AbstractContent::read2(bytes, 1), 1000);
    EXPECT_EQ(Content::AbstractContent::read4(bytes, 3), 0x8000FEADu);
}

TEST(Content, TypeTexts)
{
    const char* texts[] = {"abcost", "cursor", "empty", "font", "graphic", "leader", "race", "sound", "text", "unknown"};
    for (int type = 0; type <= 9; ++type)
        EXPECT_EQ(Content::typeStr(Content::TYPE(type)), texts[type]);
    EXPECT_EQ(Content::typeStr(Content::TYPE(10)), "invalid");
}

TEST(Content, UnknownEntryDescribesItselfAndRefusesAccessors)
{
    Content entry("a.lbx[3]", block("abc"), 3);
    EXPECT_EQ(entry.type(), Content::UNKNOWN);
    EXPECT_EQ(entry.info(), "unknown          3    ");
    EXPECT_EQ(Content("x", new char[1234](), 1234).info(), "unknown       1234    ");

    const std::vector<std::pair<std::string, std::function<void()>>> accessors = {
        {"abcost", [&] { entry.abcost(); }},   {"cursor", [&] { entry.cursor(); }},
        {"font", [&] { entry.font(); }},       {"graphic", [&] { entry.graphic(); }},
        {"leader", [&] { entry.leader(); }},   {"race", [&] { entry.race(); }},
        {"sound", [&] { entry.sound(); }},     {"text", [&] { entry.text(); }},
    };
    for (const auto& [kind, access] : accessors)
        EXPECT_EQ(thrownBy(access), "a.lbx[3] is of type unknown , not " + kind);
    EXPECT_EQ(thrownBy([&] { delete entry.debugCreate(); }), "error: debug creation not implemented for unknown, sorry.");
    EXPECT_EQ(bytesOf(&entry), "abc") << "failures leave the entry as it was";
}

TEST(Content, CopyIsDeepAndClassifiedAnew)
{
    auto original = std::make_unique<Content>("first", block("abc"), 3);
    Content copy(*original);
    EXPECT_NE(copy.data(), original->data());
    original.reset();
    EXPECT_EQ(bytesOf(&copy), "abc");
    EXPECT_EQ(copy.type(), Content::UNKNOWN);
    EXPECT_EQ(copy.info(), "unknown          3    ");
}

TEST(Content, WritesAndReadsFilesOfTheirOwn)
{
    TempDir dir;
    Content entry("a.lbx[0]", block(std::string("\0\1\2\r\n", 5)), 5);
    entry.write(dir.path("entry.bin"));
    Content back(dir.path("entry.bin"));
    EXPECT_EQ(bytesOf(&back), std::string("\0\1\2\r\n", 5));
    EXPECT_EQ(back.type(), entry.type());

    const std::string missing = dir.path("missing.bin");
    EXPECT_EQ(thrownBy([&] { Content c(missing); }), "'" + missing + "' could not be opened");
    EXPECT_EQ(thrownBy([&] { Content c(dir.path("")); }), "'" + dir.path("") + "' could not be opened");
    const std::string unwritable = dir.path("no/dir/x.bin");
    EXPECT_EQ(thrownBy([&] { entry.write(unwritable); }), "could not write to '" + unwritable + "'");
}

TEST(Content, GenContentInsistsOnTheRequestedKind)
{
    Content::Write write;
    write.add1("byte", 1);
    std::unique_ptr<Content> created(Content::AbstractContent::genContent(write, Content::UNKNOWN));
    EXPECT_EQ(created->type(), Content::UNKNOWN);
    EXPECT_EQ(thrownBy([&] { delete Content::AbstractContent::genContent(write, Content::GRAPHIC); }),
              "bug in graphic creation, sorry");
}
