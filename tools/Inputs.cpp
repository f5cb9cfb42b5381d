#include "tools/Inputs.h"

#include "tools/Report.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

// Runs `read` on `path`, giving a failure the system's reason.
template <typename Read>
auto reading(const std::string& path, Read read)
{
    requireRegularFile(path);
    try {
        return read();
    } catch (const std::exception& e) {
        throw withReason(e, path);
    }
}

} // namespace

void readFrom(const std::string& path, const std::function<void()>& read)
{
    reading(path, [&] {
        read();
        return 0;
    });
}

void requireRegularFile(const std::string& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status))
        return;
    if (fs::is_directory(status))
        throw std::runtime_error("'" + path + "' is a directory");
    if (!fs::is_regular_file(status))
        throw std::runtime_error("'" + path + "' is not a regular file");
}

std::unique_ptr<File> openArchive(const std::string& path)
{
    return reading(path, [&] { return std::make_unique<File>(path); });
}

std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index)
{
    return reading(path, [&] { return std::unique_ptr<Content>(File::at(path, index)); });
}

std::string readBytes(const std::string& path, std::size_t limit)
{
    requireRegularFile(path);
    std::ifstream in(path, std::ios::binary);
    if (!in.good())
        throw withReason(std::runtime_error("could not open '" + path + "'"), path);
    if (limit == ALL_BYTES)
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::string bytes(limit, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(limit));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

std::unique_ptr<Content> readEntryFile(const std::string& path)
{
    return reading(path, [&] { return std::make_unique<Content>(path); });
}

int forEachPath(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& action)
{
    int status = EXIT_DONE;
    for (const std::string& path : paths) {
        try {
            requireRegularFile(path);
            action(path);
        } catch (const std::exception& e) {
            reportError(e.what());
            status = EXIT_FAILED;
        }
    }
    return status;
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
        throw std::runtime_error("'" + archive.path() + "' changed while it was read");
}

std::vector<unsigned int> selectIndices(File& archive, const std::vector<unsigned int>& wanted)
{
    if (wanted.empty()) {
        std::vector<unsigned int> all(archive.size());
        for (unsigned int i = 0; i < all.size(); ++i)
            all[i] = i;
        return all;
    }
    for (unsigned int index : wanted)
        archive.at(index); // the library's own message for an index out of range
    return wanted;
}

} // namespace lbxtool
