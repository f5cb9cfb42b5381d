#ifndef ZORV2_LBX_TOOLS_MODDING_ENTRYFILES_H
#define ZORV2_LBX_TOOLS_MODDING_ENTRYFILES_H

#include <cstddef>
#include <optional>
#include <string>

// What a file handed over as an entry's bytes really holds. The library
// takes any bytes as an entry, so a picture, an archive or a manifest given
// by mistake would be stored as an unknown entry without a word; the tools
// ask here first.
namespace lbxtool {

enum class FileKind {
    ENTRY,    // none of the files below: bytes that an entry may hold
    PNG,      // a picture, which import makes into a graphic
    ARCHIVE,  // an archive whole, cut off or not; archives do not nest
    MANIFEST, // the archive.json of an unpacked archive
    JSON,     // any other JSON
    PALETTE,  // a palette file, as unpack writes them
    TEXT,     // lines of plain text, as unpack and export write text tables,
              // that the library takes for no entry of a kind it knows
};

FileKind fileKind(const char* data, std::size_t size);

// "a PNG image", "an LBX archive", ... to follow the file's name.
std::string fileKindName(FileKind kind);

// Whether the file `name` says it is a sound, by its name (".wav", whatever
// the case) or by its head ("RIFF" and "WAVE").
bool claimsSound(const std::string& name, const char* data, std::size_t size);

// The format of a RIFF WAVE file, read from its "fmt " chunk wherever that
// stands; no value when the bytes hold no such chunk whole.
struct WaveFormat {
    unsigned int channels = 0;
    unsigned int rate = 0; // samples a second
    unsigned int bits = 0; // a sample
};
std::optional<WaveFormat> waveFormat(const char* data, std::size_t size);

// "22050 Hz, 8-bit, mono".
std::string formatName(const WaveFormat& format);

// What keeps `data` from being a sound entry, to follow the file's name:
// "is no RIFF WAVE file, as a sound must be", or a WAVE file whose head the
// library reads otherwise and why. Empty when the library takes it as a
// sound.
std::string soundProblem(const char* data, std::size_t size);

} // namespace lbxtool

#endif
