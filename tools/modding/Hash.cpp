#include "tools/modding/Hash.h"

#include <cstdint>
#include <iomanip>
#include <sstream>

namespace lbxtool {

namespace {

constexpr std::uint64_t FNV_OFFSET = 0xcbf29ce484222325ull;
constexpr std::uint64_t FNV_PRIME = 0x100000001b3ull;
constexpr int HEX_DIGITS = 16;

} // namespace

std::string hashOf(std::string_view bytes)
{
    std::uint64_t hash = FNV_OFFSET;
    for (const char c : bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * FNV_PRIME;
    std::ostringstream hex;
    hex << std::hex << std::setw(HEX_DIGITS) << std::setfill('0') << hash;
    return hex.str();
}

std::string hashesOf(const std::vector<std::string>& parts)
{
    std::string joined;
    for (const std::string& part : parts)
        joined += (joined.empty() ? "" : " ") + hashOf(part);
    return joined;
}

std::vector<std::string> splitHashes(const std::string& joined)
{
    std::vector<std::string> hashes;
    std::istringstream words(joined);
    for (std::string hash; words >> hash;)
        hashes.push_back(hash);
    return hashes;
}

} // namespace lbxtool
