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

// A PNG as an editor leaves it. An 8-bit indexed PNG with a whole palette of
// 256 colours, as the tool writes the frames of an entry, keeps its indices
// and palette, so that stored palette indices travel through it unchanged;
// any other PNG is read as RGBA.
struct Picture {
    unsigned int width = 0;
    unsigned int height = 0;
    bool indexed = false;
    std::vector<unsigned char> pixels;  // one index a pixel when indexed, else RGBA
    std::vector<unsigned char> palette; // when indexed: its entries as RGBA, transparency in alpha
};

// Reads the PNG held in `bytes`; `name` is the file it came from, for messages.
Picture readPicture(const std::string& bytes, const std::string& name);

// The pixels of a picture as RGBA, an indexed one through its palette.
std::vector<unsigned char> rgbaOf(const Picture& picture);

// Reads any PNG as 8-bit RGBA; throws a message naming the file.
Image loadPng(const std::string& path);

// The PNG file of an 8-bit indexed picture with `palette`'s 256 RGBA entries
// as its palette, an entry's alpha becoming its transparency.
std::string indexedPng(const unsigned char* indices, unsigned int width, unsigned int height,
                       const unsigned char* palette, const std::string& name);

// The PNG file of an RGBA picture, always as RGBA: the tool writes indexed
// PNGs only where the indices are an entry's own.
std::string rgbaPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string& name);

// Writes `width` × `height` pixels from `rgba`; throws a message naming the file.
void savePng(const std::string& path, const unsigned char* rgba, unsigned int width, unsigned int height);

// The frames side by side, at most eight a row, in one image.
Image spriteSheet(const std::vector<const unsigned char*>& frames, unsigned int width, unsigned int height);

} // namespace lbxtool

#endif
