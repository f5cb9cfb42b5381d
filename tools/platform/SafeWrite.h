#ifndef ZORV2_LBX_TOOLS_PLATFORM_SAFEWRITE_H
#define ZORV2_LBX_TOOLS_PLATFORM_SAFEWRITE_H

#include "archive/File.h"

#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

// Every file the lbx tool writes goes through here. A write fills a
// temporary file beside its target (named after it, with ".lbx-part"
// behind), gives it the mode and owner of the file it replaces, syncs it to
// the disk when it replaces one and renames it over the target; a symbolic
// link stays a link and its target is what changes. A failure at any point
// removes the temporary file and leaves the target as it was. (writeBytes,
// below, makes a file where nothing stood without a temporary name.)
namespace lbxtool {

using zorv2::Lbx::File;

// What a write does with a file already at its target.
enum class Existing {
    Refuse,  // the user did not ask to replace it
    Replace, // --force, an archive changed in place, or the command's own outputs
};

// The choice of a command with a --force flag.
inline Existing replaceIf(bool force)
{
    return force ? Existing::Replace : Existing::Refuse;
}

class PendingWrite;

// An archive written into a temporary file entry by entry, as it is made,
// so that writing it overlaps making it; its header area goes in last, the
// one the library's writer writes for those entries. It takes the target's
// place when kept; dropped before, it goes again and leaves the target as it
// was.
class ArchiveStream {
public:
    ~ArchiveStream();
    ArchiveStream(const ArchiveStream&) = delete;
    ArchiveStream& operator=(const ArchiveStream&) = delete;

    void add(const char* data, std::size_t size);
    void keep();

private:
    friend class SafeWriter;
    explicit ArchiveStream(std::unique_ptr<PendingWrite> pending);

    std::unique_ptr<PendingWrite> pending;
    std::vector<std::size_t> sizes;
};

// The writer of one command: it knows the files the command reads, and no
// write lands on one of them, whatever path or link leads there.
class SafeWriter {
public:
    // Adds the files at `paths` to those no write may land on; a path that
    // does not exist is skipped.
    void protect(const std::vector<std::string>& paths);

    // Refuses, with a message naming it, a target that a write would not be
    // allowed to replace: one of the inputs, anything but a regular file, or
    // an existing file when `existing` is Refuse. Writes nothing.
    void check(const std::string& target, Existing existing) const;

    // Writes the file through `fill`, which gets the temporary file open for
    // writing and its path, and throws to give up.
    void writeFile(const std::string& target, Existing existing,
                   const std::function<void(int descriptor, const std::string& temporary)>& fill) const;

    // Writes `bytes` as they stand. Where nothing stands at the target, they
    // go into a file without a name in its folder, which takes the target's
    // name once whole: nothing of it can be left behind, not even by a kill
    // that no handler sees, and it costs the folder one change instead of a
    // temporary file's two (export and unpack make thousands). Where the
    // file system has no files without names, as any other write.
    void writeBytes(const std::string& target, const std::string& bytes, Existing existing = Existing::Replace) const;

    // Writes `archive` through the library, and reads the header of what was
    // written back before it takes the target's place.
    void writeArchive(const std::string& target, File& archive, Existing existing) const;

    // An archive to write entry by entry, its temporary file open.
    std::unique_ptr<ArchiveStream> streamArchive(const std::string& target, Existing existing) const;

    // Removes the regular file at `target`, a file the tool made before and
    // the user asked to replace; an input, a link or a folder stays. Whether
    // it was removed.
    bool remove(const std::string& target) const;

private:
    struct Input {
        dev_t device;
        ino_t inode;
        std::string path;
    };

    // Whether a file stands at `target` (`found`: what lstat found there,
    // or null); throws when it may not be replaced.
    bool existingTarget(const std::string& target, const struct stat* found, Existing existing) const;

    // A write to `target` begun: its temporary file made, empty.
    std::unique_ptr<PendingWrite> begin(const std::string& target, Existing existing) const;

    // The files protected, found out only when a write meets a file already
    // at its target: pack, given thousands, then looks up none of them for a
    // new archive.
    const std::vector<Input>& protectedInputs() const;
    mutable std::vector<std::string> unfound;
    mutable std::vector<Input> inputs;
};

} // namespace lbxtool

#endif
