// Prints a line for every frame of every graphic and cursor of the archives
// named: ARCHIVE INDEX FRAME and an FNV-1a checksum of its RGBA bytes in the
// colours `lbx export` gives it. A canvas keeps no colour under alpha 0, so
// transparent pixels count as four zero bytes.
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "tools/modding/Files.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/Shapes.h"

#include <cstdint>
#include <cstdio>

using namespace lbxtool;

namespace {

void print(const std::string& archive, unsigned int index, unsigned int frame, const unsigned char* rgba,
           std::size_t pixels)
{
    std::uint32_t hash = 2166136261u;
    for (std::size_t p = 0; p < pixels; ++p)
        for (unsigned int b = 0; b < PIXEL_SIZE; ++b) {
            const unsigned char* pixel = rgba + p * PIXEL_SIZE;
            hash = (hash ^ (pixel[ALPHA] == 0 ? 0u : pixel[b])) * 16777619u;
        }
    std::printf("%s %u %u %08x\n", archive.c_str(), index, frame, hash);
}

// Warnings go to stderr, apart from the lines this prints.
class ToStderr : public Warnings {
public:
    void warn(const std::string& message) override { std::fprintf(stderr, "warning: %s\n", message.c_str()); }
};

} // namespace

int main(int argc, char** argv)
{
    PlainFiles files;
    ToStderr warnings;
    for (int a = 1; a < argc; ++a) {
        File archive(argv[a]);
        PaletteSource palettes(archive, {}, files, warnings);
        for (unsigned int i = 0; i < archive.size(); ++i) {
            if (archive[i]->type() == Content::CURSOR) {
                for (unsigned int f = 0; f < CURSOR_FRAMES; ++f)
                    print(argv[a], i, f, archive[i]->cursor()->get(f), CURSOR_SIDE * CURSOR_SIDE);
                continue;
            }
            if (archive[i]->type() != Content::GRAPHIC)
                continue;
            Content::Graphic* graphic = archive[i]->graphic();
            if (graphic->width() == 0 || graphic->height() == 0)
                continue;
            PaletteArray palette = palettes.forGraphic(i);
            graphic->setPalette(palette.get());
            for (unsigned int f = 0; f < graphic->frames(); ++f)
                print(argv[a], i, f, graphic->frame(f), std::size_t(graphic->width()) * graphic->height());
            graphic->setPalette(nullptr);
        }
    }
}
