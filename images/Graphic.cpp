#include "images/Graphic.h"

#include "images/Palette.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

namespace {

using Graphic = Content::Graphic;

// An entry, all numbers little-endian:
//
//    0  width       2
//    2  height      2
//    4  reserved    2      always 0
//    6  frames      2      F
//    8  clearOnce   1
//    9  clearMod    1
//   10  flags       2
//   12  table       4 x (F + 1)   start of frames 0 .. F-1, then the entry's size
//    H  = (F + 4) x 4, the first byte behind the table
//    H  palette block, only with FLAG::PALETTE:
//         palOffset 2, palSize 2, palSize colours of lead, red, green, blue (DAC)
//   table[0] .. the frames, each up to the next table entry
//
// A compressed frame: word 1, the rows skipped from the top, then for each
// painted row its runs (pixel count, pixels skipped, one index a pixel, a pad
// byte behind an odd count), a 0 word to end the row and the distance to the
// next painted row, or 1000 for the end; zeros up to a multiple of 8. A raw
// frame: width x height indices, zeros up to a multiple of 4.
constexpr unsigned int MIN_SIZE = 20;
constexpr unsigned int WIDTH_OFFSET = 0;
constexpr unsigned int HEIGHT_OFFSET = 2;
constexpr unsigned int RESERVED_OFFSET = 4;
constexpr unsigned int FRAMES_OFFSET = 6;
constexpr unsigned int CLEAR_ONCE_OFFSET = 8;
constexpr unsigned int CLEAR_MOD_OFFSET = 9;
constexpr unsigned int FLAGS_OFFSET = 10;
constexpr unsigned int TABLE_OFFSET = 12;
constexpr unsigned int OFFSET_SIZE = 4;

constexpr unsigned int PAL_OFFSET_FIELD = 0;
constexpr unsigned int PAL_SIZE_FIELD = 2;
constexpr unsigned int PAL_HEAD_SIZE = 4;
constexpr unsigned int DAC_COLOR_SIZE = 4;
constexpr unsigned int DAC_RED = 1, DAC_GREEN = 2, DAC_BLUE = 3;

constexpr unsigned int WORD_SIZE = 2;
constexpr unsigned short FRAME_START = 1;
constexpr unsigned short END_OF_ROW = 0;
constexpr unsigned short END_OF_FRAME = 1000;
constexpr std::uint64_t RAW_MAX_FILL = 3;

constexpr unsigned int PALETTE_COLORS = 256;
constexpr unsigned int PIXEL_SIZE = 4;
constexpr unsigned int PALETTE_BYTES = PALETTE_COLORS * PIXEL_SIZE;
constexpr unsigned int RED = 0, GREEN = 1, BLUE = 2, ALPHA = 3;
constexpr unsigned char OPAQUE = 255;

// 16-bit sides could ask for 17 GB a frame. No image of the game comes near
// this; a frame above it is refused instead of allocated.
constexpr std::uint64_t MAX_DECODED_PIXELS = std::uint64_t{1} << 26;

std::runtime_error invalidFrameIndex(unsigned int index, const std::string& name)
{
    return std::runtime_error("invalid frame index '" + std::to_string(index) + "' for graphic " + name);
}

std::runtime_error noInternalPalette(const std::string& name)
{
    return std::runtime_error("graphic " + name + " does not have an internal palette");
}

std::runtime_error tooLargeToDecode(const std::string& name, unsigned int width, unsigned int height)
{
    return std::runtime_error("graphic " + name + " is too large to decode (" + std::to_string(width) + "x" +
                              std::to_string(height) + ")");
}

unsigned int tableEnd(unsigned int frames)
{
    return TABLE_OFFSET + (frames + 1) * OFFSET_SIZE;
}

std::uint64_t pixelsOf(unsigned int width, unsigned int height)
{
    return std::uint64_t{width} * height;
}

// A clearOnce naming the last frame, or one beyond it, has no effect.
bool clearOnceCounts(unsigned int clearOnce, unsigned int frames)
{
    return clearOnce != 0 && clearOnce + 1 < frames;
}

// Palette entries are copied whole, alpha included: index 0 is a colour like
// any other.
void paint(unsigned char* pixels, const unsigned char* indices, std::size_t count, const unsigned char* palette)
{
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(pixels + i * PIXEL_SIZE, palette + std::size_t{indices[i]} * PIXEL_SIZE, PIXEL_SIZE);
}

// A cursor over the bytes [position, end) of one frame. Every read checks
// first that its bytes are there, so that no lying count and no cut stream
// takes the decoder outside the frame.
class BoundedReader {
public:
    BoundedReader(char* data, std::uint64_t position, std::uint64_t end)
        : data(data), position(std::min(position, end)), end(end)
    {
    }

    bool word(unsigned short& value)
    {
        if (end - position < WORD_SIZE)
            return false;
        value = Content::AbstractContent::read2(data, static_cast<unsigned int>(position));
        position += WORD_SIZE;
        return true;
    }

    // The next `count` bytes, or null when the frame holds fewer.
    const unsigned char* take(std::uint64_t count)
    {
        if (end - position < count)
            return nullptr;
        const auto* bytes = reinterpret_cast<const unsigned char*>(data + position);
        position += count;
        return bytes;
    }

    void skip(std::uint64_t count)
    {
        position += std::min(count, end - position);
    }

private:
    char* data;
    std::uint64_t position;
    std::uint64_t end;
};

bool rawFrameFits(char* data, unsigned int begin, unsigned int end, std::uint64_t pixels)
{
    const std::uint64_t length = end - begin;
    if (length < pixels || length - pixels > RAW_MAX_FILL)
        return false;
    for (std::uint64_t i = pixels; i < length; ++i)
        if (data[begin + i] != 0)
            return false;
    return true;
}

} // namespace

Content::Graphic::Graphic(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type), imageWidth(0), imageHeight(0), frameCount(0), flagWord(0),
      clearOnceValue(0), clearModValue(0), ownPalette(nullptr), frameTable(nullptr), paletteBlock(0),
      currentPalette(nullptr), frameCache(nullptr)
{
    if (size < MIN_SIZE)
        return;
    imageWidth = read2(WIDTH_OFFSET);
    imageHeight = read2(HEIGHT_OFFSET);
    if (read2(RESERVED_OFFSET) != 0)
        return;
    frameCount = read2(FRAMES_OFFSET);
    clearOnceValue = read1(CLEAR_ONCE_OFFSET);
    clearModValue = read1(CLEAR_MOD_OFFSET);
    flagWord = read2(FLAGS_OFFSET);
    paletteBlock = tableEnd(frameCount);
    if (paletteBlock > size)
        return;
    std::unique_ptr<unsigned int[]> table(new unsigned int[frameCount + 1]);
    if (!readTable(table.get()) || !framesFit(table.get()))
        return;
    std::unique_ptr<unsigned char*[]> cache(new unsigned char*[frameCount]());
    frameTable = table.release();
    frameCache = cache.release();
    valid = true;
}

bool Content::Graphic::readTable(unsigned int* table)
{
    for (unsigned int i = 0; i <= frameCount; ++i) {
        table[i] = read4(TABLE_OFFSET + i * OFFSET_SIZE);
        if (table[i] > size)
            return false;
        // Offsets rise strictly: no frame is empty.
        if (i == 0 ? !firstOffsetFits(table[0]) : table[i] <= table[i - 1])
            return false;
    }
    return table[frameCount] == size;
}

// Frame 0 starts right behind the table, or right behind the palette block,
// whose two words must then lie inside the entry.
bool Content::Graphic::firstOffsetFits(unsigned int first)
{
    if (!hasPalette())
        return first == paletteBlock;
    if (std::uint64_t{paletteBlock} + PAL_HEAD_SIZE > size)
        return false;
    const unsigned int colors = read2(paletteBlock + PAL_SIZE_FIELD);
    return first == std::uint64_t{paletteBlock} + PAL_HEAD_SIZE + std::uint64_t{colors} * DAC_COLOR_SIZE;
}

// Only the first word of a compressed frame is looked at; the streams are
// trusted until they are decoded.
bool Content::Graphic::framesFit(unsigned int* table)
{
    const std::uint64_t pixels = pixelsOf(imageWidth, imageHeight);
    for (unsigned int i = 0; i < frameCount; ++i) {
        if (hasFlag(RAW)) {
            if (!rawFrameFits(data, table[i], table[i + 1], pixels))
                return false;
        } else if (std::uint64_t{table[i]} + WORD_SIZE >= size || read2(table[i]) != FRAME_START) {
            return false;
        }
    }
    return true;
}

Content::Graphic::~Graphic()
{
    dropFrames();
    delete[] frameCache;
    delete[] frameTable;
    delete[] ownPalette;
}

void Content::Graphic::dropFrames()
{
    if (!frameCache)
        return;
    for (unsigned int i = 0; i < frameCount; ++i) {
        delete[] frameCache[i];
        frameCache[i] = nullptr;
    }
}

unsigned short Content::Graphic::width()
{
    return imageWidth;
}

unsigned short Content::Graphic::height()
{
    return imageHeight;
}

unsigned short Content::Graphic::frames()
{
    return frameCount;
}

unsigned char Content::Graphic::clearOnce()
{
    return clearOnceValue;
}

unsigned char Content::Graphic::clearMod()
{
    return clearModValue;
}

bool Content::Graphic::hasFlags()
{
    return flagWord != 0;
}

bool Content::Graphic::hasFlag(FLAG flag)
{
    return (flagWord & flag) != 0;
}

bool Content::Graphic::hasPalette()
{
    return hasFlag(PALETTE);
}

unsigned short Content::Graphic::paletteOffset()
{
    return hasPalette() ? read2(paletteBlock + PAL_OFFSET_FIELD) : 0;
}

unsigned short Content::Graphic::paletteSize()
{
    return hasPalette() ? read2(paletteBlock + PAL_SIZE_FIELD) : 0;
}

void Content::Graphic::palette(unsigned char* dest)
{
    if (!hasPalette())
        throw noInternalPalette(name);
    // Only the low byte of palOffset counts. Colours that a block claims past
    // index 255 have no entry to go to and are ignored.
    unsigned int index = read1(paletteBlock + PAL_OFFSET_FIELD);
    for (unsigned int p = paletteBlock + PAL_HEAD_SIZE; p < frameTable[0] && index < PALETTE_COLORS;
         p += DAC_COLOR_SIZE, ++index) {
        const unsigned char red = Palette::fromDac(read1(p + DAC_RED));
        const unsigned char green = Palette::fromDac(read1(p + DAC_GREEN));
        const unsigned char blue = Palette::fromDac(read1(p + DAC_BLUE));
        unsigned char* entry = dest + index * PIXEL_SIZE;
        entry[RED] = red;
        entry[GREEN] = green;
        entry[BLUE] = blue;
        entry[ALPHA] = OPAQUE;
    }
}

unsigned char* Content::Graphic::palette()
{
    if (!ownPalette) {
        std::unique_ptr<unsigned char[]> built(Palette::empty());
        palette(built.get());
        ownPalette = built.release();
    }
    return ownPalette;
}

unsigned char* Content::Graphic::paletteCopy()
{
    const unsigned char* source = palette();
    auto* copy = new unsigned char[PALETTE_BYTES];
    std::memcpy(copy, source, PALETTE_BYTES);
    return copy;
}

void Content::Graphic::setPalette(unsigned char* palette)
{
    dropFrames();
    // Stored, not copied: the caller keeps it alive while frames are decoded.
    currentPalette = palette;
}

std::size_t Content::Graphic::frameBytes()
{
    const std::uint64_t pixels = pixelsOf(imageWidth, imageHeight);
    if (pixels > MAX_DECODED_PIXELS)
        throw tooLargeToDecode(name, imageWidth, imageHeight);
    return static_cast<std::size_t>(pixels * PIXEL_SIZE);
}

unsigned char* Content::Graphic::frame(unsigned int index)
{
    if (index >= frameCount)
        throw invalidFrameIndex(index, name);
    if (frameCache[index])
        return frameCache[index];
    if (!currentPalette)
        currentPalette = palette();
    const std::size_t bytes = frameBytes();

    // A delta frame paints over its predecessor: replay from the nearest
    // frame that starts empty or is decoded already. Frame 0 always starts
    // empty, which ends the walk back.
    unsigned int first = index;
    while (!frameCache[first] && !isClear(first))
        --first;
    for (unsigned int i = first; i <= index; ++i) {
        if (frameCache[i])
            continue;
        frameCache[i] = new unsigned char[bytes];
        if (isClear(i))
            std::memset(frameCache[i], 0, bytes);
        else
            std::memcpy(frameCache[i], frameCache[i - 1], bytes);
        if (hasFlag(RAW))
            genFrameUncompressed(i);
        else
            genFrameCompressed(i);
    }
    return frameCache[index];
}

unsigned char** Content::Graphic::pixarray()
{
    for (unsigned int i = 0; i < frameCount; ++i)
        frame(i);
    return frameCache;
}

bool Content::Graphic::isClear(unsigned int index)
{
    return isClear(index, frameCount, clearOnceValue, clearModValue, flagWord);
}

bool Content::Graphic::isClear(unsigned int index, unsigned int frames, unsigned char clearOnce,
                               unsigned char clearMod, unsigned short flags)
{
    return index == 0 || (flags & RAW) || (flags & CLEAR) || (clearMod != 0 && index % clearMod == 0) ||
           (clearOnceCounts(clearOnce, frames) && clearOnce == index);
}

// The stream is trusted no further than its bytes and the image reach. A run
// that is cut off, or that would paint outside the image, ends the frame
// quietly; what was painted before it stays. Row ends move the pixel position
// with 32-bit wrap-around arithmetic, and the image's height plays no part.
void Content::Graphic::genFrameCompressed(unsigned int index)
{
    const std::uint64_t pixels = pixelsOf(imageWidth, imageHeight);
    // No pixels to paint, and no width to find a row end with.
    if (pixels == 0)
        return;
    unsigned char* out = frameCache[index];
    const std::uint32_t width = imageWidth;
    BoundedReader stream(data, std::uint64_t{frameTable[index]} + WORD_SIZE, frameTable[index + 1]);
    unsigned short word = 0;
    if (!stream.word(word))
        return;
    std::uint32_t q = width * word;
    unsigned short count = 0;
    while (stream.word(count)) {
        if (count == END_OF_ROW) {
            if (!stream.word(word) || word == END_OF_FRAME)
                return;
            // To the start of the row `word` rows below the last run's row;
            // a run that ended at the right edge left q in the next row.
            const std::uint32_t column = q % width;
            q += column != 0 ? width * word - column : width * (std::uint32_t{word} - 1);
            continue;
        }
        if (!stream.word(word))
            return;
        q += word;
        const unsigned char* indices = stream.take(count);
        if (!indices || std::uint64_t{q} + count > pixels)
            return;
        paint(out + std::size_t{q} * PIXEL_SIZE, indices, count, currentPalette);
        q += count;
        stream.skip(count % 2);
    }
}

// Recognition made sure that the frame holds every pixel.
void Content::Graphic::genFrameUncompressed(unsigned int index)
{
    const auto* indices = reinterpret_cast<const unsigned char*>(data + frameTable[index]);
    paint(frameCache[index], indices, pixelsOf(imageWidth, imageHeight), currentPalette);
}

std::string Content::Graphic::info()
{
    // The width is right-aligned in 4 characters and the height follows as it
    // is, so that " 320x200" and "  64x64" line up.
    std::ostringstream line;
    line << std::setw(4) << imageWidth << 'x' << imageHeight << ' ' << std::setw(3) << frameCount
         << " frames   options:";
    const bool clearsOnce = clearOnceCounts(clearOnceValue, frameCount);
    if (!hasFlags() && !clearsOnce && clearModValue == 0) {
        line << " none";
        return line.str();
    }
    if (clearsOnce)
        line << " clearonce[" << unsigned{clearOnceValue} << "]";
    if (clearModValue != 0)
        line << " clearmod[" << unsigned{clearModValue} << "]";
    if (hasFlag(CLEAR))
        line << " clear";
    if (hasFlag(LOOP))
        line << " loop";
    if (hasPalette())
        line << " palette[" << paletteOffset() << "," << paletteSize() << "]";
    if (hasFlag(RAW))
        line << " raw";
    if (hasFlag(SHADOWS))
        line << " shadows";
    return line.str();
}

} // namespace Lbx
} // namespace zorv2
