#ifndef ZORV2_LBX_TOOLS_GALLERY_H
#define ZORV2_LBX_TOOLS_GALLERY_H

#include <string>
#include <vector>

namespace lbxtool {

// What the page shows of one entry; file names are relative to the page.
struct GalleryEntry {
    std::string name;
    std::string info;
    std::vector<std::string> frames; // played in a loop when there are several
    std::string sheet;
    std::string file; // the exported text, metrics or sound
    std::string preview; // text shown as it is
    bool sound = false;
};

// The HTML page of an export folder. Each archive exported into the folder
// leaves its part beside the images, and index.html is put together anew from
// all parts, so that one page shows every archive exported there.
class Gallery {
public:
    explicit Gallery(std::string archive);
    void add(GalleryEntry entry);
    // Writes this archive's part under `stem` and rebuilds index.html; returns its path.
    std::string write(const std::string& folder, const std::string& stem);

private:
    std::string part();

    std::string archive;
    std::vector<GalleryEntry> entries;
};

} // namespace lbxtool

#endif
