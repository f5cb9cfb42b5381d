#ifndef ZORV2_LBX_TOOLS_MODDING_PALETTESOURCE_H
#define ZORV2_LBX_TOOLS_MODDING_PALETTESOURCE_H

#include "archive/File.h"
#include "tools/modding/Files.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Warnings.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// Where the colours of an archive's graphics come from.
struct PaletteLookup {
    std::string entry;  // ARCHIVE:INDEX, whose palette stands for every source; empty: the game's own
    std::string folder; // where the game's archives are; empty: beside the archive
    std::string naming; // how the user names that folder, told when a source is not found there
};

// An archive whose entries are read one at a time, each a copy of its own:
// `size` entries, `read` callable from any thread.
struct ArchiveReader {
    std::string path;
    unsigned int size = 0;
    std::function<std::unique_ptr<Content>(unsigned int index)> read;
};

// Finds the colours of the graphics of one archive the way the game does:
// the archive's catalogue row names, per entry, an entry of FONTS (IFONTS)
// whose palette lies beneath, and an entry of the same archive (or of INFO,
// DIPLOMAT) whose colours go over it; the graphic's own block comes last.
// An explicit source ARCHIVE:INDEX takes the place of both.
//
// Workers ask for the palettes of the entries they work on at the same time.
// The source reads those entries only where their own workers do not
// change them, and keeps private copies of the other entries it reads.
class PaletteSource {
public:
    // The game's archives are found and read through `files`; what cannot
    // be read is said to `warnings`, once for the archive whatever the number
    // of its graphics that miss it.
    PaletteSource(File& archive, const PaletteLookup& lookup, Files& files, Warnings& warnings);
    // The same for an archive held in memory, which stands for the file at `path`.
    PaletteSource(File& archive, const std::string& path, const PaletteLookup& lookup, Files& files,
                  Warnings& warnings);
    // The same for an archive whose entries are read as they are needed.
    PaletteSource(ArchiveReader reader, const PaletteLookup& lookup, Files& files, Warnings& warnings);

    // Every archive beside this one that a palette of it may come from: a
    // front end that writes keeps its writes off them, whichever entries
    // are written before their palettes are looked up.
    std::vector<std::string> sourcePaths();

    // A new palette array for graphic entry `index`. Sources that cannot be
    // read are warned about, each time they are needed, and left out; black
    // stands where none reaches. Without `ownBlock` the graphic's own block
    // is left out: what lies beneath it.
    PaletteArray forGraphic(unsigned int index, bool ownBlock = true);
    // The same for a caller that holds the graphic, which is then not read again.
    PaletteArray forGraphic(unsigned int index, Content::Graphic* graphic, bool ownBlock);

    // The palette of the entry named ARCHIVE:INDEX, over black; throws if
    // that entry holds no palette.
    static PaletteArray read(const std::string& reference, Files& files);

private:
    // An archive that palettes come from, or why it cannot be read.
    struct Source {
        std::unique_ptr<File> archive;
        std::string problem;
        bool missing = false; // not found at all, which its problem says for the whole archive
    };

    // Paints source (row, index) over `palette`; false, with a warning, if
    // it cannot be read.
    // `missing` becomes true when the source archive is not found.
    bool paintFrom(File::LBX_FILE row, unsigned int index, unsigned char* palette, bool& missing);
    Source openSource(File::LBX_FILE row);
    File* sourceArchive(File::LBX_FILE row, bool& missing);
    Content* ownEntry(unsigned int index);

    std::mutex turn;
    ArchiveReader archive;
    Files& files;
    Warnings& warnings;
    std::string folder;
    std::string naming;
    File::LBX_FILE row;
    PaletteArray explicitPalette;
    std::map<File::LBX_FILE, Source> opened;
    std::map<unsigned int, std::unique_ptr<Content>> copies;
};

// Paints the palette that entry `entry` holds over `palette`: a cursor's
// whole palette, a graphic's block. Throws if the entry holds none.
void paintPalette(Content* entry, const std::string& name, unsigned char* palette);

} // namespace lbxtool

#endif
