#include "tools/ArchiveSteps.h"
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
    return readBytes(path, offsets.front());
}

void requireEmptyFolder(const std::string& folder, bool force)
{
    std::error_code error;
    if (!force && fs::is_directory(folder, error) && !fs::is_empty(folder, error))
        throw std::runtime_error("'" + folder + "' already holds files; --force writes into it");
}

// One entry unpacked: its part of the manifest, and its files by name.
struct UnpackedEntry {
    Json manifest;
    std::map<std::string, std::string> files;
    std::string kept; // why its bytes are kept as they are, if they are
};

struct UnpackedArchive {
    std::string path;
    std::string folder;
    std::unique_ptr<File> archive;
    std::unique_ptr<PaletteSource> palettes;
    std::vector<UnpackedEntry> entries;
    Json manifest;
    std::vector<std::string> kept;
};

UnpackedEntry unpacked(UnpackedArchive& opened, unsigned int index)
{
    Content* entry = opened.archive->at(index);
    const std::string stem = fs::path(opened.folder).filename().string();
    EntryForm form = unpackEntry(entry, {stem, index, *opened.palettes});
    UnpackedEntry done;
    form.manifest[key::SHAPE] = shapeOf(entry);
    form.manifest[key::HASH] = hashOf(std::string(entry->data(), entry->size()));
    for (auto* made : {&form.files, &form.views})
        for (auto& [name, bytes] : *made) {
            form.manifest[key::FILES][name] = hashOf(bytes);
            done.files[name] = std::move(bytes);
        }
    if (form.manifest.contains(key::WHY))
        done.kept = entryName(opened.path, index) + " (" + entry->typeStr() + "): " +
                    form.manifest[key::WHY].get<std::string>();
    done.manifest = std::move(form.manifest);
    return done;
}

// Unpacking archives: each entry's forms are made on the workers, and
// written in turn.
class Unpacking : public ArchiveSteps<UnpackedArchive> {
public:
    explicit Unpacking(const UnpackOptions& options)
        : options(options), existing(options.force ? Existing::Replace : Existing::Refuse),
          folders(options.archives.size())
    {
    }

    std::size_t plan(std::size_t a) override
    {
        folders[a] = (fs::path(options.folder) / stems.next(options.archives[a])).string();
        return listedEntries(options.archives[a]);
    }

    std::unique_ptr<UnpackedArchive> open(std::size_t a, std::size_t entries) override
    {
        requireEmptyFolder(folders[a], options.force);
        auto opened = std::make_unique<UnpackedArchive>();
        opened->path = options.archives[a];
        opened->folder = folders[a];
        opened->archive = openArchive(opened->path);
        requireEntries(*opened->archive, entries);
        const std::string header = headerArea(opened->path);
        opened->palettes = std::make_unique<PaletteSource>(*opened->archive, "");
        opened->entries.resize(entries);
        Json& manifest = opened->manifest;
        manifest[key::ARCHIVE] = fs::path(opened->path).filename().string();
        manifest[key::TAGGED] = opened->archive->tagged();
        manifest[key::HEADER] = hashOf(header);
        manifest[key::ENTRIES] = Json::array();
        return opened;
    }

    void begin(UnpackedArchive& opened) override
    {
        opened.palettes->protectSources();
        makeFolder(opened.folder);
    }

    void work(UnpackedArchive& opened, std::size_t i) override
    {
        opened.entries[i] = unpacked(opened, static_cast<unsigned int>(i));
    }

    void deliver(UnpackedArchive& opened, std::size_t i) override
    {
        UnpackedEntry done = std::move(opened.entries[i]);
        for (const auto& [name, bytes] : done.files)
            writeBytes((fs::path(opened.folder) / name).string(), bytes, existing);
        opened.manifest[key::ENTRIES].push_back(std::move(done.manifest));
        if (!done.kept.empty())
            opened.kept.push_back(done.kept);
    }

    void finish(UnpackedArchive& opened) override
    {
        writeBytes((fs::path(opened.folder) / MANIFEST_NAME).string(), manifestText(opened.manifest), existing);
        std::cout << "unpacked " << opened.archive->size() << " entries of " << opened.path << " into "
                  << opened.folder << '\n';
        for (const std::string& entry : opened.kept)
            std::cout << "  kept as bytes: " << entry << '\n';
    }

private:
    const UnpackOptions& options;
    Existing existing;
    StemNames stems;
    std::vector<std::string> folders;
};

} // namespace

int unpack(const UnpackOptions& options)
{
    protectInputs(options.archives);
    Unpacking unpacking(options);
    return forEachArchive(options.jobs, options.archives, unpacking);
}

} // namespace lbxtool
