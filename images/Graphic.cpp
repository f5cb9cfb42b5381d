#include "images/Graphic.h"

#include "images/Palette.h"
#include "images/PixelLayout.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

namespace {

using Graphic = Content::Graphic;
using Write = Content::Write;
using namespace layout;

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

constexpr unsigned int WORD_SIZE = 2;
constexpr unsigned short FRAME_START = 1;
constexpr unsigned short END_OF_ROW = 0;
constexpr unsigned short END_OF_FRAME = 1000;
// An empty frame stores the height in place of its first skip, or this mark
// when the height is too small to tell it from a skip.
constexpr unsigned short EMPTY_FRAME_MARK = 636;
constexpr unsigned int EMPTY_MARK_MAX_HEIGHT = 2;
constexpr unsigned int COMPRESSED_ALIGN = 8;
// A row's skip, its end, one run's count and offset, and that run's fill.
constexpr unsigned int ROW_FIELDS_SIZE = 4 * WORD_SIZE + 1;
constexpr unsigned int RAW_ALIGN = 4;
constexpr std::uint64_t RAW_MAX_FILL = 3;


// What decoding may ask of memory. 16-bit sides could ask for 17 GB a frame,
// and 65535 frames cached on the way to the last one for a thousand times
// that, from an entry of a few hundred kilobytes. No graphic of the game
// comes near either limit: a frame above the first, or a cache that would
// grow above the second, is refused before anything is allocated.
constexpr std::uint64_t MAX_FRAME_PIXELS = std::uint64_t{1} << 26;     // 256 MiB of RGBA
constexpr std::uint64_t MAX_CACHED_PIXELS = std::uint64_t{1} << 28;    // 1 GiB of RGBA

std::runtime_error invalidFrameIndex(unsigned int index, const std::string& name)
{
    return std::runtime_error("invalid frame index '" + std::to_string(index) + "' for graphic " + name);
}

std::runtime_error noInternalPalette(const std::string& name)
{
    return std::runtime_error("graphic " + name + " does not have an internal palette");
}

std::runtime_error tooLargeToDecode(const std::string& name, unsigned int width, unsigned int height,
                                    const std::string& frames = "")
{
    return std::runtime_error("graphic " + name + " is too large to decode (" + std::to_string(width) + "x" +
                              std::to_string(height) + frames + ")");
}

std::runtime_error rowsTooFarApart(unsigned int frame)
{
    return std::runtime_error("graphic frame " + std::to_string(frame) +
                              " has painted rows 1000 apart, which cannot be stored");
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

// The frame buffer that a compressed stream paints. Over a frame that
// starts empty it zeroes every pixel that no run reaches, each once, as the
// runs pass it or when the stream ends, however it ends: the same image as
// clearing the buffer first, in one pass over it instead of two.
class Canvas {
public:
    Canvas(unsigned char* pixels, std::uint64_t count, bool clear) : pixels(pixels), count(count), clear(clear)
    {
    }

    ~Canvas()
    {
        zeroUpTo(count);
    }

    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // The caller has made sure that [first, first + length) lies in the image.
    void paintRun(std::uint64_t first, const unsigned char* indices, std::size_t length, const unsigned char* palette)
    {
        zeroUpTo(first);
        paint(pixels + first * PIXEL_SIZE, indices, length, palette);
        untouched = std::max(untouched, first + length);
    }

private:
    // Everything from `untouched` on has been neither painted nor zeroed.
    void zeroUpTo(std::uint64_t end)
    {
        if (!clear || end <= untouched)
            return;
        std::memset(pixels + untouched * PIXEL_SIZE, 0, (end - untouched) * PIXEL_SIZE);
        untouched = end;
    }

    unsigned char* pixels;
    std::uint64_t count;
    bool clear;
    std::uint64_t untouched = 0;
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

// Whether a pixel's colour differs from the one under it at DAC precision.
// One test for all three components and no branch: the encoder asks it of
// whole rows at once.
bool differsAtDac(const unsigned char* now, const unsigned char* before)
{
    const unsigned int differing = (now[RED] ^ before[RED]) | (now[GREEN] ^ before[GREEN]) | (now[BLUE] ^ before[BLUE]);
    return differing >> DAC_SHIFT != 0;
}

// Whether a pixel is left out of its frame: a transparent one always; over a
// predecessor (null for a frame that starts empty) also one that shows the
// same colour at DAC precision, whatever the predecessor's alpha.
bool leftOut(const unsigned char* now, const unsigned char* before)
{
    if (now[ALPHA] == 0)
        return true;
    return before && !differsAtDac(now, before);
}

// An entry's bytes as they are made, in a block that becomes the entry's
// own: nothing is zeroed before it is written, and a block that came out
// about the size it was reserved at is handed over without a copy.
class EntryBlock {
public:
    explicit EntryBlock(std::size_t reserved) : bytes(new char[reserved]), room(reserved)
    {
    }

    void push(char byte)
    {
        *extend(1) = byte;
    }

    // Room for `count` bytes at the end, for the caller to write.
    char* extend(std::size_t count)
    {
        if (room - used < count)
            grow(count);
        char* end = bytes.get() + used;
        used += count;
        return end;
    }

    char* data()
    {
        return bytes.get();
    }

    std::size_t size() const
    {
        return used;
    }

    // The block, cut to its size unless that would free an eighth or less.
    char* release()
    {
        if (room - used > used / 8)
            resize(used);
        return bytes.release();
    }

private:
    void grow(std::size_t count)
    {
        resize(std::max(room * 2, used + count));
    }

    void resize(std::size_t size)
    {
        std::unique_ptr<char[]> resized(new char[size]);
        std::copy(bytes.get(), bytes.get() + used, resized.get());
        bytes = std::move(resized);
        room = size;
    }

    std::unique_ptr<char[]> bytes;
    std::size_t room;
    std::size_t used = 0;
};

// Marks which of `count` pixels show, 1 or 0, in one pass without branches
// that the compiler widens: over nothing, those not transparent.
ZORV2_LBX_WIDE_LOOP void markOpaque(const unsigned char* now, std::size_t count, unsigned char* marks)
{
    for (std::size_t x = 0; x < count; ++x)
        marks[x] = now[x * PIXEL_SIZE + ALPHA] != 0;
}

// Over a predecessor, those not transparent that differ from it at DAC
// precision.
ZORV2_LBX_WIDE_LOOP void markChanged(const unsigned char* now, const unsigned char* before, std::size_t count,
                                     unsigned char* marks)
{
    for (std::size_t x = 0; x < count; ++x)
        marks[x] = (now[x * PIXEL_SIZE + ALPHA] != 0) & differsAtDac(now + x * PIXEL_SIZE, before + x * PIXEL_SIZE);
}

// Where the encoder's fields go. Labelled, each is a field of the frame's
// builder, compared when that builder verifies. Plain, where nothing can be
// verified, the same bytes gather in a block of their own, so that a pixel
// costs a store instead of a labelled field.
class FieldSink {
public:
    explicit FieldSink(Write& fields) : fields(&fields)
    {
    }

    // The frame starts at the end of `bytes`, which may hold frames before it.
    explicit FieldSink(EntryBlock& bytes) : bytes(&bytes), start(bytes.size())
    {
    }

    void add1(const char* label, unsigned char value, bool compare = true)
    {
        if (fields)
            fields->add1(label, value, compare);
        else
            bytes->push(static_cast<char>(value));
    }

    void add2(const char* label, unsigned short value, bool compare = true)
    {
        if (fields) {
            fields->add2(label, value, compare);
            return;
        }
        char* word = bytes->extend(WORD_SIZE);
        word[0] = static_cast<char>(value & 0xFF);
        word[1] = static_cast<char>(value >> 8);
    }

    // `count` palette indices, which `fill` writes into the array it is
    // given, each a field under `label`.
    template <typename Fill>
    void addColors(const char* label, unsigned int count, Fill fill)
    {
        if (fields) {
            indices.resize(count);
            fill(indices.data());
            const std::string name = label;
            for (unsigned char index : indices)
                fields->add1(name, index);
            return;
        }
        fill(reinterpret_cast<unsigned char*>(bytes->extend(count)));
    }

    unsigned int size()
    {
        return fields ? fields->size() : static_cast<unsigned int>(bytes->size() - start);
    }

private:
    Write* fields = nullptr;
    EntryBlock* bytes = nullptr;
    std::size_t start = 0;
    std::vector<unsigned char> indices;
};

// Turns whole RGBA images into frames that paint only what differs from the
// image the frame starts from.
class FrameEncoder {
public:
    FrameEncoder(unsigned char** frames, unsigned char* palette, unsigned int width, unsigned int height,
                 unsigned int frameCount, unsigned char clearOnce, unsigned char clearMod, unsigned short flags)
        : frames(frames), colors(palette, 0, COLORS), width(width), height(height), frameCount(frameCount),
          clearOnce(clearOnce), clearMod(clearMod), flags(flags), shown(width)
    {
    }

    void encode(FieldSink& out, unsigned int frame)
    {
        const bool clear = Graphic::isClear(frame, frameCount, clearOnce, clearMod, flags);
        predecessor = clear ? nullptr : frames[frame - 1];
        if (flags & Graphic::RAW)
            raw(out, frame);
        else
            compressed(out, frame);
    }

private:
    unsigned char* pixel(unsigned int frame, unsigned int index)
    {
        return frames[frame] + std::size_t{index} * PIXEL_SIZE;
    }

    // The palette indices of `count` pixels from pixel `first` on, as fields.
    void addColors(FieldSink& out, const char* label, unsigned int frame, unsigned int first, unsigned int count)
    {
        out.addColors(label, count, [&](unsigned char* indices) { colors.findAll(pixel(frame, first), count, indices); });
    }

    // A raw frame has no transparency: every pixel must be in the palette.
    void raw(FieldSink& out, unsigned int frame)
    {
        addColors(out, "raw color", frame, 0, width * height);
        while (out.size() % RAW_ALIGN != 0)
            out.add1("raw fill", 0);
    }

    void compressed(FieldSink& out, unsigned int frame)
    {
        out.add2("frame start", FRAME_START);
        unsigned int row = nextPaintedRow(frame, 0);
        if (row == height) {
            // Nothing painted: the skip word alone reaches past the bottom.
            if (height > EMPTY_MARK_MAX_HEIGHT)
                out.add2("eof0", static_cast<unsigned short>(height), false);
            else
                out.add2("eof636", EMPTY_FRAME_MARK, false);
        } else {
            // The first skip counts rows from the top, every later one the
            // distance from the row written before.
            out.add2("yoff", static_cast<unsigned short>(row));
            for (;;) {
                runs(out, frame, row);
                out.add2("eol", END_OF_ROW);
                const unsigned int next = nextPaintedRow(frame, row + 1);
                if (next == height)
                    break;
                // That distance would read as the end mark; there is no other
                // way to write it.
                if (next - row == END_OF_FRAME)
                    throw rowsTooFarApart(frame);
                out.add2("yoff", static_cast<unsigned short>(next - row));
                row = next;
            }
            out.add2("eof", END_OF_FRAME);
        }
        while (out.size() % COMPRESSED_ALIGN != 0)
            out.add1("fill", 0, false);
    }

    // The first row from `from` on with a pixel that shows, or the height;
    // `shown` is left marked for that row.
    unsigned int nextPaintedRow(unsigned int frame, unsigned int from)
    {
        for (unsigned int y = from; y < height; ++y)
            if (markShown(frame, y))
                return y;
        return height;
    }

    // Marks in `shown` which pixels of row `y` show (1) and which are left
    // out (0), in one pass without branches that the compiler widens, and
    // tells whether any shows.
    bool markShown(unsigned int frame, unsigned int y)
    {
        // Locals, so that the stores through `marks` need no reloads; and a
        // full-width counter, which the compiler may step four pixels at once.
        const std::size_t pixels = width;
        // A row of no pixels shows none, and has no marks to scan.
        if (pixels == 0)
            return false;
        const std::size_t rowStart = y * pixels * PIXEL_SIZE;
        const unsigned char* now = frames[frame] + rowStart;
        unsigned char* marks = shown.data();
        if (!predecessor)
            markOpaque(now, pixels, marks);
        else
            markChanged(now, predecessor + rowStart, pixels, marks);
        return std::memchr(marks, 1, pixels) != nullptr;
    }

    // The runs of row `y`, as `shown` marks it. A run is cut by a pixel left
    // out and by the right edge, nowhere else; repeated colours are not
    // folded.
    void runs(FieldSink& out, unsigned int frame, unsigned int y)
    {
        const unsigned char* marks = shown.data();
        unsigned int x = 0;
        while (x < width) {
            const unsigned int gapStart = x;
            const void* shows = std::memchr(marks + x, 1, width - x);
            if (!shows)
                return;
            const unsigned int runStart = static_cast<unsigned int>(static_cast<const unsigned char*>(shows) - marks);
            const void* leftOut = std::memchr(marks + runStart, 0, width - runStart);
            x = leftOut ? static_cast<unsigned int>(static_cast<const unsigned char*>(leftOut) - marks) : width;
            const unsigned int length = x - runStart;
            out.add2("color count", static_cast<unsigned short>(length));
            out.add2("xoff", static_cast<unsigned short>(runStart - gapStart));
            addColors(out, "color", frame, y * width + runStart, length);
            // Words stay on even distances.
            if (length % 2 != 0)
                out.add1("colorFill", 0);
        }
    }

    unsigned char** frames;
    // The image that the frame being encoded paints over; null when it
    // starts empty.
    const unsigned char* predecessor = nullptr;
    Content::Palette::Index colors;
    unsigned int width;
    unsigned int height;
    unsigned int frameCount;
    unsigned char clearOnce;
    unsigned char clearMod;
    unsigned short flags;
    // Which pixels of the row being encoded show.
    std::vector<unsigned char> shown;
};

void writePaletteBlock(Write& header, unsigned char* internalPalette, unsigned short palOffset,
                       unsigned short palSize)
{
    header.add2("palOffset", palOffset);
    header.add2("palSize", palSize);
    std::unique_ptr<unsigned char[]> dac(Content::Palette::pal2dac(internalPalette, 0));
    // A palette array ends at index 255: colours that a block claims beyond it
    // are written as zeros, never read from past the array.
    const unsigned int end = unsigned{palOffset} + palSize;
    for (unsigned int i = palOffset; i < end; ++i)
        for (unsigned int k = 0; k < DAC_COLOR_SIZE; ++k)
            header.add1("palColor", i < COLORS ? dac[i * DAC_COLOR_SIZE + k] : 0);
}

// Everything of an entry but its frames, as its header and palette block
// give it.
struct Settings {
    unsigned short width;
    unsigned short height;
    unsigned short frameCount;
    unsigned char clearOnce;
    unsigned char clearMod;
    unsigned short flags;
    // The palette whose colours the palette block stores, when it has one.
    unsigned char* internalPalette;
    unsigned short palOffset;
    unsigned short palSize;
};

FrameEncoder encoderOf(unsigned char** frames, unsigned char* palette, const Settings& entry)
{
    return FrameEncoder(frames, palette, entry.width, entry.height, entry.frameCount, entry.clearOnce,
                        entry.clearMod, entry.flags);
}

// Room for a frame that paints every pixel in one run a row, so that growing
// never copies what is encoded; what a sparse frame leaves unused is never
// touched.
std::uint64_t likelyFrameSize(const Settings& entry)
{
    return pixelsOf(entry.width, entry.height) + std::uint64_t{entry.height} * ROW_FIELDS_SIZE + COMPRESSED_ALIGN;
}

// Whether the flags ask for a palette block; nothing else decides it.
bool withPalette(const Settings& entry)
{
    return (entry.flags & Graphic::PALETTE) != 0;
}

// Where the first frame starts: after the header, the table and the
// palette block.
unsigned int headSize(const Settings& entry)
{
    return tableEnd(entry.frameCount) + (withPalette(entry) ? PAL_HEAD_SIZE + entry.palSize * DAC_COLOR_SIZE : 0);
}

// The header, the table from the frames' sizes, and the palette block.
void appendHead(Write& header, const Settings& entry, const std::vector<unsigned int>& frameSizes)
{
    header.add2("width", entry.width);
    header.add2("height", entry.height);
    header.add2("0", 0);
    header.add2("frames", entry.frameCount);
    header.add1("clearOnce", entry.clearOnce);
    header.add1("clearMod", entry.clearMod);
    header.add2("flags", entry.flags);
    unsigned int offset = headSize(entry);
    header.add4("offset0", offset);
    for (unsigned int size : frameSizes) {
        offset += size;
        header.add4("offset", offset);
    }
    if (withPalette(entry))
        writePaletteBlock(header, entry.internalPalette, entry.palOffset, entry.palSize);
}

// The whole entry as labelled fields, for verifying: each frame into its own
// builder first, since the table needs their sizes.
void appendGraphic(Write& header, std::vector<Write>& frameWrites, unsigned char** frames, unsigned char* palette,
                   const Settings& entry)
{
    FrameEncoder encoder = encoderOf(frames, palette, entry);
    std::vector<unsigned int> frameSizes;
    for (unsigned int f = 0; f < entry.frameCount; ++f) {
        FieldSink out(frameWrites[f]);
        encoder.encode(out, f);
        frameSizes.push_back(frameWrites[f].size());
    }
    appendHead(header, entry, frameSizes);
    for (unsigned int f = 0; f < entry.frameCount; ++f)
        header.add(frameWrites[f]);
}

// The whole entry as plain bytes, where nothing is verified: the frames one
// behind the other into the entry's block, behind room for the head, which
// is written into it once the frames' sizes are known.
Content* plainGraphic(unsigned char** frames, unsigned char* palette, const Settings& entry)
{
    FrameEncoder encoder = encoderOf(frames, palette, entry);
    const unsigned int headBytes = headSize(entry);
    EntryBlock block(static_cast<std::size_t>(headBytes + likelyFrameSize(entry) * entry.frameCount));
    block.extend(headBytes);
    std::vector<unsigned int> frameSizes;
    for (unsigned int f = 0; f < entry.frameCount; ++f) {
        FieldSink out(block);
        encoder.encode(out, f);
        frameSizes.push_back(out.size());
    }
    Write head;
    appendHead(head, entry, frameSizes);
    const std::unique_ptr<char[]> headWritten(head.gen());
    std::copy(headWritten.get(), headWritten.get() + headBytes, block.data());
    const auto size = static_cast<unsigned int>(block.size());
    return Content::AbstractContent::genContent(block.release(), size, Content::GRAPHIC);
}

std::string debugFrameName(unsigned int index)
{
    std::ostringstream name;
    name << "graphic frame " << std::setw(3) << index;
    return name.str();
}

} // namespace

Content::Graphic::Graphic(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type), imageWidth(0), imageHeight(0), frameCount(0), flagWord(0),
      clearOnceValue(0), clearModValue(0), ownPalette(nullptr), frameTable(nullptr), paletteBlock(0),
      currentPalette(nullptr), frameCache(nullptr), cachedFrames(0)
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
    cachedFrames = 0;
}

void Content::Graphic::recycleFrames()
{
    if (!frameCache)
        return;
    for (unsigned int i = 0; i < frameCount; ++i) {
        if (frameCache[i])
            spareFrames.emplace_back(frameCache[i]);
        frameCache[i] = nullptr;
    }
    cachedFrames = 0;
}

unsigned char* Content::Graphic::frameBuffer(std::size_t bytes)
{
    if (spareFrames.empty())
        return new unsigned char[bytes];
    unsigned char* buffer = spareFrames.back().release();
    spareFrames.pop_back();
    return buffer;
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
    for (unsigned int p = paletteBlock + PAL_HEAD_SIZE; p < frameTable[0] && index < COLORS;
         p += DAC_COLOR_SIZE, ++index) {
        paintDacColor(dest + index * PIXEL_SIZE, read1(p + DAC_RED), read1(p + DAC_GREEN), read1(p + DAC_BLUE));
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
    recycleFrames();
    // A palette that this graphic installed for itself goes when it is
    // replaced; one that a caller gives stays the caller's.
    if (installedPalette.get() != palette)
        installedPalette.reset();
    currentPalette = palette;
}

unsigned char** Content::Graphic::decodeIndices()
{
    std::unique_ptr<unsigned char[]> fake(Palette::fake());
    setPalette(fake.get());
    installedPalette = std::move(fake);
    return pixarray();
}

std::size_t Content::Graphic::frameBytes()
{
    const std::uint64_t pixels = pixelsOf(imageWidth, imageHeight);
    if (pixels > MAX_FRAME_PIXELS)
        throw tooLargeToDecode(name, imageWidth, imageHeight);
    return static_cast<std::size_t>(pixels * PIXEL_SIZE);
}

void Content::Graphic::ensureCacheRoom(std::uint64_t frames)
{
    if (frames * pixelsOf(imageWidth, imageHeight) > MAX_CACHED_PIXELS)
        throw tooLargeToDecode(name, imageWidth, imageHeight, ", " + std::to_string(frames) + " frames");
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
    // Room for every buffer up front, so that recycling them never allocates.
    spareFrames.reserve(frameCount);

    // A delta frame paints over its predecessor: replay from the nearest
    // frame that starts empty or is decoded already. Frame 0 always starts
    // empty, which ends the walk back.
    unsigned int first = index;
    unsigned int missing = 1;
    for (; !frameCache[first] && !isClear(first); --first)
        missing += frameCache[first - 1] ? 0 : 1;
    ensureCacheRoom(std::uint64_t{cachedFrames} + missing);
    for (unsigned int i = first; i <= index; ++i) {
        if (frameCache[i])
            continue;
        frameCache[i] = frameBuffer(bytes);
        ++cachedFrames;
        // A frame that starts empty is not cleared before it is painted: a
        // raw frame paints every pixel, and a compressed one zeroes the
        // pixels that its runs pass over.
        const bool clear = isClear(i);
        if (!clear)
            std::memcpy(frameCache[i], frameCache[i - 1], bytes);
        if (hasFlag(RAW))
            genFrameUncompressed(i);
        else
            paintCompressed(i, clear);
    }
    return frameCache[index];
}

unsigned char** Content::Graphic::pixarray()
{
    // An animation too large to hold is refused before its first frame is decoded.
    ensureCacheRoom(frameCount);
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

void Content::Graphic::genFrameCompressed(unsigned int index)
{
    paintCompressed(index, false);
}

// The stream is trusted no further than its bytes and the image reach. A run
// that is cut off, or that would paint outside the image, ends the frame
// quietly; what was painted before it stays. Row ends move the pixel position
// with 32-bit wrap-around arithmetic, and the image's height plays no part.
void Content::Graphic::paintCompressed(unsigned int index, bool clear)
{
    const std::uint64_t pixels = pixelsOf(imageWidth, imageHeight);
    // No pixels to paint, and no width to find a row end with.
    if (pixels == 0)
        return;
    Canvas out(frameCache[index], pixels, clear);
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
        out.paintRun(q, indices, count, currentPalette);
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

bool Content::Graphic::isTransparent(unsigned int pixel, unsigned char** frames, unsigned int frame,
                                     unsigned int frameCount, unsigned char clearOnce, unsigned char clearMod,
                                     unsigned short flags)
{
    const std::size_t at = std::size_t{pixel} * PIXEL_SIZE;
    const unsigned char* now = frames[frame] + at;
    // The predecessor is only looked at when the pixel is visible.
    if (now[ALPHA] == 0)
        return true;
    return leftOut(now, isClear(frame, frameCount, clearOnce, clearMod, flags) ? nullptr : frames[frame - 1] + at);
}

void Content::Graphic::create(Write& header, std::vector<Write>& frameWrites, unsigned char** frames,
                              unsigned char* palette, unsigned short width, unsigned short height,
                              unsigned short frameCount, unsigned char clearOnce, unsigned char clearMod,
                              unsigned char* internalPalette, unsigned short palOffset, unsigned short palSize,
                              unsigned short flags)
{
    appendGraphic(header, frameWrites, frames, palette,
                  {width, height, frameCount, clearOnce, clearMod, flags, internalPalette, palOffset, palSize});
}

Content* Content::Graphic::create(unsigned char** frames, unsigned char* palette, unsigned short width,
                                  unsigned short height, unsigned short frameCount, unsigned char clearOnce,
                                  unsigned char clearMod, unsigned short palOffset, unsigned short palSize,
                                  unsigned short flags)
{
    return plainGraphic(frames, palette,
                        {width, height, frameCount, clearOnce, clearMod, flags, palette, palOffset, palSize});
}

Content* Content::Graphic::create(unsigned char* palette, unsigned char clearOnce, unsigned char clearMod,
                                  unsigned short palOffset, unsigned short palSize, unsigned short flags,
                                  Content* content)
{
    Graphic* source = content->graphic();
    unsigned char** frames = source->decodeIndices();
    return plainGraphic(frames, source->currentPalette,
                        {source->imageWidth, source->imageHeight, source->frameCount, clearOnce, clearMod, flags,
                         palette, palOffset, palSize});
}

Content* Content::Graphic::create(unsigned char* palette, unsigned short palOffset, unsigned short palSize,
                                  Content* content)
{
    Graphic* source = content->graphic();
    return create(palette, source->clearOnceValue, source->clearModValue, palOffset, palSize, source->flagWord,
                  content);
}

Content* Content::Graphic::create(unsigned char* palette, Content* content)
{
    Graphic* source = content->graphic();
    return create(palette, source->paletteOffset(), source->paletteSize(), content);
}

Content* Content::Graphic::createDebug(Content* content)
{
    return createDebug(content, std::cerr);
}

Content* Content::Graphic::createDebug(Content* content, std::ostream& report)
{
    Graphic* source = content->graphic();
    unsigned char** frames = source->decodeIndices();
    Settings entry{source->imageWidth, source->imageHeight, source->frameCount, source->clearOnceValue,
                   source->clearModValue, source->flagWord, nullptr, 0, 0};
    if (source->hasPalette()) {
        entry.internalPalette = source->palette();
        entry.palOffset = source->paletteOffset();
        entry.palSize = source->paletteSize();
    }
    if (Content* same = rebuiltAsIs(content, [&] { return plainGraphic(frames, source->currentPalette, entry); }))
        return same;

    Write header;
    header.setDebug("graphic", content->data(), content->size(), report);
    std::vector<Write> frameWrites;
    frameWrites.reserve(source->frameCount);
    for (unsigned int i = 0; i < source->frameCount; ++i) {
        Write frame;
        const unsigned int begin = source->frameTable[i];
        frame.setDebug(debugFrameName(i), content->data() + begin, source->frameTable[i + 1] - begin, report);
        frameWrites.push_back(frame);
    }
    appendGraphic(header, frameWrites, frames, source->currentPalette, entry);
    return genContent(header, GRAPHIC);
}

} // namespace Lbx
} // namespace zorv2
