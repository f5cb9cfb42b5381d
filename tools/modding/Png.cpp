#include "tools/modding/Png.h"

#include "tools/modding/Shapes.h"

#include <libdeflate.h>
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>

namespace lbxtool {

namespace {

using zorv2::Lbx::layout::BLUE;
using zorv2::Lbx::layout::GREEN;
using zorv2::Lbx::layout::OPAQUE;
using zorv2::Lbx::layout::RED;

constexpr int INDEX_BITS = 8;

// Whatever the tool reads becomes a frame, which the library holds to 2^26
// pixels; a file that claims more is refused before its pixels have memory.
constexpr std::uint64_t MOST_PIXELS = std::uint64_t{1} << 26;
// The tool uses no ancillary chunk. These bound what a file can make libpng
// keep of them (its usual limits, set here since a build may lack them).
constexpr png_uint_32 MOST_KEPT_CHUNKS = 1000;
constexpr png_alloc_size_t LARGEST_KEPT_CHUNK = 8000000;

// The tool writes nothing but palette colours, for which filters cost time
// and seldom save bytes. zlib's fastest level then writes 2 to 7 times as
// fast as libpng's defaults, the files an eighth to a half larger, more for a
// texture that repeats at long distances (bench/png-compare).
constexpr int COMPRESSION_LEVEL = 1;
// zlib slides its window every 32 KiB of input, and its hash table with it:
// at the default 2^15 entries that took a third of export's instructions.
// 2^12 entries (memory level 5) leave the files of the bench's archive and
// the sample within 0.05% of their size and take a sixth off export.
constexpr int MEMORY_LEVEL = 5;

// The tool writes its files itself, libpng reads them (and every other):
//   signature (8) | IHDR | PLTE, with a palette | tRNS, with a transparent entry | IDAT | IEND
//   a chunk: length of its data (4, big-endian) | type (4) | data | CRC-32 of type and data
//   IHDR data: width (4) | height (4) | bit depth 8 | colour type | compression, filter, interlace 0
//   IDAT data: 0x78 0x01 | deflate of the rows, each behind its filter byte | Adler-32 of those
// zlib deflates the rows raw; the sums come from libdeflate, which takes
// many bytes an instruction where zlib's take one: zlib's Adler-32 was a
// sixth of export's instructions. libpng's writer, set up and torn down for
// each file, took a fiftieth of unpack's to write the head.
constexpr unsigned char SIGNATURE[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr unsigned char INDEXED_COLOURS = 3, RGBA_COLOURS = 6; // IHDR's colour types
constexpr std::size_t METHOD_BYTES = 3;                        // IHDR's compression, filter, interlace
constexpr unsigned char ZLIB_HEAD[] = {0x78, 0x01};          // 32 KiB window, fastest level
constexpr int RAW_WINDOW_BITS = -15;
constexpr unsigned char NO_FILTER = 0;
constexpr std::size_t WORD_SIZE = 4; // a chunk's length and each sum, big-endian
// What libpng reads at most a side, unless told otherwise: the tool writes
// nothing that it would not read back.
constexpr unsigned int MOST_SIDE = 1000000;

// libpng reports a failure to a callback that must not return. The callback
// keeps libpng's words and jumps back into `guarded`: only C data may live
// on the stack between the two, since a jump runs no destructor.
struct Failure {
    char message[160] = {};
};

[[noreturn]] void keepFailure(png_structp png, png_const_charp message)
{
    std::snprintf(static_cast<Failure*>(png_get_error_ptr(png))->message, sizeof(Failure::message), "%s", message);
    png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

// Runs `step`, libpng calls on C data alone; false when libpng failed.
template <typename Step>
bool guarded(png_structp png, const Step& step)
{
    if (setjmp(png_jmpbuf(png)))
        return false;
    step();
    return true;
}

struct Source {
    const unsigned char* bytes;
    std::size_t size;
    std::size_t offset;
};

void readSource(png_structp png, png_bytep data, std::size_t length)
{
    Source& source = *static_cast<Source*>(png_get_io_ptr(png));
    if (length > source.size - source.offset)
        png_error(png, "file ends early");
    std::memcpy(data, source.bytes + source.offset, length);
    source.offset += length;
}

std::vector<png_bytep> rowsOf(const unsigned char* pixels, std::size_t rowBytes, unsigned int height)
{
    std::vector<png_bytep> rows(height);
    for (unsigned int y = 0; y < height; ++y)
        rows[y] = const_cast<png_bytep>(pixels) + y * rowBytes;
    return rows;
}

// A raw deflate stream, ended however its owner leaves.
class Deflating {
public:
    Deflating()
    {
        if (deflateInit2(&stream, COMPRESSION_LEVEL, Z_DEFLATED, RAW_WINDOW_BITS, MEMORY_LEVEL, Z_DEFAULT_STRATEGY) != Z_OK)
            throw std::bad_alloc();
    }
    ~Deflating() { deflateEnd(&stream); }
    Deflating(const Deflating&) = delete;
    Deflating& operator=(const Deflating&) = delete;

    // Compresses `size` bytes onto the end of `out`, all that is pending
    // with them when `finish`.
    void add(const unsigned char* bytes, std::size_t size, std::string& out, bool finish)
    {
        stream.next_in = const_cast<unsigned char*>(bytes);
        stream.avail_in = static_cast<uInt>(size);
        const int flush = finish ? Z_FINISH : Z_NO_FLUSH;
        int result = Z_OK;
        do {
            stream.next_out = buffer;
            stream.avail_out = sizeof buffer;
            result = deflate(&stream, flush);
            if (result == Z_STREAM_ERROR)
                throw std::bad_alloc(); // no stream: only an allocation can have failed
            out.append(reinterpret_cast<const char*>(buffer), sizeof buffer - stream.avail_out);
        } while (stream.avail_in != 0 || stream.avail_out == 0 || (finish && result != Z_STREAM_END));
    }

private:
    static constexpr std::size_t STEP = 16384; // compressed bytes taken out at a time
    z_stream stream{};
    unsigned char buffer[STEP];
};

std::string bigEndian(std::uint32_t value)
{
    std::string bytes(WORD_SIZE, '\0');
    for (std::size_t i = 0; i < WORD_SIZE; ++i)
        bytes[i] = static_cast<char>(value >> (8 * (WORD_SIZE - 1 - i)));
    return bytes;
}

// A chunk's length and type onto `file`, its length to be set when it
// ends; where its type stands.
std::size_t beginChunk(std::string& file, const char* type)
{
    file.append(WORD_SIZE, '\0');
    const std::size_t typeAt = file.size();
    file += type;
    return typeAt;
}

// The chunk begun at `typeAt` takes the rest of `file` as its data.
void endChunk(std::string& file, std::size_t typeAt)
{
    const std::size_t data = file.size() - typeAt - WORD_SIZE;
    file.replace(typeAt - WORD_SIZE, WORD_SIZE, bigEndian(static_cast<std::uint32_t>(data)));
    file += bigEndian(libdeflate_crc32(0, &file[typeAt], file.size() - typeAt));
}

void appendChunk(std::string& file, const char* type, const std::string& data)
{
    const std::size_t typeAt = beginChunk(file, type);
    file += data;
    endChunk(file, typeAt);
}

std::string headerData(unsigned int width, unsigned int height, unsigned char colourType)
{
    return bigEndian(width) + bigEndian(height) + static_cast<char>(INDEX_BITS) + static_cast<char>(colourType) +
           std::string(METHOD_BYTES, '\0');
}

// The palette's colours, and their alphas up to the last one not opaque.
void appendPalette(std::string& file, const unsigned char* palette, unsigned int colours)
{
    std::string colour, alpha;
    std::size_t transparent = 0;
    for (unsigned int i = 0; i < colours; ++i) {
        const unsigned char* entry = palette + i * PIXEL_SIZE;
        colour += {static_cast<char>(entry[RED]), static_cast<char>(entry[GREEN]), static_cast<char>(entry[BLUE])};
        alpha += static_cast<char>(entry[ALPHA]);
        if (entry[ALPHA] != OPAQUE)
            transparent = i + 1;
    }
    appendChunk(file, "PLTE", colour);
    if (transparent != 0)
        appendChunk(file, "tRNS", alpha.substr(0, transparent));
}

// The image data chunk of an image's rows, unfiltered, onto `file`.
void appendImageData(std::string& file, const unsigned char* pixels, std::size_t rowBytes, unsigned int height)
{
    const std::size_t typeAt = beginChunk(file, "IDAT");
    file.append(reinterpret_cast<const char*>(ZLIB_HEAD), sizeof ZLIB_HEAD);
    Deflating deflating;
    std::vector<unsigned char> row(rowBytes + 1, NO_FILTER);
    std::uint32_t adler = libdeflate_adler32(1, nullptr, 0);
    for (unsigned int y = 0; y < height; ++y) {
        std::memcpy(&row[1], pixels + y * rowBytes, rowBytes);
        adler = libdeflate_adler32(adler, row.data(), row.size());
        deflating.add(row.data(), row.size(), file, false);
    }
    deflating.add(nullptr, 0, file, true);
    file += bigEndian(adler);
    endChunk(file, typeAt);
}

class Reading {
public:
    explicit Reading(const std::string& bytes)
        : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &failure, keepFailure, ignoreWarning)),
          info(png ? png_create_info_struct(png) : nullptr),
          source{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), 0}
    {
        if (info == nullptr) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw std::bad_alloc();
        }
    }
    ~Reading() { png_destroy_read_struct(&png, &info, nullptr); }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    Failure failure;
    png_structp png;
    png_infop info;
    Source source;
};

std::runtime_error unreadable(const std::string& name, const std::string& reason)
{
    return std::runtime_error("'" + name + "' is not a readable PNG (" + reason + ")");
}

// Any colour type and depth as 8-bit RGBA: a palette and grey through their
// colours, transparency (tRNS) as alpha, 16 bits cut to their high byte.
void convertToRgba(png_structp png)
{
    png_set_expand(png);
    png_set_strip_16(png);
    png_set_gray_to_rgb(png);
    png_set_add_alpha(png, OPAQUE, PNG_FILLER_AFTER);
}

void readPalette(png_structp png, png_infop info, Picture& picture)
{
    png_colorp colors = nullptr;
    int entries = 0;
    png_get_PLTE(png, info, &colors, &entries);
    png_bytep alphas = nullptr;
    int transparent = 0;
    png_get_tRNS(png, info, &alphas, &transparent, nullptr);
    std::vector<unsigned char> palette(std::size_t(entries) * PIXEL_SIZE);
    for (int i = 0; i < entries; ++i) {
        unsigned char* entry = &palette[i * PIXEL_SIZE];
        entry[RED] = colors[i].red;
        entry[GREEN] = colors[i].green;
        entry[BLUE] = colors[i].blue;
        entry[ALPHA] = i < transparent ? alphas[i] : OPAQUE;
    }
    takePalette(picture, palette);
}

// The PNG file of `pixels`: indices into `palette` when there is one, each
// entry's alpha its transparency, else RGBA.
std::string encoded(const unsigned char* pixels, unsigned int width, unsigned int height, const unsigned char* palette,
                    unsigned int colours, const std::string& name)
{
    const auto refused = [&](const std::string& reason) {
        return std::runtime_error("could not encode '" + name + "' (" + reason + ")");
    };
    if (width == 0 || height == 0 || width > MOST_SIDE || height > MOST_SIDE)
        throw refused(std::to_string(width) + "x" + std::to_string(height) + "; a PNG here is 1 to " +
                      std::to_string(MOST_SIDE) + " pixels a side");
    const bool indexed = palette != nullptr;
    try {
        std::string file(reinterpret_cast<const char*>(SIGNATURE), sizeof SIGNATURE);
        appendChunk(file, "IHDR", headerData(width, height, indexed ? INDEXED_COLOURS : RGBA_COLOURS));
        if (indexed)
            appendPalette(file, palette, colours);
        appendImageData(file, pixels, std::size_t(width) * (indexed ? 1 : PIXEL_SIZE), height);
        appendChunk(file, "IEND", "");
        return file;
    } catch (const std::bad_alloc&) {
        throw refused("out of memory");
    }
}

} // namespace

Picture readPicture(const std::string& bytes, const std::string& name)
{
    if (bytes.size() < sizeof SIGNATURE || png_sig_cmp(reinterpret_cast<png_const_bytep>(bytes.data()), 0, sizeof SIGNATURE) != 0)
        throw std::runtime_error("'" + name + "' is not a PNG file");
    Reading reading(bytes);
    png_structp png = reading.png;
    png_infop info = reading.info;
    const auto fail = [&] { return unreadable(name, reading.failure.message); };
    if (!guarded(png, [&] {
            png_set_read_fn(png, &reading.source, readSource);
            png_set_chunk_cache_max(png, MOST_KEPT_CHUNKS);
            png_set_chunk_malloc_max(png, LARGEST_KEPT_CHUNK);
            png_read_info(png, info);
        }))
        throw fail();
    Picture picture;
    picture.width = png_get_image_width(png, info);
    picture.height = png_get_image_height(png, info);
    if (std::uint64_t{picture.width} * picture.height > MOST_PIXELS)
        throw unreadable(name, std::to_string(picture.width) + "x" + std::to_string(picture.height) +
                                   ", more than " + std::to_string(MOST_PIXELS) + " pixels");
    // Left in the file's own form, an 8-bit indexed PNG's pixels are its
    // palette indices.
    picture.indexed =
        png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE && png_get_bit_depth(png, info) == INDEX_BITS;
    if (!guarded(png, [&] {
            if (!picture.indexed)
                convertToRgba(png);
            png_set_interlace_handling(png);
            png_read_update_info(png, info);
        }))
        throw fail();
    picture.pixels.resize(png_get_rowbytes(png, info) * picture.height);
    const std::vector<png_bytep> rows = rowsOf(picture.pixels.data(), png_get_rowbytes(png, info), picture.height);
    if (!guarded(png, [&] {
            png_read_image(png, const_cast<png_bytepp>(rows.data()));
            png_read_end(png, nullptr);
        }))
        throw fail();
    if (picture.indexed)
        readPalette(png, info, picture);
    return picture;
}

std::string indexedPng(const unsigned char* indices, unsigned int width, unsigned int height,
                       const unsigned char* palette, const std::string& name, unsigned int colours)
{
    return encoded(indices, width, height, palette, std::min(colours, COLORS), name);
}

std::string rgbaPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string& name)
{
    return encoded(rgba, width, height, nullptr, 0, name);
}

} // namespace lbxtool
