#ifndef ZORV2_LBX_TOOLS_GALLERY_H
#define ZORV2_LBX_TOOLS_GALLERY_H

#include <string>
#include <vector>

namespace lbxtool {

// Colours of a palette, four bytes each, from palette index `first` on.
struct Swatch {
    unsigned int first = 0;
    std::vector<unsigned char> rgba;
};

// One of a font entry's fonts: its height, the width of each glyph, and the
// picture of its glyphs.
struct FontFace {
    unsigned int height = 0;
    std::vector<unsigned int> widths;
    std::string sheet;
    unsigned int sheetWidth = 0, sheetHeight = 0;
};

// What the page shows of one entry; file names are relative to the page.
struct GalleryEntry {
    unsigned int index = 0;
    std::string name;
    std::string kind;
    std::string info;
    std::string error; // why the entry could not be exported
    // Graphics and cursors: every frame as the game shows it, delta frames
    // drawn over their predecessors.
    unsigned int width = 0, height = 0;
    std::vector<std::string> frames;
    bool loop = false;
    bool delta = false;
    std::string sheet;
    Swatch palette;
    std::vector<FontFace> fonts;
    std::vector<std::string> rows; // text records as they are stored
    std::string file;              // the exported text, metrics or sound
    bool sound = false;
};

// The HTML page of an export folder. Each archive exported into the folder
// leaves its part beside the images, and index.html is put together anew from
// all parts, so that one page shows every archive exported there.
class Gallery {
public:
    Gallery(std::string archive, std::string stem);
    void add(GalleryEntry entry);
    // Writes this archive's part and rebuilds index.html; returns its path.
    std::string write(const std::string& folder);

private:
    std::string part();

    std::string archive;
    std::string stem;
    std::vector<GalleryEntry> entries;
};

} // namespace lbxtool

#endif
