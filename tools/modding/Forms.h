#ifndef ZORV2_LBX_TOOLS_MODDING_FORMS_H
#define ZORV2_LBX_TOOLS_MODDING_FORMS_H

#include "entry/Content.h"
#include "tools/modding/Charset.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Png.h"
#include "tools/modding/Warnings.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The editable forms of entries, for unpack and pack: each kind to files
// that ordinary editors open and back, what the files cannot hold kept in
// the entry's part of the manifest.
namespace lbxtool {

using zorv2::Lbx::Content;
class PaletteSource;

// One entry's editable form.
struct EntryForm {
    Json manifest;                            // its kind and settings, and the names of its files
    std::map<std::string, std::string> files; // by name: what pack reads back
    std::map<std::string, std::string> views; // by name: only to look at
    // The pictures its frames' files were made of, by name: what reading
    // the files back gives, for the check that the form packs back.
    std::map<std::string, Picture> pictures;
};

// What unpacking entry `index` needs besides the entry.
struct UnpackPlace {
    std::string stem; // the names of its files begin with it
    unsigned int index;
    PaletteSource& palettes;
    const Charset* charset = nullptr; // text tables' lines in it; none: in the text escape
};

// How pack reaches an entry's files: by name, in the folder; unpack's own
// check reads the files it has made in memory.
using FileReader = std::function<std::string(const std::string& name)>;

// What pack allows beyond the entries as they were unpacked.
struct PackRules {
    bool nearest = false; // RGBA colours not in the palette take the nearest
    bool strict = false;  // transparency or colours that changed are refused instead of warned about
    bool grow = false;    // text records may grow past their table's record length
    bool records = false; // text tables may gain or lose records
};

struct PackPlace {
    ManifestPlace manifest;
    FileReader read;
    std::string folder; // for messages that name a file
    PackRules rules;
    Warnings& warnings; // what the user should know of the entry's files
    const Charset* charset = nullptr; // what text tables' lines are in; none: the text escape
    // Pictures of files made a moment ago, by name: each taken (once) as it
    // was made instead of decoding its file again.
    std::map<std::string, Picture>* made = nullptr;

    std::string pathOf(const std::string& name) const;
};

// The entry's editable form when packing that form gives the entry back
// byte for byte; otherwise its bytes, with the reason in the manifest.
EntryForm editableForm(Content* entry, const UnpackPlace& place);

// The entry the form describes; throws one line that names the file or the
// manifest field and the problem.
std::unique_ptr<Content> entryFromForm(const Json& manifest, const PackPlace& place);

// The records that a text table's file `text`, read from `path`, stands
// for: a line each, in `charset` or, without one, unescaped; throws naming
// the line that is not one.
std::vector<std::string> recordsOfFile(const std::string& text, const std::string& path,
                                       const Charset* charset = nullptr);

// A text table's records as its file: a line each, in `charset` or, without
// one, in the text escape.
std::string linesOfRecords(const std::vector<std::string>& records, const Charset* charset);

// How many bytes a string may have in a text table of records of `length`:
// one less than the length at the lengths the library chooses, whose
// records keep a zero behind every string, the length itself at any other.
std::size_t recordRoom(unsigned int length);

// A text table of `records` at records of `length`, laid out as the
// library's own create lays out the length it chooses; the caller owns it.
Content* tableOfLength(const std::vector<std::string>& records, unsigned int length);

// The files an entry's form consists of: those pack reads, and the views.
std::vector<std::string> formFiles(const Json& manifest, const ManifestPlace& place);
std::vector<std::string> viewFiles(const Json& manifest);

} // namespace lbxtool

#endif
