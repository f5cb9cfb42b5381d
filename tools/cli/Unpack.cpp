// lbx unpack: each archive into DIR/STEM/, as files that ordinary editors
// open and a manifest of what they cannot hold.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Forms.h"
#include "tools/modding/Header.h"
#include "tools/modding/Names.h"
#include "tools/modding/Unpack.h"
#include "tools/parallel/ArchiveSteps.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/SystemFiles.h"
#include "tools/platform/Paths.h"

#include <filesystem>
#include <iostream>
#include <set>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

struct UnpackOptions {
    std::vector<std::string> archives;
    std::string folder = ".";
    bool force = false;   // write into a folder that already holds files
    std::string palettes; // where the game's archives are; empty: beside each archive
    std::string charset;  // what text tables' files are in; empty: the text escape
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

// The files that the unpack in `folder` wrote, as its manifest lists them;
// none when there is none.
std::set<std::string> earlierFiles(const std::string& folder)
{
    std::set<std::string> names;
    const std::string manifestPath = inFolder(folder, MANIFEST_NAME);
    std::error_code error;
    if (!fs::is_regular_file(manifestPath, error))
        return names;
    try {
        const Json manifest = parseManifest(readBytes(manifestPath), manifestPath);
        const Json& entries = member(manifest, key::ENTRIES, {manifestPath});
        for (unsigned int i = 0; i < entries.size(); ++i) {
            for (const std::string& name : formFiles(entries[i], {manifestPath, static_cast<int>(i)}))
                names.insert(name);
            for (const std::string& name : viewFiles(entries[i]))
                names.insert(name);
        }
    } catch (const std::exception&) {
        // not a manifest unpack wrote: its files are not known
    }
    return names;
}

struct UnpackedArchive {
    std::string path;
    std::string folder;
    std::set<std::string> earlier; // files of an earlier unpack into the folder
    std::set<std::string> written;
    std::unique_ptr<ArchiveEntries> archive;
    std::unique_ptr<PaletteSource> palettes;
    std::vector<UnpackedEntry> entries;
    Json manifest; // its list of entries empty: each entry's part is written on the workers
    std::vector<std::string> entryTexts;
    std::vector<std::string> kept;
};

// Unpacking archives: each entry's forms are made on the workers, and
// written in turn.
class Unpacking : public ArchiveSteps<UnpackedArchive> {
public:
    Unpacking(const UnpackOptions& options, SafeWriter& writer)
        : options(options), lookup(paletteLookup(options.palettes)), writer(writer), files(writer),
          existing(replaceIf(options.force)), folders(options.archives.size())
    {
        if (!options.charset.empty())
            charset = std::make_unique<Charset>(charsetOf(options.charset));
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
        opened->earlier = earlierFiles(opened->folder);
        // Each entry is read where it is worked on: the archive is not held
        // whole.
        opened->archive = std::make_unique<ArchiveEntries>(opened->path);
        requireEntries(*opened->archive, entries);
        const std::string header = headerArea(opened->path);
        const ArchiveEntries& archive = *opened->archive;
        opened->palettes = std::make_unique<PaletteSource>(archive.reader(), lookup, files, warnings);
        opened->entries.resize(entries);
        opened->entryTexts.resize(entries);
        opened->manifest = archiveManifest(archive.tagged(), static_cast<unsigned int>(entries), opened->path, header,
                                           charset.get());
        return opened;
    }

    void begin(UnpackedArchive& opened) override
    {
        writer.protect(opened.palettes->sourcePaths());
        makeFolder(opened.folder);
    }

    void work(UnpackedArchive& opened, std::size_t i) override
    {
        const std::unique_ptr<Content> entry = opened.archive->read(static_cast<unsigned int>(i));
        UnpackedEntry& done = opened.entries[i];
        done = unpackEntry(*entry, opened.path, static_cast<unsigned int>(i),
                           fs::path(opened.folder).filename().string(), *opened.palettes, charset.get());
        opened.entryTexts[i] = entryText(done.manifest);
        done.manifest = Json();
    }

    void deliver(UnpackedArchive& opened, std::size_t i) override
    {
        UnpackedEntry done = std::move(opened.entries[i]);
        for (const auto& [name, bytes] : done.files) {
            writer.writeBytes(inFolder(opened.folder, name), bytes, existing);
            opened.written.insert(name);
        }
        if (!done.kept.empty())
            opened.kept.push_back(done.kept);
    }

    void finish(UnpackedArchive& opened) override
    {
        writer.writeBytes(inFolder(opened.folder, MANIFEST_NAME), manifestText(opened.manifest, opened.entryTexts),
                          existing);
        const unsigned int removed = removeEarlier(opened);
        std::cout << "unpacked " << entries(opened.archive->size()) << " of " << opened.path << " into "
                  << opened.folder << '\n';
        if (removed > 0)
            std::cout << "  removed " << counted(removed, "file", "files") << " of the earlier unpack that this one does not write\n";
        for (const std::string& entry : opened.kept)
            std::cout << "  kept as bytes: " << entry << '\n';
    }

private:
    // What an earlier unpack wrote into the folder and this one did not: the
    // files of another archive, that pack would otherwise take for edits.
    unsigned int removeEarlier(const UnpackedArchive& opened)
    {
        unsigned int removed = 0;
        for (const std::string& name : opened.earlier)
            if (opened.written.count(name) == 0 && writer.remove(inFolder(opened.folder, name)))
                ++removed;
        return removed;
    }

    const UnpackOptions& options;
    const PaletteLookup lookup;
    SafeWriter& writer;
    SystemFiles files;
    TerminalWarnings warnings;
    Existing existing;
    StemNames stems;
    std::vector<std::string> folders;
    std::unique_ptr<Charset> charset;
};

int unpack(const UnpackOptions& options)
{
    SafeWriter writer;
    writer.protect(options.archives);
    writer.protect({options.charset}); // a table file, when it names one
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
    command->add_flag("--force", options->force,
                      "Write into a DIR/STEM/ that already holds files, replacing those an earlier unpack wrote");
    palettesOption(*command, options->palettes);
    charsetOption(*command, options->charset,
                  "Write text tables' files in these characters, named in archive.json (default: the text escape)");
    jobsOption(*command, options->jobs);
    quietOption(*command);
    examples(*command, "  lbx unpack demo/INBOX.LBX -o mod\n  lbx unpack demo/*.LBX -o mods\n"
                       "  lbx unpack demo/STARNAME.LBX -o letters --charset cp437");
    define(*command, status, [options] { return unpack(*options); });
}

} // namespace lbxtool
