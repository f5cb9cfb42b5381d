#ifndef ZORV2_LBX_TOOLS_MODDING_H
#define ZORV2_LBX_TOOLS_MODDING_H

#include <string>
#include <vector>

// The modder's round trip: an archive taken apart into files that ordinary
// editors open, with a manifest of what they cannot hold, and put together
// again byte for byte.
namespace lbxtool {

struct UnpackOptions {
    std::vector<std::string> archives;
    std::string folder = ".";
    bool force = false; // write into a folder that already holds files
    unsigned int jobs = 0; // entries worked on at once; 0: one a core
};

// Each archive into DIR/STEM/, with DIR/STEM/archive.json. Returns the exit status.
int unpack(const UnpackOptions& options);

struct PackOptions {
    std::string folder;
    std::string output; // empty: beside the folder, under the archive's own name
    bool force = false;   // replace an existing archive
    bool nearest = false; // RGBA colours not in the palette take the nearest
    unsigned int jobs = 0;    // entries worked on at once; 0: one a core
};

// The archive from an unpacked folder. Returns the exit status.
int pack(const PackOptions& options);

} // namespace lbxtool

#endif
