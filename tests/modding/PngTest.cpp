#include "tests/support/Fixtures.h"
#include "tools/modding/Png.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

using namespace lbxtool;
using fixtures::thrownBy;

namespace {

using Pixels = std::vector<unsigned char>;

// PNG files put together here byte by byte, with deflate's stored blocks, so
// that what the reader is tested on owes nothing to an encoder.
std::string bytes(std::initializer_list<int> values)
{
    std::string text;
    for (const int value : values)
        text += static_cast<char>(value);
    return text;
}

std::string be32(std::uint32_t value)
{
    return bytes({int(value >> 24), int(value >> 16 & 0xFF), int(value >> 8 & 0xFF), int(value & 0xFF)});
}

std::uint32_t crc32(const std::string& data)
{
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const char c : data) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? 0xEDB88320u ^ (crc >> 1) : crc >> 1;
    }
    return ~crc;
}

std::string chunk(const std::string& type, const std::string& data)
{
    return be32(static_cast<std::uint32_t>(data.size())) + type + data + be32(crc32(type + data));
}

std::string zlibStored(const std::string& raw)
{
    std::uint32_t a = 1, b = 0;
    for (const char c : raw) {
        a = (a + static_cast<unsigned char>(c)) % 65521;
        b = (b + a) % 65521;
    }
    const int size = static_cast<int>(raw.size()); // the tests' images stay below one block's 65535
    return bytes({0x78, 0x01, 0x01, size & 0xFF, size >> 8, ~size & 0xFF, (~size >> 8) & 0xFF}) + raw +
           be32(b << 16 | a);
}

enum ColorType { GREY = 0, RGB = 2, PALETTE = 3, GREY_ALPHA = 4, RGBA = 6 };

struct Header {
    unsigned int width, height;
    int depth;
    ColorType type;
    bool interlaced = false;
};

// `rows` are the scanlines as stored (Adam7's passes in turn when
// interlaced), each given a filter byte of 0; `ancillary` goes before IDAT.
std::string pngFile(const Header& h, std::initializer_list<std::string> rows, const std::string& ancillary = "")
{
    std::string data;
    for (const std::string& row : rows)
        data += '\0' + row;
    const std::string ihdr = be32(h.width) + be32(h.height) + bytes({h.depth, h.type, 0, 0, h.interlaced ? 1 : 0});
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", ihdr) + ancillary + chunk("IDAT", zlibStored(data)) + chunk("IEND", "");
}

std::string palette(std::initializer_list<std::string> colours)
{
    std::string entries;
    for (const std::string& colour : colours)
        entries += colour;
    return chunk("PLTE", entries);
}

const std::string RED = bytes({200, 0, 0}), GREEN = bytes({0, 180, 0}), BLUE = bytes({0, 0, 160});

std::string grey(int value)
{
    return bytes({value, value, value});
}

} // namespace

// Every colour type and depth other than an 8-bit palette of 256 colours
// becomes 8-bit RGBA: grey spread to all three, a palette looked up,
// transparency (tRNS) as alpha, 16-bit samples cut to their high byte.
TEST(PngReading, EveryOtherColourTypeBecomesRgba)
{
    const struct {
        const char* what;
        std::string file;
        Pixels rgba;
    } cases[] = {
        {"grey, 8 bits", pngFile({2, 1, 8, GREY}, {bytes({0x00, 0x80})}), {0, 0, 0, 255, 128, 128, 128, 255}},
        {"grey, 1 bit", pngFile({2, 1, 1, GREY}, {bytes({0x80})}), {255, 255, 255, 255, 0, 0, 0, 255}},
        {"grey, 2 bits", pngFile({2, 1, 2, GREY}, {bytes({0xD0})}), {255, 255, 255, 255, 85, 85, 85, 255}},
        {"grey, 4 bits", pngFile({2, 1, 4, GREY}, {bytes({0x5A})}), {85, 85, 85, 255, 170, 170, 170, 255}},
        {"grey, 16 bits", pngFile({2, 1, 16, GREY}, {bytes({0x12, 0x34, 0xAB, 0xCD})}),
         {0x12, 0x12, 0x12, 255, 0xAB, 0xAB, 0xAB, 255}},
        {"grey with one transparent value",
         pngFile({2, 1, 8, GREY}, {bytes({0x10, 0x80})}, chunk("tRNS", bytes({0x00, 0x80}))),
         {16, 16, 16, 255, 128, 128, 128, 0}},
        {"grey and alpha, 8 bits", pngFile({2, 1, 8, GREY_ALPHA}, {bytes({0x40, 0x00, 0xC0, 0x7F})}),
         {64, 64, 64, 0, 192, 192, 192, 127}},
        {"grey and alpha, 16 bits", pngFile({1, 1, 16, GREY_ALPHA}, {bytes({0x40, 0x01, 0x7F, 0xFF})}),
         {64, 64, 64, 127}},
        {"RGB, 8 bits", pngFile({2, 1, 8, RGB}, {RED + GREEN}), {200, 0, 0, 255, 0, 180, 0, 255}},
        {"RGB with one transparent colour",
         pngFile({2, 1, 8, RGB}, {RED + GREEN}, chunk("tRNS", bytes({0, 0, 0, 180, 0, 0}))),
         {200, 0, 0, 255, 0, 180, 0, 0}},
        {"RGB, 16 bits", pngFile({1, 1, 16, RGB}, {bytes({1, 2, 3, 4, 5, 6})}), {1, 3, 5, 255}},
        {"RGBA, 8 bits", pngFile({1, 1, 8, RGBA}, {bytes({1, 2, 3, 4})}), {1, 2, 3, 4}},
        {"RGBA, 16 bits", pngFile({1, 1, 16, RGBA}, {bytes({1, 2, 3, 4, 5, 6, 7, 8})}), {1, 3, 5, 7}},
        {"4-bit palette of 3 colours, the first half transparent",
         pngFile({3, 1, 4, PALETTE}, {bytes({0x21, 0x00})}, palette({RED, GREEN, BLUE}) + chunk("tRNS", bytes({128}))),
         {0, 0, 160, 255, 0, 180, 0, 255, 200, 0, 0, 128}},
        {"8-bit palette of 3 colours",
         pngFile({3, 1, 8, PALETTE}, {bytes({2, 1, 0})}, palette({RED, GREEN, BLUE})),
         {0, 0, 160, 255, 0, 180, 0, 255, 200, 0, 0, 255}},
        {"an index past the palette, read as transparent black",
         pngFile({2, 1, 8, PALETTE}, {bytes({200, 0})}, palette({RED, GREEN, BLUE})), {0, 0, 0, 0, 200, 0, 0, 255}},
        // Adam7 on 2x2: pass 1 holds (0,0), pass 6 (1,0), pass 7 the second row.
        {"RGB, interlaced",
         pngFile({2, 2, 8, RGB, true}, {RED, GREEN, BLUE + grey(7)}),
         {200, 0, 0, 255, 0, 180, 0, 255, 0, 0, 160, 255, 7, 7, 7, 255}},
    };
    for (const auto& c : cases) {
        const Picture picture = readPicture(c.file, c.what);
        EXPECT_FALSE(picture.indexed) << c.what;
        EXPECT_EQ(picture.width * picture.height * 4, c.rgba.size()) << c.what;
        EXPECT_EQ(picture.pixels, c.rgba) << c.what;
        EXPECT_EQ(rgbaOf(picture), c.rgba) << c.what;
    }
}

// An 8-bit palette of all 256 colours keeps its indices, interlaced or not;
// entries the tRNS chunk leaves out are opaque.
TEST(PngReading, AWholePaletteKeepsItsIndices)
{
    std::string colours;
    for (int i = 0; i < 256; ++i)
        colours += bytes({i, 255 - i, i / 2});
    const std::string chunks = chunk("PLTE", colours) + chunk("tRNS", bytes({0, 100}));
    const struct {
        const char* what;
        std::string file;
    } cases[] = {
        {"progressive", pngFile({2, 2, 8, PALETTE}, {bytes({0, 1}), bytes({2, 255})}, chunks)},
        {"interlaced", pngFile({2, 2, 8, PALETTE, true}, {bytes({0}), bytes({1}), bytes({2, 255})}, chunks)},
    };
    for (const auto& c : cases) {
        const Picture picture = readPicture(c.file, c.what);
        ASSERT_TRUE(picture.indexed) << c.what;
        EXPECT_EQ(picture.pixels, (Pixels{0, 1, 2, 255})) << c.what;
        ASSERT_EQ(picture.palette.size(), 1024u) << c.what;
        EXPECT_EQ(Pixels(picture.palette.begin(), picture.palette.begin() + 12),
                  (Pixels{0, 255, 0, 0, 1, 254, 0, 100, 2, 253, 1, 255}))
            << c.what;
        EXPECT_EQ(Pixels(picture.palette.end() - 4, picture.palette.end()), (Pixels{255, 0, 127, 255})) << c.what;
    }
}

TEST(PngReading, ABrokenFileIsRefusedWithItsNameAndLibpngsReason)
{
    const std::string good = pngFile({2, 1, 8, GREY}, {bytes({1, 2})});
    std::string badCrc = good;
    badCrc[29] ^= 1; // IHDR's CRC
    const std::string huge = "\x89PNG\r\n\x1a\n" + chunk("IHDR", be32(65535) + be32(65535) + bytes({8, RGBA, 0, 0, 0})) +
                             chunk("IDAT", zlibStored("")) + chunk("IEND", "");
    for (const std::string& other : {std::string("GIF89a"), std::string(), good.substr(0, 7)})
        EXPECT_EQ(thrownBy([&] { readPicture(other, "in.png"); }), "'in.png' is not a PNG file") << other;
    const struct {
        const char* what;
        std::string file;
        std::string reason; // empty: any of libpng's
    } cases[] = {
        {"cut in its pixels", good.substr(0, good.size() - 20), ""},
        {"a damaged header", badCrc, "IHDR: CRC error"},
        {"more pixels than a frame holds", huge, "65535x65535, more than 67108864 pixels"},
    };
    for (const auto& c : cases) {
        try {
            readPicture(c.file, "in.png");
            ADD_FAILURE() << c.what << " was read";
        } catch (const std::runtime_error& error) {
            const std::string message = error.what();
            const std::string head = "'in.png' is not a readable PNG (";
            EXPECT_EQ(message.rfind(head, 0), 0u) << c.what << ": " << message;
            EXPECT_GT(message.size(), head.size() + 1) << c.what << ": " << message;
            EXPECT_EQ(message.back(), ')') << c.what << ": " << message;
            if (!c.reason.empty()) {
                EXPECT_EQ(message, head + c.reason + ")") << c.what;
            }
        }
    }
}

TEST(PngWriting, WhatTheToolWritesReadsBackExactly)
{
    Pixels palette(1024), indices, rgba;
    for (unsigned int i = 0; i < 256; ++i) {
        palette[i * 4] = static_cast<unsigned char>(i);
        palette[i * 4 + 1] = static_cast<unsigned char>(i * 7);
        palette[i * 4 + 2] = static_cast<unsigned char>(255 - i);
        palette[i * 4 + 3] = i == 5 ? 0 : i == 9 ? 77 : 255;
    }
    for (unsigned int p = 0; p < 37 * 5; ++p)
        indices.push_back(static_cast<unsigned char>(p * 13 % 256));
    for (unsigned int p = 0; p < 37 * 5 * 4; ++p)
        rgba.push_back(static_cast<unsigned char>(p * 31 % 251));

    const Picture indexed = readPicture(indexedPng(indices.data(), 37, 5, palette.data(), "i.png"), "i.png");
    EXPECT_TRUE(indexed.indexed);
    EXPECT_EQ(indexed.pixels, indices);
    EXPECT_EQ(indexed.palette, palette);

    const Picture coloured = readPicture(rgbaPng(rgba.data(), 37, 5, "c.png"), "c.png");
    EXPECT_FALSE(coloured.indexed);
    EXPECT_EQ(coloured.width, 37u);
    EXPECT_EQ(coloured.height, 5u);
    EXPECT_EQ(coloured.pixels, rgba);

    // Larger than any buffer of the compressor's, of runs and noise.
    Pixels large(1280u * 960u * 4u);
    for (std::size_t p = 0; p < large.size(); ++p)
        large[p] = static_cast<unsigned char>(p % 7919 < 4000 ? p / 4096 : p * 2654435761u >> 24);
    const std::string bigFile = rgbaPng(large.data(), 1280, 960, "big.png");
    const Picture big = readPicture(bigFile, "big.png");
    EXPECT_EQ(big.width, 1280u);
    EXPECT_EQ(big.height, 960u);
    EXPECT_TRUE(big.pixels == large);
}

TEST(PngWriting, AnImpossiblePictureIsRefusedWithItsName)
{
    const unsigned char pixel[4] = {};
    const struct {
        unsigned int width, height;
        std::string problem;
    } cases[] = {
        {0, 1, "could not encode 'p.png' (0x1; a PNG here is 1 to 1000000 pixels a side)"},
        {1, 0, "could not encode 'p.png' (1x0; a PNG here is 1 to 1000000 pixels a side)"},
        {1000001, 1, "could not encode 'p.png' (1000001x1; a PNG here is 1 to 1000000 pixels a side)"},
        {1, 1000001, "could not encode 'p.png' (1x1000001; a PNG here is 1 to 1000000 pixels a side)"},
    };
    for (const auto& c : cases)
        for (const bool indexed : {false, true}) {
            try {
                indexed ? indexedPng(pixel, c.width, c.height, pixel, "p.png", 1)
                        : rgbaPng(pixel, c.width, c.height, "p.png");
                ADD_FAILURE() << c.problem << " was written";
            } catch (const std::runtime_error& error) {
                EXPECT_EQ(error.what(), c.problem);
            }
        }
}

// A picture only to look at takes a palette of its own colours while they
// are fewer than 256: it reads back as the same RGBA, never as indices.
TEST(PngWriting, AViewInFewColoursIsIndexedAndReadsBackAsItsColours)
{
    const struct {
        unsigned int colours;
        bool indexed;
    } cases[] = {{1, true}, {2, true}, {255, true}, {256, false}, {1000, false}};
    for (const auto& c : cases) {
        Pixels rgba;
        for (unsigned int p = 0; p < 1200; ++p) {
            const unsigned int colour = p * 7 % c.colours; // runs and jumps, every colour used
            rgba.insert(rgba.end(), {static_cast<unsigned char>(colour), static_cast<unsigned char>(colour >> 8),
                                     static_cast<unsigned char>(colour * 3),
                                     static_cast<unsigned char>(colour % 3 * 100)});
        }
        const std::string file = viewPng(rgba.data(), 40, 30, "v.png");
        EXPECT_EQ(static_cast<unsigned char>(file[25]), c.indexed ? 3 : 6) << c.colours << " colours: colour type";
        const Picture read = readPicture(file, "v.png");
        EXPECT_FALSE(read.indexed) << c.colours;
        EXPECT_TRUE(read.pixels == rgba) << c.colours;
    }
}
