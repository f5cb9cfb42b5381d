// Writes the benchmarks' mixed archive of 509 entries to the path given, for
// timing the web viewer on it.
#include "Workloads.h"
#include "archive/File.h"

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    zorv2::Lbx::File archive;
    for (unsigned int i = 0; i < 509; ++i)
        archive.push_back(bench::archiveEntry(i).release());
    archive.write(argv[1]);
}
