#ifndef ZORV2_LBX_TESTS_SAMPLES_H
#define ZORV2_LBX_TESTS_SAMPLES_H

// Entries made by the library itself, for the tests and the fuzz seeds.
#include "Lbx.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace samples {

using zorv2::Lbx::Content;

inline std::string le16(unsigned int value)
{
    return {static_cast<char>(value & 0xFF), static_cast<char>((value >> 8) & 0xFF)};
}

inline std::string le32(unsigned int value)
{
    return le16(value & 0xFFFF) + le16(value >> 16);
}

inline Content* raw(const std::string& bytes)
{
    char* data = new char[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), data);
    return new Content("raw", data, static_cast<unsigned int>(bytes.size()));
}

// One entry of every kind, in an order unlike the classification order.
inline std::vector<Content*> entriesOfEveryKind()
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
        raw("abc"),
        Content::Graphic::create(frames, palette.get(), 2, 2, 1, 0, 0, 0, 0, 0),
        raw(abcost),
        Content::Cursor::create(palette.get(), cursorFrames.data()),
        raw(std::string(3957, 'L')),
        Content::Empty::create(),
        raw(race),
        Content::Font::create(palette.get(), heights.data(), widths.data(), nullptr),
        raw(sound),
        Content::Empty::create(true),
    };
}

// Animations with the settings that change how frames are stored: deltas, a
// frame that starts empty, a palette block, raw frames.
inline std::vector<Content*> animations()
{
    std::unique_ptr<unsigned char[]> palette(Content::Palette::fake());
    constexpr unsigned int width = 8, height = 6, pixel = 4;
    std::vector<unsigned char> still(width * height * pixel, 0);
    for (unsigned int p = 5; p < width * height; p += 3)
        std::copy(palette.get() + pixel * p, palette.get() + pixel * p + pixel, still.begin() + pixel * p);
    std::vector<unsigned char> moved(still.size(), 0);
    std::copy(still.begin(), still.end() - pixel, moved.begin() + pixel); // one pixel to the right
    unsigned char* frames[] = {still.data(), moved.data(), moved.data(), still.data()};
    // Raw frames store every pixel, so none may be transparent.
    std::vector<unsigned char> opaque(palette.get(), palette.get() + still.size());
    unsigned char* rawFrames[] = {opaque.data(), opaque.data()};

    using Graphic = Content::Graphic;
    return {
        Graphic::create(frames, palette.get(), width, height, 4, 0, 0, 0, 0, Graphic::LOOP),
        Graphic::create(frames, palette.get(), width, height, 4, 2, 3, 16, 8, Graphic::PALETTE | Graphic::SHADOWS),
        Graphic::create(rawFrames, palette.get(), width, height, 2, 0, 0, 250, 6, Graphic::RAW | Graphic::PALETTE),
    };
}

} // namespace samples

#endif
