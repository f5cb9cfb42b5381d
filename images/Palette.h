#ifndef ZORV2_LBX_PALETTE_H
#define ZORV2_LBX_PALETTE_H

#include "entry/Content.h"

#include <cstdint>

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
// DAC precision, at the cost of one hash probe instead of a scan through up
// to 256 entries. An entry off the 4-step grid matches nothing, as there.
// The palette is first read when the first colour is asked for, so that an
// encoder with nothing to paint may be given none.
class Content::Palette::Index {
public:
    Index(unsigned char* palette, unsigned int begin, unsigned int end);

    // Throws the text of Palette::findColor when the colour is not in the range.
    // Inline: the encoders call it once a pixel.
    unsigned char find(unsigned char* color)
    {
        if (!built)
            build();
        const std::uint32_t wanted = key(color) + 1;
        for (unsigned int slot = slotOf(wanted); keys[slot] != 0; slot = (slot + 1) % SLOTS)
            if (keys[slot] == wanted)
                return indices[slot];
        return notFound(color);
    }

private:
    // Sixteen times the most colours a palette holds: nearly every probe
    // ends at its first slot, which keeps the encoders' loop free of
    // mispredicted branches (a quarter faster than twice as many slots).
    static constexpr unsigned int SLOT_BITS = 12;
    static constexpr unsigned int SLOTS = 1u << SLOT_BITS;

    // A colour is red, green, blue; the DAC keeps the top 6 bits of each.
    static constexpr unsigned int RED = 0, GREEN = 1, BLUE = 2;
    static constexpr unsigned int DAC_SHIFT = 2;
    static constexpr unsigned int DAC_BITS = 6;

    // The colour at DAC precision, all three components in 18 bits.
    static std::uint32_t key(const unsigned char* color)
    {
        return std::uint32_t{color[RED]} >> DAC_SHIFT << (2 * DAC_BITS) |
               std::uint32_t{color[GREEN]} >> DAC_SHIFT << DAC_BITS | std::uint32_t{color[BLUE]} >> DAC_SHIFT;
    }

    // Fibonacci hashing: the top bits of the product spread neighbouring colours.
    static unsigned int slotOf(std::uint32_t key)
    {
        return (key * 2654435769u) >> (32 - SLOT_BITS);
    }

    static bool onGrid(const unsigned char* entry);
    void build();
    unsigned char notFound(unsigned char* color);

    unsigned char* palette;
    unsigned int begin;
    unsigned int end;
    bool built;
    // Key + 1 of the colour in each slot, 0 for a free slot, and its index.
    std::uint32_t keys[SLOTS];
    unsigned char indices[SLOTS];
};

} // namespace Lbx
} // namespace zorv2

#endif
