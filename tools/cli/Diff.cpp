// lbx diff: what changed between two versions of an archive, entry by entry.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Diff.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

struct DiffOptions {
    std::string base;
    std::string changed;
};

int diff(const DiffOptions& options)
{
    requireRegularFile(options.base);
    requireRegularFile(options.changed);
    const std::unique_ptr<File> base = openArchive(options.base);
    const std::unique_ptr<File> changed = openArchive(options.changed);
    std::cout << diffText(diffArchives(*base, *changed), options.base, options.changed);
    return EXIT_DONE;
}

} // namespace

void addDiff(CLI::App& app, int& status)
{
    auto options = std::make_shared<DiffOptions>();
    CLI::App* command = app.add_subcommand(
        "diff", "Show what changed between two versions of an archive: entries added, removed, moved and changed");
    command->add_option("BASE", options->base, "The archive as it was")->required();
    command->add_option("NEW", options->changed, "The archive as it is now")->required();
    examples(*command, "  lbx diff demo/INBOX.LBX mod/INBOX.LBX");
    define(*command, status, [options] { return diff(*options); });
}

} // namespace lbxtool
