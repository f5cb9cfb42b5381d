// Bytes drive the parameters of a new entry: a graphic animation, a cursor or
// a text table. Whatever is created must classify as its kind, decode to the
// input and pass its own verification. A difference aborts.
#include "Lbx.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

using namespace zorv2::Lbx;

namespace {

constexpr unsigned int PIXEL = 4;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

// Verification must pass silently and give back the very bytes.
void verifies(Content& entry)
{
    std::ostringstream sink;
    std::streambuf* previous = std::cerr.rdbuf(sink.rdbuf());
    std::unique_ptr<Content> again(entry.debugCreate());
    std::cerr.rdbuf(previous);
    check(sink.str().empty());
    check(again->size() == entry.size() && std::memcmp(again->data(), entry.data(), entry.size()) == 0);
}

const unsigned char* colour(const unsigned char* palette, unsigned int index)
{
    return palette + index * PIXEL;
}

// Frames as a viewer sees them. A pixel can only become transparent again in
// a frame that starts empty, and opaque colours come from the fake palette,
// which holds no black, so that every frame survives the encoding unchanged.
std::vector<std::vector<unsigned char>> animation(FuzzedDataProvider& input, const unsigned char* palette,
                                                  unsigned int pixels, unsigned int frames, unsigned char clearOnce,
                                                  unsigned char clearMod, unsigned short flags)
{
    const bool raw = flags & Content::Graphic::RAW;
    std::vector<std::vector<unsigned char>> images(frames, std::vector<unsigned char>(pixels * PIXEL, 0));
    for (unsigned int f = 0; f < frames; ++f) {
        const bool clear = Content::Graphic::isClear(f, frames, clearOnce, clearMod, flags);
        for (unsigned int p = 0; p < pixels; ++p) {
            const unsigned int choice = input.ConsumeIntegralInRange<unsigned int>(0, 8);
            const bool mayVanish = !raw && (clear || images[f - 1][p * PIXEL + 3] == 0);
            if (choice == 0 && mayVanish)
                continue;
            if (choice <= 4 && f > 0 && !clear) {
                std::memcpy(&images[f][p * PIXEL], &images[f - 1][p * PIXEL], PIXEL);
                if (images[f][p * PIXEL + 3] != 0 || mayVanish)
                    continue;
            }
            std::memcpy(&images[f][p * PIXEL], colour(palette, input.ConsumeIntegral<unsigned char>()), PIXEL);
        }
    }
    return images;
}

void graphicRoundTrip(FuzzedDataProvider& input)
{
    const auto width = input.ConsumeIntegralInRange<unsigned short>(0, 40);
    const auto height = input.ConsumeIntegralInRange<unsigned short>(0, 40);
    const auto frames = input.ConsumeIntegralInRange<unsigned short>(0, 6);
    const auto clearOnce = input.ConsumeIntegralInRange<unsigned char>(0, 7);
    const auto clearMod = input.ConsumeIntegralInRange<unsigned char>(0, 7);
    const unsigned short optionBits[] = {Content::Graphic::RAW, Content::Graphic::CLEAR, Content::Graphic::SHADOWS,
                                         Content::Graphic::PALETTE, Content::Graphic::LOOP, 0x0001};
    unsigned short flags = 0;
    for (unsigned short bit : optionBits)
        if (input.ConsumeBool())
            flags |= bit;
    const auto palOffset = input.ConsumeIntegralInRange<unsigned short>(0, 255);
    const auto palSize = input.ConsumeIntegralInRange<unsigned short>(0, 256 - palOffset);

    std::unique_ptr<unsigned char[]> palette(Content::Palette::fake());
    const unsigned int pixels = unsigned{width} * height;
    auto images = animation(input, palette.get(), pixels, frames, clearOnce, clearMod, flags);
    std::vector<unsigned char*> pointers;
    for (auto& image : images)
        pointers.push_back(image.data());

    std::unique_ptr<Content> entry;
    try {
        entry.reset(Content::Graphic::create(pointers.data(), palette.get(), width, height, frames, clearOnce, clearMod,
                                             palOffset, palSize, flags));
    } catch (const std::runtime_error& e) {
        // The two builds the format cannot hold: no frames and no palette,
        // and raw frames of no pixels.
        const bool unholdable = (frames == 0 && !(flags & Content::Graphic::PALETTE)) ||
                                ((flags & Content::Graphic::RAW) && pixels == 0 && frames > 0);
        check(unholdable && std::string(e.what()) == "bug in graphic creation, sorry");
        return;
    }
    check(entry->type() == Content::GRAPHIC);
    Content::Graphic* graphic = entry->graphic();
    graphic->setPalette(palette.get());
    for (unsigned int f = frames; f-- > 0;) {
        unsigned char* decoded = graphic->frame(f);
        check(pixels == 0 || std::memcmp(decoded, images[f].data(), pixels * PIXEL) == 0);
    }
    verifies(*entry);
}

void cursorRoundTrip(FuzzedDataProvider& input)
{
    constexpr unsigned int FRAMES = 20, PIXELS = 576;
    std::unique_ptr<unsigned char[]> palette(Content::Palette::fake());
    std::vector<std::vector<unsigned char>> images(FRAMES, std::vector<unsigned char>(PIXELS * PIXEL, 0));
    std::vector<unsigned char*> pointers;
    for (auto& image : images) {
        for (unsigned int p = 0; p < PIXELS; ++p)
            if (const auto index = input.ConsumeIntegral<unsigned char>())
                std::memcpy(&image[p * PIXEL], colour(palette.get(), index), PIXEL);
        pointers.push_back(image.data());
    }
    std::unique_ptr<Content> entry(Content::Cursor::create(palette.get(), pointers.data()));
    check(entry->type() == Content::CURSOR);
    for (unsigned int f = 0; f < FRAMES; ++f) {
        std::unique_ptr<unsigned char[]> frame(entry->cursor()->gen(f, palette.get()));
        check(std::memcmp(frame.get(), images[f].data(), PIXELS * PIXEL) == 0);
    }
    verifies(*entry);
}

void textRoundTrip(FuzzedDataProvider& input)
{
    std::vector<std::string> strings(input.ConsumeIntegralInRange<unsigned int>(0, 40));
    for (std::string& text : strings) {
        text = input.ConsumeRandomLengthString(300);
        text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    }
    std::unique_ptr<Content> entry;
    try {
        entry.reset(Content::Text::create(strings));
    } catch (const std::runtime_error& e) {
        // Only when a kind earlier in the chain takes the very bytes.
        check(std::string(e.what()) == "bug in text creation, sorry");
        Content::Write write;
        Content::Text::create(write, strings);
        Content other("rebuilt", write.gen(), write.size());
        check(other.type() != Content::TEXT);
        return;
    }
    check(entry->type() == Content::TEXT && entry->text()->size() == strings.size());
    for (unsigned int i = 0; i < strings.size(); ++i)
        check(entry->text()->get(i) == strings[i]);
    verifies(*entry);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    switch (input.ConsumeIntegralInRange<int>(0, 2)) {
    case 0: graphicRoundTrip(input); break;
    case 1: cursorRoundTrip(input); break;
    default: textRoundTrip(input); break;
    }
    return 0;
}
