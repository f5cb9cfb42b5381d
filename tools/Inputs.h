#ifndef ZORV2_LBX_TOOLS_INPUTS_H
#define ZORV2_LBX_TOOLS_INPUTS_H

#include "archive/File.h"

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

// How the lbx tool reads what it is given. The library's messages come
// through unchanged; when the system can say why a file does not open, its
// reason follows them.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// Refuses a path that exists but is no regular file; a missing or unreadable
// one is left to the library, whose messages name it.
void requireRegularFile(const std::string& path);

// Runs `read`, which reads `path` through the library or another reader; a
// failure keeps its text and gains the system's reason.
void readFrom(const std::string& path, const std::function<void()>& read);

// The archive at `path`, validated and classified.
std::unique_ptr<File> openArchive(const std::string& path);

// Entry `index` of the archive at `path`, without reading the others.
std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index);

// The bytes of a file, or its first `limit` bytes.
constexpr std::size_t ALL_BYTES = std::numeric_limits<std::size_t>::max();
std::string readBytes(const std::string& path, std::size_t limit = ALL_BYTES);

// A whole file taken as one entry.
std::unique_ptr<Content> readEntryFile(const std::string& path);

// Runs `action` on each path; a failure is reported as one line and the next
// path is taken. Returns the exit status: 1 if any path failed.
int forEachPath(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& action);

// The number of entries the header of the archive at `path` lists; 0 when
// it cannot be read, which opening the archive then reports.
std::size_t listedEntries(const std::string& path);

// Throws unless `archive` holds the `entries` entries its header listed
// before: the file changed in between.
void requireEntries(File& archive, std::size_t entries);

// The indices a command works on: every entry when none are given, otherwise
// those given, each checked against the archive.
std::vector<unsigned int> selectIndices(File& archive, const std::vector<unsigned int>& wanted);

} // namespace lbxtool

#endif
