#ifndef ZORV2_LBX_TOOLS_PICTURES_H
#define ZORV2_LBX_TOOLS_PICTURES_H

#include "entry/Content.h"
#include "images/PixelLayout.h"

// The shapes of the pictures the lbx tool hands between the library and PNG
// files.
namespace lbxtool {

using zorv2::Lbx::Content;

// Decoded pictures and palette arrays in the library's layout.
using zorv2::Lbx::layout::ALPHA;
using zorv2::Lbx::layout::COLORS;
using zorv2::Lbx::layout::PALETTE_BYTES;
using zorv2::Lbx::layout::PIXEL_SIZE;
// A cursor's frame is a flat run of 576 pixels with no row length of its
// own; the tool shows it as the square it is.
constexpr unsigned int CURSOR_FRAMES = 20;
constexpr unsigned int CURSOR_SIDE = 24;
constexpr unsigned int FONTS_PER_ENTRY = 6;
constexpr unsigned int GLYPHS_PER_FONT = 256;

// Lends a palette to a graphic while its frames are decoded; the graphic
// must not go on pointing at it once the palette is gone.
class LentPalette {
public:
    LentPalette(Content::Graphic* graphic, unsigned char* palette);
    ~LentPalette();
    LentPalette(const LentPalette&) = delete;
    LentPalette& operator=(const LentPalette&) = delete;

private:
    Content::Graphic* graphic;
};

// The number of colours that Palette::create filled: they are opaque, the
// entries behind them all zero.
unsigned short coloursFilled(const unsigned char* palette);

} // namespace lbxtool

#endif
