#ifndef ZORV2_LBX_PALETTE_H
#define ZORV2_LBX_PALETTE_H

#include "entry/Content.h"

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
};

} // namespace Lbx
} // namespace zorv2

#endif
