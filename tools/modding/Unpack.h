#ifndef ZORV2_LBX_TOOLS_MODDING_UNPACK_H
#define ZORV2_LBX_TOOLS_MODDING_UNPACK_H

#include "archive/File.h"
#include "tools/modding/Charset.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/PaletteSource.h"

#include <map>
#include <string>

// An archive taken apart into files that ordinary editors open, with a
// manifest of what they cannot hold; pack puts them together again byte for
// byte.
namespace lbxtool {

using zorv2::Lbx::File;

// One entry unpacked: its part of the manifest, and its files by name.
struct UnpackedEntry {
    Json manifest;
    std::map<std::string, std::string> files;
    std::string kept; // why its bytes are kept as they are, if they are
};

// `entry`, entry `index` of the archive at `path`, its files named after
// `stem`, its colours from `palettes`. The entry is decoded where it
// stands: a copy of the caller's own, whose frames go with it.
UnpackedEntry unpackEntry(Content& entry, const std::string& path, unsigned int index, const std::string& stem,
                          PaletteSource& palettes, const Charset* charset = nullptr);
// The same for entry `index` of `archive`, on a copy.
UnpackedEntry unpackEntry(File& archive, const std::string& path, unsigned int index, const std::string& stem,
                          PaletteSource& palettes, const Charset* charset = nullptr);

// The manifest's own fields for the archive at `path` of `count` entries,
// whose header area holds `headerArea`, and the charset of its text files
// when there is one; its entries follow in order.
Json archiveManifest(bool tagged, unsigned int count, const std::string& path, const std::string& headerArea,
                     const Charset* charset = nullptr);
Json archiveManifest(File& archive, const std::string& path, const std::string& headerArea,
                     const Charset* charset = nullptr);

} // namespace lbxtool

#endif
