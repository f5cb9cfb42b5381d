#include "tools/modding/Patch.h"

#include "tools/modding/Bps.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Header.h"
#include "tools/modding/Names.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>

namespace lbxtool {

namespace {

using Entry = std::optional<std::string>;

constexpr std::uint64_t LARGEST_FILE = 0xFFFFFFFFu; // an archive's offsets are 32 bits

bool fits(const Entry& entry, const std::optional<Fingerprint>& expected)
{
    if (!entry || !expected)
        return !entry && !expected;
    return entry->size() == expected->size && Fingerprint::of(*entry) == *expected;
}

// An archive as the mods of one run change it, with who changed what, to
// tell a mod made for another version from two mods at odds.
class Patching {
public:
    Patching(const ArchiveBytes& base, const std::string& basePath, bool preferLast, Warnings& warnings)
        : original(base), basePath(basePath), preferLast(preferLast), warnings(warnings),
          entries(base.entries.begin(), base.entries.end()), header(base.header)
    {
    }

    void apply(const NamedMod& named)
    {
        mod = &named;
        const bool exact = gap() == NO_GAP && Fingerprint::of(standing().file()) == named.mod.base.file;
        unsigned int alreadyMade = 0;
        for (const EntryPatch& change : named.mod.entries)
            alreadyMade += applyChange(change);
        if (alreadyMade > 0 && alreadyMade == named.mod.entries.size())
            warnings.warn("'" + named.path + "' changes nothing: '" + basePath + "' holds its changes already");
        if (gap() == NO_GAP)
            carryHeader(named.mod.header);
        if (exact && !(gap() == NO_GAP && Fingerprint::of(standing().file()) == named.mod.result.file))
            throw std::runtime_error("'" + named.path +
                                     "' did not make the archive it was made to make: the mod is damaged");
    }

    ArchiveBytes result() const
    {
        if (gap() != NO_GAP)
            throw std::runtime_error("the mods leave " + archiveName() + " without an entry " + std::to_string(gap()) +
                                     " but with entries behind it");
        std::uint64_t size = HEADER_AREA_SIZE;
        for (const std::size_t entry : sizes())
            size += entry;
        if (size > LARGEST_FILE)
            throw std::runtime_error("the mods make " + archiveName() + " larger than an archive can be (4 GiB)");
        return standing();
    }

private:
    static constexpr std::size_t NO_GAP = ~std::size_t(0);

    const ArchiveBytes& original;
    std::string basePath;
    bool preferLast;
    Warnings& warnings;
    std::vector<Entry> entries;
    std::string header;
    const NamedMod* mod = nullptr;
    std::map<unsigned int, std::string> entryBy;                          // the mod that last changed an entry
    std::map<std::pair<unsigned int, unsigned int>, std::string> recordBy; // and a record

    std::string archiveName() const { return mod ? mod->mod.archive : basePath; }

    // The first missing entry with entries behind it.
    std::size_t gap() const
    {
        std::size_t missing = NO_GAP;
        for (std::size_t i = 0; i < entries.size(); ++i)
            if (!entries[i] && missing == NO_GAP)
                missing = i;
            else if (entries[i] && missing != NO_GAP)
                return missing;
        return NO_GAP;
    }

    // The archive as it stands, when it has no gap.
    ArchiveBytes standing() const
    {
        ArchiveBytes archive;
        for (const Entry& entry : entries)
            if (entry)
                archive.entries.push_back(*entry);
        const std::string written = writtenHeader(sizes());
        archive.header = sameTable(header, written) ? header : written;
        return archive;
    }

    std::vector<std::size_t> sizes() const
    {
        std::vector<std::size_t> all;
        for (const Entry& entry : entries)
            if (entry)
                all.push_back(entry->size());
        return all;
    }

    // After a mod, the header area is the one it carries, or the writer's.
    void carryHeader(const std::string& carried)
    {
        const std::string written = writtenHeader(sizes());
        const bool fitting = !carried.empty() && sameTable(carried, written);
        if (!carried.empty() && !fitting)
            warnings.warn("the header area that '" + mod->path + "' carries for " + archiveName() +
                          " does not fit the entries the mods leave; the writer's is written");
        header = fitting ? carried : written;
    }

    Entry& at(unsigned int index)
    {
        if (entries.size() <= index)
            entries.resize(index + 1);
        return entries[index];
    }

    Entry originalAt(unsigned int index) const
    {
        return index < original.entries.size() ? Entry(original.entries[index]) : std::nullopt;
    }

    // Whether the base held the change already.
    bool applyChange(const EntryPatch& change)
    {
        const Entry now = at(change.index);
        if (fits(now, change.was))
            put(change, now);
        else if (fits(now, change.becomes)) // made already, by the base or an earlier mod
            return entryBy.count(change.index) == 0;
        else if (!fits(originalAt(change.index), change.was))
            throw otherVersion(change.index);
        else if (change.source == EntryPatch::RECORDS && now && holdsRecordsOf(*now, change))
            mergeRecords(change, *now);
        else {
            conflict(entryBy[change.index], "entry " + std::to_string(change.index));
            put(change, originalAt(change.index));
        }
        return false;
    }

    void put(const EntryPatch& change, const Entry& under)
    {
        Entry& entry = at(change.index);
        switch (change.source) {
        case EntryPatch::NONE: entry.reset(); break;
        case EntryPatch::BYTES: entry = change.bytes; break;
        case EntryPatch::COPY: entry = copied(change); break;
        case EntryPatch::RECORDS: entry = withRecords(*under, change); break;
        case EntryPatch::DELTA: entry = patchedEntry(*under, change); break;
        }
        if (!fits(entry, change.becomes))
            throw damaged(change.index);
        entryBy[change.index] = mod->path;
    }

    std::string patchedEntry(const std::string& entry, const EntryPatch& change) const
    {
        try {
            return applyBps(entry, entryName(basePath, change.index), change.bytes, mod->path);
        } catch (const std::runtime_error&) {
            throw damaged(change.index);
        }
    }

    std::runtime_error damaged(unsigned int index) const
    {
        return std::runtime_error("'" + mod->path + "' entry " + std::to_string(index) +
                                  ": what it makes does not match its fingerprint: the file is damaged");
    }

    std::string withRecords(std::string table, const EntryPatch& change)
    {
        for (const RecordPatch& record : change.records) {
            putRecord(table, change, record);
            recordBy[{change.index, record.number}] = mod->path;
        }
        return table;
    }

    // Records of a table that an earlier mod changed too: each record the
    // earlier left alone takes this mod's change.
    void mergeRecords(const EntryPatch& change, std::string table)
    {
        for (const RecordPatch& record : change.records) {
            const std::string now = recordOf(table, record.number, change.recordLength);
            if (now == record.bytes)
                continue;
            if (hashOf(now) != record.was)
                conflict(earlierAtRecord(change.index, record.number),
                         "record " + std::to_string(record.number) + " of entry " + std::to_string(change.index));
            putRecord(table, change, record);
            recordBy[{change.index, record.number}] = mod->path;
        }
        at(change.index) = std::move(table);
        entryBy[change.index] = mod->path;
    }

    std::string earlierAtRecord(unsigned int index, unsigned int number)
    {
        const auto found = recordBy.find({index, number});
        return found != recordBy.end() ? found->second : entryBy[index];
    }

    std::string copied(const EntryPatch& change) const
    {
        for (const Entry& source : {originalAt(change.copyOf), change.copyOf < entries.size() ? entries[change.copyOf] : Entry()})
            if (fits(source, change.becomes))
                return *source;
        throw otherVersion(change.copyOf);
    }

    void conflict(const std::string& earlier, const std::string& what)
    {
        const std::string place = what + " of " + archiveName();
        if (!preferLast)
            throw std::runtime_error("'" + earlier + "' and '" + mod->path + "' both change " + place +
                                     "; --prefer-last lets the later one win");
        warnings.warn("'" + mod->path + "' wins over '" + earlier + "' at " + place + " (--prefer-last)");
    }

    std::runtime_error otherVersion(unsigned int index) const
    {
        const std::string baseName = std::filesystem::path(basePath).filename().string();
        const std::string which = upperCase(baseName) == upperCase(mod->mod.archive)
                                      ? "another version of " + mod->mod.archive
                                      : mod->mod.archive + ", not for '" + basePath + "'";
        return std::runtime_error("'" + mod->path + "' was made for " + which + ": entry " + std::to_string(index) +
                                  " differs");
    }
};

} // namespace

ArchiveBytes applyMods(const ArchiveBytes& base, const std::string& basePath, const std::vector<NamedMod>& mods,
                       bool preferLast, Warnings& warnings)
{
    Patching patching(base, basePath, preferLast, warnings);
    for (const NamedMod& mod : mods)
        patching.apply(mod);
    return patching.result();
}

} // namespace lbxtool
