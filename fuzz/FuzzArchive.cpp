// Arbitrary bytes as an archive file: validation never crashes, and an
// archive that opens writes back to one that reopens with the same entries.
#include "Lbx.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>

using namespace zorv2::Lbx;

namespace {

// Every input is written and read back twice: a memory-backed directory,
// where there is one, keeps the disk out of the measured rate.
std::string scratchDirectory()
{
    for (const char* candidate : {"/dev/shm", "/tmp"})
        if (access(candidate, W_OK) == 0)
            return candidate;
    return ".";
}

const std::string stem = scratchDirectory() + "/zorv2-lbx-fuzz-" + std::to_string(getpid());
const std::string source = stem + ".lbx";
const std::string rewritten = stem + "-rewritten.lbx";

std::string bytesOf(Content* entry)
{
    return std::string(entry->data(), entry->size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    std::ofstream(source, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(bytes), size);
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagged = false;
    if (!File::header(source, &error, &offsets, &tagged)) {
        if (error.empty())
            std::abort();
        return 0;
    }
    File archive(source);
    if (archive.size() + 1 != offsets.size() || archive.tagged() != tagged)
        std::abort();
    for (unsigned int i = 0; i < archive.size(); ++i)
        archive[i]->info();
    if (archive.size() > 0) {
        std::unique_ptr<Content> last(File::at(source, archive.size() - 1));
        if (bytesOf(last.get()) != bytesOf(archive[archive.size() - 1]))
            std::abort();
    }

    archive.write(rewritten);
    File back(rewritten);
    if (back.size() != archive.size())
        std::abort();
    for (unsigned int i = 0; i < back.size(); ++i)
        if (bytesOf(back[i]) != bytesOf(archive[i]) || back[i]->type() != archive[i]->type())
            std::abort();
    return 0;
}
