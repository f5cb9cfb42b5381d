#ifndef ZORV2_LBX_TOOLS_MODDING_MANIFEST_H
#define ZORV2_LBX_TOOLS_MODDING_MANIFEST_H

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>
#include <vector>

// archive.json, the manifest of an unpacked archive: what it holds, read
// with messages that name the manifest, the entry and the field.
namespace lbxtool {

// Keys keep the order they were written in, so the file reads top down.
using Json = nlohmann::ordered_json;

// The manifest's file name, in the folder of the archive's files.
const std::string MANIFEST_NAME = "archive.json";

// The manifest's keys, each in one place.
namespace key {
// The archive: its file name, its tag word, a fingerprint of its header
// area but for the entry count and offsets, its entry count, and its entries
// in order.
constexpr const char* ARCHIVE = "archive";
constexpr const char* TAGGED = "tagged";
constexpr const char* HEADER = "header";
constexpr const char* COUNT = "count";
constexpr const char* ENTRIES = "entries";
// The charset that text tables' files are in, when unpack was given one:
// its name, and a table file's lines (the built-in one has none).
constexpr const char* CHARSET = "charset";
constexpr const char* CHARSET_TABLE = "charsetTable";
// Each entry: its kind and its files, what the library says it is, a
// fingerprint of its bytes, its place, and a fingerprint of each file as
// written.
constexpr const char* KIND = "kind";
constexpr const char* FILE = "file";
constexpr const char* FRAMES = "frames";
constexpr const char* PALETTE = "palette";
constexpr const char* VIEWS = "views";
constexpr const char* SHAPE = "shape";
constexpr const char* HASH = "hash";
constexpr const char* INDEX = "index"; // its place in the archive unpacked
constexpr const char* FILES = "files";
// A graphic's settings.
constexpr const char* WIDTH = "width";
constexpr const char* HEIGHT = "height";
constexpr const char* CLEAR_ONCE = "clearOnce";
constexpr const char* CLEAR_MOD = "clearMod";
constexpr const char* FLAGS = "flags";
constexpr const char* PALETTE_OFFSET = "paletteOffset";
constexpr const char* PALETTE_SIZE = "paletteSize";
constexpr const char* BENEATH = "beneath";
// The index a graphic's frames hold where nothing is painted, when one is.
constexpr const char* TRANSPARENT_INDEX = "transparentIndex";
// A text table's record count and record length, a font's metrics.
constexpr const char* RECORDS = "records";
constexpr const char* RECORD_HASHES = "recordHashes"; // a fingerprint of each record, joined by spaces
constexpr const char* RECORD_LENGTH = "recordLength";
constexpr const char* HEIGHTS = "heights";
constexpr const char* WIDTHS = "widths";
// An entry kept as bytes: the kind it was, and why it has no editable form.
constexpr const char* WAS = "was";
constexpr const char* WHY = "why";
} // namespace key

// The kinds of editable form, as "kind" names them.
namespace kind {
constexpr const char* GRAPHIC = "graphic";
constexpr const char* CURSOR = "cursor";
constexpr const char* TEXT = "text";
constexpr const char* FONT = "font";
constexpr const char* SOUND = "sound";
constexpr const char* BYTES = "bytes";
} // namespace kind

// The manifest in `text`, read from `path`; throws a message naming the
// file when it is no JSON.
Json parseManifest(const std::string& text, const std::string& path);

// The manifest as text: indented by two, with a list of numbers on one line,
// so that a font's 256 widths do not take 256 lines.
std::string manifestText(const Json& manifest);
// The same of an archive's manifest whose entries were written apart, each
// by entryText (on the workers, while the next is made): they stand in its
// list of entries, which `archive` holds empty.
std::string entryText(const Json& entry);
std::string manifestText(const Json& archive, const std::vector<std::string>& entries);

// Where a value stands, for messages: "'DIR/archive.json' entry 3".
struct ManifestPlace {
    std::string manifest;
    int entry = -1; // -1: the archive's own fields

    std::runtime_error problem(const std::string& what) const;
};

const Json& member(const Json& object, const char* key, const ManifestPlace& place);
unsigned int number(const Json& object, const char* key, unsigned int largest, const ManifestPlace& place);
std::string text(const Json& object, const char* key, const ManifestPlace& place);
std::vector<unsigned int> numbers(const Json& object, const char* key, std::size_t count, unsigned int largest,
                                  const ManifestPlace& place);
// A list of file names; each must name a file in the folder itself.
std::vector<std::string> fileNames(const Json& object, const char* key, const ManifestPlace& place);
std::string fileName(const Json& object, const char* key, const ManifestPlace& place);

// The charset the manifest's archive-level fields name; throws naming the
// field when they name none.
class Charset;
Charset manifestCharset(const Json& manifest, const ManifestPlace& place);

// 256 colours of a palette array as 1536 hex digits, red, green, blue each.
std::string hexColours(const unsigned char* palette);
void readHexColours(const std::string& hex, unsigned char* palette, const ManifestPlace& place);

} // namespace lbxtool

#endif
