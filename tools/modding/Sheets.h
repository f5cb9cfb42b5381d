#ifndef ZORV2_LBX_TOOLS_MODDING_SHEETS_H
#define ZORV2_LBX_TOOLS_MODDING_SHEETS_H

#include "tools/modding/Shapes.h"

#include <vector>

// Pictures of many pictures, to look at: an animation's frames side by side,
// a font's glyphs in a grid.
namespace lbxtool {

// The frames side by side, at most eight a row, in one image, transparent
// where the last row is not full.
Image spriteSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height);

// The same of frames of palette indices, a byte a pixel, `gap` where the
// last row is not full.
struct IndexSheet {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<unsigned char> indices;
};
IndexSheet indexSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height,
                      unsigned char gap);

// Whether the sheet of `count` frames leaves part of its last row empty.
bool sheetHasGap(std::size_t count);

// The glyphs of font `font` (0 to 5) of a font entry in rows of 16, each in
// a box as wide as the glyph and as high as the font, a line apart, with
// whatever pixels the library gives the glyph drawn over its box. Throws for
// a font taller than the game's screen.
Image glyphSheet(Content::Font* entry, unsigned int font);

} // namespace lbxtool

#endif
