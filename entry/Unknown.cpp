#include "entry/Unknown.h"

namespace zorv2 {
namespace Lbx {

Content::Unknown::Unknown(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    valid = true;
}

Content::Unknown::~Unknown() = default;

std::string Content::Unknown::info()
{
    return "";
}

Content* Content::Unknown::createDebug(Content* content)
{
    refuseDebugCreation(content);
}

} // namespace Lbx
} // namespace zorv2
