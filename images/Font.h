#ifndef ZORV2_LBX_FONT_H
#define ZORV2_LBX_FONT_H

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace zorv2 {
namespace Lbx {

// Six fonts of 256 glyphs: a fixed 9116-byte header of heights, widths and
// glyph offsets, followed by glyph bytes that the library treats as opaque.
class Content::Font : public Content::AbstractContent {
public:
    Font(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Font();
    virtual std::string info();

    void setPalette(unsigned char* palette);
    unsigned short height(unsigned int font);
    unsigned char width(unsigned int font, unsigned int glyph);
    unsigned int offset(unsigned int font, unsigned int glyph);
    unsigned char* glyph(unsigned int font, unsigned int glyph);

    static Content* create(unsigned char* palette, unsigned short* heights, unsigned char* widths,
                           unsigned char** glyphs);
    static void create(Write& write, std::vector<Write>& glyphWrites, unsigned char* palette,
                       unsigned short* heights, unsigned char* widths, unsigned char** glyphs);
    static Content* createDebug(Content* content);
    static Content* createDebug(Content* content, std::ostream& report);

private:
    bool hasFontHeader();
    bool bytesAre(unsigned int begin, unsigned int end, unsigned char value);
    unsigned int storedOffset(unsigned int font, unsigned int glyph);
    void resolveOffsets();
    // Installs a palette that the font itself frees, at destruction or at the
    // next setPalette.
    void adoptPalette(unsigned char* palette);
    void releaseOwnedPalette();

    unsigned char* fontPalette;
    bool ownsPalette;
    // Where each glyph of each font begins, end marks included; built on the
    // first call to offset.
    std::vector<unsigned int> resolvedOffsets;
};

} // namespace Lbx
} // namespace zorv2

#endif
