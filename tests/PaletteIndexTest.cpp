#include "images/Palette.h"
#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using PaletteIndex = zorv2::Lbx::Content::Palette::Index;
using zorv2::Lbx::Content;
using fixtures::Pixels;

Pixels fromArray(unsigned char* array)
{
    std::unique_ptr<unsigned char[]> owned(array);
    return Pixels(owned.get(), owned.get() + 1024);
}

// The fake palette with repeats, entries off the 4-step grid, and black at
// both ends: the cases where the lowest index and the grid rule decide.
Pixels awkwardPalette()
{
    Pixels palette = fromArray(Content::Palette::fake());
    for (unsigned int i : {7u, 200u, 201u})
        std::copy(palette.begin() + 4 * 30, palette.begin() + 4 * 31, palette.begin() + 4 * i);
    palette[4 * 40 + 1] = 9;   // green off the grid
    palette[4 * 41 + 2] = 255; // blue off the grid
    for (unsigned int i : {0u, 255u})
        std::fill(palette.begin() + 4 * i, palette.begin() + 4 * i + 3, 0);
    return palette;
}

// Every entry, each with its low bits set and one step off in each
// component, and a coarse sweep of all colours.
std::vector<Pixels> probes(const Pixels& palette)
{
    std::vector<Pixels> colors;
    for (unsigned int i = 0; i < 256; ++i) {
        for (unsigned char low : {0, 1, 3})
            colors.push_back({static_cast<unsigned char>(palette[4 * i] | low),
                              static_cast<unsigned char>(palette[4 * i + 1] | low),
                              static_cast<unsigned char>(palette[4 * i + 2] | low), 0});
        for (unsigned int component = 0; component < 3; ++component)
            for (int step : {-4, 4}) {
                Pixels color(palette.begin() + 4 * i, palette.begin() + 4 * i + 4);
                color[component] = static_cast<unsigned char>(color[component] + step);
                colors.push_back(color);
            }
    }
    for (unsigned int r = 0; r < 256; r += 20)
        for (unsigned int g = 0; g < 256; g += 20)
            for (unsigned int b = 0; b < 256; b += 4)
                colors.push_back({static_cast<unsigned char>(r), static_cast<unsigned char>(g),
                                  static_cast<unsigned char>(b), 255});
    return colors;
}

std::string notFound(const Pixels& color)
{
    return "color " + std::to_string(color[0]) + "," + std::to_string(color[1]) + "," + std::to_string(color[2]) +
           " not found in palette";
}

TEST(PaletteIndex, AnswersAsThePaletteSearchInEveryRange)
{
    const std::vector<Pixels> palettes = {fromArray(Content::Palette::fake()), awkwardPalette(),
                                         fromArray(Content::Palette::empty())};
    const struct {
        unsigned int begin, end;
    } ranges[] = {{0, 256}, {1, 256}, {8, 300}, {31, 201}, {5, 5}, {100, 50}, {256, 300}};
    for (Pixels palette : palettes) {
        for (const auto& range : ranges) {
            PaletteIndex index(palette.data(), range.begin, range.end);
            Pixels found;
            std::vector<unsigned char> expectedIndices;
            for (Pixels color : probes(palette)) {
                unsigned char expected = 0;
                if (Content::Palette::findColor(palette.data(), color.data(), &expected, range.begin, range.end)) {
                    ASSERT_EQ(index.find(color.data()), expected)
                        << "range " << range.begin << ".." << range.end << ", colour " << unsigned{color[0]} << ","
                        << unsigned{color[1]} << "," << unsigned{color[2]};
                    found.insert(found.end(), color.begin(), color.end());
                    expectedIndices.push_back(expected);
                } else {
                    ASSERT_EQ(fixtures::thrownBy([&] { index.find(color.data()); }), notFound(color));
                }
            }
            // The same answers for all of them at once.
            std::vector<unsigned char> indices(expectedIndices.size());
            index.findAll(found.data(), indices.size(), indices.data());
            EXPECT_EQ(indices, expectedIndices) << "range " << range.begin << ".." << range.end;
        }
    }
}

TEST(PaletteIndex, FindingAllStopsAtTheFirstColourNotInTheRange)
{
    // No entry of either palette has more red than 4; the fake one is read
    // without a table.
    for (Pixels palette : {fromArray(Content::Palette::fake()), awkwardPalette()}) {
        const Pixels present(palette.begin() + 4 * 30, palette.begin() + 4 * 31);
        const Pixels missing = {200, 0, 0, 255};
        const Pixels missingToo = {100, 0, 0, 255};
        Pixels pixels;
        pixels.reserve(4 * 4);
        for (const Pixels* colour : {&present, &missing, &missingToo, &present})
            pixels.insert(pixels.end(), colour->begin(), colour->end());
        std::vector<unsigned char> indices(4);
        PaletteIndex index(palette.data(), 0, 256);
        EXPECT_EQ(fixtures::thrownBy([&] { index.findAll(pixels.data(), 4, indices.data()); }), notFound(missing));
    }
}

} // namespace
