#include "tools/modding/Crc32.h"

#include <array>

namespace lbxtool {

namespace {

constexpr std::uint32_t POLYNOMIAL = 0xEDB88320u;

constexpr std::array<std::uint32_t, 256> table()
{
    std::array<std::uint32_t, 256> values{};
    for (std::uint32_t byte = 0; byte < values.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 1) ? (value >> 1) ^ POLYNOMIAL : value >> 1;
        values[byte] = value;
    }
    return values;
}

constexpr std::array<std::uint32_t, 256> TABLE = table();

} // namespace

std::uint32_t crc32Of(const std::string& bytes, std::size_t length)
{
    std::uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < length && i < bytes.size(); ++i)
        crc = TABLE[(crc ^ static_cast<unsigned char>(bytes[i])) & 0xFF] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFu;
}

std::uint32_t crc32Of(const std::string& bytes)
{
    return crc32Of(bytes, bytes.size());
}

} // namespace lbxtool
