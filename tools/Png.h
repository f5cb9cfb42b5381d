#ifndef ZORV2_LBX_TOOLS_PNG_H
#define ZORV2_LBX_TOOLS_PNG_H

#include <string>
#include <vector>

// RGBA images as the library hands them out (four bytes a pixel, alpha 0
// transparent), to and from PNG files.
namespace lbxtool {

struct Image {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<unsigned char> rgba;
};

// Reads any PNG as 8-bit RGBA; throws a message naming the file.
Image loadPng(const std::string& path);

// Writes `width` × `height` pixels from `rgba`; throws a message naming the file.
void savePng(const std::string& path, const unsigned char* rgba, unsigned int width, unsigned int height);

// The frames side by side, at most eight a row, in one image.
Image spriteSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height);

} // namespace lbxtool

#endif
