#include "tools/modding/Translation.h"

#include "images/Font.h"
#include "kinds/Text.h"
#include "tools/modding/Forms.h"
#include "tools/modding/Names.h"
#include "tools/modding/Po.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/TextEscape.h"

#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>

namespace lbxtool {

namespace {

const std::string CHARSET_FIELD = "X-Lbx-Charset";
const std::string FONT_FIELD = "X-Lbx-Font";
const std::string CONTENT_TYPE = "Content-Type";

std::string archiveName(const std::string& path)
{
    return std::filesystem::path(path).filename().string();
}

std::string context(const std::string& archive, unsigned int entry, unsigned int record)
{
    return archive + " " + std::to_string(entry) + ":" + std::to_string(record);
}

unsigned int recordLength(Content* entry)
{
    return entry->text()->read2(RECORD_LENGTH_OFFSET);
}

std::string quotedContext(const std::string& text)
{
    return "msgctxt \"" + text + "\"";
}

std::string lowerCase(std::string text)
{
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// A record that a msgctxt names.
struct Place {
    std::size_t archive;
    unsigned int entry, record;
};

// How msgctxt names records: the archives by file name, each text table's
// records by entry and record number.
class Records {
public:
    explicit Records(const std::vector<TranslatedArchive>& archives) : archives(archives)
    {
        for (std::size_t a = 0; a < archives.size(); ++a) {
            const std::string name = archiveName(archives[a].path);
            if (!byName.emplace(upperCase(name), a).second)
                throw std::runtime_error("two archives named " + upperCase(name) +
                                         " are given; their records would share their names");
        }
    }

    // The record `text` names; throws, saying why, when it names none.
    Place find(const std::string& text) const
    {
        const std::size_t blank = text.rfind(' ');
        const std::size_t colon = text.rfind(':');
        if (blank == std::string::npos || colon == std::string::npos || colon < blank ||
            !smallNumber(text.substr(blank + 1, colon - blank - 1)) || !smallNumber(text.substr(colon + 1)))
            throw std::runtime_error("is not of the form \"ARCHIVE ENTRY:RECORD\"");
        const std::string name = text.substr(0, blank);
        const auto archive = byName.find(upperCase(name));
        if (archive == byName.end()) {
            std::string given;
            for (const TranslatedArchive& a : archives)
                given += (given.empty() ? "" : ", ") + archiveName(a.path);
            throw std::runtime_error("names no record: no archive " + name + " is given (given: " + given + ")");
        }
        const unsigned int entry = static_cast<unsigned int>(std::stoul(text.substr(blank + 1, colon - blank - 1)));
        const unsigned int record = static_cast<unsigned int>(std::stoul(text.substr(colon + 1)));
        File& file = *archives[archive->second].archive;
        const std::string there = archiveName(archives[archive->second].path);
        if (entry >= file.size())
            throw std::runtime_error("names no record: " + there + " has no entry " + std::to_string(entry) +
                                     " (its entries are 0 to " + std::to_string(file.size() - 1) + ")");
        Content* content = file[entry];
        if (content->type() != Content::TEXT)
            throw std::runtime_error("names no record: entry " + std::to_string(entry) + " of " + there + " is " +
                                     content->typeStr() + ", not a text table");
        if (record >= content->text()->size())
            throw std::runtime_error("names no record: entry " + std::to_string(entry) + " of " + there + " has " +
                                     counted(content->text()->size(), "record", "records"));
        return {archive->second, entry, record};
    }

private:
    const std::vector<TranslatedArchive>& archives;
    std::map<std::string, std::size_t> byName;
};

std::string widthComment(unsigned int width, const FontMeasure& font)
{
    return std::to_string(width) + " px wide in font " + font.name;
}

// The header's checks: the file is UTF-8, and its msgids are in the
// charset given.
void requireHeader(const PoEntry& header, const std::string& poPath, const Charset& charset)
{
    const std::string where = "'" + poPath + "' line " + std::to_string(header.line) + ": ";
    const std::string type = lowerCase(headerField(header.str, CONTENT_TYPE));
    const std::size_t named = type.find("charset=");
    if (named != std::string::npos) {
        const std::string set = type.substr(named + 8);
        if (set != "utf-8" && set != "utf8" && set != "charset")
            throw std::runtime_error(where + "the file's charset is " + set + "; save it as UTF-8");
    }
    const std::string exported = headerField(header.str, CHARSET_FIELD);
    if (!exported.empty() && exported != charset.name())
        throw std::runtime_error(where + "its texts are in the charset " + exported + ", not " + charset.name() +
                                 "; give --charset " + exported + " as on export");
}

// Throws naming the first line of `po` that is not UTF-8.
void requireUtf8(const std::string& po, const std::string& poPath)
{
    const std::vector<std::string> lines = textLines(po);
    for (std::size_t line = 0; line < lines.size(); ++line)
        if (!validUtf8(lines[line]))
            throw std::runtime_error("'" + poPath + "' line " + std::to_string(line + 1) +
                                     ": not UTF-8; save the file as UTF-8");
}

} // namespace

unsigned int FontMeasure::width(const std::string& bytes) const
{
    unsigned int sum = 0;
    for (const char c : bytes)
        sum += widths[static_cast<unsigned char>(c)];
    return sum;
}

FontMeasure fontMeasure(Content& entry, unsigned int font, const std::string& name)
{
    if (entry.type() != Content::FONT)
        throw std::runtime_error(name + ": the entry is " + entry.typeStr() + ", not a font");
    if (font >= FONTS_PER_ENTRY)
        throw std::runtime_error(name + ": a font entry holds fonts 0 to " + std::to_string(FONTS_PER_ENTRY - 1));
    FontMeasure measure;
    measure.name = name;
    for (unsigned int glyph = 0; glyph < GLYPHS_PER_FONT; ++glyph)
        measure.widths[glyph] = entry.font()->width(font, glyph);
    return measure;
}

std::string poTemplate(const std::vector<TranslatedArchive>& archives, const Charset& charset,
                       const FontMeasure* font)
{
    const Records names(archives); // refuses two archives of one name
    std::vector<PoEntry> entries(1);
    std::string project;
    for (const TranslatedArchive& archive : archives)
        project += (project.empty() ? "" : ", ") + archiveName(archive.path);
    PoEntry& header = entries.front();
    header.translatorComments = {"Text tables of tesk's " + project + ", made by lbx po-export.",
                                 "Translate each msgstr; lbx po-import puts the translation into the archives."};
    // As xgettext writes a template's header: fuzzy, with the fields that
    // msginit and the translators' tools fill in.
    header.fuzzy = true;
    header.str = "Project-Id-Version: " + project +
                 "\nPO-Revision-Date: YEAR-MO-DA HO:MI+ZONE\nLast-Translator: FULL NAME <EMAIL@ADDRESS>\n"
                 "Language-Team: LANGUAGE <LL@li.org>\nLanguage: \nMIME-Version: 1.0\n" + CONTENT_TYPE +
                 ": text/plain; charset=UTF-8\nContent-Transfer-Encoding: 8bit\n" + CHARSET_FIELD + ": " +
                 charset.name() + "\n" + (font == nullptr ? "" : FONT_FIELD + ": " + font->name + "\n");
    StemNames stems;
    for (const TranslatedArchive& archive : archives) {
        const std::string name = archiveName(archive.path);
        const std::string stem = stems.next(archive.path);
        File& file = *archive.archive;
        for (unsigned int e = 0; e < file.size(); ++e) {
            Content* entry = file[e];
            if (entry->type() != Content::TEXT)
                continue;
            const std::size_t room = recordRoom(recordLength(entry));
            for (unsigned int r = 0; r < entry->text()->size(); ++r) {
                const std::string record = entry->text()->get(r);
                PoEntry po;
                po.hasContext = true;
                po.context = context(name, e, r);
                po.id = charset.decode(record);
                po.comments.push_back("at most " + counted(room, "byte", "bytes"));
                if (font != nullptr)
                    po.comments.push_back(widthComment(font->width(record), *font));
                po.references.push_back(stem + "/" + textFileName(stem, e) + ":" + std::to_string(r + 1));
                entries.push_back(po);
            }
        }
    }
    return poText(entries);
}

std::vector<ImportCount> importPo(const std::string& po, const std::string& poPath,
                                  const std::vector<TranslatedArchive>& archives, const Charset& charset,
                                  const FontMeasure* font, Warnings& warnings)
{
    requireUtf8(po, poPath);
    const Records names(archives);
    const std::vector<PoEntry> entries = parsePo(po, poPath);
    // The new records of each table that changes, by archive and entry.
    std::map<std::pair<std::size_t, unsigned int>, std::vector<std::string>> tables;
    std::vector<ImportCount> counts(archives.size());
    std::map<std::string, std::size_t> seen;
    for (const PoEntry& entry : entries) {
        const std::string at = "'" + poPath + "' line " + std::to_string(entry.line) + ": ";
        if (!entry.hasContext && entry.id.empty()) {
            requireHeader(entry, poPath, charset);
            continue;
        }
        if (!entry.hasContext)
            throw std::runtime_error(at + "an entry without msgctxt, which names the record it translates");
        const std::string named = at + quotedContext(entry.context) + " ";
        const auto earlier = seen.emplace(entry.context, entry.line);
        if (!earlier.second)
            throw std::runtime_error(named + "comes twice; first at line " + std::to_string(earlier.first->second));
        Place place{};
        try {
            place = names.find(entry.context);
        } catch (const std::runtime_error& e) {
            throw std::runtime_error(named + e.what());
        }
        if (entry.fuzzy || entry.str.empty())
            continue;
        Content* content = (*archives[place.archive].archive)[place.entry];
        const std::string original = content->text()->get(place.record);
        const std::string on = "'" + poPath + "' line " + std::to_string(entry.strLine) + ": " +
                               quotedContext(entry.context) + ": ";
        std::string bytes;
        try {
            bytes = charset.encode(entry.str);
        } catch (const CharsetError& e) {
            throw std::runtime_error(on + e.problem + " at column " + std::to_string(e.column) + " of msgstr");
        }
        const std::size_t zero = bytes.find('\0');
        if (zero != std::string::npos)
            throw std::runtime_error(on + "\\x00 in msgstr would end the record there, as the game reads up to a "
                                          "zero byte; take it out");
        const std::size_t room = recordRoom(recordLength(content));
        if (bytes.size() > room)
            throw std::runtime_error(on + "msgstr is " + counted(bytes.size(), "byte", "bytes") +
                                     " in the charset " + charset.name() + ", more than the " + std::to_string(room) +
                                     " the record holds");
        if (font != nullptr && font->width(bytes) > font->width(original))
            warnings.warn(on + "the translation is " + std::to_string(font->width(bytes)) + " px wide, its original " +
                          std::to_string(font->width(original)) + " px, in font " + font->name);
        if (entry.id != charset.decode(original))
            warnings.warn(on + "the record is \"" + charset.decode(original) + "\" now, not its msgid; translated all "
                               "the same (msgmerge onto a new template finds such changes)");
        ImportCount& count = counts[place.archive];
        ++count.translated;
        if (bytes == original)
            continue;
        ++count.changed;
        auto table = tables.find({place.archive, place.entry});
        if (table == tables.end()) {
            std::vector<std::string> records;
            for (unsigned int r = 0; r < content->text()->size(); ++r)
                records.push_back(content->text()->get(r));
            table = tables.emplace(std::make_pair(place.archive, place.entry), records).first;
        }
        table->second[place.record] = bytes;
    }
    // Every check passed: the tables change.
    std::vector<std::unique_ptr<Content>> made;
    for (const auto& [where, records] : tables) {
        Content* content = (*archives[where.first].archive)[where.second];
        made.emplace_back(tableOfLength(records, recordLength(content)));
    }
    std::size_t m = 0;
    for (const auto& table : tables) {
        File& file = *archives[table.first.first].archive;
        const std::unique_ptr<Content> former(file[table.first.second]);
        file.replace(table.first.second, made[m++].release());
    }
    for (std::size_t a = 0; a < archives.size(); ++a) {
        File& file = *archives[a].archive;
        for (unsigned int e = 0; e < file.size(); ++e)
            if (file[e]->type() == Content::TEXT)
                counts[a].records += file[e]->text()->size();
    }
    return counts;
}

} // namespace lbxtool
