#include "images/Palette.h"

#include "images/PixelLayout.h"

#include <algorithm>
#include <cstring>
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

// The fake palette counts each entry's index in base 63 in its DAC colour:
// red is 1, green the high digit + 1, blue the low digit + 1. No colour is
// black, and no two are alike.
constexpr unsigned char FAKE_RED = 1;
constexpr unsigned int FAKE_BASE = MAX_DAC;

unsigned char fakeGreen(unsigned int index)
{
    return static_cast<unsigned char>(1 + index / FAKE_BASE);
}

unsigned char fakeBlue(unsigned int index)
{
    return static_cast<unsigned char>(1 + index % FAKE_BASE);
}

// A pixel as one word, red in its low byte. Where the machine is
// little-endian that is the pixel's four bytes as they stand, which the
// compiler loads four pixels at once; elsewhere they are put together.
bool littleEndian()
{
    static const bool little = [] {
        const std::uint32_t one = 1;
        unsigned char first;
        std::memcpy(&first, &one, 1);
        return first == 1;
    }();
    return little;
}

template <bool LITTLE_ENDIAN_WORDS>
std::uint32_t wordAt(const unsigned char* pixel)
{
    static_assert(RED == 0 && GREEN == 1 && BLUE == 2, "a word holds red, green, blue from its low byte up");
    std::uint32_t word;
    if (LITTLE_ENDIAN_WORDS)
        std::memcpy(&word, pixel, sizeof word);
    else
        word = std::uint32_t{pixel[RED]} | std::uint32_t{pixel[GREEN]} << 8 | std::uint32_t{pixel[BLUE]} << 16;
    return word;
}

// A component of a word at DAC precision.
std::uint32_t dacOf(std::uint32_t word, unsigned int component)
{
    return word >> (8 * component + DAC_SHIFT) & MAX_DAC;
}

// The colour at DAC precision, all three components in 18 bits. The middle
// six bits, which pick a slot's cache set, hold green mixed with red and
// blue: a palette's colours often share a green (or any one component), and
// would otherwise crowd into a few sets and evict one another on every pixel.
// Red and blue stay whole, so that the mix is undone by them.
constexpr unsigned int DAC_BITS = 6;
constexpr std::uint32_t KEYS = 1u << (3 * DAC_BITS);
constexpr std::uint32_t NO_KEY = KEYS;

std::uint32_t keyOf(std::uint32_t word)
{
    const std::uint32_t red = dacOf(word, RED);
    const std::uint32_t blue = dacOf(word, BLUE);
    return red << (2 * DAC_BITS) | (dacOf(word, GREEN) ^ red ^ blue) << DAC_BITS | blue;
}

// A table slot holds its colour's index; a free one holds 255, an index that
// is kept apart for that reason.
constexpr unsigned int LAST = 255;
constexpr unsigned char FREE = LAST;

template <bool LITTLE_ENDIAN_WORDS>
void computeKeys(const unsigned char* pixels, std::size_t count, std::uint32_t* keys)
{
    for (std::size_t i = 0; i < count; ++i)
        keys[i] = keyOf(wordAt<LITTLE_ENDIAN_WORDS>(pixels + i * PIXEL_SIZE));
}

// The fake palette's index of a colour when it lies in [begin, end), else a
// value that does not: green and blue read as the two digits, red must be 1
// and blue a digit + 1. Without branches, for four pixels at once.
template <bool LITTLE_ENDIAN_WORDS>
void fakeIndices(const unsigned char* pixels, std::size_t count, unsigned int begin, unsigned int end,
                 unsigned char* indices, std::uint32_t& misses)
{
    std::uint32_t missed = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t word = wordAt<LITTLE_ENDIAN_WORDS>(pixels + i * PIXEL_SIZE);
        const std::uint32_t blue = dacOf(word, BLUE);
        const std::uint32_t index = (dacOf(word, GREEN) - 1) * FAKE_BASE + (blue - 1);
        const bool fake = (dacOf(word, RED) == FAKE_RED) & (blue != 0) & (index - begin < end - begin);
        indices[i] = static_cast<unsigned char>(index);
        missed |= !fake;
    }
    misses = missed;
}

// The two loops above on little-endian words, where they are widened.
ZORV2_LBX_WIDE_LOOP void fakeIndicesOfWords(const unsigned char* pixels, std::size_t count, unsigned int begin,
                                            unsigned int end, unsigned char* indices, std::uint32_t& misses)
{
    fakeIndices<true>(pixels, count, begin, end, indices, misses);
}

ZORV2_LBX_WIDE_LOOP void keysOfWords(const unsigned char* pixels, std::size_t count, std::uint32_t* keys)
{
    computeKeys<true>(pixels, count, keys);
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
    auto* palette = new unsigned char[ARRAY_SIZE];
    for (unsigned int i = 0; i < COLORS; ++i)
        paintDacColor(palette + i * PIXEL_SIZE, FAKE_RED, fakeGreen(i), fakeBlue(i));
    return palette;
}

Content::Palette::Index::Index(unsigned char* palette, unsigned int begin, unsigned int end)
    : palette(palette), begin(begin), end(std::min(end, COLORS)), lastKey(NO_KEY)
{
}

void Content::Palette::Index::build()
{
    built = true;
    fakeColors = begin < end;
    for (unsigned int i = begin; i < end && fakeColors; ++i) {
        const unsigned char* entry = palette + i * PIXEL_SIZE;
        fakeColors = entry[RED] == fromDac(FAKE_RED) && entry[GREEN] == fromDac(fakeGreen(i)) &&
                     entry[BLUE] == fromDac(fakeBlue(i));
    }
    if (fakeColors)
        return;

    table.reset(new unsigned char[KEYS]);
    std::memset(table.get(), FREE, KEYS);
    // Downwards, so that a repeated colour keeps its lowest index.
    for (unsigned int i = end; i-- > begin;) {
        const unsigned char* entry = palette + i * PIXEL_SIZE;
        // Off the 4-step grid, an entry matches no colour.
        if (((entry[RED] | entry[GREEN] | entry[BLUE]) & OFF_GRID) != 0)
            continue;
        const std::uint32_t key = keyOf(wordAt<false>(entry));
        if (i == LAST)
            lastKey = key;
        else
            table[key] = static_cast<unsigned char>(i);
    }
}

// One pixel without the blocks of findAll: the cursor encoder asks once a
// pixel.
unsigned char Content::Palette::Index::find(unsigned char* color)
{
    if (!built)
        build();
    if (fakeColors) {
        unsigned char index;
        std::uint32_t misses;
        fakeIndices<false>(color, 1, begin, end, &index, misses);
        return misses ? findColor(palette, color, begin, end) : index;
    }
    const std::uint32_t key = keyOf(wordAt<false>(color));
    const unsigned char stored = table[key];
    return stored != FREE ? stored : unstored(color, key);
}

void Content::Palette::Index::findAll(unsigned char* pixels, std::size_t count, unsigned char* indices)
{
    if (!built)
        build();
    if (fakeColors)
        findFake(pixels, count, indices);
    else
        findInTable(pixels, count, indices);
}

// A block at a time: keys first, then the lookups, then the few colours the
// table has no slot for. Apart, the keys are computed four at once, the loads
// of the table follow one another without waiting or branching, and the
// search for free slots is a scan of bytes.
constexpr std::size_t BLOCK = 256;

void Content::Palette::Index::findInTable(unsigned char* pixels, std::size_t count, unsigned char* indices)
{
    std::uint32_t keys[BLOCK];
    // In a local: a store through `indices` could otherwise alias the member
    // and force a reload every pixel.
    const unsigned char* lookup = table.get();
    for (std::size_t first = 0; first < count; first += BLOCK) {
        const std::size_t length = std::min(BLOCK, count - first);
        unsigned char* block = pixels + first * PIXEL_SIZE;
        unsigned char* found = indices + first;
        if (littleEndian())
            keysOfWords(block, length, keys);
        else
            computeKeys<false>(block, length, keys);
        for (std::size_t i = 0; i < length; ++i)
            found[i] = lookup[keys[i]];
        for (std::size_t i = 0; i < length; ++i) {
            const void* free = std::memchr(found + i, FREE, length - i);
            if (!free)
                break;
            i = static_cast<std::size_t>(static_cast<const unsigned char*>(free) - found);
            found[i] = unstored(block + i * PIXEL_SIZE, keys[i]);
        }
    }
}

void Content::Palette::Index::findFake(unsigned char* pixels, std::size_t count, unsigned char* indices)
{
    for (std::size_t first = 0; first < count; first += BLOCK) {
        const std::size_t length = std::min(BLOCK, count - first);
        unsigned char* block = pixels + first * PIXEL_SIZE;
        std::uint32_t misses = 0;
        if (littleEndian())
            fakeIndicesOfWords(block, length, begin, end, indices + first, misses);
        else
            fakeIndices<false>(block, length, begin, end, indices + first, misses);
        // A colour that is no entry of the range: the search throws its text.
        if (misses)
            for (std::size_t i = 0; i < length; ++i)
                indices[first + i] = findColor(palette, block + i * PIXEL_SIZE, begin, end);
    }
}

unsigned char Content::Palette::Index::unstored(unsigned char* color, std::uint32_t key)
{
    if (key == lastKey)
        return LAST;
    // Not in the range: the search finds nothing either and throws its text.
    return findColor(palette, color, begin, end);
}

} // namespace Lbx
} // namespace zorv2
