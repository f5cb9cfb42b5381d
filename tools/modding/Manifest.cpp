#include "tools/modding/Manifest.h"

#include "tools/modding/Charset.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/TextEscape.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace lbxtool {

namespace {

namespace layout = zorv2::Lbx::layout;

constexpr char HEX[] = "0123456789abcdef";
constexpr std::size_t HEX_PER_COLOUR = 6;

bool plainName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

constexpr int INDENT = 2;
// An entry's place in an archive's manifest: in the list under the top.
constexpr int ENTRY_DEPTH = 2;
// nlohmann's messages begin with a tag for programs: "[json.exception.parse_error.101] ".
constexpr char TAG_END = ']';

std::string indent(int depth)
{
    return std::string(std::size_t(depth) * INDENT, ' ');
}

// A key as JSON writes it. The manifest's own keys and most file names need
// no escape: quoted as they are, they cost no value made only to be written.
std::string keyText(const std::string& key)
{
    const bool plain = std::all_of(key.begin(), key.end(), [](char c) {
        return c >= ' ' && c <= '~' && c != '"' && c != '\\';
    });
    return plain ? '"' + key + '"' : Json(key).dump(-1, ' ', false, Json::error_handler_t::strict);
}

// Items already written, one to a line, as a list at `depth`.
void writeList(const std::vector<std::string>& items, int depth, std::string& text)
{
    if (items.empty()) {
        text += "[]";
        return;
    }
    text += "[\n";
    for (std::size_t i = 0; i < items.size(); ++i)
        text += indent(depth + 1) + items[i] + (i + 1 == items.size() ? "\n" : ",\n");
    text += indent(depth) + "]";
}

void writeValue(const Json& value, int depth, std::string& text)
{
    if (value.is_object() && !value.empty()) {
        text += "{\n";
        for (auto item = value.begin(); item != value.end(); ++item) {
            text += indent(depth + 1) + keyText(item.key()) + ": ";
            writeValue(item.value(), depth + 1, text);
            text += std::next(item) == value.end() ? "\n" : ",\n";
        }
        text += indent(depth) + "}";
    } else if (value.is_array() && !value.empty() &&
               !std::all_of(value.begin(), value.end(), [](const Json& item) { return item.is_number(); })) {
        text += "[\n";
        for (std::size_t i = 0; i < value.size(); ++i) {
            text += indent(depth + 1);
            writeValue(value[i], depth + 1, text);
            text += i + 1 == value.size() ? "\n" : ",\n";
        }
        text += indent(depth) + "]";
    } else {
        text += value.dump(-1, ' ', false, Json::error_handler_t::strict);
    }
}

} // namespace

Json parseManifest(const std::string& text, const std::string& path)
{
    try {
        return Json::parse(text);
    } catch (const Json::exception& e) {
        const std::string what = e.what();
        const std::size_t tag = what.find(TAG_END);
        throw std::runtime_error("'" + path + "' is not valid JSON (" +
                                 (tag == std::string::npos ? what : what.substr(tag + 2)) + ")");
    }
}

std::string manifestText(const Json& manifest)
{
    std::string text;
    writeValue(manifest, 0, text);
    return text + "\n";
}

std::string entryText(const Json& entry)
{
    std::string text;
    writeValue(entry, ENTRY_DEPTH, text);
    return text;
}

std::string manifestText(const Json& archive, const std::vector<std::string>& entries)
{
    std::string text = "{\n";
    for (auto item = archive.begin(); item != archive.end(); ++item) {
        text += indent(1) + keyText(item.key()) + ": ";
        if (item.key() == key::ENTRIES)
            writeList(entries, 1, text);
        else
            writeValue(item.value(), 1, text);
        text += std::next(item) == archive.end() ? "\n" : ",\n";
    }
    return text + "}\n";
}

std::runtime_error ManifestPlace::problem(const std::string& what) const
{
    return std::runtime_error("'" + manifest + "'" + (entry < 0 ? "" : " entry " + std::to_string(entry)) + ": " +
                              what);
}

const Json& member(const Json& object, const char* key, const ManifestPlace& place)
{
    if (!object.is_object() || !object.contains(key))
        throw place.problem(std::string("'") + key + "' is missing");
    return object.at(key);
}

unsigned int number(const Json& object, const char* key, unsigned int largest, const ManifestPlace& place)
{
    const Json& value = member(object, key, place);
    if (!value.is_number_unsigned() || value.get<unsigned long long>() > largest)
        throw place.problem(std::string("'") + key + "' must be a number from 0 to " + std::to_string(largest));
    return value.get<unsigned int>();
}

std::string text(const Json& object, const char* key, const ManifestPlace& place)
{
    const Json& value = member(object, key, place);
    if (!value.is_string())
        throw place.problem(std::string("'") + key + "' must be a text");
    return value.get<std::string>();
}

std::vector<unsigned int> numbers(const Json& object, const char* key, std::size_t count, unsigned int largest,
                                  const ManifestPlace& place)
{
    const Json& value = member(object, key, place);
    const std::string must = std::string("'") + key + "' must be a list of " + std::to_string(count) +
                             " numbers from 0 to " + std::to_string(largest);
    if (!value.is_array() || value.size() != count)
        throw place.problem(must);
    std::vector<unsigned int> all;
    for (const Json& item : value) {
        if (!item.is_number_unsigned() || item.get<unsigned long long>() > largest)
            throw place.problem(must);
        all.push_back(item.get<unsigned int>());
    }
    return all;
}

std::string fileName(const Json& object, const char* key, const ManifestPlace& place)
{
    const std::string name = text(object, key, place);
    if (!plainName(name))
        throw place.problem("'" + name + "' is not the name of a file in the folder");
    return name;
}

std::vector<std::string> fileNames(const Json& object, const char* key, const ManifestPlace& place)
{
    const Json& value = member(object, key, place);
    if (!value.is_array())
        throw place.problem(std::string("'") + key + "' must be a list of file names");
    std::vector<std::string> names;
    for (const Json& item : value) {
        if (!item.is_string() || !plainName(item.get<std::string>()))
            throw place.problem(std::string("'") + key + "' must be a list of names of files in the folder");
        names.push_back(item.get<std::string>());
    }
    return names;
}

Charset manifestCharset(const Json& manifest, const ManifestPlace& place)
{
    const std::string name = text(manifest, key::CHARSET, place);
    if (!manifest.contains(key::CHARSET_TABLE)) {
        if (name != Charset::CODE_PAGE_437)
            throw place.problem("'charset' " + name + " is not built in, and 'charsetTable' is missing");
        return Charset::codePage437();
    }
    try {
        return Charset::fromTable(text(manifest, key::CHARSET_TABLE, place), name, key::CHARSET_TABLE);
    } catch (const std::runtime_error& e) {
        throw place.problem(e.what());
    }
}

std::string hexColours(const unsigned char* palette)
{
    std::string hex;
    for (unsigned int i = 0; i < COLORS; ++i)
        for (unsigned int c = layout::RED; c < layout::ALPHA; ++c) {
            hex += HEX[palette[i * PIXEL_SIZE + c] >> 4];
            hex += HEX[palette[i * PIXEL_SIZE + c] & 0xF];
        }
    return hex;
}

void readHexColours(const std::string& hex, unsigned char* palette, const ManifestPlace& place)
{
    if (hex.size() != COLORS * HEX_PER_COLOUR)
        throw place.problem("'beneath' must be 256 colours of 6 hex digits");
    for (std::size_t at = 0; at < hex.size(); at += 2) {
        const int high = hexValue(hex[at]), low = hexValue(hex[at + 1]);
        if (high < 0 || low < 0)
            throw place.problem("'beneath' must be 256 colours of 6 hex digits");
        const std::size_t colour = at / HEX_PER_COLOUR, component = at % HEX_PER_COLOUR / 2;
        palette[colour * PIXEL_SIZE + component] = static_cast<unsigned char>(high << 4 | low);
        palette[colour * PIXEL_SIZE + layout::ALPHA] = layout::OPAQUE;
    }
}

} // namespace lbxtool
