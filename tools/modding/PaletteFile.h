#ifndef ZORV2_LBX_TOOLS_MODDING_PALETTEFILE_H
#define ZORV2_LBX_TOOLS_MODDING_PALETTEFILE_H

#include <cstddef>
#include <string>
#include <vector>

// Palettes as the text files that paint programs read and write:
//
//   JASC-PAL
//   0100
//   16           (the number of colours)
//   252 0 4      (red, green, blue of each, 0 to 255)
namespace lbxtool {

// The file of `count` colours of a palette array, from entry `first` on.
std::string paletteFile(const unsigned char* palette, unsigned int first, unsigned int count);

// The colours of such a file, four bytes each (alpha 255); `name` is the
// file, for messages that also give the line.
std::vector<unsigned char> readPaletteFile(const std::string& text, const std::string& name);

// Whether `data` begins as such a file: the word on its own first line.
bool isPaletteFile(const char* data, std::size_t size);

} // namespace lbxtool

#endif
