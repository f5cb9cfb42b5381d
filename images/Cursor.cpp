#include "images/Cursor.h"

#include "images/Palette.h"
#include "images/PixelLayout.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <memory>

namespace zorv2 {
namespace Lbx {

namespace {

// An entry is exactly 12544 bytes:
//
//      0  palette  256 x 4    lead byte 1, red, green, blue (DAC values 0..63)
//   1024  frames   20 x 576   one palette index a pixel; index 0 is transparent
//
// A frame has no header and no stored dimensions: it is a flat run of pixels.
using namespace layout;

constexpr unsigned char LEAD_BYTE = 1;
constexpr unsigned int PALETTE_OFFSET = 0;
constexpr unsigned int PALETTE_SIZE = COLORS * DAC_COLOR_SIZE;
constexpr unsigned int FRAMES_OFFSET = PALETTE_OFFSET + PALETTE_SIZE;
constexpr unsigned int FRAME_COUNT = 20;
constexpr unsigned int FRAME_PIXELS = 576;
constexpr unsigned int ENTRY_SIZE = FRAMES_OFFSET + FRAME_COUNT * FRAME_PIXELS;

constexpr unsigned int DECODED_FRAME_SIZE = FRAME_PIXELS * PIXEL_SIZE;
constexpr unsigned char TRANSPARENT_INDEX = 0;
// Index 0 is reserved for transparency, so a visible pixel is searched from 1.
constexpr unsigned int FIRST_COLOR_INDEX = 1;

} // namespace

Content::Cursor::Cursor(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type), frameCache(nullptr), ownPalette(nullptr),
      outsidePalette(nullptr)
{
    valid = hasCursorLayout();
}

Content::Cursor::~Cursor()
{
    releaseFrames();
    delete[] frameCache;
    delete[] ownPalette;
}

std::string Content::Cursor::info()
{
    return "";
}

bool Content::Cursor::hasCursorLayout()
{
    if (size != ENTRY_SIZE)
        return false;
    // Only the lead bytes mark a cursor; a colour byte above 63 still is one
    // and fails only when its palette is built.
    for (unsigned int entry = PALETTE_OFFSET; entry < FRAMES_OFFSET; entry += DAC_COLOR_SIZE)
        if (read1(entry + DAC_LEAD) != LEAD_BYTE)
            return false;
    return true;
}

void Content::Cursor::releaseFrames()
{
    if (!frameCache)
        return;
    for (unsigned int f = 0; f < FRAME_COUNT; ++f) {
        delete[] frameCache[f];
        frameCache[f] = nullptr;
    }
}

void Content::Cursor::setPalette(unsigned char* palette)
{
    // Frames decoded with the palette before are stale. The palette itself
    // stays the caller's: it is neither copied nor freed here.
    releaseFrames();
    outsidePalette = palette;
}

unsigned char* Content::Cursor::get(unsigned int index)
{
    if (!frameCache)
        frameCache = new unsigned char*[FRAME_COUNT]();
    if (!frameCache[index])
        frameCache[index] = gen(index, outsidePalette ? outsidePalette : palette());
    return frameCache[index];
}

unsigned char** Content::Cursor::pixarray()
{
    for (unsigned int f = 0; f < FRAME_COUNT; ++f)
        get(f);
    return frameCache;
}

unsigned char* Content::Cursor::gen(unsigned int index, unsigned char* palette)
{
    // Index 0 is transparent whatever the palette holds there; any other
    // index takes the palette's alpha along with its colour. With entry 0
    // zeroed in a copy, every pixel is one plain lookup.
    unsigned char colors[PALETTE_BYTES];
    std::copy(palette, palette + PALETTE_BYTES, colors);
    std::fill(colors + TRANSPARENT_INDEX * PIXEL_SIZE, colors + (TRANSPARENT_INDEX + 1) * PIXEL_SIZE, 0);

    auto* frame = new unsigned char[DECODED_FRAME_SIZE];
    const auto* indices = reinterpret_cast<const unsigned char*>(data) + FRAMES_OFFSET + index * FRAME_PIXELS;
    for (unsigned int p = 0; p < FRAME_PIXELS; ++p)
        std::memcpy(frame + p * PIXEL_SIZE, colors + indices[p] * PIXEL_SIZE, PIXEL_SIZE);
    return frame;
}

unsigned char* Content::Cursor::palette()
{
    if (ownPalette)
        return ownPalette;
    // Built aside and kept only when complete: a DAC value above 63 throws
    // halfway, and the next call must not take a half-filled table.
    std::unique_ptr<unsigned char[]> built(new unsigned char[PALETTE_SIZE]);
    for (unsigned int i = 0; i < COLORS; ++i) {
        const unsigned int stored = PALETTE_OFFSET + i * DAC_COLOR_SIZE;
        paintDacColor(built.get() + i * PIXEL_SIZE, read1(stored + DAC_RED), read1(stored + DAC_GREEN),
                      read1(stored + DAC_BLUE));
    }
    ownPalette = built.release();
    return ownPalette;
}

unsigned char* Content::Cursor::paletteCopy()
{
    const unsigned char* source = palette();
    auto* copy = new unsigned char[PALETTE_SIZE];
    std::copy(source, source + PALETTE_SIZE, copy);
    return copy;
}

Content* Content::Cursor::create(unsigned char* palette, unsigned char** frames)
{
    Write write;
    create(write, palette, frames, palette);
    return genContent(write, CURSOR);
}

Content* Content::Cursor::create(unsigned char* palette, Content* content)
{
    Write write;
    return recreate(write, palette, content->cursor());
}

void Content::Cursor::create(Write& write, unsigned char* palette, unsigned char** frames, unsigned char* search)
{
    // Every lead byte is written as 1, which is what makes the result a cursor.
    const std::unique_ptr<unsigned char[]> dac(Palette::pal2dac(palette, LEAD_BYTE));
    for (unsigned int i = 0; i < PALETTE_SIZE; ++i)
        write.add1("palette", dac[i]);

    Palette::Index colors(search, FIRST_COLOR_INDEX, COLORS);
    for (unsigned int f = 0; f < FRAME_COUNT; ++f) {
        for (unsigned int p = 0; p < FRAME_PIXELS; ++p) {
            unsigned char* pixel = frames[f] + p * PIXEL_SIZE;
            if (pixel[ALPHA] == 0)
                write.add1("transparent", TRANSPARENT_INDEX);
            else
                write.add1("color", colors.find(pixel));
        }
    }
}

Content* Content::Cursor::createDebug(Content* content)
{
    return createDebug(content, std::cerr);
}

Content* Content::Cursor::createDebug(Content* content, std::ostream& report)
{
    Cursor* cursor = content->cursor();
    Write write;
    write.setDebug("cursor", content->data(), content->size(), report);
    // A stored DAC value up to 63 survives fromDac and pal2dac unchanged, so
    // the own palette rebuilds the stored one byte for byte.
    return recreate(write, cursor->palette(), cursor);
}

Content* Content::Cursor::recreate(Write& write, unsigned char* palette, Cursor* source)
{
    // The fake palette's 256 colours all differ, so each stored index comes
    // back out of the search unchanged, whatever duplicates `palette` holds.
    const std::unique_ptr<unsigned char[]> fake(Palette::fake());
    std::unique_ptr<unsigned char[]> decoded[FRAME_COUNT];
    unsigned char* frames[FRAME_COUNT];
    for (unsigned int f = 0; f < FRAME_COUNT; ++f) {
        decoded[f].reset(source->gen(f, fake.get()));
        frames[f] = decoded[f].get();
    }
    create(write, palette, frames, fake.get());
    return genContent(write, CURSOR);
}

} // namespace Lbx
} // namespace zorv2
