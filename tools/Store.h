#ifndef ZORV2_LBX_TOOLS_STORE_H
#define ZORV2_LBX_TOOLS_STORE_H

#include "entry/Content.h"

#include <memory>
#include <string>

// Changing one entry of an archive in place, as `replace` and `import -i` do.
namespace lbxtool {

using zorv2::Lbx::Content;

// What an entry is, with a graphic's frame count and size:
// "graphic (8 frames of 48x32)", "text".
std::string shapeOf(Content* entry);

// How an entry changes in a way its user may not mean: another kind (text
// becoming unknown, a cursor becoming a graphic), or a graphic of another
// size or frame count. Empty when `entry` is of the same shape as `former`.
std::string kindChange(Content* former, Content* entry);

// Puts `entry` into the archive at `path`, replacing entry `index`, or
// appending it when `index` is the entry count, and rewrites the archive
// safely. A change of kind is warned about, or with `strict` refused before
// anything is written.
void storeEntry(const std::string& path, unsigned int index, std::unique_ptr<Content> entry, bool strict);

} // namespace lbxtool

#endif
