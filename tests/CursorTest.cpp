#include "entry/Write.h"
#include "images/Cursor.h"
#include "images/Palette.h"
#include "tests/support/Exercise.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

using namespace fixtures;

namespace {

constexpr unsigned int ENTRY_SIZE = 12544, PALETTE_SIZE = 1024, FRAME_PIXELS = 576;

// Lead bytes 1, colour bytes 0..63 with duplicates, frame bytes through all 256 indices.
Bytes cursorBytes(unsigned int size = ENTRY_SIZE)
{
    Bytes bytes(size, '\0');
    for (unsigned int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i < PALETTE_SIZE ? (i % 4 == 0 ? 1 : i % 64) : i * 7);
    return bytes;
}

} // namespace

TEST(Cursor, RecognisedByExactSizeAndLeadBytesOnly)
{
    struct Case { unsigned int size, at; char value; bool cursor; };
    const Case cases[] = {
        {ENTRY_SIZE, 0, 1, true},          {ENTRY_SIZE - 1, 0, 1, false}, {ENTRY_SIZE + 1, 0, 1, false},
        {ENTRY_SIZE, 1020, 0, false},      {ENTRY_SIZE, 1020, 2, false},  {ENTRY_SIZE, 1021, 64, true},
        {ENTRY_SIZE, 1023, '\xFF', true},
    };
    for (const Case& c : cases) {
        Bytes bytes = cursorBytes(c.size);
        bytes[c.at] = c.value;
        EXPECT_EQ(entryOf(bytes)->type() == Content::CURSOR, c.cursor) << c.size << " @" << c.at;
    }
}

TEST(Cursor, CreatedEntryDecodesToItsInputAndVerifies)
{
    // Distinct colours from 0 to 252, entry 0 included though never shown.
    Pixels palette(PALETTE_SIZE);
    for (unsigned int i = 0; i < 256; ++i)
        palette[4 * i] = 4 * (i % 64), palette[4 * i + 1] = 252 - 4 * (i % 64), palette[4 * i + 2] = 4 * (i / 64),
        palette[4 * i + 3] = 255;
    std::vector<Pixels> frames(20, Pixels(FRAME_PIXELS * 4, 0));
    unsigned char* pointers[20];
    for (unsigned int f = 0; f < 20; ++f) {
        for (unsigned int p = 0; p < FRAME_PIXELS; ++p)
            if (const unsigned int index = (f * 577 + p) % 256)
                std::copy_n(&palette[4 * index], 4, &frames[f][4 * p]);
        pointers[f] = frames[f].data();
    }

    std::unique_ptr<Content> created(Content::Cursor::create(palette.data(), pointers));
    ASSERT_EQ(created->type(), Content::CURSOR);
    Content::Cursor* cursor = created->cursor();
    EXPECT_EQ(pixelsOf(cursor->palette(), 256), palette);
    for (unsigned int f = 0; f < 20; ++f)
        EXPECT_EQ(pixelsOf(cursor->pixarray()[f], FRAME_PIXELS), frames[f]) << "frame " << f;

    EXPECT_NO_THROW(exercise::verifies(*created));

    // Only entry 0 holds this colour, and a visible pixel (alpha 1 is enough) never gets index 0.
    std::copy_n(Pixels{0, 252, 0, 1}.begin(), 4, frames[19].end() - 4);
    EXPECT_EQ(thrownBy([&] { delete Content::Cursor::create(palette.data(), pointers); }),
              "color 0,252,0 not found in palette");

    // Fully transparent frames look up no colour, so no search palette is needed.
    const Pixels transparent(FRAME_PIXELS * 4, 0);
    for (unsigned int f = 0; f < 20; ++f)
        pointers[f] = const_cast<unsigned char*>(transparent.data());
    Content::Write write;
    Content::Cursor::create(write, palette.data(), pointers, nullptr);
    EXPECT_EQ(write.size(), ENTRY_SIZE);
}

TEST(Cursor, RebuildsKeepEveryStoredIndex)
{
    // Colour entries 16 apart are equal here, so the stored palette alone could not tell the indices apart.
    std::unique_ptr<Content> source = entryOf(cursorBytes());
    EXPECT_NO_THROW(exercise::verifies(*source));

    std::unique_ptr<unsigned char[]> colours(Content::Palette::fake());
    std::unique_ptr<unsigned char[]> dac(Content::Palette::pal2dac(colours.get(), 1));
    std::unique_ptr<Content> recoloured(Content::Cursor::create(colours.get(), source.get()));
    const Bytes rebuilt = bytesOf(recoloured.get()), stored = bytesOf(source.get());
    EXPECT_EQ(rebuilt.substr(0, PALETTE_SIZE), bytesOf(reinterpret_cast<char*>(dac.get()), PALETTE_SIZE));
    EXPECT_EQ(rebuilt.substr(PALETTE_SIZE), stored.substr(PALETTE_SIZE));
}

TEST(Cursor, ColourAbove63FailsOnlyWhereTheOwnPaletteIsNeeded)
{
    Bytes bytes = cursorBytes();
    bytes[1023] = 64;
    std::unique_ptr<Content> content = entryOf(bytes);
    ASSERT_EQ(content->type(), Content::CURSOR);
    Content::Cursor* cursor = content->cursor();
    // A failed build leaves nothing behind that a second call could take for complete.
    for (unsigned int attempt = 0; attempt < 2; ++attempt)
        EXPECT_EQ(thrownBy([&] { cursor->palette(); }), "invalid dac value (>63)");
    EXPECT_EQ(thrownBy([&] { cursor->get(0); }), "invalid dac value (>63)");
    EXPECT_EQ(thrownBy([&] { delete content->debugCreate(); }), "invalid dac value (>63)");

    std::unique_ptr<unsigned char[]> own(Content::Palette::empty());
    std::unique_ptr<unsigned char[]> decoded(cursor->gen(0, own.get()));
    EXPECT_EQ(pixelsOf(decoded.get(), 2), (Pixels{0, 0, 0, 0, 0, 0, 0, 255})) << "index 0 shows nothing of entry 0";
}

TEST(Cursor, OutsidePaletteReplacesTheOwnOneUntilCleared)
{
    std::unique_ptr<Content> content = entryOf(cursorBytes());
    Content::Cursor* cursor = content->cursor();
    std::unique_ptr<unsigned char[]> outside(Content::Palette::fake());
    const Pixels own = pixelsOf(cursor->palette(), 256);
    const unsigned char index = static_cast<unsigned char>(content->data()[1024 + 3 * 576 + 1]);

    cursor->setPalette(outside.get());
    unsigned char* frame = cursor->get(3);
    EXPECT_EQ(frame, cursor->get(3));
    EXPECT_EQ(pixelsOf(frame + 4, 1), pixelsOf(&outside[4 * index], 1));
    EXPECT_EQ(pixelsOf(cursor->palette(), 256), own);

    cursor->setPalette(nullptr);
    EXPECT_EQ(pixelsOf(cursor->get(3) + 4, 1), pixelsOf(&own[4 * index], 1));
}
