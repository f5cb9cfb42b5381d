// Reading an archive entry by entry, as verify does, against opening it whole.

#include "tests/tool/ToolRun.h"
#include "tools/platform/Inputs.h"

#include <filesystem>

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

namespace {

class ArchiveEntriesTest : public Tool {};

TEST_F(ArchiveEntriesTest, ReadsEachEntryAsOpeningTheWholeArchiveDoes)
{
    for (const std::string& path : wholeSample()) {
        File whole(path);
        const lbxtool::ArchiveEntries entries(path);
        ASSERT_EQ(entries.size(), whole.size()) << path;
        EXPECT_EQ(entries.tagged(), whole.tagged()) << path;
        const unsigned int past = static_cast<unsigned int>(entries.size());
        EXPECT_EQ(thrownBy([&] { entries.read(past); }), thrownBy([&] { whole.at(past); })) << path;
        // From the last to the first: no read depends on the one before.
        for (unsigned int i = static_cast<unsigned int>(entries.size()); i-- > 0;) {
            Content* expected = whole.at(i);
            const std::unique_ptr<Content> read = entries.read(i);
            EXPECT_EQ(std::string(read->data(), read->size()), std::string(expected->data(), expected->size()))
                << path << '[' << i << ']';
            EXPECT_EQ(read->type(), expected->type()) << path << '[' << i << ']';
        }
    }
}

TEST_F(ArchiveEntriesTest, RefusesWhatOpeningRefusesInTheSameWords)
{
    const std::string archive = readFile(sample("INBOX.LBX"));
    const struct {
        const char* name;
        Bytes bytes;
    } cases[] = {
        {"short", archive.substr(0, 100)},
        {"cut", archive.substr(0, archive.size() - 1)},
        {"signature", archive.substr(0, 2) + "XXXX" + archive.substr(6)},
    };
    for (const auto& c : cases) {
        const std::string path = dir.file(c.name, c.bytes);
        const std::string opening = thrownBy([&] { lbxtool::openArchive(path); });
        EXPECT_FALSE(opening.empty()) << c.name;
        EXPECT_EQ(thrownBy([&] { lbxtool::ArchiveEntries{path}; }), opening) << c.name;
    }
    const std::string missing = dir.path("missing.LBX");
    EXPECT_EQ(thrownBy([&] { lbxtool::ArchiveEntries{missing}; }),
              thrownBy([&] { lbxtool::openArchive(missing); }));
}

TEST_F(ArchiveEntriesTest, AFileCutAfterItsHeaderWasReadChangedWhileItWasRead)
{
    const std::string path = dir.file("CUT.LBX", readFile(sample("INBOX.LBX")));
    const lbxtool::ArchiveEntries entries(path);
    fs::resize_file(path, fs::file_size(path) - 1);
    EXPECT_NO_THROW(entries.read(0));
    EXPECT_EQ(thrownBy([&] { entries.read(static_cast<unsigned int>(entries.size() - 1)); }),
              "'" + path + "' changed while it was read");
}

} // namespace
