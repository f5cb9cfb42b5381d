#include "archive/File.h"
#include "entry/Content.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>

using zorv2::Lbx::Content;
using zorv2::Lbx::File;
using namespace fixtures;

namespace {

std::string entryBytes(unsigned int i)
{
    return std::string(i % 7, static_cast<char>('a' + i % 26));
}

std::vector<std::string> entriesOf(File& file)
{
    std::vector<std::string> result;
    for (unsigned int i = 0; i < file.size(); ++i)
        result.push_back(bytesOf(file[i]));
    return result;
}

} // namespace

TEST(Archive, NewArchiveIsEmptyAndTagged)
{
    File file;
    EXPECT_EQ(file.size(), 0u);
    EXPECT_TRUE(file.tagged());
    EXPECT_EQ(file.path(), "");
    EXPECT_EQ(thrownBy([&] { file.at(0); }), "invalid index '0' for ");

    // Spelled out rather than built by archive(), which the other tests
    // trust: count 0, signature, version 0, the one offset, the tag word.
    TempDir dir;
    file.write(dir.path("new.lbx"));
    EXPECT_EQ(readFile(dir.path("new.lbx")), octets({0, 0, 0xAD, 0xFE, 0, 0, 0, 0, 0, 8, 0, 0}) + "ZORV" +
                                                 Bytes(2032, '\0'));
}

TEST(Archive, OpensEveryEntryUnderItsName)
{
    TempDir dir;
    const std::string path = dir.file("a.lbx", archive({"abc", "", "hello"}, false));
    File file(path);
    EXPECT_EQ(file.size(), 3u);
    EXPECT_FALSE(file.tagged());
    EXPECT_EQ(file.path(), path);
    EXPECT_EQ(entriesOf(file), (std::vector<std::string>{"abc", "", "hello"}));
    EXPECT_EQ(thrownBy([&] { file[0]->text(); }), path + "[0] is of type unknown , not text");
    EXPECT_EQ(thrownBy([&] { file[3]; }), "invalid index '3' for " + path);
    EXPECT_EQ(file.at(2), file[2]);

    file.clear();
    EXPECT_EQ(file.size(), 0u);
    EXPECT_TRUE(file.tagged());
    EXPECT_EQ(file.path(), path);
}

TEST(Archive, FailedOpenKeepsTheEntriesButTakesThePath)
{
    TempDir dir;
    File file(dir.file("a.lbx", archive({"abc"})));
    const std::string bad = dir.file("bad.lbx", "short");
    EXPECT_EQ(thrownBy([&] { file.open(bad); }), "'" + bad + "' is not a valid tesk lbx file (too small)");
    EXPECT_EQ(file.path(), bad);
    EXPECT_TRUE(file.tagged());
    EXPECT_EQ(entriesOf(file), std::vector<std::string>{"abc"});

    const std::string missing = dir.path("missing.lbx");
    EXPECT_EQ(thrownBy([&] { File f(missing); }), "could not open '" + missing + "'");
}

TEST(Archive, WriteLaysOutOffsetsAndTagByCount)
{
    // count: tag written, tagged() after write, tagged() after reopening
    struct Row {
        unsigned int count;
        bool tagWritten;
        bool taggedAfterReopen;
    };
    TempDir dir;
    for (const Row& row : {Row{0, true, true}, Row{1, true, true}, Row{3, true, true}, Row{506, true, true},
                           Row{507, true, false}, Row{508, false, false}, Row{509, false, false}}) {
        File file;
        std::vector<std::string> entries;
        for (unsigned int i = 0; i < row.count; ++i) {
            entries.push_back(entryBytes(i));
            file.push_back(block(entries.back()), static_cast<unsigned int>(entries.back().size()));
        }
        const std::string path = dir.path("w.lbx");
        file.write(path);
        EXPECT_TRUE(file.tagged()) << row.count;

        const std::string bytes = readFile(path);
        EXPECT_EQ(bytes, archive(entries, row.tagWritten)) << row.count;
        File back(path);
        EXPECT_EQ(back.tagged(), row.taggedAfterReopen) << row.count;
        EXPECT_EQ(entriesOf(back), entries) << row.count;
        for (unsigned int i = 0; i < back.size(); ++i)
            EXPECT_EQ(back[i]->type(), file[i]->type());
    }
}

TEST(Archive, RewriteDropsTheSourceHeaderArea)
{
    TempDir dir;
    std::string source = archive({"abc", "", "de"}, false);
    source[1000] = '\x55';
    const std::string path = dir.file("a.lbx", source);
    File file(path);
    EXPECT_FALSE(file.tagged());
    file.write(path);
    EXPECT_TRUE(file.tagged());
    EXPECT_EQ(readFile(path), archive({"abc", "", "de"}));

    const std::string unwritable = dir.path("no/dir/a.lbx");
    EXPECT_EQ(thrownBy([&] { file.write(unwritable); }), "could not write to " + unwritable);
    EXPECT_EQ(entriesOf(file), (std::vector<std::string>{"abc", "", "de"}));
}

TEST(Archive, AppendsInEveryFormUpTo509)
{
    TempDir dir;
    const std::string source = dir.file("source.bin", "0123456789");
    File file;
    file.push_back(source);
    EXPECT_EQ(bytesOf(file[0]), "0123456789");

    std::ifstream stream(source, std::ios::binary);
    file.push_back(stream, 100, 104);
    EXPECT_EQ(bytesOf(file[1]), "0123") << "begin and end give the length only";

    file.push_back(new Content("mine", block("x"), 1));
    while (file.size() < 509)
        file.push_back(block("y"), 1);

    const std::string full = "lbx files cannot contain more than 509 files";
    auto* refused = new Content("refused", block("z"), 1);
    char* data = block("z");
    EXPECT_EQ(thrownBy([&] { file.push_back(refused); }), full);
    EXPECT_EQ(thrownBy([&] { file.push_back(data, 1); }), full);
    EXPECT_EQ(thrownBy([&] { file.push_back(source); }), full);
    // The stream's bytes are read before the limit refuses them.
    EXPECT_EQ(thrownBy([&] { file.push_back(stream, 0, 1); }), full);
    EXPECT_EQ(stream.tellg(), std::streampos(5));
    // The file is read before the limit is checked, so a missing one is
    // reported as such, full archive or not.
    const std::string missing = dir.path("missing.bin");
    EXPECT_EQ(thrownBy([&] { file.push_back(missing); }), "'" + missing + "' could not be opened");
    EXPECT_EQ(file.size(), 509u);
    delete refused; // both stayed the caller's
    delete[] data;
}

TEST(Archive, ReplaceHandsTheOldEntryBack)
{
    File file;
    file.push_back(block("old"), 3);
    file.push_back(block("next"), 4);
    std::unique_ptr<Content> old(file.at(0));
    file.replace(0, new Content("new", block("longer entry"), 12));
    EXPECT_EQ(file.size(), 2u);
    EXPECT_EQ(bytesOf(file[0]), "longer entry");

    TempDir dir;
    file.write(dir.path("r.lbx"));
    EXPECT_EQ(readFile(dir.path("r.lbx")), archive({"longer entry", "next"}));

    std::unique_ptr<Content> next(file[1]);
    file[1] = nullptr; // clear tolerates an empty slot
    file.clear();
    EXPECT_EQ(file.size(), 0u);
    EXPECT_EQ(bytesOf(next.get()), "next");
}
