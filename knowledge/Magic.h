#ifndef ZORV2_LBX_MAGIC_H
#define ZORV2_LBX_MAGIC_H

#include "archive/File.h"

namespace zorv2 {
namespace Lbx {

// What cannot be read from an archive itself: how many entries each archive
// of the game is expected to hold, and where an entry's palette comes from.
// Pure functions of their arguments; they never fail.
class Magic {
public:
    static unsigned int size(File::LBX_FILE file);
    // An entry of FONTS (of IFONTS for INSTALL); 0 means none.
    static unsigned int palExt(File::LBX_FILE file, unsigned int index);
    // An entry of the same archive; 512 means none.
    static unsigned int palInt(File::LBX_FILE file, unsigned int index);
    // Each four-argument form stands on the two-argument form of the other name.
    static bool palInt(File::LBX_FILE file, unsigned int index, File::LBX_FILE* palFile, unsigned int* palIndex);
    static bool palExt(File::LBX_FILE file, unsigned int index, File::LBX_FILE* palFile, unsigned int* palIndex);
};

} // namespace Lbx
} // namespace zorv2

#endif
