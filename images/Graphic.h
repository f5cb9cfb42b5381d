#ifndef ZORV2_LBX_GRAPHIC_H
#define ZORV2_LBX_GRAPHIC_H

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <iosfwd>
#include <string>
#include <vector>

namespace zorv2 {
namespace Lbx {

// Images and animations: a header, a frame offset table, an optional block of
// palette colours, and frames of 8-bit palette indices, run-coded or raw.
// Frames are decoded to RGBA on demand and cached until the next setPalette.
class Content::Graphic : public Content::AbstractContent {
public:
    enum FLAG {
        RAW = 0x0100,
        CLEAR = 0x0400,
        SHADOWS = 0x0800,
        PALETTE = 0x1000,
        LOOP = 0x2000
    };

    Graphic(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Graphic();
    virtual std::string info();

    unsigned short width();
    unsigned short height();
    unsigned short frames();
    unsigned char clearOnce();
    unsigned char clearMod();
    bool hasFlags();
    bool hasFlag(FLAG flag);
    bool hasPalette();

    unsigned short paletteOffset();
    unsigned short paletteSize();
    void palette(unsigned char* dest);
    unsigned char* palette();
    unsigned char* paletteCopy();
    void setPalette(unsigned char* palette);

    unsigned char* frame(unsigned int index);
    unsigned char** pixarray();
    bool isClear(unsigned int index);
    static bool isClear(unsigned int index, unsigned int frames, unsigned char clearOnce, unsigned char clearMod,
                        unsigned short flags);
    void genFrameCompressed(unsigned int index);
    void genFrameUncompressed(unsigned int index);

    static Content* create(unsigned char** frames, unsigned char* palette, unsigned short width,
                           unsigned short height, unsigned short frameCount, unsigned char clearOnce,
                           unsigned char clearMod, unsigned short palOffset, unsigned short palSize,
                           unsigned short flags);
    static Content* create(unsigned char* palette, unsigned char clearOnce, unsigned char clearMod,
                           unsigned short palOffset, unsigned short palSize, unsigned short flags, Content* content);
    static Content* create(unsigned char* palette, unsigned short palOffset, unsigned short palSize,
                           Content* content);
    static Content* create(unsigned char* palette, Content* content);
    static void create(Write& header, std::vector<Write>& frameWrites, unsigned char** frames,
                       unsigned char* palette, unsigned short width, unsigned short height,
                       unsigned short frameCount, unsigned char clearOnce, unsigned char clearMod,
                       unsigned char* internalPalette, unsigned short palOffset, unsigned short palSize,
                       unsigned short flags);
    static Content* createDebug(Content* content);
    static Content* createDebug(Content* content, std::ostream& report);
    static bool isTransparent(unsigned int pixel, unsigned char** frames, unsigned int frame,
                              unsigned int frameCount, unsigned char clearOnce, unsigned char clearMod,
                              unsigned short flags);

private:
    bool readTable(unsigned int* table);
    bool firstOffsetFits(unsigned int first);
    bool framesFit(unsigned int* table);
    // Both throw "too large to decode" where decoding would ask too much of
    // memory: one frame, or the frames the cache would hold at once.
    std::size_t frameBytes();
    void ensureCacheRoom(std::uint64_t frames);
    void dropFrames();
    // setPalette empties the cache slots but keeps their buffers for the
    // frames decoded next: every frame has the same size, and a large
    // animation given back to the system and taken again costs a page fault
    // per 4 KiB.
    void recycleFrames();
    unsigned char* frameBuffer(std::size_t bytes);
    // genFrameCompressed; over a frame that starts empty, `clear` zeroes what
    // the runs leave, so that the buffer needs no clearing first.
    void paintCompressed(unsigned int index, bool clear);
    // Creation and its verification decode every frame through a fake
    // palette, in which each painted pixel's colour stands for its stored
    // index. The graphic owns that palette until the next setPalette.
    unsigned char** decodeIndices();

    unsigned short imageWidth;
    unsigned short imageHeight;
    unsigned short frameCount;
    unsigned short flagWord;
    unsigned char clearOnceValue;
    unsigned char clearModValue;
    unsigned char* ownPalette;
    unsigned int* frameTable;
    unsigned int paletteBlock;
    unsigned char* currentPalette;
    unsigned char** frameCache;
    std::unique_ptr<unsigned char[]> installedPalette;
    std::vector<std::unique_ptr<unsigned char[]>> spareFrames;
    unsigned int cachedFrames;
};

} // namespace Lbx
} // namespace zorv2

#endif
