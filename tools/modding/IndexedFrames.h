#ifndef ZORV2_LBX_TOOLS_MODDING_INDEXEDFRAMES_H
#define ZORV2_LBX_TOOLS_MODDING_INDEXEDFRAMES_H

#include "entry/Content.h"
#include "tools/modding/Png.h"
#include "tools/modding/Warnings.h"

#include <string>
#include <vector>

// Frames as the palette indices an entry stores, so that they travel to PNG
// files and back unchanged. The library hands frames out as RGBA; decoded
// with Palette::fake, whose 256 colours all differ, each colour names the
// index behind it, and the encoders given fake colours store those indices
// again.
namespace lbxtool {

using zorv2::Lbx::Content;

// One value a pixel: a palette index, or CLEAR where nothing is painted.
using Indices = std::vector<unsigned short>;
constexpr unsigned short CLEAR = 256;
// A cursor's index 0 is its transparent one: no painted pixel has it.
constexpr int CURSOR_CLEAR = 0;

// The indices behind `pixels` RGBA pixels decoded with Palette::fake.
Indices indicesOfFake(const unsigned char* rgba, std::size_t pixels);

// The palette indices that each frame of a graphic or a cursor stores.
std::vector<Indices> storedIndices(Content::Graphic* graphic);
std::vector<Indices> storedIndices(Content::Cursor* cursor);

// How an edited picture is turned back into indices.
struct Lookup {
    const unsigned char* palette; // the colours it is shown in, for RGBA pictures
    unsigned int begin;           // the lowest index a painted pixel may take
    bool nearest;                 // a colour not in the palette takes the nearest instead of a refusal
    int transparent;              // the index that stands for unpainted pixels in an indexed picture, or NO_INDEX
};
constexpr int NO_INDEX = -1;

// A picture's indices, and the pixels that the file shows otherwise than
// the entry can: those are stored transparent, and the caller says so.
struct PictureIndices {
    Indices indices;
    std::size_t opaqueTransparent = 0; // at the transparent index, yet opaque in the file
    std::size_t partlyTransparent = 0; // alpha neither 0 nor 255
};

// The indices of frame `frame` of an entry, saved as `name`. Only a fully
// opaque pixel is painted: an indexed picture gives its indices as they
// stand, except the transparent one; an RGBA picture gives for each colour
// the lowest index of `lookup` that holds it.
PictureIndices indicesOfPicture(const Picture& picture, const Lookup& lookup, const std::string& name,
                                unsigned int frame);

// Tells `warnings` of the pixels of `picture`, read from `path`, that were
// stored transparent though the file shows them otherwise (`transparent` is
// the lookup's); with `strict` throws the first such message instead, with
// what to do.
void sayTransparency(const PictureIndices& picture, int transparent, const std::string& path, bool strict,
                     Warnings& warnings);

// A raw graphic paints every pixel of every frame: throws, naming `path`,
// when `unpainted` of its pixels are not fully opaque.
void requirePainted(std::size_t unpainted, const std::string& path);

// "1 pixel", "7 pixels": counts in messages.
std::string counted(std::size_t count, const std::string& thing);

// An animation's frames as PNG files in the colours of `shown`, in the
// indices the entry stores: 8-bit indexed, unpainted pixels at index
// `clear` made transparent (CHOOSE_CLEAR: the highest index that no frame
// paints); RGBA when each of the 256 is painted and a pixel is left
// unpainted. More than one frame also gives them side by side, in the same
// form where an index is left for the sheet's empty corner. `names` name the
// frames' files and `sheetName` the sheet's, in messages.
struct FramePngs {
    std::vector<std::string> frames;
    std::vector<Picture> pictures; // each frame's file as reading it back gives it
    std::string sheet;
    int transparent = NO_INDEX; // the index unpainted pixels take in the frames' files
};
constexpr int CHOOSE_CLEAR = -2;
FramePngs framePngs(const std::vector<Indices>& frames, unsigned int width, unsigned int height,
                    const unsigned char* shown, int clear, const std::vector<std::string>& names,
                    const std::string& sheetName);

// A graphic entry that stores exactly `frames`, with `palette` as its
// colours for the palette block.
Content* graphicOfIndices(const std::vector<Indices>& frames, unsigned short width, unsigned short height,
                          unsigned char clearOnce, unsigned char clearMod, unsigned char* palette,
                          unsigned short palOffset, unsigned short palSize, unsigned short flags);

// A cursor entry that stores exactly `frames` (CLEAR as index 0) and `palette`.
Content* cursorOfIndices(const std::vector<Indices>& frames, unsigned char* palette);

} // namespace lbxtool

#endif
