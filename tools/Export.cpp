#include "tools/Export.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tools/Gallery.h"
#include "tools/GlyphSheet.h"
#include "tools/PaletteSource.h"
#include "tools/Png.h"
#include "tools/Inputs.h"
#include "tools/Paths.h"
#include "tools/Pictures.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"
#include "tools/TextEscape.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

constexpr unsigned int SWATCH_SIDE = 16;

// Writes the files of one entry and tells the gallery about them.
class EntryExporter {
public:
    EntryExporter(const ExportOptions& options, const std::string& stem, File& archive, PaletteSource& palettes)
        : folder(options.folder), stem(stem), archive(archive), palettes(palettes)
    {
    }

    GalleryEntry run(unsigned int index)
    {
        Content* entry = archive.at(index);
        GalleryEntry shown = described(index);
        switch (entry->type()) {
        case Content::GRAPHIC: graphic(index, entry->graphic(), shown); break;
        case Content::CURSOR: cursor(index, entry->cursor(), shown); break;
        case Content::TEXT: text(index, entry->text(), shown); break;
        case Content::FONT: font(index, entry->font(), shown); break;
        case Content::SOUND: sound(index, entry, shown); break;
        default: break;
        }
        return shown;
    }

    // What the page says of an entry before anything of it is exported.
    GalleryEntry described(unsigned int index)
    {
        Content* entry = archive.at(index);
        GalleryEntry shown;
        shown.index = index;
        shown.name = entryName(archive.path(), index);
        shown.kind = entry->typeStr();
        shown.info = entry->info();
        return shown;
    }

    unsigned int written = 0;

private:
    std::string pathOf(const std::string& name) { return (fs::path(folder) / name).string(); }

    std::string png(const std::string& name, const unsigned char* rgba, unsigned int width, unsigned int height)
    {
        savePng(pathOf(name), rgba, width, height);
        ++written;
        return name;
    }

    // Frame numbers are padded like entry numbers, so that the frames of an
    // entry sort, and glob, in their order.
    std::string frameName(unsigned int index, unsigned int frame)
    {
        std::ostringstream name;
        name << '_' << std::setw(3) << std::setfill('0') << frame << ".png";
        return entryFileName(stem, index, name.str());
    }

    void frames(unsigned int index, const std::vector<const unsigned char*>& decoded, unsigned int width,
                unsigned int height, GalleryEntry& shown)
    {
        shown.width = width;
        shown.height = height;
        for (unsigned int f = 0; f < decoded.size(); ++f)
            shown.frames.push_back(png(frameName(index, f), decoded[f], width, height));
        if (decoded.size() > 1) {
            const Image sheet = spriteSheet(decoded, width, height);
            shown.sheet = png(entryFileName(stem, index, "_sheet.png"), sheet.rgba.data(), sheet.width, sheet.height);
        }
    }

    void graphic(unsigned int index, Content::Graphic* graphic, GalleryEntry& shown)
    {
        PaletteArray palette = palettes.forGraphic(index);
        if (graphic->hasPalette())
            shown.palette = block(graphic, palette.get());
        if (graphic->frames() == 0) {
            swatch(index, palette.get());
            return;
        }
        if (graphic->width() == 0 || graphic->height() == 0)
            return; // frames without pixels make no picture
        const LentPalette lent(graphic, palette.get());
        std::vector<const unsigned char*> decoded;
        for (unsigned int f = 0; f < graphic->frames(); ++f)
            decoded.push_back(graphic->frame(f));
        frames(index, decoded, graphic->width(), graphic->height(), shown);
        shown.loop = graphic->hasFlag(Content::Graphic::LOOP);
        for (unsigned int f = 1; f < graphic->frames(); ++f)
            shown.delta = shown.delta || !graphic->isClear(f);
    }

    // The colours of a graphic's own block, as they stand in its palette.
    static Swatch block(Content::Graphic* graphic, const unsigned char* palette)
    {
        const unsigned int first = std::min<unsigned int>(graphic->paletteOffset(), COLORS);
        const unsigned int end = std::min<unsigned int>(first + graphic->paletteSize(), COLORS);
        return {first, std::vector<unsigned char>(palette + first * PIXEL_SIZE, palette + end * PIXEL_SIZE)};
    }

    // A graphic of no frames holds only colours: saved as 16 × 16 squares.
    void swatch(unsigned int index, unsigned char* palette)
    {
        png(entryFileName(stem, index, "_palette.png"), palette, SWATCH_SIDE, SWATCH_SIDE);
    }

    void cursor(unsigned int index, Content::Cursor* cursor, GalleryEntry& shown)
    {
        std::vector<const unsigned char*> decoded;
        for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
            decoded.push_back(cursor->get(f));
        frames(index, decoded, CURSOR_SIDE, CURSOR_SIDE, shown);
        shown.loop = true; // the game cycles a cursor's frames for as long as it shows
        shown.palette = {0, std::vector<unsigned char>(cursor->palette(), cursor->palette() + PALETTE_BYTES)};
    }

    // One string a line, escaped so that any byte survives the way back and
    // the file, like the gallery's preview, is plain text.
    void text(unsigned int index, Content::Text* table, GalleryEntry& shown)
    {
        std::string lines;
        for (unsigned int i = 0; i < table->size(); ++i) {
            shown.rows.push_back(table->get(i));
            lines += escapeText(shown.rows.back()) + '\n';
        }
        shown.file = textFile(entryFileName(stem, index, ".txt"), lines);
    }

    void font(unsigned int index, Content::Font* font, GalleryEntry& shown)
    {
        std::string metrics = "# " + shown.name + ": height of each font, then the width of each of its glyphs\n";
        for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f) {
            metrics += "font " + std::to_string(f) + " height " + std::to_string(font->height(f)) + " widths";
            for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
                metrics += ' ' + std::to_string(font->width(f, g));
            metrics += '\n';
        }
        shown.file = textFile(entryFileName(stem, index, "_metrics.txt"), metrics);
        for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f)
            shown.fonts.push_back(face(index, font, f));
    }

    FontFace face(unsigned int index, Content::Font* font, unsigned int f)
    {
        FontFace face;
        face.height = font->height(f);
        for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
            face.widths.push_back(font->width(f, g));
        const Image sheet = glyphSheet(font, f);
        face.sheet = png(entryFileName(stem, index, "_font" + std::to_string(f) + ".png"), sheet.rgba.data(),
                         sheet.width, sheet.height);
        face.sheetWidth = sheet.width;
        face.sheetHeight = sheet.height;
        return face;
    }

    void sound(unsigned int index, Content* entry, GalleryEntry& shown)
    {
        shown.file = entryFileName(stem, index, entrySuffix(entry));
        writeBytes(pathOf(shown.file), std::string(entry->data(), entry->size()));
        shown.sound = true;
        ++written;
    }

    std::string textFile(const std::string& name, const std::string& text)
    {
        writeText(pathOf(name), text);
        ++written;
        return name;
    }

    std::string folder;
    std::string stem;
    File& archive;
    PaletteSource& palettes;
};

} // namespace

namespace {

int exportArchive(const ExportOptions& options, const std::string& path, const std::string& stem)
{
    std::unique_ptr<File> archive = openArchive(path);
    const std::vector<unsigned int> indices = selectIndices(*archive, options.indices);
    makeFolder(options.folder);
    PaletteSource palettes(*archive, options.palette);
    EntryExporter exporter(options, stem, *archive, palettes);
    Gallery gallery(path, stem);
    int status = EXIT_DONE;
    for (unsigned int index : indices) {
        try {
            gallery.add(exporter.run(index));
        } catch (const std::exception& e) {
            reportError(entryName(path, index) + ": " + e.what());
            GalleryEntry failed = exporter.described(index);
            failed.error = e.what();
            gallery.add(failed);
            status = EXIT_FAILED;
        }
    }
    std::cout << "exported " << exporter.written << " files from " << path << " to " << options.folder << " as "
              << stem << '\n';
    if (options.html)
        std::cout << "gallery: " << gallery.write(options.folder) << '\n';
    return status;
}

} // namespace

int exportEntries(const ExportOptions& options)
{
    protectInputs(options.archives);
    if (!options.palette.empty())
        protectInputs({parseEntryRef(options.palette).archive});
    StemNames stems;
    int status = EXIT_DONE;
    const int opened = forEachPath(options.archives, [&](const std::string& path) {
        status = std::max(status, exportArchive(options, path, stems.next(path)));
    });
    return std::max(status, opened);
}

} // namespace lbxtool
