// Writes the seed corpus of the fuzz targets, made by the library itself,
// into a folder for each target. Usage: zorv2-lbx-fuzz-seeds DIR
#include "tests/support/ModExercise.h"

#include <filesystem>
#include <fstream>
#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " DIR\n";
        return 2;
    }
    const auto write = [&](const std::string& name, const std::vector<exercise::Seed>& seeds) {
        const std::filesystem::path folder = std::filesystem::path(argv[1]) / name;
        std::filesystem::create_directories(folder);
        for (const exercise::Seed& seed : seeds)
            std::ofstream(folder / seed.name, std::ios::binary) << seed.bytes;
    };
    for (const exercise::Target& target : exercise::targets())
        write(target.name, target.seeds());
    write("mod", exercise::modSeeds());
    return 0;
}
