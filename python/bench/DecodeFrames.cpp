// The C++ side of python/bench/frames.py: decodes every frame of every
// graphic and cursor of an archive, as the Python module's frames() does,
// in a fresh archive each round, and prints each round's time in seconds.
// Opening is not timed: it is the same library call from either side.
#include "archive/File.h"
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const int rounds = std::stoi(argv[2]);
#ifdef __GLIBC__
    // As the benchmarks keep freed memory: a round then reuses the pages of
    // the one before instead of faulting fresh ones in, as the Python
    // process's allocator comes to do on its own.
    mallopt(M_MMAP_THRESHOLD, 64 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 512 * 1024 * 1024);
#endif
    std::unique_ptr<unsigned char[]> palette(Content::Palette::empty());
    for (int round = 0; round < rounds; ++round) {
        File archive(argv[1]);
        const auto start = std::chrono::steady_clock::now();
        unsigned long touched = 0;
        for (unsigned int i = 0; i < archive.size(); ++i) {
            if (archive[i]->type() == Content::CURSOR) {
                Content::Cursor* cursor = archive[i]->cursor();
                cursor->setPalette(palette.get());
                for (unsigned int f = 0; f < 20; ++f)
                    touched += cursor->get(f)[0];
            } else if (archive[i]->type() == Content::GRAPHIC) {
                Content::Graphic* graphic = archive[i]->graphic();
                if (graphic->width() == 0 || graphic->height() == 0)
                    continue;
                graphic->setPalette(palette.get());
                for (unsigned int f = 0; f < graphic->frames(); ++f)
                    touched += graphic->frame(f)[0];
            }
        }
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::printf("%.6f %lu\n", took.count(), touched);
    }
}
