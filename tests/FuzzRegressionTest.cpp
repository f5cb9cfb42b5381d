#include "tests/support/Exercise.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

namespace {

const std::filesystem::path REGRESSIONS = ZORV2_LBX_FUZZ_REGRESSIONS;

// Files whose names start with a dot keep a folder in the repository.
std::vector<std::filesystem::path> keptInputs(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> inputs;
    for (const auto& file : std::filesystem::directory_iterator(folder))
        if (file.path().filename().string()[0] != '.')
            inputs.push_back(file.path());
    return inputs;
}

void expectPasses(const exercise::Target& target, const fixtures::Bytes& bytes, const std::string& input)
{
    EXPECT_NO_THROW(target.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()))
        << target.name << ": " << input;
}

} // namespace

// Each folder of kept inputs is named for the target that failed on them, so
// that none lies unread beside the targets.
TEST(FuzzRegressions, EveryFolderBelongsToATarget)
{
    std::set<std::string> folders, targets;
    for (const auto& folder : std::filesystem::directory_iterator(REGRESSIONS))
        folders.insert(folder.path().filename().string());
    for (const exercise::Target& target : exercise::targets())
        targets.insert(target.name);
    EXPECT_EQ(folders, targets);
}

// Every input a fuzz target once failed on, through the very code the target
// runs: a regression shows here without the fuzzer.
TEST(FuzzRegressions, EveryKeptInputPassesItsTarget)
{
    for (const exercise::Target& target : exercise::targets())
        for (const std::filesystem::path& input : keptInputs(REGRESSIONS / target.name))
            expectPasses(target, fixtures::readFile(input.string()), input.filename().string());
}

// The inputs a fuzz run starts from pass their targets as well.
TEST(FuzzRegressions, EverySeedPassesItsTarget)
{
    for (const exercise::Target& target : exercise::targets())
        for (const exercise::Seed& seed : target.seeds())
            expectPasses(target, seed.bytes, seed.name);
}
