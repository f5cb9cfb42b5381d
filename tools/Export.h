#ifndef ZORV2_LBX_TOOLS_EXPORT_H
#define ZORV2_LBX_TOOLS_EXPORT_H

#include <string>
#include <vector>

namespace lbxtool {

struct ExportOptions {
    std::string archive;
    std::vector<unsigned int> indices;
    std::string folder = ".";
    std::string palette; // ARCHIVE:INDEX, or empty for the game's own sources
    bool html = false;
};

// Graphics and cursors to PNG (each frame, and a sprite sheet per
// animation), text tables to .txt, font metrics to a text file, sounds to
// .wav; optionally the gallery page. Returns the exit status.
int exportEntries(const ExportOptions& options);

} // namespace lbxtool

#endif
