// What every PNG layer (the tool's, the page's) does alike: a file read, and
// a picture to look at written.

#include "tools/modding/Png.h"

#include "tools/modding/Shapes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace lbxtool {

namespace {

// Fewer than 256 colours: see viewPng.
constexpr unsigned int MOST_VIEW_COLOURS = 255;

// A picture's colours in the order they first appear and each pixel's
// index among them; false when it has more than MOST_VIEW_COLOURS. The
// colours are kept in an open-addressed table twice as large as they may
// fill; a pixel like the one before it costs no lookup.
class OwnColours {
public:
    OwnColours() { std::fill(std::begin(slots), std::end(slots), EMPTY); }

    bool take(const unsigned char* rgba, std::size_t pixels)
    {
        indices.resize(pixels);
        std::uint32_t before = 0;
        unsigned char beforeIndex = 0;
        for (std::size_t p = 0; p < pixels; ++p) {
            std::uint32_t colour;
            std::memcpy(&colour, rgba + p * PIXEL_SIZE, PIXEL_SIZE);
            if (p == 0 || colour != before) {
                const int index = indexOf(colour);
                if (index < 0)
                    return false;
                before = colour;
                beforeIndex = static_cast<unsigned char>(index);
            }
            indices[p] = beforeIndex;
        }
        return true;
    }

    std::vector<unsigned char> indices;
    std::vector<unsigned char> palette;

private:
    static constexpr std::size_t SLOTS = 512;
    static constexpr int EMPTY = -1;

    int indexOf(std::uint32_t colour)
    {
        std::size_t slot = (colour * 2654435761u) >> 23 & (SLOTS - 1);
        while (slots[slot] != EMPTY && keys[slot] != colour)
            slot = (slot + 1) & (SLOTS - 1);
        if (slots[slot] != EMPTY)
            return slots[slot];
        const std::size_t count = palette.size() / PIXEL_SIZE;
        if (count == MOST_VIEW_COLOURS)
            return EMPTY;
        keys[slot] = colour;
        slots[slot] = static_cast<int>(count);
        palette.resize(palette.size() + PIXEL_SIZE);
        std::memcpy(&palette[count * PIXEL_SIZE], &colour, PIXEL_SIZE);
        return slots[slot];
    }

    std::uint32_t keys[SLOTS] = {};
    int slots[SLOTS];
};

} // namespace

std::vector<unsigned char> rgbaOf(const Picture& picture)
{
    if (!picture.indexed)
        return picture.pixels;
    std::vector<unsigned char> rgba;
    rgba.reserve(picture.pixels.size() * PIXEL_SIZE);
    for (const unsigned char index : picture.pixels)
        rgba.insert(rgba.end(), &picture.palette[index * PIXEL_SIZE], &picture.palette[index * PIXEL_SIZE] + PIXEL_SIZE);
    return rgba;
}

void takePalette(Picture& picture, const std::vector<unsigned char>& entries)
{
    picture.palette.assign(PALETTE_BYTES, 0);
    std::copy_n(entries.begin(), std::min(entries.size(), std::size_t(PALETTE_BYTES)), picture.palette.begin());
    if (entries.size() != PALETTE_BYTES) {
        picture.pixels = rgbaOf(picture);
        picture.indexed = false;
    }
}

std::string viewPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string& name)
{
    OwnColours colours;
    if (!colours.take(rgba, std::size_t(width) * height) || colours.palette.empty())
        return rgbaPng(rgba, width, height, name);
    return indexedPng(colours.indices.data(), width, height, colours.palette.data(), name,
                      static_cast<unsigned int>(colours.palette.size() / PIXEL_SIZE));
}

} // namespace lbxtool
