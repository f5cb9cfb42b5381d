#ifndef ZORV2_LBX_TOOLS_GLYPHSHEET_H
#define ZORV2_LBX_TOOLS_GLYPHSHEET_H

#include "tools/Png.h"
#include "tools/Pictures.h"

namespace lbxtool {

// The glyphs of font `font` (0 to 5) of a font entry in rows of 16, each in
// a box as wide as the glyph and as high as the font, a line apart, with
// whatever pixels the library gives the glyph drawn over its box. Throws for
// a font taller than the game's screen.
Image glyphSheet(Content::Font* entry, unsigned int font);

} // namespace lbxtool

#endif
