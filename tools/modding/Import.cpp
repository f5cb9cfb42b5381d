#include "tools/modding/Import.h"

#include "images/Graphic.h"
#include "images/Palette.h"
#include "tools/modding/GraphicFlags.h"
#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Shapes.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace lbxtool {

namespace {

using Graphic = Content::Graphic;
using Palette = Content::Palette;
using zorv2::Lbx::layout::BLUE;
using zorv2::Lbx::layout::DAC_BITS_MASK;
using zorv2::Lbx::layout::GREEN;
using zorv2::Lbx::layout::OPAQUE;
using zorv2::Lbx::layout::RED;

constexpr std::size_t LARGEST_COUNT = std::numeric_limits<unsigned short>::max();

std::vector<unsigned char*> pixelsOf(std::vector<Image>& frames)
{
    std::vector<unsigned char*> pixels;
    for (Image& frame : frames)
        pixels.push_back(frame.rgba.data());
    return pixels;
}

// Palette::create fails on the 257th colour without saying where it met it.
// Whether a run of frames has too many colours grows with the run, so a
// binary search over its length finds the image that brings the one too many.
PaletteArray paletteFromImages(std::vector<Image>& frames, const std::vector<std::string>& paths)
{
    std::vector<unsigned char*> pixels = pixelsOf(frames);
    std::vector<unsigned int> widths, heights;
    for (const Image& frame : frames) {
        widths.push_back(frame.width);
        heights.push_back(frame.height);
    }
    const auto build = [&](std::size_t count) {
        return PaletteArray(
            Palette::create(pixels.data(), widths.data(), heights.data(), static_cast<unsigned int>(count)));
    };
    try {
        return build(frames.size());
    } catch (const std::exception& e) {
        std::size_t fits = 0, fails = frames.size();
        while (fails - fits > 1) {
            const std::size_t middle = fits + (fails - fits) / 2;
            try {
                build(middle);
                fits = middle;
            } catch (const std::exception&) {
                fails = middle;
            }
        }
        throw std::runtime_error("'" + paths[fails - 1] + "': " + e.what());
    }
}

// The encoder names a missing colour but not the image; the first image with
// a pixel the palette lacks is the one to blame. Raw frames look up every
// pixel, the others only the visible ones.
std::string imageLacking(std::vector<Image>& frames, const std::vector<std::string>& paths, unsigned char* palette,
                         bool raw)
{
    for (std::size_t f = 0; f < frames.size(); ++f)
        for (std::size_t p = 0; p < frames[f].rgba.size(); p += PIXEL_SIZE) {
            unsigned char* pixel = &frames[f].rgba[p];
            if ((raw || pixel[ALPHA] != 0) && !Palette::findColor(palette, pixel, nullptr))
                return paths[f];
        }
    return "";
}

unsigned char narrow(unsigned int value, const char* what)
{
    if (value > std::numeric_limits<unsigned char>::max())
        throw std::runtime_error(std::string(what) + " " + std::to_string(value) + " is above 255");
    return static_cast<unsigned char>(value);
}

// Indexed PNGs hold the very indices to store (unpack writes them so): no
// colour is looked up. A palette block, when asked for, is the first
// picture's whole palette.
std::unique_ptr<Content> fromIndices(const std::vector<Picture>& pictures, const std::vector<std::string>& paths,
                                     GraphicSettings settings, bool strict, Warnings& warnings)
{
    const Lookup lookup{nullptr, 0, false, NO_INDEX};
    std::vector<Indices> frames;
    for (std::size_t f = 0; f < pictures.size(); ++f) {
        PictureIndices read = indicesOfPicture(pictures[f], lookup, paths[f], static_cast<unsigned int>(f));
        if (settings.flags & Graphic::RAW)
            requirePainted(static_cast<std::size_t>(std::count(read.indices.begin(), read.indices.end(), CLEAR)),
                           paths[f]);
        else
            sayTransparency(read, lookup.transparent, paths[f], strict, warnings);
        frames.push_back(std::move(read.indices));
    }
    std::vector<unsigned char> palette = pictures.front().palette;
    return std::unique_ptr<Content>(graphicOfIndices(
        frames, static_cast<unsigned short>(pictures.front().width), static_cast<unsigned short>(pictures.front().height),
        settings.clearOnce, settings.clearMod, palette.data(), 0, (settings.flags & Graphic::PALETTE) ? COLORS : 0,
        settings.flags));
}

// The picture as RGBA with only fully opaque pixels painted, as pack reads
// frames: the encoder would paint any pixel that is not fully transparent,
// and in a raw frame every pixel in its colour.
Image opaqueOnly(const Picture& picture, const std::string& path, bool raw, bool strict, Warnings& warnings)
{
    Image image{picture.width, picture.height, rgbaOf(picture)};
    PictureIndices counts;
    std::size_t unpainted = 0;
    for (std::size_t p = ALPHA; p < image.rgba.size(); p += PIXEL_SIZE) {
        unpainted += image.rgba[p] != OPAQUE;
        if (image.rgba[p] != 0 && image.rgba[p] != OPAQUE) {
            image.rgba[p] = 0;
            ++counts.partlyTransparent;
        }
    }
    if (raw)
        requirePainted(unpainted, path);
    sayTransparency(counts, NO_INDEX, path, strict, warnings);
    return image;
}

std::unique_ptr<Content> fromColours(const std::vector<Picture>& pictures, const std::vector<std::string>& paths,
                                     GraphicSettings settings, const unsigned char* named, bool strict,
                                     Warnings& warnings)
{
    std::vector<Image> frames;
    for (std::size_t f = 0; f < pictures.size(); ++f)
        frames.push_back(opaqueOnly(pictures[f], paths[f], settings.flags & Graphic::RAW, strict, warnings));
    // A palette built from the images exists nowhere else, so the entry
    // carries it; one from a named source is stored only when asked for.
    PaletteArray palette;
    unsigned short paletteSize = COLORS;
    if (named == nullptr) {
        palette = paletteFromImages(frames, paths);
        paletteSize = coloursFilled(palette.get());
        settings.flags |= Graphic::PALETTE;
    } else {
        palette = copyOfPalette(named);
    }

    std::vector<unsigned char*> pixels = pixelsOf(frames);
    try {
        return std::unique_ptr<Content>(Graphic::create(
            pixels.data(), palette.get(), static_cast<unsigned short>(frames.front().width),
            static_cast<unsigned short>(frames.front().height), static_cast<unsigned short>(frames.size()),
            settings.clearOnce, settings.clearMod, 0, paletteSize, settings.flags));
    } catch (const std::exception& e) {
        const std::string culprit = imageLacking(frames, paths, palette.get(), settings.flags & Graphic::RAW);
        throw std::runtime_error((culprit.empty() ? "" : "'" + culprit + "': ") + e.what());
    }
}

std::string colourText(const unsigned char* colour)
{
    return std::to_string(colour[RED]) + "," + std::to_string(colour[GREEN]) + "," + std::to_string(colour[BLUE]);
}

// Colours the game cannot tell apart count as one: it keeps six bits of each.
bool sameColour(const unsigned char* a, const unsigned char* b)
{
    for (const unsigned int c : {RED, GREEN, BLUE})
        if ((a[c] & DAC_BITS_MASK) != (b[c] & DAC_BITS_MASK))
            return false;
    return true;
}

// What is wrong with the colours of `picture` against `colours`, and what to
// do instead; empty when its painted colours are the entry's.
std::pair<std::string, std::string> colourProblem(const Picture& picture, const unsigned char* colours)
{
    std::array<bool, COLORS> painted{};
    for (const unsigned char index : picture.pixels)
        painted[index] = picture.palette[index * PIXEL_SIZE + ALPHA] == OPAQUE;
    const std::string instead = "-p ARCHIVE:INDEX maps it by colour";
    if (colours == nullptr) {
        if (std::find(painted.begin(), painted.end(), true) == painted.end())
            return {};
        return {", since the entry holds none without --flags palette", instead};
    }
    std::size_t differing = 0;
    unsigned int first = 0;
    for (unsigned int index = COLORS; index-- > 0;)
        if (painted[index] && !sameColour(&picture.palette[index * PIXEL_SIZE], colours + index * PIXEL_SIZE)) {
            ++differing;
            first = index;
        }
    if (differing == 0)
        return {};
    return {counted(differing, "colour") + " it paints " + (differing == 1 ? "is" : "are") +
                " not the entry's (index " + std::to_string(first) + " is " +
                colourText(&picture.palette[first * PIXEL_SIZE]) + " in it, " +
                colourText(colours + first * PIXEL_SIZE) + " in the entry)",
            instead};
}

} // namespace

GraphicSettings graphicSettings(std::size_t frames, const std::string& flags, unsigned int clearOnce,
                                unsigned int clearMod)
{
    if (frames > LARGEST_COUNT)
        throw std::runtime_error("a graphic holds at most 65535 frames");
    return {parseFlags(flags), narrow(clearOnce, "clearOnce"), narrow(clearMod, "clearMod")};
}

void requireFrameFits(const Picture& frame, const std::string& path, const Picture& first)
{
    if (frame.width > LARGEST_SIDE || frame.height > LARGEST_SIDE)
        throw std::runtime_error("'" + path + "' is larger than a graphic can be (65535 pixels a side)");
    if (frame.width != first.width || frame.height != first.height)
        throw otherFrameSize(path, frame.width, frame.height, "the first frame", first.width, first.height);
}

bool takenByIndices(const std::vector<Picture>& pictures, const unsigned char* palette)
{
    return palette == nullptr &&
           std::all_of(pictures.begin(), pictures.end(), [](const Picture& frame) { return frame.indexed; });
}

std::unique_ptr<Content> graphicOfPictures(const std::vector<Picture>& pictures, const std::vector<std::string>& paths,
                                           GraphicSettings settings, const unsigned char* palette, bool strict,
                                           Warnings& warnings)
{
    return takenByIndices(pictures, palette) ? fromIndices(pictures, paths, settings, strict, warnings)
                                             : fromColours(pictures, paths, settings, palette, strict, warnings);
}

const unsigned char* ownColours(const std::vector<Picture>& pictures, GraphicSettings settings)
{
    return (settings.flags & Graphic::PALETTE) ? pictures.front().palette.data() : nullptr;
}

void sayColours(const std::vector<Picture>& pictures, const std::vector<std::string>& paths,
                const unsigned char* colours, bool strict, Warnings& warnings)
{
    for (std::size_t f = 0; f < pictures.size(); ++f) {
        const auto [problem, instead] = colourProblem(pictures[f], colours);
        if (problem.empty())
            continue;
        const std::string file = "'" + paths[f] + "': ";
        if (strict)
            throw std::runtime_error(file + (colours == nullptr ? "its colours would not be stored" : "") + problem +
                                     "; " + instead + " instead");
        warnings.warn(file + (colours == nullptr ? "its colours are not stored" : "") + problem +
                      "; it is imported by its indices" + (colours == nullptr ? "" : ", its colours not stored") +
                      " (" + instead + ")");
    }
}

} // namespace lbxtool
