#include "tools/modding/Verify.h"

#include <memory>
#include <sstream>

namespace lbxtool {

namespace {

using zorv2::Lbx::Content;

// The kinds whose entries the library can re-create from their fields.
bool recreatable(Content* entry)
{
    switch (entry->type()) {
    case Content::CURSOR:
    case Content::EMPTY:
    case Content::FONT:
    case Content::GRAPHIC:
    case Content::TEXT: return true;
    default: return false;
    }
}

} // namespace

Recreation recreate(Content* entry, const std::string& name)
{
    // On a copy, so that what re-creating decodes goes with it, memory for
    // the next entry to reuse, instead of piling up in the archive: a third
    // of the time went on the system handing out fresh pages.
    return recreate(std::make_unique<Content>(*entry), name);
}

Recreation recreate(std::unique_ptr<Content> entry, const std::string& name)
{
    Recreation done;
    done.kind = entry->typeStr();
    done.tried = recreatable(entry.get());
    if (!done.tried)
        return done;
    std::ostringstream differing;
    try {
        std::unique_ptr<Content> recreated(entry->debugCreate(differing));
    } catch (const std::exception& e) {
        done.difference = name + ": " + e.what();
    }
    done.report = differing.str();
    return done;
}

} // namespace lbxtool
