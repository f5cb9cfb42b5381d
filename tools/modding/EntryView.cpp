#include "tools/modding/EntryView.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tools/modding/EntryFiles.h"
#include "tools/modding/Names.h"
#include "tools/modding/Shapes.h"

#include <algorithm>
#include <optional>

namespace lbxtool {

namespace {

// "1 frame", "8 frames".
std::string counted(unsigned int count, const std::string& thing)
{
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

// The colours of a graphic's own block, as they stand in its palette.
Swatch block(Content::Graphic* graphic, const unsigned char* palette)
{
    const unsigned int first = std::min<unsigned int>(graphic->paletteOffset(), COLORS);
    const unsigned int end = std::min<unsigned int>(first + graphic->paletteSize(), COLORS);
    return {first, std::vector<unsigned char>(palette + first * PIXEL_SIZE, palette + end * PIXEL_SIZE)};
}

void graphic(Content::Graphic* graphic, const unsigned char* shown, EntryView& view)
{
    view.width = graphic->width();
    view.height = graphic->height();
    view.frames = view.width != 0 && view.height != 0 ? graphic->frames() : 0;
    view.loop = graphic->hasFlag(Content::Graphic::LOOP);
    for (unsigned int f = 1; f < graphic->frames(); ++f)
        view.delta = view.delta || !graphic->isClear(f);
    if (graphic->hasPalette() && shown != nullptr)
        view.palette = block(graphic, shown);
}

void cursor(Content::Cursor* cursor, EntryView& view)
{
    view.width = CURSOR_SIDE;
    view.height = CURSOR_SIDE;
    view.frames = CURSOR_FRAMES;
    view.loop = true; // the game cycles a cursor's frames for as long as it shows
    view.palette = {0, std::vector<unsigned char>(cursor->palette(), cursor->palette() + PALETTE_BYTES)};
}

void font(Content::Font* font, EntryView& view)
{
    for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f) {
        FontFace face;
        face.height = font->height(f);
        for (unsigned int g = 0; g < GLYPHS_PER_FONT; ++g)
            face.widths.push_back(font->width(f, g));
        view.fonts.push_back(std::move(face));
    }
}

void text(Content::Text* table, EntryView& view)
{
    for (unsigned int i = 0; i < table->size(); ++i)
        view.rows.push_back(table->get(i));
}

} // namespace

EntryView headingOf(Content* entry, const std::string& path, unsigned int index)
{
    EntryView view;
    view.index = index;
    view.name = entryName(path, index);
    view.kind = entry->typeStr();
    view.info = entry->info();
    return view;
}

EntryView headingOf(File& archive, const std::string& path, unsigned int index)
{
    return headingOf(archive.at(index), path, index);
}

EntryView headingOf(const EntryView& view)
{
    EntryView heading;
    heading.index = view.index;
    heading.name = view.name;
    heading.kind = view.kind;
    heading.info = view.info;
    return heading;
}

EntryView viewOf(Content* entry, const std::string& path, unsigned int index, const unsigned char* shown)
{
    EntryView view = headingOf(entry, path, index);
    switch (entry->type()) {
    case Content::GRAPHIC: graphic(entry->graphic(), shown, view); break;
    case Content::CURSOR: cursor(entry->cursor(), view); break;
    case Content::FONT: font(entry->font(), view); break;
    case Content::TEXT: text(entry->text(), view); break;
    case Content::SOUND: view.sound = true; break;
    default: break;
    }
    return view;
}

EntryView viewOf(File& archive, const std::string& path, unsigned int index, const unsigned char* shown)
{
    return viewOf(archive.at(index), path, index, shown);
}

std::string shapeOf(Content* entry)
{
    switch (entry->type()) {
    case Content::GRAPHIC: {
        Content::Graphic* graphic = entry->graphic();
        return "graphic (" + counted(graphic->frames(), "frame") + " of " + std::to_string(graphic->width()) + "x" +
               std::to_string(graphic->height()) + ")";
    }
    case Content::TEXT: {
        // The game finds a record by its number and its length: both are
        // the table's shape.
        Content::Text* table = entry->text();
        return "text (" + counted(table->size(), "record") + " of " + std::to_string(table->read2(RECORD_LENGTH_OFFSET)) +
               " bytes)";
    }
    case Content::SOUND: {
        const std::optional<WaveFormat> format = waveFormat(entry->data(), entry->size());
        return format ? "sound (" + formatName(*format) + ")" : "sound";
    }
    default: return entry->typeStr();
    }
}

std::string shapeChange(const std::string& was, const std::string& becomes)
{
    return was == becomes ? "" : "was " + was + ", becomes " + becomes;
}

} // namespace lbxtool
