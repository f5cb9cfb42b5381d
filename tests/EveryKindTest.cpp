#include "Lbx.h"
#include "Fixtures.h"

#include <memory>

using namespace zorv2::Lbx;
using namespace fixtures;

namespace {

struct Expected {
    Content::TYPE type;
    std::string info;
    bool recreatable;
};

// One entry of every kind, in an order unlike the classification order.
std::vector<Content*> entriesOfEveryKind()
{
    std::unique_ptr<unsigned char[]> palette(Content::Palette::fake());
    std::vector<unsigned char> image(2 * 2 * 4, 0);
    std::copy(palette.get() + 8, palette.get() + 12, image.begin());
    unsigned char* frames[] = {image.data()};
    std::vector<unsigned char> cursorImage(576 * 4, 0);
    std::vector<unsigned char*> cursorFrames(20, cursorImage.data());
    std::vector<unsigned short> heights(6, 7);
    std::vector<unsigned char> widths(1536, 3);
    std::vector<std::string> strings = {"one", "two"};
    const std::string sound = "RIFF" + le32(9) + "WAVEfmt x";
    const std::string race = le16(13) + le16(31) + std::string(403, 'r');
    const std::string abcost = std::string(52, 'a') + std::string(4, '\0');

    return {
        Content::Text::create(strings),
        new Content("raw", block("abc"), 3),
        Content::Graphic::create(frames, palette.get(), 2, 2, 1, 0, 0, 0, 0, 0),
        new Content("raw", block(abcost), 56),
        Content::Cursor::create(palette.get(), cursorFrames.data()),
        new Content("raw", block(std::string(3957, 'L')), 3957),
        Content::Empty::create(),
        new Content("raw", block(race), 407),
        Content::Font::create(palette.get(), heights.data(), widths.data(), nullptr),
        new Content("raw", block(sound), static_cast<unsigned int>(sound.size())),
        Content::Empty::create(true),
    };
}

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
        testing::internal::CaptureStderr();
        std::unique_ptr<Content> again(entry->debugCreate());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << i;
        EXPECT_EQ(bytesOf(again->data(), again->size()), bytesOf(entry->data(), entry->size())) << i;
        EXPECT_EQ(again->type(), want.type) << i;
    }
}
