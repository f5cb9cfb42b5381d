// The page's own PNG layer, in place of the tool's libpng one, for the same
// header. Pictures from the user are decoded by the page's PNG decoder
// (png.js) and then held to the rules the tool's reading holds them to, with
// its messages; the PNGs the editable forms hold only in memory are written
// uncompressed, which costs the page no deflate of its own.

#include "tools/modding/Crc32.h"
#include "tools/modding/Png.h"
#include "tools/modding/Shapes.h"

#include <emscripten/val.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace lbxtool {

namespace {

using emscripten::val;
using zorv2::Lbx::layout::ALPHA;
using zorv2::Lbx::layout::OPAQUE;

const char SIGNATURE[] = "\x89PNG\r\n\x1a\n";
constexpr std::size_t SIGNATURE_SIZE = 8;
constexpr std::uint64_t MOST_PIXELS = std::uint64_t{1} << 26;

//  IHDR: width(4) height(4) depth(1) colour type(1) compression(1) filter(1) interlace(1)
constexpr unsigned char INDEX_BITS = 8;
constexpr unsigned char PALETTE_TYPE = 3;
constexpr unsigned char RGBA_TYPE = 6;
// A stored deflate block holds at most this many bytes.
constexpr std::size_t STORED_BLOCK = 65535;
constexpr std::uint32_t ADLER_BASE = 65521;

std::runtime_error unreadable(const std::string& name, const std::string& reason)
{
    return std::runtime_error("'" + name + "' is not a readable PNG (" + reason + ")");
}

void putBigEndian(std::string& out, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out += static_cast<char>((value >> shift) & 0xFF);
}

void putChunk(std::string& file, const char* type, const std::string& data)
{
    putBigEndian(file, static_cast<std::uint32_t>(data.size()));
    const std::string typed = std::string(type, 4) + data;
    file += typed;
    putBigEndian(file, crc32Of(typed));
}

std::uint32_t adler32Of(const std::string& bytes)
{
    std::uint32_t low = 1, high = 0;
    for (const char byte : bytes) {
        low = (low + static_cast<unsigned char>(byte)) % ADLER_BASE;
        high = (high + low) % ADLER_BASE;
    }
    return (high << 16) | low;
}

// A zlib stream of stored blocks.
std::string stored(const std::string& bytes)
{
    std::string stream = "\x78\x01";
    std::size_t at = 0;
    do {
        const std::size_t length = std::min(STORED_BLOCK, bytes.size() - at);
        const bool last = at + length == bytes.size();
        stream += static_cast<char>(last ? 1 : 0);
        stream += static_cast<char>(length & 0xFF);
        stream += static_cast<char>(length >> 8);
        stream += static_cast<char>(~length & 0xFF);
        stream += static_cast<char>((~length >> 8) & 0xFF);
        stream.append(bytes, at, length);
        at += length;
    } while (at < bytes.size());
    putBigEndian(stream, adler32Of(bytes));
    return stream;
}

std::string encoded(const unsigned char* pixels, unsigned int width, unsigned int height, const unsigned char* palette,
                    unsigned int colours)
{
    const std::size_t rowBytes = std::size_t(width) * (palette != nullptr ? 1 : PIXEL_SIZE);
    std::string header;
    putBigEndian(header, width);
    putBigEndian(header, height);
    header += static_cast<char>(INDEX_BITS);
    header += static_cast<char>(palette != nullptr ? PALETTE_TYPE : RGBA_TYPE);
    header.append(3, '\0');
    std::string rows;
    rows.reserve((rowBytes + 1) * height);
    for (unsigned int y = 0; y < height; ++y) {
        rows += '\0'; // no filter
        rows.append(reinterpret_cast<const char*>(pixels) + y * rowBytes, rowBytes);
    }
    std::string file(SIGNATURE, SIGNATURE_SIZE);
    putChunk(file, "IHDR", header);
    if (palette != nullptr) {
        std::string entries, alphas;
        for (unsigned int i = 0; i < colours; ++i) {
            entries.append(reinterpret_cast<const char*>(palette) + i * PIXEL_SIZE, 3);
            alphas += static_cast<char>(palette[i * PIXEL_SIZE + ALPHA]);
        }
        putChunk(file, "PLTE", entries);
        while (!alphas.empty() && static_cast<unsigned char>(alphas.back()) == OPAQUE)
            alphas.pop_back();
        if (!alphas.empty())
            putChunk(file, "tRNS", alphas);
    }
    putChunk(file, "IDAT", stored(rows));
    putChunk(file, "IEND", "");
    return file;
}

std::vector<unsigned char> bytesOf(const val& array)
{
    return emscripten::convertJSArrayToNumberVector<unsigned char>(array);
}

} // namespace

Picture readPicture(const std::string& bytes, const std::string& name)
{
    if (bytes.size() < SIGNATURE_SIZE || std::memcmp(bytes.data(), SIGNATURE, SIGNATURE_SIZE) != 0)
        throw std::runtime_error("'" + name + "' is not a PNG file");
    const val decoded = val::module_property("decodePng")(
        val(emscripten::typed_memory_view(bytes.size(), reinterpret_cast<const unsigned char*>(bytes.data()))));
    if (decoded["error"].isString())
        throw unreadable(name, decoded["error"].as<std::string>());
    Picture picture;
    picture.width = decoded["width"].as<unsigned int>();
    picture.height = decoded["height"].as<unsigned int>();
    if (std::uint64_t{picture.width} * picture.height > MOST_PIXELS)
        throw unreadable(name, std::to_string(picture.width) + "x" + std::to_string(picture.height) +
                                   ", more than " + std::to_string(MOST_PIXELS) + " pixels");
    picture.indexed = decoded["indexed"].as<bool>();
    picture.pixels = bytesOf(decoded["pixels"]);
    if (picture.indexed)
        takePalette(picture, bytesOf(decoded["palette"]));
    return picture;
}

std::string indexedPng(const unsigned char* indices, unsigned int width, unsigned int height,
                       const unsigned char* palette, const std::string&, unsigned int colours)
{
    return encoded(indices, width, height, palette, std::min(colours, COLORS));
}

std::string rgbaPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string&)
{
    return encoded(rgba, width, height, nullptr, 0);
}

} // namespace lbxtool
