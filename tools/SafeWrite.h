#ifndef ZORV2_LBX_TOOLS_SAFEWRITE_H
#define ZORV2_LBX_TOOLS_SAFEWRITE_H

#include "archive/File.h"

#include <functional>
#include <string>
#include <vector>

// Every file the lbx tool writes goes through here. A write fills a
// temporary file beside its target (named after it, with ".lbx-part"
// behind), gives it the mode and owner of the file it replaces, syncs it to
// the disk when it replaces one and renames it over the target; a symbolic link stays a link and
// its target is what changes. A failure at any point removes the temporary
// file and leaves the target as it was.
namespace lbxtool {

using zorv2::Lbx::File;

// What a write does with a file already at its target.
enum class Existing {
    Refuse,  // the user did not ask to replace it
    Replace, // --force, an archive changed in place, or the command's own outputs
};

// The files the running command reads. No write lands on one of them,
// whatever path or link leads there; a path that does not exist is skipped.
void protectInputs(const std::vector<std::string>& paths);

// Refuses, with a message naming it, a target that a write would not be
// allowed to replace: one of the inputs, anything but a regular file, or an
// existing file when `existing` is Refuse. Writes nothing.
void checkTarget(const std::string& target, Existing existing);

// Writes the file through `fill`, which gets the temporary file open for
// writing and its path, and throws to give up.
void writeFile(const std::string& target, Existing existing,
               const std::function<void(int descriptor, const std::string& temporary)>& fill);

// Writes `bytes` as they stand.
void writeBytes(const std::string& target, const std::string& bytes, Existing existing = Existing::Replace);

// The same for text, which the commands' own outputs replace freely.
void writeText(const std::string& target, const std::string& text);

// Writes `archive` through the library, and reads the header of what was
// written back before it takes the target's place.
void writeArchive(const std::string& target, File& archive, Existing existing);

} // namespace lbxtool

#endif
