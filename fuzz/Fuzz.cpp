// The libFuzzer entry point of every target, built once for each with
// ZORV2_LBX_FUZZ_TARGET naming it; the bodies are in tests/support, where the
// tests replay them on fuzz/regressions.
#include "tests/support/Exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const exercise::Run run = exercise::target(ZORV2_LBX_FUZZ_TARGET);
    run(bytes, size);
    return 0;
}
