#include "tools/modding/IndexedFrames.h"

#include "entry/AbstractContent.h"
#include "entry/Write.h"
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Sheets.h"

#include <algorithm>
#include <array>
#include <cstring>
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

// One index for all the frames of an entry.
Palette::Index fakeIndex()
{
    return Palette::Index(const_cast<unsigned char*>(fakePalette()), 0, COLORS);
}

// A run of painted pixels at a time, which the index reads several at once.
Indices indicesOf(const unsigned char* rgba, std::size_t pixels, Palette::Index& fake)
{
    Indices indices(pixels, CLEAR);
    std::vector<unsigned char> found(pixels);
    const auto painted = [&](std::size_t p) { return rgba[p * PIXEL_SIZE + layout::ALPHA] != 0; };
    for (std::size_t p = 0; p < pixels;) {
        while (p < pixels && !painted(p))
            ++p;
        const std::size_t runStart = p;
        while (p < pixels && painted(p))
            ++p;
        if (p == runStart)
            continue;
        fake.findAll(const_cast<unsigned char*>(rgba + runStart * PIXEL_SIZE), p - runStart, &found[runStart]);
        std::copy(found.begin() + runStart, found.begin() + p, indices.begin() + runStart);
    }
    return indices;
}

// Each pixel's four bytes from a table of whole colours, CLEAR's four zeros
// among them: copied a colour channel at a time, the frames of a large
// animation took a quarter of unpack's time.
class ColourTable {
public:
    explicit ColourTable(const unsigned char* palette)
    {
        for (unsigned int i = 0; i < CLEAR; ++i) {
            std::copy(palette + i * PIXEL_SIZE, palette + i * PIXEL_SIZE + layout::ALPHA, table + i * PIXEL_SIZE);
            table[i * PIXEL_SIZE + layout::ALPHA] = layout::OPAQUE;
        }
    }

    void paint(const Indices& indices, unsigned char* rgba) const
    {
        for (std::size_t p = 0; p < indices.size(); ++p)
            std::memcpy(rgba + p * PIXEL_SIZE, table + std::min(indices[p], CLEAR) * PIXEL_SIZE, PIXEL_SIZE);
    }

private:
    unsigned char table[(CLEAR + 1) * PIXEL_SIZE] = {};
};

std::vector<unsigned char> coloured(const Indices& indices, const unsigned char* palette)
{
    std::vector<unsigned char> rgba(indices.size() * PIXEL_SIZE);
    ColourTable(palette).paint(indices, rgba.data());
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

std::vector<const unsigned char*> pointersTo(const std::vector<std::vector<unsigned char>>& frames)
{
    std::vector<const unsigned char*> pointers;
    for (const std::vector<unsigned char>& frame : frames)
        pointers.push_back(frame.data());
    return pointers;
}

// Frames in fake colours for the library's encoder, in one block whose bytes
// are painted once: zeroing them first cost a tenth of pack.
struct FakeFrames {
    std::unique_ptr<unsigned char[]> block;
    std::vector<unsigned char*> pointers;
};

FakeFrames inFakeColours(const std::vector<Indices>& frames)
{
    std::size_t pixels = 0;
    for (const Indices& frame : frames)
        pixels += frame.size();
    FakeFrames fake{std::unique_ptr<unsigned char[]>(new unsigned char[pixels * PIXEL_SIZE]), {}};
    const ColourTable colours(fakePalette());
    unsigned char* next = fake.block.get();
    for (const Indices& frame : frames) {
        colours.paint(frame, next);
        fake.pointers.push_back(next);
        next += frame.size() * PIXEL_SIZE;
    }
    return fake;
}

constexpr unsigned char TRANSPARENT = 0;

// Which indices the frames hold, CLEAR among them: one store a pixel,
// without a branch.
class UsedIndices {
public:
    explicit UsedIndices(const std::vector<Indices>& frames)
    {
        for (const Indices& frame : frames)
            for (const unsigned short index : frame)
                used[std::min(index, CLEAR)] = true;
    }

    // The highest index that no frame paints, or NO_INDEX when each is painted.
    int freeIndex() const
    {
        for (int index = COLORS - 1; index >= 0; --index)
            if (!used[index])
                return index;
        return NO_INDEX;
    }

    bool anyClear() const { return used[CLEAR]; }

private:
    std::array<bool, CLEAR + 1> used{};
};

// `shown` with entry `clear`, if any, made transparent.
PaletteArray withClear(const unsigned char* shown, int clear)
{
    PaletteArray palette = copyOfPalette(shown);
    if (clear != NO_INDEX)
        palette[clear * PIXEL_SIZE + layout::ALPHA] = TRANSPARENT;
    return palette;
}

std::vector<unsigned char> indexBytes(const Indices& frame, int clear)
{
    std::vector<unsigned char> bytes(frame.size());
    std::transform(frame.begin(), frame.end(), bytes.begin(), [clear](unsigned short index) {
        return static_cast<unsigned char>(index == CLEAR ? clear : index);
    });
    return bytes;
}

std::vector<std::vector<unsigned char>> colouredFrames(const std::vector<Indices>& frames, const unsigned char* shown)
{
    std::vector<std::vector<unsigned char>> pictures;
    for (const Indices& frame : frames)
        pictures.push_back(coloured(frame, shown));
    return pictures;
}

std::string rgbaSheet(const std::vector<std::vector<unsigned char>>& pictures, unsigned int width,
                      unsigned int height, const std::string& name)
{
    const Image sheet = spriteSheet(pointersTo(pictures), width, height);
    return rgbaPng(sheet.rgba.data(), sheet.width, sheet.height, name);
}

std::string indexedSheet(const std::vector<std::vector<unsigned char>>& frames, unsigned int width,
                         unsigned int height, const unsigned char* shown, int gap, const std::string& name)
{
    const unsigned char corner = static_cast<unsigned char>(std::max(gap, 0)); // any, with no corner to fill
    const IndexSheet sheet = indexSheet(pointersTo(frames), width, height, corner);
    return indexedPng(sheet.indices.data(), sheet.width, sheet.height, withClear(shown, gap).get(), name);
}

// What a pixel at each index of an indexed picture stands for: painted
// when its palette entry is fully opaque, except at the transparent index.
struct IndexMeaning {
    enum Odd : unsigned char { NONE = 0, PARTLY = 1, OPAQUE_TRANSPARENT = 2 };

    IndexMeaning(const std::vector<unsigned char>& palette, int transparent)
    {
        for (unsigned int index = 0; index < COLORS; ++index) {
            const unsigned char alpha = palette[index * PIXEL_SIZE + layout::ALPHA];
            const bool opaque = alpha == layout::OPAQUE;
            stored[index] = opaque && int(index) != transparent ? static_cast<unsigned short>(index) : CLEAR;
            odd[index] = alpha != 0 && !opaque ? PARTLY : opaque && int(index) == transparent ? OPAQUE_TRANSPARENT : NONE;
        }
    }

    std::array<unsigned short, COLORS> stored;
    std::array<unsigned char, COLORS> odd;
};

// A table lookup a pixel; the pixels stored transparent against what the
// file shows are rare, and counted in a second pass only when there are any.
PictureIndices indicesOfIndexed(const Picture& picture, int transparent)
{
    const IndexMeaning meaning(picture.palette, transparent);
    const std::size_t pixels = std::size_t(picture.width) * picture.height;
    const unsigned char* in = picture.pixels.data();
    PictureIndices result;
    result.indices.resize(pixels);
    unsigned short* out = result.indices.data();
    unsigned char odd = IndexMeaning::NONE;
    for (std::size_t p = 0; p < pixels; ++p) {
        out[p] = meaning.stored[in[p]];
        odd |= meaning.odd[in[p]];
    }
    if (odd == IndexMeaning::NONE)
        return result;
    for (std::size_t p = 0; p < pixels; ++p) {
        result.partlyTransparent += meaning.odd[in[p]] == IndexMeaning::PARTLY;
        result.opaqueTransparent += meaning.odd[in[p]] == IndexMeaning::OPAQUE_TRANSPARENT;
    }
    return result;
}

} // namespace

Indices indicesOfFake(const unsigned char* rgba, std::size_t pixels)
{
    Palette::Index index = fakeIndex();
    return indicesOf(rgba, pixels, index);
}

std::vector<Indices> storedIndices(Content::Graphic* graphic)
{
    PaletteArray fake(Palette::fake());
    const LentPalette lent(graphic, fake.get());
    Palette::Index index = fakeIndex();
    std::vector<Indices> frames;
    for (unsigned int f = 0; f < graphic->frames(); ++f)
        frames.push_back(indicesOf(graphic->frame(f), std::size_t(graphic->width()) * graphic->height(), index));
    return frames;
}

std::vector<Indices> storedIndices(Content::Cursor* cursor)
{
    Palette::Index index = fakeIndex();
    std::vector<Indices> frames;
    for (unsigned int f = 0; f < CURSOR_FRAMES; ++f) {
        const std::unique_ptr<unsigned char[]> decoded(cursor->gen(f, const_cast<unsigned char*>(fakePalette())));
        frames.push_back(indicesOf(decoded.get(), CURSOR_SIDE * CURSOR_SIDE, index));
    }
    return frames;
}

PictureIndices indicesOfPicture(const Picture& picture, const Lookup& lookup, const std::string& name,
                                unsigned int frame)
{
    if (picture.indexed)
        return indicesOfIndexed(picture, lookup.transparent);
    const std::size_t pixels = std::size_t(picture.width) * picture.height;
    PictureIndices result;
    result.indices.assign(pixels, CLEAR);
    Indices& indices = result.indices;
    Palette::Index index(const_cast<unsigned char*>(lookup.palette), lookup.begin, COLORS);
    for (std::size_t p = 0; p < pixels; ++p) {
        unsigned char* pixel = const_cast<unsigned char*>(&picture.pixels[p * PIXEL_SIZE]);
        if (pixel[layout::ALPHA] == 0)
            continue;
        if (pixel[layout::ALPHA] != layout::OPAQUE) {
            ++result.partlyTransparent;
            continue;
        }
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
    return result;
}

void requirePainted(std::size_t unpainted, const std::string& path)
{
    if (unpainted != 0)
        throw std::runtime_error("'" + path + "': " + counted(unpainted, "pixel") + (unpainted == 1 ? " is" : " are") +
                                 " not fully opaque, and a raw graphic paints every pixel; paint " +
                                 (unpainted == 1 ? "it" : "them") + ", or take raw out of its flags");
}

std::string counted(std::size_t count, const std::string& thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

void sayTransparency(const PictureIndices& picture, int transparent, const std::string& path, bool strict,
                     Warnings& warnings)
{
    struct Note {
        std::size_t count;
        std::string shows; // what the file shows of them
        std::string mend;  // what to do instead, when strict refuses
    };
    const std::string index = std::to_string(transparent);
    const Note notes[] = {
        {picture.opaqueTransparent,
         " opaque at index " + index + ", the entry's transparent index (the file's palette no longer makes it "
                                       "transparent)",
         "save the frame with index " + index + " transparent, or paint with another index"},
        {picture.partlyTransparent, " partly transparent (alpha neither 0 nor 255)",
         "make each fully transparent or fully opaque"},
    };
    for (const Note& note : notes) {
        if (note.count == 0)
            continue;
        const bool one = note.count == 1;
        const std::string shows = "'" + path + "': " + counted(note.count, "pixel") + (one ? " is" : " are") + note.shows;
        if (strict)
            throw std::runtime_error(shows + "; " + note.mend);
        warnings.warn(shows + (one ? "; it is" : "; they are") + " stored transparent");
    }
}

Content* graphicOfIndices(const std::vector<Indices>& frames, unsigned short width, unsigned short height,
                          unsigned char clearOnce, unsigned char clearMod, unsigned char* palette,
                          unsigned short palOffset, unsigned short palSize, unsigned short flags)
{
    FakeFrames fake = inFakeColours(frames);
    // Written plain, a pixel costs a store where a labelled field costs a
    // string: the frames go in fake colours, which also fill the palette
    // block; a graphic that has one is made again from that one's indices
    // with its own colours there.
    std::unique_ptr<Content> inFake(Content::Graphic::create(
        fake.pointers.data(), const_cast<unsigned char*>(fakePalette()), width, height,
        static_cast<unsigned short>(frames.size()), clearOnce, clearMod, palOffset, palSize, flags));
    if ((flags & Content::Graphic::PALETTE) == 0)
        return inFake.release();
    return Content::Graphic::create(palette, clearOnce, clearMod, palOffset, palSize, flags, inFake.get());
}

Content* cursorOfIndices(const std::vector<Indices>& frames, unsigned char* palette)
{
    FakeFrames fake = inFakeColours(frames);
    Content::Write write;
    Content::Cursor::create(write, palette, fake.pointers.data(), const_cast<unsigned char*>(fakePalette()));
    return Content::AbstractContent::genContent(write, Content::CURSOR);
}

FramePngs framePngs(const std::vector<Indices>& frames, unsigned int width, unsigned int height,
                    const unsigned char* shown, int clear, const std::vector<std::string>& names,
                    const std::string& sheetName)
{
    const UsedIndices used(frames);
    const int free = clear == CHOOSE_CLEAR ? used.freeIndex() : clear;
    const bool unpainted = used.anyClear();
    const bool indexed = !unpainted || free != NO_INDEX;
    FramePngs made;
    made.transparent = unpainted ? free : NO_INDEX;
    const PaletteArray palette = withClear(shown, made.transparent);
    std::vector<std::vector<unsigned char>> pixels; // indices, or RGBA
    for (std::size_t f = 0; f < frames.size(); ++f) {
        pixels.push_back(indexed ? indexBytes(frames[f], made.transparent) : coloured(frames[f], shown));
        made.frames.push_back(indexed ? indexedPng(pixels.back().data(), width, height, palette.get(), names[f])
                                      : rgbaPng(pixels.back().data(), width, height, names[f]));
    }
    if (frames.size() > 1) {
        // The sheet's empty corner wants a transparent index even where the
        // frames paint every pixel; with none left the sheet shows in RGBA.
        const int sheetClear = sheetHasGap(frames.size()) ? free : made.transparent;
        if (indexed && (sheetClear != NO_INDEX || !sheetHasGap(frames.size())))
            made.sheet = indexedSheet(pixels, width, height, shown, sheetClear, sheetName);
        else
            made.sheet = rgbaSheet(indexed ? colouredFrames(frames, shown) : pixels, width, height, sheetName);
    }
    for (std::vector<unsigned char>& picture : pixels)
        made.pictures.push_back({width, height, indexed, std::move(picture),
                                 indexed ? std::vector<unsigned char>(palette.get(), palette.get() + COLORS * PIXEL_SIZE)
                                         : std::vector<unsigned char>()});
    return made;
}

} // namespace lbxtool
