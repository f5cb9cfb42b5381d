#ifndef ZORV2_LBX_TOOLS_MODDING_DIFF_H
#define ZORV2_LBX_TOOLS_MODDING_DIFF_H

#include "archive/File.h"

#include <string>
#include <vector>

// What changed between two versions of an archive, entry by entry.
namespace lbxtool {

using zorv2::Lbx::File;

// A text record that differs, with its text before and after; a record
// that one side lacks has no text there.
struct RecordChange {
    unsigned int number = 0;
    bool before = false, after = false; // whether each side holds it
    std::string was, becomes;
};

// How one entry of the new archive stands against the base.
struct EntryChange {
    enum Kind { ADDED, REMOVED, MOVED, CHANGED };
    Kind kind = CHANGED;
    unsigned int index = 0; // in the new archive; in the base for REMOVED
    unsigned int was = 0;   // MOVED: its place in the base
    std::string shape;      // what it is (REMOVED: what it was)
    std::string shapeBefore; // CHANGED: what it was
    std::string shapeChange; // CHANGED: "was ..., becomes ...", empty when its shape stayed
    std::size_t sizeBefore = 0, sizeAfter = 0;
    std::vector<unsigned int> frames; // CHANGED graphics and cursors: the frames that differ
    std::vector<RecordChange> records; // CHANGED text tables: the records that differ
};

// Every difference between `base` and `changed`, in the new archive's order
// and then the entries removed. An entry is moved when its bytes stand at
// another place of the base, changed when its place in the base holds other
// bytes, added past the base's end; an entry of the base that is neither
// kept, moved nor changed is removed.
std::vector<EntryChange> diffArchives(File& base, File& changed);

// The account as lines for a terminal, each entry named in `changedPath`.
std::string diffText(const std::vector<EntryChange>& changes, const std::string& basePath,
                     const std::string& changedPath);

// The account as one JSON document: "base" and "new" name the archives,
// "changes" lists each change as diffArchives finds it.
std::string diffJson(const std::vector<EntryChange>& changes, const std::string& basePath,
                     const std::string& changedPath);

} // namespace lbxtool

#endif
