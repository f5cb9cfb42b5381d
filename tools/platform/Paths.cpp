#include "tools/platform/Paths.h"

#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

void makeFolder(const std::string& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder))
        throw std::runtime_error("could not create folder '" + folder + "'" +
                                 (error ? " (" + error.message() + ")" : ""));
}

void makeFolderFor(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    if (!folder.empty())
        makeFolder(folder);
}

std::string folderName(const std::string& folder)
{
    fs::path normal = fs::path(folder).lexically_normal();
    if (normal.filename().empty())
        normal = normal.parent_path();
    return normal.string();
}

} // namespace lbxtool
