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

FolderFor::FolderFor(const std::string& path)
{
    for (fs::path folder = fs::path(path).parent_path(); !folder.empty() && !fs::exists(folder);
         folder = folder.parent_path())
        made.push_back(folder.string());
    makeFolderFor(path);
}

FolderFor::~FolderFor()
{
    for (const std::string& folder : made) {
        std::error_code ignored;
        fs::remove(folder, ignored);
    }
}

} // namespace lbxtool
