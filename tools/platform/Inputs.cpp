#include "tools/platform/Inputs.h"

#include "tools/modding/Files.h"
#include "tools/modding/Names.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace lbxtool {

namespace {

// Runs `read` on `path`, giving a failure the system's reason.
template <typename Read>
auto reading(const std::string& path, Read read)
{
    requireRegularFile(path);
    // One message for a file that does not open, whatever reads it.
    const std::string reason = unreadableReason(path);
    if (!reason.empty())
        throw std::runtime_error("could not open '" + path + "' (" + reason + ")");
    try {
        return read();
    } catch (const std::exception& e) {
        throw withReason(e, path);
    }
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
    return reading(path, [&] { return std::make_unique<File>(path); });
}

ArchiveEntries::ArchiveEntries(const std::string& path) : path(path)
{
    reading(path, [&] {
        std::string error;
        if (!File::header(path, &error, &offsets, nullptr))
            throw std::runtime_error(error);
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0)
            throw std::runtime_error("could not open '" + path + "'");
        return 0;
    });
}

ArchiveEntries::~ArchiveEntries()
{
    ::close(descriptor);
}

std::unique_ptr<Content> ArchiveEntries::read(unsigned int index) const
{
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

std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index)
{
    return reading(path, [&] { return entryOfArchive(path, index); });
}

std::string readBytes(const std::string& path, std::size_t limit)
{
    requireRegularFile(path);
    std::ifstream in(path, std::ios::binary);
    if (!in.good())
        throw withReason(std::runtime_error("could not open '" + path + "'"), path);
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

std::vector<unsigned int> selectIndices(File& archive, const std::vector<unsigned int>& wanted)
{
    if (wanted.empty()) {
        std::vector<unsigned int> all(archive.size());
        for (unsigned int i = 0; i < all.size(); ++i)
            all[i] = i;
        return all;
    }
    std::vector<unsigned int> selected;
    for (unsigned int index : wanted) {
        if (index >= archive.size())
            throw noEntry(archive.path(), index, archive.size());
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
