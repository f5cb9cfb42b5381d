// What every PNG layer (the tool's, the page's) does alike once a file is read.

#include "tools/modding/Png.h"

#include "tools/modding/Shapes.h"

#include <algorithm>

namespace lbxtool {

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

} // namespace lbxtool
