// lbx create: a new archive, one entry a file.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

struct CreateOptions {
    std::string target;
    std::vector<std::string> files;
    bool force = false;
};

int create(const CreateOptions& options)
{
    const Existing existing = replaceIf(options.force);
    SafeWriter writer;
    writer.protect(options.files);
    writer.check(options.target, existing);
    File archive;
    for (const std::string& file : options.files)
        withSystemReason(file, [&] { archive.push_back(file); });
    writer.writeArchive(options.target, archive, existing);
    std::cout << "created " << options.target << " with " << entries(archive.size()) << "\n";
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
    examples(*command, "  lbx create copy.lbx parts/FONTS_001.cursor parts/FONTS_002.cursor");
    define(*command, status, [options] { return create(*options); });
}

} // namespace lbxtool
