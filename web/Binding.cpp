// What the web viewer asks of the library. The page writes each archive the
// user opens into one folder of the in-memory file system and works from
// there, so that palette sources are found beside it as `lbx export` finds
// them, and messages name the file as the user named it.

#include "archive/File.h"
#include "entry/Content.h"
#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tools/Commands.h"
#include "tools/GlyphSheet.h"
#include "tools/PaletteSource.h"
#include "tools/Inputs.h"
#include "tools/Paths.h"
#include "tools/Pictures.h"
#include "tools/TextEscape.h"

#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <map>
#include <memory>

using emscripten::val;
using namespace lbxtool;

namespace {

val bytesView(const unsigned char* bytes, std::size_t size)
{
    return val(emscripten::typed_memory_view(size, bytes));
}

val swatch(unsigned int first, const unsigned char* rgba, unsigned int count)
{
    val shown = val::object();
    shown.set("first", first);
    shown.set("rgba", bytesView(rgba, std::size_t(count) * PIXEL_SIZE));
    return shown;
}

} // namespace

// One archive the page opened. Every call answers rather than throws: a
// failure comes back as an `error` text, so that the page shows it and goes on.
class Archive {
public:
    explicit Archive(const std::string& path) : path(path)
    {
        try {
            requireRegularFile(path);
            file = std::make_unique<File>(path);
        } catch (const std::exception& e) {
            problem = e.what();
        }
    }

    std::string error() const { return problem; }
    // The archive's name as it stands in the names of files made from it.
    std::string stem() const { return safeStem(path); }
    unsigned int size() const { return file ? file->size() : 0; }
    std::string listing() { return file ? lbxtool::listing(path, *file) : ""; }

    // Archives opened after this one may hold its palette sources.
    void forgetPalettes()
    {
        for (auto& [index, palette] : palettes)
            file->at(index)->graphic()->setPalette(nullptr);
        palettes.clear();
        sources.reset();
    }

    // Everything the page shows of entry `index` but the frames themselves.
    val describe(unsigned int index)
    {
        val shown = val::object();
        try {
            Content* entry = this->entry(index);
            shown.set("kind", entry->typeStr());
            shown.set("info", entry->info());
            shown.set("file", entryFileName(safeStem(path), index, entrySuffix(entry)));
            switch (entry->type()) {
            case Content::GRAPHIC: graphic(index, entry->graphic(), shown); break;
            case Content::CURSOR: cursor(entry->cursor(), shown); break;
            case Content::FONT: font(entry->font(), shown); break;
            case Content::TEXT: text(entry->text(), shown); break;
            default: break;
            }
        } catch (const std::exception& e) {
            shown.set("error", std::string(e.what()));
        }
        return shown;
    }

    // Frame `frame` of a graphic or cursor as RGBA bytes, valid until the
    // next call into the library; null if it cannot be drawn.
    val frame(unsigned int index, unsigned int frame)
    {
        try {
            Content* entry = this->entry(index);
            if (entry->type() == Content::CURSOR && frame < CURSOR_FRAMES)
                return bytesView(entry->cursor()->get(frame), CURSOR_SIDE * CURSOR_SIDE * PIXEL_SIZE);
            Content::Graphic* graphic = entry->graphic();
            coloured(index, graphic);
            return bytesView(graphic->frame(frame),
                             std::size_t(graphic->width()) * graphic->height() * PIXEL_SIZE);
        } catch (const std::exception&) {
            return val::null();
        }
    }

    // The picture of one font's glyphs, as `glyphSheet` draws it.
    val glyphs(unsigned int index, unsigned int font)
    {
        val shown = val::object();
        try {
            sheet = glyphSheet(entry(index)->font(), font);
            shown.set("width", sheet.width);
            shown.set("height", sheet.height);
            shown.set("rgba", bytesView(sheet.rgba.data(), sheet.rgba.size()));
        } catch (const std::exception& e) {
            shown.set("error", std::string(e.what()));
        }
        return shown;
    }

    val bytes(unsigned int index)
    {
        try {
            Content* entry = this->entry(index);
            return bytesView(reinterpret_cast<const unsigned char*>(entry->data()), entry->size());
        } catch (const std::exception&) {
            return val::null();
        }
    }

private:
    Content* entry(unsigned int index)
    {
        if (!file)
            throw std::runtime_error(problem);
        return file->at(index);
    }

    void graphic(unsigned int index, Content::Graphic* graphic, val& shown)
    {
        unsigned char* palette = coloured(index, graphic);
        const bool pixels = graphic->width() != 0 && graphic->height() != 0;
        if (pixels && graphic->frames() > 0)
            graphic->frame(0); // the library's own message if it will not decode
        shown.set("width", graphic->width());
        shown.set("height", graphic->height());
        shown.set("frames", pixels ? graphic->frames() : 0);
        shown.set("loop", graphic->hasFlag(Content::Graphic::LOOP));
        bool delta = false;
        for (unsigned int f = 1; f < graphic->frames(); ++f)
            delta = delta || !graphic->isClear(f);
        shown.set("delta", delta);
        if (graphic->hasPalette()) {
            const unsigned int first = std::min<unsigned int>(graphic->paletteOffset(), COLORS);
            const unsigned int end = std::min<unsigned int>(first + graphic->paletteSize(), COLORS);
            shown.set("palette", swatch(first, palette + first * PIXEL_SIZE, end - first));
        }
    }

    void cursor(Content::Cursor* cursor, val& shown)
    {
        shown.set("width", CURSOR_SIDE);
        shown.set("height", CURSOR_SIDE);
        shown.set("frames", CURSOR_FRAMES);
        shown.set("loop", true);
        shown.set("palette", swatch(0, cursor->palette(), COLORS));
    }

    void font(Content::Font* font, val& shown)
    {
        val fonts = val::array();
        for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f) {
            val face = val::object();
            face.set("height", font->height(f));
            val widths = val::array();
            for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
                widths.call<void>("push", font->width(f, g));
            face.set("widths", widths);
            fonts.call<void>("push", face);
        }
        shown.set("fonts", fonts);
    }

    void text(Content::Text* table, val& shown)
    {
        val rows = val::array();
        for (unsigned int i = 0; i < table->size(); ++i)
            rows.call<void>("push", escapeText(table->get(i)));
        shown.set("rows", rows);
    }

    // The graphic's palette as `lbx export` resolves it, made once and kept
    // while the graphic draws with it.
    unsigned char* coloured(unsigned int index, Content::Graphic* graphic)
    {
        auto found = palettes.find(index);
        if (found == palettes.end()) {
            if (!sources)
                sources = std::make_unique<PaletteSource>(*file, "");
            found = palettes.emplace(index, sources->forGraphic(index)).first;
            graphic->setPalette(found->second.get());
        }
        return found->second.get();
    }

    std::string path;
    std::string problem;
    std::unique_ptr<File> file;
    std::unique_ptr<PaletteSource> sources;
    std::map<unsigned int, PaletteArray> palettes;
    Image sheet;
};

EMSCRIPTEN_BINDINGS(lbx)
{
    emscripten::class_<Archive>("Archive")
        .constructor<std::string>()
        .function("error", &Archive::error)
        .function("stem", &Archive::stem)
        .function("size", &Archive::size)
        .function("listing", &Archive::listing)
        .function("forgetPalettes", &Archive::forgetPalettes)
        .function("describe", &Archive::describe)
        .function("frame", &Archive::frame)
        .function("glyphs", &Archive::glyphs)
        .function("bytes", &Archive::bytes);
}
