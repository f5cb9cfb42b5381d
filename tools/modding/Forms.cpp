#include "tools/modding/Forms.h"

#include "entry/AbstractContent.h"
#include "entry/Write.h"
#include "images/Font.h"
#include "kinds/Text.h"
#include "tools/modding/EntryFiles.h"
#include "tools/modding/FormKinds.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Names.h"
#include "tools/modding/Png.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Sheets.h"
#include "tools/modding/TextEscape.h"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace lbxtool {

namespace forms {

std::unique_ptr<Content> created(const PackPlace& place, const std::function<Content*()>& create)
{
    try {
        return std::unique_ptr<Content>(create());
    } catch (const std::exception& e) {
        throw place.manifest.problem(e.what());
    }
}

namespace {

using Text = Content::Text;
using Font = Content::Font;

constexpr unsigned int LARGEST_FIELD = std::numeric_limits<unsigned short>::max();
constexpr unsigned int LARGEST_WIDTH = std::numeric_limits<unsigned char>::max();

std::string bytesOf(Content* entry)
{
    return std::string(entry->data(), entry->size());
}

// The entry's bytes as a file: a sound as the WAVE file it is, anything
// else as .bin.
EntryForm bytes(Content* entry, const UnpackPlace& place, const std::string& why)
{
    EntryForm form;
    const bool sound = entry->type() == Content::SOUND && why.empty();
    const std::string name = entryFileName(place.stem, place.index, sound ? ".wav" : ".bin");
    form.manifest[key::KIND] = sound ? kind::SOUND : kind::BYTES;
    if (!sound)
        form.manifest[key::WAS] = entry->typeStr();
    if (!why.empty())
        form.manifest[key::WHY] = why;
    form.manifest[key::FILE] = name;
    form.files[name] = bytesOf(entry);
    return form;
}

// Whether `data` is the file `name` as unpack wrote it: whatever it holds,
// it is then the entry's own bytes.
bool asUnpacked(const Json& manifest, const std::string& name, const std::string& data)
{
    const auto files = manifest.find(key::FILES);
    if (files == manifest.end() || !files->is_object())
        return false;
    const auto hash = files->find(name);
    return hash != files->end() && hash->is_string() && hash->get<std::string>() == hashOf(data);
}

std::unique_ptr<Content> entryOfBytes(const std::string& data, const std::string& path)
{
    char* block = new char[data.size()];
    std::memcpy(block, data.data(), data.size());
    return std::make_unique<Content>(path, block, static_cast<unsigned int>(data.size()));
}

std::unique_ptr<Content> soundFrom(const Json& manifest, const PackPlace& place)
{
    const std::string name = fileName(manifest, key::FILE, place.manifest);
    const std::string data = place.read(name);
    const std::string path = place.pathOf(name);
    const std::string problem = asUnpacked(manifest, name, data) ? "" : soundProblem(data.data(), data.size());
    if (!problem.empty())
        throw std::runtime_error("'" + path + "' " + problem + "; save it as a plain WAVE file");
    return entryOfBytes(data, path);
}

// A .bin holds an entry's bytes whatever they are; a file that is plainly
// something else is a mistake that would be stored without a word.
std::unique_ptr<Content> bytesFrom(const Json& manifest, const PackPlace& place)
{
    const std::string name = fileName(manifest, key::FILE, place.manifest);
    const std::string data = place.read(name);
    const std::string path = place.pathOf(name);
    const FileKind is = asUnpacked(manifest, name, data) ? FileKind::ENTRY : fileKind(data.data(), data.size());
    const std::string putBack = "; put back the file that unpack wrote";
    switch (is) {
    case FileKind::ENTRY:
    case FileKind::TEXT: // an entry of the game may well be text
        return entryOfBytes(data, path);
    case FileKind::ARCHIVE:
        throw std::runtime_error("'" + path + "' is an LBX archive, which is never an entry" + putBack);
    case FileKind::PNG:
        throw std::runtime_error("'" + path + "' is a PNG image, not an entry's bytes" + putBack +
                                 " (lbx import makes pictures a graphic)");
    default: throw std::runtime_error("'" + path + "' is " + fileKindName(is) + ", not an entry's bytes" + putBack);
    }
}

std::vector<std::string> recordsOf(Text* table)
{
    std::vector<std::string> records;
    for (unsigned int i = 0; i < table->size(); ++i)
        records.push_back(table->get(i));
    return records;
}

EntryForm text(Content* entry, const UnpackPlace& place)
{
    std::vector<std::string> records = recordsOf(entry->text());
    EntryForm form;
    const std::string name = textFileName(place.stem, place.index);
    form.manifest[key::KIND] = kind::TEXT;
    form.manifest[key::FILE] = name;
    // The game finds a record by its number, at its length: pack holds an
    // edited file to both unless told otherwise.
    form.manifest[key::RECORDS] = records.size();
    form.manifest[key::RECORD_LENGTH] = entry->text()->read2(RECORD_LENGTH_OFFSET);
    form.manifest[key::RECORD_HASHES] = hashesOf(records);
    form.files[name] = linesOfRecords(records, place.charset);
    return form;
}

// A table whose records have the length the manifest names, laid out as
// the library's own create lays out the length it chooses.
Content* tableOfLength(const std::vector<std::string>& records, unsigned int length)
{
    Content::Write write;
    write.add2("nr", static_cast<unsigned short>(records.size()));
    write.add2("textsize", static_cast<unsigned short>(length));
    std::vector<char> block(records.size() * length, '\0');
    for (std::size_t i = 0; i < records.size(); ++i)
        std::copy(records[i].begin(), records[i].end(), block.begin() + static_cast<std::ptrdiff_t>(i * length));
    write.add(block.data(), static_cast<unsigned int>(block.size()));
    return Content::AbstractContent::genContent(write, Content::TEXT);
}

// Whether a table of records of `length` keeps a zero behind every string:
// it does at the lengths the library chooses for strings shorter than them,
// and the library's own check of the table expects it there. At any other
// length the longest string may fill its record.
bool endsEveryRecord(unsigned int length)
{
    if (length == 0)
        return false;
    std::vector<std::string> probe = {std::string(length - 1, 'x')};
    const std::unique_ptr<Content> chosen(Text::create(probe));
    return chosen->text()->read2(RECORD_LENGTH_OFFSET) == length;
}

// The records a table's file stands for, a line each; a line the game would
// read otherwise than it stands is refused where it stands.
std::vector<std::string> recordsOfLines(const std::string& text, const std::string& path, const Charset* charset)
{
    std::vector<std::string> records;
    for (const std::string& line : textLines(text)) {
        const std::string where = "'" + path + "' line " + std::to_string(records.size() + 1) + ": ";
        try {
            records.push_back(charset != nullptr ? charset->encode(line) : unescapeText(line));
        } catch (const std::runtime_error& e) {
            throw std::runtime_error(where + e.what());
        }
        const std::size_t zero = records.back().find('\0');
        const std::size_t column =
            charset != nullptr ? columnOf(line, line.find("\\x00")) : lineColumn(line, zero);
        if (zero != std::string::npos)
            throw std::runtime_error(where + "\\x00 at column " + std::to_string(column) +
                                     " would end the record there, as the game reads up to a zero byte; take it out");
    }
    return records;
}

std::unique_ptr<Content> textFrom(const Json& manifest, const PackPlace& place)
{
    const std::string name = fileName(manifest, key::FILE, place.manifest);
    const std::string path = place.pathOf(name);
    std::vector<std::string> records = recordsOfLines(place.read(name), path, place.charset);
    if (records.size() > LARGEST_FIELD)
        throw std::runtime_error("'" + path + "' has " + std::to_string(records.size()) +
                                 " lines; a table holds at most 65535");
    // A manifest of before records and lengths were written keeps the
    // library's choice of length, as it always had.
    if (manifest.contains(key::RECORDS) && !place.rules.records) {
        const unsigned int count = number(manifest, key::RECORDS, LARGEST_FIELD, place.manifest);
        if (records.size() != count)
            throw std::runtime_error("'" + path + "' has " + std::to_string(records.size()) + " lines and the table " +
                                     std::to_string(count) + " records; a line is a record (--records lets the "
                                     "count change)");
    }
    if (!manifest.contains(key::RECORD_LENGTH))
        return created(place, [&] { return Text::create(records); });
    const unsigned int length = number(manifest, key::RECORD_LENGTH, LARGEST_FIELD, place.manifest);
    const bool ended = endsEveryRecord(length);
    const std::size_t fits = ended ? length - 1 : length;
    for (std::size_t line = 0; line < records.size(); ++line) {
        if (records[line].size() <= fits)
            continue;
        if (place.rules.grow)
            return created(place, [&] { return Text::create(records); });
        const std::string limit = ended ? "the " + std::to_string(fits) + " that the table's records of " +
                                              std::to_string(length) + " hold before the zero that ends them"
                                        : "the table's records of " + std::to_string(length);
        throw std::runtime_error("'" + path + "' line " + std::to_string(line + 1) + " has " +
                                 std::to_string(records[line].size()) + " bytes, more than " + limit +
                                 " (--grow lets records grow)");
    }
    return created(place, [&] { return tableOfLength(records, length); });
}

EntryForm font(Font* font, const UnpackPlace& place)
{
    EntryForm form;
    form.manifest[key::KIND] = kind::FONT;
    form.manifest[key::HEIGHTS] = Json::array();
    form.manifest[key::WIDTHS] = Json::array();
    for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f) {
        form.manifest[key::HEIGHTS].push_back(font->height(f));
        Json widths = Json::array();
        for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
            widths.push_back(font->width(f, g));
        form.manifest[key::WIDTHS].push_back(widths);
        try {
            const Image sheet = glyphSheet(font, f);
            const std::string name = fontSheetFileName(place.stem, place.index, f);
            form.views[name] = viewPng(sheet.rgba.data(), sheet.width, sheet.height, name);
        } catch (const std::runtime_error&) {
            // too tall to draw: the metrics stand without a picture
        }
    }
    return form;
}

std::unique_ptr<Content> fontFrom(const Json& manifest, const PackPlace& place)
{
    std::vector<unsigned int> heights = numbers(manifest, key::HEIGHTS, FONTS_PER_ENTRY, LARGEST_FIELD, place.manifest);
    const Json& perFont = member(manifest, key::WIDTHS, place.manifest);
    if (!perFont.is_array() || perFont.size() != FONTS_PER_ENTRY)
        throw place.manifest.problem("'widths' must be a list of 6 lists of 256 numbers from 0 to 255");
    std::vector<unsigned short> shortHeights(heights.begin(), heights.end());
    std::vector<unsigned char> widths;
    for (const Json& font : perFont)
        for (const unsigned int width : numbers(Json{{key::WIDTHS, font}}, key::WIDTHS, GLYPHS_PER_FONT, LARGEST_WIDTH,
                                                place.manifest))
            widths.push_back(static_cast<unsigned char>(width));
    return created(place, [&] { return Font::create(nullptr, shortHeights.data(), widths.data(), nullptr); });
}

// How pack makes each kind of form back into an entry.
const struct {
    const char* kind;
    std::unique_ptr<Content> (*make)(const Json& manifest, const PackPlace& place);
} MAKERS[] = {
    {kind::GRAPHIC, graphicFrom}, {kind::CURSOR, cursorFrom}, {kind::TEXT, textFrom},
    {kind::FONT, fontFrom},       {kind::SOUND, soundFrom},    {kind::BYTES, bytesFrom},
};

EntryForm editable(Content* entry, const UnpackPlace& place)
{
    switch (entry->type()) {
    case Content::GRAPHIC: return graphic(entry->graphic(), place);
    case Content::CURSOR: return cursor(entry->cursor(), place);
    case Content::TEXT: return text(entry, place);
    case Content::FONT: return font(entry->font(), place);
    default: return bytes(entry, place, "");
    }
}

} // namespace
} // namespace forms

std::vector<std::string> recordsOfFile(const std::string& text, const std::string& path, const Charset* charset)
{
    return forms::recordsOfLines(text, path, charset);
}

std::string linesOfRecords(const std::vector<std::string>& records, const Charset* charset)
{
    if (charset == nullptr)
        return escapedLines(records);
    std::string lines;
    for (const std::string& record : records)
        lines += charset->decode(record) + '\n';
    return lines;
}

std::size_t recordRoom(unsigned int length)
{
    return forms::endsEveryRecord(length) ? length - 1 : length;
}

Content* tableOfLength(const std::vector<std::string>& records, unsigned int length)
{
    return forms::tableOfLength(records, length);
}

namespace {

// An unedited form packs without a word: whatever pack would say of it is
// a reason to keep the entry's bytes instead.
class Refused : public Warnings {
public:
    void warn(const std::string& message) override { throw std::runtime_error(message); }
};

} // namespace

std::string PackPlace::pathOf(const std::string& name) const
{
    return folder.empty() ? name : folder + "/" + name;
}

EntryForm editableForm(Content* entry, const UnpackPlace& place)
{
    std::string why;
    try {
        EntryForm form = forms::editable(entry, place);
        if (form.manifest[key::KIND] == kind::BYTES)
            return form; // bytes come back as they are
        Refused refused;
        PackRules strict;
        strict.strict = true;
        const PackPlace trial{{"unpacked form", static_cast<int>(place.index)},
                              [&form](const std::string& name) { return form.files.at(name); }, "", strict,
                              refused, place.charset, &form.pictures};
        const std::unique_ptr<Content> rebuilt = entryFromForm(form.manifest, trial);
        form.pictures.clear();
        if (rebuilt->size() == entry->size() && std::memcmp(rebuilt->data(), entry->data(), entry->size()) == 0) {
            for (const auto& view : form.views)
                form.manifest[key::VIEWS].push_back(view.first);
            return form;
        }
        why = "made again from its editable form it comes out with other bytes";
    } catch (const std::exception& e) {
        why = e.what();
    }
    return forms::bytes(entry, place, why);
}

std::unique_ptr<Content> entryFromForm(const Json& manifest, const PackPlace& place)
{
    const std::string named = text(manifest, key::KIND, place.manifest);
    std::string known;
    for (const auto& maker : forms::MAKERS) {
        if (named == maker.kind)
            return maker.make(manifest, place);
        known += (known.empty() ? "" : ", ") + std::string(maker.kind);
    }
    throw place.manifest.problem("unknown kind '" + named + "' (known: " + known + ")");
}

std::vector<std::string> formFiles(const Json& manifest, const ManifestPlace& place)
{
    std::vector<std::string> names;
    if (manifest.contains(key::FRAMES))
        names = fileNames(manifest, key::FRAMES, place);
    for (const char* field : {key::PALETTE, key::FILE})
        if (manifest.contains(field))
            names.push_back(fileName(manifest, field, place));
    return names;
}

std::vector<std::string> viewFiles(const Json& manifest)
{
    std::vector<std::string> names;
    if (manifest.contains(key::VIEWS) && manifest[key::VIEWS].is_array())
        for (const Json& name : manifest[key::VIEWS])
            if (name.is_string())
                names.push_back(name.get<std::string>());
    return names;
}

} // namespace lbxtool
