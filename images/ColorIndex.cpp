#include "images/ColorIndex.h"

#include "images/Palette.h"

#include <algorithm>

namespace zorv2 {
namespace Lbx {

namespace {

// Palette arrays and pixels: red, green, blue, alpha.
constexpr unsigned int COLORS = 256;
constexpr unsigned int ENTRY_SIZE = 4;
// A component that a DAC value gives has its two low bits clear.
constexpr unsigned int OFF_GRID = 3;

} // namespace

bool ColorIndex::onGrid(const unsigned char* entry)
{
    return ((entry[RED] | entry[GREEN] | entry[BLUE]) & OFF_GRID) == 0;
}

ColorIndex::ColorIndex(unsigned char* palette, unsigned int begin, unsigned int end)
    : palette(palette), begin(begin), end(std::min(end, COLORS)), keys(), indices()
{
    // Upwards, so that a repeated colour keeps its lowest index.
    for (unsigned int i = begin; i < this->end; ++i) {
        const unsigned char* entry = palette + i * ENTRY_SIZE;
        if (!onGrid(entry))
            continue;
        const std::uint32_t stored = key(entry) + 1;
        unsigned int slot = slotOf(stored);
        while (keys[slot] != 0 && keys[slot] != stored)
            slot = (slot + 1) % SLOTS;
        if (keys[slot] == 0) {
            keys[slot] = stored;
            indices[slot] = static_cast<unsigned char>(i);
        }
    }
}

unsigned char ColorIndex::notFound(unsigned char* color)
{
    // Not in the range: the search finds nothing either and throws its text.
    return Content::Palette::findColor(palette, color, begin, end);
}

} // namespace Lbx
} // namespace zorv2
