#include "kinds/Leader.h"

namespace zorv2 {
namespace Lbx {

namespace {

// Nothing but the size is known of this record.
constexpr unsigned int RECORD_SIZE = 3957;

} // namespace

Content::Leader::Leader(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    valid = size == RECORD_SIZE;
}

Content::Leader::~Leader() = default;

std::string Content::Leader::info()
{
    return "Leader";
}

Content* Content::Leader::createDebug(Content* content)
{
    refuseDebugCreation(content);
}

} // namespace Lbx
} // namespace zorv2
