#ifndef ZORV2_LBX_TOOLS_MODDING_MOD_H
#define ZORV2_LBX_TOOLS_MODDING_MOD_H

#include "tools/modding/ArchiveBytes.h"

#include <optional>
#include <string>
#include <vector>

// A mod: what changed between two versions of an archive and nothing else,
// each entry with the fingerprint of the base entry it replaces, so that it
// can be shared without the game's files and checked before it is applied.
namespace lbxtool {

// The version of the mod file's layout that this code writes and reads.
constexpr unsigned int MOD_FORMAT = 1;

// The size and fingerprint of some bytes.
struct Fingerprint {
    std::size_t size = 0;
    std::string hash;

    static Fingerprint of(const std::string& bytes);
    bool operator==(const Fingerprint& other) const { return size == other.size && hash == other.hash; }
};

// One record of a text table, by its bytes at their full length.
struct RecordPatch {
    unsigned int number = 0;
    std::string was;   // the fingerprint of the record it replaces
    std::string bytes; // the record as it becomes
};

// What a mod does to one entry.
struct EntryPatch {
    // Where the entry's new bytes come from: carried whole, an entry of the
    // base (an entry moved), the base entry with some records replaced, or
    // the base entry patched by a BPS patch of its own.
    enum Source { NONE, BYTES, COPY, RECORDS, DELTA };

    unsigned int index = 0;
    std::optional<Fingerprint> was;     // none: the base has no entry here
    std::optional<Fingerprint> becomes; // none: the entry is removed
    Source source = NONE;
    std::string bytes;       // BYTES: the entry; DELTA: the patch
    unsigned int copyOf = 0; // COPY
    unsigned int recordCount = 0, recordLength = 0; // RECORDS: the table's shape, which stays
    std::vector<RecordPatch> records;               // RECORDS, by number
};

// An archive file as a whole.
struct ArchiveSummary {
    unsigned int entries = 0;
    Fingerprint file;
};

struct Mod {
    std::string archive; // the base's file name
    ArchiveSummary base, result;
    // The result's header area, when it is not the one the library's writer
    // writes; empty when it is.
    std::string header;
    std::vector<EntryPatch> entries; // by index
    // A reversible mod carries the way back too: the base's header area
    // (empty as above) and the changes that make the base of the result.
    bool reversible = false;
    std::string baseHeader;
    std::vector<EntryPatch> undo;
};

// Record `number` of a text table of records of `length` bytes, and
// whether `table` has the count and length that `change` keeps.
std::string recordOf(const std::string& table, unsigned int number, unsigned int length);
bool holdsRecordsOf(const std::string& table, const EntryPatch& change);
// Puts `record` into `table`, a table of the shape `change` keeps.
void putRecord(std::string& table, const EntryPatch& change, const RecordPatch& record);

// The mod that makes `result` of `base`; `archiveName` is the base's file name.
Mod makeMod(const ArchiveBytes& base, const ArchiveBytes& result, const std::string& archiveName, bool reversible);

// The mod as its file holds it, and read back from `text`, a file at
// `path`; a file that is no mod, is damaged or of a later format is refused
// with a message that names it.
std::string modFile(const Mod& mod);
Mod readMod(const std::string& text, const std::string& path);

// The mod that undoes `mod`, read from `path`; refused when it is not reversible.
Mod undoOf(const Mod& mod, const std::string& path);

} // namespace lbxtool

#endif
