#include "tools/Paths.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

constexpr int INDEX_DIGITS = 3;
constexpr std::size_t LARGEST_INDEX_DIGITS = 9;

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

} // namespace

File::LBX_FILE catalogueRow(const std::string& path)
{
    return File::LBX_ENUM(upper(fs::path(path).stem().string()));
}

std::string findArchive(const std::string& folder, const std::string& name)
{
    const std::string wanted = upper(name) + ".LBX";
    std::error_code error;
    for (const fs::directory_entry& file : fs::directory_iterator(folder.empty() ? "." : folder, error))
        if (upper(file.path().filename().string()) == wanted && file.is_regular_file(error))
            return file.path().string();
    return "";
}

std::string safeStem(const std::string& path)
{
    std::string stem = fs::path(path).stem().string();
    for (char& c : stem)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_')
            c = '_';
    return stem.empty() ? "entry" : stem;
}

std::string StemNames::next(const std::string& path)
{
    const std::string stem = safeStem(path);
    std::string name = stem;
    for (unsigned int count = 2; !taken.insert(upper(name)).second; ++count)
        name = stem + "-" + std::to_string(count);
    return name;
}

std::string entryFileName(const std::string& stem, unsigned int index, const std::string& suffix)
{
    std::ostringstream name;
    name << stem << '_' << std::setw(INDEX_DIGITS) << std::setfill('0') << index << suffix;
    return name.str();
}

std::string entrySuffix(Content* entry)
{
    return entry->type() == Content::SOUND ? ".wav" : "." + entry->typeStr();
}

std::string entryName(const std::string& archive, unsigned int index)
{
    return archive + "[" + std::to_string(index) + "]";
}

void makeFolder(const std::string& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder))
        throw std::runtime_error("could not create folder '" + folder + "'" +
                                 (error ? " (" + error.message() + ")" : ""));
}

EntryRef parseEntryRef(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    const std::string digits = colon == std::string::npos ? "" : text.substr(colon + 1);
    const bool numeric = !digits.empty() && digits.size() <= LARGEST_INDEX_DIGITS &&
                         std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); });
    if (colon == 0 || !numeric)
        throw std::runtime_error("'" + text + "' names no entry; write ARCHIVE:INDEX");
    return {text.substr(0, colon), static_cast<unsigned int>(std::stoul(digits))};
}

} // namespace lbxtool
