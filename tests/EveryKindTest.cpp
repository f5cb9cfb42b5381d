#include "Lbx.h"
#include "tests/support/Exercise.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>

using namespace zorv2::Lbx;
using namespace fixtures;

namespace {

struct Expected {
    Content::TYPE type;
    std::string info;
    bool recreatable;
};

const std::vector<Expected> expected = {
    {Content::TEXT, "   text        204    ", true},
    {Content::UNKNOWN, "unknown          3    ", false},
    {Content::GRAPHIC, "graphic         36       2x2   1 frames   options: none", true},
    {Content::ABCOST, " abcost         56    Abcost", false},
    {Content::CURSOR, " cursor      12544    ", true},
    {Content::LEADER, " leader       3957    Leader", false},
    {Content::EMPTY, "  empty          0    ", true},
    {Content::RACE, "   race        407    Race", false},
    {Content::FONT, "   font       9116    ", true},
    {Content::SOUND, "  sound         17    ", false},
    {Content::EMPTY, "  empty         22    ", true},
};

} // namespace

TEST(EveryKind, SurvivesAnArchiveRoundTripAndVerifies)
{
    TempDir dir;
    {
        File archive;
        for (Content* entry : entriesOfEveryKind())
            archive.push_back(entry);
        archive.write(dir.path("every.lbx"));
    }
    File archive(dir.path("every.lbx"));
    ASSERT_EQ(archive.size(), expected.size());
    for (unsigned int i = 0; i < archive.size(); ++i) {
        Content* entry = archive[i];
        const Expected& want = expected[i];
        EXPECT_EQ(entry->type(), want.type) << i;
        EXPECT_EQ(entry->info(), want.info) << i;
        if (!want.recreatable) {
            EXPECT_EQ(thrownBy([&] { delete entry->debugCreate(); }),
                      "error: debug creation not implemented for " + entry->typeStr() + ", sorry.")
                << i;
            continue;
        }
        EXPECT_NO_THROW(exercise::verifies(*entry)) << i;
    }
}
