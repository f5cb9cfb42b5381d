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

void checkArchive(const std::string& path)
{
    ArchiveHeader header;
    withSystemReason(path, [&] { header = readHeader(path); });
    if (!header.valid)
        throw std::runtime_error(header.error);
    std::cout << path << ": valid, " << entries(header.offsets.size() - 1) << (header.tagged ? ", tagged" : "")
              << '\n';
}

} // namespace

void addCheck(CLI::App& app, int& status)
{
    auto archives = std::make_shared<std::vector<std::string>>();
    CLI::App* command = app.add_subcommand("check", "Validate archives; exit status 1 if any is invalid");
    command->add_option("ARCHIVE", *archives, "Archives to validate")->required();
    examples(*command, "  lbx check demo/*.LBX");
    define(*command, status, [archives] { return forEachPath(*archives, checkArchive); });
}

} // namespace lbxtool
