// Decodes a graphic with its palette resolved the way the game does it, and
// writes every frame as a binary PPM (the alpha channel dropped), with no
// dependency beyond the library.
// Usage: decode_graphic DIR ARCHIVE INDEX   (e.g. decode_graphic data LOGO 0)
#include "archive/File.h"
#include "entry/Content.h"
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "knowledge/Magic.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

using namespace zorv2::Lbx;

namespace {

// Paints the palette held by entry `index` of archive `row` over `palette`.
void paintFrom(const std::string& dir, File::LBX_FILE row, unsigned int index, unsigned char* palette)
{
    std::unique_ptr<Content> source(File::at(dir + "/" + File::LBX_FILE_NAME(row) + ".LBX", index));
    if (source->type() == Content::CURSOR)
        std::copy_n(source->cursor()->palette(), 1024, palette);
    else
        source->graphic()->palette(palette);
}

void writePpm(const std::string& path, const unsigned char* rgba, unsigned int width, unsigned int height)
{
    std::ofstream out(path, std::ios::binary);
    out << "P6\n" << width << ' ' << height << "\n255\n";
    for (unsigned int p = 0; p < width * height; ++p)
        out.write(reinterpret_cast<const char*>(rgba + 4 * p), 3);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: " << argv[0] << " DIR ARCHIVE INDEX\n";
        return 2;
    }
    const std::string dir = argv[1];
    const File::LBX_FILE row = File::LBX_ENUM(argv[2]);
    const auto index = static_cast<unsigned int>(std::stoul(argv[3]));
    try {
        std::unique_ptr<Content> entry(File::at(dir + "/" + argv[2] + ".LBX", index));
        Content::Graphic* graphic = entry->graphic();

        // Opaque black, then the font archive's palette, then the archive's
        // own source, then the graphic's own block on top.
        std::unique_ptr<unsigned char[]> palette(Content::Palette::empty());
        File::LBX_FILE sourceRow;
        unsigned int sourceIndex;
        if (Magic::palInt(row, index, &sourceRow, &sourceIndex))
            paintFrom(dir, sourceRow, sourceIndex, palette.get());
        if (Magic::palExt(row, index, &sourceRow, &sourceIndex))
            paintFrom(dir, sourceRow, sourceIndex, palette.get());
        if (graphic->hasPalette())
            graphic->palette(palette.get());
        graphic->setPalette(palette.get()); // not copied: `palette` outlives the decoding

        for (unsigned int f = 0; f < graphic->frames(); ++f)
            writePpm(std::string(argv[2]) + "-" + std::to_string(index) + "-" + std::to_string(f) + ".ppm",
                     graphic->frame(f), graphic->width(), graphic->height());
        std::cout << graphic->frames() << " frames written\n";
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
        return 1;
    }
}
