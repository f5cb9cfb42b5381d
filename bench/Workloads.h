#ifndef ZORV2_LBX_BENCH_WORKLOADS_H
#define ZORV2_LBX_BENCH_WORKLOADS_H

#include "archive/File.h"
#include "entry/Content.h"
#include "tests/support/Fixtures.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

// Everything the benchmarks work on is made by the library itself, from
// pixels, strings and record bytes generated here; nothing is read from
// outside.
namespace bench {

using fixtures::Pixels;
using fixtures::TempDir;

// A palette array of 256 distinct opaque colours, all multiples of 4.
Pixels scenePalette();

// How an animation's frames are stored.
enum class Coding { DELTA, CLEAR, RAW };
const char* codingName(Coding coding);
// The graphic flags that store frames so.
unsigned short flagsOf(Coding coding);

// RGBA frames with a disc moving across them, so that each frame differs
// from its predecessor in a small region. A scene has an opaque textured
// background; a sprite is the disc alone over transparency.
enum class Shape { SCENE, SPRITE };
struct Frames {
    unsigned short width;
    unsigned short height;
    std::vector<Pixels> rgba;
    std::vector<unsigned char*> pointers;
};
Frames movingDisc(unsigned short width, unsigned short height, unsigned short count, Shape shape);

// A graphic entry of those frames in the scene palette, stored as `coding`.
std::unique_ptr<zorv2::Lbx::Content> graphicEntry(Frames& frames, Coding coding);

// `count` strings of 3 to 90 bytes, as a game's message tables hold them.
std::vector<std::string> messageStrings(unsigned int count);

// The 20 frames of a cursor in the scene palette, an arrow over transparency.
Frames cursorFrames();

// Entry `index` of the mixed archive: graphics, cursors, text tables, fonts,
// sounds, fixed records and empty entries in a fixed rotation.
std::unique_ptr<zorv2::Lbx::Content> archiveEntry(unsigned int index);

// The mixed archive holds every entry an archive can.
constexpr unsigned int FULL_ARCHIVE = 509;

// The big archive: 160 animations of 30 frames at 640x480, stored as deltas
// (about 100 MB), whose frames decoded take 5.9 GB: more than a small
// machine has, so that a tool must not hold them all at once.
constexpr unsigned int BIG_ANIMATIONS = 160;
constexpr unsigned short BIG_FRAMES = 30, BIG_WIDTH = 640, BIG_HEIGHT = 480;

// A mixed archive of the first `entries` entries, or the big archive, as
// written to a file.
struct Archive {
    std::string path;
    unsigned int entries;
    std::int64_t bytes;
    std::vector<unsigned int> offsets;
};

// The archives measured, each written on first use from one set of entries,
// so that a filtered run makes only what it measures.
class Archives {
public:
    explicit Archives(const TempDir& dir) : dir(dir) {}

    const TempDir& folder() const { return dir; }
    const Archive& get(unsigned int entries);
    const Archive& big();

private:
    Archive write(unsigned int entries);
    Archive written(zorv2::Lbx::File& archive, const std::string& name);

    const TempDir& dir;
    std::unique_ptr<zorv2::Lbx::File> mixed;
    std::map<unsigned int, Archive> mixedWritten;
    std::unique_ptr<Archive> bigWritten;
};

std::string openName(unsigned int entries);

// The floor of every palette image decoder: each index byte mapped through
// a table of 256 four-byte colours, nothing else.
class PaletteLoop {
public:
    explicit PaletteLoop(const Pixels& palette);
    void map(const unsigned char* indices, std::size_t count, std::uint32_t* rgba);

private:
    std::uint32_t table[256];
};

} // namespace bench

#endif
