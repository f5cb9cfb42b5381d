#include "tools/Export.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tools/ArchiveSteps.h"
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

// A file made and not yet written.
struct MadeFile {
    std::string name; // in the export folder
    std::string bytes;
};

// Makes the files of one entry, and what the gallery shows of it.
class EntryExporter {
public:
    EntryExporter(const std::string& folder, const std::string& stem, File& archive, PaletteSource& palettes)
        : folder(folder), stem(stem), archive(archive), palettes(palettes)
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

    // In the order they are to be written.
    std::vector<MadeFile> files;

private:
    std::string pathOf(const std::string& name) { return (fs::path(folder) / name).string(); }

    std::string png(const std::string& name, const unsigned char* rgba, unsigned int width, unsigned int height)
    {
        files.push_back({name, rgbaPng(rgba, width, height, pathOf(name))});
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
        shown.file = textFile(entryFileName(stem, index, entrySuffix(entry)), std::string(entry->data(), entry->size()));
        shown.sound = true;
    }

    std::string textFile(const std::string& name, std::string text)
    {
        files.push_back({name, std::move(text)});
        return name;
    }

    std::string folder;
    std::string stem;
    File& archive;
    PaletteSource& palettes;
};

// One entry exported, not yet written: its files, and what the gallery
// shows of it, or why it could not be exported.
struct ExportedEntry {
    std::vector<MadeFile> files;
    GalleryEntry described; // what the page says of an entry that failed
    GalleryEntry shown;
    std::string error;
};

// One archive being exported.
struct ExportedArchive {
    ExportedArchive(const std::string& path, const std::string& stem) : path(path), stem(stem), gallery(path, stem) {}

    std::string path;
    std::string stem;
    std::unique_ptr<File> archive;
    std::vector<unsigned int> indices;
    std::unique_ptr<PaletteSource> palettes;
    std::exception_ptr paletteFailure; // reported after the folder is made, as one thread does
    std::vector<ExportedEntry> entries;
    Gallery gallery;
    unsigned int written = 0;
};

// Exporting archives: each entry's files are made on the workers, and
// written in turn.
class Exporting : public ArchiveSteps<ExportedArchive> {
public:
    explicit Exporting(const ExportOptions& options) : options(options), stems(options.archives.size()) {}

    std::size_t plan(std::size_t a) override
    {
        stems[a] = names.next(options.archives[a]);
        return options.indices.empty() ? listedEntries(options.archives[a]) : options.indices.size();
    }

    std::unique_ptr<ExportedArchive> open(std::size_t a, std::size_t entries) override
    {
        auto opened = std::make_unique<ExportedArchive>(options.archives[a], stems[a]);
        opened->archive = openArchive(opened->path);
        opened->indices = selectIndices(*opened->archive, options.indices);
        if (options.indices.empty())
            requireEntries(*opened->archive, entries);
        try {
            opened->palettes = std::make_unique<PaletteSource>(*opened->archive, options.palette);
        } catch (...) {
            opened->paletteFailure = std::current_exception();
        }
        opened->entries.resize(entries);
        return opened;
    }

    void begin(ExportedArchive& opened) override
    {
        makeFolder(options.folder);
        if (opened.paletteFailure)
            std::rethrow_exception(opened.paletteFailure);
        opened.palettes->protectSources();
    }

    void work(ExportedArchive& opened, std::size_t k) override
    {
        if (!opened.palettes)
            return;
        ExportedEntry& done = opened.entries[k];
        EntryExporter exporter(options.folder, opened.stem, *opened.archive, *opened.palettes);
        done.described = exporter.described(opened.indices[k]);
        try {
            done.shown = exporter.run(opened.indices[k]);
        } catch (const std::exception& e) {
            done.error = e.what();
        }
        done.files = std::move(exporter.files);
    }

    // A file that cannot be written ends the entry there, as a failure to
    // make it would have.
    void deliver(ExportedArchive& opened, std::size_t k) override
    {
        ExportedEntry done = std::move(opened.entries[k]);
        try {
            for (const MadeFile& file : done.files) {
                writeBytes((fs::path(options.folder) / file.name).string(), file.bytes);
                ++opened.written;
            }
        } catch (const std::exception& e) {
            done.error = e.what();
        }
        if (done.error.empty()) {
            opened.gallery.add(std::move(done.shown));
            return;
        }
        reportError(entryName(opened.path, opened.indices[k]) + ": " + done.error);
        done.described.error = done.error;
        opened.gallery.add(std::move(done.described));
        status = EXIT_FAILED;
    }

    void finish(ExportedArchive& opened) override
    {
        std::cout << "exported " << opened.written << " files from " << opened.path << " to " << options.folder
                  << " as " << opened.stem << '\n';
        if (options.html)
            std::cout << "gallery: " << opened.gallery.write(options.folder) << '\n';
    }

    int status = EXIT_DONE; // of the entries

private:
    const ExportOptions& options;
    StemNames names;
    std::vector<std::string> stems;
};

} // namespace

int exportEntries(const ExportOptions& options)
{
    protectInputs(options.archives);
    if (!options.palette.empty())
        protectInputs({parseEntryRef(options.palette).archive});
    Exporting exporting(options);
    const int opened = forEachArchive(options.jobs, options.archives, exporting);
    return std::max(exporting.status, opened);
}

} // namespace lbxtool
