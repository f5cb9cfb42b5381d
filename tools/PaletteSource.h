#ifndef ZORV2_LBX_TOOLS_PALETTESOURCE_H
#define ZORV2_LBX_TOOLS_PALETTESOURCE_H

#include "archive/File.h"

#include <map>
#include <memory>
#include <string>

namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

using PaletteArray = std::unique_ptr<unsigned char[]>;

// Finds the colours of the graphics of one archive the way the game does:
// the archive's catalogue row names, per entry, an entry of FONTS (IFONTS)
// whose palette lies beneath, and an entry of the same archive (or of INFO,
// DIPLOMAT) whose colours go over it; the graphic's own block comes last.
// An explicit source ARCHIVE:INDEX takes the place of both.
class PaletteSource {
public:
    PaletteSource(File& archive, const std::string& explicitSource);

    // A new palette array for graphic entry `index`. Sources that cannot be
    // read are warned about and left out; black stands where none reaches.
    // Without `ownBlock` the graphic's own block is left out: what lies
    // beneath it.
    PaletteArray forGraphic(unsigned int index, bool ownBlock = true);

    // The palette of the entry named ARCHIVE:INDEX, over black; throws if
    // that entry holds no palette.
    static PaletteArray read(const std::string& reference);

private:
    // Paints source (row, index) over `palette`; false, with a warning, if
    // it cannot be read.
    bool paintFrom(File::LBX_FILE row, unsigned int index, unsigned char* palette);
    File* sourceArchive(File::LBX_FILE row);

    File& archive;
    std::string folder;
    File::LBX_FILE row;
    PaletteArray explicitPalette;
    std::map<File::LBX_FILE, std::unique_ptr<File>> opened;
};

// Paints the palette that entry `entry` holds over `palette`: a cursor's
// whole palette, a graphic's block. Throws if the entry holds none.
void paintPalette(Content* entry, const std::string& name, unsigned char* palette);

} // namespace lbxtool

#endif
