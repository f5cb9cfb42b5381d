// Arbitrary bytes as one entry: whatever kind they classify as, everything
// that kind offers must either work or throw std::runtime_error.
#include "fuzz/Exercise.h"

#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size > 1 << 20)
        return 0;
    char* block = new char[size];
    std::memcpy(block, bytes, size);
    zorv2::Lbx::Content entry("fuzz", block, static_cast<unsigned int>(size));
    zorv2::Lbx::exercise::entry(entry);
    return 0;
}
