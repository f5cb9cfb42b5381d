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
// Against the fake palette, a colour's index is read from the colour itself.
// The palette is first read when the first colour is asked for, so that an
// encoder with nothing to paint may be given none.
class Content::Palette::Index {
public:
    Index(unsigned char* palette, unsigned int begin, unsigned int end);

    // Throws the text of Palette::findColor when the colour is not in the range.
    unsigned char find(unsigned char* color);

    // The indices of `count` pixels one behind the other, into `indices`;
    // throws as `find` does at the first colour not in the range.
    void findAll(unsigned char* pixels, std::size_t count, unsigned char* indices);

private:
    void build();
    void findInTable(unsigned char* pixels, std::size_t count, unsigned char* indices);
    void findFake(unsigned char* pixels, std::size_t count, unsigned char* indices);
    // Index 255 for its colour; for any other, the text of Palette::findColor.
    unsigned char unstored(unsigned char* color, std::uint32_t key);

    unsigned char* palette;
    unsigned int begin;
    unsigned int end;
    bool built = false;
    // Whether every entry of the range holds the fake palette's colour.
    bool fakeColors = false;
    // The lowest index in the range of each colour at DAC precision, or 255
    // for none; index 255 itself is kept apart.
    std::unique_ptr<unsigned char[]> table;
    // The colour of index 255 when the range holds it, else no key.
    std::uint32_t lastKey;
};

} // namespace Lbx
} // namespace zorv2

#endif
