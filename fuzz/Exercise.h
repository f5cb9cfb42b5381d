#ifndef ZORV2_LBX_FUZZ_EXERCISE_H
#define ZORV2_LBX_FUZZ_EXERCISE_H

// Everything an entry's kind offers, called on whatever bytes it holds. Bad
// data may only ever end in a std::runtime_error; a crash, an out-of-bounds
// access or a leak is a defect. Shared by the entry fuzz target and the
// mutation sweep of the tests.
#include "Lbx.h"

#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {
namespace exercise {

inline void tolerate(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const std::runtime_error&) {
    }
}

// A matter of pace, not of safety (the library refuses what it cannot hold):
// frames of more pixels than a full 320 x 200 screen are neither decoded nor
// re-created, as they take long to clear, copy and scan, and reach nothing
// that smaller ones do not.
constexpr unsigned long SCREEN_PIXELS = 320 * 200;

inline bool slowToDecode(Content::Graphic* graphic)
{
    return static_cast<unsigned long>(graphic->width()) * graphic->height() > SCREEN_PIXELS;
}

// Tables of more records than this are read but not re-created: a record
// is re-created at 100 bytes or more, so a few kilobytes of one-byte records
// would be re-created as megabytes, and reach nothing new.
constexpr unsigned int MOST_RECREATED_RECORDS = 512;

// Whether re-creating the entry is worth its time (see above).
inline bool worthRecreating(Content& entry)
{
    switch (entry.type()) {
    case Content::GRAPHIC: return !slowToDecode(entry.graphic());
    case Content::TEXT: return entry.text()->size() <= MOST_RECREATED_RECORDS;
    default: return true;
    }
}

inline void graphic(Content::Graphic* graphic)
{
    graphic->info();
    tolerate([&] { std::unique_ptr<unsigned char[]> copy(graphic->paletteCopy()); });
    if (slowToDecode(graphic))
        return;
    tolerate([&] { graphic->pixarray(); });
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    graphic->setPalette(fake.get());
    for (unsigned int i = graphic->frames(); i-- > 0;)
        graphic->frame(i);
    graphic->setPalette(nullptr);
}

inline void cursor(Content::Cursor* cursor)
{
    tolerate([&] { cursor->pixarray(); });
    tolerate([&] { std::unique_ptr<unsigned char[]> copy(cursor->paletteCopy()); });
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    cursor->setPalette(fake.get());
    cursor->get(19);
    std::unique_ptr<unsigned char[]> frame(cursor->gen(7, fake.get()));
    cursor->setPalette(nullptr);
}

inline void font(Content::Font* font)
{
    for (unsigned int f = 0; f < 6; ++f) {
        font->height(f);
        for (unsigned int g = 0; g <= 256; ++g)
            font->offset(f, g);
        std::unique_ptr<unsigned char[]> glyph(font->glyph(f, 65));
    }
}

inline void text(Content::Text* text)
{
    for (unsigned int i = 0; i < text->size(); ++i)
        text->get(i);
}

inline void entry(Content& entry)
{
    entry.info();
    switch (entry.type()) {
    case Content::GRAPHIC: graphic(entry.graphic()); break;
    case Content::CURSOR: cursor(entry.cursor()); break;
    case Content::FONT: font(entry.font()); break;
    case Content::TEXT: text(entry.text()); break;
    default: break;
    }
    if (!worthRecreating(entry))
        return;
    // The verifying mode reports differences on std::cerr; keep them quiet.
    std::ostringstream sink;
    std::streambuf* previous = std::cerr.rdbuf(sink.rdbuf());
    tolerate([&] { delete entry.debugCreate(); });
    std::cerr.rdbuf(previous);
}

} // namespace exercise
} // namespace Lbx
} // namespace zorv2

#endif
