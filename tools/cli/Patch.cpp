// lbx patch: mods, or a BPS patch, applied to an archive, each checked
// against it before anything is written.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Diff.h"
#include "tools/modding/Patch.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Paths.h"
#include "tools/platform/Report.h"
#include "tools/platform/SystemFiles.h"

#include <algorithm>
#include <iostream>

namespace lbxtool {

namespace {

struct PatchOptions {
    std::string base;
    std::vector<std::string> patches;
    std::string output;
    bool reverse = false;    // undo reversible mods instead
    bool preferLast = false; // of two mods that change one thing, the later wins
    bool force = false;
};

// A BPS patch makes a whole file of another: it goes alone, and one way.
int patchWholeFile(const PatchOptions& options, const SafeWriter& writer, Files& files, const std::string& patch)
{
    const std::string& path = options.patches.front();
    requireAlone(path, options.patches.size());
    if (options.reverse)
        throw std::runtime_error("'" + path + "' is a BPS patch, which cannot be undone");
    const std::string target = applyBps(files.read(options.base), options.base, patch, path);
    makeFolderFor(options.output);
    writer.writeBytes(options.output, target, replaceIf(options.force));
    std::cout << "patched " << options.base << " with " << path << " into " << options.output << ", "
              << target.size() << " bytes\n";
    return EXIT_DONE;
}

std::vector<NamedMod> modsOf(const PatchOptions& options, const std::vector<std::string>& texts)
{
    std::vector<NamedMod> mods;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string& path = options.patches[i];
        Mod mod = readMod(texts[i], path);
        mods.push_back({path, options.reverse ? undoOf(mod, path) : std::move(mod)});
    }
    // Undone, the last mod applied is the first taken away.
    if (options.reverse)
        std::reverse(mods.begin(), mods.end());
    return mods;
}

int patch(const PatchOptions& options)
{
    requireRegularFile(options.base);
    for (const std::string& path : options.patches)
        requireRegularFile(path);
    SafeWriter writer;
    writer.protect(options.patches);
    writer.protect({options.base});
    writer.check(options.output, replaceIf(options.force));
    SystemFiles files(writer);
    std::vector<std::string> texts;
    for (const std::string& path : options.patches)
        texts.push_back(files.read(path));
    for (const std::string& text : texts)
        if (isBps(text))
            return patchWholeFile(options, writer, files, text);
    const ArchiveBytes base = readArchiveBytes(files, options.base);
    TerminalWarnings warnings;
    const ArchiveBytes result = applyMods(base, options.base, modsOf(options, texts), options.preferLast, warnings);
    makeFolderFor(options.output);
    writer.writeBytes(options.output, result.file(), replaceIf(options.force));
    std::cout << diffText(diffArchives(*archiveOf(base, options.base), *archiveOf(result, options.output)),
                          options.base, options.output);
    return EXIT_DONE;
}

} // namespace

void addPatch(CLI::App& app, int& status)
{
    auto options = std::make_shared<PatchOptions>();
    CLI::App* command = app.add_subcommand(
        "patch", "Apply mods that lbx diff made, in order, or a BPS patch, to an archive; each is checked against it "
                 "before anything is written");
    command->add_option("BASE", options->base, "The archive to patch, which stays as it is")->required();
    command->add_option("MOD", options->patches, "Mods, applied in order, or one BPS patch")->required();
    command->add_option("-o,--output", options->output, "The patched archive to write")->required();
    command->add_flag("--reverse", options->reverse, "Undo reversible mods: BASE is what they made");
    command->add_flag("--prefer-last", options->preferLast,
                      "Where two mods change the same entry or record, let the later one win");
    command->add_flag("--force", options->force, "Replace the file -o names if it exists");
    examples(*command, "  lbx patch demo/INBOX.LBX inbox.lbxmod -o patched/INBOX.LBX\n"
                       "  lbx patch --reverse patched/INBOX.LBX inbox.lbxmod -o undone/INBOX.LBX\n"
                       "  lbx patch demo/INBOX.LBX inbox.bps -o whole/INBOX.LBX");
    define(*command, status, [options] { return patch(*options); });
}

} // namespace lbxtool
