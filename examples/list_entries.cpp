// Lists the entries of an archive with their kind, size and description.
// Usage: list_entries ARCHIVE
#include "archive/File.h"
#include "entry/Content.h"

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " ARCHIVE\n";
        return 2;
    }
    try {
        zorv2::Lbx::File archive(argv[1]); // validates and classifies every entry
        std::cout << archive.path() << ": " << archive.size() << " entries\n";
        for (unsigned int i = 0; i < archive.size(); ++i)
            std::cout << i << ' ' << archive[i]->info() << '\n';
    } catch (const std::exception& e) { // every failure is a std::runtime_error
        std::cerr << e.what() << '\n';
        return 1;
    }
}
