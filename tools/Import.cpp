#include "tools/Import.h"

#include "images/Graphic.h"
#include "images/Palette.h"
#include "tools/PaletteSource.h"
#include "tools/Png.h"
#include "tools/IndexedFrames.h"
#include "tools/Inputs.h"
#include "tools/Paths.h"
#include "tools/Pictures.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"
#include "tools/Store.h"

#include <cctype>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace lbxtool {

namespace {

using Graphic = Content::Graphic;
using Palette = Content::Palette;

constexpr unsigned int LARGEST_SIDE = std::numeric_limits<unsigned short>::max();

const struct {
    const char* name;
    Graphic::FLAG flag;
} FLAG_NAMES[] = {
    {"raw", Graphic::RAW},         {"clear", Graphic::CLEAR}, {"shadows", Graphic::SHADOWS},
    {"palette", Graphic::PALETTE}, {"loop", Graphic::LOOP},
};

std::vector<Picture> loadFrames(const std::vector<std::string>& paths)
{
    std::vector<Picture> frames;
    for (const std::string& path : paths) {
        frames.push_back(readPicture(readBytes(path), path));
        const Picture& first = frames.front();
        const Picture& frame = frames.back();
        if (frame.width > LARGEST_SIDE || frame.height > LARGEST_SIDE)
            throw std::runtime_error("'" + path + "' is larger than a graphic can be (65535 pixels a side)");
        if (frame.width != first.width || frame.height != first.height)
            throw std::runtime_error("'" + path + "' is " + std::to_string(frame.width) + "x" +
                                     std::to_string(frame.height) + ", the first frame " + std::to_string(first.width) +
                                     "x" + std::to_string(first.height));
    }
    return frames;
}

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

} // namespace

std::string flagText(Graphic* graphic)
{
    std::string names;
    for (const auto& entry : FLAG_NAMES)
        if (graphic->hasFlag(entry.flag))
            names += (names.empty() ? "" : ",") + std::string(entry.name);
    return names;
}

unsigned short parseFlags(const std::string& text)
{
    if (text.empty())
        return 0;
    if (std::isdigit(static_cast<unsigned char>(text.front()))) {
        std::size_t used = 0;
        unsigned long value = 0;
        try {
            value = std::stoul(text, &used, 0);
        } catch (const std::exception&) {
        }
        if (used != text.size() || value > std::numeric_limits<unsigned short>::max())
            throw std::runtime_error("'" + text + "' is no flag word");
        return static_cast<unsigned short>(value);
    }
    unsigned short flags = 0;
    std::istringstream names(text);
    for (std::string name; std::getline(names, name, ',');) {
        bool known = false;
        for (const auto& entry : FLAG_NAMES)
            if (name == entry.name) {
                flags |= entry.flag;
                known = true;
            }
        if (!known)
            throw std::runtime_error("unknown flag '" + name + "' (known: raw, clear, shadows, palette, loop)");
    }
    return flags;
}

namespace {

// Without an index OUT is a file of one entry: an archive there was meant
// to be changed with -i, and any other file is replaced only when forced.
void checkEntryTarget(const ImportOptions& options)
{
    std::vector<std::string> inputs = options.images;
    if (!options.palette.empty())
        inputs.push_back(parseEntryRef(options.palette).archive);
    protectInputs(inputs);
    if (std::filesystem::is_regular_file(options.target) && File::check(options.target))
        throw std::runtime_error("'" + options.target + "' is an archive; -i INDEX stores into it");
    checkTarget(options.target, options.force ? Existing::Replace : Existing::Refuse);
}


// Indexed PNGs hold the very indices to store (unpack writes them so): no
// colour is looked up. A palette block, when asked for, is the first
// picture's whole palette.
std::unique_ptr<Content> fromIndices(const std::vector<Picture>& pictures, const ImportOptions& options,
                                     unsigned short flags, unsigned char clearOnce, unsigned char clearMod)
{
    std::vector<Indices> frames;
    for (std::size_t f = 0; f < pictures.size(); ++f)
        frames.push_back(indicesOfPicture(pictures[f], {nullptr, 0, false}, options.images[f],
                                          static_cast<unsigned int>(f)));
    std::vector<unsigned char> palette = pictures.front().palette;
    return std::unique_ptr<Content>(graphicOfIndices(
        frames, static_cast<unsigned short>(pictures.front().width), static_cast<unsigned short>(pictures.front().height),
        clearOnce, clearMod, palette.data(), 0, (flags & Graphic::PALETTE) ? COLORS : 0, flags));
}

std::unique_ptr<Content> fromColours(const std::vector<Picture>& pictures, const ImportOptions& options,
                                     unsigned short flags, unsigned char clearOnce, unsigned char clearMod)
{
    std::vector<Image> frames;
    for (const Picture& picture : pictures)
        frames.push_back({picture.width, picture.height, rgbaOf(picture)});
    // A palette built from the images exists nowhere else, so the entry
    // carries it; one from a named source is stored only when asked for.
    PaletteArray palette;
    unsigned short paletteSize = COLORS;
    if (options.palette.empty()) {
        palette = paletteFromImages(frames, options.images);
        paletteSize = coloursFilled(palette.get());
        flags |= Graphic::PALETTE;
    } else {
        palette = PaletteSource::read(options.palette);
    }

    std::vector<unsigned char*> pixels = pixelsOf(frames);
    try {
        return std::unique_ptr<Content>(Graphic::create(
            pixels.data(), palette.get(), static_cast<unsigned short>(frames.front().width),
            static_cast<unsigned short>(frames.front().height), static_cast<unsigned short>(frames.size()), clearOnce,
            clearMod, 0, paletteSize, flags));
    } catch (const std::exception& e) {
        const std::string culprit = imageLacking(frames, options.images, palette.get(), flags & Graphic::RAW);
        throw std::runtime_error((culprit.empty() ? "" : "'" + culprit + "': ") + e.what());
    }
}

} // namespace

int importGraphic(const ImportOptions& options)
{
    if (options.images.empty())
        throw std::runtime_error("no images given");
    if (options.index)
        protectInputs(options.images);
    else
        checkEntryTarget(options);
    const std::vector<Picture> frames = loadFrames(options.images);
    if (frames.size() > std::numeric_limits<unsigned short>::max())
        throw std::runtime_error("a graphic holds at most 65535 frames");
    const unsigned short flags = parseFlags(options.flags);
    const unsigned char clearOnce = narrow(options.clearOnce, "clearOnce");
    const unsigned char clearMod = narrow(options.clearMod, "clearMod");
    const bool indexed =
        std::all_of(frames.begin(), frames.end(), [](const Picture& frame) { return frame.indexed; });
    std::unique_ptr<Content> entry = indexed && options.palette.empty()
                                         ? fromIndices(frames, options, flags, clearOnce, clearMod)
                                         : fromColours(frames, options, flags, clearOnce, clearMod);

    if (options.index) {
        storeEntry(options.target, *options.index, std::move(entry), options.strict);
        std::cout << "stored " << frames.size() << " frames as " << entryName(options.target, *options.index) << '\n';
    } else {
        writeBytes(options.target, std::string(entry->data(), entry->size()),
                   options.force ? Existing::Replace : Existing::Refuse);
        std::cout << "wrote " << frames.size() << " frames to " << options.target << '\n';
    }
    return EXIT_DONE;
}

} // namespace lbxtool
