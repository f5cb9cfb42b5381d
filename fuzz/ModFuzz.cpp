// The libFuzzer entry point of the mods target: diff and patch of archives
// built from the fuzzer's bytes. Its body is in tests/support, where the
// modding core's tests replay it.
#include "tests/support/ModExercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    exercise::modBytes(bytes, size);
    return 0;
}
