// lbx check: validates archives, reading their headers alone.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/modding/Header.h"
#include "tools/platform/Inputs.h"

#include <iostream>
#include <stdexcept>

namespace lbxtool {

namespace {

ArchiveHeader checkedHeader(const std::string& path)
{
    ArchiveHeader header;
    withSystemReason(path, [&] { header = readHeader(path); });
    if (!header.valid)
        throw std::runtime_error(header.error);
    return header;
}

int check(const std::vector<std::string>& archives, bool json)
{
    Json checked = Json::array();
    const int status = forEachPath(
        archives,
        [&](const std::string& path) {
            const ArchiveHeader header = checkedHeader(path);
            const std::size_t count = header.offsets.size() - 1;
            if (json)
                checked.push_back({{"path", path}, {"valid", true}, {"count", count}, {"tagged", header.tagged}});
            else
                std::cout << path << ": valid, " << entries(count) << (header.tagged ? ", tagged" : "") << '\n';
        },
        [&](const std::string& path, const std::string& message) {
            checked.push_back({{"path", path}, {"valid", false}, {"error", message}});
        });
    if (json)
        printJson({{"archives", checked}});
    return status;
}

} // namespace

void addCheck(CLI::App& app, int& status)
{
    auto archives = std::make_shared<std::vector<std::string>>();
    auto json = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand("check", "Validate archives; exit status 1 if any is invalid");
    command->add_option("ARCHIVE", *archives, "Archives to validate")->required();
    jsonOption(*command, *json);
    examples(*command, "  lbx check demo/*.LBX\n  lbx check --json demo/*.LBX");
    define(*command, status, [archives, json] { return check(*archives, *json); });
}

} // namespace lbxtool
