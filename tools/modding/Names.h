#ifndef ZORV2_LBX_TOOLS_MODDING_NAMES_H
#define ZORV2_LBX_TOOLS_MODDING_NAMES_H

#include "archive/File.h"

#include <cstddef>
#include <set>
#include <stdexcept>
#include <string>

// The names the tools give and read: of the files they make from entries, of
// entries in messages, of archives in the game's catalogue, of entries and
// numbers given as text.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// The catalogue row of an archive: the upper-cased stem of its file name.
File::LBX_FILE catalogueRow(const std::string& path);

// `text` in capitals, as the catalogue names archives.
std::string upperCase(std::string text);

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
// "STEM_007_003.png": frame 3 of entry 7. Frame numbers are padded like
// entry numbers, so that the frames of an entry sort, and glob, in order.
std::string frameFileName(const std::string& stem, unsigned int index, unsigned int frame);
// "STEM_007_sheet.png": an animation's frames side by side.
std::string sheetFileName(const std::string& stem, unsigned int index);
// "STEM_007_font2.png": the glyphs of font 2 of a font entry.
std::string fontSheetFileName(const std::string& stem, unsigned int index, unsigned int font);
// "STEM_007.txt": a text table's records, one a line.
std::string textFileName(const std::string& stem, unsigned int index);

// The ending of a file that holds an entry's bytes: a sound is a WAVE file,
// anything else is named after its kind.
std::string entrySuffix(Content* entry);

// `name` in `folder`, as a path.
std::string inFolder(const std::string& folder, const std::string& name);

// "DIR/STEM/" and "DIR/./STEM" as "DIR/STEM": the folder a user named,
// whatever way they wrote it.
std::string folderName(const std::string& folder);

// The name by which an entry of an archive shows in messages, as the library
// names it.
std::string entryName(const std::string& archive, unsigned int index);

// "1 entry", "2 entries": a count with its noun in the right number.
std::string counted(std::size_t count, const std::string& one, const std::string& many);
// The same for the nouns of an archive: entries, frames, files.
std::string entries(std::size_t count);
std::string frames(std::size_t count);

// The refusal of an archive whose file changed between two of its reads.
std::runtime_error changedWhileRead(const std::string& path);

// "'PATH' has no entry 9; its entries are 0 to 2": an index out of range,
// with the range. With `appends`, the entry count is in range too.
std::runtime_error noEntry(const std::string& path, std::size_t index, std::size_t count, bool appends = false);

// At most this many digits always fit an unsigned int.
constexpr std::size_t LARGEST_NUMBER_DIGITS = 9;
// Whether `text` holds nothing but the digits 0 to 9.
bool allDigits(const std::string& text);
// Whether `text` is a number of 1 to LARGEST_NUMBER_DIGITS digits.
bool smallNumber(const std::string& text);

// An entry named as ARCHIVE:INDEX.
struct EntryRef {
    std::string archive;
    unsigned int index;
};
EntryRef parseEntryRef(const std::string& text);

} // namespace lbxtool

#endif
