#include "tools/platform/Inputs.h"

#include "tools/modding/Files.h"
#include "tools/modding/Names.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace lbxtool {

namespace {

std::runtime_error cannotOpen(const std::string& path)
{
    return std::runtime_error("could not open '" + path + "'");
}

// Runs `read` on `path`, giving a failure the system's reason.
template <typename Read>
auto reading(const std::string& path, Read read)
{
    requireRegularFile(path);
    // One message for a file that does not open, whatever reads it.
    const std::string reason = unreadableReason(path);
    if (!reason.empty())
        throw std::runtime_error(cannotOpen(path).what() + std::string(" (") + reason + ")");
    try {
        return read();
    } catch (const std::exception& e) {
        throw withReason(e, path);
    }
}

// A fresh process pays a page fault for each 4 KiB it first touches, and in
// a virtual machine such as the one this was measured on a fault costs some
// 25 us: 150-200 ms for the 25 MB of a large archive, against 10-15 ms to
// make the same memory present in one call and 60 ms to touch it then. The
// memory that the archive's entries will take is made present first and
// freed for them to be carved from. A block the allocator would hand back to
// the system when freed (the tool keeps those up to 64 MB) would not serve.
constexpr std::size_t LARGEST_PREPARED = 48 * 1024 * 1024;

void prepareMemory(std::size_t bytes)
{
    if (bytes == 0 || bytes > LARGEST_PREPARED)
        return;
    void* block = std::malloc(bytes);
    if (block == nullptr)
        return;
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (address + page - 1) / page * page;
    const std::uintptr_t end = (address + bytes) / page * page;
    // Where the system cannot, the pages come one fault at a time as before.
    if (end > first)
        ::madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE);
    std::free(block);
}

} // namespace

void withSystemReason(const std::string& path, const std::function<void()>& read)
{
    reading(path, [&] {
        read();
        return 0;
    });
}

std::unique_ptr<File> openArchive(const std::string& path)
{
    return reading(path, [&] {
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(path, unknown);
        if (!unknown)
            prepareMemory(static_cast<std::size_t>(size));
        return std::make_unique<File>(path);
    });
}

ArchiveEntries::ArchiveEntries(const std::string& path) : path(path)
{
    reading(path, [&] {
        std::string error;
        if (!File::header(path, &error, &offsets, &isTagged))
            throw std::runtime_error(error);
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0)
            throw cannotOpen(path);
        return 0;
    });
}

ArchiveEntries::~ArchiveEntries()
{
    ::close(descriptor);
}

std::unique_ptr<Content> ArchiveEntries::read(unsigned int index) const
{
    if (index >= size())
        throw std::runtime_error("invalid index '" + std::to_string(index) + "' for " + path);
    const unsigned int begin = offsets[index];
    const unsigned int length = offsets[index + 1] - begin;
    std::unique_ptr<char[]> block(new char[length]);
    for (unsigned int done = 0; done < length;) {
        const ssize_t got = ::pread(descriptor, block.get() + done, length - done, begin + done);
        if (got < 0 && errno == EINTR)
            continue;
        // The header promised these bytes: a file that ends before them
        // changed while it was read.
        if (got <= 0)
            throw changedWhileRead(path);
        done += static_cast<unsigned int>(got);
    }
    auto entry = std::make_unique<Content>(path + "[" + std::to_string(index) + "]", block.get(), length);
    block.release();
    return entry;
}

ArchiveReader ArchiveEntries::reader() const
{
    return {path, static_cast<unsigned int>(size()), [this](unsigned int index) { return read(index); }};
}

std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index)
{
    return reading(path, [&] { return entryOfArchive(path, index); });
}

std::string readBytes(const std::string& path, std::size_t limit)
{
    requireRegularFile(path);
    std::ifstream in(path, std::ios::binary);
    if (!in.good())
        throw withReason(cannotOpen(path), path);
    // The size is taken first, so that the bytes come in one read instead
    // of a character at a time; a file that grew since is read to its end.
    const bool whole = limit == ALL_BYTES;
    if (whole) {
        in.seekg(0, std::ios::end);
        limit = static_cast<std::size_t>(std::max<std::streamoff>(in.tellg(), 0));
        in.seekg(0);
    }
    std::string bytes(limit, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(limit));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    if (whole && in)
        bytes.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return bytes;
}

std::unique_ptr<Content> readEntryFile(const std::string& path)
{
    return reading(path, [&] { return std::make_unique<Content>(path); });
}

std::size_t listedEntries(const std::string& path)
{
    try {
        return File::size(path);
    } catch (const std::exception&) {
        return 0;
    }
}

void requireEntries(File& archive, std::size_t entries)
{
    if (archive.size() != entries)
        throw changedWhileRead(archive.path());
}

void requireEntries(const ArchiveEntries& archive, std::size_t entries)
{
    if (archive.size() != entries)
        throw changedWhileRead(archive.where());
}

std::vector<unsigned int> selectIndices(const std::string& path, std::size_t size,
                                        const std::vector<unsigned int>& wanted)
{
    if (wanted.empty()) {
        std::vector<unsigned int> all(size);
        for (unsigned int i = 0; i < all.size(); ++i)
            all[i] = i;
        return all;
    }
    std::vector<unsigned int> selected;
    for (unsigned int index : wanted) {
        if (index >= size)
            throw noEntry(path, index, size);
        if (std::find(selected.begin(), selected.end(), index) == selected.end())
            selected.push_back(index);
    }
    return selected;
}

std::string unreadableReason(const std::string& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return std::strerror(errno);
    ::close(descriptor);
    return "";
}

std::runtime_error withReason(const std::exception& failure, const std::string& path)
{
    const std::string reason = unreadableReason(path);
    return std::runtime_error(reason.empty() ? failure.what() : std::string(failure.what()) + " (" + reason + ")");
}

} // namespace lbxtool
