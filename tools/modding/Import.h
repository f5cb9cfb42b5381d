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

// A graphic entry of `pictures`, read from the files `paths`. Without
// `palette`, indexed pictures with a palette of 256 colours (as unpack writes
// them) keep their indices, and any others get a palette built from their
// colours, stored in the entry. With `palette`, colours are looked up in it
// and it is stored only when the flags ask for it. Only a fully opaque
// pixel is painted: partly transparent ones are said to `warnings`, or
// with `strict` refused.
std::unique_ptr<zorv2::Lbx::Content> graphicOfPictures(const std::vector<Picture>& pictures,
                                                        const std::vector<std::string>& paths,
                                                        GraphicSettings settings, const unsigned char* palette,
                                                        bool strict, Warnings& warnings);

} // namespace lbxtool

#endif
