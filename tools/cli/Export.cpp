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
#include <iostream>

namespace lbxtool {

namespace {

struct ExportOptions {
    std::vector<std::string> arguments; // archives and entry numbers
    std::vector<std::string> archives;
    std::vector<unsigned int> indices;
    std::string folder = ".";
    std::string palette; // ARCHIVE:INDEX, or empty for the game's own sources
    bool html = false;
    unsigned int jobs = 0;
};

// One archive being exported.
struct ExportedArchive {
    ExportedArchive(const std::string& path, const std::string& stem) : path(path), stem(stem), gallery(path, stem) {}

    std::string path;
    std::string stem;
    std::unique_ptr<File> archive;
    std::vector<unsigned int> indices;
    std::unique_ptr<PaletteSource> palettes;
    std::exception_ptr paletteFailure; // reported after the folder is made, as one thread does
    std::vector<ExportedEntry> entries;
    Gallery gallery;
    unsigned int written = 0;
};

// Exporting archives: each entry's files are made on the workers, and
// written in turn.
class Exporting : public ArchiveSteps<ExportedArchive> {
public:
    Exporting(const ExportOptions& options, SafeWriter& writer)
        : options(options), writer(writer), files(writer), stems(options.archives.size())
    {
    }

    std::size_t plan(std::size_t a) override
    {
        stems[a] = names.next(options.archives[a]);
        return options.indices.empty() ? listedEntries(options.archives[a]) : options.indices.size();
    }

    std::unique_ptr<ExportedArchive> open(std::size_t a, std::size_t entries) override
    {
        auto opened = std::make_unique<ExportedArchive>(options.archives[a], stems[a]);
        opened->archive = openArchive(opened->path);
        opened->indices = selectIndices(*opened->archive, options.indices);
        if (options.indices.empty())
            requireEntries(*opened->archive, entries);
        try {
            opened->palettes = std::make_unique<PaletteSource>(*opened->archive, options.palette, files, warnings);
        } catch (...) {
            opened->paletteFailure = std::current_exception();
        }
        opened->entries.resize(entries);
        return opened;
    }

    void begin(ExportedArchive& opened) override
    {
        makeFolder(options.folder);
        if (opened.paletteFailure)
            std::rethrow_exception(opened.paletteFailure);
        writer.protect(opened.palettes->sourcePaths());
    }

    void work(ExportedArchive& opened, std::size_t k) override
    {
        if (opened.palettes)
            opened.entries[k] = exportEntry(*opened.archive, opened.path, opened.indices[k], opened.stem,
                                            options.folder, *opened.palettes);
    }

    // A file that cannot be written ends the entry there, as a failure to
    // make it would have.
    void deliver(ExportedArchive& opened, std::size_t k) override
    {
        ExportedEntry done = std::move(opened.entries[k]);
        try {
            for (const MadeFile& file : done.files) {
                writer.writeBytes(inFolder(options.folder, file.name), file.bytes);
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
        std::cout << "exported " << opened.written << " files from " << opened.path << " to " << options.folder
                  << " as " << opened.stem << '\n';
        if (options.html)
            std::cout << "gallery: " << opened.gallery.write(options.folder, files) << '\n';
    }

    int status = EXIT_DONE; // of the entries

private:
    const ExportOptions& options;
    SafeWriter& writer;
    SystemFiles files;
    TerminalWarnings warnings;
    StemNames names;
    std::vector<std::string> stems;
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
    command->add_flag("--html", options->html, "Also write an index.html gallery");
    jobsOption(*command, options->jobs);
    examples(*command, "  lbx export demo/INBOX.LBX --html -o gallery\n"
                       "  lbx export demo/INBOX.LBX 1 -p demo/FONTS.LBX:2 -o out");
    define(*command, status, [options] { return exportEntries(*options); });
}

} // namespace lbxtool
