#ifndef ZORV2_LBX_TOOLS_PLATFORM_INPUTS_H
#define ZORV2_LBX_TOOLS_PLATFORM_INPUTS_H

#include "archive/File.h"
#include "tools/modding/PaletteSource.h"

#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// How the lbx tool reads what it is given. The library's messages come
// through unchanged; when the system can say why a file does not open, its
// reason follows them.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// Runs `read`, which reads `path` through the library or another reader; a
// failure keeps its text and gains the system's reason.
void withSystemReason(const std::string& path, const std::function<void()>& read);

// The archive at `path`, validated and classified.
std::unique_ptr<File> openArchive(const std::string& path);

// An archive whose entries are read as they are asked for, from any thread:
// a command that takes each entry once then holds the entries in hand, not
// the whole archive, and classifies each where it works on it. The header is
// checked at once, with the library's messages.
class ArchiveEntries {
public:
    explicit ArchiveEntries(const std::string& path);
    ~ArchiveEntries();
    ArchiveEntries(const ArchiveEntries&) = delete;
    ArchiveEntries& operator=(const ArchiveEntries&) = delete;

    std::size_t size() const { return offsets.size() - 1; }
    bool tagged() const { return isTagged; }
    const std::string& where() const { return path; }
    // Entry `index`, named as File names its entries; an index past the last
    // is refused with the library's message.
    std::unique_ptr<Content> read(unsigned int index) const;
    // The same reads, for a palette source of this archive.
    ArchiveReader reader() const;

private:
    std::string path;
    std::vector<unsigned int> offsets;
    bool isTagged = false;
    int descriptor = -1;
};

// Entry `index` of the archive at `path`, without reading the others.
std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index);

// The bytes of a file, or its first `limit` bytes.
constexpr std::size_t ALL_BYTES = std::numeric_limits<std::size_t>::max();
std::string readBytes(const std::string& path, std::size_t limit = ALL_BYTES);

// A whole file taken as one entry.
std::unique_ptr<Content> readEntryFile(const std::string& path);

// The number of entries the header of the archive at `path` lists; 0 when
// it cannot be read, which opening the archive then reports.
std::size_t listedEntries(const std::string& path);

// Throws unless `archive` holds the `entries` entries its header listed
// before: the file changed in between.
void requireEntries(File& archive, std::size_t entries);
void requireEntries(const ArchiveEntries& archive, std::size_t entries);

// The indices a command works on: every entry when none are given, otherwise
// those given, each checked against the archive and taken once.
// `path` names the archive of `size` entries in messages.
std::vector<unsigned int> selectIndices(const std::string& path, std::size_t size,
                                        const std::vector<unsigned int>& wanted);

// The system's reason why `path` cannot be opened for reading, such as
// "No such file or directory"; empty when it can be.
std::string unreadableReason(const std::string& path);

// `failure`'s text, unchanged, with the system's reason behind it in
// parentheses when `path` cannot be opened.
std::runtime_error withReason(const std::exception& failure, const std::string& path);

} // namespace lbxtool

#endif
