#ifndef ZORV2_LBX_PIXELLAYOUT_H
#define ZORV2_LBX_PIXELLAYOUT_H

// The two colour forms every image kind shares, in one place. Internal: the
// library's sources, the tool and the benchmarks include it; it is not
// installed.
//
//   decoded pixel, palette array entry   red, green, blue, alpha   (8 bits each)
//   DAC colour, as entries store it      lead, red, green, blue    (6 bits each)
//
// A palette array is 256 entries; alpha 0 is a transparent pixel.
#include "images/Palette.h"

// Loops over whole rows or blocks of pixels are compiled twice on x86-64
// GNU/Linux, for the baseline and for AVX2, whose steps are twice as wide;
// the loader picks one for the machine, once. Elsewhere they are compiled
// once, and so they are under ThreadSanitizer, which instruments the
// loader's pick as well, before it has started itself.
#if defined(__SANITIZE_THREAD__)
#define ZORV2_LBX_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZORV2_LBX_THREAD_SANITIZER
#endif
#endif
#if defined(__x86_64__) && defined(__linux__) && defined(__GNUC__) && !defined(ZORV2_LBX_THREAD_SANITIZER)
#define ZORV2_LBX_WIDE_LOOP __attribute__((target_clones("avx2", "default")))
#else
#define ZORV2_LBX_WIDE_LOOP
#endif

namespace zorv2 {
namespace Lbx {
namespace layout {

constexpr unsigned int RED = 0, GREEN = 1, BLUE = 2, ALPHA = 3;
constexpr unsigned int PIXEL_SIZE = 4;
constexpr unsigned char OPAQUE = 255;
constexpr unsigned int COLORS = 256;
constexpr unsigned int PALETTE_BYTES = COLORS * PIXEL_SIZE;

constexpr unsigned int DAC_LEAD = 0, DAC_RED = 1, DAC_GREEN = 2, DAC_BLUE = 3;
constexpr unsigned int DAC_COLOR_SIZE = 4;
constexpr unsigned char MAX_DAC = 63;
// An 8-bit component is its 6-bit DAC value shifted up by two; the DAC keeps
// the top six bits of a component.
constexpr unsigned int DAC_SHIFT = 2;
constexpr unsigned char DAC_BITS_MASK = 0xFC;

// One stored DAC colour into a palette entry, opaque. All three components
// are converted before the entry is touched, so that a value above 63 throws
// with the entry as it was.
inline void paintDacColor(unsigned char* entry, unsigned char red, unsigned char green, unsigned char blue)
{
    const unsigned char r = Content::Palette::fromDac(red);
    const unsigned char g = Content::Palette::fromDac(green);
    const unsigned char b = Content::Palette::fromDac(blue);
    entry[RED] = r;
    entry[GREEN] = g;
    entry[BLUE] = b;
    entry[ALPHA] = OPAQUE;
}

} // namespace layout
} // namespace Lbx
} // namespace zorv2

#endif
