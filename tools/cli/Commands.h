#ifndef ZORV2_LBX_TOOLS_CLI_COMMANDS_H
#define ZORV2_LBX_TOOLS_CLI_COMMANDS_H

#include <CLI/CLI.hpp>

// The commands of `lbx`, a file each. Each adds itself to `app` with its
// options; when it is the one given, what it runs sets `status`.
namespace lbxtool {

using AddCommand = void (*)(CLI::App& app, int& status);

void addList(CLI::App& app, int& status);
void addCheck(CLI::App& app, int& status);
void addExtract(CLI::App& app, int& status);
void addVerify(CLI::App& app, int& status);
void addCreate(CLI::App& app, int& status);
void addReplace(CLI::App& app, int& status);
void addExport(CLI::App& app, int& status);
void addImport(CLI::App& app, int& status);
void addUnpack(CLI::App& app, int& status);
void addPack(CLI::App& app, int& status);
void addDiff(CLI::App& app, int& status);
void addPatch(CLI::App& app, int& status);
void addPoExport(CLI::App& app, int& status);
void addPoImport(CLI::App& app, int& status);
void addSample(CLI::App& app, int& status);

} // namespace lbxtool

#endif
