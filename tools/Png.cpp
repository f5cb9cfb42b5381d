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

} // namespace

Image loadPng(const std::string& path)
{
    requireRegularFile(path);
    const std::string reason = unreadableReason(path);
    if (!reason.empty())
        throw std::runtime_error("could not open '" + path + "' (" + reason + ")");
    Image image;
    const unsigned error = lodepng::decode(image.rgba, image.width, image.height, path);
    if (error != 0)
        throw std::runtime_error("'" + path + "' is not a readable PNG (" + lodepng_error_text(error) + ")");
    return image;
}

void savePng(const std::string& path, const unsigned char* rgba, unsigned int width, unsigned int height)
{
    std::vector<unsigned char> png;
    const unsigned error = lodepng::encode(png, rgba, width, height);
    if (error != 0)
        throw std::runtime_error("could not encode '" + path + "' (" + lodepng_error_text(error) + ")");
    writeBytes(path, std::string(png.begin(), png.end()));
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
