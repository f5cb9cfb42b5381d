#include "images/Font.h"

#include "images/Palette.h"
#include "images/PixelLayout.h"

#include <algorithm>
#include <iostream>
#include <memory>

namespace zorv2 {
namespace Lbx {

namespace {

// A fixed header of 9116 bytes, then the glyph bytes; all fields little-endian:
//
//      0  4          constant 25
//      4  4          constant 50
//      8  7          fill, free
//     15  37         fill, every byte 0
//     52  8          fill, free
//     60  54         fill, every byte 0
//    114  249        fill, every byte 8
//    363  1025       fill, free
//   1388  6 x 2      height of each font
//   1400  36         fill, free
//   1436  1536 x 1   width of each glyph, at font x 256 + glyph
//   2972  1536 x 4   where each glyph's bytes begin, counted from the end of
//                    the header; 0 means "where the glyph before begins",
//                    except at glyph 0 of a font
//   9116  ...        glyph bytes, opaque to the library
constexpr unsigned int FONT_COUNT = 6;
constexpr unsigned int GLYPHS_PER_FONT = 256;
constexpr unsigned int GLYPH_COUNT = FONT_COUNT * GLYPHS_PER_FONT;

constexpr unsigned int CONSTANT_25_OFFSET = 0;
constexpr unsigned int CONSTANT_25 = 25;
constexpr unsigned int CONSTANT_50_OFFSET = 4;
constexpr unsigned int CONSTANT_50 = 50;
constexpr unsigned int CHECKED_ZERO_RUN_OFFSET = 15; // inside the free start fill
constexpr unsigned int CHECKED_ZERO_RUN_END = 52;
constexpr unsigned int ZERO_FILL_OFFSET = 60;
constexpr unsigned int EIGHT_FILL_OFFSET = 114;
constexpr unsigned char EIGHT = 8;
constexpr unsigned int SECOND_FILL_OFFSET = 363;
constexpr unsigned int HEIGHTS_OFFSET = 1388;
constexpr unsigned int HEIGHT_SIZE = 2;
constexpr unsigned int WIDTHS_OFFSET = 1436;
constexpr unsigned int OFFSETS_OFFSET = WIDTHS_OFFSET + GLYPH_COUNT;
constexpr unsigned int OFFSET_SIZE = 4;
constexpr unsigned int HEADER_SIZE = OFFSETS_OFFSET + GLYPH_COUNT * OFFSET_SIZE;
static_assert(HEADER_SIZE == 9116, "the header has a fixed size");

using layout::PIXEL_SIZE;

// Resolved offsets of a font: its 256 glyphs and the end mark behind them.
constexpr unsigned int RESOLVED_PER_FONT = GLYPHS_PER_FONT + 1;

// Position of a glyph in the width and offset tables.
unsigned int position(unsigned int font, unsigned int glyph)
{
    return font * GLYPHS_PER_FONT + glyph;
}

std::string glyphBuilderName(unsigned int font, unsigned int glyph)
{
    // "font 0 - glyph  65": the glyph right-aligned in a field of 3.
    std::string number = std::to_string(glyph);
    if (number.size() < 3)
        number.insert(0, 3 - number.size(), ' ');
    return "font " + std::to_string(font) + " - glyph " + number;
}

// The fill runs are bounded by the builder's size, so they only come out in
// place when the builder started empty.
void fillUpTo(Content::Write& write, const char* label, unsigned char value, unsigned int end, bool compare)
{
    while (write.size() < end)
        write.add1(label, value, compare);
}

} // namespace

Content::Font::Font(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type), fontPalette(nullptr), ownsPalette(false)
{
    valid = hasFontHeader();
}

Content::Font::~Font()
{
    releaseOwnedPalette();
}

std::string Content::Font::info()
{
    return "";
}

bool Content::Font::hasFontHeader()
{
    // The size comes first: nothing is read from an entry too short for the header.
    return size >= HEADER_SIZE && read4(CONSTANT_25_OFFSET) == CONSTANT_25 &&
           read4(CONSTANT_50_OFFSET) == CONSTANT_50 && bytesAre(CHECKED_ZERO_RUN_OFFSET, CHECKED_ZERO_RUN_END, 0) &&
           bytesAre(ZERO_FILL_OFFSET, EIGHT_FILL_OFFSET, 0) && bytesAre(EIGHT_FILL_OFFSET, SECOND_FILL_OFFSET, EIGHT);
}

bool Content::Font::bytesAre(unsigned int begin, unsigned int end, unsigned char value)
{
    for (unsigned int at = begin; at < end; ++at)
        if (read1(at) != value)
            return false;
    return true;
}

void Content::Font::setPalette(unsigned char* palette)
{
    // A palette the caller gives stays the caller's.
    releaseOwnedPalette();
    fontPalette = palette;
}

void Content::Font::adoptPalette(unsigned char* palette)
{
    setPalette(palette);
    ownsPalette = true;
}

void Content::Font::releaseOwnedPalette()
{
    if (ownsPalette)
        delete[] fontPalette;
    fontPalette = nullptr;
    ownsPalette = false;
}

unsigned short Content::Font::height(unsigned int font)
{
    return read2(HEIGHTS_OFFSET + font * HEIGHT_SIZE);
}

unsigned char Content::Font::width(unsigned int font, unsigned int glyph)
{
    return read1(WIDTHS_OFFSET + position(font, glyph));
}

unsigned int Content::Font::offset(unsigned int font, unsigned int glyph)
{
    // Indices past the tables are the caller's to avoid; rather than a read
    // outside the entry, they get its end.
    if (font >= FONT_COUNT || glyph > GLYPHS_PER_FONT)
        return size;
    if (resolvedOffsets.empty())
        resolveOffsets();
    return resolvedOffsets[font * RESOLVED_PER_FONT + glyph];
}

void Content::Font::resolveOffsets()
{
    // Resolved once, each from the glyph before: asked glyph by glyph, the
    // steps back over stored zeros would be taken anew for every glyph.
    resolvedOffsets.resize(FONT_COUNT * RESOLVED_PER_FONT);
    for (unsigned int font = 0; font < FONT_COUNT; ++font) {
        unsigned int* resolved = &resolvedOffsets[font * RESOLVED_PER_FONT];
        for (unsigned int glyph = 0; glyph <= GLYPHS_PER_FONT; ++glyph) {
            // The table is one run, so glyph 256 reads glyph 0 of the next
            // font; behind the last glyph of the last font lies the end of
            // the entry.
            if (font == FONT_COUNT - 1 && glyph == GLYPHS_PER_FONT) {
                resolved[glyph] = size;
                continue;
            }
            // A stored 0 means "where the glyph before begins", except at
            // glyph 0, so no step back leaves the font. Offsets are 32-bit: a
            // stored value near 4 GiB wraps around.
            const unsigned int stored = storedOffset(font, glyph);
            resolved[glyph] = stored == 0 && glyph > 0 ? resolved[glyph - 1] : stored + HEADER_SIZE;
        }
    }
}

unsigned int Content::Font::storedOffset(unsigned int font, unsigned int glyph)
{
    return read4(OFFSETS_OFFSET + position(font, glyph) * OFFSET_SIZE);
}

unsigned char* Content::Font::glyph(unsigned int font, unsigned int glyph)
{
    // The stored glyph bytes are not decoded: a glyph is a transparent image
    // of its size.
    const unsigned int pixels = static_cast<unsigned int>(width(font, glyph)) * height(font);
    return new unsigned char[pixels * PIXEL_SIZE]();
}

Content* Content::Font::create(unsigned char* palette, unsigned short* heights, unsigned char* widths,
                               unsigned char** glyphs)
{
    Write write;
    std::vector<Write> glyphWrites(GLYPH_COUNT);
    create(write, glyphWrites, palette, heights, widths, glyphs);
    return genContent(write, FONT);
}

void Content::Font::create(Write& write, std::vector<Write>& glyphWrites, unsigned char* /*palette*/,
                           unsigned short* heights, unsigned char* widths, unsigned char** /*glyphs*/)
{
    // Runs whose label ends in '?' are not reproduced from the entry and so
    // are not compared.
    write.add4("start 25", CONSTANT_25);
    write.add4("start 50", CONSTANT_50);
    fillUpTo(write, "start fill ?", 0, ZERO_FILL_OFFSET, false);
    fillUpTo(write, "start fill 0", 0, EIGHT_FILL_OFFSET, true);
    fillUpTo(write, "start fill 8", EIGHT, SECOND_FILL_OFFSET, true);
    fillUpTo(write, "second fill ?", 0, HEIGHTS_OFFSET, false);
    for (unsigned int font = 0; font < FONT_COUNT; ++font)
        write.add2("height", heights[font]);
    fillUpTo(write, "third fill ?", 0, WIDTHS_OFFSET, false);
    for (unsigned int i = 0; i < GLYPH_COUNT; ++i)
        write.add1("width", widths[i]);
    // Every glyph is written at the start of the glyph bytes, whatever the
    // builders below hold.
    while (write.size() < HEADER_SIZE)
        write.add4("offsets", 0, false);
    for (unsigned int i = 0; i < GLYPH_COUNT; ++i)
        write.add(glyphWrites[i]);
}

Content* Content::Font::createDebug(Content* content)
{
    return createDebug(content, std::cerr);
}

Content* Content::Font::createDebug(Content* content, std::ostream& report)
{
    Font* font = content->font();
    // Nothing reads this palette; the font owns it so that it does not leak.
    font->adoptPalette(Palette::fake());

    // A glyph's length is the distance between its stored offset and the
    // next one, as they stand, also where they point past the entry; an end
    // at or before the start gives length 0. The glyph builders stay empty,
    // so only that length is compared and no reference byte is read: one
    // that lies outside the entry is referred to by the entry's end.
    std::vector<Write> glyphWrites;
    glyphWrites.reserve(GLYPH_COUNT);
    for (unsigned int f = 0; f < FONT_COUNT; ++f) {
        for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g) {
            const unsigned int start = font->offset(f, g);
            const unsigned int end = font->offset(f, g + 1);
            Write glyphWrite;
            glyphWrite.setDebug(glyphBuilderName(f, g), content->data() + std::min(start, content->size()),
                                end > start ? end - start : 0, report);
            glyphWrites.push_back(glyphWrite);
        }
    }

    Write write;
    write.setDebug("font", content->data(), content->size(), report);
    unsigned short heights[FONT_COUNT];
    for (unsigned int f = 0; f < FONT_COUNT; ++f)
        heights[f] = font->height(f);
    unsigned char widths[GLYPH_COUNT];
    for (unsigned int f = 0; f < FONT_COUNT; ++f)
        for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
            widths[position(f, g)] = font->width(f, g);
    // create never reads glyph pixels, and blank buffers sized by crafted
    // heights and widths could claim gigabytes, so none are made.
    unsigned char* glyphs[GLYPH_COUNT] = {};
    create(write, glyphWrites, font->fontPalette, heights, widths, glyphs);
    return genContent(write, FONT);
}

} // namespace Lbx
} // namespace zorv2
