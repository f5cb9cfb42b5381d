#ifndef ZORV2_LBX_TOOLS_PATHS_H
#define ZORV2_LBX_TOOLS_PATHS_H

#include "archive/File.h"

#include <set>
#include <string>

// The names the lbx tool gives and finds: of files it writes, of entries in
// messages, of archives in the game's catalogue.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// The catalogue row of an archive: the upper-cased stem of its file name.
File::LBX_FILE catalogueRow(const std::string& path);

// The archive of catalogue name `name` in `folder`, whatever the case of its
// file name; empty when there is none.
std::string findArchive(const std::string& folder, const std::string& name);

// The stem of a path, with anything but letters, digits, '-' and '_' made
// '_', so that names derived from it are safe in file names and in URLs.
std::string safeStem(const std::string& path);

// Stems for the archives of one run that writes into one folder: the second
// archive whose stem matches an earlier one's (in any case) gets "-2", the
// third "-3", so that no archive's files land on another's.
class StemNames {
public:
    std::string next(const std::string& path);

private:
    std::set<std::string> taken;
};

// "STEM_007.suffix": the name of a file made from entry `index`.
std::string entryFileName(const std::string& stem, unsigned int index, const std::string& suffix);

// The ending of a file that holds an entry's bytes: a sound is a WAVE file,
// anything else is named after its kind.
std::string entrySuffix(Content* entry);

// The name by which an entry of an archive shows in messages, as the library
// names it.
std::string entryName(const std::string& archive, unsigned int index);

// Creates `folder` and its parents unless they exist; throws a message naming it.
void makeFolder(const std::string& folder);

// An entry named on the command line as ARCHIVE:INDEX.
struct EntryRef {
    std::string archive;
    unsigned int index;
};
EntryRef parseEntryRef(const std::string& text);

} // namespace lbxtool

#endif
