#include "Workloads.h"

#include "entry/Write.h"
#include "images/PixelLayout.h"
#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Empty.h"
#include "kinds/Text.h"

#include <cstring>

namespace bench {

using zorv2::Lbx::Content;
using fixtures::entryOf;
using fixtures::le16;
using fixtures::le32;

namespace {

using namespace zorv2::Lbx::layout;

// Scene indices: the background keeps to 1..120, the moving disc to 200..207.
constexpr unsigned int DISC_COLOR = 200;
constexpr unsigned int DISC_RINGS = 8;

// A cursor is 20 frames of 24 x 24 pixels.
constexpr unsigned int CURSOR_FRAMES = 20;
constexpr unsigned int CURSOR_SIDE = 24;

// Record entries are recognised by their size and head alone.
constexpr unsigned int LEADER_SIZE = 3957;
constexpr unsigned int RACE_SIZE = 407;
constexpr unsigned int RACE_MARKS[] = {13, 31};
constexpr unsigned int RACE_HEAD = 4;
constexpr unsigned int ABCOST_SIZE = 56;
constexpr unsigned int ABCOST_ZERO_TAIL = 4;

constexpr unsigned int FONT_COUNT = 6;
constexpr unsigned int GLYPH_COUNT = FONT_COUNT * 256;

unsigned int backgroundIndex(unsigned int x, unsigned int y)
{
    return 1 + ((x / 4 + y / 4) % 15) * 8 + ((x ^ y) & 7);
}

void paint(Pixels& rgba, std::size_t pixel, const Pixels& palette, unsigned int index)
{
    for (unsigned int byte = 0; byte < PIXEL_SIZE; ++byte)
        rgba[pixel * PIXEL_SIZE + byte] = palette[index * PIXEL_SIZE + byte];
}

void pointAt(Frames& frames)
{
    for (Pixels& frame : frames.rgba)
        frames.pointers.push_back(frame.data());
}

// Filler that no earlier kind of the chain takes for its own: its 16-bit word
// at offset 4 is never 0, so it is no graphic either.
std::string patterned(unsigned int size, unsigned int seed)
{
    std::string bytes(size, '\0');
    for (unsigned int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(1 + (i * 13 + seed) % 127);
    return bytes;
}

// An 8-bit mono PCM file of `samples` samples. The RIFF length counts what
// follows it: the rest of the 44-byte head, then the samples.
std::unique_ptr<Content> soundEntry(unsigned int samples)
{
    constexpr unsigned int HEAD_AFTER_LENGTH = 36;
    std::string bytes = "RIFF" + le32(HEAD_AFTER_LENGTH + samples) + "WAVEfmt " + le32(16);
    bytes += le16(1);      // PCM
    bytes += le16(1);      // mono
    bytes += le32(11025);  // samples per second
    bytes += le32(11025);  // bytes per second
    bytes += le16(1);      // block alignment
    bytes += le16(8);      // bits per sample
    bytes += "data" + le32(samples);
    for (unsigned int i = 0; i < samples; ++i)
        bytes += static_cast<char>(128 + ((i * 7) % 64) - 32);
    return entryOf(bytes);
}

std::unique_ptr<Content> recordEntry(unsigned int round)
{
    switch (round % 3) {
    case 0: return entryOf(patterned(LEADER_SIZE, round));
    case 1: {
        std::string race;
        for (unsigned int mark : RACE_MARKS)
            race += le16(mark);
        return entryOf(race + patterned(RACE_SIZE - RACE_HEAD, round));
    }
    default: return entryOf(patterned(ABCOST_SIZE - ABCOST_ZERO_TAIL, round) + std::string(ABCOST_ZERO_TAIL, '\0'));
    }
}

std::unique_ptr<Content> fontEntry(unsigned int round)
{
    unsigned short heights[FONT_COUNT];
    unsigned char widths[GLYPH_COUNT];
    for (unsigned int f = 0; f < FONT_COUNT; ++f)
        heights[f] = static_cast<unsigned short>(6 + 2 * f + round % 3);
    for (unsigned int g = 0; g < GLYPH_COUNT; ++g)
        widths[g] = static_cast<unsigned char>(3 + g % 7);
    unsigned char* glyphs[GLYPH_COUNT] = {};
    Pixels palette = scenePalette();
    return std::unique_ptr<Content>(Content::Font::create(palette.data(), heights, widths, glyphs));
}

std::unique_ptr<Content> textEntry(unsigned int count)
{
    std::vector<std::string> strings = messageStrings(count);
    return std::unique_ptr<Content>(Content::Text::create(strings));
}

std::unique_ptr<Content> cursorEntry()
{
    Frames frames = cursorFrames();
    Pixels palette = scenePalette();
    return std::unique_ptr<Content>(Content::Cursor::create(palette.data(), frames.pointers.data()));
}

// The graphics of the rotation: screens, animations, sprites and icons.
std::unique_ptr<Content> rotationGraphic(unsigned int slot)
{
    static const struct {
        unsigned short width, height, frames;
        Shape shape;
        Coding coding;
    } graphics[] = {{640, 480, 1, Shape::SCENE, Coding::DELTA},  {320, 200, 5, Shape::SCENE, Coding::DELTA},
                    {64, 64, 10, Shape::SPRITE, Coding::DELTA},  {64, 64, 10, Shape::SPRITE, Coding::CLEAR},
                    {160, 120, 3, Shape::SCENE, Coding::CLEAR},  {320, 200, 2, Shape::SCENE, Coding::RAW},
                    {32, 32, 1, Shape::SPRITE, Coding::DELTA},   {100, 80, 8, Shape::SPRITE, Coding::DELTA}};
    const auto& g = graphics[slot];
    Frames frames = movingDisc(g.width, g.height, g.frames, g.shape);
    return graphicEntry(frames, g.coding);
}

} // namespace

Pixels scenePalette()
{
    Pixels palette(PALETTE_BYTES);
    for (unsigned int i = 0; i < COLORS; ++i) {
        unsigned char* entry = palette.data() + i * PIXEL_SIZE;
        entry[RED] = static_cast<unsigned char>((i % 64) * 4);
        entry[GREEN] = static_cast<unsigned char>((i / 64) * 64 + 8);
        entry[BLUE] = static_cast<unsigned char>(((i * 37) % 64) * 4);
        entry[ALPHA] = OPAQUE;
    }
    return palette;
}

const char* codingName(Coding coding)
{
    switch (coding) {
    case Coding::DELTA: return "delta";
    case Coding::CLEAR: return "clear";
    default: return "raw";
    }
}

unsigned short flagsOf(Coding coding)
{
    switch (coding) {
    case Coding::DELTA: return 0;
    case Coding::CLEAR: return Content::Graphic::CLEAR;
    default: return Content::Graphic::RAW;
    }
}

Frames movingDisc(unsigned short width, unsigned short height, unsigned short count, Shape shape)
{
    const Pixels palette = scenePalette();
    Frames frames{width, height, {}, {}};
    const int radius = (shape == Shape::SCENE ? height / 8 : height / 3) + 1;
    for (unsigned int f = 0; f < count; ++f) {
        // Transparent pixels stay four zero bytes.
        Pixels rgba(std::size_t{width} * height * PIXEL_SIZE, 0);
        const int centreX = width / 4 + static_cast<int>((f * 3) % (width / 2 + 1));
        const int centreY = height / 2;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const std::size_t pixel = std::size_t{static_cast<unsigned int>(y)} * width + x;
                const int dx = x - centreX, dy = y - centreY;
                const int distance2 = dx * dx + dy * dy;
                if (distance2 < radius * radius)
                    paint(rgba, pixel, palette,
                          DISC_COLOR + static_cast<unsigned int>(distance2 * DISC_RINGS / (radius * radius)));
                else if (shape == Shape::SCENE)
                    paint(rgba, pixel, palette, backgroundIndex(x, y));
            }
        }
        frames.rgba.push_back(std::move(rgba));
    }
    pointAt(frames);
    return frames;
}

std::unique_ptr<Content> graphicEntry(Frames& frames, Coding coding)
{
    Pixels palette = scenePalette();
    return std::unique_ptr<Content>(Content::Graphic::create(frames.pointers.data(), palette.data(), frames.width,
                                                             frames.height,
                                                             static_cast<unsigned short>(frames.rgba.size()), 0, 0,
                                                             0, 0, flagsOf(coding)));
}

std::vector<std::string> messageStrings(unsigned int count)
{
    static const char* const words[] = {"the", "fleet", "colony", "reports", "of", "new", "ships", "near", "star"};
    std::vector<std::string> strings;
    strings.reserve(count);
    for (unsigned int i = 0; i < count; ++i) {
        const std::size_t length = 3 + (i * 29) % 88;
        std::string text = std::to_string(i);
        for (unsigned int w = i; text.size() < length; ++w)
            text += std::string(" ") + words[w % std::size(words)];
        text.resize(length);
        strings.push_back(text);
    }
    return strings;
}

Frames cursorFrames()
{
    const Pixels palette = scenePalette();
    Frames frames{CURSOR_SIDE, CURSOR_SIDE, {}, {}};
    for (unsigned int f = 0; f < CURSOR_FRAMES; ++f) {
        Pixels rgba(CURSOR_SIDE * CURSOR_SIDE * PIXEL_SIZE, 0);
        for (unsigned int y = 0; y < CURSOR_SIDE; ++y)
            for (unsigned int x = 0; x <= y && x + y / 2 < CURSOR_SIDE; ++x)
                paint(rgba, y * CURSOR_SIDE + x, palette, 1 + (x + y + f) % 250);
        frames.rgba.push_back(std::move(rgba));
    }
    pointAt(frames);
    return frames;
}

std::unique_ptr<Content> archiveEntry(unsigned int index)
{
    // Twenty slots, repeated: eight graphics of different shapes, two
    // cursors, five text tables, a font, two sounds, a record, an empty entry.
    const unsigned int slot = index % 20;
    const unsigned int round = index / 20;
    if (slot < 8)
        return rotationGraphic(slot);
    switch (slot) {
    case 8:
    case 9: return cursorEntry();
    case 10:
    case 11:
    case 12:
    case 13: return textEntry(20 + (index * 37) % 400);
    case 14: return fontEntry(round);
    case 15:
    case 16: return soundEntry(20000 + (index * 997) % 60000);
    case 17: return recordEntry(round);
    case 18: return std::unique_ptr<Content>(Content::Empty::create(round % 2 == 0));
    default: return textEntry(1000);
    }
}

const Archive& Archives::get(unsigned int entries)
{
    auto found = mixedWritten.find(entries);
    if (found == mixedWritten.end())
        found = mixedWritten.emplace(entries, write(entries)).first;
    return found->second;
}

const Archive& Archives::big()
{
    if (!bigWritten) {
        Frames frames = movingDisc(BIG_WIDTH, BIG_HEIGHT, BIG_FRAMES, Shape::SCENE);
        const std::unique_ptr<Content> animation = graphicEntry(frames, Coding::DELTA);
        zorv2::Lbx::File archive;
        for (unsigned int i = 0; i < BIG_ANIMATIONS; ++i)
            archive.push_back(new Content(*animation));
        bigWritten = std::make_unique<Archive>(written(archive, "BIG.LBX"));
    }
    return *bigWritten;
}

Archive Archives::write(unsigned int entries)
{
    using zorv2::Lbx::File;
    if (!mixed) {
        mixed = std::make_unique<File>();
        for (unsigned int i = 0; i < FULL_ARCHIVE; ++i)
            mixed->push_back(archiveEntry(i).release());
    }
    File archive;
    for (unsigned int i = 0; i < entries; ++i)
        archive.push_back(new Content(*mixed->at(i)));
    return written(archive, "mixed-" + std::to_string(entries) + ".lbx");
}

Archive Archives::written(zorv2::Lbx::File& archive, const std::string& name)
{
    Archive made{dir.path(name), archive.size(), 0, {}};
    archive.write(made.path);
    zorv2::Lbx::File::header(made.path, nullptr, &made.offsets, nullptr);
    made.bytes = made.offsets.back();
    return made;
}

std::string openName(unsigned int entries)
{
    return "File open+classify, " + std::to_string(entries) + " entries";
}

PaletteLoop::PaletteLoop(const Pixels& palette)
{
    std::memcpy(table, palette.data(), sizeof table);
}

void PaletteLoop::map(const unsigned char* indices, std::size_t count, std::uint32_t* rgba)
{
    for (std::size_t i = 0; i < count; ++i)
        rgba[i] = table[indices[i]];
}

} // namespace bench
