// Writes the seed corpus of the fuzz targets, made by the library itself:
// one entry of every kind and a few animations, an archive holding them all, and a few parameter
// blocks for the round trips. Usage: zorv2-lbx-fuzz-seeds DIR
#include "Lbx.h"
#include "tests/Samples.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using namespace zorv2::Lbx;

namespace {

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
    std::vector<Content*> entries = samples::entriesOfEveryKind();
    for (Content* animation : samples::animations())
        entries.push_back(animation);
    for (Content* entry : entries) {
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
