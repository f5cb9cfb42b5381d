#ifndef ZORV2_LBX_TOOLS_EXPORT_H
#define ZORV2_LBX_TOOLS_EXPORT_H

#include <string>
#include <vector>

namespace lbxtool {

struct ExportOptions {
    std::vector<std::string> archives;
    std::vector<unsigned int> indices;
    std::string folder = ".";
    std::string palette; // ARCHIVE:INDEX, or empty for the game's own sources
    bool html = false;
    unsigned int jobs = 0; // entries worked on at once; 0: one a core
};

// Graphics and cursors to PNG (each frame, and a sprite sheet per
// animation), text tables to .txt, font metrics to a text file, sounds to
// .wav, for each archive; optionally the gallery page. Archives of one stem
// get names of their own in the folder. Returns the exit status.
int exportEntries(const ExportOptions& options);

} // namespace lbxtool

#endif
