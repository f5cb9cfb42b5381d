#ifndef ZORV2_LBX_TOOLS_MANIFEST_H
#define ZORV2_LBX_TOOLS_MANIFEST_H

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

// archive.json, the manifest of an unpacked archive: what it holds, read
// with messages that name the manifest, the entry and the field.
namespace lbxtool {

// Keys keep the order they were written in, so the file reads top down.
using Json = nlohmann::ordered_json;

// The manifest as text: indented by two, with a list of numbers on one line,
// so that a font's 256 widths do not take 256 lines.
std::string manifestText(const Json& manifest);

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

// 256 colours of a palette array as 1536 hex digits, red, green, blue each.
std::string hexColours(const unsigned char* palette);
void readHexColours(const std::string& hex, unsigned char* palette, const ManifestPlace& place);

} // namespace lbxtool

#endif
