#ifndef ZORV2_LBX_TOOLS_MODDING_EDITS_H
#define ZORV2_LBX_TOOLS_MODDING_EDITS_H

#include "tools/modding/ArchiveBytes.h"
#include "tools/modding/Files.h"
#include "tools/modding/Forms.h"
#include "tools/modding/Patch.h"
#include "tools/modding/Unpack.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// An archive edited in place, one entry at a time, by a front end that
// holds it in memory (the browser page). Each edit is made as a modder
// makes it on the command line: the entry unpacked once, its files edited
// one change after another, and packed, with pack's checks and messages, so
// that the result is what `lbx pack` makes of the same edits; a refused edit
// leaves the archive, and the files, as they were.
namespace lbxtool {

// What an edit did: pack's line for the entry that changed ("INBOX.LBX[1]:
// graphic; frames 2"), empty when it is as it was, and what the user should
// know.
struct EditDone {
    std::string change;
    std::vector<std::string> warnings;
};

class ArchiveEdits {
public:
    // The archive at `path` as `files` reads it; its palette sources are
    // found beside it, through `files`, as pack finds them.
    ArchiveEdits(Files& files, const std::string& path);

    const ArchiveBytes& current() const { return now; }
    const ArchiveBytes& opened() const { return base; }
    const std::string& path() const { return name; }

    // Frame `frame` of graphic or cursor `index` becomes the PNG `png`.
    EditDone replaceFrame(unsigned int index, unsigned int frame, const std::string& png, const PackRules& rules);
    // The PNG `png` becomes a new last frame of graphic `index`.
    EditDone addFrame(unsigned int index, const std::string& png, const PackRules& rules);
    EditDone removeFrame(unsigned int index, unsigned int frame, const PackRules& rules);
    // Record `record` of text table `index` becomes `line`, in the text escape.
    EditDone setRecord(unsigned int index, unsigned int record, const std::string& line, const PackRules& rules);
    // Sound `index` becomes the WAVE file `wave`.
    EditDone replaceSound(unsigned int index, const std::string& wave, const PackRules& rules);
    // The mods that `patches` hold (path, text), applied in order as `lbx
    // patch` applies them.
    EditDone applyPatches(const std::vector<std::pair<std::string, std::string>>& patches, bool preferLast);
    // The whole archive becomes `archive` (what a BPS patch made, say).
    void replaceWhole(ArchiveBytes archive);

    // The bytes of record `line`, in the text escape, would take in table
    // `index`, and the room its records have; throws naming what is wrong.
    std::pair<std::size_t, std::size_t> recordBytes(unsigned int index, const std::string& line) const;

    bool canUndo() const { return !done.empty(); }
    bool canRedo() const { return !undone.empty(); }
    void undo();
    void redo();

    // The edits as a mod of the archive opened (reversible: with the way
    // back), or as a BPS patch.
    std::string mod(bool reversible) const;
    std::string bps() const;

private:
    using FormEdit = std::function<void(UnpackedEntry&)>;
    EditDone edit(unsigned int index, const PackRules& rules, const FormEdit& change);
    // The entry's files as edited so far; unpacked at its first edit.
    UnpackedEntry filesOf(unsigned int index, Warnings& warnings) const;
    std::string folder() const;
    std::string entryCalled(unsigned int index) const;
    Json& framesOf(UnpackedEntry& entry, unsigned int index) const;
    std::string& fileOf(UnpackedEntry& entry, unsigned int index, const char* kind) const;
    void requireFrame(const Json& frames, unsigned int index, unsigned int frame) const;

    // What an edit replaced, to swap back in: one entry, its files and the
    // header area, or every entry, whose files are then unpacked anew.
    struct Revision {
        std::string header;
        bool whole = false;
        unsigned int index = 0;
        std::string entry;
        std::optional<UnpackedEntry> files;
        std::vector<std::string> entries;
        std::map<unsigned int, UnpackedEntry> allFiles;
    };
    Revision swapIn(Revision revision);
    void commit(Revision revision);

    Files& files;
    std::string name;
    ArchiveBytes base;
    ArchiveBytes now;
    std::map<unsigned int, UnpackedEntry> edited; // the files of each entry edited, by index
    std::vector<Revision> done;   // the last edit last
    std::vector<Revision> undone; // the last undone last
};

} // namespace lbxtool

#endif
