#include "tools/modding/Files.h"

#include "tools/modding/Names.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

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

std::string PlainFiles::read(const std::string& path)
{
    requireRegularFile(path);
    std::ifstream in(path, std::ios::binary);
    if (!in.good())
        throw std::runtime_error("could not open '" + path + "'");
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<Files::Listed> PlainFiles::list(const std::string& folder)
{
    std::vector<Listed> listed;
    std::error_code error;
    for (const fs::directory_entry& file : fs::directory_iterator(folder.empty() ? "." : folder, error)) {
        std::error_code kind;
        listed.push_back({file.path().filename().string(), file.is_regular_file(kind)});
    }
    if (error)
        throw std::runtime_error("could not read folder '" + folder + "' (" + error.message() + ")");
    return listed;
}

void PlainFiles::write(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush())
        throw std::runtime_error("could not write to '" + path + "'");
}

std::unique_ptr<File> PlainFiles::openArchive(const std::string& path)
{
    requireRegularFile(path);
    return std::make_unique<File>(path);
}

std::unique_ptr<Content> PlainFiles::readEntry(const std::string& path, unsigned int index)
{
    requireRegularFile(path);
    return entryOfArchive(path, index);
}

std::unique_ptr<Content> entryOfArchive(const std::string& path, unsigned int index)
{
    const unsigned int count = File::size(path);
    if (index >= count)
        throw noEntry(path, index, count);
    return std::unique_ptr<Content>(File::at(path, index));
}

std::string findArchive(Files& files, const std::string& folder, const std::string& name)
{
    const std::string wanted = upperCase(name) + ".LBX";
    std::vector<Files::Listed> listed;
    try {
        listed = files.list(folder);
    } catch (const std::exception&) {
        return "";
    }
    for (const Files::Listed& file : listed)
        if (file.regular && upperCase(file.name) == wanted)
            return (fs::path(folder.empty() ? "." : folder) / file.name).string();
    return "";
}

} // namespace lbxtool
