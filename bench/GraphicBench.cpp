#include "Benchmarks.h"
#include "Table.h"
#include "Turns.h"

#include "images/Graphic.h"
#include "images/PixelLayout.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <memory>
#include <tuple>
#include <vector>

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

using Prepare = Work (*)(Animation&, Coding);

// The first decode takes its buffers from the system; what is measured is
// decoding, into buffers the graphic already holds, as the floor's loop
// writes into a buffer it already holds. The decoded frames go back once
// done.
Work decoding(Animation& animation, Coding coding)
{
    Content::Graphic* graphic = animation.graphic(coding);
    decodeEvery(graphic, animation);
    return {[graphic, &animation] { decodeEvery(graphic, animation); },
            [graphic, &animation] { graphic->setPalette(animation.palette.data()); }};
}

// The indices of a raw entry's frames stand back to back, with no fill for
// these sizes: the same pixels that every decoder maps.
Work paletteLoop(Animation& animation, Coding)
{
    Content* raw = animation.entries.at(Coding::RAW).get();
    const auto* indices = reinterpret_cast<const unsigned char*>(raw->data()) + raw->size() - animation.pixels;
    auto loop = std::make_shared<PaletteLoop>(animation.palette);
    auto rgba = std::make_shared<std::vector<std::uint32_t>>(animation.pixels);
    return {[loop, rgba, indices, &animation] {
        loop->map(indices, animation.pixels, rgba->data());
        benchmark::ClobberMemory();
    }};
}

Work copyRgba(Animation& animation, Coding)
{
    const std::size_t bytes = animation.pixels * PIXEL_SIZE;
    auto from = std::make_shared<std::vector<unsigned char>>(bytes, 1);
    auto to = std::make_shared<std::vector<unsigned char>>(bytes);
    return {[from, to, bytes] {
        std::memcpy(to->data(), from->data(), bytes);
        benchmark::ClobberMemory();
    }};
}

Work creating(Animation& animation, Coding coding)
{
    Content::Graphic* source = animation.graphic(coding);
    return {[source, coding, &animation] {
        std::unique_ptr<Content> entry(Content::Graphic::create(
            animation.images.pointers.data(), animation.palette.data(), source->width(), source->height(),
            source->frames(), 0, 0, 0, 0, flagsOf(coding)));
        benchmark::DoNotOptimize(entry->data());
    }};
}

Work debugCreating(Animation& animation, Coding coding)
{
    Content* entry = animation.entries.at(coding).get();
    return {[entry] {
                std::unique_ptr<Content> again(entry->debugCreate());
                benchmark::DoNotOptimize(again->data());
            },
            [coding, &animation] { animation.graphic(coding)->setPalette(animation.palette.data()); }};
}

Work lastFrameCold(Animation& animation, Coding coding)
{
    Content::Graphic* graphic = animation.graphic(coding);
    decodeEvery(graphic, animation);
    return {[graphic, &animation] {
                graphic->setPalette(animation.palette.data());
                benchmark::DoNotOptimize(graphic->frame(graphic->frames() - 1u));
            },
            [graphic, &animation] { graphic->setPalette(animation.palette.data()); }};
}

Work lastFrameWarm(Animation& animation, Coding coding)
{
    Content::Graphic* graphic = animation.graphic(coding);
    graphic->setPalette(animation.palette.data());
    graphic->frame(graphic->frames() - 1u);
    return {[graphic] { benchmark::DoNotOptimize(graphic->frame(graphic->frames() - 1u)); },
            [graphic, &animation] { graphic->setPalette(animation.palette.data()); }};
}

void add(const std::string& name, std::shared_ptr<Animations> animations, const Size& size, Coding coding,
         Prepare prepare)
{
    benchmark::RegisterBenchmark(name.c_str(), [animations, size, coding, prepare](benchmark::State& state) {
        Animation& animation = animations->get(size);
        const Work work = prepare(animation, coding);
        for (auto _ : state)
            work.step();
        work.after();
        countPixels(state, animation);
    })->UseRealTime();
}

// A row held against `baseline`, timed in turns with it (see inTurns).
void addInTurns(const std::string& name, std::shared_ptr<Animations> animations, const Size& size, Coding coding,
                Prepare prepare, const std::string& baselineName, Prepare baseline, Coding baselineCoding,
                Measure measure, double target)
{
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Animation& animation = animations->get(size);
        inTurns(state, prepare(animation, coding), baseline(animation, baselineCoding));
        countPixels(state, animation);
    })->UseManualTime();
    addPairedRow(name, baselineName, measure, target);
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
        for (Coding coding : CODINGS)
            addInTurns(label("Graphic frames", size, coding), animations, size, coding, decoding, floor, paletteLoop,
                       Coding::RAW, Measure::SPEED,
                       coding == Coding::RAW ? RAW_DECODE_TARGET : COMPRESSED_DECODE_TARGET);
    }

    const std::string chain = label("Graphic frames", CHAIN, Coding::DELTA);
    const std::string cold = label("frame(last) cold", CHAIN, Coding::DELTA);
    const std::string warm = label("frame(last) warm", CHAIN, Coding::DELTA);
    addInTurns(cold, animations, CHAIN, Coding::DELTA, lastFrameCold, chain, decoding, Coding::DELTA, Measure::TIME,
               COLD_LAST_FRAME_TARGET);
    benchmark::RegisterBenchmark(warm.c_str(), [animations](benchmark::State& state) {
        const Work work = lastFrameWarm(animations->get(CHAIN), Coding::DELTA);
        for (auto _ : state)
            work.step();
        work.after();
        state.SetItemsProcessed(state.iterations());
    })->UseRealTime();
    addRow(warm, cold, Measure::TIME, WARM_LAST_FRAME_TARGET);

    for (const Size& size : CREATED) {
        const std::string floor = label("palette loop", size);
        for (Coding coding : CODINGS) {
            addInTurns(label("Graphic::create", size, coding), animations, size, coding, creating, floor, paletteLoop,
                       Coding::RAW, Measure::SPEED, CREATE_TARGET);
            addInTurns(label("Content::debugCreate", size, coding), animations, size, coding, debugCreating, floor,
                       paletteLoop, Coding::RAW, Measure::SPEED, CREATE_TARGET);
        }
    }
}

} // namespace bench
