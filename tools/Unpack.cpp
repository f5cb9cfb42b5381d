#include "tools/Forms.h"
#include "tools/Hash.h"
#include "tools/Inputs.h"
#include "tools/Modding.h"
#include "tools/PaletteSource.h"
#include "tools/Paths.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"
#include "tools/Store.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {


// The bytes before the first entry: the header area as the file holds it.
std::string headerArea(const std::string& path)
{
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagged = false;
    if (!File::header(path, &error, &offsets, &tagged))
        throw std::runtime_error(error);
    return readBytes(path).substr(0, offsets.front());
}

void requireEmptyFolder(const std::string& folder, bool force)
{
    std::error_code error;
    if (!force && fs::is_directory(folder, error) && !fs::is_empty(folder, error))
        throw std::runtime_error("'" + folder + "' already holds files; --force writes into it");
}

void unpackArchive(const std::string& path, const std::string& folder, bool force)
{
    requireEmptyFolder(folder, force);
    std::unique_ptr<File> archive = openArchive(path);
    const std::string header = headerArea(path);
    PaletteSource palettes(*archive, "");
    const std::string stem = fs::path(folder).filename().string();

    Json manifest;
    manifest[key::ARCHIVE] = fs::path(path).filename().string();
    manifest[key::TAGGED] = archive->tagged();
    manifest[key::HEADER] = hashOf(header);
    manifest[key::ENTRIES] = Json::array();
    std::map<std::string, std::string> files;
    std::vector<std::string> kept;
    for (unsigned int i = 0; i < archive->size(); ++i) {
        Content* entry = archive->at(i);
        EntryForm form = unpackEntry(entry, {stem, i, palettes});
        form.manifest[key::SHAPE] = shapeOf(entry);
        form.manifest[key::HASH] = hashOf(std::string(entry->data(), entry->size()));
        for (const auto* made : {&form.files, &form.views})
            for (const auto& [name, bytes] : *made) {
                form.manifest[key::FILES][name] = hashOf(bytes);
                files[name] = bytes;
            }
        if (form.manifest.contains(key::WHY))
            kept.push_back(entryName(path, i) + " (" + entry->typeStr() + "): " +
                           form.manifest[key::WHY].get<std::string>());
        manifest[key::ENTRIES].push_back(form.manifest);
    }

    makeFolder(folder);
    const Existing existing = force ? Existing::Replace : Existing::Refuse;
    for (const auto& [name, bytes] : files)
        writeBytes((fs::path(folder) / name).string(), bytes, existing);
    writeBytes((fs::path(folder) / MANIFEST_NAME).string(), manifestText(manifest), existing);
    std::cout << "unpacked " << archive->size() << " entries of " << path << " into " << folder << '\n';
    for (const std::string& entry : kept)
        std::cout << "  kept as bytes: " << entry << '\n';
}

} // namespace

int unpack(const UnpackOptions& options)
{
    protectInputs(options.archives);
    StemNames stems;
    return forEachPath(options.archives, [&](const std::string& path) {
        unpackArchive(path, (fs::path(options.folder) / stems.next(path)).string(), options.force);
    });
}

} // namespace lbxtool
