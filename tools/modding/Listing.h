#ifndef ZORV2_LBX_TOOLS_MODDING_LISTING_H
#define ZORV2_LBX_TOOLS_MODDING_LISTING_H

#include "archive/File.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Warnings.h"

#include <string>

namespace lbxtool {

// What `lbx list` prints of the archive opened from `path`: a head line with
// its entries, tag word and catalogue row, then a line per entry. A count
// other than the game's is said to `warnings`.
std::string listing(const std::string& path, zorv2::Lbx::File& archive, Warnings& warnings);

// The same as one JSON object, for `lbx list --json`: path, count, tagged,
// catalogue (name, row, expected; null when the file name is not in the
// catalogue), and entries, each with index, kind, info and shape.
Json listingJson(const std::string& path, zorv2::Lbx::File& archive, Warnings& warnings);

} // namespace lbxtool

#endif
