#include "tools/modding/PaletteFile.h"

#include "tools/modding/Shapes.h"
#include "tools/modding/TextEscape.h"

#include <sstream>
#include <stdexcept>

namespace lbxtool {

namespace {

namespace layout = zorv2::Lbx::layout;

const std::string MAGIC = "JASC-PAL";
const std::string VERSION = "0100";
constexpr int LARGEST_COMPONENT = 255;

std::runtime_error badLine(const std::string& name, std::size_t line, const std::string& problem)
{
    return std::runtime_error("'" + name + "' line " + std::to_string(line + 1) + ": " + problem);
}

} // namespace

std::string paletteFile(const unsigned char* palette, unsigned int first, unsigned int count)
{
    std::string text = MAGIC + "\n" + VERSION + "\n" + std::to_string(count) + "\n";
    for (unsigned int i = first; i < first + count; ++i) {
        const unsigned char* colour = palette + i * PIXEL_SIZE;
        text += std::to_string(colour[layout::RED]) + " " + std::to_string(colour[layout::GREEN]) + " " +
                std::to_string(colour[layout::BLUE]) + "\n";
    }
    return text;
}

bool isPaletteFile(const char* data, std::size_t size)
{
    return size > MAGIC.size() && MAGIC.compare(0, MAGIC.size(), data, MAGIC.size()) == 0 &&
           (data[MAGIC.size()] == '\n' || data[MAGIC.size()] == '\r');
}

std::vector<unsigned char> readPaletteFile(const std::string& text, const std::string& name)
{
    const std::vector<std::string> lines = textLines(text);
    if (lines.size() < 3 || lines[0] != MAGIC || lines[1] != VERSION)
        throw std::runtime_error("'" + name + "' is not a palette file (it starts with " + MAGIC + " and " + VERSION +
                                 ")");
    std::istringstream countLine(lines[2]);
    unsigned int count = 0;
    if (!(countLine >> count) || !countLine.eof() || count > COLORS)
        throw badLine(name, 2, "the number of colours, 0 to 256, is missing");
    if (lines.size() < 3 + count)
        throw badLine(name, lines.size(), "the file ends after " + std::to_string(lines.size() - 3) + " of " +
                                              std::to_string(count) + " colours");
    std::vector<unsigned char> colours;
    for (std::size_t line = 3; line < 3 + count; ++line) {
        std::istringstream in(lines[line]);
        int red = -1, green = -1, blue = -1;
        in >> red >> green >> blue;
        if (in.fail() || !(in >> std::ws).eof() || red < 0 || green < 0 || blue < 0 || red > LARGEST_COMPONENT ||
            green > LARGEST_COMPONENT || blue > LARGEST_COMPONENT)
            throw badLine(name, line, "a colour is three numbers from 0 to 255");
        colours.insert(colours.end(), {static_cast<unsigned char>(red), static_cast<unsigned char>(green),
                                       static_cast<unsigned char>(blue), layout::OPAQUE});
    }
    for (std::size_t line = 3 + count; line < lines.size(); ++line)
        if (!lines[line].empty())
            throw badLine(name, line, "more colours than the file says it holds");
    return colours;
}

} // namespace lbxtool
