#ifndef ZORV2_LBX_TOOLS_MODDING_VERIFY_H
#define ZORV2_LBX_TOOLS_MODDING_VERIFY_H

#include "entry/Content.h"

#include <memory>
#include <string>

namespace lbxtool {

// One entry held against the entry the library makes again from its fields.
struct Recreation {
    std::string kind;
    bool tried = false;     // whether the library can re-create its kind
    std::string difference; // "NAME: message", empty when they agree
    std::string report;     // the library's lines on each differing field
};

// Re-creates `entry`, named `name` in messages, and compares.
Recreation recreate(zorv2::Lbx::Content* entry, const std::string& name);
// The same on an entry taken over, which goes with what re-creating decoded.
Recreation recreate(std::unique_ptr<zorv2::Lbx::Content> entry, const std::string& name);

} // namespace lbxtool

#endif
