#ifndef ZORV2_LBX_TOOLS_MODDING_FILES_H
#define ZORV2_LBX_TOOLS_MODDING_FILES_H

#include "archive/File.h"

#include <memory>
#include <string>
#include <vector>

// How the core reaches files: through an object its front end gives it, so
// that the command line reads with the system's reasons and writes safely,
// and the browser works in its own memory.
namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

class Files {
public:
    // What a folder holds: a name, and whether it is a regular file.
    struct Listed {
        std::string name;
        bool regular;
    };

    virtual ~Files() = default;
    // The bytes of the file at `path`; throws a message that names it.
    virtual std::string read(const std::string& path) = 0;
    // What `folder` holds, in no particular order; throws when it cannot be read.
    virtual std::vector<Listed> list(const std::string& folder) = 0;
    // Puts `bytes` at `path`, replacing what is there: for the front end's
    // own outputs, such as the gallery page.
    virtual void write(const std::string& path, const std::string& bytes) = 0;
    // The archive at `path`, validated and classified.
    virtual std::unique_ptr<File> openArchive(const std::string& path) = 0;
    // Entry `index` of the archive at `path`, without reading the others.
    virtual std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index) = 0;
};

// Files as the standard library reaches them, with the library's own
// messages: for front ends whose files need no rules of their own, such as
// the browser's in-memory ones.
class PlainFiles : public Files {
public:
    std::string read(const std::string& path) override;
    std::vector<Listed> list(const std::string& folder) override;
    void write(const std::string& path, const std::string& bytes) override;
    std::unique_ptr<File> openArchive(const std::string& path) override;
    std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index) override;
};

// Refuses a path that exists but is no regular file; a missing one is left
// to whatever reads it, whose messages name it.
void requireRegularFile(const std::string& path);

// Entry `index` of the archive at `path`, without reading the others; an
// index out of range is refused with the archive's range.
std::unique_ptr<Content> entryOfArchive(const std::string& path, unsigned int index);

// The archive of catalogue name `name` (such as "FONTS") in `folder`,
// whatever the case of its file name; empty when there is none.
std::string findArchive(Files& files, const std::string& folder, const std::string& name);

} // namespace lbxtool

#endif
