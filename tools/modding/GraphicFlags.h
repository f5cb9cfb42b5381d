#ifndef ZORV2_LBX_TOOLS_MODDING_GRAPHICFLAGS_H
#define ZORV2_LBX_TOOLS_MODDING_GRAPHICFLAGS_H

#include "entry/Content.h"

#include <string>

// A graphic's flag word as the names modders write: "loop,clear".
namespace lbxtool {

// The flag word named by "loop,clear,..." or by a number such as 0x2000.
unsigned short parseFlags(const std::string& text);

// The flags of `graphic` by name, joined by ',' as parseFlags reads them.
std::string flagText(zorv2::Lbx::Content::Graphic* graphic);

} // namespace lbxtool

#endif
