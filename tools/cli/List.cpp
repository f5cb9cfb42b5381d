// lbx list: each archive's entries, and how it fits the game's catalogue.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Listing.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

int list(const std::vector<std::string>& archives, bool json)
{
    TerminalWarnings warnings;
    Json listed = Json::array();
    const int status = forEachPath(
        archives,
        [&](const std::string& path) {
            std::unique_ptr<File> archive = openArchive(path);
            if (json)
                listed.push_back(listingJson(path, *archive, warnings));
            else
                std::cout << listing(path, *archive, warnings);
        },
        [&](const std::string& path, const std::string& message) {
            listed.push_back({{"path", path}, {"error", message}});
        });
    if (json)
        printJson({{"archives", listed}});
    return status;
}

} // namespace

void addList(CLI::App& app, int& status)
{
    auto archives = std::make_shared<std::vector<std::string>>();
    auto json = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand("list", "Show each archive's entries, and how it fits the game's catalogue");
    command->add_option("ARCHIVE", *archives, "Archives to list")->required();
    jsonOption(*command, *json);
    examples(*command, "  lbx list demo/INBOX.LBX\n  lbx list demo/*.LBX\n  lbx list --json demo/*.LBX");
    define(*command, status, [archives, json] { return list(*archives, *json); });
}

} // namespace lbxtool
