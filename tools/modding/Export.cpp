#include "tools/modding/Export.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "tools/modding/Names.h"
#include "tools/modding/Png.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Sheets.h"
#include "tools/modding/Forms.h"
#include "tools/modding/TextEscape.h"


namespace lbxtool {

namespace {

constexpr unsigned int SWATCH_SIDE = 16;

// Makes the files of one entry, named as planned, in the order they are
// to be written.
class EntryExporter {
public:
    EntryExporter(ExportedNames& names, const std::string& folder, std::vector<MadeFile>& files)
        : names(names), folder(folder), files(files)
    {
    }

    void graphic(Content::Graphic* graphic, unsigned char* palette, const EntryView& view)
    {
        if (!names.swatch.empty())
            viewPicture(names.swatch, palette, SWATCH_SIDE, SWATCH_SIDE);
        if (names.frames.empty())
            return;
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
    // the file, like the gallery's preview, is plain text; in a charset, the
    // letters it stands for.
    void text(const EntryView& view, const Charset* charset) { made(names.file, linesOfRecords(view.rows, charset)); }

    void font(Content::Font* font, const EntryView& view)
    {
        std::string metrics = "# " + view.name + ": height of each font, then the width of each of its glyphs\n";
        for (unsigned int f = 0; f < view.fonts.size(); ++f) {
            metrics += "font " + std::to_string(f) + " height " + std::to_string(view.fonts[f].height) + " widths";
            for (const unsigned int width : view.fonts[f].widths)
                metrics += ' ' + std::to_string(width);
            metrics += '\n';
        }
        made(names.file, metrics);
        for (unsigned int f = 0; f < names.fontSheets.size(); ++f) {
            SheetFile& sheet = names.fontSheets[f];
            const Image glyphs = glyphSheet(font, f);
            viewPicture(sheet.name, glyphs.rgba.data(), glyphs.width, glyphs.height);
            sheet.width = glyphs.width;
            sheet.height = glyphs.height;
        }
    }

    void sound(Content* entry) { made(names.file, std::string(entry->data(), entry->size())); }

private:
    // A frame in RGBA, as the game shows it, which `lbx import` takes back
    // by its colours whatever an editor makes of the file.
    void png(const std::string& name, const unsigned char* rgba, unsigned int width, unsigned int height)
    {
        made(name, rgbaPng(rgba, width, height, inFolder(folder, name)));
    }

    // A sheet or a swatch, only to look at.
    void viewPicture(const std::string& name, const unsigned char* rgba, unsigned int width, unsigned int height)
    {
        made(name, viewPng(rgba, width, height, inFolder(folder, name)));
    }

    void made(const std::string& name, std::string bytes) { files.push_back({name, std::move(bytes)}); }

    void frames(const std::vector<const unsigned char*>& decoded, unsigned int width, unsigned int height)
    {
        for (unsigned int f = 0; f < decoded.size(); ++f)
            png(names.frames[f], decoded[f], width, height);
        if (!names.sheet.empty()) {
            const Image sheet = spriteSheet(decoded, width, height);
            viewPicture(names.sheet, sheet.rgba.data(), sheet.width, sheet.height);
        }
    }

    ExportedNames& names;
    std::string folder;
    std::vector<MadeFile>& files;
};

void nameFrames(ExportedNames& names, const std::string& stem, unsigned int index, unsigned int count)
{
    for (unsigned int f = 0; f < count; ++f)
        names.frames.push_back(frameFileName(stem, index, f));
    if (count > 1)
        names.sheet = sheetFileName(stem, index);
}

} // namespace

std::vector<std::string> ExportedNames::all() const
{
    std::vector<std::string> names;
    if (!swatch.empty())
        names.push_back(swatch);
    names.insert(names.end(), frames.begin(), frames.end());
    for (const std::string& one : {sheet, file})
        if (!one.empty())
            names.push_back(one);
    for (const SheetFile& fontSheet : fontSheets)
        names.push_back(fontSheet.name);
    return names;
}

ExportedNames exportNames(Content* entry, const std::string& stem, unsigned int index)
{
    ExportedNames names;
    switch (entry->type()) {
    case Content::GRAPHIC: {
        Content::Graphic* graphic = entry->graphic();
        if (graphic->frames() == 0) // a graphic of no frames holds only colours: saved as 16 × 16 squares
            names.swatch = entryFileName(stem, index, "_palette.png");
        else if (graphic->width() != 0 && graphic->height() != 0) // frames without pixels make no picture
            nameFrames(names, stem, index, graphic->frames());
        break;
    }
    case Content::CURSOR: nameFrames(names, stem, index, CURSOR_FRAMES); break;
    case Content::TEXT: names.file = textFileName(stem, index); break;
    case Content::FONT:
        names.file = entryFileName(stem, index, "_metrics.txt");
        for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f)
            names.fontSheets.push_back({fontSheetFileName(stem, index, f)});
        break;
    case Content::SOUND: names.file = entryFileName(stem, index, entrySuffix(entry)); break;
    default: break;
    }
    return names;
}

ExportedEntry exportEntry(Content& entry, const std::string& path, unsigned int index, const std::string& stem,
                          const std::string& folder, PaletteSource& palettes, const Charset* charset)
{
    ExportedEntry done;
    done.view = headingOf(&entry, path, index);
    try {
        PaletteArray palette =
            entry.type() == Content::GRAPHIC ? palettes.forGraphic(index, entry.graphic(), true) : nullptr;
        EntryView view = viewOf(&entry, path, index, palette.get());
        ExportedNames names = exportNames(&entry, stem, index);
        EntryExporter exporter(names, folder, done.files);
        switch (entry.type()) {
        case Content::GRAPHIC: exporter.graphic(entry.graphic(), palette.get(), view); break;
        case Content::CURSOR: exporter.cursor(entry.cursor()); break;
        case Content::TEXT: exporter.text(view, charset); break;
        case Content::FONT: exporter.font(entry.font(), view); break;
        case Content::SOUND: exporter.sound(&entry); break;
        default: break;
        }
        done.view = std::move(view);
        done.names = std::move(names);
    } catch (const std::exception& e) {
        done.error = e.what();
    }
    return done;
}

} // namespace lbxtool
