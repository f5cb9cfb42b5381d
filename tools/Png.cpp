#include "tools/Png.h"

#include "tools/Inputs.h"
#include "tools/Pictures.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"

#include <lodepng.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace lbxtool {

namespace {

constexpr unsigned int SHEET_COLUMNS = 8;
constexpr unsigned int INDEX_BITS = 8;

std::runtime_error unreadable(const std::string& name, unsigned error)
{
    return std::runtime_error("'" + name + "' is not a readable PNG (" + lodepng_error_text(error) + ")");
}

std::string encoded(unsigned error, const std::vector<unsigned char>& png, const std::string& name)
{
    if (error != 0)
        throw std::runtime_error("could not encode '" + name + "' (" + lodepng_error_text(error) + ")");
    return std::string(png.begin(), png.end());
}

} // namespace

Picture readPicture(const std::string& bytes, const std::string& name)
{
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    lodepng::State state;
    Picture picture;
    unsigned error = lodepng_inspect(&picture.width, &picture.height, &state, data, bytes.size());
    if (error != 0)
        throw unreadable(name, error);
    // Left in the file's own form, an 8-bit indexed PNG's pixels are its
    // palette indices.
    const LodePNGColorMode& stored = state.info_png.color;
    picture.indexed = stored.colortype == LCT_PALETTE && stored.bitdepth == INDEX_BITS;
    state.decoder.color_convert = picture.indexed ? 0 : 1;
    error = lodepng::decode(picture.pixels, picture.width, picture.height, state, data, bytes.size());
    if (error != 0)
        throw unreadable(name, error);
    if (picture.indexed) {
        picture.palette.assign(PALETTE_BYTES, 0);
        std::copy(stored.palette, stored.palette + stored.palettesize * PIXEL_SIZE, picture.palette.begin());
        if (stored.palettesize != COLORS) {
            picture.pixels = rgbaOf(picture);
            picture.indexed = false;
        }
    }
    return picture;
}

std::vector<unsigned char> rgbaOf(const Picture& picture)
{
    if (!picture.indexed)
        return picture.pixels;
    std::vector<unsigned char> rgba;
    rgba.reserve(picture.pixels.size() * PIXEL_SIZE);
    for (const unsigned char index : picture.pixels)
        rgba.insert(rgba.end(), &picture.palette[index * PIXEL_SIZE], &picture.palette[index * PIXEL_SIZE] + PIXEL_SIZE);
    return rgba;
}

Image loadPng(const std::string& path)
{
    const Picture picture = readPicture(readBytes(path), path);
    return {picture.width, picture.height, rgbaOf(picture)};
}

std::string indexedPng(const unsigned char* indices, unsigned int width, unsigned int height,
                       const unsigned char* palette, const std::string& name)
{
    lodepng::State state;
    for (LodePNGColorMode* mode : {&state.info_raw, &state.info_png.color}) {
        mode->colortype = LCT_PALETTE;
        mode->bitdepth = INDEX_BITS;
        for (unsigned int i = 0; i < COLORS; ++i) {
            const unsigned char* entry = palette + i * PIXEL_SIZE;
            lodepng_palette_add(mode, entry[0], entry[1], entry[2], entry[ALPHA]);
        }
    }
    state.encoder.auto_convert = 0;
    std::vector<unsigned char> png;
    return encoded(lodepng::encode(png, indices, width, height, state), png, name);
}

std::string rgbaPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string& name)
{
    lodepng::State state;
    state.encoder.auto_convert = 0;
    std::vector<unsigned char> png;
    return encoded(lodepng::encode(png, rgba, width, height, state), png, name);
}

void savePng(const std::string& path, const unsigned char* rgba, unsigned int width, unsigned int height)
{
    writeBytes(path, rgbaPng(rgba, width, height, path));
}

Image spriteSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height)
{
    const unsigned int count = static_cast<unsigned int>(frames.size());
    const unsigned int columns = std::min(count, SHEET_COLUMNS);
    const unsigned int rows = columns == 0 ? 0 : (count + columns - 1) / columns;
    Image sheet;
    sheet.width = columns * width;
    sheet.height = rows * height;
    sheet.rgba.assign(std::size_t(sheet.width) * sheet.height * PIXEL_SIZE, 0);
    const std::size_t rowBytes = std::size_t(width) * PIXEL_SIZE;
    for (unsigned int f = 0; f < count; ++f) {
        const std::size_t left = std::size_t(f % columns) * width;
        const std::size_t top = std::size_t(f / columns) * height;
        for (unsigned int y = 0; y < height; ++y)
            std::memcpy(&sheet.rgba[((top + y) * sheet.width + left) * PIXEL_SIZE], frames[f] + y * rowBytes,
                        rowBytes);
    }
    return sheet;
}

} // namespace lbxtool
