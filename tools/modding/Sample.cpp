#include "tools/modding/Sample.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "kinds/Empty.h"
#include "kinds/Text.h"
#include "tools/modding/Shapes.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace lbxtool {

namespace {

using Graphic = Content::Graphic;
using Palette = Content::Palette;
namespace layout = zorv2::Lbx::layout;

constexpr double PI = 3.14159265358979323846;
// Cursor frames are drawn with signed coordinates.
constexpr int SIDE = CURSOR_SIDE;

// Each archive holds as many entries as the game's of that name.
constexpr unsigned int FONTS_ENTRIES = 14;

struct Colour {
    unsigned char red, green, blue;
};

// A 256-colour palette array running linearly through DAC colours at evenly
// spaced stops.
PaletteArray ramp(const std::vector<Colour>& stops)
{
    PaletteArray palette(Palette::empty());
    const unsigned int span = (COLORS - 1) / static_cast<unsigned int>(stops.size() - 1);
    for (unsigned int i = 0; i < COLORS; ++i) {
        const unsigned int from = std::min<unsigned int>(i / span, static_cast<unsigned int>(stops.size() - 2));
        const unsigned int step = i - from * span;
        const auto mix = [&](unsigned char Colour::*part) {
            const int a = stops[from].*part, b = stops[from + 1].*part;
            return static_cast<unsigned char>(a + (b - a) * static_cast<int>(step) / static_cast<int>(span));
        };
        layout::paintDacColor(palette.get() + i * PIXEL_SIZE, mix(&Colour::red), mix(&Colour::green),
                                          mix(&Colour::blue));
    }
    return palette;
}

PaletteArray warmPalette()
{
    return ramp({{0, 0, 0}, {63, 8, 0}, {63, 56, 8}, {63, 63, 63}});
}

PaletteArray coolPalette()
{
    return ramp({{0, 0, 0}, {4, 8, 40}, {16, 48, 60}, {56, 63, 63}});
}

// An RGBA picture, transparent until painted.
class Canvas {
public:
    Canvas(int width, int height) : width(width), height(height), rgba(std::size_t(width) * height * PIXEL_SIZE) {}

    void put(int x, int y, const unsigned char* colour)
    {
        if (x < 0 || y < 0 || x >= width || y >= height)
            return;
        unsigned char* pixel = &rgba[(std::size_t(y) * width + x) * PIXEL_SIZE];
        std::copy(colour, colour + layout::ALPHA, pixel);
        pixel[layout::ALPHA] = layout::OPAQUE;
    }

    void put(int x, int y, Colour dac)
    {
        unsigned char colour[PIXEL_SIZE];
        layout::paintDacColor(colour, dac.red, dac.green, dac.blue);
        put(x, y, colour);
    }

    const int width, height;
    std::vector<unsigned char> rgba;
};

std::vector<unsigned char*> pixelsOf(std::vector<Canvas>& frames)
{
    std::vector<unsigned char*> pixels;
    for (Canvas& frame : frames)
        pixels.push_back(frame.rgba.data());
    return pixels;
}

const unsigned char* entryOf(const PaletteArray& palette, unsigned int index)
{
    return palette.get() + index * PIXEL_SIZE;
}

void append(File& archive, Content* entry)
{
    std::unique_ptr<Content> owned(entry);
    archive.push_back(owned.get());
    owned.release();
}

Content* graphicOf(std::vector<Canvas>& frames, unsigned char* palette, unsigned char clearMod,
                   unsigned short palOffset, unsigned short palSize, unsigned short flags)
{
    std::vector<unsigned char*> pixels = pixelsOf(frames);
    return Graphic::create(pixels.data(), palette, static_cast<unsigned short>(frames.front().width),
                           static_cast<unsigned short>(frames.front().height),
                           static_cast<unsigned short>(frames.size()), 0, clearMod, palOffset, palSize, flags);
}

// Cursors: an arrow whose body glows through the warm ramp, and a ring with
// a gap that turns, in the cool one. Index 0 stays transparent.
Content* arrowCursor(const PaletteArray& palette)
{
    std::vector<Canvas> frames(CURSOR_FRAMES, Canvas(SIDE, SIDE));
    // The head: tip at the top left, one edge straight down, one along the
    // diagonal; then a tail slanting down to the right.
    const auto inside = [](int x, int y) {
        const bool head = x >= 1 && y >= x && 2 * y <= 31 - x;
        const bool tail = y >= 13 && y <= 21 && x >= 4 + (y - 13) / 2 && x <= 6 + (y - 13) / 2;
        return head || tail;
    };
    for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
        for (int y = 0; y < SIDE; ++y)
            for (int x = 0; x < SIDE; ++x)
                if (inside(x, y)) {
                    const bool edge = !inside(x - 1, y) || !inside(x + 1, y) || !inside(x, y - 1) || !inside(x, y + 1);
                    frames[f].put(x, y, entryOf(palette, edge ? 255 : 90 + 4 * f + y));
                }
    std::vector<unsigned char*> pixels = pixelsOf(frames);
    return Content::Cursor::create(palette.get(), pixels.data());
}

Content* ringCursor(const PaletteArray& palette)
{
    std::vector<Canvas> frames(CURSOR_FRAMES, Canvas(SIDE, SIDE));
    const double centre = (SIDE - 1) / 2.0;
    for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
        for (int y = 0; y < SIDE; ++y)
            for (int x = 0; x < SIDE; ++x) {
                const double radius = std::hypot(x - centre, y - centre);
                const double turn = std::fmod(std::atan2(y - centre, x - centre) / (2 * PI) + 1.0 - f / double(CURSOR_FRAMES), 1.0);
                if (radius >= 6 && radius <= 10 && turn > 0.2)
                    frames[f].put(x, y, entryOf(palette, 100 + static_cast<unsigned int>(turn * 150)));
            }
    std::vector<unsigned char*> pixels = pixelsOf(frames);
    return Content::Cursor::create(palette.get(), pixels.data());
}

Content* font()
{
    unsigned short heights[FONTS_PER_ENTRY] = {8, 10, 12, 14, 16, 9};
    std::vector<unsigned char> widths(FONTS_PER_ENTRY * GLYPHS_PER_FONT, 0);
    for (unsigned int f = 0; f < FONTS_PER_ENTRY; ++f)
        for (unsigned int g = ' '; g <= '~'; ++g)
            widths[f * GLYPHS_PER_FONT + g] = static_cast<unsigned char>(3 + f + g % 4);
    // The font's create neither reads a palette nor glyph images.
    return Content::Font::create(nullptr, heights, widths.data(), nullptr);
}

void fontsArchive(File& archive)
{
    append(archive, font());
    // Entries 1 and 2: the palettes the game's tables give INBOX[1] and SPHERSFX.
    append(archive, arrowCursor(warmPalette()));
    append(archive, ringCursor(coolPalette()));
    append(archive, Content::Empty::create(true));
    while (archive.size() < FONTS_ENTRIES)
        append(archive, Content::Empty::create());
}

// A landscape that carries all its colours in its own block.
Content* landscape()
{
    std::vector<Canvas> frames(1, Canvas(64, 40));
    Canvas& picture = frames.front();
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 64; ++x) {
            const bool sun = std::hypot(x - 46, y - 10) < 6;
            const bool hill = y > 28 - 6 * std::sin(x / 10.0);
            if (sun)
                picture.put(x, y, Colour{63, 56, 16});
            else if (hill)
                picture.put(x, y, Colour{8, static_cast<unsigned char>(44 - (y - 22) / 2), 8});
            else
                picture.put(x, y, Colour{static_cast<unsigned char>(8 + y / 3), static_cast<unsigned char>(20 + y / 2), 56});
        }
    unsigned char* image = picture.rgba.data();
    unsigned int width = 64, height = 40;
    PaletteArray palette(Palette::create(&image, &width, &height, 1));
    return graphicOf(frames, palette.get(), 0, 0, coloursFilled(palette.get()), Graphic::PALETTE);
}

// A ball that bounces across a dark floor: each frame paints only what moved.
Content* bouncingBall(const PaletteArray& warm)
{
    constexpr int width = 48, height = 32, count = 8;
    std::vector<Canvas> frames(count, Canvas(width, height));
    for (int f = 0; f < count; ++f) {
        const int ballX = 6 + f * 5, ballY = 24 - static_cast<int>(18 * std::fabs(std::sin(f * PI / 4)));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const double distance = std::hypot(x - ballX, y - ballY);
                const unsigned int index = distance < 5 ? 250 - static_cast<unsigned int>(distance * 20) : 8 + y;
                frames[f].put(x, y, entryOf(warm, index));
            }
    }
    return graphicOf(frames, warm.get(), 0, 0, 0, Graphic::LOOP);
}

void inboxArchive(File& archive)
{
    append(archive, landscape());
    append(archive, bouncingBall(warmPalette()));
}

// A dialog box whose block serves the button and the spinner that follow it
// in the archive: the game takes CONFIRM's palette from its entry 0.
void confirmArchive(File& archive)
{
    const Colour border{48, 48, 52}, fill{4, 8, 28}, light{40, 52, 60}, dark{12, 20, 32}, dot{63, 60, 20};
    std::vector<Canvas> dialog(1, Canvas(40, 24));
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 40; ++x)
            dialog[0].put(x, y, x < 2 || y < 2 || x > 37 || y > 21 ? border : (y == 8 && x % 4 == 0 ? dot : fill));
    std::vector<Canvas> button(2, Canvas(16, 8));
    for (int f = 0; f < 2; ++f)
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 16; ++x)
                button[f].put(x, y, (y == 0 || x == 0) == (f == 0) ? light : dark);
    std::vector<Canvas> spinner(4, Canvas(12, 12));
    for (int f = 0; f < 4; ++f)
        for (int k = 0; k < 3; ++k) {
            const double angle = (f + k * 4 / 3.0) * PI / 2;
            const int x = 6 + static_cast<int>(4 * std::cos(angle)), y = 6 + static_cast<int>(4 * std::sin(angle));
            for (int d = 0; d < 4; ++d)
                spinner[f].put(x + d % 2, y + d / 2, k == 0 ? dot : light);
        }

    std::vector<unsigned char*> all;
    std::vector<unsigned int> widths, heights;
    for (std::vector<Canvas>* group : {&dialog, &button, &spinner})
        for (Canvas& frame : *group) {
            all.push_back(frame.rgba.data());
            widths.push_back(static_cast<unsigned int>(frame.width));
            heights.push_back(static_cast<unsigned int>(frame.height));
        }
    PaletteArray palette(Palette::create(all.data(), widths.data(), heights.data(), static_cast<unsigned int>(all.size())));

    append(archive, graphicOf(dialog, palette.get(), 0, 0, coloursFilled(palette.get()), Graphic::PALETTE));
    append(archive, graphicOf(button, palette.get(), 0, 0, 0, Graphic::RAW));
    append(archive, graphicOf(spinner, palette.get(), 0, 0, 0, Graphic::CLEAR | Graphic::LOOP));
}

// A tiny RIFF/WAVE file: 8-bit mono samples of a falling tone.
Content* chirp()
{
    constexpr unsigned int rate = 8000, samples = 2000, formatSize = 16;
    Content::Write wave;
    wave.add4("riff", 0x46464952);
    wave.add4("length", 36 + samples);
    wave.add4("wave", 0x45564157);
    wave.add4("fmt", 0x20746D66);
    wave.add4("format size", formatSize);
    wave.add2("pcm", 1);
    wave.add2("channels", 1);
    wave.add4("rate", rate);
    wave.add4("bytes a second", rate);
    wave.add2("block align", 1);
    wave.add2("bits", 8);
    wave.add4("data", 0x61746164);
    wave.add4("data size", samples);
    double phase = 0;
    for (unsigned int i = 0; i < samples; ++i) {
        phase += 2 * PI * (900.0 - 0.3 * i) / rate;
        wave.add1("sample", static_cast<unsigned char>(128 + 90 * std::sin(phase) * (samples - i) / samples));
    }
    std::unique_ptr<char[]> bytes(wave.gen());
    auto* entry = new Content("chirp", bytes.get(), wave.size());
    bytes.release();
    return entry;
}

// A shaded sphere in the cool colours of FONTS[2], ringed by an orange glow
// whose eight colours only its own block holds.
Content* glowingSphere()
{
    constexpr unsigned short glowOffset = 240, glowSize = 8;
    PaletteArray palette = coolPalette();
    for (unsigned int i = 0; i < glowSize; ++i) {
        layout::paintDacColor(palette.get() + (glowOffset + i) * PIXEL_SIZE, 63,
                                          static_cast<unsigned char>(20 + 4 * i), 4);
    }
    std::vector<Canvas> frames(1, Canvas(32, 32));
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 32; ++x) {
            const double distance = std::hypot(x - 15.5, y - 15.5);
            const double light = std::hypot(x - 11.0, y - 10.0);
            if (distance < 12)
                frames[0].put(x, y, entryOf(palette, 230 - static_cast<unsigned int>(light * 8)));
            else if (distance < 12 + glowSize / 2.0)
                frames[0].put(x, y, entryOf(palette, glowOffset + static_cast<unsigned int>((distance - 12) * 2)));
        }
    return graphicOf(frames, palette.get(), 0, glowOffset, glowSize, Graphic::PALETTE | Graphic::SHADOWS);
}

void sphersfxArchive(File& archive)
{
    append(archive, chirp());
    append(archive, glowingSphere());
}

void starnameArchive(File& archive)
{
    std::vector<std::string> names = {"Sol", "Vega", "Rigel", "Deneb", "Altair", "Mira", "Polaris", "Sirius"};
    std::vector<std::string> notes = {
        "A yellow star of middling size, home of a race that learned to sail between the stars late and quickly.",
        "A blue giant; its planets are young, hot and rich in metals, and nobody has lived there for long.",
        "A red variable that swells and shrinks; the colonies that tried it are remembered by their ruins."};
    append(archive, Content::Text::create(names));
    append(archive, Content::Text::create(notes));
}

} // namespace

// Each archive beside the function that fills it.
const std::vector<SampleArchive>& sampleArchives()
{
    static const std::vector<SampleArchive> archives = {
        {"FONTS.LBX", fontsArchive},       {"INBOX.LBX", inboxArchive},       {"CONFIRM.LBX", confirmArchive},
        {"SPHERSFX.LBX", sphersfxArchive}, {"STARNAME.LBX", starnameArchive},
    };
    return archives;
}

} // namespace lbxtool

