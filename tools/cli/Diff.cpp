// lbx diff: what changed between two versions of an archive, entry by entry,
// and the mod or whole-file patch that carries the change.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Diff.h"
#include "tools/modding/Mod.h"
#include "tools/modding/Names.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Paths.h"
#include "tools/platform/Report.h"
#include "tools/platform/SystemFiles.h"

#include <filesystem>
#include <iostream>

namespace lbxtool {

namespace {

struct DiffOptions {
    std::string base;
    std::string changed;
    std::string output;   // the mod or patch to write, if any
    bool reversible = false;
    bool bps = false;
    bool json = false;
    bool force = false;
};

void requireConsistent(const DiffOptions& options)
{
    if (options.output.empty() && (options.reversible || options.bps))
        throw UsageError(std::string(options.bps ? "--bps" : "--reversible") + " is for the file that -o names");
    if (options.reversible && options.bps)
        throw UsageError("a BPS patch cannot be undone: --reversible is for mods");
}

// The mod or BPS patch, and the line that says what was written.
std::string writePatch(const DiffOptions& options, const SafeWriter& writer, const ArchiveBytes& base,
                       const ArchiveBytes& changed)
{
    const std::string name = std::filesystem::path(options.base).filename().string();
    const std::string bytes = options.bps ? bpsPatch(base.file(), changed.file())
                                          : modFile(makeMod(base, changed, name, options.reversible));
    makeFolderFor(options.output);
    writer.writeBytes(options.output, bytes, replaceIf(options.force));
    const std::string what = options.bps ? "a BPS patch" : options.reversible ? "a reversible mod" : "a mod";
    return "wrote " + options.output + ": " + what + " of " + std::to_string(bytes.size()) + " bytes\n";
}

int diff(const DiffOptions& options)
{
    requireConsistent(options);
    requireRegularFile(options.base);
    requireRegularFile(options.changed);
    SafeWriter writer;
    writer.protect({options.base, options.changed});
    if (!options.output.empty())
        writer.check(options.output, replaceIf(options.force));
    SystemFiles files(writer);
    const ArchiveBytes base = readArchiveBytes(files, options.base);
    const ArchiveBytes changed = readArchiveBytes(files, options.changed);
    const std::vector<EntryChange> changes =
        diffArchives(*archiveOf(base, options.base), *archiveOf(changed, options.changed));
    const std::string written = options.output.empty() ? "" : writePatch(options, writer, base, changed);
    if (options.json)
        std::cout << diffJson(changes, options.base, options.changed);
    else
        std::cout << diffText(changes, options.base, options.changed) << written;
    return EXIT_DONE;
}

} // namespace

void addDiff(CLI::App& app, int& status)
{
    auto options = std::make_shared<DiffOptions>();
    CLI::App* command = app.add_subcommand(
        "diff", "Show what changed between two versions of an archive: entries added, removed, moved and changed; "
                "with -o, write it as a mod that lbx patch applies");
    command->add_option("BASE", options->base, "The archive as it was")->required();
    command->add_option("NEW", options->changed, "The archive as it is now")->required();
    command->add_option("-o,--output", options->output, "Write a mod of the change (only what changed) to this file");
    command->add_flag("--reversible", options->reversible,
                      "Let the mod be undone: it carries the base's entries it replaces too");
    command->add_flag("--bps", options->bps, "Write a BPS patch of the whole file instead, for other patchers");
    command->add_flag("--json", options->json, "Print the account as one JSON document");
    command->add_flag("--force", options->force, "Replace the file -o names if it exists");
    examples(*command, "  lbx diff demo/INBOX.LBX mod/INBOX.LBX\n"
                       "  lbx diff demo/INBOX.LBX mod/INBOX.LBX -o inbox.lbxmod --reversible\n"
                       "  lbx diff demo/INBOX.LBX mod/INBOX.LBX --bps -o inbox.bps\n"
                       "  lbx diff --json demo/INBOX.LBX mod/INBOX.LBX");
    define(*command, status, [options] { return diff(*options); });
}

} // namespace lbxtool
