#include "tools/modding/Charset.h"

#include "tools/modding/Names.h"
#include "tools/modding/TextEscape.h"

#include <unistr.h>
#include <uninorm.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace lbxtool {

namespace {

constexpr char ESCAPE = '\\';
constexpr char UPPER_HEX[] = "0123456789ABCDEF";

// The upper half of code page 437, 0x80 to 0xFF, as Unicode code points.
constexpr char32_t CP437_HIGH[128] = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7, 0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE,
    0x00EC, 0x00C4, 0x00C5, 0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9, 0x00FF, 0x00D6,
    0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192, 0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA,
    0x00BA, 0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB, 0x2591, 0x2592, 0x2593, 0x2502,
    0x2524, 0x2561, 0x2562, 0x2556, 0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510, 0x2514,
    0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F, 0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550,
    0x256C, 0x2567, 0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B, 0x256A, 0x2518, 0x250C,
    0x2588, 0x2584, 0x258C, 0x2590, 0x2580, 0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229, 0x2261, 0x00B1, 0x2265, 0x2264, 0x2320,
    0x2321, 0x00F7, 0x2248, 0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,
};
constexpr unsigned char NO_BREAK_SPACE = 0xFF;
constexpr unsigned char DELETE = 0x7F;
constexpr unsigned char FIRST_PRINTABLE = 0x20;

std::string utf8(char32_t point)
{
    uint8_t buffer[6];
    const int length = u8_uctomb(buffer, static_cast<ucs4_t>(point), sizeof buffer);
    return std::string(reinterpret_cast<const char*>(buffer), length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::string escapedByte(unsigned char byte)
{
    return std::string{ESCAPE, 'x', UPPER_HEX[byte >> 4], UPPER_HEX[byte & 0xF]};
}

// The number of characters in the UTF-8 `text`, up to byte `end`.
std::size_t characters(const std::string& text, std::size_t end)
{
    return u8_mbsnlen(reinterpret_cast<const uint8_t*>(text.data()), std::min(end, text.size()));
}

// "'é' (U+00E9)": a character as a message shows it.
std::string shown(const std::string& text, std::size_t at)
{
    ucs4_t point = 0;
    const int length = u8_mbtouc(&point, reinterpret_cast<const uint8_t*>(text.data() + at), text.size() - at);
    char code[16];
    std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned int>(point));
    const std::string character = text.substr(at, static_cast<std::size_t>(std::max(length, 1)));
    const bool visible = point >= FIRST_PRINTABLE && point != DELETE;
    return (visible ? "'" + character + "' (" : "(") + code + ")";
}

} // namespace

CharsetError::CharsetError(const std::string& what, std::size_t column)
    : std::runtime_error(what + " at column " + std::to_string(column)), column(column), problem(what)
{
}

const char* const Charset::CODE_PAGE_437 = "CP437";

std::size_t columnOf(const std::string& text, std::size_t byte)
{
    return byte >= text.size() ? 1 : characters(text, byte) + 1;
}

bool validUtf8(const std::string& text)
{
    return u8_check(reinterpret_cast<const uint8_t*>(text.data()), text.size()) == nullptr;
}

std::string composed(const std::string& text)
{
    if (text.empty())
        return text;
    if (!validUtf8(text))
        throw std::runtime_error("not UTF-8");
    std::size_t length = 0;
    uint8_t* normal =
        u8_normalize(UNINORM_NFC, reinterpret_cast<const uint8_t*>(text.data()), text.size(), nullptr, &length);
    if (normal == nullptr)
        throw std::runtime_error("could not be normalised");
    const std::unique_ptr<uint8_t, void (*)(void*)> owned(normal, std::free);
    return std::string(reinterpret_cast<const char*>(normal), length);
}

void Charset::add(const std::string& bytes, const std::string& text)
{
    const std::string normal = composed(text);
    byBytes.emplace(bytes, normal);
    byText.emplace(normal, bytes); // the first byte of a text is the one it writes
    longestBytes = std::max(longestBytes, bytes.size());
    longestText = std::max(longestText, normal.size());
}

Charset Charset::codePage437()
{
    Charset charset;
    charset.charsetName = CODE_PAGE_437;
    for (unsigned int byte = FIRST_PRINTABLE; byte < DELETE; ++byte)
        charset.add(std::string(1, static_cast<char>(byte)), std::string(1, static_cast<char>(byte)));
    for (unsigned int byte = 0x80; byte < NO_BREAK_SPACE; ++byte)
        charset.add(std::string(1, static_cast<char>(byte)), utf8(CP437_HIGH[byte - 0x80]));
    return charset;
}

Charset Charset::fromTable(const std::string& table, const std::string& name, const std::string& path)
{
    Charset charset;
    charset.charsetName = name;
    charset.tableText = table.empty() ? "\n" : table;
    std::size_t number = 0;
    for (const std::string& line : textLines(table)) {
        ++number;
        const std::string where = "'" + path + "' line " + std::to_string(number) + ": ";
        if (line.empty() || line.front() == '#')
            continue;
        const std::size_t equals = line.find('=');
        const std::string hex = line.substr(0, equals);
        if (equals == std::string::npos || hex.empty() || hex.size() % 2 != 0 ||
            hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            throw std::runtime_error(where + "not a line of the form HEX=text (such as 82=é)");
        const std::string text = line.substr(equals + 1);
        if (text.empty())
            throw std::runtime_error(where + "no text after '='");
        if (!validUtf8(text))
            throw std::runtime_error(where + "the text is not UTF-8; save the table as UTF-8");
        std::string bytes;
        for (std::size_t at = 0; at < hex.size(); at += 2)
            bytes += static_cast<char>(hexValue(hex[at]) << 4 | hexValue(hex[at + 1]));
        if (charset.byBytes.count(bytes) != 0)
            throw std::runtime_error(where + hex + " is given twice");
        charset.add(bytes, text);
    }
    if (charset.byBytes.empty())
        throw std::runtime_error("'" + path + "' holds no line of the form HEX=text");
    return charset;
}

std::vector<Charset::Piece> Charset::pieces(const std::string& bytes) const
{
    std::vector<Piece> found;
    for (std::size_t at = 0; at < bytes.size();) {
        Piece piece{at, 1, nullptr};
        for (std::size_t size = std::min(longestBytes, bytes.size() - at); size > 0; --size) {
            const auto match = byBytes.find(bytes.substr(at, size));
            if (match != byBytes.end()) {
                piece = {at, size, &match->second};
                break;
            }
        }
        found.push_back(piece);
        at += piece.size;
    }
    return found;
}

std::string Charset::render(const std::string& bytes, const std::vector<Piece>& pieces)
{
    std::string text;
    for (const Piece& piece : pieces) {
        if (piece.text == nullptr) {
            for (std::size_t i = 0; i < piece.size; ++i)
                text += escapedByte(static_cast<unsigned char>(bytes[piece.at + i]));
            continue;
        }
        for (const char c : *piece.text) {
            if (c == ESCAPE)
                text += ESCAPE;
            text += c;
        }
    }
    return text;
}

std::string Charset::decode(const std::string& bytes) const
{
    std::vector<Piece> cut = pieces(bytes);
    // A piece whose text reads back as other bytes (joined with its
    // neighbours into a longer match, composed with the next one's accent,
    // or a text that an earlier byte writes) is escaped, until all read back.
    for (std::size_t round = 0; round <= cut.size(); ++round) {
        const std::string text = render(bytes, cut);
        std::string back;
        try {
            back = encode(text);
        } catch (const CharsetError&) {
            back.clear();
        }
        if (back == bytes)
            return text;
        std::size_t differs = 0;
        while (differs < back.size() && differs < bytes.size() && back[differs] == bytes[differs])
            ++differs;
        // The piece where the bytes part, or the last one still plain before it.
        std::size_t p = 0;
        while (p + 1 < cut.size() && cut[p + 1].at <= differs)
            ++p;
        while (p > 0 && cut[p].text == nullptr)
            --p;
        if (cut[p].text == nullptr)
            break;
        cut[p].text = nullptr;
    }
    std::vector<Piece> all(1, Piece{0, bytes.size(), nullptr});
    return render(bytes, all);
}

std::string Charset::encode(const std::string& text) const
{
    std::string bytes;
    std::string run; // plain text since the last escape
    std::size_t runStart = 0;
    const auto flush = [&] {
        if (run.empty())
            return;
        std::string normal;
        try {
            normal = composed(run);
        } catch (const std::runtime_error&) {
            throw CharsetError("text that is not UTF-8", characters(text, runStart) + 1);
        }
        for (std::size_t at = 0; at < normal.size();) {
            bool matched = false;
            for (std::size_t size = std::min(longestText, normal.size() - at); size > 0 && !matched; --size) {
                const auto match = byText.find(normal.substr(at, size));
                if (match != byText.end()) {
                    bytes += match->second;
                    at += size;
                    matched = true;
                }
            }
            if (!matched) {
                // The column where it stands in the text as given.
                const std::size_t before = characters(normal, at);
                throw CharsetError(shown(normal, at) + " is not in the charset " + charsetName,
                                   characters(text, runStart) + before + 1);
            }
        }
        run.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != ESCAPE) {
            if (run.empty())
                runStart = i;
            run += text[i];
            continue;
        }
        const std::size_t column = characters(text, i) + 1;
        if (i + 1 < text.size() && text[i + 1] == ESCAPE) {
            if (run.empty())
                runStart = i;
            run += ESCAPE;
            ++i;
            continue;
        }
        if (i + 1 < text.size() && text[i + 1] == 'x') {
            const int high = i + 2 < text.size() ? hexValue(text[i + 2]) : -1;
            const int low = i + 3 < text.size() ? hexValue(text[i + 3]) : -1;
            if (high < 0 || low < 0)
                throw CharsetError("\\x needs 2 hex digits", column);
            flush();
            bytes += static_cast<char>(high << 4 | low);
            i += 3;
            continue;
        }
        throw CharsetError("a backslash stands alone (write \\\\ for one, \\xHH for a byte)", column);
    }
    flush();
    return bytes;
}

Charset charsetNamed(const std::string& option, const std::function<std::string(const std::string&)>& read)
{
    if (option.empty() || upperCase(option) == Charset::CODE_PAGE_437)
        return Charset::codePage437();
    return Charset::fromTable(read(option), std::filesystem::path(option).filename().string(), option);
}

} // namespace lbxtool
