#include "tools/modding/Sheets.h"

#include "images/Font.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace lbxtool {

namespace {

constexpr unsigned int SPRITE_COLUMNS = 8;
constexpr unsigned int GLYPH_COLUMNS = 16;
// No font of the game is taller than its 200-line screen; a header that
// says otherwise gets no picture rather than gigabytes of one.
constexpr unsigned int TALLEST_FONT = 200;
// Glyph boxes alternate between two shades, so that neighbours stand apart.
constexpr unsigned char GLYPH_BOX[2][PIXEL_SIZE] = {{0x4a, 0x5a, 0x6e, 0xff}, {0x6e, 0x7e, 0x92, 0xff}};

// Frames of `pixelSize` bytes a pixel side by side, on `background`.
std::vector<unsigned char> tiled(const std::vector<const unsigned char*>& frames, unsigned int width,
                                 unsigned int height, unsigned int pixelSize, unsigned char background,
                                 unsigned int& sheetWidth, unsigned int& sheetHeight)
{
    const unsigned int count = static_cast<unsigned int>(frames.size());
    const unsigned int columns = std::min(count, SPRITE_COLUMNS);
    const unsigned int rows = columns == 0 ? 0 : (count + columns - 1) / columns;
    sheetWidth = columns * width;
    sheetHeight = rows * height;
    std::vector<unsigned char> sheet(std::size_t(sheetWidth) * sheetHeight * pixelSize, background);
    const std::size_t rowBytes = std::size_t(width) * pixelSize;
    for (unsigned int f = 0; f < count; ++f) {
        const std::size_t left = std::size_t(f % columns) * width;
        const std::size_t top = std::size_t(f / columns) * height;
        for (unsigned int y = 0; y < height; ++y)
            std::memcpy(&sheet[((top + y) * sheetWidth + left) * pixelSize], frames[f] + y * rowBytes, rowBytes);
    }
    return sheet;
}

} // namespace

Image spriteSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height)
{
    Image sheet;
    sheet.rgba = tiled(frames, width, height, PIXEL_SIZE, 0, sheet.width, sheet.height);
    return sheet;
}

IndexSheet indexSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height,
                      unsigned char gap)
{
    IndexSheet sheet;
    sheet.indices = tiled(frames, width, height, 1, gap, sheet.width, sheet.height);
    return sheet;
}

bool sheetHasGap(std::size_t count)
{
    return count > SPRITE_COLUMNS && count % SPRITE_COLUMNS != 0;
}

Image glyphSheet(Content::Font* entry, unsigned int font)
{
    const unsigned int height = entry->height(font);
    if (height > TALLEST_FONT)
        throw std::runtime_error("font " + std::to_string(font) + " is " + std::to_string(height) +
                                 " lines high, too high to draw");
    unsigned int widest = 0;
    for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
        widest = std::max<unsigned int>(widest, entry->width(font, g));
    const unsigned int cellWidth = widest + 1, cellHeight = height + 1;
    Image sheet;
    sheet.width = GLYPH_COLUMNS * cellWidth;
    sheet.height = GLYPHS_PER_FONT / GLYPH_COLUMNS * cellHeight;
    sheet.rgba.assign(std::size_t(sheet.width) * sheet.height * PIXEL_SIZE, 0);
    for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g) {
        const unsigned int width = entry->width(font, g);
        const std::unique_ptr<unsigned char[]> glyph(entry->glyph(font, g));
        const unsigned int left = g % GLYPH_COLUMNS * cellWidth, top = g / GLYPH_COLUMNS * cellHeight;
        for (unsigned int y = 0; y < height; ++y)
            for (unsigned int x = 0; x < width; ++x) {
                const unsigned char* drawn = &glyph[(std::size_t(y) * width + x) * PIXEL_SIZE];
                const unsigned char* shade = drawn[ALPHA] != 0 ? drawn : GLYPH_BOX[g % 2];
                std::copy(shade, shade + PIXEL_SIZE,
                          &sheet.rgba[((std::size_t(top) + y) * sheet.width + left + x) * PIXEL_SIZE]);
            }
    }
    return sheet;
}

} // namespace lbxtool
