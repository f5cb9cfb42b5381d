#include "tests/support/Exercise.h"

#include "tests/support/Fixtures.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace exercise {

using zorv2::Lbx::Content;
using fixtures::Pixels;

namespace {

constexpr unsigned int PIXEL = 4;

const unsigned char* colour(const unsigned char* palette, unsigned int index)
{
    return palette + index * PIXEL;
}

// Frames as a viewer sees them. A pixel can only become transparent again in
// a frame that starts empty, and opaque colours come from the fake palette,
// which holds no black, so that every frame survives the encoding unchanged.
std::vector<Pixels> animation(FuzzedDataProvider& input, const unsigned char* palette, unsigned int pixels,
                              unsigned int frames, unsigned char clearOnce, unsigned char clearMod,
                              unsigned short flags)
{
    const bool raw = flags & Content::Graphic::RAW;
    std::vector<Pixels> images(frames, Pixels(pixels * PIXEL, 0));
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

    auto palette = fixtures::fakePalette();
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
        require(unholdable && std::string(e.what()) == "bug in graphic creation, sorry",
                "only a graphic the format cannot hold is refused");
        return;
    }
    require(entry->type() == Content::GRAPHIC, "a created graphic classifies as one");
    Content::Graphic* graphic = entry->graphic();
    graphic->setPalette(palette.get());
    for (unsigned int f = frames; f-- > 0;) {
        unsigned char* decoded = graphic->frame(f);
        require(pixels == 0 || std::memcmp(decoded, images[f].data(), pixels * PIXEL) == 0,
                "a created graphic decodes to its frames");
    }
    verifies(*entry);
}

void cursorRoundTrip(FuzzedDataProvider& input)
{
    constexpr unsigned int FRAMES = 20, PIXELS = 576;
    auto palette = fixtures::fakePalette();
    std::vector<Pixels> images(FRAMES, Pixels(PIXELS * PIXEL, 0));
    std::vector<unsigned char*> pointers;
    for (auto& image : images) {
        for (unsigned int p = 0; p < PIXELS; ++p)
            if (const auto index = input.ConsumeIntegral<unsigned char>())
                std::memcpy(&image[p * PIXEL], colour(palette.get(), index), PIXEL);
        pointers.push_back(image.data());
    }
    std::unique_ptr<Content> entry(Content::Cursor::create(palette.get(), pointers.data()));
    require(entry->type() == Content::CURSOR, "a created cursor classifies as one");
    for (unsigned int f = 0; f < FRAMES; ++f) {
        std::unique_ptr<unsigned char[]> frame(entry->cursor()->gen(f, palette.get()));
        require(std::memcmp(frame.get(), images[f].data(), PIXELS * PIXEL) == 0, "a created cursor decodes to its frames");
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
        require(std::string(e.what()) == "bug in text creation, sorry", "a text table is refused only as another kind");
        Content::Write write;
        Content::Text::create(write, strings);
        Content other("rebuilt", write.gen(), write.size());
        require(other.type() != Content::TEXT, "a refused text table classifies as another kind");
        return;
    }
    require(entry->type() == Content::TEXT && entry->text()->size() == strings.size(),
            "a created text table classifies as one, with every record");
    for (unsigned int i = 0; i < strings.size(); ++i)
        require(entry->text()->get(i) == strings[i], "a created text table reads back its strings");
    verifies(*entry);
}

} // namespace

void roundTrip(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    switch (input.ConsumeIntegralInRange<int>(0, 2)) {
    case 0: graphicRoundTrip(input); break;
    case 1: cursorRoundTrip(input); break;
    default: textRoundTrip(input); break;
    }
}

// Parameter blocks that lead to each of the three kinds.
std::vector<Seed> roundTripSeeds()
{
    std::vector<Seed> seeds;
    for (unsigned int mode = 0; mode < 3; ++mode) {
        std::string block(512, '\0');
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<char>((i * 131 + mode * 17) & 0xFF);
        seeds.push_back({"mode-" + std::to_string(mode), block});
    }
    return seeds;
}

} // namespace exercise
