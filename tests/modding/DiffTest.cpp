// What diff finds between two versions of an archive, built in memory.
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tests/support/Fixtures.h"
#include "tools/modding/Diff.h"

#include <gtest/gtest.h>

using namespace fixtures;
using namespace lbxtool;

namespace {

// A graphic of `frames` frames of 3x2 whose pixels take index `first` + frame.
Content* picture(unsigned int frames, unsigned int first)
{
    const auto palette = fakePalette();
    std::vector<std::vector<unsigned char>> rgba;
    for (unsigned int f = 0; f < frames; ++f) {
        rgba.emplace_back(3 * 2 * 4, 0);
        for (unsigned int p = 0; p < 6; ++p)
            std::copy(palette.get() + (first + f) * 4, palette.get() + (first + f) * 4 + 4, &rgba.back()[p * 4]);
    }
    std::vector<unsigned char*> pointers;
    for (auto& frame : rgba)
        pointers.push_back(frame.data());
    return Content::Graphic::create(pointers.data(), palette.get(), 3, 2, static_cast<unsigned short>(frames), 0, 0,
                                    0, 0, Content::Graphic::CLEAR);
}

std::unique_ptr<File> archiveOf(const std::vector<Content*>& entries)
{
    auto made = std::make_unique<File>();
    for (Content* entry : entries)
        made->push_back(entry);
    return made;
}

// The kinds and places of what diff found, as "changed 1", "moved 0<-2".
std::vector<std::string> found(const std::vector<EntryChange>& changes)
{
    std::vector<std::string> lines;
    for (const EntryChange& c : changes) {
        const char* kinds[] = {"added", "removed", "moved", "changed"};
        lines.push_back(std::string(kinds[c.kind]) + " " + std::to_string(c.index) +
                        (c.kind == EntryChange::MOVED ? "<-" + std::to_string(c.was) : ""));
    }
    return lines;
}

} // namespace

TEST(Diff, FindsEntriesAddedRemovedMovedAndChanged)
{
    const auto base = [] { return archiveOf({table({"Sol", "Vega"}), picture(3, 10), table({"x"})}); };
    const struct {
        std::string what;
        std::vector<Content*> changed;
        std::vector<std::string> expected;
    } cases[] = {
        {"the same", {table({"Sol", "Vega"}), picture(3, 10), table({"x"})}, {}},
        {"a record", {table({"Sol", "Rigel"}), picture(3, 10), table({"x"})}, {"changed 0"}},
        {"one more", {table({"Sol", "Vega"}), picture(3, 10), table({"x"}), table({"y"})}, {"added 3"}},
        {"the last gone", {table({"Sol", "Vega"}), picture(3, 10)}, {"removed 2"}},
        {"the first gone", {picture(3, 10), table({"x"})}, {"moved 0<-1", "moved 1<-2", "removed 0"}},
        {"swapped", {picture(3, 10), table({"Sol", "Vega"}), table({"x"})}, {"moved 0<-1", "moved 1<-0"}},
        {"a copy of one that stays", {picture(3, 10), picture(3, 10), table({"x"})}, {"changed 0"}},
        {"all new", {table({"a"})}, {"changed 0", "removed 1", "removed 2"}},
        {"nothing left", {}, {"removed 0", "removed 1", "removed 2"}},
    };
    for (const auto& c : cases) {
        const std::unique_ptr<File> before = base(), after = archiveOf(c.changed);
        EXPECT_EQ(found(diffArchives(*before, *after)), c.expected) << c.what;
    }
    File empty;
    const std::unique_ptr<File> some = base();
    EXPECT_EQ(found(diffArchives(empty, *some)), (std::vector<std::string>{"added 0", "added 1", "added 2"}));
}

TEST(Diff, NamesTheFramesAndRecordsThatDiffer)
{
    const std::unique_ptr<File> before = archiveOf({picture(3, 10), table({"Sol", "Vega", "Mira"})});
    Content* edited = picture(4, 10); // frames 0 to 2 as they were, frame 3 new
    const std::unique_ptr<File> after = archiveOf({edited, table({"Sol", "Vega\xe9", "Mira", "Deneb"})});
    const std::vector<EntryChange> changes = diffArchives(*before, *after);
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].frames, std::vector<unsigned int>{3});
    EXPECT_EQ(changes[0].shapeChange, "was graphic (3 frames of 3x2), becomes graphic (4 frames of 3x2)");
    ASSERT_EQ(changes[1].records.size(), 2u);
    EXPECT_EQ(diffText(changes, "A.LBX", "B.LBX"),
              "A.LBX -> B.LBX: 2 changed\n"
              "  changed B.LBX[0]: was graphic (3 frames of 3x2), becomes graphic (4 frames of 3x2), " +
                  std::to_string(before->at(0)->size()) + " -> " + std::to_string(after->at(0)->size()) +
                  " bytes; frame 3\n"
                  "  changed B.LBX[1]: was text (3 records of 100 bytes), becomes text (4 records of 100 bytes), "
                  "304 -> 404 bytes\n"
                  "    record 1: \"Vega\" -> \"Vega\\xE9\"\n"
                  "    record 3: (none) -> \"Deneb\"\n");
    File none;
    EXPECT_EQ(diffText(diffArchives(none, none), "A", "B"), "A -> B: no difference\n");
}
