#include "kinds/Race.h"

namespace zorv2 {
namespace Lbx {

namespace {

// The record opens like a table of 13 rows of 31 bytes, 16-bit little-endian:
//
//   0  rows     2   13
//   2  row size 2   31
//   4  rows     13 x 31
//
// so its bytes also fit Text, which the classification tries later.
constexpr unsigned int RECORD_SIZE = 407;
constexpr unsigned int ROWS_OFFSET = 0;
constexpr unsigned int ROW_SIZE_OFFSET = 2;
constexpr unsigned short ROWS = 13;
constexpr unsigned short ROW_SIZE = 31;

} // namespace

Content::Race::Race(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    valid = size == RECORD_SIZE && read2(ROWS_OFFSET) == ROWS && read2(ROW_SIZE_OFFSET) == ROW_SIZE;
}

Content::Race::~Race() = default;

std::string Content::Race::info()
{
    return "Race";
}

Content* Content::Race::createDebug(Content* content)
{
    refuseDebugCreation(content);
}

} // namespace Lbx
} // namespace zorv2
