#include "tools/Support.h"

#include "images/Graphic.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

} // namespace

std::runtime_error cannotWrite(const std::string& path)
{
    return std::runtime_error("could not write to '" + path + "'");
}

unsigned short coloursFilled(const unsigned char* palette)
{
    unsigned short count = 0;
    while (count < COLORS && palette[count * PIXEL_SIZE + ALPHA] != 0)
        ++count;
    return count;
}

void reportError(const std::string& message)
{
    std::cerr << "lbx: " << message << '\n';
}

void warn(const std::string& message)
{
    static std::set<std::string> said;
    if (said.insert(message).second)
        std::cerr << "lbx: warning: " << message << '\n';
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

int forEachPath(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& action)
{
    int status = 0;
    for (const std::string& path : paths) {
        try {
            requireRegularFile(path);
            action(path);
        } catch (const std::exception& e) {
            reportError(e.what());
            status = 1;
        }
    }
    return status;
}

File::LBX_FILE catalogueRow(const std::string& path)
{
    return File::LBX_ENUM(upper(fs::path(path).stem().string()));
}

std::string safeStem(const std::string& path)
{
    std::string stem = fs::path(path).stem().string();
    for (char& c : stem)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_')
            c = '_';
    return stem.empty() ? "entry" : stem;
}

std::string entryFileName(const std::string& stem, unsigned int index, const std::string& suffix)
{
    std::ostringstream name;
    name << stem << '_' << std::setw(3) << std::setfill('0') << index << suffix;
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

void makeFolder(const std::string& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder))
        throw std::runtime_error("could not create folder '" + folder + "'");
}

void writeAtomically(const std::string& target, const std::function<void(const std::string&)>& writer)
{
    const std::string temporary = target + ".lbx-part";
    try {
        writer(temporary);
        fs::rename(temporary, target);
    } catch (const std::exception&) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
        throw cannotWrite(target);
    }
}

void writeText(const std::string& path, const std::string& text)
{
    writeAtomically(path, [&text](const std::string& temporary) {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << text;
        if (!out.good())
            throw cannotWrite(temporary);
    });
}

void storeEntry(const std::string& path, unsigned int index, std::unique_ptr<Content> entry)
{
    requireRegularFile(path);
    File archive(path);
    if (index == archive.size()) {
        archive.push_back(entry.get());
        entry.release();
    } else {
        std::unique_ptr<Content> former(archive.at(index));
        archive.replace(index, entry.release());
    }
    writeAtomically(path, [&archive](const std::string& temporary) { archive.write(temporary); });
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

EntryRef parseEntryRef(const std::string& text)
{
    const std::size_t colon = text.rfind(':');
    const std::string digits = colon == std::string::npos ? "" : text.substr(colon + 1);
    const bool numeric = !digits.empty() && digits.size() <= 9 &&
                         std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); });
    if (colon == 0 || !numeric)
        throw std::runtime_error("'" + text + "' names no entry; write ARCHIVE:INDEX");
    return {text.substr(0, colon), static_cast<unsigned int>(std::stoul(digits))};
}

} // namespace lbxtool
