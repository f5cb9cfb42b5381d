#ifndef ZORV2_LBX_TOOLS_MODDING_ENTRYVIEW_H
#define ZORV2_LBX_TOOLS_MODDING_ENTRYVIEW_H

#include "archive/File.h"

#include <string>
#include <vector>

// What an entry shows: the one description from which the gallery, the
// browser and scripts present an entry, and messages name its shape.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// Colours of a palette, four bytes each, from palette index `first` on.
struct Swatch {
    unsigned int first = 0;
    std::vector<unsigned char> rgba;
};

// One of a font entry's fonts: its height and the width of each glyph.
struct FontFace {
    unsigned int height = 0;
    std::vector<unsigned int> widths;
};

struct EntryView {
    unsigned int index = 0;
    std::string name; // ARCHIVE[INDEX], as messages name it
    std::string kind;
    std::string info; // the library's one-line description
    // Graphics and cursors: `frames` frames of `width` x `height`, none for
    // a graphic whose frames hold no pixels. With `delta`, some frame is
    // drawn over the one before; with `loop`, the animation starts over.
    unsigned int width = 0, height = 0, frames = 0;
    bool loop = false;
    bool delta = false;
    Swatch palette; // a graphic's own block as it shows, a cursor's palette
    std::vector<FontFace> fonts;
    std::vector<std::string> rows; // a text table's records, as stored
    bool sound = false;
};

// What a view says before anything of the entry is decoded: its index,
// name, kind and description.
EntryView headingOf(Content* entry, const std::string& path, unsigned int index);
EntryView headingOf(File& archive, const std::string& path, unsigned int index);
// The heading of `view` alone, for an entry that failed half-way.
EntryView headingOf(const EntryView& view);

// The whole view of entry `index` of the archive at `path`. A graphic's block
// shows in `shown`, the palette it is drawn in (none: no swatch).
EntryView viewOf(Content* entry, const std::string& path, unsigned int index, const unsigned char* shown);
EntryView viewOf(File& archive, const std::string& path, unsigned int index, const unsigned char* shown);

// What an entry is, with what the game relies on beside its kind: a
// graphic's frame count and size, a text table's record count and length, a
// sound's format: "graphic (8 frames of 48x32)", "text (3 records of 100
// bytes)", "sound (22050 Hz, 8-bit, mono)", "unknown".
std::string shapeOf(Content* entry);

// How an entry changes in a way its user may not mean: another kind (text
// becoming unknown, a cursor becoming a graphic), or an entry of one kind
// and another shape. Empty when both have one shape.
std::string shapeChange(const std::string& was, const std::string& becomes);

} // namespace lbxtool

#endif
