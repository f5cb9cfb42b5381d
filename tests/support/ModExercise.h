#ifndef ZORV2_LBX_TESTS_SUPPORT_MODEXERCISE_H
#define ZORV2_LBX_TESTS_SUPPORT_MODEXERCISE_H

// What the fuzz target of mods and patches runs, for libFuzzer's entry point
// in fuzz/ and for the modding core's tests, which replay its seeds and any
// input kept under fuzz/regressions/mod.
#include "tests/support/Exercise.h"

namespace exercise {

// Two archives built from the bytes, of entries that repeat, move, change
// records or change whole: the mod of the change gives the second back, its
// undo the first, and a BPS patch the second too. What is left of the bytes
// is read as a mod and as a BPS patch, which may be refused but never crash.
void modBytes(const std::uint8_t* bytes, std::size_t size);
std::vector<Seed> modSeeds();

} // namespace exercise

#endif
