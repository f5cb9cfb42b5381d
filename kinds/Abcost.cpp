#include "kinds/Abcost.h"

namespace zorv2 {
namespace Lbx {

namespace {

// A record of 56 or 57 bytes whose last four bytes are all 0; what stands in
// front of them is not tested.
constexpr unsigned int SHORT_SIZE = 56;
constexpr unsigned int LONG_SIZE = 57;
constexpr unsigned int ZERO_TAIL = 4;

} // namespace

Content::Abcost::Abcost(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    if (size != SHORT_SIZE && size != LONG_SIZE)
        return;
    for (unsigned int back = 1; back <= ZERO_TAIL; ++back) {
        if (read1(size - back) != 0)
            return;
    }
    valid = true;
}

Content::Abcost::~Abcost() = default;

std::string Content::Abcost::info()
{
    return "Abcost";
}

Content* Content::Abcost::createDebug(Content* content)
{
    refuseDebugCreation(content);
}

} // namespace Lbx
} // namespace zorv2
