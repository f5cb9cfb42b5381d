// lbx extract: entries as files of their own, STEM_007.graphic.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Paths.h"

#include <iostream>

namespace lbxtool {

namespace {

struct ExtractOptions {
    std::vector<std::string> arguments; // archives and entry numbers
    std::vector<std::string> archives;
    std::vector<unsigned int> indices;
    std::string folder = ".";
    bool force = false; // replace files that are in the way
};

int extract(ExtractOptions& options)
{
    splitArchivesAndIndices(options.arguments, options.archives, options.indices);
    const Existing existing = replaceIf(options.force);
    SafeWriter writer;
    writer.protect(options.archives);
    StemNames stems;
    return forEachPath(options.archives, [&](const std::string& path) {
        std::unique_ptr<File> archive = openArchive(path);
        const std::vector<unsigned int> selected = selectIndices(archive->path(), archive->size(), options.indices);
        makeFolder(options.folder);
        const std::string stem = stems.next(path);
        // Every file of the archive is checked before the first is written.
        std::vector<std::string> targets;
        for (unsigned int index : selected) {
            targets.push_back(inFolder(options.folder, entryFileName(stem, index, entrySuffix(archive->at(index)))));
            writer.check(targets.back(), existing);
        }
        for (std::size_t k = 0; k < selected.size(); ++k) {
            Content* entry = archive->at(selected[k]);
            writer.writeBytes(targets[k], std::string(entry->data(), entry->size()), existing);
        }
        std::cout << "extracted " << entries(selected.size()) << " from " << path << " to " << options.folder
                  << " as " << stem << '\n';
    });
}

} // namespace

void addExtract(CLI::App& app, int& status)
{
    auto options = std::make_shared<ExtractOptions>();
    CLI::App* command = app.add_subcommand("extract", "Write entries to files of their own, STEM_007.graphic");
    command
        ->add_option("ARCHIVE", options->arguments,
                     "Archives, and the entry numbers to take from each; all entries when none are given")
        ->required();
    command->add_option("-o,--output", options->folder, "Folder to write into")->capture_default_str();
    command->add_flag("--force", options->force, "Replace files of the same names in the folder");
    examples(*command, "  lbx extract demo/FONTS.LBX 1 2 -o parts\n  lbx extract demo/*.LBX -o parts/all");
    define(*command, status, [options] { return extract(*options); });
}

} // namespace lbxtool
