#ifndef ZORV2_LBX_TOOLS_MODDING_STORE_H
#define ZORV2_LBX_TOOLS_MODDING_STORE_H

#include "archive/File.h"
#include "tools/modding/Warnings.h"

#include <memory>
#include <string>

namespace lbxtool {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// Puts `entry` into `archive`, read from `path`, in place of entry `index`,
// or behind the others when `index` is the entry count. A change of shape is
// said to `warnings`, or with `strict` refused before the archive changes.
void storeEntry(File& archive, const std::string& path, unsigned int index, std::unique_ptr<Content> entry,
                bool strict, Warnings& warnings);

} // namespace lbxtool

#endif
