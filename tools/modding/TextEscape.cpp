#include "tools/modding/TextEscape.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace lbxtool {

namespace {

constexpr char ESCAPE = '\\';
constexpr unsigned char FIRST_PRINTABLE = 0x20;
constexpr unsigned char LAST_PRINTABLE = 0x7E;
constexpr std::size_t HEX_DIGITS = 2;
constexpr char UPPER_HEX[] = "0123456789ABCDEF";

// The bytes written as a backslash and one letter, each beside its letter.
constexpr struct {
    char byte;
    char letter;
} NAMED[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}};

std::runtime_error broken(const std::string& problem, std::size_t position)
{
    return std::runtime_error(problem + " at column " + std::to_string(position + 1));
}

} // namespace

int hexValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    return -1;
}

std::string escapeText(const std::string& record)
{
    std::string line;
    line.reserve(record.size());
    for (const char c : record) {
        const unsigned char byte = static_cast<unsigned char>(c);
        bool named = false;
        for (const auto& n : NAMED)
            if (c == n.byte) {
                line += ESCAPE;
                line += n.letter;
                named = true;
            }
        if (named)
            continue;
        if (byte >= FIRST_PRINTABLE && byte <= LAST_PRINTABLE) {
            line += c;
        } else {
            line += ESCAPE;
            line += 'x';
            line += UPPER_HEX[byte >> 4];
            line += UPPER_HEX[byte & 0xF];
        }
    }
    return line;
}

std::string unescapeText(const std::string& line)
{
    std::string record;
    record.reserve(line.size());
    for (std::size_t i = 0; i < line.size(); ++i) {
        const unsigned char byte = static_cast<unsigned char>(line[i]);
        if (line[i] != ESCAPE) {
            if (byte < FIRST_PRINTABLE || byte > LAST_PRINTABLE)
                throw std::runtime_error(broken("byte " + std::to_string(byte) + " must be escaped", i).what() +
                                         std::string(": write it ") + escapeText(std::string(1, line[i])));
            record += line[i];
            continue;
        }
        if (i + 1 == line.size())
            throw broken("a backslash ends the line", i);
        const char letter = line[i + 1];
        if (letter == 'x') {
            const int high = i + 2 < line.size() ? hexValue(line[i + 2]) : -1;
            const int low = i + 3 < line.size() ? hexValue(line[i + 3]) : -1;
            if (high < 0 || low < 0)
                throw broken("\\x needs " + std::to_string(HEX_DIGITS) + " hex digits", i);
            record += static_cast<char>(high << 4 | low);
            i += 1 + HEX_DIGITS;
            continue;
        }
        bool named = false;
        for (const auto& n : NAMED)
            if (letter == n.letter) {
                record += n.byte;
                named = true;
            }
        if (!named)
            throw broken(static_cast<unsigned char>(letter) >= FIRST_PRINTABLE &&
                                 static_cast<unsigned char>(letter) <= LAST_PRINTABLE
                             ? "unknown escape '\\" + std::string(1, letter) + "'"
                             : "a backslash before byte " + std::to_string(static_cast<unsigned char>(letter)),
                         i);
        ++i;
    }
    return record;
}

std::string escapedLines(const std::vector<std::string>& records)
{
    std::string lines;
    for (const std::string& record : records)
        lines += escapeText(record) + '\n';
    return lines;
}

std::size_t lineColumn(const std::string& line, std::size_t byte)
{
    std::size_t i = 0;
    for (std::size_t made = 0; made < byte && i < line.size(); ++made) {
        if (line[i] != ESCAPE)
            i += 1;
        else if (i + 1 < line.size() && line[i + 1] == 'x')
            i += 2 + HEX_DIGITS;
        else
            i += 2;
    }
    return std::min(i, line.size()) + 1;
}

std::vector<std::string> textLines(const std::string& text)
{
    std::vector<std::string> lines;
    const std::string byteOrderMark = "\xEF\xBB\xBF";
    std::istringstream in(text.compare(0, byteOrderMark.size(), byteOrderMark) == 0 ? text.substr(byteOrderMark.size())
                                                                                    : text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

} // namespace lbxtool
