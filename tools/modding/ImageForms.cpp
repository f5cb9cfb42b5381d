#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "tools/modding/FormKinds.h"
#include "tools/modding/GraphicFlags.h"
#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Names.h"
#include "tools/modding/PaletteFile.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/Png.h"
#include "tools/modding/Shapes.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace lbxtool {
namespace forms {

namespace {

using Palette = Content::Palette;

constexpr unsigned int LARGEST_COUNT = std::numeric_limits<unsigned short>::max();
constexpr unsigned int LARGEST_SETTING = std::numeric_limits<unsigned char>::max();

// Frames as 8-bit indexed PNGs in the colours of `shown`, unpainted
// pixels at index `clear`, and their sheet as a view: the index unpainted
// pixels took, if any.
int addFrames(EntryForm& form, const UnpackPlace& place, const std::vector<Indices>& frames, unsigned int width,
              unsigned int height, const unsigned char* shown, int clear)
{
    std::vector<std::string> names;
    for (unsigned int f = 0; f < frames.size(); ++f)
        names.push_back(frameFileName(place.stem, place.index, f));
    const std::string sheetName = sheetFileName(place.stem, place.index);
    FramePngs made = framePngs(frames, width, height, shown, clear, names, sheetName);
    for (unsigned int f = 0; f < frames.size(); ++f) {
        form.files[names[f]] = std::move(made.frames[f]);
        form.pictures[names[f]] = std::move(made.pictures[f]);
        form.manifest[key::FRAMES].push_back(names[f]);
    }
    if (!made.sheet.empty())
        form.views[sheetName] = std::move(made.sheet);
    return made.transparent;
}

// `count` colours of `palette` from `first` on, as the entry's palette file.
void addPalette(EntryForm& form, const UnpackPlace& place, const unsigned char* palette, unsigned int first,
                unsigned int count)
{
    const std::string name = entryFileName(place.stem, place.index, ".pal");
    form.manifest[key::PALETTE] = name;
    form.files[name] = paletteFile(palette, first, count);
}

// The picture file `name` holds: as it was made, when it was made here.
Picture pictureOf(const std::string& name, const PackPlace& place)
{
    if (place.made != nullptr) {
        const auto made = place.made->find(name);
        if (made != place.made->end())
            return std::move(place.made->extract(made).mapped());
    }
    return readPicture(place.read(name), place.pathOf(name));
}

// The frames the manifest names, as indices, all of the first one's size.
// Pixels stored transparent though the file shows them otherwise are said,
// or with strict rules refused; a raw graphic has no transparent pixel.
std::vector<Indices> framesFrom(const Json& manifest, const PackPlace& place, const Lookup& lookup, bool raw,
                                unsigned int& width, unsigned int& height)
{
    const std::vector<std::string> names = fileNames(manifest, key::FRAMES, place.manifest);
    if (names.size() > LARGEST_COUNT)
        throw place.manifest.problem("more than 65535 frames");
    std::vector<Indices> frames;
    for (unsigned int f = 0; f < names.size(); ++f) {
        const std::string path = place.pathOf(names[f]);
        const Picture picture = pictureOf(names[f], place);
        if (f == 0) {
            width = picture.width;
            height = picture.height;
        } else if (picture.width != width || picture.height != height) {
            throw otherFrameSize(path, picture.width, picture.height, "the entry's first frame", width, height);
        }
        PictureIndices read = indicesOfPicture(picture, lookup, path, f);
        if (raw)
            requirePainted(static_cast<std::size_t>(std::count(read.indices.begin(), read.indices.end(), CLEAR)), path);
        else
            sayTransparency(read, lookup.transparent, path, place.rules.strict, place.warnings);
        frames.push_back(std::move(read.indices));
    }
    return frames;
}

std::vector<unsigned char> paletteFrom(const Json& manifest, const PackPlace& place, unsigned int colours)
{
    const std::string name = fileName(manifest, key::PALETTE, place.manifest);
    std::vector<unsigned char> palette = readPaletteFile(place.read(name), place.pathOf(name));
    if (palette.size() != std::size_t(colours) * PIXEL_SIZE)
        throw std::runtime_error("'" + place.pathOf(name) + "' holds " + std::to_string(palette.size() / PIXEL_SIZE) +
                                 " colours; the entry's palette holds " + std::to_string(colours));
    return palette;
}

} // namespace

EntryForm graphic(Content::Graphic* graphic, const UnpackPlace& place)
{
    const unsigned int width = graphic->width(), height = graphic->height(), count = graphic->frames();
    if (count > 0 && std::size_t(width) * height == 0)
        throw std::runtime_error("its frames hold no pixels");
    const unsigned int palOffset = graphic->hasPalette() ? graphic->paletteOffset() : 0;
    const unsigned int palSize = graphic->hasPalette() ? graphic->paletteSize() : 0;
    if (palOffset + palSize > COLORS)
        throw std::runtime_error("its palette block runs past colour 255");
    PaletteArray beneath = place.palettes.forGraphic(place.index, graphic, false);
    PaletteArray shown = copyOfPalette(beneath.get());
    if (graphic->hasPalette())
        graphic->palette(shown.get());

    const std::vector<Indices> frames = storedIndices(graphic);

    EntryForm form;
    Json& manifest = form.manifest;
    manifest[key::KIND] = kind::GRAPHIC;
    manifest[key::WIDTH] = width;
    manifest[key::HEIGHT] = height;
    manifest[key::CLEAR_ONCE] = graphic->clearOnce();
    manifest[key::CLEAR_MOD] = graphic->clearMod();
    manifest[key::FLAGS] = flagText(graphic);
    manifest[key::FRAMES] = Json::array();
    const int transparent = addFrames(form, place, frames, width, height, shown.get(), CHOOSE_CLEAR);
    if (graphic->hasPalette()) {
        addPalette(form, place, shown.get(), palOffset, palSize);
        manifest[key::PALETTE_OFFSET] = palOffset;
        manifest[key::PALETTE_SIZE] = palSize;
    }
    manifest[key::BENEATH] = hexColours(beneath.get());
    // An editor that drops the PNG's transparency leaves this index opaque:
    // pack still knows it, and says so.
    if (transparent != NO_INDEX)
        manifest[key::TRANSPARENT_INDEX] = static_cast<unsigned int>(transparent);
    return form;
}

std::unique_ptr<Content> graphicFrom(const Json& manifest, const PackPlace& place)
{
    const ManifestPlace& where = place.manifest;
    PaletteArray lookup(Palette::empty());
    readHexColours(text(manifest, key::BENEATH, where), lookup.get(), where);
    unsigned int palOffset = 0, palSize = 0;
    if (manifest.contains(key::PALETTE)) {
        palOffset = number(manifest, key::PALETTE_OFFSET, COLORS - 1, where);
        palSize = number(manifest, key::PALETTE_SIZE, COLORS - palOffset, where);
        const std::vector<unsigned char> block = paletteFrom(manifest, place, palSize);
        std::copy(block.begin(), block.end(), lookup.get() + palOffset * PIXEL_SIZE);
    }
    unsigned int width = number(manifest, key::WIDTH, LARGEST_SIDE, where);
    unsigned int height = number(manifest, key::HEIGHT, LARGEST_SIDE, where);
    const unsigned char clearOnce = static_cast<unsigned char>(number(manifest, key::CLEAR_ONCE, LARGEST_SETTING, where));
    const unsigned char clearMod = static_cast<unsigned char>(number(manifest, key::CLEAR_MOD, LARGEST_SETTING, where));
    unsigned short flags = 0;
    try {
        flags = parseFlags(text(manifest, key::FLAGS, where));
    } catch (const std::runtime_error& e) {
        throw where.problem(e.what());
    }
    int transparent = NO_INDEX;
    if (manifest.contains(key::TRANSPARENT_INDEX))
        transparent = static_cast<int>(number(manifest, key::TRANSPARENT_INDEX, COLORS - 1, where));
    const std::vector<Indices> frames =
        framesFrom(manifest, place, {lookup.get(), 0, place.rules.nearest, transparent},
                   (flags & Content::Graphic::RAW) != 0, width, height);
    if (width > LARGEST_SIDE || height > LARGEST_SIDE)
        throw where.problem("a graphic is at most 65535 pixels a side");
    return created(place, [&] {
        return graphicOfIndices(frames, static_cast<unsigned short>(width), static_cast<unsigned short>(height),
                                clearOnce, clearMod, lookup.get(), static_cast<unsigned short>(palOffset),
                                static_cast<unsigned short>(palSize), flags);
    });
}

EntryForm cursor(Content::Cursor* cursor, const UnpackPlace& place)
{
    PaletteArray own = copyOfPalette(cursor->palette());
    const std::vector<Indices> frames = storedIndices(cursor);
    EntryForm form;
    form.manifest[key::KIND] = kind::CURSOR;
    form.manifest[key::FRAMES] = Json::array();
    addFrames(form, place, frames, CURSOR_SIDE, CURSOR_SIDE, own.get(), CURSOR_CLEAR);
    addPalette(form, place, own.get(), 0, COLORS);
    return form;
}

std::unique_ptr<Content> cursorFrom(const Json& manifest, const PackPlace& place)
{
    std::vector<unsigned char> palette = paletteFrom(manifest, place, COLORS);
    unsigned int width = 0, height = 0;
    // Its transparent index stays unpainted, opaque in the file or not.
    std::vector<Indices> frames = framesFrom(
        manifest, place, {palette.data(), CURSOR_CLEAR + 1, place.rules.nearest, CURSOR_CLEAR}, false, width, height);
    if (frames.size() != CURSOR_FRAMES)
        throw place.manifest.problem("a cursor has 20 frames, 'frames' names " + std::to_string(frames.size()));
    if (width != CURSOR_SIDE || height != CURSOR_SIDE)
        throw std::runtime_error("'" + place.pathOf(manifest[key::FRAMES][0].get<std::string>()) + "' is " +
                                 std::to_string(width) + "x" + std::to_string(height) +
                                 "; a cursor's frames are 24x24");
    return created(place, [&] { return cursorOfIndices(frames, palette.data()); });
}

} // namespace forms
} // namespace lbxtool
