#ifndef ZORV2_LBX_TESTS_SUPPORT_EXERCISE_H
#define ZORV2_LBX_TESTS_SUPPORT_EXERCISE_H

// What the fuzz targets run, for libFuzzer's entry points in fuzz/ and for
// the tests, which replay every input kept under fuzz/regressions. Bad data
// may only ever end in a std::runtime_error inside the library; a crash, an
// out-of-bounds access, a leak or a Broken promise is a defect.
#include "entry/Content.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace exercise {

// A promise a target checks that does not hold, named by its text. It is no
// std::runtime_error, so that nothing tolerated takes it for bad data.
struct Broken : std::logic_error {
    using std::logic_error::logic_error;
};

void require(bool holds, const char* promise);

// Everything an entry's kind offers, called on whatever bytes it holds.
void entry(zorv2::Lbx::Content& entry);

// Re-creating the entry in the verifying mode reports nothing and gives back
// the very bytes; Broken names what it reported or that the bytes differ.
void verifies(zorv2::Lbx::Content& entry);

using Run = void (*)(const std::uint8_t* bytes, std::size_t size);

// Arbitrary bytes as one entry, exercised as above.
void entryBytes(const std::uint8_t* bytes, std::size_t size);
// Arbitrary bytes as an archive file: validation never crashes, and an
// archive that opens writes back to one that reopens with the same entries.
void archiveBytes(const std::uint8_t* bytes, std::size_t size);
// Bytes drive the parameters of a new graphic, cursor or text table, which
// must classify as its kind, decode to its input and pass its verification.
void roundTrip(const std::uint8_t* bytes, std::size_t size);

// An input a fuzz run starts from, made by the library itself.
struct Seed {
    std::string name;
    std::string bytes;
};
std::vector<Seed> entrySeeds();
std::vector<Seed> archiveSeeds();
std::vector<Seed> roundTripSeeds();

struct Target {
    std::string name; // of the fuzz target and of its folder under fuzz/regressions
    Run run;
    std::vector<Seed> (*seeds)();
};
const std::vector<Target>& targets();
// The target of that name; throws std::invalid_argument for any other.
Run target(const std::string& name);

} // namespace exercise

#endif
