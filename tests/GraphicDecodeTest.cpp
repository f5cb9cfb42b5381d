#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

using namespace fixtures;

TEST(GraphicDecode, Recognition)
{
    const Bytes paletteOnly = graphicHeader(0, 0, 0, Graphic::PALETTE, {20}) + octets({0, 0, 0, 0});
    const Bytes raw = octets({1, 2, 3, 4});
    auto patched = [](Bytes bytes, std::size_t at, char value) {
        bytes[at] = value;
        return bytes;
    };
    const struct { const char* what; Bytes bytes; bool accepted; } cases[] = {
        {"only a palette block, 20 bytes", paletteOnly, true},
        {"19 bytes", Bytes(paletteOnly.begin(), paletteOnly.end() - 1), false},
        {"4 spare bytes behind the palette block", patched(paletteOnly + Bytes(4, '\0'), 12, 24), false},
        {"reserved word set", patched(exampleEntry(), 4, 1), false},
        {"bytes behind the last frame", exampleEntry() + Bytes(4, '\0'), false},
        {"frame of length 0", patched(exampleEntry(), 16, 0x1C), false},
        {"4 spare bytes behind the table", patched(exampleEntry(), 12, 0x20), false},
        {"frame start word not 1", patched(exampleEntry(), 0x44, 2), false},
        {"compressed frame in the last 2 bytes", graphicHeader(1, 1, 1, 0, {20, 22}) + octets({1, 0}), false},
        {"raw, exact", graphicHeader(2, 2, 1, Graphic::RAW, {20, 24}) + raw, true},
        {"raw, 3 zero bytes", graphicHeader(2, 2, 1, Graphic::RAW, {20, 27}) + raw + Bytes(3, '\0'), true},
        {"raw, 4 zero bytes", graphicHeader(2, 2, 1, Graphic::RAW, {20, 28}) + raw + Bytes(4, '\0'), false},
        {"raw, fill not 0", graphicHeader(2, 2, 1, Graphic::RAW, {20, 25}) + raw + octets({9}), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(entryOf(c.bytes)->type() == Content::GRAPHIC, c.accepted) << c.what;
}

TEST(GraphicDecode, ClearRules)
{
    const struct { unsigned int index, frames; unsigned char clearOnce, clearMod; unsigned short flags; bool clear; }
        cases[] = {
        {0, 3, 0, 0, 0, true},  {2, 3, 0, 0, Graphic::RAW, true}, {2, 3, 0, 0, Graphic::CLEAR, true},
        {2, 3, 0, 0, 0, false}, {5, 9, 0, 0, Graphic::LOOP | Graphic::PALETTE | Graphic::SHADOWS, false},
        {3, 7, 0, 3, 0, true},  {6, 7, 0, 3, 0, true},  {4, 7, 0, 3, 0, false}, {2, 3, 0, 1, 0, true},
        {2, 3, 2, 0, 0, false}, {2, 4, 2, 0, 0, true},  {2, 4, 3, 0, 0, false}, {1, 0, 1, 0, 0, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Graphic::isClear(c.index, c.frames, c.clearOnce, c.clearMod, c.flags), c.clear)
            << c.index << " of " << c.frames << ", once " << int(c.clearOnce) << ", mod " << int(c.clearMod);
}

TEST(GraphicDecode, Info)
{
    auto single = entryOf(graphicHeader(320, 200, 1, 0, {20, 28}) + octets({1, 0, 200, 0, 0, 0, 0, 0}));
    EXPECT_EQ(single->graphic()->info(), " 320x200   1 frames   options: none");
    Bytes flagged = exampleEntry();
    flagged[10] = 0x01;
    EXPECT_EQ(entryOf(flagged)->graphic()->info(), "   6x4   3 frames   options:");
}

TEST(GraphicDecode, PaletteBlock)
{
    // palOffset 16, palSize 4, colours of lead byte and DAC red, green, blue.
    auto entry = entryOf(graphicHeader(0, 0, 0, Graphic::PALETTE, {36}) + octets({16, 0, 4, 0}) +
                         octets({0, 1, 2, 3, 0, 10, 20, 30, 0, 63, 0, 0, 0, 0, 0, 63}));
    Graphic* graphic = entry->graphic();
    unsigned char* own = graphic->palette();
    EXPECT_EQ(graphic->palette(), own);
    EXPECT_EQ(pixelsOf(own + 4 * 15, 6), (Pixels{0, 0, 0, 255, 4, 8, 12, 255, 40, 80, 120, 255, 252, 0, 0, 255,
                                                0, 0, 252, 255, 0, 0, 0, 255}));
    std::unique_ptr<unsigned char[]> copy(graphic->paletteCopy());
    EXPECT_EQ(pixelsOf(copy.get(), 256), pixelsOf(own, 256));

    // Only palOffset's low byte counts, and colours past index 255 are dropped.
    auto pastEnd = entryOf(graphicHeader(0, 0, 0, Graphic::PALETTE, {32}) + octets({0xFE, 1, 3, 0}) + Bytes(12, '\x09'));
    EXPECT_EQ(pixelsOf(pastEnd->graphic()->palette() + 4 * 253, 3),
              (Pixels{0, 0, 0, 255, 36, 36, 36, 255, 36, 36, 36, 255}));
    auto badDac = entryOf(graphicHeader(0, 0, 0, Graphic::PALETTE, {24}) + octets({0, 0, 1, 0, 0, 64, 0, 0}));
    EXPECT_EQ(thrownBy([&] { badDac->graphic()->palette(); }), "invalid dac value (>63)");

    auto plain = entryOf(exampleEntry(), "a.lbx[0]");
    const std::string missing = "graphic a.lbx[0] does not have an internal palette";
    EXPECT_EQ(thrownBy([&] { plain->graphic()->palette(); }), missing);
    EXPECT_EQ(thrownBy([&] { plain->graphic()->frame(1); }), missing);
}

// Streams whose words lie must stop inside their frame and their image.
TEST(GraphicDecode, LyingStreams)
{
    // The stream behind the frame start word, and the pixels it paints.
    const struct { const char* what; unsigned int width, height; Bytes stream; std::map<unsigned int, int> painted; }
        cases[] = {
        {"run past the image", 4, 2, octets({1, 0, 8, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0xE8, 3}), {}},
        {"second run past the image", 4, 2, octets({0, 0, 1, 0, 0, 0, 5, 0, 5, 0, 3, 0, 1, 2, 3, 4, 5, 0}), {{0, 5}}},
        {"skip beyond the end", 4, 2, octets({0, 0, 1, 0, 0x60, 0xEA, 5, 0, 0, 0, 0xE8, 3}), {}},
        {"distance beyond the end", 4, 2, octets({0, 0, 1, 0, 3, 0, 5, 0, 0, 0, 0xFF, 0xFF, 1, 0, 0, 0, 6, 0}), {{3, 5}}},
        {"cut inside a run", 4, 2, octets({0, 0, 4, 0, 0, 0, 1, 2}), {}},
        {"cut inside a word, no end mark", 4, 2, octets({1, 0, 1, 0, 1, 0, 9, 0, 1}), {{5, 9}}},
        {"row ends before the edge", 4, 2, octets({0, 0, 1, 0, 1, 0, 5, 0, 0, 0, 1, 0, 1, 0, 0, 0, 6, 0}), {{1, 5}, {4, 6}}},
        {"width 0 with row ends", 0, 5, octets({0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}), {}},
        {"empty frame word 636", 2, 200, octets({0x7C, 2, 0, 0, 0, 0}), {}},
        {"last pixel of the widest row", 65535, 1, octets({0, 0, 1, 0, 0xFE, 0xFF, 7, 0, 0, 0, 0xE8, 3}), {{65534, 7}}},
    };
    auto palette = fakePalette();
    // Decoded first in other colours: the buffer that the second decode takes
    // again holds them, and none may show where nothing is painted.
    Pixels stale(1024, 0x55);
    for (const auto& c : cases) {
        const auto end = static_cast<unsigned int>(22 + c.stream.size());
        auto entry = entryOf(graphicHeader(c.width, c.height, 1, 0, {20, end}) + octets({1, 0}) + c.stream);
        entry->graphic()->setPalette(stale.data());
        entry->graphic()->frame(0);
        entry->graphic()->setPalette(palette.get());
        EXPECT_EQ(pixelsOf(entry->graphic()->frame(0), c.width * c.height),
                  image(painted(c.width * c.height, c.painted), palette.get()))
            << c.what;
    }

    auto huge = entryOf(graphicHeader(65535, 65535, 1, 0, {20, 28}) + octets({1, 0, 0xFF, 0xFF, 0, 0, 0, 0}), "big");
    huge->graphic()->setPalette(palette.get());
    EXPECT_EQ(thrownBy([&] { huge->graphic()->frame(0); }), "graphic big is too large to decode (65535x65535)");
}

// A few hundred kilobytes of 65535 empty 8192 x 8192 frames, each a delta:
// the last one replays them all, and holding them would take 16 TiB. The
// budget refuses before anything is allocated.
TEST(GraphicDecode, AnimationsTooLargeToHoldAreRefusedUpFront)
{
    constexpr unsigned int frames = 65535, tableEnd = 12 + 4 * (frames + 1);
    Bytes bytes = graphicHeader(8192, 8192, frames, 0, {});
    for (unsigned int f = 0; f <= frames; ++f)
        bytes += le32(f < frames ? tableEnd + 2 * f : tableEnd + 2 * frames + 1);
    for (unsigned int f = 0; f < frames; ++f)
        bytes += le16(1);
    bytes += '\0';
    auto animation = entryOf(bytes, "anim");
    ASSERT_EQ(animation->type(), Content::GRAPHIC);
    auto palette = fakePalette();
    animation->graphic()->setPalette(palette.get());
    const std::string tooLarge = "graphic anim is too large to decode (8192x8192, ";
    EXPECT_EQ(thrownBy([&] { animation->graphic()->frame(frames - 1); }), tooLarge + "65535 frames)");
    EXPECT_EQ(thrownBy([&] { animation->graphic()->frame(4); }), tooLarge + "5 frames)");
    EXPECT_EQ(thrownBy([&] { animation->graphic()->pixarray(); }), tooLarge + "65535 frames)");
}
