#include "tools/Pictures.h"

namespace lbxtool {

unsigned short coloursFilled(const unsigned char* palette)
{
    unsigned short count = 0;
    while (count < COLORS && palette[count * PIXEL_SIZE + ALPHA] != 0)
        ++count;
    return count;
}

} // namespace lbxtool
