#ifndef ZORV2_LBX_TOOLS_MODDING_SHAPES_H
#define ZORV2_LBX_TOOLS_MODDING_SHAPES_H

#include "entry/Content.h"
#include "images/PixelLayout.h"

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// The shapes of the pictures and palettes that the tools hand between the
// library and files, and their limits.
namespace lbxtool {

using zorv2::Lbx::Content;

// Decoded pictures and palette arrays in the library's layout.
using zorv2::Lbx::layout::ALPHA;
using zorv2::Lbx::layout::COLORS;
using zorv2::Lbx::layout::PALETTE_BYTES;
using zorv2::Lbx::layout::PIXEL_SIZE;
// A cursor's frame is a flat run of 576 pixels with no row length of its
// own; the tools show it as the square it is.
constexpr unsigned int CURSOR_FRAMES = 20;
constexpr unsigned int CURSOR_SIDE = 24;
constexpr unsigned int FONTS_PER_ENTRY = 6;
constexpr unsigned int GLYPHS_PER_FONT = 256;
// A text table's second 16-bit field is the length of its records; the
// library reads it but hands out only the strings.
constexpr unsigned int RECORD_LENGTH_OFFSET = 2;
// A graphic's sides and frame count are 16-bit fields.
constexpr unsigned int LARGEST_SIDE = std::numeric_limits<unsigned short>::max();

// A picture of four bytes a pixel, as the library decodes frames.
struct Image {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<unsigned char> rgba;
};

// A palette array of 256 RGBA colours.
using PaletteArray = std::unique_ptr<unsigned char[]>;
PaletteArray copyOfPalette(const unsigned char* palette);

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

// "'PATH' is WxH, FIRST WxH": a frame of another size than the first of its
// entry, named as `first` says.
std::runtime_error otherFrameSize(const std::string& path, unsigned int width, unsigned int height,
                                  const std::string& first, unsigned int firstWidth, unsigned int firstHeight);

} // namespace lbxtool

#endif
