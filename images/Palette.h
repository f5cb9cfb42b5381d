#ifndef ZORV2_LBX_PALETTE_H
#define ZORV2_LBX_PALETTE_H

#include "entry/Content.h"

#include <cstdint>
#include <memory>

namespace zorv2 {
namespace Lbx {

// Conversions between the 6-bit DAC colours of the entries and 8-bit RGBA
// palette arrays (256 entries of red, green, blue, alpha), and the exact
// colour search that the encoders use. Every array returned is new[]'d and
// belongs to the caller.
class Content::Palette {
public:
    static unsigned char fromDac(unsigned char dac);
    static unsigned char toDac(unsigned char value);
    static unsigned char* pal2dac(unsigned char* palette, unsigned char lead);
    static bool findColor(unsigned char* palette, unsigned char* color, unsigned char* index, unsigned int begin,
                          unsigned int end);
    static bool findColor(unsigned char* palette, unsigned char* color, unsigned char* index);
    static unsigned char findColor(unsigned char* palette, unsigned char* color, unsigned int begin, unsigned int end);
    static unsigned char findColor(unsigned char* palette, unsigned char* color);
    static unsigned char* create(unsigned char** images, unsigned int* widths, unsigned int* heights,
                                 unsigned int count);
    static unsigned char* empty();
    static unsigned char* fake();

    class Index;
};

// The palette search of the encoders, for many pixels against one palette:
// it answers exactly what Palette::findColor answers over [begin, end), the
// lowest index in the range whose entry equals the pixel's colour reduced to
// DAC precision, at the cost of one table lookup instead of a scan through
// up to 256 entries. An entry off the 4-step grid matches nothing, as there.
// The palette is first read when the first colour is asked for, so that an
// encoder with nothing to paint may be given none.
class Content::Palette::Index {
public:
    Index(unsigned char* palette, unsigned int begin, unsigned int end);

    // Throws the text of Palette::findColor when the colour is not in the range.
    // Inline: the encoders call it once a pixel.
    unsigned char find(unsigned char* color)
    {
        if (!table)
            build();
        const std::uint32_t wanted = key(color);
        const unsigned char stored = table[wanted];
        return stored != NONE ? static_cast<unsigned char>(stored - 1) : unstored(color, wanted);
    }

    // The indices of `count` pixels one behind the other, into `indices`;
    // throws as `find` does at the first colour not in the range.
    void findAll(unsigned char* pixels, std::size_t count, unsigned char* indices);

private:
    // A colour is red, green, blue; the DAC keeps the top 6 bits of each.
    static constexpr unsigned int RED = 0, GREEN = 1, BLUE = 2;
    static constexpr unsigned int DAC_SHIFT = 2;
    static constexpr unsigned int DAC_BITS = 6;
    // Every colour at DAC precision has a slot of its own.
    static constexpr std::uint32_t KEYS = 1u << (3 * DAC_BITS);
    // The key of no colour.
    static constexpr std::uint32_t NO_KEY = KEYS;
    // A slot holds its colour's index + 1, so that a byte of zeros is a free
    // slot; index 255 has no room beside that and is kept apart.
    static constexpr unsigned char NONE = 0;
    static constexpr unsigned int LAST = 255;

    // The colour at DAC precision, all three components in 18 bits.
    static std::uint32_t key(const unsigned char* color)
    {
        return std::uint32_t{color[RED]} >> DAC_SHIFT << (2 * DAC_BITS) |
               std::uint32_t{color[GREEN]} >> DAC_SHIFT << DAC_BITS | std::uint32_t{color[BLUE]} >> DAC_SHIFT;
    }

    static bool onGrid(const unsigned char* entry);
    void build();
    // Index 255 for its colour; for any other, the text of Palette::findColor.
    unsigned char unstored(unsigned char* color, std::uint32_t wanted);

    unsigned char* palette;
    unsigned int begin;
    unsigned int end;
    // The lowest index in the range of each colour, + 1.
    std::unique_ptr<unsigned char[]> table;
    // The colour of index 255 when the range holds it, else NO_KEY.
    std::uint32_t lastKey;
};

} // namespace Lbx
} // namespace zorv2

#endif
