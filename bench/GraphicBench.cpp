#include "Benchmarks.h"
#include "Table.h"

#include "images/Graphic.h"
#include "images/PixelLayout.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <tuple>

namespace bench {

using zorv2::Lbx::Content;

namespace {

using zorv2::Lbx::layout::PIXEL_SIZE;
constexpr Coding CODINGS[] = {Coding::DELTA, Coding::CLEAR, Coding::RAW};

// Raw frames are palette lookups and nothing else; a compressed frame also
// starts from a cleared or copied image and follows its runs.
constexpr double RAW_DECODE_TARGET = 0.8;
constexpr double COMPRESSED_DECODE_TARGET = 0.5;
// Encoding looks every pixel's colour up and writes its index: the lookup
// alone is several times the floor's single load, as the README shows.
constexpr double CREATE_TARGET = 0.3;
// Asking for the last frame first replays the chain once: the same work as
// decoding every frame. Asked again, it is served from the cache.
constexpr double COLD_LAST_FRAME_TARGET = 1.2;
constexpr double WARM_LAST_FRAME_TARGET = 0.001;

struct Size {
    unsigned short width;
    unsigned short height;
    unsigned short frames;
};

// Frame counts grow at two sizes, and pixel counts at one frame count.
constexpr Size DECODED[] = {{320, 200, 1},  {320, 200, 10}, {320, 200, 100}, {640, 480, 1},
                            {640, 480, 10}, {640, 480, 100}, {1280, 960, 10}};
constexpr Size CREATED[] = {{320, 200, 10}, {640, 480, 10}, {1280, 960, 10}};
constexpr Size CHAIN = {640, 480, 100};

struct Animation {
    Frames images;
    Pixels palette;
    std::map<Coding, std::unique_ptr<Content>> entries;
    std::int64_t pixels;

    Content::Graphic* graphic(Coding coding) { return entries.at(coding)->graphic(); }
};

// Each animation is made on first use and kept for the rest of the run.
class Animations {
public:
    Animation& get(const Size& size)
    {
        const auto key = std::make_tuple(size.width, size.height, size.frames);
        auto found = made.find(key);
        if (found == made.end())
            found = made.emplace(key, make(size)).first;
        return *found->second;
    }

private:
    static std::unique_ptr<Animation> make(const Size& size)
    {
        auto animation = std::make_unique<Animation>();
        animation->images = movingDisc(size.width, size.height, size.frames, Shape::SCENE);
        animation->palette = scenePalette();
        for (Coding coding : CODINGS)
            animation->entries[coding] = graphicEntry(animation->images, coding);
        animation->pixels = std::int64_t{size.width} * size.height * size.frames;
        return animation;
    }

    std::map<std::tuple<unsigned short, unsigned short, unsigned short>, std::unique_ptr<Animation>> made;
};

std::string label(const char* what, const Size& size)
{
    return std::string(what) + ", " + std::to_string(size.width) + "x" + std::to_string(size.height) + " x" +
           std::to_string(size.frames);
}

std::string label(const char* what, const Size& size, Coding coding)
{
    return label(what, size) + " " + codingName(coding);
}

void countPixels(benchmark::State& state, const Animation& animation)
{
    state.SetItemsProcessed(state.iterations() * animation.pixels);
    state.SetBytesProcessed(state.iterations() * animation.pixels * static_cast<std::int64_t>(PIXEL_SIZE));
}

void decodeEvery(Content::Graphic* graphic, Animation& animation)
{
    graphic->setPalette(animation.palette.data());
    for (unsigned int i = 0; i < graphic->frames(); ++i)
        benchmark::DoNotOptimize(graphic->frame(i));
}

// The first decode takes its buffers from the system; what is measured is
// decoding, into buffers the graphic already holds, as the floor's loop
// writes into a buffer it already holds.
void decodeAll(benchmark::State& state, Animation& animation, Coding coding)
{
    Content::Graphic* graphic = animation.graphic(coding);
    decodeEvery(graphic, animation);
    for (auto _ : state)
        decodeEvery(graphic, animation);
    // Gives the decoded frames back before the next benchmark.
    graphic->setPalette(animation.palette.data());
    countPixels(state, animation);
}

// The indices of a raw entry's frames stand back to back, with no fill for
// these sizes: the same pixels that every decoder maps.
void paletteLoop(benchmark::State& state, Animation& animation, Coding)
{
    Content* raw = animation.entries.at(Coding::RAW).get();
    const auto* indices = reinterpret_cast<const unsigned char*>(raw->data()) + raw->size() - animation.pixels;
    PaletteLoop loop(animation.palette);
    std::vector<std::uint32_t> rgba(animation.pixels);
    for (auto _ : state) {
        loop.map(indices, animation.pixels, rgba.data());
        benchmark::ClobberMemory();
    }
    countPixels(state, animation);
}

void copyRgba(benchmark::State& state, Animation& animation, Coding)
{
    const std::size_t bytes = animation.pixels * PIXEL_SIZE;
    std::vector<unsigned char> from(bytes, 1);
    std::vector<unsigned char> to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    countPixels(state, animation);
}

void create(benchmark::State& state, Animation& animation, Coding coding)
{
    Content::Graphic* source = animation.graphic(coding);
    for (auto _ : state) {
        std::unique_ptr<Content> entry(Content::Graphic::create(
            animation.images.pointers.data(), animation.palette.data(), source->width(), source->height(),
            source->frames(), 0, 0, 0, 0, flagsOf(coding)));
        benchmark::DoNotOptimize(entry->data());
    }
    countPixels(state, animation);
}

void debugCreate(benchmark::State& state, Animation& animation, Coding coding)
{
    Content* entry = animation.entries.at(coding).get();
    for (auto _ : state) {
        std::unique_ptr<Content> again(entry->debugCreate());
        benchmark::DoNotOptimize(again->data());
    }
    animation.graphic(coding)->setPalette(animation.palette.data());
    countPixels(state, animation);
}

void lastFrameCold(benchmark::State& state, Animation& animation, Coding coding)
{
    Content::Graphic* graphic = animation.graphic(coding);
    decodeEvery(graphic, animation);
    for (auto _ : state) {
        graphic->setPalette(animation.palette.data());
        benchmark::DoNotOptimize(graphic->frame(graphic->frames() - 1u));
    }
    graphic->setPalette(animation.palette.data());
    countPixels(state, animation);
}

void lastFrameWarm(benchmark::State& state, Animation& animation, Coding coding)
{
    Content::Graphic* graphic = animation.graphic(coding);
    graphic->setPalette(animation.palette.data());
    graphic->frame(graphic->frames() - 1u);
    for (auto _ : state)
        benchmark::DoNotOptimize(graphic->frame(graphic->frames() - 1u));
    graphic->setPalette(animation.palette.data());
    state.SetItemsProcessed(state.iterations());
}

using Body = void (*)(benchmark::State&, Animation&, Coding);

void add(const std::string& name, std::shared_ptr<Animations> animations, const Size& size, Coding coding,
         Body body)
{
    benchmark::RegisterBenchmark(name.c_str(), [animations, size, coding, body](benchmark::State& state) {
        body(state, animations->get(size), coding);
    })->UseRealTime();
}

} // namespace

void registerGraphics()
{
    auto animations = std::make_shared<Animations>();
    for (const Size& size : DECODED) {
        const std::string floor = label("palette loop", size);
        add(floor, animations, size, Coding::RAW, paletteLoop);
        addRow(floor, "", Measure::SPEED);
        const std::string copy = label("memcpy RGBA", size);
        add(copy, animations, size, Coding::RAW, copyRgba);
        addRow(copy, floor, Measure::SPEED);
        for (Coding coding : CODINGS) {
            const std::string decode = label("Graphic frames", size, coding);
            add(decode, animations, size, coding, decodeAll);
            addRow(decode, floor, Measure::SPEED,
                   coding == Coding::RAW ? RAW_DECODE_TARGET : COMPRESSED_DECODE_TARGET);
        }
    }

    const std::string chain = label("Graphic frames", CHAIN, Coding::DELTA);
    const std::string cold = label("frame(last) cold", CHAIN, Coding::DELTA);
    const std::string warm = label("frame(last) warm", CHAIN, Coding::DELTA);
    add(cold, animations, CHAIN, Coding::DELTA, lastFrameCold);
    add(warm, animations, CHAIN, Coding::DELTA, lastFrameWarm);
    addRow(cold, chain, Measure::TIME, COLD_LAST_FRAME_TARGET);
    addRow(warm, cold, Measure::TIME, WARM_LAST_FRAME_TARGET);

    for (const Size& size : CREATED) {
        const std::string floor = label("palette loop", size);
        for (Coding coding : CODINGS) {
            const std::string created = label("Graphic::create", size, coding);
            const std::string verified = label("Content::debugCreate", size, coding);
            add(created, animations, size, coding, create);
            add(verified, animations, size, coding, debugCreate);
            addRow(created, floor, Measure::SPEED, CREATE_TARGET);
            addRow(verified, floor, Measure::SPEED, CREATE_TARGET);
        }
    }
}

} // namespace bench
