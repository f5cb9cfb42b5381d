// lbx export: graphics and cursors to PNG, text tables and font metrics to
// text, sounds to WAVE files, and the gallery page.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Export.h"
#include "tools/modding/Names.h"
#include "tools/parallel/ArchiveSteps.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/SystemFiles.h"
#include "tools/platform/Paths.h"
#include "tools/render/Gallery.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace lbxtool {

namespace {

struct ExportOptions {
    std::vector<std::string> arguments; // archives and entry numbers
    std::vector<std::string> archives;
    std::vector<unsigned int> indices;
    std::string folder = ".";
    std::string palette;  // ARCHIVE:INDEX, or empty for the game's own sources
    std::string palettes; // where the game's archives are; empty: beside each archive
    std::string charset;  // what text tables are written in; empty: the text escape
    bool html = false;
    bool force = false; // replace files that are in the way
    unsigned int jobs = 0;
};

// One archive being exported.
struct ExportedArchive {
    ExportedArchive(const std::string& path, const std::string& stem) : path(path), stem(stem), gallery(path, stem) {}

    std::string path;
    std::string stem;
    std::unique_ptr<ArchiveEntries> archive;
    std::vector<unsigned int> indices;
    std::unique_ptr<PaletteSource> palettes;
    std::exception_ptr paletteFailure; // reported after the folder is made, as one thread does
    std::vector<ExportedNames> planned; // each entry's files, by the entry's place in `indices`
    std::vector<ExportedEntry> entries;
    Gallery gallery;
    unsigned int written = 0;
};

// Exporting archives: each entry's files are made on the workers, and
// written in turn.
class Exporting : public ArchiveSteps<ExportedArchive> {
public:
    Exporting(const ExportOptions& options, SafeWriter& writer)
        : options(options), lookup(paletteLookup(options.palettes, options.palette)),
          existing(replaceIf(options.force)), writer(writer), files(writer), stems(options.archives.size())
    {
        if (!options.charset.empty())
            charset = std::make_unique<Charset>(charsetOf(options.charset));
    }

    std::size_t plan(std::size_t a) override
    {
        stems[a] = names.next(options.archives[a]);
        return options.indices.empty() ? listedEntries(options.archives[a]) : options.indices.size();
    }

    std::unique_ptr<ExportedArchive> open(std::size_t a, std::size_t entries) override
    {
        auto opened = std::make_unique<ExportedArchive>(options.archives[a], stems[a]);
        // Each entry is read where it is worked on, and once before to name
        // its files: the archive is not held whole.
        opened->archive = std::make_unique<ArchiveEntries>(opened->path);
        const ArchiveEntries& archive = *opened->archive;
        opened->indices = selectIndices(opened->path, archive.size(), options.indices);
        if (options.indices.empty())
            requireEntries(archive, entries);
        for (const unsigned int index : opened->indices)
            opened->planned.push_back(exportNames(archive.read(index).get(), opened->stem, index));
        try {
            opened->palettes = std::make_unique<PaletteSource>(archive.reader(), lookup, files, warnings);
        } catch (...) {
            opened->paletteFailure = std::current_exception();
        }
        opened->entries.resize(entries);
        return opened;
    }

    // Every file of the archive is checked before the first is written.
    void begin(ExportedArchive& opened) override
    {
        makeFolder(options.folder);
        if (opened.paletteFailure)
            std::rethrow_exception(opened.paletteFailure);
        writer.protect(opened.palettes->sourcePaths());
        for (const ExportedNames& names : opened.planned)
            for (const std::string& name : names.all())
                writer.check(inFolder(options.folder, name), existing);
        if (options.html)
            checkPage(inFolder(options.folder, GALLERY_PAGE));
    }

    void work(ExportedArchive& opened, std::size_t k) override
    {
        if (!opened.palettes)
            return;
        const std::unique_ptr<Content> entry = opened.archive->read(opened.indices[k]);
        opened.entries[k] = exportEntry(*entry, opened.path, opened.indices[k], opened.stem, options.folder,
                                        *opened.palettes, charset.get());
    }

    // A file that cannot be written ends the entry there, as a failure to
    // make it would have.
    void deliver(ExportedArchive& opened, std::size_t k) override
    {
        ExportedEntry done = std::move(opened.entries[k]);
        try {
            for (const MadeFile& file : done.files) {
                writer.writeBytes(inFolder(options.folder, file.name), file.bytes, existing);
                ++opened.written;
            }
        } catch (const std::exception& e) {
            done.error = e.what();
        }
        if (done.error.empty()) {
            opened.gallery.add({std::move(done.view), std::move(done.names), ""});
            return;
        }
        reportError(entryName(opened.path, opened.indices[k]) + ": " + done.error);
        opened.gallery.add({headingOf(done.view), {}, done.error});
        status = EXIT_FAILED;
    }

    void finish(ExportedArchive& opened) override
    {
        std::cout << "exported " << counted(opened.written, "file", "files") << " from " << opened.path << " to " << options.folder
                  << " as " << opened.stem << '\n';
        if (options.html)
            std::cout << "gallery: " << opened.gallery.write(options.folder, files) << '\n';
    }

    int status = EXIT_DONE; // of the entries

private:
    // The gallery page is rebuilt from every archive exported into the
    // folder; a page of that name that is not a gallery is the user's.
    void checkPage(const std::string& page)
    {
        std::error_code error;
        if (std::filesystem::exists(page, error) && !isGalleryPage(readBytes(page, GALLERY_MARK_SIZE)))
            writer.check(page, existing);
    }

    const ExportOptions& options;
    const PaletteLookup lookup;
    const Existing existing;
    SafeWriter& writer;
    SystemFiles files;
    TerminalWarnings warnings;
    StemNames names;
    std::vector<std::string> stems;
    std::unique_ptr<Charset> charset;
};

int exportEntries(ExportOptions& options)
{
    splitArchivesAndIndices(options.arguments, options.archives, options.indices);
    SafeWriter writer;
    writer.protect(options.archives);
    if (!options.palette.empty())
        writer.protect({parseEntryRef(options.palette).archive});
    Exporting exporting(options, writer);
    const int opened = forEachArchive(options.jobs, options.archives, exporting);
    return std::max(exporting.status, opened);
}

} // namespace

void addExport(CLI::App& app, int& status)
{
    auto options = std::make_shared<ExportOptions>();
    CLI::App* command = app.add_subcommand(
        "export", "Graphics and cursors to PNG, text tables and font metrics to text, sounds to WAV");
    command
        ->add_option("ARCHIVE", options->arguments,
                     "Archives, and the entry numbers to take from each; all entries when none are given")
        ->required();
    command->add_option("-o,--output", options->folder, "Folder to write into")->capture_default_str();
    command->add_option("-p,--palette", options->palette,
                        "Take the palette from ARCHIVE:INDEX instead of the game's own sources");
    palettesOption(*command, options->palettes);
    charsetOption(*command, options->charset, "Write text tables' .txt files in these characters (default: the text escape)");
    command->add_flag("--html", options->html, "Also write an index.html gallery");
    command->add_flag("--force", options->force, "Replace files of the same names in the folder");
    jobsOption(*command, options->jobs);
    quietOption(*command);
    examples(*command, "  lbx export demo/INBOX.LBX --html -o gallery\n"
                       "  lbx export demo/INBOX.LBX 1 -p demo/FONTS.LBX:2 -o out\n"
                       "  lbx export demo/STARNAME.LBX --charset cp437 -o letters");
    define(*command, status, [options] { return exportEntries(*options); });
}

} // namespace lbxtool
