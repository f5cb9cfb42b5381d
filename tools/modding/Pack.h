#ifndef ZORV2_LBX_TOOLS_MODDING_PACK_H
#define ZORV2_LBX_TOOLS_MODDING_PACK_H

#include "tools/modding/Files.h"
#include "tools/modding/Forms.h"
#include "tools/modding/Header.h"
#include "tools/modding/Manifest.h"

#include <memory>
#include <string>
#include <vector>

// An archive put together again from the files that unpack made.
namespace lbxtool {

// The archive an unpacked folder describes.
struct PackPlan {
    std::string archive; // its file name
    const Json* entries; // the manifest's entries, in order
    std::shared_ptr<const Charset> charset; // what text tables' files are in; none: the text escape
};

// What the manifest read from `manifestPath` says of the archive; throws a
// message naming the field when it is not what unpack writes.
PackPlan planPack(const Json& manifest, const std::string& manifestPath);

// Throws unless `folder`, which holds `held`, holds every file that
// `entries` name: a missing one would leave an entry out. Any other file but
// those that editors and file managers leave (hidden files, backups) is
// named to `warnings`: it may hold an edit that pack leaves out.
void requireNamedFiles(const std::string& folder, const std::vector<Files::Listed>& held, const Json& entries,
                       const std::string& manifestPath, Warnings& warnings);

// One entry made from its files, and how it changed.
struct PackedEntry {
    std::unique_ptr<Content> entry;
    std::string change; // "ARCHIVE[3]: graphic (...); frames 2, 5", empty when it is as it was unpacked
};

// Entry `index` of `plan`, made from its files in `folder` as `read` reads
// them; `target` is the archive it goes into, for the change's name. A file
// only to look at that was changed is refused, with the file to edit.
PackedEntry packEntry(const PackPlan& plan, unsigned int index, const PackPlace& place, const std::string& target);

// How the entries of `plan` stand against those of the archive unpacked:
// "added ARCHIVE[4]: text", "moved ARCHIVE[0]: was entry 1", "removed entry
// 2 of INBOX.LBX as unpacked"; `shapes` are those of the entries packed.
struct Arrangement {
    std::vector<std::string> lines;
    unsigned int added = 0, moved = 0, removed = 0;
};
Arrangement arrangement(const Json& manifest, const PackPlan& plan, const std::vector<std::string>& shapes,
                        const std::string& target);

// What to tell the user when the archive written holds a header area other
// than the one unpacked in more than its entry count and offsets (`area`, of
// an archive of `entries` entries, `tagged` or not): the library's writer
// always tags and fills with zeros. Empty when they agree.
std::string headerNote(const Json& manifest, const std::string& area, std::size_t entries, bool tagged,
                       const std::string& manifestPath);

} // namespace lbxtool

#endif
