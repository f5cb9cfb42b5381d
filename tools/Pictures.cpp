#include "tools/Pictures.h"

#include "images/Graphic.h"

namespace lbxtool {

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

} // namespace lbxtool
