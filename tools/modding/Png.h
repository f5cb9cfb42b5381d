#ifndef ZORV2_LBX_TOOLS_MODDING_PNG_H
#define ZORV2_LBX_TOOLS_MODDING_PNG_H

#include <string>
#include <vector>

// Pictures to and from PNG files, held in memory: RGBA as the library hands
// frames out (four bytes a pixel, alpha 0 transparent), or palette indices.
namespace lbxtool {

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

// Reads the PNG held in `bytes`; `name` is the file it came from, for
// messages.
Picture readPicture(const std::string& bytes, const std::string& name);

// The pixels of a picture as RGBA, an indexed one through its palette.
std::vector<unsigned char> rgbaOf(const Picture& picture);

// Gives an indexed picture the palette `entries` (RGBA, four bytes an
// entry). Only a whole palette of 256 keeps the indices; with any other the
// picture becomes RGBA.
void takePalette(Picture& picture, const std::vector<unsigned char>& entries);

// The PNG file of an 8-bit indexed picture with `palette`'s first `colours`
// RGBA entries as its palette, an entry's alpha becoming its transparency.
std::string indexedPng(const unsigned char* indices, unsigned int width, unsigned int height,
                       const unsigned char* palette, const std::string& name, unsigned int colours = 256);

// The PNG file of an RGBA picture, always as RGBA: the tool writes indexed
// PNGs only where the indices are an entry's own.
std::string rgbaPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string& name);

// The PNG file of a picture to look at, not to edit back: 8-bit indexed in
// its own colours when it has fewer than 256 of them, which leaves a
// quarter of the bytes to compress, else RGBA. A palette of fewer than 256
// reads back as RGBA: no reader takes its indices for an entry's.
std::string viewPng(const unsigned char* rgba, unsigned int width, unsigned int height, const std::string& name);

} // namespace lbxtool

#endif
