// Writes the seed corpus of the fuzz targets, made by the library itself:
// one entry of every kind, an archive holding them all, and a few parameter
// blocks for the round trips. Usage: zorv2-lbx-fuzz-seeds DIR
#include "Lbx.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using namespace zorv2::Lbx;

namespace {

std::vector<Content*> entriesOfEveryKind()
{
    std::unique_ptr<unsigned char[]> palette(Content::Palette::fake());
    std::vector<unsigned char> frame(8 * 6 * 4, 0);
    for (unsigned int p = 5; p < 40; p += 3)
        std::copy(palette.get() + 4 * p, palette.get() + 4 * p + 4, frame.begin() + 4 * p);
    std::vector<unsigned char> moved(frame.size(), 0);
    std::copy(frame.begin(), frame.end() - 4, moved.begin() + 4); // one pixel to the right
    unsigned char* frames[] = {frame.data(), moved.data(), frame.data()};
    // Raw frames store every pixel, so none may be transparent.
    std::vector<unsigned char> opaque(palette.get(), palette.get() + frame.size());
    unsigned char* rawFrames[] = {opaque.data()};

    std::vector<unsigned char> cursorFrame(576 * 4, 0);
    std::copy(palette.get() + 40, palette.get() + 44, cursorFrame.begin() + 400);
    std::vector<unsigned char*> cursorFrames(20, cursorFrame.data());
    std::vector<unsigned short> heights(6, 8);
    std::vector<unsigned char> widths(1536, 5);
    std::vector<std::string> strings = {"first", "", "a longer string of text"};

    std::vector<Content*> entries = {
        Content::Graphic::create(frames, palette.get(), 8, 6, 3, 0, 0, 0, 0, 0),
        Content::Graphic::create(frames, palette.get(), 8, 6, 3, 2, 0, 16, 8, Content::Graphic::PALETTE),
        Content::Graphic::create(rawFrames, palette.get(), 8, 6, 1, 0, 0, 0, 0, Content::Graphic::RAW),
        Content::Cursor::create(palette.get(), cursorFrames.data()),
        Content::Font::create(palette.get(), heights.data(), widths.data(), nullptr),
        Content::Text::create(strings),
        Content::Empty::create(true),
        Content::Empty::create(false),
    };
    const std::string riff = std::string("RIFF") + '\x0D' + std::string(3, '\0') + "WAVEfmt " + "x";
    entries.push_back(new Content("sound", new char[riff.size()], static_cast<unsigned int>(riff.size())));
    std::copy(riff.begin(), riff.end(), entries.back()->data());
    return entries;
}

void save(const std::filesystem::path& path, const char* data, std::size_t size)
{
    std::ofstream(path, std::ios::binary).write(data, static_cast<std::streamsize>(size));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " DIR\n";
        return 2;
    }
    const std::filesystem::path root = argv[1];
    for (const char* target : {"entry", "archive", "roundtrip"})
        std::filesystem::create_directories(root / target);

    File archive;
    unsigned int n = 0;
    for (Content* entry : entriesOfEveryKind()) {
        save(root / "entry" / (std::to_string(n++) + "-" + entry->typeStr()), entry->data(), entry->size());
        archive.push_back(entry);
    }
    archive.write((root / "archive" / "every-kind.lbx").string());
    File().write((root / "archive" / "empty.lbx").string());

    for (unsigned int seed = 0; seed < 3; ++seed) {
        std::string block(512, static_cast<char>(seed));
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<char>((i * 131 + seed * 17) & 0xFF);
        save(root / "roundtrip" / ("mode-" + std::to_string(seed)), block.data(), block.size());
    }
    return 0;
}
