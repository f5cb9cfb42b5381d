#include "images/Palette.h"

#include "images/PixelLayout.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

namespace zorv2 {
namespace Lbx {

namespace {

using namespace layout;

// A DAC array has as many entries as a palette array, and of the same size.
static_assert(DAC_COLOR_SIZE == PIXEL_SIZE, "DAC and palette arrays line up entry for entry");
constexpr unsigned int ARRAY_SIZE = PALETTE_BYTES;
// A component that a DAC value gives has its low bits clear.
constexpr unsigned int OFF_GRID = static_cast<unsigned char>(~DAC_BITS_MASK);

// What a palette can hold of a component: its top 6 bits.
unsigned char reduced(unsigned char component)
{
    return static_cast<unsigned char>(component & DAC_BITS_MASK);
}

std::runtime_error colorNotFound(const unsigned char* color)
{
    return std::runtime_error("color " + std::to_string(color[RED]) + "," + std::to_string(color[GREEN]) + "," +
                              std::to_string(color[BLUE]) + " not found in palette");
}

} // namespace

unsigned char Content::Palette::fromDac(unsigned char dac)
{
    if (dac > MAX_DAC)
        throw std::runtime_error("invalid dac value (>63)");
    return static_cast<unsigned char>(dac << DAC_SHIFT);
}

unsigned char Content::Palette::toDac(unsigned char value)
{
    return static_cast<unsigned char>(value >> DAC_SHIFT);
}

unsigned char* Content::Palette::pal2dac(unsigned char* palette, unsigned char lead)
{
    auto* dac = new unsigned char[ARRAY_SIZE];
    for (unsigned int i = 0; i < ARRAY_SIZE; i += DAC_COLOR_SIZE) {
        dac[i + DAC_LEAD] = lead;
        dac[i + DAC_RED] = toDac(palette[i + RED]);
        dac[i + DAC_GREEN] = toDac(palette[i + GREEN]);
        dac[i + DAC_BLUE] = toDac(palette[i + BLUE]);
    }
    return dac;
}

bool Content::Palette::findColor(unsigned char* palette, unsigned char* color, unsigned char* index,
                                 unsigned int begin, unsigned int end)
{
    const unsigned char red = reduced(color[RED]);
    const unsigned char green = reduced(color[GREEN]);
    const unsigned char blue = reduced(color[BLUE]);
    // Entries are compared as they stand: one that is no multiple of 4 in
    // some component is never found.
    for (unsigned int i = begin; i < std::min(end, COLORS); ++i) {
        const unsigned char* entry = palette + i * PIXEL_SIZE;
        if (entry[RED] == red && entry[GREEN] == green && entry[BLUE] == blue) {
            if (index)
                *index = static_cast<unsigned char>(i);
            return true;
        }
    }
    return false;
}

bool Content::Palette::findColor(unsigned char* palette, unsigned char* color, unsigned char* index)
{
    return findColor(palette, color, index, 0, COLORS);
}

unsigned char Content::Palette::findColor(unsigned char* palette, unsigned char* color, unsigned int begin,
                                          unsigned int end)
{
    unsigned char index = 0;
    if (!findColor(palette, color, &index, begin, end))
        throw colorNotFound(color);
    return index;
}

unsigned char Content::Palette::findColor(unsigned char* palette, unsigned char* color)
{
    return findColor(palette, color, 0u, COLORS);
}

unsigned char* Content::Palette::create(unsigned char** images, unsigned int* widths, unsigned int* heights,
                                        unsigned int count)
{
    // Entries from the last colour found on stay 0, 0, 0, 0.
    std::unique_ptr<unsigned char[]> palette(new unsigned char[ARRAY_SIZE]());
    unsigned int filled = 0;
    for (unsigned int image = 0; image < count; ++image) {
        const std::size_t pixels = std::size_t{widths[image]} * heights[image];
        for (std::size_t p = 0; p < pixels; ++p) {
            unsigned char* color = images[image] + p * PIXEL_SIZE;
            if (color[ALPHA] == 0 || findColor(palette.get(), color, nullptr, 0, filled))
                continue;
            if (filled == COLORS)
                throw std::runtime_error("images cannot have more than 256 colors");
            unsigned char* entry = palette.get() + filled * PIXEL_SIZE;
            entry[RED] = reduced(color[RED]);
            entry[GREEN] = reduced(color[GREEN]);
            entry[BLUE] = reduced(color[BLUE]);
            entry[ALPHA] = OPAQUE;
            ++filled;
        }
    }
    return palette.release();
}

unsigned char* Content::Palette::empty()
{
    auto* palette = new unsigned char[ARRAY_SIZE]();
    for (unsigned int i = 0; i < ARRAY_SIZE; i += PIXEL_SIZE)
        palette[i + ALPHA] = OPAQUE;
    return palette;
}

unsigned char* Content::Palette::fake()
{
    // 256 colours that differ at DAC precision and are never black: DAC red
    // is 1, blue runs through 1..63, then green steps up by 1.
    auto* palette = new unsigned char[ARRAY_SIZE];
    for (unsigned int i = 0; i < COLORS; ++i)
        paintDacColor(palette + i * PIXEL_SIZE, 1, static_cast<unsigned char>(1 + i / MAX_DAC),
                      static_cast<unsigned char>(1 + i % MAX_DAC));
    return palette;
}

bool Content::Palette::Index::onGrid(const unsigned char* entry)
{
    return ((entry[RED] | entry[GREEN] | entry[BLUE]) & OFF_GRID) == 0;
}

Content::Palette::Index::Index(unsigned char* palette, unsigned int begin, unsigned int end)
    : palette(palette), begin(begin), end(std::min(end, COLORS)), lastKey(NO_KEY)
{
    // The index hashes colours inline, in the installed header, with its own
    // names for the layout; they must say the same.
    static_assert(Index::RED == layout::RED && Index::GREEN == layout::GREEN && Index::BLUE == layout::BLUE &&
                      Index::DAC_SHIFT == layout::DAC_SHIFT,
                  "the colour index reads pixels in the shared layout");
}

void Content::Palette::Index::build()
{
    table.reset(new unsigned char[KEYS]());
    // Downwards, so that a repeated colour keeps its lowest index.
    for (unsigned int i = end; i-- > begin;) {
        const unsigned char* entry = palette + i * PIXEL_SIZE;
        if (!onGrid(entry))
            continue;
        if (i == LAST)
            lastKey = key(entry);
        else
            table[key(entry)] = static_cast<unsigned char>(i + 1);
    }
}

void Content::Palette::Index::findAll(unsigned char* pixels, std::size_t count, unsigned char* indices)
{
    if (!table)
        build();
    // Keys first, a block at a time, then the lookups: apart, the compiler
    // computes several keys at once, and the loads of the table follow one
    // another without waiting (a sixth faster than one loop).
    constexpr std::size_t BLOCK = 256;
    std::uint32_t keys[BLOCK];
    // In a local: a store through `indices` could otherwise alias the member
    // and force a reload every pixel.
    const unsigned char* lookup = table.get();
    for (std::size_t first = 0; first < count; first += BLOCK) {
        const std::size_t length = std::min(BLOCK, count - first);
        unsigned char* block = pixels + first * PIXEL_SIZE;
        for (std::size_t i = 0; i < length; ++i)
            keys[i] = key(block + i * PIXEL_SIZE);
        for (std::size_t i = 0; i < length; ++i) {
            const unsigned char stored = lookup[keys[i]];
            indices[first + i] =
                stored != NONE ? static_cast<unsigned char>(stored - 1) : unstored(block + i * PIXEL_SIZE, keys[i]);
        }
    }
}

unsigned char Content::Palette::Index::unstored(unsigned char* color, std::uint32_t wanted)
{
    if (wanted == lastKey)
        return LAST;
    // Not in the range: the search finds nothing either and throws its text.
    return findColor(palette, color, begin, end);
}

} // namespace Lbx
} // namespace zorv2
