#include "tools/modding/Export.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "tools/modding/Names.h"
#include "tools/modding/Png.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Sheets.h"
#include "tools/modding/TextEscape.h"

#include <filesystem>

namespace lbxtool {

namespace {

constexpr unsigned int SWATCH_SIDE = 16;

// Makes the files of one entry, in the order they are to be written.
class EntryExporter {
public:
    EntryExporter(const std::string& stem, const std::string& folder, unsigned int index,
                  std::vector<MadeFile>& files)
        : stem(stem), folder(folder), index(index), files(files)
    {
    }

    void graphic(Content::Graphic* graphic, unsigned char* palette, const EntryView& view)
    {
        if (graphic->frames() == 0) {
            // A graphic of no frames holds only colours: saved as 16 × 16 squares.
            png(entryFileName(stem, index, "_palette.png"), palette, SWATCH_SIDE, SWATCH_SIDE);
            return;
        }
        if (view.frames == 0)
            return; // frames without pixels make no picture
        const LentPalette lent(graphic, palette);
        std::vector<const unsigned char*> decoded;
        for (unsigned int f = 0; f < graphic->frames(); ++f)
            decoded.push_back(graphic->frame(f));
        frames(decoded, view.width, view.height);
    }

    void cursor(Content::Cursor* cursor)
    {
        std::vector<const unsigned char*> decoded;
        for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
            decoded.push_back(cursor->get(f));
        frames(decoded, CURSOR_SIDE, CURSOR_SIDE);
    }

    // One string a line, escaped so that any byte survives the way back and
    // the file, like the gallery's preview, is plain text.
    void text(const EntryView& view) { names.file = made(textFileName(stem, index), escapedLines(view.rows)); }

    void font(Content::Font* font, const EntryView& view)
    {
        std::string metrics = "# " + view.name + ": height of each font, then the width of each of its glyphs\n";
        for (unsigned int f = 0; f < view.fonts.size(); ++f) {
            metrics += "font " + std::to_string(f) + " height " + std::to_string(view.fonts[f].height) + " widths";
            for (const unsigned int width : view.fonts[f].widths)
                metrics += ' ' + std::to_string(width);
            metrics += '\n';
        }
        names.file = made(entryFileName(stem, index, "_metrics.txt"), metrics);
        for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f) {
            const Image sheet = glyphSheet(font, f);
            names.fontSheets.push_back(
                {png(fontSheetFileName(stem, index, f), sheet.rgba.data(), sheet.width, sheet.height), sheet.width,
                 sheet.height});
        }
    }

    void sound(Content* entry)
    {
        names.file = made(entryFileName(stem, index, entrySuffix(entry)), std::string(entry->data(), entry->size()));
    }

    ExportedNames names;

private:
    std::string png(const std::string& name, const unsigned char* rgba, unsigned int width, unsigned int height)
    {
        return made(name, rgbaPng(rgba, width, height, (std::filesystem::path(folder) / name).string()));
    }

    std::string made(const std::string& name, std::string bytes)
    {
        files.push_back({name, std::move(bytes)});
        return name;
    }

    void frames(const std::vector<const unsigned char*>& decoded, unsigned int width, unsigned int height)
    {
        for (unsigned int f = 0; f < decoded.size(); ++f)
            names.frames.push_back(png(frameFileName(stem, index, f), decoded[f], width, height));
        if (decoded.size() > 1) {
            const Image sheet = spriteSheet(decoded, width, height);
            names.sheet = png(sheetFileName(stem, index), sheet.rgba.data(), sheet.width, sheet.height);
        }
    }

    std::string stem;
    std::string folder;
    unsigned int index;
    std::vector<MadeFile>& files;
};

} // namespace

ExportedEntry exportEntry(File& archive, const std::string& path, unsigned int index, const std::string& stem,
                          const std::string& folder, PaletteSource& palettes)
{
    ExportedEntry done;
    done.view = headingOf(archive, path, index);
    try {
        Content* entry = archive.at(index);
        PaletteArray palette = entry->type() == Content::GRAPHIC ? palettes.forGraphic(index) : nullptr;
        EntryView view = viewOf(archive, path, index, palette.get());
        EntryExporter exporter(stem, folder, index, done.files);
        switch (entry->type()) {
        case Content::GRAPHIC: exporter.graphic(entry->graphic(), palette.get(), view); break;
        case Content::CURSOR: exporter.cursor(entry->cursor()); break;
        case Content::TEXT: exporter.text(view); break;
        case Content::FONT: exporter.font(entry->font(), view); break;
        case Content::SOUND: exporter.sound(entry); break;
        default: break;
        }
        done.view = std::move(view);
        done.names = std::move(exporter.names);
    } catch (const std::exception& e) {
        done.error = e.what();
    }
    return done;
}

} // namespace lbxtool
