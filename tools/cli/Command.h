#ifndef ZORV2_LBX_TOOLS_CLI_COMMAND_H
#define ZORV2_LBX_TOOLS_CLI_COMMAND_H

#include "archive/File.h"
#include "entry/Content.h"
#include "tools/modding/Charset.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/Translation.h"
#include "tools/platform/SafeWrite.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// What the commands of `lbx` share: how each is defined, the options several
// take, and how their arguments are read.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// A misuse of the command line, found after parsing: exit status 2 like the
// parser's own.
class UsageError : public CLI::ParseError {
public:
    explicit UsageError(const std::string& message);
};

// The command runs `run` once parsing is done, and its exit status becomes
// `status`; a failure it does not report itself becomes one line and exit
// status 1.
void define(CLI::App& command, int& status, std::function<int()> run);

void examples(CLI::App& command, const std::string& lines);

// -j N. The output is the same whatever the number: only the time changes.
void jobsOption(CLI::App& command, unsigned int& jobs);

// -q, --quiet: no progress on stderr, which long work shows there when it is
// a terminal.
void quietOption(CLI::App& command);

// --json: the command prints one JSON document on stdout instead of its
// lines, and nothing else there; warnings and errors stay on stderr, and
// the exit status is the same.
void jsonOption(CLI::App& command, bool& json);
// `document` on stdout, indented, with a line end behind it. Bytes that are
// not UTF-8 (in a path) become U+FFFD.
void printJson(const Json& document);

// --palettes PATH, where the game's archives are for the colours of
// graphics: a folder, or an archive in it.
void palettesOption(CLI::App& command, std::string& path);
// The lookup of palette sources that --palettes and -p name.
PaletteLookup paletteLookup(const std::string& palettes, const std::string& entry = "");

// --charset NAME|FILE.tbl: the characters text tables' bytes stand for.
void charsetOption(CLI::App& command, std::string& option, const std::string& what);
// The charset the option names: the built-in CP437 by name, or a table file.
Charset charsetOf(const std::string& option);

// --font FONTS.LBX:ENTRY:N: the font strings are measured in.
void fontOption(CLI::App& command, std::string& option);
// The font the option names; none when it is empty.
std::unique_ptr<FontMeasure> fontOf(const std::string& option);

// The archives that po-export and po-import work on, opened, each beside its
// path.
struct TranslatedArchives {
    std::vector<std::unique_ptr<File>> files;
    std::vector<TranslatedArchive> archives;
};
TranslatedArchives translatedArchives(const std::vector<std::string>& paths);

// What a translation command reads besides `files`: the charset's table and
// the font's archive, which no write may land on.
std::vector<std::string> translationInputs(std::vector<std::string> files, const std::string& charset,
                                           const std::string& font);

// extract and export take archives and entry numbers in one list: an
// argument of digits alone is an entry of every archive (write ./12 for a
// file named 12).
void splitArchivesAndIndices(const std::vector<std::string>& items, std::vector<std::string>& archives,
                             std::vector<unsigned int>& indices);

// Runs `action` on each path; a failure is reported as one line, told to
// `failed` with its message when given, and the next path is taken. Returns
// the exit status: 1 if any path failed.
int forEachPath(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& action,
                const std::function<void(const std::string& path, const std::string& message)>& failed = nullptr);

// Puts the entry that `made` makes, once the archive has opened and `index`
// is known to fit, into the archive at `path` in place of entry `index`, or
// behind the others when `index` is the entry count, and rewrites the
// archive in place through `writer`. With `strict` an entry of another shape
// is refused before anything is written; so is whatever `check` refuses,
// shown the archive with the entry in place.
void storeIntoArchive(const SafeWriter& writer, const std::string& path, unsigned int index,
                      const std::function<std::unique_ptr<Content>()>& made, bool strict,
                      const std::function<void(File& archive)>& check = nullptr);

// Throws unless `file`, read from `path`, may become an entry: a file that
// is plainly something else (a picture, an archive, a manifest, a palette or
// a text table's lines) or a sound the game would not play is refused with
// what to use instead, `pictureInstead` for a PNG. With `raw` the bytes are
// meant as they are, and only an archive is refused: archives do not nest.
void requireEntryFile(const std::string& path, Content& file, bool raw, const std::string& pictureInstead);

} // namespace lbxtool

#endif
