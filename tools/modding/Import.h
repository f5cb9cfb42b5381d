#ifndef ZORV2_LBX_TOOLS_MODDING_IMPORT_H
#define ZORV2_LBX_TOOLS_MODDING_IMPORT_H

#include "entry/Content.h"
#include "tools/modding/Png.h"
#include "tools/modding/Warnings.h"

#include <memory>
#include <string>
#include <vector>

// Pictures made into a graphic entry.
namespace lbxtool {

// What a graphic holds besides its frames and colours.
struct GraphicSettings {
    unsigned short flags = 0;
    unsigned char clearOnce = 0;
    unsigned char clearMod = 0;
};

// The settings for a graphic of `frames` frames from the flags as text
// ("loop,clear" or a number) and the clear settings; throws naming what does
// not fit.
GraphicSettings graphicSettings(std::size_t frames, const std::string& flags, unsigned int clearOnce,
                                unsigned int clearMod);

// Throws unless `frame`, read from `path`, can be a frame of a graphic whose
// first frame is `first`.
void requireFrameFits(const Picture& frame, const std::string& path, const Picture& first);

// Whether graphicOfPictures takes `pictures` by their indices: all are
// indexed with a palette of 256 colours (as unpack writes them), and no
// palette is named.
bool takenByIndices(const std::vector<Picture>& pictures, const unsigned char* palette);

// A graphic entry of `pictures`, read from the files `paths`. Taken by their
// indices, they keep them; any others get a palette built from their
// colours, stored in the entry. With `palette`, colours are looked up in it
// and it is stored only when the flags ask for it. Only a fully opaque
// pixel is painted: partly transparent ones are said to `warnings`, or
// with `strict` refused.
std::unique_ptr<zorv2::Lbx::Content> graphicOfPictures(const std::vector<Picture>& pictures,
                                                        const std::vector<std::string>& paths,
                                                        GraphicSettings settings, const unsigned char* palette,
                                                        bool strict, Warnings& warnings);

// The colours an entry of `pictures` holds itself: with the palette flag
// the first picture's, else none (nullptr). Where it is stored in an
// archive, the archive gives it colours of its own instead.
const unsigned char* ownColours(const std::vector<Picture>& pictures, GraphicSettings settings);

// Of pictures taken by their indices, each that paints a colour other than
// `colours` (the entry's colours where it goes; nullptr when it holds none)
// loses it: said to `warnings`, or with `strict` refused, naming the file.
void sayColours(const std::vector<Picture>& pictures, const std::vector<std::string>& paths,
                const unsigned char* colours, bool strict, Warnings& warnings);

} // namespace lbxtool

#endif
