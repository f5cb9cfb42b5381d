#include "tools/modding/EntryFiles.h"

#include "entry/Content.h"
#include "tools/modding/Header.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/PaletteFile.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>

namespace lbxtool {

using zorv2::Lbx::Content;

namespace {

const std::string PNG_SIGNATURE = "\x89PNG\r\n\x1A\n";
const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";

// An archive's head: the entry count, the signature, the version and the
// first offset, which always points behind the header area. A cut-off or
// damaged archive keeps them and is still an archive.
constexpr std::size_t ARCHIVE_HEAD = 12;
constexpr std::uint32_t ARCHIVE_SIGNATURE = 0x0000FEAD;

// A RIFF file: "RIFF", the length of what follows the first 8 bytes, the
// form, then chunks of an id, a length and as many bytes, each padded to an
// even length. The library takes a sound by its head alone: the length
// must match the file and the first chunk must be "fmt ".
constexpr std::size_t RIFF_LENGTH_OFFSET = 4;
constexpr std::size_t FORM_OFFSET = 8;
constexpr std::size_t FIRST_CHUNK = 12;
constexpr std::size_t CHUNK_HEAD = 8;
constexpr std::size_t SOUND_HEAD = 16; // the library wants at least a byte behind it
// In the "fmt " chunk: channels at 2, samples a second at 4, bits at 14.
constexpr std::size_t FORMAT_SIZE = 16;
constexpr std::size_t CHANNELS_AT = 2;
constexpr std::size_t RATE_AT = 4;
constexpr std::size_t BITS_AT = 14;

bool startsWith(const char* data, std::size_t size, const std::string& head, std::size_t at = 0)
{
    return size >= at + head.size() && std::memcmp(data + at, head.data(), head.size()) == 0;
}

std::uint32_t le16(const char* data, std::size_t at)
{
    return static_cast<unsigned char>(data[at]) | static_cast<unsigned char>(data[at + 1]) << 8;
}

std::uint32_t le32(const char* data, std::size_t at)
{
    return le16(data, at) | le16(data, at + 2) << 16;
}

bool archive(const char* data, std::size_t size)
{
    return size >= ARCHIVE_HEAD && le16(data, 0) <= LARGEST_ARCHIVE && le32(data, 2) == ARCHIVE_SIGNATURE &&
           le16(data, 6) == 0 && le32(data, 8) == HEADER_AREA_SIZE;
}

const char* skipSpace(const char* at, const char* end)
{
    while (at != end && std::isspace(static_cast<unsigned char>(*at)))
        ++at;
    return at;
}

FileKind json(const char* data, std::size_t size)
{
    const char* end = data + size;
    const char* at = startsWith(data, size, BYTE_ORDER_MARK) ? data + BYTE_ORDER_MARK.size() : data;
    at = skipSpace(at, end);
    if (at == end || (*at != '{' && *at != '['))
        return FileKind::ENTRY;
    const Json parsed = Json::parse(at, end, nullptr, false);
    if (parsed.is_discarded())
        return FileKind::ENTRY;
    return parsed.is_object() && parsed.contains(key::ARCHIVE) && parsed.contains(key::ENTRIES) ? FileKind::MANIFEST
                                                                                                 : FileKind::JSON;
}

// The bytes that follow a UTF-8 lead byte; -1 for a byte that leads none.
int continuations(unsigned char lead)
{
    if (lead >= 0xC2 && lead <= 0xDF)
        return 1;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 2;
    if (lead >= 0xF0 && lead <= 0xF4)
        return 3;
    return -1;
}

// Lines of UTF-8 text without control bytes but tabs and line breaks, the
// last one ended: what editors save. Entries hold binary fields, zeros
// among them, and fail this at once.
bool text(const char* data, std::size_t size)
{
    if (size == 0 || data[size - 1] != '\n')
        return false;
    for (std::size_t i = 0; i < size; ++i) {
        const unsigned char byte = static_cast<unsigned char>(data[i]);
        if (byte == '\t' || byte == '\n' || byte == '\r' || (byte >= 0x20 && byte < 0x7F))
            continue;
        const int more = continuations(byte);
        if (more < 0 || i + more >= size)
            return false;
        for (int c = 1; c <= more; ++c)
            if ((static_cast<unsigned char>(data[i + c]) & 0xC0) != 0x80)
                return false;
        i += static_cast<std::size_t>(more);
    }
    return true;
}

bool riffWave(const char* data, std::size_t size)
{
    return startsWith(data, size, "RIFF") && startsWith(data, size, "WAVE", FORM_OFFSET);
}

// Whether the library takes the bytes as an entry of a kind it knows: an
// empty entry's marker, for one, is a line of text.
bool knownEntry(const char* data, std::size_t size)
{
    char* block = new char[size];
    std::memcpy(block, data, size);
    Content entry("", block, static_cast<unsigned int>(size));
    return entry.type() != Content::UNKNOWN;
}

std::string chunkName(const char* data, std::size_t at)
{
    std::string name;
    for (std::size_t i = at; i < at + 4; ++i) {
        const unsigned char byte = static_cast<unsigned char>(data[i]);
        name += byte >= 0x20 && byte < 0x7F ? std::string(1, static_cast<char>(byte)) : "?";
    }
    return name;
}

} // namespace

FileKind fileKind(const char* data, std::size_t size)
{
    if (startsWith(data, size, PNG_SIGNATURE))
        return FileKind::PNG;
    if (archive(data, size))
        return FileKind::ARCHIVE;
    if (isPaletteFile(data, size))
        return FileKind::PALETTE;
    const FileKind parsed = json(data, size);
    if (parsed != FileKind::ENTRY)
        return parsed;
    return text(data, size) && !knownEntry(data, size) ? FileKind::TEXT : FileKind::ENTRY;
}

std::string fileKindName(FileKind kind)
{
    switch (kind) {
    case FileKind::PNG: return "a PNG image";
    case FileKind::ARCHIVE: return "an LBX archive";
    case FileKind::MANIFEST: return "the manifest of an unpacked archive";
    case FileKind::JSON: return "a JSON file";
    case FileKind::PALETTE: return "a palette file";
    case FileKind::TEXT: return "text";
    default: return "an entry's bytes";
    }
}

bool claimsSound(const std::string& name, const char* data, std::size_t size)
{
    const std::string ending = ".wav";
    std::string last = name.substr(name.size() - std::min(name.size(), ending.size()));
    std::transform(last.begin(), last.end(), last.begin(), [](unsigned char c) { return std::tolower(c); });
    return last == ending || riffWave(data, size);
}

std::optional<WaveFormat> waveFormat(const char* data, std::size_t size)
{
    if (!riffWave(data, size))
        return std::nullopt;
    // Positions in 64 bits: a chunk's length may be anything up to 4 GiB.
    std::uint64_t at = FIRST_CHUNK;
    while (at + CHUNK_HEAD <= size) {
        const std::uint64_t length = le32(data, static_cast<std::size_t>(at) + 4);
        const std::size_t body = static_cast<std::size_t>(at) + CHUNK_HEAD;
        if (startsWith(data, size, "fmt ", static_cast<std::size_t>(at))) {
            if (length < FORMAT_SIZE || body + FORMAT_SIZE > size)
                return std::nullopt;
            return WaveFormat{le16(data, body + CHANNELS_AT), le32(data, body + RATE_AT), le16(data, body + BITS_AT)};
        }
        at += CHUNK_HEAD + length + (length & 1);
    }
    return std::nullopt;
}

std::string formatName(const WaveFormat& format)
{
    const std::string channels = format.channels == 1   ? "mono"
                                 : format.channels == 2 ? "stereo"
                                                        : std::to_string(format.channels) + " channels";
    return std::to_string(format.rate) + " Hz, " + std::to_string(format.bits) + "-bit, " + channels;
}

std::string soundProblem(const char* data, std::size_t size)
{
    if (!riffWave(data, size))
        return "is no RIFF WAVE file, as a sound must be";
    const std::string taken = "is a WAVE file that the game does not take as a sound: ";
    const std::uint64_t told = std::uint64_t{le32(data, RIFF_LENGTH_OFFSET)} + CHUNK_HEAD;
    if (told != size)
        return taken + "its RIFF header says it is " + std::to_string(told) + " bytes long, and it is " +
               std::to_string(size);
    if (size < FIRST_CHUNK + 4)
        return taken + "it ends before its first chunk";
    if (!startsWith(data, size, "fmt ", FIRST_CHUNK))
        return taken + "its first chunk is '" + chunkName(data, FIRST_CHUNK) +
               "', not the format 'fmt '";
    if (size <= SOUND_HEAD)
        return taken + "it ends inside its format chunk";
    return "";
}

} // namespace lbxtool
