// Arbitrary bytes as one entry: whatever kind they classify as, everything
// that kind offers must either work or throw std::runtime_error.
#include "Lbx.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>

using namespace zorv2::Lbx;

namespace {

// Runs one operation; the library reports bad data by std::runtime_error only.
void tolerate(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const std::runtime_error&) {
    }
}

// Frames of more pixels than this are left undecoded: they take long to clear
// and copy, and add nothing that smaller ones do not already reach.
constexpr unsigned long LARGEST_DECODED = 1 << 18;

void exerciseGraphic(Content::Graphic* graphic)
{
    tolerate([&] { std::unique_ptr<unsigned char[]> copy(graphic->paletteCopy()); });
    if (static_cast<unsigned long>(graphic->width()) * graphic->height() > LARGEST_DECODED)
        return;
    tolerate([&] { graphic->pixarray(); });
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    graphic->setPalette(fake.get());
    for (unsigned int i = graphic->frames(); i-- > 0;)
        tolerate([&] { graphic->frame(i); });
    graphic->setPalette(nullptr);
}

void exerciseCursor(Content::Cursor* cursor)
{
    tolerate([&] { cursor->pixarray(); });
    tolerate([&] { std::unique_ptr<unsigned char[]> copy(cursor->paletteCopy()); });
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    cursor->setPalette(fake.get());
    cursor->get(19);
    std::unique_ptr<unsigned char[]> frame(cursor->gen(7, fake.get()));
    cursor->setPalette(nullptr);
}

void exerciseFont(Content::Font* font)
{
    for (unsigned int f = 0; f < 6; ++f) {
        font->height(f);
        for (unsigned int g = 0; g <= 256; ++g)
            font->offset(f, g);
        std::unique_ptr<unsigned char[]> glyph(font->glyph(f, 65));
    }
}

void exerciseText(Content::Text* text)
{
    for (unsigned int i = 0; i < text->size(); ++i)
        text->get(i);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size > 1 << 20)
        return 0;
    char* block = new char[size];
    std::memcpy(block, bytes, size);
    Content entry("fuzz", block, static_cast<unsigned int>(size));
    entry.info();
    switch (entry.type()) {
    case Content::GRAPHIC: exerciseGraphic(entry.graphic()); break;
    case Content::CURSOR: exerciseCursor(entry.cursor()); break;
    case Content::FONT: exerciseFont(entry.font()); break;
    case Content::TEXT: exerciseText(entry.text()); break;
    default: break;
    }
    // The verifying mode reports differences on std::cerr; keep them quiet.
    std::ostringstream sink;
    std::streambuf* previous = std::cerr.rdbuf(sink.rdbuf());
    tolerate([&] { delete entry.debugCreate(); });
    std::cerr.rdbuf(previous);
    return 0;
}
