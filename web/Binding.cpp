// What the browser page asks of the library and the modding core, in its
// worker. The page writes each archive the user opens into one folder of the
// in-memory file system and works from there, so that palette sources are
// found beside it as `lbx export` finds them, and messages name the file as
// the user named it. Edits go through the core's ArchiveEdits, as unpack, an
// edit of the files and pack would make them; after each, the archive's file
// in that folder is the edited one, which the page shows.

#include "archive/File.h"
#include "entry/Content.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Edits.h"
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Files.h"
#include "tools/modding/Listing.h"
#include "tools/modding/Names.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Sheets.h"
#include "tools/modding/TextEscape.h"

#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <iostream>
#include <map>
#include <memory>
#include <set>

using emscripten::val;
using namespace lbxtool;

namespace {

val bytesView(const unsigned char* bytes, std::size_t size)
{
    return val(emscripten::typed_memory_view(size, bytes));
}

// A copy that stays when the library's memory moves or goes.
val bytesCopy(const unsigned char* bytes, std::size_t size)
{
    return bytesView(bytes, size).call<val>("slice");
}

val swatch(const Swatch& palette)
{
    val shown = val::object();
    shown.set("first", palette.first);
    shown.set("rgba", bytesCopy(palette.rgba.data(), palette.rgba.size()));
    return shown;
}

// Warnings in the browser's console, each once, as the command line says them.
class ConsoleWarnings : public Warnings {
public:
    void warn(const std::string& message) override
    {
        if (said.insert(message).second)
            std::cerr << "lbx: warning: " << message << '\n';
    }

private:
    std::set<std::string> said;
};

ConsoleWarnings& consoleWarnings()
{
    static ConsoleWarnings warnings;
    return warnings;
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
    std::string listing() { return file ? lbxtool::listing(path, *file, consoleWarnings()) : ""; }

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
            const unsigned char* palette = entry->type() == Content::GRAPHIC ? drawable(index, entry->graphic()) : nullptr;
            const EntryView view = viewOf(*file, path, index, palette);
            if (entry->type() == Content::GRAPHIC || entry->type() == Content::CURSOR)
                animation(view, shown);
            if (entry->type() == Content::GRAPHIC)
                shown.set("delta", view.delta);
            if (entry->type() == Content::CURSOR || (palette != nullptr && entry->graphic()->hasPalette()))
                shown.set("palette", swatch(view.palette));
            if (entry->type() == Content::FONT)
                shown.set("fonts", fonts(view));
            if (entry->type() == Content::TEXT)
                shown.set("rows", rows(view));
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

    // Edits, each answering { change, warnings } or { error }; a refused
    // edit leaves the archive as it was.
    val replaceFrame(unsigned int index, unsigned int frame, const std::string& png, bool nearest)
    {
        return edited([&] { return editing().replaceFrame(index, frame, png, rulesOf(nearest)); });
    }
    val addFrame(unsigned int index, const std::string& png, bool nearest)
    {
        return edited([&] { return editing().addFrame(index, png, rulesOf(nearest)); });
    }
    val removeFrame(unsigned int index, unsigned int frame)
    {
        return edited([&] { return editing().removeFrame(index, frame, {}); });
    }
    val setRecord(unsigned int index, unsigned int record, const std::string& line)
    {
        return edited([&] { return editing().setRecord(index, record, line, {}); });
    }
    val replaceSound(unsigned int index, const std::string& wave)
    {
        return edited([&] { return editing().replaceSound(index, wave, {}); });
    }
    // `patches`: [{ name, bytes }], mods in order or one BPS patch.
    val applyPatches(const val& patches, bool preferLast)
    {
        return edited([&] {
            std::vector<std::pair<std::string, std::string>> named;
            for (unsigned int i = 0; i < patches["length"].as<unsigned int>(); ++i)
                named.emplace_back(patches[i]["name"].as<std::string>(), patches[i]["bytes"].as<std::string>());
            if (named.empty() || !isBps(named.front().second))
                return editing().applyPatches(named, preferLast);
            requireAlone(named.front().first, named.size());
            return wholeFile(applyBps(editing().current().file(), path, named.front().second, named.front().first));
        });
    }
    val undo()
    {
        return edited([&] { editing().undo(); return EditDone{}; });
    }
    val redo()
    {
        return edited([&] { editing().redo(); return EditDone{}; });
    }
    val state() const
    {
        val shown = val::object();
        shown.set("canUndo", edits && edits->canUndo());
        shown.set("canRedo", edits && edits->canRedo());
        shown.set("edited", edits && (edits->current().header != edits->opened().header ||
                                       edits->current().entries != edits->opened().entries));
        return shown;
    }
    // How many bytes record `line`, in the text escape, takes, and the room
    // there is; or the escape's own message.
    val recordBytes(unsigned int index, const std::string& line)
    {
        val shown = val::object();
        try {
            const auto [bytes, room] = editing().recordBytes(index, line);
            shown.set("bytes", bytes);
            shown.set("room", room);
        } catch (const std::exception& e) {
            shown.set("error", std::string(e.what()));
        }
        return shown;
    }
    // What to download: the archive as edited, the edits as a mod, or as a
    // BPS patch of the archive opened.
    val archiveFile() { return bytesCopyOf(editing().current().file()); }
    std::string mod(bool reversible) { return editing().mod(reversible); }
    val bps() { return bytesCopyOf(editing().bps()); }

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
    static PackRules rulesOf(bool nearest)
    {
        PackRules rules;
        rules.nearest = nearest;
        return rules;
    }

    static val bytesCopyOf(const std::string& bytes)
    {
        return bytesCopy(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    }

    // The archive's edits, begun at the first: opening reads the file once.
    ArchiveEdits& editing()
    {
        if (!file)
            throw std::runtime_error(problem);
        if (!edits)
            edits = std::make_unique<ArchiveEdits>(files, path);
        return *edits;
    }

    // Runs `edit`; after it, the archive's file is the edited one, shown
    // anew. A refused edit changed nothing.
    template <typename Edit>
    val edited(const Edit& edit)
    {
        val shown = val::object();
        try {
            const EditDone done = edit();
            showCurrent();
            shown.set("change", done.change);
            val warnings = val::array();
            for (const std::string& warning : done.warnings)
                warnings.call<void>("push", warning);
            shown.set("warnings", warnings);
        } catch (const std::exception& e) {
            shown.set("error", std::string(e.what()));
        }
        return shown;
    }

    // A whole file a BPS patch made, taken when it is an archive.
    EditDone wholeFile(const std::string& bytes)
    {
        files.write(path, bytes);
        try {
            editing().replaceWhole(readArchiveBytes(files, path));
        } catch (...) {
            showCurrent();
            throw;
        }
        return {};
    }

    void showCurrent()
    {
        if (!edits)
            return;
        forgetPalettes();
        file.reset();
        files.write(path, edits->current().file());
        file = std::make_unique<File>(path);
    }

    Content* entry(unsigned int index)
    {
        if (!file)
            throw std::runtime_error(problem);
        return file->at(index);
    }

    // The graphic's colours, once its first frame is known to decode: the
    // library's own message if it will not.
    unsigned char* drawable(unsigned int index, Content::Graphic* graphic)
    {
        unsigned char* palette = coloured(index, graphic);
        if (graphic->width() != 0 && graphic->height() != 0 && graphic->frames() > 0)
            graphic->frame(0);
        return palette;
    }

    static void animation(const EntryView& view, val& shown)
    {
        shown.set("width", view.width);
        shown.set("height", view.height);
        shown.set("frames", view.frames);
        shown.set("loop", view.loop);
    }

    static val fonts(const EntryView& view)
    {
        val fonts = val::array();
        for (const FontFace& font : view.fonts) {
            val face = val::object();
            face.set("height", font.height);
            val widths = val::array();
            for (const unsigned int width : font.widths)
                widths.call<void>("push", width);
            face.set("widths", widths);
            fonts.call<void>("push", face);
        }
        return fonts;
    }

    static val rows(const EntryView& view)
    {
        val rows = val::array();
        for (const std::string& record : view.rows)
            rows.call<void>("push", escapeText(record));
        return rows;
    }

    // The graphic's palette as `lbx export` resolves it, made once and kept
    // while the graphic draws with it.
    unsigned char* coloured(unsigned int index, Content::Graphic* graphic)
    {
        auto found = palettes.find(index);
        if (found == palettes.end()) {
            if (!sources)
                sources = std::make_unique<PaletteSource>(*file, PaletteLookup{}, files, consoleWarnings());
            found = palettes.emplace(index, sources->forGraphic(index)).first;
            graphic->setPalette(found->second.get());
        }
        return found->second.get();
    }

    std::string path;
    std::string problem;
    PlainFiles files;
    std::unique_ptr<File> file;
    std::unique_ptr<ArchiveEdits> edits;
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
        .function("bytes", &Archive::bytes)
        .function("replaceFrame", &Archive::replaceFrame)
        .function("addFrame", &Archive::addFrame)
        .function("removeFrame", &Archive::removeFrame)
        .function("setRecord", &Archive::setRecord)
        .function("replaceSound", &Archive::replaceSound)
        .function("applyPatches", &Archive::applyPatches)
        .function("undo", &Archive::undo)
        .function("redo", &Archive::redo)
        .function("state", &Archive::state)
        .function("recordBytes", &Archive::recordBytes)
        .function("archiveFile", &Archive::archiveFile)
        .function("mod", &Archive::mod)
        .function("bps", &Archive::bps);
}
