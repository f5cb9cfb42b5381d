// An animation's frames as the PNG files unpack writes: in the entry's own
// indices where an index is left for unpainted pixels, and a sheet of them
// that shows what the frames show.
#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Png.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace lbxtool;

namespace {

constexpr unsigned int WIDTH = 3, HEIGHT = 2, PIXELS = WIDTH * HEIGHT;
constexpr unsigned char ALPHA = 3, OPAQUE = 255;

// Every colour different from every other, all opaque.
std::vector<unsigned char> shownPalette()
{
    std::vector<unsigned char> palette(256 * 4, OPAQUE);
    for (unsigned int i = 0; i < 256; ++i) {
        palette[i * 4] = static_cast<unsigned char>(i);
        palette[i * 4 + 1] = static_cast<unsigned char>(255 - i);
        palette[i * 4 + 2] = static_cast<unsigned char>(i * 7);
    }
    return palette;
}

// `count` frames whose pixels run through `indices` from frame to frame.
std::vector<Indices> framesOf(unsigned int count, const Indices& indices)
{
    std::vector<Indices> frames(count, Indices(PIXELS));
    for (unsigned int p = 0; p < count * PIXELS; ++p)
        frames[p / PIXELS][p % PIXELS] = indices[p % indices.size()];
    return frames;
}

Indices allIndicesAnd(std::initializer_list<unsigned short> more)
{
    Indices indices(more);
    for (unsigned short i = 0; i < 256; ++i)
        indices.push_back(i);
    return indices;
}

// Pixel `p` of a picture as RGBA, transparent ones as four zeros: what a
// viewer shows, whatever colour an unseen pixel keeps.
std::vector<unsigned char> seen(const Picture& picture, std::size_t p)
{
    std::vector<unsigned char> rgba = rgbaOf(picture);
    std::vector<unsigned char> pixel(rgba.begin() + p * 4, rgba.begin() + p * 4 + 4);
    return pixel[ALPHA] == 0 ? std::vector<unsigned char>(4, 0) : pixel;
}

std::vector<unsigned char> shownAs(unsigned short index, const std::vector<unsigned char>& palette)
{
    if (index == CLEAR)
        return std::vector<unsigned char>(4, 0);
    return {palette.begin() + index * 4, palette.begin() + index * 4 + 4};
}

// What unpack's check takes for a frame's file instead of reading it back.
void expectSamePicture(const Picture& made, const Picture& read, const std::string& what)
{
    EXPECT_EQ(made.width, read.width) << what;
    EXPECT_EQ(made.height, read.height) << what;
    EXPECT_EQ(made.indexed, read.indexed) << what;
    EXPECT_EQ(made.pixels, read.pixels) << what;
    EXPECT_EQ(made.palette, read.palette) << what;
}

struct Case {
    const char* what;
    std::vector<Indices> frames;
    int clear;
    bool framesIndexed;
    bool sheetIndexed;
    int transparent;
};

} // namespace

TEST(FramePngs, FramesKeepTheEntrysIndicesAndTheSheetShowsThemAsTheyShow)
{
    const Case cases[] = {
        {"unpainted pixels take the highest index no frame paints", framesOf(3, {0, 9, CLEAR, 4, 254, 1}),
         CHOOSE_CLEAR, true, true, 255},
        {"frames that paint every pixel; the sheet's empty corner takes a free index", framesOf(9, {0, 1, 2, 3, 255}),
         CHOOSE_CLEAR, true, true, NO_INDEX},
        {"each index painted and a pixel left unpainted", framesOf(48, allIndicesAnd({CLEAR})), CHOOSE_CLEAR, false,
         false, NO_INDEX},
        {"each index painted, every pixel too, with an empty corner", framesOf(44, allIndicesAnd({})), CHOOSE_CLEAR,
         true, false, NO_INDEX},
        {"each index painted, every pixel too, in full rows", framesOf(48, allIndicesAnd({})), CHOOSE_CLEAR, true,
         true, NO_INDEX},
        {"a cursor's index 0 stands for unpainted pixels", framesOf(20, {CLEAR, 7, 7, 200, CLEAR, 3}), CURSOR_CLEAR,
         true, true, CURSOR_CLEAR},
        {"one frame has no sheet", framesOf(1, {CLEAR, 5}), CHOOSE_CLEAR, true, true, 255},
    };
    const std::vector<unsigned char> palette = shownPalette();
    for (const Case& c : cases) {
        std::vector<std::string> names;
        for (std::size_t f = 0; f < c.frames.size(); ++f)
            names.push_back("frame" + std::to_string(f) + ".png");
        const FramePngs made = framePngs(c.frames, WIDTH, HEIGHT, palette.data(), c.clear, names, "sheet.png");
        EXPECT_EQ(made.transparent, c.transparent) << c.what;
        ASSERT_EQ(made.frames.size(), c.frames.size()) << c.what;
        ASSERT_EQ(made.pictures.size(), c.frames.size()) << c.what;
        for (std::size_t f = 0; f < c.frames.size(); ++f) {
            const Picture frame = readPicture(made.frames[f], names[f]);
            expectSamePicture(made.pictures[f], frame, c.what);
            EXPECT_EQ(frame.indexed, c.framesIndexed) << c.what;
            for (std::size_t p = 0; p < PIXELS; ++p) {
                const unsigned short index = c.frames[f][p];
                EXPECT_EQ(seen(frame, p), shownAs(index, palette)) << c.what << ", frame " << f << ", pixel " << p;
                if (frame.indexed) {
                    EXPECT_EQ(frame.pixels[p], index == CLEAR ? c.transparent : index) << c.what;
                }
            }
        }
        if (c.frames.size() == 1) {
            EXPECT_TRUE(made.sheet.empty()) << c.what;
            continue;
        }
        const Picture sheet = readPicture(made.sheet, "sheet.png");
        EXPECT_EQ(sheet.indexed, c.sheetIndexed) << c.what;
        const unsigned int columns = std::min<unsigned int>(8, static_cast<unsigned int>(c.frames.size()));
        const unsigned int rows = (static_cast<unsigned int>(c.frames.size()) + columns - 1) / columns;
        ASSERT_EQ(sheet.width, columns * WIDTH) << c.what;
        ASSERT_EQ(sheet.height, rows * HEIGHT) << c.what;
        for (unsigned int y = 0; y < sheet.height; ++y)
            for (unsigned int x = 0; x < sheet.width; ++x) {
                const std::size_t f = y / HEIGHT * columns + x / WIDTH;
                const unsigned short index =
                    f < c.frames.size() ? c.frames[f][y % HEIGHT * WIDTH + x % WIDTH] : CLEAR;
                EXPECT_EQ(seen(sheet, std::size_t(y) * sheet.width + x), shownAs(index, palette))
                    << c.what << ", sheet at " << x << "," << y;
            }
    }
}
