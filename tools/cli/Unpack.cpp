// lbx unpack: each archive into DIR/STEM/, as files that ordinary editors
// open and a manifest of what they cannot hold.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Header.h"
#include "tools/modding/Names.h"
#include "tools/modding/Unpack.h"
#include "tools/parallel/ArchiveSteps.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/SystemFiles.h"
#include "tools/platform/Paths.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

struct UnpackOptions {
    std::vector<std::string> archives;
    std::string folder = ".";
    bool force = false; // write into a folder that already holds files
    unsigned int jobs = 0;
};

// The bytes before the first entry: the header area as the file holds it.
std::string headerArea(const std::string& path)
{
    const ArchiveHeader header = readHeader(path);
    if (!header.valid)
        throw std::runtime_error(header.error);
    return readBytes(path, header.offsets.front());
}

void requireEmptyFolder(const std::string& folder, bool force)
{
    std::error_code error;
    if (!force && fs::is_directory(folder, error) && !fs::is_empty(folder, error))
        throw std::runtime_error("'" + folder + "' already holds files; --force writes into it");
}

struct UnpackedArchive {
    std::string path;
    std::string folder;
    std::unique_ptr<File> archive;
    std::unique_ptr<PaletteSource> palettes;
    std::vector<UnpackedEntry> entries;
    Json manifest;
    std::vector<std::string> kept;
};

// Unpacking archives: each entry's forms are made on the workers, and
// written in turn.
class Unpacking : public ArchiveSteps<UnpackedArchive> {
public:
    Unpacking(const UnpackOptions& options, SafeWriter& writer)
        : options(options), writer(writer), files(writer), existing(replaceIf(options.force)),
          folders(options.archives.size())
    {
    }

    std::size_t plan(std::size_t a) override
    {
        folders[a] = inFolder(options.folder, stems.next(options.archives[a]));
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
        opened->palettes = std::make_unique<PaletteSource>(*opened->archive, "", files, warnings);
        opened->entries.resize(entries);
        opened->manifest = archiveManifest(*opened->archive, opened->path, header);
        return opened;
    }

    void begin(UnpackedArchive& opened) override
    {
        writer.protect(opened.palettes->sourcePaths());
        makeFolder(opened.folder);
    }

    void work(UnpackedArchive& opened, std::size_t i) override
    {
        opened.entries[i] = unpackEntry(*opened.archive, opened.path, static_cast<unsigned int>(i),
                                        fs::path(opened.folder).filename().string(), *opened.palettes);
    }

    void deliver(UnpackedArchive& opened, std::size_t i) override
    {
        UnpackedEntry done = std::move(opened.entries[i]);
        for (const auto& [name, bytes] : done.files)
            writer.writeBytes(inFolder(opened.folder, name), bytes, existing);
        opened.manifest[key::ENTRIES].push_back(std::move(done.manifest));
        if (!done.kept.empty())
            opened.kept.push_back(done.kept);
    }

    void finish(UnpackedArchive& opened) override
    {
        writer.writeBytes(inFolder(opened.folder, MANIFEST_NAME), manifestText(opened.manifest), existing);
        std::cout << "unpacked " << opened.archive->size() << " entries of " << opened.path << " into "
                  << opened.folder << '\n';
        for (const std::string& entry : opened.kept)
            std::cout << "  kept as bytes: " << entry << '\n';
    }

private:
    const UnpackOptions& options;
    SafeWriter& writer;
    SystemFiles files;
    TerminalWarnings warnings;
    Existing existing;
    StemNames stems;
    std::vector<std::string> folders;
};

int unpack(const UnpackOptions& options)
{
    SafeWriter writer;
    writer.protect(options.archives);
    Unpacking unpacking(options, writer);
    return forEachArchive(options.jobs, options.archives, unpacking);
}

} // namespace

void addUnpack(CLI::App& app, int& status)
{
    auto options = std::make_shared<UnpackOptions>();
    CLI::App* command =
        app.add_subcommand("unpack", "Take archives apart into files that editors open, and a manifest");
    command->add_option("ARCHIVE", options->archives, "Archives to unpack, each into DIR/STEM/")->required();
    command->add_option("-o,--output", options->folder, "Folder DIR to unpack into")->capture_default_str();
    command->add_flag("--force", options->force, "Write into a DIR/STEM/ that already holds files");
    jobsOption(*command, options->jobs);
    examples(*command, "  lbx unpack demo/INBOX.LBX -o mod\n  lbx unpack demo/*.LBX -o mod");
    define(*command, status, [options] { return unpack(*options); });
}

} // namespace lbxtool
