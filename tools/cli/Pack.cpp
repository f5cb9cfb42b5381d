// lbx pack: the archive again from a folder that unpack made, byte for byte
// where nothing was edited, with a summary of what changed.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Names.h"
#include "tools/modding/Pack.h"
#include "tools/parallel/Workers.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/SystemFiles.h"
#include "tools/platform/Paths.h"
#include "tools/platform/Report.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

struct PackOptions {
    std::string folder;
    std::string output;   // empty: beside the folder, under the archive's own name
    bool force = false; // replace an existing archive
    PackRules rules;
    unsigned int jobs = 0;
};

// The entries of `plan` made from their files on the workers, and put into
// an archive in order, each written to `out` as it comes and then let go, so
// that no more than the workers' lead is held at once; `changes` gets what
// changed, `shapes` what each is.
void packEntries(const PackPlan& plan, const PackOptions& options, const std::string& folder,
                 const std::string& manifestPath, const std::string& target, ArchiveStream& out,
                 std::vector<std::string>& changes, std::vector<std::string>& shapes)
{
    const FileReader read = [&folder](const std::string& name) { return readBytes(inFolder(folder, name)); };
    TerminalWarnings warnings;
    std::vector<PackedEntry> packed(plan.entries->size());
    WorkProgress progress(folder, packed.size());
    const auto compute = [&](std::size_t i) {
        const unsigned int index = static_cast<unsigned int>(i);
        packed[i] = packEntry(
            plan, index,
            {{manifestPath, static_cast<int>(index)}, read, folder, options.rules, warnings, plan.charset.get()}, target);
    };
    const auto deliver = [&](std::size_t i, const Outcome& outcome) {
        outcome.said.say();
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
        if (!packed[i].change.empty())
            changes.push_back(std::move(packed[i].change));
        Content* entry = packed[i].entry.get();
        shapes.push_back(shapeOf(entry));
        out.add(entry->data(), entry->size());
        packed[i] = {};
        progress.advance();
    };
    inOrder(options.jobs, packed.size(), compute, deliver);
}

// The header area the library's writer wrote against the one unpacked.
void noteHeader(const std::string& target, const Json& manifest, const std::string& manifestPath)
{
    const ArchiveHeader header = readHeader(target);
    if (!header.valid)
        return;
    const std::string note = headerNote(manifest, readBytes(target, header.offsets.front()),
                                        header.offsets.size() - 1, header.tagged, manifestPath);
    if (!note.empty())
        warn(note);
}

// What was packed, and every way it differs from the archive unpacked.
void printSummary(std::size_t packed, const std::string& folder, const std::string& target,
                  const std::vector<std::string>& changes, const Arrangement& arranged)
{
    std::cout << "packed " << entries(packed) << " from " << folder << " into " << target << ", "
              << changes.size() << " changed";
    for (const auto& [count, what] : {std::pair<unsigned int, const char*>{arranged.added, " added"},
                                      {arranged.moved, " moved"},
                                      {arranged.removed, " removed"}})
        if (count > 0)
            std::cout << ", " << count << what;
    std::cout << '\n';
    for (const std::string& change : changes)
        std::cout << "  changed " << change << '\n';
    for (const std::string& line : arranged.lines)
        std::cout << "  " << line << '\n';
}

int pack(const PackOptions& options)
{
    const std::string folder = folderName(options.folder); // "DIR/STEM/" names the folder STEM too
    const std::string manifestPath = inFolder(folder, MANIFEST_NAME);
    if (!fs::is_directory(folder))
        throw std::runtime_error("'" + options.folder + "' is not a folder");
    if (!fs::exists(manifestPath))
        throw std::runtime_error("'" + options.folder + "' holds no " + MANIFEST_NAME +
                                 "; pack takes a folder that lbx unpack made");
    SafeWriter writer;
    SystemFiles files(writer);
    const Json manifest = parseManifest(files.read(manifestPath), manifestPath);
    const PackPlan plan = planPack(manifest, manifestPath);
    const std::vector<Files::Listed> held = files.list(folder);
    const std::string target =
        options.output.empty() ? inFolder(fs::path(folder).parent_path().string(), plan.archive) : options.output;
    const Existing existing = replaceIf(options.force);
    std::vector<std::string> inputs = {manifestPath};
    for (const Files::Listed& file : held)
        inputs.push_back(inFolder(folder, file.name));
    writer.protect(inputs);
    writer.check(target, existing);
    TerminalWarnings warnings;
    requireNamedFiles(folder, held, *plan.entries, manifestPath, warnings);

    std::vector<std::string> changes, shapes;
    Arrangement arranged;
    FolderFor made(target);
    writer.streamArchive(target, existing, [&](ArchiveStream& out) {
        packEntries(plan, options, folder, manifestPath, target, out, changes, shapes);
        arranged = arrangement(manifest, plan, shapes, target);
    });
    made.keep();
    noteHeader(target, manifest, manifestPath);
    printSummary(shapes.size(), folder, target, changes, arranged);
    return EXIT_DONE;
}

} // namespace

void addPack(CLI::App& app, int& status)
{
    auto options = std::make_shared<PackOptions>();
    CLI::App* command = app.add_subcommand("pack", "Build an archive from a folder that unpack made");
    command->add_option("FOLDER", options->folder, "The folder DIR/STEM/, with its archive.json")->required();
    command->add_option("-o,--output", options->output,
                        "Archive to write; by default DIR/ and the archive's own name");
    command->add_flag("--force", options->force, "Replace the archive if it exists");
    command->add_flag("--nearest", options->rules.nearest,
                      "In frames saved as RGBA, take the nearest palette colour for a colour the palette lacks");
    command->add_flag("--strict", options->rules.strict,
                      "Refuse, instead of warning, a frame with pixels opaque at the entry's transparent index or "
                      "partly transparent");
    command->add_flag("--grow", options->rules.grow,
                      "Let a text record grow past its table's record length (the length is then chosen anew)");
    command->add_flag("--records", options->rules.records,
                      "Let a text table gain or lose records, a line a record");
    jobsOption(*command, options->jobs);
    quietOption(*command);
    examples(*command, "  lbx pack mod/INBOX -o INBOX.LBX\n  lbx pack mod/INBOX --nearest --force\n"
                       "  lbx pack mods/STARNAME --records --grow");
    define(*command, status, [options] { return pack(*options); });
}

} // namespace lbxtool
