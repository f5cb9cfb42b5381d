#include "tools/modding/PaletteSource.h"

#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "knowledge/Magic.h"
#include "tools/modding/Names.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>

namespace lbxtool {

namespace {

using Palette = Content::Palette;
using zorv2::Lbx::Magic;

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

PaletteSource::PaletteSource(File& archive, const PaletteLookup& lookup, Files& files, Warnings& warnings)
    : PaletteSource(archive, archive.path(), lookup, files, warnings)
{
}

PaletteSource::PaletteSource(File& archive, const std::string& path, const PaletteLookup& lookup, Files& files,
                             Warnings& warnings)
    : PaletteSource(ArchiveReader{path, archive.size(),
                                  [&archive](unsigned int index) {
                                      // the library's message for an index out of range
                                      return std::make_unique<Content>(*archive.at(index));
                                  }},
                    lookup, files, warnings)
{
}

PaletteSource::PaletteSource(ArchiveReader reader, const PaletteLookup& lookup, Files& files, Warnings& warnings)
    : archive(std::move(reader)),
      files(files),
      warnings(warnings),
      folder(lookup.folder.empty() ? std::filesystem::path(archive.path).parent_path().string() : lookup.folder),
      naming(lookup.naming),
      row(catalogueRow(archive.path))
{
    if (!lookup.entry.empty())
        explicitPalette = read(lookup.entry, files);
}

PaletteArray PaletteSource::read(const std::string& reference, Files& files)
{
    const EntryRef source = parseEntryRef(reference);
    std::unique_ptr<Content> entry = files.readEntry(source.archive, source.index);
    PaletteArray palette(Palette::empty());
    paintPalette(entry.get(), entryName(source.archive, source.index), palette.get());
    return palette;
}

std::vector<std::string> PaletteSource::sourcePaths()
{
    std::vector<std::string> paths;
    if (explicitPalette || row == File::LBX_UNKNOWN)
        return paths;
    std::set<File::LBX_FILE> rows;
    for (unsigned int index = 0; index < archive.size; ++index) {
        File::LBX_FILE sourceRow;
        unsigned int sourceIndex;
        if (Magic::palInt(row, index, &sourceRow, &sourceIndex))
            rows.insert(sourceRow);
        if (Magic::palExt(row, index, &sourceRow, &sourceIndex))
            rows.insert(sourceRow);
    }
    rows.erase(row);
    for (const File::LBX_FILE sourceRow : rows) {
        const std::string path = findArchive(files, folder, File::LBX_FILE_NAME(sourceRow));
        if (!path.empty())
            paths.push_back(path);
    }
    return paths;
}

PaletteArray PaletteSource::forGraphic(unsigned int index, bool ownBlock)
{
    const std::unique_ptr<Content> entry = archive.read(index);
    return forGraphic(index, entry->graphic(), ownBlock);
}

PaletteArray PaletteSource::forGraphic(unsigned int index, Content::Graphic* graphic, bool ownBlock)
{
    const std::lock_guard<std::mutex> inTurn(turn);
    PaletteArray palette(Palette::empty());
    const std::string name = entryName(archive.path, index);
    bool found = false, missing = false;
    if (explicitPalette) {
        std::copy(explicitPalette.get(), explicitPalette.get() + PALETTE_BYTES, palette.get());
        found = true;
    } else if (row != File::LBX_UNKNOWN) {
        File::LBX_FILE sourceRow;
        unsigned int sourceIndex;
        // Beneath: the entry of FONTS that the game loads first.
        if (Magic::palInt(row, index, &sourceRow, &sourceIndex))
            found = paintFrom(sourceRow, sourceIndex, palette.get(), missing);
        // Over it: an entry of the archive itself; when that is the graphic,
        // its own block below is the source.
        if (Magic::palExt(row, index, &sourceRow, &sourceIndex)) {
            if (sourceRow == row && sourceIndex == index)
                found = found || graphic->hasPalette();
            else
                found = paintFrom(sourceRow, sourceIndex, palette.get(), missing) || found;
        }
    }
    if (ownBlock && graphic->hasPalette()) {
        try {
            graphic->palette(palette.get());
        } catch (const std::exception& e) {
            warnings.warn(name + ": " + e.what());
        }
    }
    // A source that is not found was said for the whole archive already.
    if (!found && row == File::LBX_UNKNOWN)
        warnings.warn("no palette source for the graphics of " + archive.path +
                      ", which is not in the game's catalogue; they show in black with the colours they hold "
                      "themselves");
    else if (!found && !missing)
        warnings.warn("no palette source for " + name + "; using black with the colours it holds itself");
    return palette;
}

bool PaletteSource::paintFrom(File::LBX_FILE sourceRow, unsigned int sourceIndex, unsigned char* palette,
                              bool& missing)
{
    const bool own = sourceRow == row;
    File* source = own ? nullptr : sourceArchive(sourceRow, missing);
    if (!own && source == nullptr)
        return false;
    const std::string name = entryName(own ? archive.path : source->path(), sourceIndex);
    try {
        // The library's message for an index out of range.
        paintPalette(own ? ownEntry(sourceIndex) : source->at(sourceIndex), name, palette);
        return true;
    } catch (const std::exception& e) {
        const std::string what = e.what();
        warnings.warn("palette source " + (what.rfind(name, 0) == 0 ? what : name + ": " + what));
        return false;
    }
}

PaletteSource::Source PaletteSource::openSource(File::LBX_FILE sourceRow)
{
    Source source;
    const std::string name = File::LBX_FILE_NAME(sourceRow);
    const std::string path = findArchive(files, folder, name);
    if (path.empty()) {
        source.missing = true;
        source.problem = "palette source " + name + ".LBX not found " +
                         (folder == std::filesystem::path(archive.path).parent_path().string()
                              ? "beside " + archive.path
                              : "in '" + folder + "'") +
                         "; graphics that need it show in black with the colours they hold themselves" +
                         (naming.empty() ? "" : " (" + naming + ")");
        return source;
    }
    try {
        source.archive = files.openArchive(path);
    } catch (const std::exception& e) {
        source.problem = std::string("palette source: ") + e.what();
    }
    return source;
}

File* PaletteSource::sourceArchive(File::LBX_FILE sourceRow, bool& missing)
{
    const auto [known, added] = opened.try_emplace(sourceRow);
    if (added)
        known->second = openSource(sourceRow);
    // Said each time: which entry needs the source first depends on the
    // order the entries are worked on, and a warning is printed once.
    if (!known->second.archive)
        warnings.warn(known->second.problem);
    missing = missing || known->second.missing;
    return known->second.archive.get();
}

// Other workers work on the entries of this archive at the same time, and
// reading a palette may change an entry (a cursor builds its own on first
// use): the source reads copies of its own.
Content* PaletteSource::ownEntry(unsigned int index)
{
    std::unique_ptr<Content>& copy = copies[index];
    if (!copy)
        copy = archive.read(index);
    return copy.get();
}

} // namespace lbxtool
