#include "entry/AbstractContent.h"
#include "tests/support/Exercise.h"
#include "tests/support/Fixtures.h"
#include "tests/support/Verdict.h"

#include <gtest/gtest.h>

#include <random>

using namespace fixtures;
using Palette = Content::Palette;
using Read = Content::AbstractContent;

namespace {

using Maps = std::vector<std::vector<int>>;

Bytes frameBytes(Content* entry, unsigned int frame)
{
    char* data = entry->data();
    return Bytes(data + Read::read4(data, 12 + 4 * frame), data + Read::read4(data, 16 + 4 * frame));
}

// Index maps (-1: transparent) drawn in the fake palette's colours and encoded with it.
std::unique_ptr<Content> encode(const Maps& maps, unsigned short width, unsigned short height,
                                unsigned short flags = 0)
{
    auto palette = fakePalette();
    std::vector<Pixels> images;
    std::vector<unsigned char*> frames;
    for (const auto& map : maps)
        frames.push_back(images.emplace_back(image(map, palette.get())).data());
    const auto count = static_cast<unsigned short>(maps.size());
    return std::unique_ptr<Content>(
        Graphic::create(frames.data(), palette.get(), width, height, count, 0, 0, 0, 0, flags));
}

} // namespace

TEST(GraphicEncode, WorkedExampleBothWays)
{
    auto created = encode({EXAMPLE[0], EXAMPLE[1], EXAMPLE[2]}, 6, 4);
    EXPECT_EQ(bytesOf(created.get()), exampleEntry());
    // Frame 2 first: the decoder replays the chain of deltas back to frame 0.
    auto palette = fakePalette();
    created->graphic()->setPalette(palette.get());
    for (unsigned int index : {2u, 0u, 1u})
        EXPECT_EQ(pixelsOf(created->graphic()->frame(index), 24), image(EXAMPLE[index], palette.get())) << index;
    EXPECT_EQ(thrownBy([&] { created->graphic()->frame(3); }), "invalid frame index '3' for graphic created graphic");
}

TEST(GraphicEncode, FrameRules)
{
    const Bytes end = octets({0, 0, 0xE8, 3});
    // The last frame's bytes; only their start for the row of 300.
    const struct { const char* what; unsigned short width, height; Maps maps; unsigned short flags; Bytes expected; }
        cases[] = {
        {"nothing painted, height 200", 1, 200, {painted(200, {})}, 0, octets({1, 0, 200, 0, 0, 0, 0, 0})},
        {"nothing painted, height 2", 1, 2, {painted(2, {})}, 0, octets({1, 0, 0x7C, 2, 0, 0, 0, 0})},
        {"rows 5 and 9", 1, 10, {painted(10, {{5, 1}, {9, 2}})}, 0,
         octets({1, 0, 5, 0, 1, 0, 0, 0, 1, 0, 0, 0, 4, 0, 1, 0, 0, 0, 2, 0}) + end},
        {"runs cut by one pixel", 3, 1, {{1, -1, 2}}, 0,
         octets({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 0, 1, 0, 2, 0}) + end + Bytes(4, '\0')},
        {"row of 300 in one run", 300, 1, {std::vector<int>(300, 1)}, 0, octets({1, 0, 0, 0, 0x2C, 1, 0, 0, 1, 1})},
        {"repeating its predecessor", 2, 1, {{1, 2}, {1, 2}}, 0, octets({1, 0, 0x7C, 2, 0, 0, 0, 0})},
        {"starting empty, in full", 1, 1, {{1}, {1}, {1}}, Graphic::CLEAR,
         octets({1, 0, 0, 0, 1, 0, 0, 0, 1, 0}) + end + Bytes(2, '\0')},
        {"raw, filled to 4", 3, 1, {{1, 2, 3}}, Graphic::RAW, octets({1, 2, 3, 0})},
    };
    for (const auto& c : cases) {
        auto entry = encode(c.maps, c.width, c.height, c.flags);
        const Bytes frame = frameBytes(entry.get(), static_cast<unsigned int>(c.maps.size() - 1));
        EXPECT_EQ(frame.size(), c.width == 300 ? 312u : c.expected.size()) << c.what;
        EXPECT_EQ(frame.substr(0, c.expected.size()), c.expected) << c.what;
    }
}

TEST(GraphicEncode, WhatDeltaFramesLeaveOut)
{
    const struct { const char* what; Pixels before, now; unsigned char clearMod; bool leftOut; } cases[] = {
        {"alpha 0", {8, 8, 8, 255}, {40, 40, 40, 0}, 0, true},
        {"low 2 bits differ", {8, 12, 16, 255}, {11, 13, 19, 7}, 0, true},
        {"bit 2 differs", {8, 12, 16, 255}, {8, 12, 20, 255}, 0, false},
        {"black over a pixel never painted", {0, 0, 0, 0}, {0, 0, 0, 255}, 0, true},
        {"same colour, frame starts empty", {8, 12, 16, 255}, {8, 12, 16, 255}, 1, false},
    };
    for (auto c : cases) {
        unsigned char* frames[] = {c.before.data(), c.now.data()};
        EXPECT_EQ(Graphic::isTransparent(0, frames, 1, 2, 0, c.clearMod, 0), c.leftOut) << c.what;
    }
}

TEST(GraphicEncode, Failures)
{
    auto palette = fakePalette();
    Pixels odd = {13, 14, 15, 255};
    unsigned char* one[] = {odd.data()};
    Pixels clear = {13, 14, 15, 0};
    unsigned char* none[] = {clear.data()};
    auto example = entryOf(exampleEntry());
    auto unknown = entryOf({1, 2, 3});
    const struct { const char* what; std::function<void()> call; std::string text; } cases[] = {
        {"colour not in the palette", [&] { Graphic::create(one, palette.get(), 1, 1, 1, 0, 0, 0, 0, 0); },
         "color 13,14,15 not found in palette"},
        {"raw over unpainted pixels", [&] { Graphic::create(palette.get(), 0, 0, 0, 0, Graphic::RAW, example.get()); },
         "color 0,0,0 not found in palette"},
        {"no frames, no palette", [&] { Graphic::create(one, palette.get(), 1, 1, 0, 0, 0, 0, 0, 0); },
         "bug in graphic creation, sorry"},
        // Without a pixel to look up, no palette to look it up in is needed.
        {"no frames, no lookup palette", [&] { Graphic::create(one, nullptr, 1, 1, 0, 0, 0, 0, 0, 0); },
         "bug in graphic creation, sorry"},
        {"nothing painted, no lookup palette", [&] { delete Graphic::create(none, nullptr, 1, 1, 1, 0, 0, 0, 0, 0); },
         ""},
        {"rows 1000 apart", [&] { encode({painted(1001, {{0, 1}, {1000, 1}})}, 1, 1001); },
         "graphic frame 0 has painted rows 1000 apart, which cannot be stored"},
        {"rows 999 apart", [&] { encode({painted(1001, {{0, 1}, {999, 1}})}, 1, 1001); }, ""},
        {"not a graphic", [&] { Graphic::create(palette.get(), unknown.get()); },
         "t.lbx[3] is of type unknown , not graphic"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy(c.call), c.text) << c.what;
}

TEST(GraphicEncode, StoresWhatThePaletteSearchFinds)
{
    // Few distinct colours, so most repeat; every fifth entry lies off the 4-step grid.
    std::mt19937 random(7);
    std::unique_ptr<unsigned char[]> palette(Palette::empty());
    for (unsigned int i = 0; i < 1024; ++i)
        if (i % 4 != 3)
            palette[i] = static_cast<unsigned char>(random() % 4 * 4 + (i % 4 == 0 && i / 4 % 5 == 0));
    Pixels pixels;
    Bytes expected;
    while (expected.size() < 512) {
        const unsigned char* entry = &palette[random() % 256 * 4];
        unsigned char color[4] = {entry[0], entry[1], static_cast<unsigned char>(entry[2] | random() % 4), 255};
        unsigned char index = 0;
        if (Palette::findColor(palette.get(), color, &index)) {
            pixels.insert(pixels.end(), color, color + 4);
            expected += static_cast<char>(index);
        }
    }
    unsigned char* frames[] = {pixels.data()};
    std::unique_ptr<Content> created(Graphic::create(frames, palette.get(), 512, 1, 1, 0, 0, 0, 0, Graphic::RAW));
    EXPECT_EQ(frameBytes(created.get(), 0), expected);
}

TEST(GraphicEncode, RecreatesWithOtherSettings)
{
    auto source = entryOf(exampleEntry());
    auto colors = fakePalette();
    const unsigned short all = Graphic::CLEAR | Graphic::SHADOWS | Graphic::PALETTE | Graphic::LOOP | 0x4000;
    std::unique_ptr<Content> block(Graphic::create(colors.get(), 2, 2, 5, 3, all, source.get()));
    EXPECT_EQ(block->graphic()->info(), "   6x4   3 frames   options: clearmod[2] clear loop palette[5,3] shadows");
    EXPECT_EQ(pixelsOf(block->graphic()->palette() + 20, 3), pixelsOf(colors.get() + 20, 3));
    block->graphic()->setPalette(colors.get());
    EXPECT_EQ(pixelsOf(block->graphic()->frame(2), 24), image(EXAMPLE[2], colors.get()));
    // The source has no palette block, so the palette given has no effect.
    std::unique_ptr<Content> same(Graphic::create(colors.get(), source.get()));
    EXPECT_EQ(bytesOf(same.get()), exampleEntry());
    auto full = encode(Maps(12, std::vector<int>(64 * 64, 0)), 64, 64);
    std::unique_ptr<Content> raw(Graphic::create(colors.get(), 3, 4, 0, 128, all | Graphic::RAW, full.get()));
    EXPECT_EQ(raw->graphic()->info(),
              "  64x64  12 frames   options: clearonce[3] clearmod[4] clear loop palette[0,128] raw shadows");
}

// Animations as a viewer would see them: each frame paints over its predecessor unless it starts empty.
TEST(GraphicEncode, RoundTripsGeneratedAnimations)
{
    std::mt19937 random(1987);
    auto below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
    const unsigned short bits[] = {Graphic::RAW, Graphic::CLEAR, Graphic::SHADOWS, Graphic::PALETTE, Graphic::LOOP};
    for (unsigned int combination = 0; combination < 32 * 6; ++combination) {
        unsigned short flags = 0;
        for (unsigned int bit = 0; bit < 5; ++bit)
            flags |= (combination >> bit & 1) ? bits[bit] : 0;
        const bool raw = flags & Graphic::RAW;
        const auto width = static_cast<unsigned short>(below(10) + raw);
        const auto height = static_cast<unsigned short>(below(10) + raw);
        const auto count = static_cast<unsigned short>(below(5) + !(flags & Graphic::PALETTE));
        const auto clearOnce = static_cast<unsigned char>(below(count + 1u));
        const auto clearMod = static_cast<unsigned char>(below(4));
        const auto palOffset = static_cast<unsigned short>(below(256));
        const auto palSize = static_cast<unsigned short>(below(257u - palOffset));
        SCOPED_TRACE(testing::Message() << "flags " << flags << ", " << width << "x" << height << ", " << count
                                        << " frames, once " << int(clearOnce) << ", mod " << int(clearMod));

        // Distinct colours, never black: black over an unpainted pixel would count as unchanged.
        auto palette = fakePalette();
        std::vector<Pixels> images(count, Pixels(width * height * 4u, 0));
        std::vector<unsigned char*> frames;
        for (unsigned int f = 0; f < count; ++f) {
            if (!Graphic::isClear(f, count, clearOnce, clearMod, flags))
                images[f] = images[f - 1];
            for (unsigned int p = 0; p < width * height; ++p)
                if (raw || below(3) == 0)
                    std::memcpy(&images[f][p * 4], &palette[below(256) * 4], 4);
            frames.push_back(images[f].data());
        }

        std::unique_ptr<Content> created(Graphic::create(frames.data(), palette.get(), width, height, count,
                                                         clearOnce, clearMod, palOffset, palSize, flags));
        Graphic* graphic = created->graphic();
        if (flags & Graphic::PALETTE) {
            EXPECT_EQ(pixelsOf(graphic->palette() + 4 * palOffset, palSize),
                      pixelsOf(palette.get() + 4 * palOffset, palSize));
        }
        graphic->setPalette(palette.get());
        for (unsigned int f = 0; f < count; ++f)
            EXPECT_EQ(pixelsOf(graphic->frame(f), width * height), images[f]) << "frame " << f;

        EXPECT_NO_THROW(exercise::verifies(*created));
        std::unique_ptr<Content> recreated(Graphic::create(palette.get(), created.get()));
        EXPECT_EQ(bytesOf(recreated.get()), bytesOf(created.get()));
    }
}

// A run a pixel takes six bytes where a row in one run takes one a pixel:
// the encoder's block outgrows what it reserved, several times over.
TEST(GraphicEncode, FramesOfSinglePixelsOutgrowTheirRoom)
{
    constexpr unsigned short SIDE = 64;
    Maps checkered(4, std::vector<int>(SIDE * SIDE, -1));
    for (unsigned int f = 0; f < checkered.size(); ++f)
        for (unsigned int p = 0; p < SIDE * SIDE; ++p)
            if ((p / SIDE + p + f) % 2 == 0)
                checkered[f][p] = static_cast<int>((p + f) % 200);
    auto created = encode(checkered, SIDE, SIDE, Graphic::CLEAR);
    auto palette = fakePalette();
    created->graphic()->setPalette(palette.get());
    for (unsigned int f = 0; f < checkered.size(); ++f) {
        EXPECT_EQ(pixelsOf(created->graphic()->frame(f), SIDE * SIDE), image(checkered[f], palette.get())) << f;
        EXPECT_GT(frameBytes(created.get(), f).size(), 3u * SIDE * SIDE / 2) << f;
    }
    EXPECT_NO_THROW(exercise::verifies(*created));
}

TEST(GraphicEncode, VerifyingReportsEachField)
{
    // Frame 1 repaints x = 3 of row 2 with the index it already shows.
    Bytes bytes = exampleEntry();
    const Bytes repainted = octets({1, 0, 2, 0, 2, 0, 3, 0, 8, 3, 0, 0, 0xE8, 3, 0, 0});
    std::copy(repainted.begin(), repainted.end(), bytes.begin() + 0x44);
    auto entry = entryOf(bytes);
    const Verdict verdict = verdictOf(*entry);
    EXPECT_EQ(verdict.failure, "debug graphic frame   1");
    EXPECT_EQ(verdict.report,
              "debug graphic frame   1 - is     1, should be     2  'color count'\n"
              "debug graphic frame   1 - is     4, should be     3  'xoff'\n"
              "debug graphic frame   1 - is     3, should be     8  'color'\n"
              "debug graphic frame   1 - is     0, should be     3  'colorFill'\n");

    // The word of an empty frame is not compared: 636 at height 200 passes.
    auto marked = entryOf(graphicHeader(2, 200, 1, 0, {20, 28}) + octets({1, 0, 0x7C, 2, 0, 0, 0, 0}));
    testing::internal::CaptureStderr();
    std::unique_ptr<Content> recreated(marked->debugCreate());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(Read::read2(recreated->data(), 22), 200);
}

TEST(GraphicEncode, VerifyingReportsTheFieldsBeforeAFailure)
{
    // Frame 1 repaints row 500 as it was, so that its rows 0 and 1000 come
    // out 1000 apart; the differences in row 0 are reported before that fails.
    const Bytes row = octets({2, 0, 0, 0});
    const Bytes eol = octets({0, 0}), down500 = octets({0xF4, 1}), end = octets({0xE8, 3});
    const Bytes frame0 = octets({1, 0, 0, 0}) + row + octets({1, 1}) + eol + down500 + row + octets({1, 1}) + eol +
                         down500 + row + octets({1, 1}) + eol + end;
    const Bytes frame1 = octets({1, 0, 0, 0}) + row + octets({1, 2}) + eol + down500 + row + octets({1, 1}) + eol +
                         down500 + row + octets({2, 2}) + eol + end;
    auto entry = entryOf(graphicHeader(2, 1001, 2, 0, {24, 58, 92}) + frame0 + frame1);
    ASSERT_EQ(entry->type(), Content::GRAPHIC);
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrownBy([&] { delete entry->debugCreate(); }),
              "graphic frame 1 has painted rows 1000 apart, which cannot be stored");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "debug graphic frame   1 - is     1, should be     2  'color count'\n"
              "debug graphic frame   1 - is     1, should be     0  'xoff'\n"
              "debug graphic frame   1 - is     2, should be     1  'color'\n"
              "debug graphic frame   1 - is     0, should be     2  'colorFill'\n");
}
