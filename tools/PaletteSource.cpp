#include "tools/PaletteSource.h"

#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "knowledge/Magic.h"
#include "tools/Inputs.h"
#include "tools/Paths.h"
#include "tools/Pictures.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace lbxtool {

namespace {

using Palette = Content::Palette;

} // namespace

void paintPalette(Content* entry, const std::string& name, unsigned char* palette)
{
    if (entry->type() == Content::CURSOR) {
        const unsigned char* own = entry->cursor()->palette();
        std::copy(own, own + PALETTE_BYTES, palette);
    } else if (entry->type() == Content::GRAPHIC && entry->graphic()->hasPalette()) {
        entry->graphic()->palette(palette);
    } else {
        throw std::runtime_error(name + " holds no palette (it is " + entry->typeStr() + ")");
    }
}

PaletteSource::PaletteSource(File& archive, const std::string& explicitSource)
    : archive(archive),
      folder(std::filesystem::path(archive.path()).parent_path().string()),
      row(catalogueRow(archive.path()))
{
    if (!explicitSource.empty())
        explicitPalette = read(explicitSource);
}

PaletteArray PaletteSource::read(const std::string& reference)
{
    const EntryRef source = parseEntryRef(reference);
    std::unique_ptr<Content> entry = readEntry(source.archive, source.index);
    PaletteArray palette(Palette::empty());
    paintPalette(entry.get(), entryName(source.archive, source.index), palette.get());
    return palette;
}

PaletteArray PaletteSource::forGraphic(unsigned int index, bool ownBlock)
{
    PaletteArray palette(Palette::empty());
    Content::Graphic* graphic = archive.at(index)->graphic();
    const std::string name = entryName(archive.path(), index);
    bool found = false;
    if (explicitPalette) {
        std::copy(explicitPalette.get(), explicitPalette.get() + PALETTE_BYTES, palette.get());
        found = true;
    } else if (row != File::LBX_UNKNOWN) {
        File::LBX_FILE sourceRow;
        unsigned int sourceIndex;
        // Beneath: the entry of FONTS that the game loads first.
        if (zorv2::Lbx::Magic::palInt(row, index, &sourceRow, &sourceIndex))
            found = paintFrom(sourceRow, sourceIndex, palette.get());
        // Over it: an entry of the archive itself; when that is the graphic,
        // its own block below is the source.
        if (zorv2::Lbx::Magic::palExt(row, index, &sourceRow, &sourceIndex)) {
            if (sourceRow == row && sourceIndex == index)
                found = found || graphic->hasPalette();
            else
                found = paintFrom(sourceRow, sourceIndex, palette.get()) || found;
        }
    }
    if (ownBlock && graphic->hasPalette()) {
        try {
            graphic->palette(palette.get());
        } catch (const std::exception& e) {
            warn(name + ": " + e.what());
        }
    }
    if (!found)
        warn("no palette source for " + name + "; using black with the colours it holds itself");
    return palette;
}

bool PaletteSource::paintFrom(File::LBX_FILE sourceRow, unsigned int sourceIndex, unsigned char* palette)
{
    File* source = sourceArchive(sourceRow);
    if (source == nullptr)
        return false;
    const std::string name = entryName(source->path(), sourceIndex);
    try {
        paintPalette(source->at(sourceIndex), name, palette);
        return true;
    } catch (const std::exception& e) {
        warn("palette source " + name + ": " + e.what());
        return false;
    }
}

File* PaletteSource::sourceArchive(File::LBX_FILE sourceRow)
{
    if (sourceRow == row)
        return &archive;
    const auto known = opened.find(sourceRow);
    if (known != opened.end())
        return known->second.get();
    std::unique_ptr<File>& slot = opened[sourceRow];
    const std::string name = File::LBX_FILE_NAME(sourceRow);
    const std::string path = findArchive(folder, name);
    if (path.empty()) {
        warn("palette source " + name + ".LBX not found beside " + archive.path());
        return nullptr;
    }
    // A source is read like the archive itself, and no less protected.
    protectInputs({path});
    try {
        slot = openArchive(path);
    } catch (const std::exception& e) {
        warn(std::string("palette source: ") + e.what());
    }
    return slot.get();
}

} // namespace lbxtool
