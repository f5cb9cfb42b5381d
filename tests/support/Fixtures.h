#ifndef ZORV2_LBX_TESTS_SUPPORT_FIXTURES_H
#define ZORV2_LBX_TESTS_SUPPORT_FIXTURES_H

// What the tests, the fuzz targets and the benchmarks build their inputs
// from: entry bytes, entries and archives, a scratch directory, and entries
// the library made itself.
#include "Lbx.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace fixtures {

using zorv2::Lbx::Content;
using Graphic = Content::Graphic;

// Entry bytes are a std::string, so that literals, '+' and file contents
// compose without casts; decoded images and palette arrays, which the
// library takes as unsigned char*, are Pixels.
using Bytes = std::string;
using Pixels = std::vector<unsigned char>;

inline Bytes le16(unsigned int value)
{
    return {static_cast<char>(value & 0xFF), static_cast<char>((value >> 8) & 0xFF)};
}

inline Bytes le32(unsigned int value)
{
    return le16(value & 0xFFFF) + le16(value >> 16);
}

// Bytes given as numbers, for values above 127 that a char cannot spell.
inline Bytes octets(std::initializer_list<unsigned int> values)
{
    Bytes bytes;
    for (unsigned int value : values)
        bytes += static_cast<char>(value);
    return bytes;
}

// A new[] block with a copy of `bytes`, for the calls that take one over.
inline char* block(const Bytes& bytes)
{
    char* data = new char[bytes.size()];
    std::memcpy(data, bytes.data(), bytes.size());
    return data;
}

// Bytes as an entry of a block of its own, classified as the library would.
inline std::unique_ptr<Content> entryOf(const Bytes& bytes, const std::string& name = "t.lbx[3]")
{
    std::unique_ptr<char[]> data(block(bytes));
    auto entry = std::make_unique<Content>(name, data.get(), static_cast<unsigned int>(bytes.size()));
    data.release();
    return entry;
}

inline Bytes bytesOf(const char* data, std::size_t size)
{
    return Bytes(data, size);
}

inline Bytes bytesOf(Content* entry)
{
    return bytesOf(entry->data(), entry->size());
}

// An archive laid out as the writer lays it out, with or without the tag word.
inline Bytes archive(const std::vector<Bytes>& entries, bool tag = true)
{
    Bytes bytes = le16(static_cast<unsigned int>(entries.size())) + le32(0xFEAD) + le16(0);
    unsigned int offset = 2048;
    bytes += le32(offset);
    for (const Bytes& entry : entries)
        bytes += le32(offset += static_cast<unsigned int>(entry.size()));
    if (tag)
        bytes += "ZORV";
    bytes.resize(2048, '\0');
    for (const Bytes& entry : entries)
        bytes += entry;
    return bytes;
}

inline std::unique_ptr<unsigned char[]> fakePalette()
{
    return std::unique_ptr<unsigned char[]>(Content::Palette::fake());
}

// A directory of its own, removed with everything in it when the object goes.
class TempDir {
public:
    explicit TempDir(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
    {
        std::string pattern = (parent / "zorv2-lbx-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("cannot make a directory in " + parent.string());
        root = pattern;
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return (root / name).string(); }

    std::string file(const std::string& name, const Bytes& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

private:
    std::filesystem::path root;
};

// A text table of `records`.
inline Content* table(std::vector<std::string> records)
{
    return Content::Text::create(records);
}

inline Bytes readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The text of the std::runtime_error that `call` throws, so that a test can
// compare it exactly; empty when it returns.
inline std::string thrownBy(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

// Header and frame table of a crafted graphic entry; clearOnce and clearMod are 0.
inline Bytes graphicHeader(unsigned int width, unsigned int height, unsigned int frames, unsigned int flags,
                           std::initializer_list<unsigned int> table)
{
    Bytes bytes = le16(width) + le16(height) + le16(0) + le16(frames) + le16(0) + le16(flags);
    for (unsigned int offset : table)
        bytes += le32(offset);
    return bytes;
}

// Six by four pixels, -1 where nothing is painted. Frame 1 changes x = 4 of
// row 2 to index 3; frame 2 repeats frame 1.
inline const std::vector<int> EXAMPLE[3] = {
    {-1, 1, 2, -1, -1, 5, -1, -1, -1, -1, -1, -1, 7, -1, -1, 8, 9, 10, -1, -1, -1, -1, -1, -1},
    {-1, 1, 2, -1, -1, 5, -1, -1, -1, -1, -1, -1, 7, -1, -1, 8, 3, 10, -1, -1, -1, -1, -1, -1},
    {-1, 1, 2, -1, -1, 5, -1, -1, -1, -1, -1, -1, 7, -1, -1, 8, 3, 10, -1, -1, -1, -1, -1, -1}};

// EXAMPLE as the encoder stores it.
inline Bytes exampleEntry()
{
    return graphicHeader(6, 4, 3, 0, {0x1C, 0x44, 0x54, 0x5C}) +
           octets({1, 0, 0, 0, 2, 0, 1, 0, 1, 2, 1, 0, 2, 0, 5, 0, 0, 0, 2, 0,
                   1, 0, 0, 0, 7, 0, 3, 0, 2, 0, 8, 9, 10, 0, 0, 0, 0xE8, 3, 0, 0}) +
           octets({1, 0, 2, 0, 1, 0, 4, 0, 3, 0, 0, 0, 0xE8, 3, 0, 0}) + octets({1, 0, 4, 0, 0, 0, 0, 0});
}

// An RGBA image of palette colours; unpainted pixels are four zero bytes.
inline Pixels image(const std::vector<int>& indices, const unsigned char* palette)
{
    Pixels rgba(indices.size() * 4, 0);
    for (std::size_t i = 0; i < indices.size(); ++i)
        if (indices[i] >= 0)
            std::memcpy(&rgba[i * 4], palette + indices[i] * 4, 4);
    return rgba;
}

// `pixels` indices, -1 but where `at` paints.
inline std::vector<int> painted(unsigned int pixels, const std::map<unsigned int, int>& at)
{
    std::vector<int> indices(pixels, -1);
    for (const auto& [pixel, index] : at)
        indices[pixel] = index;
    return indices;
}

inline Pixels pixelsOf(const unsigned char* rgba, unsigned int pixels)
{
    return Pixels(rgba, rgba + pixels * 4u);
}

// One entry of every kind made by the library, in an order unlike the
// classification order; the caller owns them.
inline std::vector<Content*> entriesOfEveryKind()
{
    auto palette = fakePalette();
    Pixels image(2 * 2 * 4, 0);
    std::copy(palette.get() + 8, palette.get() + 12, image.begin());
    unsigned char* frames[] = {image.data()};
    Pixels cursorImage(576 * 4, 0);
    std::vector<unsigned char*> cursorFrames(20, cursorImage.data());
    std::vector<unsigned short> heights(6, 7);
    std::vector<unsigned char> widths(1536, 3);
    std::vector<std::string> strings = {"one", "two"};
    const Bytes sound = "RIFF" + le32(9) + "WAVEfmt x";
    const Bytes race = le16(13) + le16(31) + Bytes(403, 'r');
    const Bytes abcost = Bytes(52, 'a') + Bytes(4, '\0');

    return {
        Content::Text::create(strings),
        entryOf("abc").release(),
        Graphic::create(frames, palette.get(), 2, 2, 1, 0, 0, 0, 0, 0),
        entryOf(abcost).release(),
        Content::Cursor::create(palette.get(), cursorFrames.data()),
        entryOf(Bytes(3957, 'L')).release(),
        Content::Empty::create(),
        entryOf(race).release(),
        Content::Font::create(palette.get(), heights.data(), widths.data(), nullptr),
        entryOf(sound).release(),
        Content::Empty::create(true),
    };
}

// Animations with the settings that change how frames are stored: deltas, a
// frame that starts empty, a palette block, raw frames; the caller owns them.
inline std::vector<Content*> animations()
{
    auto palette = fakePalette();
    constexpr unsigned int width = 8, height = 6, pixel = 4;
    Pixels still(width * height * pixel, 0);
    for (unsigned int p = 5; p < width * height; p += 3)
        std::copy(palette.get() + pixel * p, palette.get() + pixel * p + pixel, still.begin() + pixel * p);
    Pixels moved(still.size(), 0);
    std::copy(still.begin(), still.end() - pixel, moved.begin() + pixel); // one pixel to the right
    unsigned char* frames[] = {still.data(), moved.data(), moved.data(), still.data()};
    // Raw frames store every pixel, so none may be transparent.
    Pixels opaque(palette.get(), palette.get() + still.size());
    unsigned char* rawFrames[] = {opaque.data(), opaque.data()};

    return {
        Graphic::create(frames, palette.get(), width, height, 4, 0, 0, 0, 0, Graphic::LOOP),
        Graphic::create(frames, palette.get(), width, height, 4, 2, 3, 16, 8, Graphic::PALETTE | Graphic::SHADOWS),
        Graphic::create(rawFrames, palette.get(), width, height, 2, 0, 0, 250, 6, Graphic::RAW | Graphic::PALETTE),
    };
}

} // namespace fixtures

#endif
