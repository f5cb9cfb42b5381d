#include "tools/Export.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tools/Gallery.h"
#include "tools/PaletteSource.h"
#include "tools/Png.h"
#include "tools/Support.h"
#include "tools/TextEscape.h"

#include <filesystem>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

constexpr unsigned int SWATCH_SIDE = 16;
constexpr unsigned int PREVIEW_LINES = 24;

// Lends a palette to a graphic while its frames are decoded; the graphic
// must not go on pointing at it once the palette is gone.
class LentPalette {
public:
    LentPalette(Content::Graphic* graphic, unsigned char* palette) : graphic(graphic) { graphic->setPalette(palette); }
    ~LentPalette() { graphic->setPalette(nullptr); }
    LentPalette(const LentPalette&) = delete;
    LentPalette& operator=(const LentPalette&) = delete;

private:
    Content::Graphic* graphic;
};

// Writes the files of one entry and tells the gallery about them.
class EntryExporter {
public:
    EntryExporter(const ExportOptions& options, File& archive, PaletteSource& palettes)
        : folder(options.folder), stem(safeStem(options.archive)), archive(archive), palettes(palettes)
    {
    }

    GalleryEntry run(unsigned int index)
    {
        Content* entry = archive.at(index);
        GalleryEntry shown;
        shown.name = entryName(archive.path(), index);
        shown.info = entry->info();
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
        if (graphic->frames() == 0) {
            swatch(index, palette.get(), shown);
            return;
        }
        if (graphic->width() == 0 || graphic->height() == 0)
            return; // frames without pixels make no picture
        const LentPalette lent(graphic, palette.get());
        std::vector<const unsigned char*> decoded;
        for (unsigned int f = 0; f < graphic->frames(); ++f)
            decoded.push_back(graphic->frame(f));
        frames(index, decoded, graphic->width(), graphic->height(), shown);
    }

    // A graphic of no frames holds only colours: shown as 16 × 16 squares.
    void swatch(unsigned int index, unsigned char* palette, GalleryEntry& shown)
    {
        shown.frames.push_back(png(entryFileName(stem, index, "_palette.png"), palette, SWATCH_SIDE, SWATCH_SIDE));
    }

    void cursor(unsigned int index, Content::Cursor* cursor, GalleryEntry& shown)
    {
        std::vector<const unsigned char*> decoded;
        for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
            decoded.push_back(cursor->get(f));
        frames(index, decoded, CURSOR_SIDE, CURSOR_SIDE, shown);
    }

    // One string a line, escaped so that any byte survives the way back and
    // the file, like the gallery's preview, is plain text.
    void text(unsigned int index, Content::Text* table, GalleryEntry& shown)
    {
        std::string lines, preview;
        for (unsigned int i = 0; i < table->size(); ++i) {
            lines += escapeText(table->get(i)) + '\n';
            if (i + 1 == PREVIEW_LINES)
                preview = lines + "...";
        }
        shown.preview = table->size() > PREVIEW_LINES ? preview : lines;
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
    }

    void sound(unsigned int index, Content* entry, GalleryEntry& shown)
    {
        shown.file = entryFileName(stem, index, entrySuffix(entry));
        entry->write(pathOf(shown.file));
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

int exportEntries(const ExportOptions& options)
{
    requireRegularFile(options.archive);
    File archive(options.archive);
    const std::vector<unsigned int> indices = selectIndices(archive, options.indices);
    makeFolder(options.folder);
    PaletteSource palettes(archive, options.palette);
    EntryExporter exporter(options, archive, palettes);
    Gallery gallery(archive.path());
    int status = 0;
    for (unsigned int index : indices) {
        try {
            gallery.add(exporter.run(index));
        } catch (const std::exception& e) {
            reportError(entryName(archive.path(), index) + ": " + e.what());
            status = 1;
        }
    }
    std::cout << "exported " << exporter.written << " files from " << archive.path() << " to " << options.folder
              << '\n';
    if (options.html)
        std::cout << "gallery: " << gallery.write(options.folder, safeStem(options.archive)) << '\n';
    return status;
}

} // namespace lbxtool
