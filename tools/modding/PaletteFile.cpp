#include "tools/modding/PaletteFile.h"

#include "tools/modding/Shapes.h"
#include "tools/modding/TextEscape.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <stdexcept>

namespace lbxtool {

namespace {

namespace layout = zorv2::Lbx::layout;

const std::string MAGIC = "JASC-PAL";
const std::string VERSION = "0100";
constexpr int LARGEST_COMPONENT = 255;
constexpr int DECIMAL = 10;

std::runtime_error badLine(const std::string& name, std::size_t line, const std::string& problem)
{
    return std::runtime_error("'" + name + "' line " + std::to_string(line + 1) + ": " + problem);
}

// The next whole number of `line` from `at` on, read as a stream reads one
// (spaces before it, a sign, digits), and `at` moved past it. By hand: a
// string stream set up for each of a palette's 256 lines cost more than
// the rest of reading it.
std::optional<long> nextNumber(const std::string& line, std::size_t& at)
{
    const char* start = line.c_str() + at;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(start, &end, DECIMAL);
    if (end == start || errno == ERANGE)
        return std::nullopt;
    at += static_cast<std::size_t>(end - start);
    return value;
}

using Colour = std::array<unsigned char, PIXEL_SIZE>;

// A line of three numbers from 0 to 255 and nothing else but spaces.
std::optional<Colour> colourOf(const std::string& line)
{
    Colour colour{};
    colour[layout::ALPHA] = layout::OPAQUE;
    std::size_t at = 0;
    for (const unsigned int component : {layout::RED, layout::GREEN, layout::BLUE}) {
        const std::optional<long> value = nextNumber(line, at);
        if (!value || *value < 0 || *value > LARGEST_COMPONENT)
            return std::nullopt;
        colour[component] = static_cast<unsigned char>(*value);
    }
    const bool spacesLeft = std::all_of(line.begin() + static_cast<std::ptrdiff_t>(at), line.end(),
                                        [](unsigned char c) { return std::isspace(c) != 0; });
    return spacesLeft ? std::optional<Colour>(colour) : std::nullopt;
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
    std::size_t at = 0;
    const std::optional<long> stated = nextNumber(lines[2], at);
    if (!stated || at != lines[2].size() || *stated < 0 || *stated > long{COLORS})
        throw badLine(name, 2, "the number of colours, 0 to 256, is missing");
    const auto count = static_cast<std::size_t>(*stated);
    if (lines.size() < 3 + count)
        throw badLine(name, lines.size(), "the file ends after " + std::to_string(lines.size() - 3) + " of " +
                                              std::to_string(count) + " colours");
    std::vector<unsigned char> colours;
    for (std::size_t line = 3; line < 3 + count; ++line) {
        const std::optional<Colour> colour = colourOf(lines[line]);
        if (!colour)
            throw badLine(name, line, "a colour is three numbers from 0 to 255");
        colours.insert(colours.end(), colour->begin(), colour->end());
    }
    for (std::size_t line = 3 + count; line < lines.size(); ++line)
        if (!lines[line].empty())
            throw badLine(name, line, "more colours than the file says it holds");
    return colours;
}

} // namespace lbxtool
