#include "tests/support/ModExercise.h"

#include "tools/modding/Bps.h"
#include "tools/modding/Mod.h"
#include "tools/modding/Patch.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace exercise {

using namespace lbxtool;

namespace {

constexpr std::size_t LARGEST_POOL = 8;
constexpr std::size_t LARGEST_ARCHIVE = 12;
constexpr std::size_t LARGEST_ENTRY = 96;

class Quiet : public Warnings {
public:
    void warn(const std::string&) override {}
};

// A text table of a few short records: where records travel alone.
std::string table(FuzzedDataProvider& input)
{
    const auto count = input.ConsumeIntegralInRange<unsigned int>(0, 6);
    const auto length = input.ConsumeIntegralInRange<unsigned int>(1, 12);
    std::string bytes{static_cast<char>(count), '\0', static_cast<char>(length), '\0'};
    for (unsigned int i = 0; i < count * length; ++i)
        bytes += static_cast<char>('a' + input.ConsumeIntegralInRange<int>(0, 3));
    return bytes;
}

std::vector<std::string> pool(FuzzedDataProvider& input)
{
    std::vector<std::string> entries(input.ConsumeIntegralInRange<std::size_t>(1, LARGEST_POOL));
    for (std::string& entry : entries)
        entry = input.ConsumeBool() ? table(input) : input.ConsumeRandomLengthString(LARGEST_ENTRY);
    return entries;
}

// An entry of the pool, or one with a byte changed: a record edited, a
// pixel painted.
std::string pick(FuzzedDataProvider& input, const std::vector<std::string>& entries)
{
    std::string entry = entries[input.ConsumeIntegralInRange<std::size_t>(0, entries.size() - 1)];
    if (!entry.empty() && input.ConsumeBool())
        entry[input.ConsumeIntegralInRange<std::size_t>(0, entry.size() - 1)] ^= 1;
    return entry;
}

ArchiveBytes archive(FuzzedDataProvider& input, const std::vector<std::string>& entries)
{
    std::vector<std::string> picked(input.ConsumeIntegralInRange<std::size_t>(0, LARGEST_ARCHIVE));
    for (std::string& entry : picked)
        entry = pick(input, entries);
    ArchiveBytes made = ArchiveBytes::written(std::move(picked));
    // Now and then a header area the writer would not write: a fill byte.
    if (input.ConsumeBool())
        made.header.back() = static_cast<char>(input.ConsumeIntegral<unsigned char>());
    return made;
}

struct Patches {
    std::string mod, bps;
};

Patches identities(const ArchiveBytes& base, const ArchiveBytes& result)
{
    Quiet quiet;
    try {
        Patches made{modFile(makeMod(base, result, "BASE.LBX", true)), bpsPatch(base.file(), result.file())};
        const Mod mod = readMod(made.mod, "m");
        require(applyMods(base, "BASE.LBX", {{"m", mod}}, false, quiet).file() == result.file(),
                "a mod gives the archive it was made of");
        require(applyMods(result, "BASE.LBX", {{"m", undoOf(mod, "m")}}, false, quiet).file() == base.file(),
                "a reversible mod's undo gives its base");
        require(applyBps(base.file(), "b", made.bps, "p") == result.file(), "a BPS patch gives its target");
        return made;
    } catch (const std::runtime_error& e) {
        throw Broken(std::string("a patch of archives it made was refused: ") + e.what());
    }
}

// A few bytes of `patch` changed, and perhaps its end cut off.
std::string damaged(std::string patch, FuzzedDataProvider& input)
{
    for (int change = input.ConsumeIntegralInRange<int>(0, 4); change > 0 && !patch.empty(); --change) {
        const auto at = input.ConsumeIntegralInRange<std::size_t>(0, patch.size() - 1);
        patch[at] = static_cast<char>(input.ConsumeIntegral<unsigned char>());
        if (input.ConsumeBool())
            patch.resize(at);
    }
    return patch;
}

void refusedOrApplied(const ArchiveBytes& base, const Patches& patches, FuzzedDataProvider& input)
{
    Quiet quiet;
    try {
        const bool preferLast = input.ConsumeBool();
        const std::string mod = damaged(patches.mod, input);
        applyMods(base, "BASE.LBX", {{"m", readMod(mod, "m")}, {"n", readMod(mod, "n")}}, preferLast, quiet);
    } catch (const std::runtime_error&) {
    }
    try {
        applyBps(base.file(), "b", damaged(patches.bps, input), "p");
    } catch (const std::runtime_error&) {
    }
}

} // namespace

void modBytes(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    const std::vector<std::string> entries = pool(input);
    const ArchiveBytes base = archive(input, entries), result = archive(input, entries);
    refusedOrApplied(base, identities(base, result), input);
}

std::vector<Seed> modSeeds()
{
    std::vector<Seed> seeds;
    for (unsigned int mode = 0; mode < 4; ++mode) {
        std::string block(400, '\0');
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<char>((i * 37 + mode * 101) & 0xFF);
        seeds.push_back({"mode-" + std::to_string(mode), block});
    }
    return seeds;
}

} // namespace exercise
