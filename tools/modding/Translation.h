#ifndef ZORV2_LBX_TOOLS_MODDING_TRANSLATION_H
#define ZORV2_LBX_TOOLS_MODDING_TRANSLATION_H

#include "archive/File.h"
#include "tools/modding/Charset.h"
#include "tools/modding/Warnings.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

// The translators' road: every record of every text table as an entry of a
// gettext PO template, and a translated PO file back into the archives.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// One font of a font entry, by which strings are measured as the game draws
// them: the sum of the glyph widths of their bytes.
struct FontMeasure {
    std::string name; // as --font names it: "FONTS.LBX:0:2"
    std::array<unsigned int, 256> widths{};

    unsigned int width(const std::string& bytes) const;
};

// Font `font` (0 to 5) of `entry`, named `name`; throws when the entry is
// no font entry or the font is out of range.
FontMeasure fontMeasure(Content& entry, unsigned int font, const std::string& name);

// An archive the translation reads or changes, and the path it came from;
// its file name names it in the PO file.
struct TranslatedArchive {
    std::string path;
    File* archive;
};

// The PO template of every record of every text table of `archives`: an
// entry each, msgctxt "NAME ENTRY:RECORD", msgid the record in `charset`,
// comments with its limit in bytes and, with `font`, its width.
std::string poTemplate(const std::vector<TranslatedArchive>& archives, const Charset& charset,
                       const FontMeasure* font);

// What an import did to one archive.
struct ImportCount {
    std::size_t translated = 0; // records given a translation
    std::size_t changed = 0;    // of those, records whose bytes changed
    std::size_t records = 0;    // records of its text tables
};

// Puts the translations of the PO file `po`, read from `poPath`, into
// `archives`: each translated record in place of its original; an empty or
// fuzzy msgstr keeps it. Everything is checked before any archive changes:
// a problem throws one line naming the PO line and the msgctxt, and leaves
// every archive as it was. A translation wider than its original in `font`
// is said to `warnings`.
std::vector<ImportCount> importPo(const std::string& po, const std::string& poPath,
                                  const std::vector<TranslatedArchive>& archives, const Charset& charset,
                                  const FontMeasure* font, Warnings& warnings);

} // namespace lbxtool

#endif
