// lbx create: a new archive, one entry a file.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <vector>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

struct CreateOptions {
    std::string target;
    std::vector<std::string> files;
    bool force = false;
    bool raw = false; // the files' bytes are meant as they are, whatever they look like
};

int create(const CreateOptions& options)
{
    const Existing existing = replaceIf(options.force);
    SafeWriter writer;
    writer.protect(options.files);
    writer.check(options.target, existing);
    // Every file read before any is judged: one that cannot be read is the
    // first thing to put right.
    std::vector<std::unique_ptr<Content>> entries;
    for (const std::string& file : options.files)
        entries.push_back(readEntryFile(file));
    File archive;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string& file = options.files[i];
        const std::string graphic = fs::path(file).replace_extension(".graphic").string();
        requireEntryFile(file, *entries[i], options.raw,
                         "lbx import '" + graphic + "' '" + file + "' makes a graphic entry of it to create with");
        archive.push_back(entries[i].release());
    }
    writer.writeArchive(options.target, archive, existing);
    std::cout << "created " << options.target << " with " << lbxtool::entries(archive.size()) << "\n";
    return EXIT_DONE;
}

} // namespace

void addCreate(CLI::App& app, int& status)
{
    auto options = std::make_shared<CreateOptions>();
    CLI::App* command = app.add_subcommand("create", "Build an archive, one entry a file");
    command->add_option("OUT", options->target, "Archive to write")->required();
    command->add_option("FILE", options->files, "Entries, in order")->required();
    command->add_flag("--force", options->force, "Replace OUT if it exists");
    command->add_flag("--raw", options->raw,
                      "Store each FILE as it is, even when it is a picture, a manifest, text or no sound the game plays");
    examples(*command, "  lbx create copy.lbx parts/FONTS_001.cursor parts/FONTS_002.cursor\n"
                       "  lbx create --raw pictures.lbx gallery/INBOX_000_000.png");
    define(*command, status, [options] { return create(*options); });
}

} // namespace lbxtool
