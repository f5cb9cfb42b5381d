#include "tests/support/Exercise.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>

using namespace zorv2::Lbx;
using namespace fixtures;

namespace {

// Every byte of small entries, every n-th of the large ones, so that each
// entry gets some 150 mutations at most.
unsigned int strideFor(unsigned int size)
{
    return size / 150 + 1;
}

} // namespace

// Flip each byte, cut at each length: whatever the bytes become, every
// operation of the kind they now classify as succeeds or throws, and never
// reads or writes out of bounds (which the sanitizer build would catch).
TEST(MutationSweep, FlippedAndTruncatedEntriesNeverCrash)
{
    for (const exercise::Seed& seed : exercise::entrySeeds()) {
        const Bytes& original = seed.bytes;
        const unsigned int stride = strideFor(static_cast<unsigned int>(original.size()));
        for (std::size_t at = 0; at < original.size(); at += stride) {
            Bytes flipped = original;
            flipped[at] = static_cast<char>(~flipped[at]);
            exercise::entry(*entryOf(flipped));
            exercise::entry(*entryOf(original.substr(0, at)));
        }
    }
}

// Archives that claim the most the format allows.
TEST(MutationSweep, HostileArchivesAreRefusedOrReadExactly)
{
    TempDir dir;
    struct Case {
        const char* what;
        std::string bytes;
        std::string reason; // empty: valid
    };
    std::string nearFourGiB = archive({"abc"});
    nearFourGiB.replace(12, 4, le32(0xFFFFFFFC));
    std::string lastNearFourGiB = archive({"abc"});
    lastNearFourGiB.replace(12, 4, le32(0xFFFFFFFF));
    const std::vector<Case> cases = {
        {"offset near 4 GiB", nearFourGiB, "offset 1 is invalid"},
        {"last offset at 4 GiB", lastNearFourGiB, "offset 1 is invalid"},
        {"509 entries of length 0", archive(std::vector<std::string>(509, "")), ""},
        {"509 entries filling the table", archive(std::vector<std::string>(509, "x")), ""},
        {"count of 65535", le16(65535) + archive({}).substr(2), "invalid file count"},
    };
    for (const Case& c : cases) {
        const std::string path = dir.file("hostile.lbx", c.bytes);
        std::string error;
        ASSERT_EQ(File::header(path, &error, nullptr, nullptr), c.reason.empty()) << c.what;
        if (!c.reason.empty()) {
            EXPECT_EQ(error, "'" + path + "' is not a valid tesk lbx file (" + c.reason + ")") << c.what;
            continue;
        }
        File file(path);
        for (unsigned int i = 0; i < file.size(); ++i)
            exercise::entry(*file[i]);
        file.write(dir.path("again.lbx"));
        EXPECT_EQ(readFile(dir.path("again.lbx")), c.bytes) << c.what;
    }
}
