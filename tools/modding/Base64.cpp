#include "tools/modding/Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace lbxtool {

namespace {

// Three bytes become four characters of six bits each.
constexpr char ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char PAD = '=';
constexpr int NOT_BASE64 = -1;

constexpr std::array<int, 256> values()
{
    std::array<int, 256> table{};
    for (int& value : table)
        value = NOT_BASE64;
    for (int i = 0; i < 64; ++i)
        table[static_cast<unsigned char>(ALPHABET[i])] = i;
    return table;
}

constexpr std::array<int, 256> VALUES = values();

std::uint32_t group(const std::string& bytes, std::size_t at)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i)
        bits = bits << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0u);
    return bits;
}

} // namespace

std::string toBase64(const std::string& bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::uint32_t bits = group(bytes, at);
        const std::size_t present = std::min<std::size_t>(3, bytes.size() - at);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= present ? ALPHABET[(bits >> (18 - 6 * i)) & 0x3F] : PAD;
    }
    return text;
}

bool fromBase64(const std::string& text, std::string& bytes)
{
    if (text.size() % 4 != 0)
        return false;
    bytes.clear();
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t at = 0; at < text.size(); at += 4) {
        const bool last = at + 4 == text.size();
        const std::size_t padding = last ? (text[at + 3] == PAD) + (text[at + 2] == PAD && text[at + 3] == PAD) : 0;
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const int value = i < 4 - padding ? VALUES[static_cast<unsigned char>(text[at + i])] : 0;
            if (value == NOT_BASE64)
                return false;
            bits = bits << 6 | static_cast<std::uint32_t>(value);
        }
        for (std::size_t i = 0; i < 3 - padding; ++i)
            bytes += static_cast<char>((bits >> (16 - 8 * i)) & 0xFF);
    }
    return true;
}

} // namespace lbxtool
