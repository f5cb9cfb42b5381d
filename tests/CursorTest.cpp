#include "CursorFontFixture.h"

#include "entry/Write.h"
#include "images/Cursor.h"
#include "images/Palette.h"

using zorv2::Lbx::Content;

namespace {

constexpr unsigned int ENTRY_SIZE = 12544, PALETTE_SIZE = 1024, DECODED_FRAME = 2304;
using Bytes = std::vector<unsigned char>;

// Lead bytes 1, colour bytes 0..63 with duplicates, frame bytes through all 256 indices.
std::vector<char> cursorBytes(unsigned int size = ENTRY_SIZE)
{
    std::vector<char> bytes(size);
    for (unsigned int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i < PALETTE_SIZE ? (i % 4 == 0 ? 1 : i % 64) : i * 7);
    return bytes;
}

Bytes bytesOf(const unsigned char* data, unsigned int size)
{
    return Bytes(data, data + size);
}

Bytes bytesOf(Content& content)
{
    return bytesOf(reinterpret_cast<unsigned char*>(content.data()), content.size());
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
        std::vector<char> bytes = cursorBytes(c.size);
        bytes[c.at] = c.value;
        EXPECT_EQ(contentOf(bytes)->type() == Content::CURSOR, c.cursor) << c.size << " @" << c.at;
    }
}

TEST(Cursor, CreatedEntryDecodesToItsInputAndVerifies)
{
    // Distinct colours from 0 to 252, entry 0 included though never shown.
    Bytes palette(PALETTE_SIZE);
    for (unsigned int i = 0; i < 256; ++i)
        palette[4 * i] = 4 * (i % 64), palette[4 * i + 1] = 252 - 4 * (i % 64), palette[4 * i + 2] = 4 * (i / 64),
        palette[4 * i + 3] = 255;
    std::vector<Bytes> frames(20, Bytes(DECODED_FRAME, 0));
    unsigned char* pointers[20];
    for (unsigned int f = 0; f < 20; ++f) {
        for (unsigned int p = 0; p < 576; ++p)
            if (const unsigned int index = (f * 577 + p) % 256)
                std::copy_n(&palette[4 * index], 4, &frames[f][4 * p]);
        pointers[f] = frames[f].data();
    }

    std::unique_ptr<Content> created(Content::Cursor::create(palette.data(), pointers));
    ASSERT_EQ(created->type(), Content::CURSOR);
    Content::Cursor* cursor = created->cursor();
    EXPECT_EQ(bytesOf(cursor->palette(), PALETTE_SIZE), palette);
    for (unsigned int f = 0; f < 20; ++f)
        EXPECT_EQ(bytesOf(cursor->pixarray()[f], DECODED_FRAME), frames[f]) << "frame " << f;

    testing::internal::CaptureStderr();
    std::unique_ptr<Content> verified(created->debugCreate());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(bytesOf(*verified), bytesOf(*created));

    // Only entry 0 holds this colour, and a visible pixel (alpha 1 is enough) never gets index 0.
    std::copy_n(Bytes{0, 252, 0, 1}.begin(), 4, frames[19].end() - 4);
    expectFailure([&] { delete Content::Cursor::create(palette.data(), pointers); },
                  "color 0,252,0 not found in palette");

    // Fully transparent frames look up no colour, so no search palette is needed.
    const Bytes transparent(DECODED_FRAME, 0);
    for (unsigned int f = 0; f < 20; ++f)
        pointers[f] = const_cast<unsigned char*>(transparent.data());
    Content::Write write;
    Content::Cursor::create(write, palette.data(), pointers, nullptr);
    EXPECT_EQ(write.size(), ENTRY_SIZE);
}

TEST(Cursor, RebuildsKeepEveryStoredIndex)
{
    // Colour entries 16 apart are equal here, so the stored palette alone could not tell the indices apart.
    std::unique_ptr<Content> source = contentOf(cursorBytes());
    testing::internal::CaptureStderr();
    std::unique_ptr<Content> verified(source->debugCreate());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(bytesOf(*verified), bytesOf(*source));

    std::unique_ptr<unsigned char[]> colours(Content::Palette::fake());
    std::unique_ptr<unsigned char[]> dac(Content::Palette::pal2dac(colours.get(), 1));
    std::unique_ptr<Content> recoloured(Content::Cursor::create(colours.get(), source.get()));
    const Bytes rebuilt = bytesOf(*recoloured), stored = bytesOf(*source);
    EXPECT_EQ(Bytes(rebuilt.begin(), rebuilt.begin() + PALETTE_SIZE), bytesOf(dac.get(), PALETTE_SIZE));
    EXPECT_TRUE(std::equal(rebuilt.begin() + PALETTE_SIZE, rebuilt.end(), stored.begin() + PALETTE_SIZE));
}

TEST(Cursor, ColourAbove63FailsOnlyWhereTheOwnPaletteIsNeeded)
{
    std::vector<char> bytes = cursorBytes();
    bytes[1023] = 64;
    std::unique_ptr<Content> content = contentOf(bytes);
    ASSERT_EQ(content->type(), Content::CURSOR);
    Content::Cursor* cursor = content->cursor();
    // A failed build leaves nothing behind that a second call could take for complete.
    for (unsigned int attempt = 0; attempt < 2; ++attempt)
        expectFailure([&] { cursor->palette(); }, "invalid dac value (>63)");
    expectFailure([&] { cursor->get(0); }, "invalid dac value (>63)");
    expectFailure([&] { delete content->debugCreate(); }, "invalid dac value (>63)");

    std::unique_ptr<unsigned char[]> own(Content::Palette::empty());
    std::unique_ptr<unsigned char[]> decoded(cursor->gen(0, own.get()));
    EXPECT_EQ(bytesOf(decoded.get(), 8), (Bytes{0, 0, 0, 0, 0, 0, 0, 255})) << "index 0 shows nothing of entry 0";
}

TEST(Cursor, OutsidePaletteReplacesTheOwnOneUntilCleared)
{
    std::unique_ptr<Content> content = contentOf(cursorBytes());
    Content::Cursor* cursor = content->cursor();
    std::unique_ptr<unsigned char[]> outside(Content::Palette::fake());
    const Bytes own = bytesOf(cursor->palette(), PALETTE_SIZE);
    const unsigned char index = static_cast<unsigned char>(content->data()[1024 + 3 * 576 + 1]);

    cursor->setPalette(outside.get());
    unsigned char* frame = cursor->get(3);
    EXPECT_EQ(frame, cursor->get(3));
    EXPECT_EQ(bytesOf(frame + 4, 4), bytesOf(&outside[4 * index], 4));
    EXPECT_EQ(bytesOf(cursor->palette(), PALETTE_SIZE), own);

    cursor->setPalette(nullptr);
    EXPECT_EQ(bytesOf(cursor->get(3) + 4, 4), bytesOf(&own[4 * index], 4));
}
