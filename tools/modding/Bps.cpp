#include "tools/modding/Bps.h"

#include "tools/modding/Crc32.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace lbxtool {

namespace {

// A patch: "BPS1", the source size, the target size, the metadata size and
// the metadata, then commands until the footer, three CRC32s (source,
// target, the patch before them), each 4 bytes little-endian. Numbers are
// 7 bits a byte, the last byte flagged by its top bit, each step less one.
// A command is a number, its kind in the low two bits and its length less
// one above them; the two copies follow it with a relative offset, its sign
// in the low bit.
const std::string MAGIC = "BPS1";
constexpr std::size_t FOOTER = 12;
constexpr std::uint32_t LARGEST_FILE = 0xFFFFFFFFu; // an archive's offsets are 32 bits
enum Command : std::uint64_t { SOURCE_READ = 0, TARGET_READ = 1, SOURCE_COPY = 2, TARGET_COPY = 3 };
constexpr unsigned int COMMAND_BITS = 2;

// Runs shorter than these cost more as commands than as bytes of their own.
constexpr std::size_t SHORTEST_READ = 4;
constexpr std::size_t SHORTEST_COPY = 8;
// Source positions are found by a hash of the 32 bytes there: long enough
// that the head of a record or an entry, alike in all of them, is seldom
// all a key holds. Every 8th position is kept, which a run of the target
// meets within 8 bytes and then extends backwards: the table stays small
// enough for the cache, and a run is still found whole.
constexpr std::size_t KEY_WORDS = 4;
constexpr std::size_t KEY_STEP = 8;
constexpr std::size_t KEY_BYTES = KEY_WORDS * sizeof(std::uint64_t);
constexpr unsigned int LARGEST_TABLE_BITS = 24;

std::uint32_t le32(const std::string& bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= std::uint32_t(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return value;
}

void putLe32(std::string& out, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

void putNumber(std::string& out, std::uint64_t value)
{
    for (;;) {
        const char low = static_cast<char>(value & 0x7F);
        value >>= 7;
        if (value == 0) {
            out += static_cast<char>(0x80 | low);
            return;
        }
        out += low;
        --value;
    }
}

// How many bytes from `from` of the source equal those from `at` of the target.
std::size_t runOf(const std::string& source, std::size_t from, const std::string& target, std::size_t at)
{
    std::size_t length = 0;
    while (from + length < source.size() && at + length < target.size() && source[from + length] == target[at + length])
        ++length;
    return length;
}

// Where each run of 32 bytes of the source stands, by a hash of them; a later
// run takes the place of an earlier one of the same hash.
class SourceIndex {
public:
    explicit SourceIndex(const std::string& source) : source(source)
    {
        while (bits < LARGEST_TABLE_BITS && (std::size_t(1) << bits) < source.size() / KEY_STEP)
            ++bits;
        places.assign(std::size_t(1) << bits, 0);
        for (std::size_t at = 0; at + KEY_BYTES <= source.size(); at += KEY_STEP)
            places[slot(source, at)] = static_cast<std::uint32_t>(at + 1);
    }

    // The run of the source that the hash finds for `at` of `target`, and
    // where it starts.
    std::size_t match(const std::string& target, std::size_t at, std::size_t& from) const
    {
        if (at + KEY_BYTES > target.size())
            return 0;
        const std::uint32_t place = places[slot(target, at)];
        if (place == 0)
            return 0;
        from = place - 1;
        return runOf(source, from, target, at);
    }

private:
    const std::string& source;
    unsigned int bits = 1;
    std::vector<std::uint32_t> places;

    std::size_t slot(const std::string& bytes, std::size_t at) const
    {
        std::uint64_t words[KEY_WORDS];
        std::memcpy(words, bytes.data() + at, KEY_BYTES);
        std::uint64_t key = 0;
        for (const std::uint64_t word : words)
            key = (key ^ word) * 0x9E3779B97F4A7C15ull;
        return static_cast<std::size_t>(key >> (64 - bits));
    }
};

class PatchWriter {
public:
    explicit PatchWriter(const std::string& target) : target(target) {}

    void sourceRead(std::size_t at, std::size_t length)
    {
        flushLiteral(at);
        command(SOURCE_READ, length);
        pending = at + length;
    }

    void sourceCopy(std::size_t at, std::size_t from, std::size_t length)
    {
        flushLiteral(at);
        command(SOURCE_COPY, length);
        const std::int64_t offset = static_cast<std::int64_t>(from) - static_cast<std::int64_t>(sourceAt);
        putNumber(out, (std::uint64_t(offset < 0 ? -offset : offset) << 1) | (offset < 0 ? 1 : 0));
        sourceAt = from + length;
        pending = at + length;
    }

    // Where a copy that goes on from the last one would start, and the
    // first target byte that no command holds yet.
    std::size_t nextSource() const { return sourceAt; }
    std::size_t nextTarget() const { return pending; }

    std::string finish(std::string head)
    {
        flushLiteral(target.size());
        return head + out;
    }

private:
    const std::string& target;
    std::string out;
    std::size_t pending = 0;  // the first target byte no command holds yet
    std::size_t sourceAt = 0; // where the next source copy is relative to

    void command(Command kind, std::size_t length)
    {
        putNumber(out, kind | (std::uint64_t(length - 1) << COMMAND_BITS));
    }

    void flushLiteral(std::size_t upTo)
    {
        if (upTo <= pending)
            return;
        command(TARGET_READ, upTo - pending);
        out.append(target, pending, upTo - pending);
        pending = upTo;
    }
};


// Reads a patch, every step bounded by what the patch and the files hold.
class PatchReader {
public:
    PatchReader(const std::string& patch, const std::string& path) : patch(patch), path(path) {}

    std::string apply(const std::string& source, const std::string& sourcePath)
    {
        if (!isBps(patch) || patch.size() < MAGIC.size() + FOOTER)
            throw damaged("it is not a BPS patch");
        if (crc32Of(patch, patch.size() - 4) != le32(patch, patch.size() - 4))
            throw damaged("its checksum does not match");
        end = patch.size() - FOOTER;
        at = MAGIC.size();
        const std::uint64_t sourceSize = number(), targetSize = number(), metadata = number();
        if (metadata > end - at)
            throw damaged("its metadata runs past its end");
        at += metadata;
        if (sourceSize != source.size() || crc32Of(source) != le32(patch, end))
            throw std::runtime_error("'" + path + "' was made for another file than '" + sourcePath + "': the " +
                                     (sourceSize != source.size() ? "size" : "CRC32") + " of its source differs");
        if (targetSize > LARGEST_FILE)
            throw std::runtime_error("'" + path + "' makes a file of " + std::to_string(targetSize) +
                                     " bytes, more than an archive can hold");
        std::string target;
        target.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(targetSize, source.size() + patch.size())));
        while (at < end)
            step(source, target, targetSize);
        if (target.size() != targetSize || crc32Of(target) != le32(patch, end + 4))
            throw damaged("what it makes does not match its checksum");
        return target;
    }

private:
    const std::string& patch;
    std::string path;
    std::size_t at = 0, end = 0;
    std::uint64_t sourceAt = 0, targetAt = 0;

    std::runtime_error damaged(const std::string& why) const
    {
        return std::runtime_error("'" + path + "' is damaged: " + why);
    }

    std::uint64_t number()
    {
        std::uint64_t value = 0, shift = 1;
        for (;;) {
            if (at >= end || shift > (std::uint64_t(1) << 56))
                throw damaged("a number runs past its end");
            const unsigned char byte = static_cast<unsigned char>(patch[at++]);
            value += (byte & 0x7F) * shift;
            if (byte & 0x80)
                return value;
            shift <<= 7;
            value += shift;
        }
    }

    std::uint64_t moved(std::uint64_t from, std::uint64_t limit)
    {
        const std::uint64_t offset = number();
        const std::uint64_t distance = offset >> 1;
        const bool back = offset & 1;
        if ((back && distance > from) || (!back && distance > limit - std::min(from, limit)))
            throw damaged("a copy starts outside the file it copies from");
        return back ? from - distance : from + distance;
    }

    void step(const std::string& source, std::string& target, std::uint64_t targetSize)
    {
        const std::uint64_t data = number();
        const std::uint64_t length = (data >> COMMAND_BITS) + 1;
        if (length > targetSize - target.size())
            throw damaged("it makes more bytes than it says");
        switch (static_cast<Command>(data & 3)) {
        case SOURCE_READ:
            if (target.size() + length > source.size())
                throw damaged("a command reads past the end of the source");
            target.append(source, target.size(), static_cast<std::size_t>(length));
            break;
        case TARGET_READ:
            if (length > end - at)
                throw damaged("its bytes run past its end");
            target.append(patch, at, static_cast<std::size_t>(length));
            at += static_cast<std::size_t>(length);
            break;
        case SOURCE_COPY:
            sourceAt = moved(sourceAt, source.size());
            if (length > source.size() - sourceAt)
                throw damaged("a copy reads past the end of the source");
            target.append(source, static_cast<std::size_t>(sourceAt), static_cast<std::size_t>(length));
            sourceAt += length;
            break;
        case TARGET_COPY:
            targetAt = moved(targetAt, target.size());
            if (targetAt >= target.size())
                throw damaged("a copy reads what is not written yet");
            // Byte by byte: a copy may overlap what it writes, to repeat a run.
            for (std::uint64_t i = 0; i < length; ++i)
                target += target[static_cast<std::size_t>(targetAt++)];
            break;
        }
    }
};

} // namespace

bool isBps(const std::string& bytes)
{
    return bytes.compare(0, MAGIC.size(), MAGIC) == 0;
}

std::string bpsPatch(const std::string& source, const std::string& target)
{
    const SourceIndex index(source);
    PatchWriter writer(target);
    for (std::size_t at = 0; at < target.size();) {
        const std::size_t same = runOf(source, at, target, at);
        // A run that goes on from the last copy is the likeliest: entries
        // behind an edit keep their order and move by the same distance.
        std::size_t from = writer.nextSource();
        std::size_t copy = runOf(source, from, target, at), found = 0;
        const std::size_t hashed = index.match(target, at, found);
        if (hashed > copy) {
            copy = hashed;
            from = found;
        }
        if (same >= SHORTEST_READ && same >= copy) {
            writer.sourceRead(at, same);
            at += same;
        } else if (copy >= SHORTEST_COPY) {
            // The run may have begun before the place the hash found it.
            std::size_t start = at;
            while (from > 0 && start > writer.nextTarget() && source[from - 1] == target[start - 1]) {
                --from;
                --start;
            }
            writer.sourceCopy(start, from, at + copy - start);
            at += copy;
        } else {
            ++at;
        }
    }
    std::string head = MAGIC;
    putNumber(head, source.size());
    putNumber(head, target.size());
    putNumber(head, 0);
    std::string patch = writer.finish(head);
    putLe32(patch, crc32Of(source));
    putLe32(patch, crc32Of(target));
    putLe32(patch, crc32Of(patch));
    return patch;
}

std::string applyBps(const std::string& source, const std::string& sourcePath, const std::string& patch,
                     const std::string& patchPath)
{
    return PatchReader(patch, patchPath).apply(source, sourcePath);
}

void requireAlone(const std::string& path, std::size_t patches)
{
    if (patches > 1)
        throw std::runtime_error("'" + path + "' is a BPS patch, which applies alone: patch with it first, then " +
                                 "with the others");
}

} // namespace lbxtool
