#ifndef ZORV2_LBX_TESTS_GRAPHICFIXTURE_H
#define ZORV2_LBX_TESTS_GRAPHICFIXTURE_H

#include "Fixtures.h"
#include "entry/Content.h"
#include "images/Graphic.h"
#include "images/Palette.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace graphicFixture {

using zorv2::Lbx::Content;
using Graphic = Content::Graphic;
using Bytes = std::vector<unsigned char>;

// Header and frame table of a crafted entry; clearOnce and clearMod are 0.
inline Bytes header(unsigned int width, unsigned int height, unsigned int frames, unsigned int flags,
                    std::initializer_list<unsigned int> table)
{
    Bytes bytes;
    for (unsigned int word : {width, height, 0u, frames, 0u, flags})
        bytes.insert(bytes.end(), {static_cast<unsigned char>(word), static_cast<unsigned char>(word >> 8)});
    for (unsigned int offset : table)
        for (unsigned int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<unsigned char>(offset >> shift));
    return bytes;
}

inline Bytes operator+(Bytes head, const Bytes& tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

inline std::unique_ptr<Content> entryOf(const Bytes& bytes, std::string name = "t.lbx[3]")
{
    char* block = new char[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), block);
    return std::make_unique<Content>(name, block, static_cast<unsigned int>(bytes.size()));
}

inline Bytes bytesOf(Content* entry)
{
    return Bytes(entry->data(), entry->data() + entry->size());
}

inline std::unique_ptr<unsigned char[]> fake()
{
    return std::unique_ptr<unsigned char[]>(Content::Palette::fake());
}

using fixtures::thrownBy;

// Six by four pixels, -1 where nothing is painted. Frame 1 changes x = 4 of
// row 2 to index 3; frame 2 repeats frame 1.
inline const std::vector<int> EXAMPLE[3] = {
    {-1, 1, 2, -1, -1, 5, -1, -1, -1, -1, -1, -1, 7, -1, -1, 8, 9, 10, -1, -1, -1, -1, -1, -1},
    {-1, 1, 2, -1, -1, 5, -1, -1, -1, -1, -1, -1, 7, -1, -1, 8, 3, 10, -1, -1, -1, -1, -1, -1},
    {-1, 1, 2, -1, -1, 5, -1, -1, -1, -1, -1, -1, 7, -1, -1, 8, 3, 10, -1, -1, -1, -1, -1, -1}};

inline Bytes exampleEntry()
{
    return header(6, 4, 3, 0, {0x1C, 0x44, 0x54, 0x5C}) +
           Bytes{1, 0, 0, 0, 2, 0, 1, 0, 1, 2, 1, 0, 2, 0, 5, 0, 0, 0, 2, 0,
                 1, 0, 0, 0, 7, 0, 3, 0, 2, 0, 8, 9, 10, 0, 0, 0, 0xE8, 3, 0, 0} +
           Bytes{1, 0, 2, 0, 1, 0, 4, 0, 3, 0, 0, 0, 0xE8, 3, 0, 0} + Bytes{1, 0, 4, 0, 0, 0, 0, 0};
}

// An RGBA image of palette colours; unpainted pixels are four zero bytes.
inline Bytes image(const std::vector<int>& indices, const unsigned char* palette)
{
    Bytes rgba(indices.size() * 4, 0);
    for (std::size_t i = 0; i < indices.size(); ++i)
        if (indices[i] >= 0)
            std::memcpy(&rgba[i * 4], palette + indices[i] * 4, 4);
    return rgba;
}

inline std::vector<int> painted(unsigned int pixels, const std::map<unsigned int, int>& at)
{
    std::vector<int> indices(pixels, -1);
    for (const auto& [pixel, index] : at)
        indices[pixel] = index;
    return indices;
}

inline Bytes pixelsOf(const unsigned char* frame, unsigned int pixels)
{
    return Bytes(frame, frame + pixels * 4u);
}

} // namespace graphicFixture

#endif
