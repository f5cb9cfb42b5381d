#include "tools/modding/Mod.h"

#include "entry/Content.h"
#include "tools/modding/Base64.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Header.h"
#include "tools/modding/Manifest.h"

#include <cstring>
#include <map>
#include <memory>

namespace lbxtool {

namespace {

// The mod file is JSON, its bytes in base64:
//
//   { "lbxMod": 1, "archive": "INBOX.LBX",
//     "base":   { "entries": 5, "size": 9000, "fingerprint": "..." },
//     "result": { "entries": 6, "size": 9400, "fingerprint": "..." },
//     "header": "...",                        only when not the writer's
//     "changes": [ { "index": 1, "was": {size, fingerprint}, "becomes": {size, fingerprint},
//                    "bytes": "..." | "copyOf": 4 | "delta": "..." | "records": { "count": 8, "length": 100,
//                        "changed": [ { "number": 3, "was": "...", "bytes": "..." } ] } } ],
//     "undo": { "header": "...", "changes": [ ... ] } }      only when reversible
namespace field {
constexpr const char* FORMAT = "lbxMod";
constexpr const char* ARCHIVE = "archive";
constexpr const char* BASE = "base";
constexpr const char* RESULT = "result";
constexpr const char* ENTRIES = "entries";
constexpr const char* SIZE = "size";
constexpr const char* FINGERPRINT = "fingerprint";
constexpr const char* HEADER = "header";
constexpr const char* CHANGES = "changes";
constexpr const char* UNDO = "undo";
constexpr const char* INDEX = "index";
constexpr const char* WAS = "was";
constexpr const char* BECOMES = "becomes";
constexpr const char* BYTES = "bytes";
constexpr const char* COPY_OF = "copyOf";
constexpr const char* DELTA = "delta";
constexpr const char* RECORDS = "records";
constexpr const char* COUNT = "count";
constexpr const char* LENGTH = "length";
constexpr const char* CHANGED = "changed";
constexpr const char* NUMBER = "number";
} // namespace field

// A text table: a count and a length of 16 bits each, then the records.
constexpr std::size_t TABLE_HEAD = 4;
constexpr unsigned int LARGEST_FIELD = 0xFFFF;
constexpr unsigned int LARGEST_SIZE = 0xFFFFFFFF;

// Records travel alone when they make at most this share of their table.
constexpr std::size_t RECORDS_SHARE = 2;
// An entry travels as a patch of the base's when that is at most 3/4 of it.
constexpr std::size_t DELTA_PARTS = 4, DELTA_SHARE = 3;

struct TableShape {
    unsigned int count = 0, length = 0;
};

unsigned int field16(const std::string& bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1]) << 8;
}

bool classifiedAsText(const std::string& bytes)
{
    std::unique_ptr<char[]> copy(new char[bytes.size()]);
    std::memcpy(copy.get(), bytes.data(), bytes.size());
    Content entry("", copy.release(), static_cast<unsigned int>(bytes.size()));
    return entry.type() == Content::TEXT;
}

// The shape of a text table as the library reads it; none for other bytes.
std::optional<TableShape> tableShape(const std::string& bytes)
{
    if (bytes.size() < TABLE_HEAD)
        return std::nullopt;
    const TableShape shape{field16(bytes, 0), field16(bytes, 2)};
    if (TABLE_HEAD + std::size_t(shape.count) * shape.length != bytes.size() || !classifiedAsText(bytes))
        return std::nullopt;
    return shape;
}

// The records of `becomes` that differ from those of `was`, two tables of
// one shape, when they are few enough to travel alone.
bool changedRecords(const std::string& was, const std::string& becomes, EntryPatch& change)
{
    const std::optional<TableShape> before = tableShape(was), after = tableShape(becomes);
    if (!before || !after || before->count != after->count || before->length != after->length)
        return false;
    std::vector<RecordPatch> records;
    for (unsigned int r = 0; r < after->count; ++r) {
        std::string record = recordOf(becomes, r, after->length);
        const std::string old = recordOf(was, r, after->length);
        if (record != old)
            records.push_back({r, hashOf(old), std::move(record)});
    }
    if (records.size() * after->length * RECORDS_SHARE > becomes.size())
        return false;
    change.source = EntryPatch::RECORDS;
    change.recordCount = after->count;
    change.recordLength = after->length;
    change.records = std::move(records);
    return true;
}

// Where each entry of an archive stands, by its bytes.
class Places {
public:
    explicit Places(const std::vector<std::string>& entries) : entries(entries)
    {
        for (unsigned int i = 0; i < entries.size(); ++i)
            byHash[hashOf(entries[i])].push_back(i);
    }

    std::optional<unsigned int> find(const std::string& bytes) const
    {
        const auto found = byHash.find(hashOf(bytes));
        if (found != byHash.end())
            for (const unsigned int i : found->second)
                if (entries[i] == bytes)
                    return i;
        return std::nullopt;
    }

private:
    const std::vector<std::string>& entries;
    std::map<std::string, std::vector<unsigned int>> byHash;
};

EntryPatch changeOf(const ArchiveBytes& from, const ArchiveBytes& to, const Places& places, unsigned int i)
{
    EntryPatch change;
    change.index = i;
    if (i < from.entries.size())
        change.was = Fingerprint::of(from.entries[i]);
    if (i >= to.entries.size())
        return change;
    const std::string& bytes = to.entries[i];
    change.becomes = Fingerprint::of(bytes);
    if (const std::optional<unsigned int> at = places.find(bytes)) {
        change.source = EntryPatch::COPY;
        change.copyOf = *at;
    } else if (!change.was || !changedRecords(from.entries[i], bytes, change)) {
        std::string delta = change.was ? bpsPatch(from.entries[i], bytes) : "";
        const bool smaller = change.was && delta.size() * DELTA_PARTS <= bytes.size() * DELTA_SHARE;
        change.source = smaller ? EntryPatch::DELTA : EntryPatch::BYTES;
        change.bytes = smaller ? std::move(delta) : bytes;
    }
    return change;
}

std::vector<EntryPatch> changesBetween(const ArchiveBytes& from, const ArchiveBytes& to)
{
    const Places places(from.entries);
    std::vector<EntryPatch> changes;
    const std::size_t count = std::max(from.entries.size(), to.entries.size());
    for (unsigned int i = 0; i < count; ++i)
        if (i >= from.entries.size() || i >= to.entries.size() || from.entries[i] != to.entries[i])
            changes.push_back(changeOf(from, to, places, i));
    return changes;
}

ArchiveSummary summaryOf(const ArchiveBytes& archive)
{
    return {static_cast<unsigned int>(archive.entries.size()), Fingerprint::of(archive.file())};
}

// The header area a mod carries: none when the writer writes it anyway.
std::string headerToCarry(const ArchiveBytes& archive)
{
    return archive.writtenHeader() ? "" : archive.header;
}

// Writing the file.

Json fingerprintJson(const Fingerprint& fingerprint)
{
    return Json{{field::SIZE, fingerprint.size}, {field::FINGERPRINT, fingerprint.hash}};
}

Json recordsJson(const EntryPatch& change)
{
    Json changed = Json::array();
    for (const RecordPatch& record : change.records)
        changed.push_back(Json{{field::NUMBER, record.number}, {field::WAS, record.was},
                               {field::BYTES, toBase64(record.bytes)}});
    return Json{{field::COUNT, change.recordCount}, {field::LENGTH, change.recordLength}, {field::CHANGED, changed}};
}

Json changeJson(const EntryPatch& change)
{
    Json json{{field::INDEX, change.index}};
    if (change.was)
        json[field::WAS] = fingerprintJson(*change.was);
    if (change.becomes)
        json[field::BECOMES] = fingerprintJson(*change.becomes);
    switch (change.source) {
    case EntryPatch::BYTES: json[field::BYTES] = toBase64(change.bytes); break;
    case EntryPatch::COPY: json[field::COPY_OF] = change.copyOf; break;
    case EntryPatch::DELTA: json[field::DELTA] = toBase64(change.bytes); break;
    case EntryPatch::RECORDS: json[field::RECORDS] = recordsJson(change); break;
    case EntryPatch::NONE: break;
    }
    return json;
}

Json changesJson(const std::vector<EntryPatch>& changes)
{
    Json json = Json::array();
    for (const EntryPatch& change : changes)
        json.push_back(changeJson(change));
    return json;
}

Json summaryJson(const ArchiveSummary& summary)
{
    Json json{{field::ENTRIES, summary.entries}};
    json.update(fingerprintJson(summary.file));
    return json;
}

// Reading it: every value checked before it is used, since a mod comes
// from someone else.

class ModReader {
public:
    explicit ModReader(const std::string& path) : path(path) {}

    void readFormat(const Json& json) const
    {
        if (!json.is_object() || !json.contains(field::FORMAT))
            throw std::runtime_error("'" + path + "' is not a mod: it has no '" + field::FORMAT + "'");
        const Json& format = json.at(field::FORMAT);
        if (format.is_number_unsigned() && format.get<unsigned long long>() > MOD_FORMAT)
            throw std::runtime_error("'" + path + "' is a mod of format " + format.dump() + "; this lbx reads format " +
                                     std::to_string(MOD_FORMAT) + " and older, and a newer lbx is needed");
        number(json, field::FORMAT, MOD_FORMAT, place());
    }

    ArchiveSummary summary(const Json& json, const char* key) const
    {
        const Json& value = member(json, key, place());
        return {number(value, field::ENTRIES, LARGEST_ARCHIVE, place()), fingerprint(value)};
    }

    std::string header(const Json& json) const
    {
        if (!json.contains(field::HEADER))
            return "";
        const std::string area = bytes(json, field::HEADER, place());
        if (area.size() != HEADER_AREA_SIZE)
            throw place().problem(std::string("'") + field::HEADER + "' must hold " + std::to_string(HEADER_AREA_SIZE) +
                                  " bytes");
        return area;
    }

    std::vector<EntryPatch> changes(const Json& json, unsigned int baseEntries) const
    {
        const Json& list = member(json, field::CHANGES, place());
        if (!list.is_array())
            throw place().problem(std::string("'") + field::CHANGES + "' must be a list");
        std::vector<EntryPatch> changes;
        for (const Json& item : list) {
            changes.push_back(change(item, baseEntries));
            if (changes.size() > 1 && changes.back().index <= changes[changes.size() - 2].index)
                throw place(changes.back().index).problem("changes must come in the order of their entries, once each");
        }
        return changes;
    }

private:
    std::string path;

    ManifestPlace place(int entry = -1) const { return {path, entry}; }

    Fingerprint fingerprint(const Json& json, const ManifestPlace& at) const
    {
        return {number(json, field::SIZE, LARGEST_SIZE, at), text(json, field::FINGERPRINT, at)};
    }
    Fingerprint fingerprint(const Json& json) const { return fingerprint(json, place()); }

    std::optional<Fingerprint> optionalFingerprint(const Json& json, const char* key, const ManifestPlace& at) const
    {
        if (!json.contains(key))
            return std::nullopt;
        return fingerprint(member(json, key, at), at);
    }

    static std::string bytes(const Json& json, const char* key, const ManifestPlace& at)
    {
        std::string decoded;
        if (!fromBase64(text(json, key, at), decoded))
            throw at.problem(std::string("'") + key + "' is not base64");
        return decoded;
    }

    EntryPatch change(const Json& json, unsigned int baseEntries) const
    {
        EntryPatch change;
        change.index = number(json, field::INDEX, LARGEST_ARCHIVE - 1, place());
        const ManifestPlace at = place(static_cast<int>(change.index));
        change.was = optionalFingerprint(json, field::WAS, at);
        change.becomes = optionalFingerprint(json, field::BECOMES, at);
        if (json.contains(field::BYTES)) {
            change.source = EntryPatch::BYTES;
            change.bytes = bytes(json, field::BYTES, at);
            if (!change.becomes || !(Fingerprint::of(change.bytes) == *change.becomes))
                throw at.problem("its bytes do not match their fingerprint: the file is damaged");
        } else if (json.contains(field::COPY_OF)) {
            change.source = EntryPatch::COPY;
            change.copyOf = number(json, field::COPY_OF, baseEntries == 0 ? 0 : baseEntries - 1, at);
            if (baseEntries == 0)
                throw at.problem(std::string("'") + field::COPY_OF + "' names no entry of the base");
        } else if (json.contains(field::DELTA)) {
            change.source = EntryPatch::DELTA;
            change.bytes = bytes(json, field::DELTA, at);
            if (!change.was)
                throw at.problem("a delta needs the entry it patches");
        } else if (json.contains(field::RECORDS)) {
            records(member(json, field::RECORDS, at), change, at);
        }
        if ((change.source == EntryPatch::NONE) != !change.becomes || (!change.was && !change.becomes))
            throw at.problem("it must say what the entry was or becomes, and where its bytes come from");
        return change;
    }

    void records(const Json& json, EntryPatch& change, const ManifestPlace& at) const
    {
        change.source = EntryPatch::RECORDS;
        change.recordCount = number(json, field::COUNT, LARGEST_FIELD, at);
        change.recordLength = number(json, field::LENGTH, LARGEST_FIELD, at);
        const std::size_t size = TABLE_HEAD + std::size_t(change.recordCount) * change.recordLength;
        if (!change.was || !change.becomes || change.was->size != size || change.becomes->size != size)
            throw at.problem("its records do not fit the table's size");
        const Json& changed = member(json, field::CHANGED, at);
        if (!changed.is_array())
            throw at.problem(std::string("'") + field::CHANGED + "' must be a list");
        for (const Json& item : changed) {
            RecordPatch record{number(item, field::NUMBER, LARGEST_FIELD, at), text(item, field::WAS, at),
                               bytes(item, field::BYTES, at)};
            if (record.number >= change.recordCount || record.bytes.size() != change.recordLength ||
                (!change.records.empty() && record.number <= change.records.back().number))
                throw at.problem("record " + std::to_string(record.number) + " does not fit the table");
            change.records.push_back(std::move(record));
        }
    }
};

} // namespace

std::string recordOf(const std::string& table, unsigned int number, unsigned int length)
{
    return table.substr(TABLE_HEAD + std::size_t(number) * length, length);
}

bool holdsRecordsOf(const std::string& table, const EntryPatch& change)
{
    return table.size() == TABLE_HEAD + std::size_t(change.recordCount) * change.recordLength &&
           field16(table, 0) == change.recordCount && field16(table, 2) == change.recordLength;
}

void putRecord(std::string& table, const EntryPatch& change, const RecordPatch& record)
{
    table.replace(TABLE_HEAD + std::size_t(record.number) * change.recordLength, change.recordLength, record.bytes);
}

Fingerprint Fingerprint::of(const std::string& bytes)
{
    return {bytes.size(), hashOf(bytes)};
}

Mod makeMod(const ArchiveBytes& base, const ArchiveBytes& result, const std::string& archiveName, bool reversible)
{
    Mod mod;
    mod.archive = archiveName;
    mod.base = summaryOf(base);
    mod.result = summaryOf(result);
    mod.header = headerToCarry(result);
    mod.entries = changesBetween(base, result);
    mod.reversible = reversible;
    if (reversible) {
        mod.baseHeader = headerToCarry(base);
        mod.undo = changesBetween(result, base);
    }
    return mod;
}

std::string modFile(const Mod& mod)
{
    Json json{{field::FORMAT, MOD_FORMAT},
              {field::ARCHIVE, mod.archive},
              {field::BASE, summaryJson(mod.base)},
              {field::RESULT, summaryJson(mod.result)}};
    if (!mod.header.empty())
        json[field::HEADER] = toBase64(mod.header);
    json[field::CHANGES] = changesJson(mod.entries);
    if (mod.reversible) {
        Json undo;
        if (!mod.baseHeader.empty())
            undo[field::HEADER] = toBase64(mod.baseHeader);
        undo[field::CHANGES] = changesJson(mod.undo);
        json[field::UNDO] = undo;
    }
    return manifestText(json);
}

Mod readMod(const std::string& text, const std::string& path)
{
    // A mod is a JSON object: anything else is no mod that was cut short.
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos || text[first] != '{')
        throw std::runtime_error("'" + path + "' is neither a mod nor a BPS patch");
    const Json json = parseManifest(text, path);
    const ModReader reader(path);
    reader.readFormat(json);
    Mod mod;
    mod.archive = lbxtool::text(json, field::ARCHIVE, {path, -1});
    mod.base = reader.summary(json, field::BASE);
    mod.result = reader.summary(json, field::RESULT);
    mod.header = reader.header(json);
    mod.entries = reader.changes(json, mod.base.entries);
    mod.reversible = json.contains(field::UNDO);
    if (mod.reversible) {
        const Json& undo = json.at(field::UNDO);
        mod.baseHeader = reader.header(undo);
        mod.undo = reader.changes(undo, mod.result.entries);
    }
    return mod;
}

Mod undoOf(const Mod& mod, const std::string& path)
{
    if (!mod.reversible)
        throw std::runtime_error("'" + path + "' cannot be undone: it was made without --reversible");
    Mod undo = mod;
    std::swap(undo.base, undo.result);
    std::swap(undo.header, undo.baseHeader);
    std::swap(undo.entries, undo.undo);
    return undo;
}

} // namespace lbxtool
