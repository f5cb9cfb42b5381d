#include "tools/modding/IndexedFrames.h"

#include "entry/AbstractContent.h"
#include "entry/Write.h"
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "tools/modding/Shapes.h"

#include <stdexcept>

namespace lbxtool {

namespace {

using Palette = Content::Palette;
namespace layout = zorv2::Lbx::layout;

const unsigned char* fakePalette()
{
    static const PaletteArray fake(Palette::fake());
    return fake.get();
}

std::vector<unsigned char> coloured(const Indices& indices, const unsigned char* palette)
{
    std::vector<unsigned char> rgba(indices.size() * PIXEL_SIZE, 0);
    for (std::size_t p = 0; p < indices.size(); ++p)
        if (indices[p] != CLEAR) {
            std::copy(palette + indices[p] * PIXEL_SIZE, palette + indices[p] * PIXEL_SIZE + layout::ALPHA,
                      &rgba[p * PIXEL_SIZE]);
            rgba[p * PIXEL_SIZE + layout::ALPHA] = layout::OPAQUE;
        }
    return rgba;
}

unsigned int distance(const unsigned char* a, const unsigned char* b)
{
    unsigned int sum = 0;
    for (unsigned int c = layout::RED; c < layout::ALPHA; ++c)
        sum += static_cast<unsigned int>((int(a[c]) - int(b[c])) * (int(a[c]) - int(b[c])));
    return sum;
}

unsigned short nearestIndex(const unsigned char* colour, const Lookup& lookup)
{
    unsigned short best = static_cast<unsigned short>(lookup.begin);
    for (unsigned int i = lookup.begin; i < COLORS; ++i)
        if (distance(colour, lookup.palette + i * PIXEL_SIZE) < distance(colour, lookup.palette + best * PIXEL_SIZE))
            best = static_cast<unsigned short>(i);
    return best;
}

std::vector<unsigned char*> pointersTo(std::vector<std::vector<unsigned char>>& frames)
{
    std::vector<unsigned char*> pointers;
    for (std::vector<unsigned char>& frame : frames)
        pointers.push_back(frame.data());
    return pointers;
}

std::vector<std::vector<unsigned char>> inFakeColours(const std::vector<Indices>& frames)
{
    std::vector<std::vector<unsigned char>> rgba;
    for (const Indices& frame : frames)
        rgba.push_back(fakeColours(frame));
    return rgba;
}

} // namespace

Indices indicesOfFake(const unsigned char* rgba, std::size_t pixels)
{
    Palette::Index index(const_cast<unsigned char*>(fakePalette()), 0, COLORS);
    Indices indices(pixels, CLEAR);
    for (std::size_t p = 0; p < pixels; ++p) {
        unsigned char* pixel = const_cast<unsigned char*>(rgba + p * PIXEL_SIZE);
        if (pixel[layout::ALPHA] != 0)
            indices[p] = index.find(pixel);
    }
    return indices;
}

std::vector<unsigned char> fakeColours(const Indices& indices)
{
    return coloured(indices, fakePalette());
}

std::vector<unsigned char> shownColours(const Indices& indices, const unsigned char* palette)
{
    return coloured(indices, palette);
}

Indices indicesOfPicture(const Picture& picture, const Lookup& lookup, const std::string& name, unsigned int frame)
{
    const std::size_t pixels = std::size_t(picture.width) * picture.height;
    Indices indices(pixels, CLEAR);
    if (picture.indexed) {
        for (std::size_t p = 0; p < pixels; ++p)
            if (picture.palette[picture.pixels[p] * PIXEL_SIZE + layout::ALPHA] != 0)
                indices[p] = picture.pixels[p];
        return indices;
    }
    Palette::Index index(const_cast<unsigned char*>(lookup.palette), lookup.begin, COLORS);
    for (std::size_t p = 0; p < pixels; ++p) {
        unsigned char* pixel = const_cast<unsigned char*>(&picture.pixels[p * PIXEL_SIZE]);
        if (pixel[layout::ALPHA] == 0)
            continue;
        try {
            indices[p] = index.find(pixel);
        } catch (const std::runtime_error&) {
            if (!lookup.nearest)
                throw std::runtime_error("'" + name + "': frame " + std::to_string(frame) + ", x " +
                                         std::to_string(p % picture.width) + ", y " + std::to_string(p / picture.width) +
                                         ": colour " + std::to_string(pixel[layout::RED]) + "," +
                                         std::to_string(pixel[layout::GREEN]) + "," + std::to_string(pixel[layout::BLUE]) +
                                         " is not in the entry's palette (--nearest takes the nearest)");
            indices[p] = nearestIndex(pixel, lookup);
        }
    }
    return indices;
}

Content* graphicOfIndices(const std::vector<Indices>& frames, unsigned short width, unsigned short height,
                          unsigned char clearOnce, unsigned char clearMod, unsigned char* palette,
                          unsigned short palOffset, unsigned short palSize, unsigned short flags)
{
    std::vector<std::vector<unsigned char>> rgba = inFakeColours(frames);
    std::vector<unsigned char*> pointers = pointersTo(rgba);
    Content::Write header;
    std::vector<Content::Write> frameWrites(frames.size());
    Content::Graphic::create(header, frameWrites, pointers.data(), const_cast<unsigned char*>(fakePalette()), width,
                             height, static_cast<unsigned short>(frames.size()), clearOnce, clearMod, palette,
                             palOffset, palSize, flags);
    return Content::AbstractContent::genContent(header, Content::GRAPHIC);
}

Content* cursorOfIndices(const std::vector<Indices>& frames, unsigned char* palette)
{
    std::vector<std::vector<unsigned char>> rgba = inFakeColours(frames);
    std::vector<unsigned char*> pointers = pointersTo(rgba);
    Content::Write write;
    Content::Cursor::create(write, palette, pointers.data(), const_cast<unsigned char*>(fakePalette()));
    return Content::AbstractContent::genContent(write, Content::CURSOR);
}

} // namespace lbxtool
