// lbx list: each archive's entries, and how it fits the game's catalogue.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Listing.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

int list(const std::vector<std::string>& archives)
{
    TerminalWarnings warnings;
    return forEachPath(archives, [&](const std::string& path) {
        std::unique_ptr<File> archive = openArchive(path);
        std::cout << listing(path, *archive, warnings);
    });
}

} // namespace

void addList(CLI::App& app, int& status)
{
    auto archives = std::make_shared<std::vector<std::string>>();
    CLI::App* command = app.add_subcommand("list", "Show each archive's entries, and how it fits the game's catalogue");
    command->add_option("ARCHIVE", *archives, "Archives to list")->required();
    examples(*command, "  lbx list demo/INBOX.LBX\n  lbx list demo/*.LBX");
    define(*command, status, [archives] { return list(*archives); });
}

} // namespace lbxtool
