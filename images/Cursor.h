#ifndef ZORV2_LBX_CURSOR_H
#define ZORV2_LBX_CURSOR_H

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <iosfwd>
#include <string>

namespace zorv2 {
namespace Lbx {

// A palette and 20 images of 576 pixels in one entry of exactly 12544 bytes.
// Index 0 is transparent.
class Content::Cursor : public Content::AbstractContent {
public:
    Cursor(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Cursor();
    virtual std::string info();

    void setPalette(unsigned char* palette);
    unsigned char* get(unsigned int index);
    unsigned char** pixarray();
    unsigned char* gen(unsigned int index, unsigned char* palette);
    unsigned char* palette();
    unsigned char* paletteCopy();

    static Content* create(unsigned char* palette, unsigned char** frames);
    static Content* create(unsigned char* palette, Content* content);
    static void create(Write& write, unsigned char* palette, unsigned char** frames, unsigned char* search);
    static Content* createDebug(Content* content);
    static Content* createDebug(Content* content, std::ostream& report);

private:
    bool hasCursorLayout();
    // Frees the decoded frames and nulls their slots; the cache array stays.
    void releaseFrames();
    // Builds an entry from the indices of `source`, coloured with `palette`.
    static Content* recreate(Write& write, unsigned char* palette, Cursor* source);

    unsigned char** frameCache;
    unsigned char* ownPalette;
    unsigned char* outsidePalette;
};

} // namespace Lbx
} // namespace zorv2

#endif
