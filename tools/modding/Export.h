#ifndef ZORV2_LBX_TOOLS_MODDING_EXPORT_H
#define ZORV2_LBX_TOOLS_MODDING_EXPORT_H

#include "archive/File.h"
#include "tools/modding/Charset.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/PaletteSource.h"

#include <string>
#include <vector>

// Entries as files to look at and use elsewhere: graphics and cursors as PNG
// (every frame, and a sprite sheet per animation), text tables and font
// metrics as text, sounds as WAVE files.
namespace lbxtool {

// A file made and not yet written, named in the export folder.
struct MadeFile {
    std::string name;
    std::string bytes;
};

// A picture among the exported files.
struct SheetFile {
    std::string name;
    unsigned int width = 0, height = 0;
};

// Which exported file shows what of an entry.
struct ExportedNames {
    std::string swatch;                // the colours of a graphic without frames
    std::vector<std::string> frames;   // every frame, as the game shows it
    std::string sheet;                 // an animation's frames side by side
    std::string file;                  // the text, metrics or sound
    std::vector<SheetFile> fontSheets; // a font entry's glyphs, a sheet per font

    // Every name, in the order the files are written.
    std::vector<std::string> all() const;
};

// The files that exporting `entry`, entry `index` of its archive, makes,
// named after `stem`: known before anything is decoded, so that a command
// can refuse before it writes the first.
ExportedNames exportNames(Content* entry, const std::string& stem, unsigned int index);

// One entry exported: what it shows and which files show it, or why it
// could not be exported, with only its heading then.
struct ExportedEntry {
    EntryView view;
    ExportedNames names;
    std::vector<MadeFile> files; // in the order to write them, those made before a failure too
    std::string error;
};

// `entry`, entry `index` of the archive at `path`, its files named after
// `stem` for `folder`, graphics in the colours of `palettes`, text tables in
// `charset` (none: in the text escape). The entry is decoded where it
// stands: a copy of the caller's own, whose frames go with it.
ExportedEntry exportEntry(Content& entry, const std::string& path, unsigned int index, const std::string& stem,
                          const std::string& folder, PaletteSource& palettes, const Charset* charset = nullptr);

} // namespace lbxtool

#endif
