#include "tools/modding/Names.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

constexpr int INDEX_DIGITS = 3;

std::string padded(unsigned int number)
{
    const std::string digits = std::to_string(number);
    return std::string(INDEX_DIGITS - std::min<std::size_t>(digits.size(), INDEX_DIGITS), '0') + digits;
}

} // namespace

std::string upperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

File::LBX_FILE catalogueRow(const std::string& path)
{
    return File::LBX_ENUM(upperCase(fs::path(path).stem().string()));
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
    for (unsigned int count = 2; !taken.insert(upperCase(name)).second; ++count)
        name = stem + "-" + std::to_string(count);
    return name;
}

std::string entryFileName(const std::string& stem, unsigned int index, const std::string& suffix)
{
    return stem + '_' + padded(index) + suffix;
}

std::string frameFileName(const std::string& stem, unsigned int index, unsigned int frame)
{
    return entryFileName(stem, index, '_' + padded(frame) + ".png");
}

std::string sheetFileName(const std::string& stem, unsigned int index)
{
    return entryFileName(stem, index, "_sheet.png");
}

std::string fontSheetFileName(const std::string& stem, unsigned int index, unsigned int font)
{
    return entryFileName(stem, index, "_font" + std::to_string(font) + ".png");
}

std::string textFileName(const std::string& stem, unsigned int index)
{
    return entryFileName(stem, index, ".txt");
}

std::string entrySuffix(Content* entry)
{
    return entry->type() == Content::SOUND ? ".wav" : "." + entry->typeStr();
}

std::string inFolder(const std::string& folder, const std::string& name)
{
    return (fs::path(folder) / name).string();
}

std::string folderName(const std::string& folder)
{
    fs::path normal = fs::path(folder).lexically_normal();
    if (normal.filename().empty())
        normal = normal.parent_path();
    return normal.string();
}

std::string entryName(const std::string& archive, unsigned int index)
{
    return archive + "[" + std::to_string(index) + "]";
}

std::string counted(std::size_t count, const std::string& one, const std::string& many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string entries(std::size_t count)
{
    return counted(count, "entry", "entries");
}

std::string frames(std::size_t count)
{
    return counted(count, "frame", "frames");
}

std::runtime_error changedWhileRead(const std::string& path)
{
    return std::runtime_error("'" + path + "' changed while it was read");
}

std::runtime_error noEntry(const std::string& path, std::size_t index, std::size_t count, bool appends)
{
    const std::string range = count == 0 ? "it has none" : "its entries are 0 to " + std::to_string(count - 1);
    return std::runtime_error("'" + path + "' has no entry " + std::to_string(index) + "; " + range +
                              (appends ? ", and " + std::to_string(count) + " appends" : ""));
}

bool allDigits(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

bool smallNumber(const std::string& text)
{
    return !text.empty() && text.size() <= LARGEST_NUMBER_DIGITS && allDigits(text);
}

EntryRef parseEntryRef(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    const std::string digits = colon == std::string::npos ? "" : text.substr(colon + 1);
    if (colon == 0 || !smallNumber(digits))
        throw std::runtime_error("'" + text + "' names no entry; write ARCHIVE:INDEX");
    return {text.substr(0, colon), static_cast<unsigned int>(std::stoul(digits))};
}

} // namespace lbxtool
