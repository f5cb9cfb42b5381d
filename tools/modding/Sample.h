#ifndef ZORV2_LBX_TOOLS_MODDING_SAMPLE_H
#define ZORV2_LBX_TOOLS_MODDING_SAMPLE_H

#include "archive/File.h"

#include <vector>

namespace lbxtool {

using zorv2::Lbx::File;

// One archive of the sample set, made with the library's own create
// functions and named after a catalogue row, so that palettes resolve
// through the game's tables.
struct SampleArchive {
    const char* name; // its file name
    void (*fill)(File& archive);
};

// FONTS.LBX, INBOX.LBX, CONFIRM.LBX, SPHERSFX.LBX, STARNAME.LBX.
const std::vector<SampleArchive>& sampleArchives();

} // namespace lbxtool

#endif
