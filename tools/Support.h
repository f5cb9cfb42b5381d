#ifndef ZORV2_LBX_TOOLS_SUPPORT_H
#define ZORV2_LBX_TOOLS_SUPPORT_H

#include "archive/File.h"
#include "entry/Content.h"
#include "images/PixelLayout.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// What every command of the lbx tool shares: reporting, paths, the catalogue
// row of an archive, and writing that never leaves a half-written file.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// Decoded pictures and palette arrays in the library's layout.
using zorv2::Lbx::layout::ALPHA;
using zorv2::Lbx::layout::COLORS;
using zorv2::Lbx::layout::PALETTE_BYTES;
using zorv2::Lbx::layout::PIXEL_SIZE;
// A cursor's frame is a flat run of 576 pixels with no row length of its
// own; the tool shows it as the square it is.
constexpr unsigned int CURSOR_FRAMES = 20;
constexpr unsigned int CURSOR_SIDE = 24;
constexpr unsigned int FONTS_PER_ENTRY = 6;
constexpr unsigned int GLYPHS_PER_FONT = 256;

// The number of colours that Palette::create filled: they are opaque, the
// entries behind them all zero.
unsigned short coloursFilled(const unsigned char* palette);

// One line on stderr; every failure the user sees goes through here.
void reportError(const std::string& message);
// One line on stderr, printed once however often it comes up.
void warn(const std::string& message);

// The one text for a file that could not be written.
std::runtime_error cannotWrite(const std::string& path);

// Refuses a path that exists but is no regular file; a missing or unreadable
// one is left to the library, whose messages name it.
void requireRegularFile(const std::string& path);

// Runs `action` on each path; a failure is reported as one line and the next
// path is taken. Returns the exit status: 1 if any path failed.
int forEachPath(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& action);

// The catalogue row of an archive: the upper-cased stem of its file name.
File::LBX_FILE catalogueRow(const std::string& path);

// The stem of a path, with anything but letters, digits, '-' and '_' made
// '_', so that names derived from it are safe in file names and in URLs.
std::string safeStem(const std::string& path);

// "STEM_007.suffix": the name of a file made from entry `index`.
std::string entryFileName(const std::string& stem, unsigned int index, const std::string& suffix);

// The ending of a file that holds an entry's bytes: a sound is a WAVE file,
// anything else is named after its kind.
std::string entrySuffix(Content* entry);

// The name by which an entry of an archive shows in messages, as the library
// names it.
std::string entryName(const std::string& archive, unsigned int index);

// The indices a command works on: every entry when none are given, otherwise
// those given, each checked against the archive.
std::vector<unsigned int> selectIndices(File& archive, const std::vector<unsigned int>& wanted);

// Creates `folder` and its parents unless they exist; throws a message naming it.
void makeFolder(const std::string& folder);

// Lets `writer` fill a temporary file beside `target`, then renames it over
// the target. On any failure the temporary file goes and the target stays
// as it was.
void writeAtomically(const std::string& target, const std::function<void(const std::string&)>& writer);

// Writes `text` as it stands, through writeAtomically.
void writeText(const std::string& path, const std::string& text);

// Puts `entry` into the archive at `path`, replacing entry `index`, or
// appending it when `index` is the entry count, and rewrites the archive.
void storeEntry(const std::string& path, unsigned int index, std::unique_ptr<Content> entry);

// The archive of catalogue name `name` in `folder`, whatever the case of its
// file name; empty when there is none.
std::string findArchive(const std::string& folder, const std::string& name);

// An entry named on the command line as ARCHIVE:INDEX.
struct EntryRef {
    std::string archive;
    unsigned int index;
};
EntryRef parseEntryRef(const std::string& text);

} // namespace lbxtool

#endif
