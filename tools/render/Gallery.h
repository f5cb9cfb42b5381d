#ifndef ZORV2_LBX_TOOLS_RENDER_GALLERY_H
#define ZORV2_LBX_TOOLS_RENDER_GALLERY_H

#include "tools/modding/EntryView.h"
#include "tools/modding/Export.h"
#include "tools/modding/Files.h"

#include <string>
#include <vector>

namespace lbxtool {

// What the page shows of one entry: what it shows, the exported files that
// show it, or why it could not be exported.
struct GalleryEntry {
    EntryView view;
    ExportedNames files;
    std::string error;
};

// The gallery's page in its folder, and how many bytes from its start tell
// a page this tool wrote from any other file.
const std::string GALLERY_PAGE = "index.html";
constexpr std::size_t GALLERY_MARK_SIZE = 128;
bool isGalleryPage(const std::string& start);

// The HTML page of an export folder. Each archive exported into the folder
// leaves its part beside the images, and index.html is put together anew from
// all parts, so that one page shows every archive exported there.
class Gallery {
public:
    Gallery(std::string archive, std::string stem);
    void add(GalleryEntry entry);
    // Writes this archive's part and rebuilds index.html through `files`;
    // returns its path.
    std::string write(const std::string& folder, Files& files);

private:
    std::string part();

    std::string archive;
    std::string stem;
    std::vector<GalleryEntry> entries;
};

} // namespace lbxtool

#endif
