#ifndef ZORV2_LBX_TOOLS_MODDING_CRC32_H
#define ZORV2_LBX_TOOLS_MODDING_CRC32_H

#include <cstdint>
#include <string>

namespace lbxtool {

// The CRC-32 that whole-file patches carry (reflected, polynomial
// 0xEDB88320), of the first `length` bytes of `bytes`. Written here rather
// than taken from zlib, which the browser build does not link.
std::uint32_t crc32Of(const std::string& bytes, std::size_t length);
std::uint32_t crc32Of(const std::string& bytes);

} // namespace lbxtool

#endif
