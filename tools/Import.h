#ifndef ZORV2_LBX_TOOLS_IMPORT_H
#define ZORV2_LBX_TOOLS_IMPORT_H

#include "entry/Content.h"

#include <optional>
#include <string>
#include <vector>

namespace lbxtool {

struct ImportOptions {
    std::string target; // an entry file, or an archive when `index` is given
    std::vector<std::string> images;
    std::optional<unsigned int> index;
    std::string palette; // ARCHIVE:INDEX; empty to build it from the images
    unsigned int clearOnce = 0;
    unsigned int clearMod = 0;
    std::string flags; // names joined by ',' or a number
    bool force = false;  // replace an existing entry file OUT
    bool strict = false; // refuse an entry of another shape than the one it replaces
};

// Turns PNG frames into a graphic entry. Returns the exit status.
int importGraphic(const ImportOptions& options);

// The flag word named by "loop,clear,..." or by a number such as 0x2000.
unsigned short parseFlags(const std::string& text);

// The flags of `graphic` by name, joined by ',' as parseFlags reads them.
std::string flagText(zorv2::Lbx::Content::Graphic* graphic);

} // namespace lbxtool

#endif
