#include "tools/modding/Hash.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <sstream>

namespace lbxtool {

namespace {

constexpr std::uint64_t FNV_OFFSET = 0xcbf29ce484222325ull;
constexpr std::uint64_t FNV_PRIME = 0x100000001b3ull;
constexpr int HEX_DIGITS = 16;

// FNV-1a is one chain of multiplies, each waiting for the one before: a
// byte costs the multiplier's whole latency while it could start one
// multiply a cycle. Four parts hashed side by side fill those cycles.
constexpr std::size_t LANES = 4;
constexpr std::size_t NO_PART = std::numeric_limits<std::size_t>::max();

// By hand: a text table's every record has a fingerprint, and a string
// stream set up for each took a twenty-fifth of unpack's instructions.
std::string hex(std::uint64_t hash)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    constexpr int DIGIT_BITS = 4;
    constexpr std::uint64_t DIGIT_MASK = (1u << DIGIT_BITS) - 1;
    std::string text(HEX_DIGITS, '0');
    for (int i = HEX_DIGITS - 1; i >= 0; --i, hash >>= DIGIT_BITS)
        text[static_cast<std::size_t>(i)] = DIGITS[hash & DIGIT_MASK];
    return text;
}

// The parts, each taken by the next free lane; a lane left without one
// follows another lane's bytes, and what it computes is dropped.
class Lanes {
public:
    explicit Lanes(const std::vector<std::string_view>& parts) : parts(parts), hashes(parts.size(), FNV_OFFSET)
    {
        for (Lane& lane : lanes)
            takeNext(lane);
    }

    std::vector<std::uint64_t> run()
    {
        for (const Lane* busy = anyBusy(); busy != nullptr; busy = anyBusy())
            advance(*busy, shortestLeft());
        return std::move(hashes);
    }

private:
    struct Lane {
        std::size_t part = NO_PART;
        std::size_t at = 0;
    };

    void takeNext(Lane& lane)
    {
        while (next < parts.size() && parts[next].empty())
            ++next;
        lane = next < parts.size() ? Lane{next++, 0} : Lane{};
    }

    const Lane* anyBusy() const
    {
        for (const Lane& lane : lanes)
            if (lane.part != NO_PART)
                return &lane;
        return nullptr;
    }

    std::size_t shortestLeft() const
    {
        std::size_t shortest = std::numeric_limits<std::size_t>::max();
        for (const Lane& lane : lanes)
            if (lane.part != NO_PART)
                shortest = std::min(shortest, parts[lane.part].size() - lane.at);
        return shortest;
    }

    std::size_t busyLanes() const
    {
        return static_cast<std::size_t>(
            std::count_if(std::begin(lanes), std::end(lanes), [](const Lane& lane) { return lane.part != NO_PART; }));
    }

    // Hashes `count` bytes in every lane at once; a lane alone goes by
    // itself, so that no idle lane repeats its work (under valgrind,
    // where instructions are the time, that made unpack's tests slower).
    void advance(const Lane& busy, std::size_t count)
    {
        if (busyLanes() == 1) {
            std::uint64_t& hash = hashes[busy.part];
            const unsigned char* from = reinterpret_cast<const unsigned char*>(parts[busy.part].data()) + busy.at;
            for (std::size_t i = 0; i < count; ++i)
                hash = (hash ^ from[i]) * FNV_PRIME;
            finishStep(count);
            return;
        }
        const unsigned char* from[LANES];
        std::uint64_t hash[LANES];
        for (std::size_t l = 0; l < LANES; ++l) {
            const Lane& source = lanes[l].part != NO_PART ? lanes[l] : busy;
            from[l] = reinterpret_cast<const unsigned char*>(parts[source.part].data()) + source.at;
            hash[l] = hashes[source.part];
        }
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t l = 0; l < LANES; ++l)
                hash[l] = (hash[l] ^ from[l][i]) * FNV_PRIME;
        for (std::size_t l = 0; l < LANES; ++l)
            if (lanes[l].part != NO_PART)
                hashes[lanes[l].part] = hash[l];
        finishStep(count);
    }

    // Moves every busy lane on by `count` bytes, to the next part where its own ends.
    void finishStep(std::size_t count)
    {
        for (Lane& lane : lanes) {
            if (lane.part == NO_PART)
                continue;
            lane.at += count;
            if (lane.at == parts[lane.part].size())
                takeNext(lane);
        }
    }

    const std::vector<std::string_view>& parts;
    std::vector<std::uint64_t> hashes;
    Lane lanes[LANES];
    std::size_t next = 0;
};

} // namespace

std::vector<std::string> hashOfEach(const std::vector<std::string_view>& parts)
{
    std::vector<std::string> texts;
    for (const std::uint64_t hash : Lanes(parts).run())
        texts.push_back(hex(hash));
    return texts;
}

std::string hashOf(std::string_view bytes)
{
    return hashOfEach({bytes}).front();
}

std::string hashesOf(const std::vector<std::string>& parts)
{
    std::string joined;
    for (const std::string& hash : hashOfEach({parts.begin(), parts.end()}))
        joined += (joined.empty() ? "" : " ") + hash;
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
