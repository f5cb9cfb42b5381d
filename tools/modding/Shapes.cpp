#include "tools/modding/Shapes.h"

#include "images/Graphic.h"

#include <algorithm>

namespace lbxtool {

namespace {

std::string size(unsigned int width, unsigned int height)
{
    return std::to_string(width) + "x" + std::to_string(height);
}

} // namespace

PaletteArray copyOfPalette(const unsigned char* palette)
{
    PaletteArray copy(new unsigned char[PALETTE_BYTES]);
    std::copy(palette, palette + PALETTE_BYTES, copy.get());
    return copy;
}

LentPalette::LentPalette(Content::Graphic* graphic, unsigned char* palette) : graphic(graphic)
{
    graphic->setPalette(palette);
}

LentPalette::~LentPalette()
{
    graphic->setPalette(nullptr);
}

unsigned short coloursFilled(const unsigned char* palette)
{
    unsigned short count = 0;
    while (count < COLORS && palette[count * PIXEL_SIZE + ALPHA] != 0)
        ++count;
    return count;
}

std::runtime_error otherFrameSize(const std::string& path, unsigned int width, unsigned int height,
                                  const std::string& first, unsigned int firstWidth, unsigned int firstHeight)
{
    return std::runtime_error("'" + path + "' is " + size(width, height) + ", " + first + " " +
                              size(firstWidth, firstHeight));
}

} // namespace lbxtool
