// lbx pack: each archive again from a folder that unpack made, byte for byte
// where nothing was edited, with a summary of what changed.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Names.h"
#include "tools/modding/Pack.h"
#include "tools/parallel/ArchiveSteps.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Paths.h"
#include "tools/platform/Report.h"

#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

struct PackOptions {
    std::vector<std::string> folders;
    std::string output; // the archive, or the folder the archives go into; empty: beside each folder
    bool force = false; // replace an existing archive
    PackRules rules;
    unsigned int jobs = 0;
};

// What an unpacked folder holds, read before any archive is written, so
// that no write lands on a file of any folder given. Its manifest is parsed
// again when its turn comes: the folders' manifests are not held at once.
struct PackedFolder {
    std::string folder;
    std::string manifestPath;
    std::size_t entries = 0;
    std::vector<Files::Listed> held;
    std::string target;
    Transcript said;           // what reading it said, for its turn
    std::exception_ptr failure; // why it cannot be packed
};

// An archive being packed from its folder: the entries made on the workers
// wait in `packed` for their turn, and are written to `out` and let go, so
// that no more than the workers' lead is held at once.
struct PackingArchive {
    PackingArchive(const PackedFolder& from, Json manifest) : from(from), manifest(std::move(manifest)) {}

    const PackedFolder& from;
    Json manifest;
    PackPlan plan;
    std::vector<PackedEntry> packed;
    std::optional<FolderFor> made;
    std::unique_ptr<ArchiveStream> out;
    std::vector<std::string> changes, shapes;
};

// -o names a folder for several folders, or when it ends with a slash or
// a folder stands there; otherwise the archive of the one folder.
bool outputIsFolder(const PackOptions& options)
{
    std::error_code error;
    return options.folders.size() > 1 || options.output.back() == '/' || fs::is_directory(options.output, error);
}

std::string targetOf(const PackOptions& options, const std::string& folder, const std::string& archive)
{
    if (options.output.empty())
        return inFolder(fs::path(folder).parent_path().string(), archive);
    return outputIsFolder(options) ? inFolder(options.output, archive) : options.output;
}

Json readManifest(const std::string& manifestPath)
{
    return parseManifest(readBytes(manifestPath), manifestPath);
}

void readFolder(const PackOptions& options, const std::string& given, PackedFolder& read)
{
    read.folder = folderName(given); // "DIR/STEM/" names the folder STEM too
    read.manifestPath = inFolder(read.folder, MANIFEST_NAME);
    if (!fs::is_directory(read.folder))
        throw std::runtime_error("'" + given + "' is not a folder");
    if (!fs::exists(read.manifestPath))
        throw std::runtime_error("'" + given + "' holds no " + MANIFEST_NAME +
                                 "; pack takes a folder that lbx unpack made");
    const Json manifest = readManifest(read.manifestPath);
    const PackPlan plan = planPack(manifest, read.manifestPath);
    read.entries = plan.entries->size();
    read.held = PlainFiles().list(read.folder);
    read.target = targetOf(options, read.folder, plan.archive);
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

// Packing folders: each folder's entries are made from their files on the
// workers and written in turn, while the next folder's manifest is read.
class Packing : public ArchiveSteps<PackingArchive> {
public:
    Packing(const PackOptions& options, std::vector<PackedFolder>& folders, SafeWriter& writer)
        : options(options), folders(folders), writer(writer), existing(replaceIf(options.force))
    {
    }

    std::uintmax_t takenSize(const std::string&) const override { return 0; }

    // Every folder is protected here, before any archive is written.
    std::size_t plan(std::size_t a) override
    {
        const PackedFolder& folder = folders[a];
        folder.said.say();
        std::vector<std::string> inputs = {folder.manifestPath};
        for (const Files::Listed& file : folder.held)
            inputs.push_back(inFolder(folder.folder, file.name));
        writer.protect(inputs);
        if (folder.failure)
            std::rethrow_exception(folder.failure);
        requireOwnTarget(folder);
        writer.check(folder.target, existing);
        return folder.entries;
    }

    std::unique_ptr<PackingArchive> open(std::size_t a, std::size_t entries) override
    {
        const PackedFolder& folder = folders[a];
        auto opened = std::make_unique<PackingArchive>(folder, readManifest(folder.manifestPath));
        opened->plan = planPack(opened->manifest, folder.manifestPath);
        if (opened->plan.entries->size() != entries)
            throw changedWhileRead(folder.manifestPath);
        requireNamedFiles(folder.folder, folder.held, *opened->plan.entries, folder.manifestPath, warnings);
        opened->packed.resize(entries);
        return opened;
    }

    void begin(PackingArchive& archive) override
    {
        archive.made.emplace(archive.from.target);
        archive.out = writer.streamArchive(archive.from.target, existing);
    }

    void work(PackingArchive& archive, std::size_t i) override
    {
        const PackedFolder& from = archive.from;
        const std::string& folder = from.folder;
        const FileReader read = [&folder](const std::string& name) { return readBytes(inFolder(folder, name)); };
        const unsigned int index = static_cast<unsigned int>(i);
        archive.packed[i] = packEntry(archive.plan, index,
                                      {{from.manifestPath, static_cast<int>(index)}, read, folder, options.rules,
                                       warnings, archive.plan.charset.get()},
                                      from.target);
    }

    void deliver(PackingArchive& archive, std::size_t i) override
    {
        PackedEntry done = std::move(archive.packed[i]);
        if (!done.change.empty())
            archive.changes.push_back(std::move(done.change));
        archive.shapes.push_back(shapeOf(done.entry.get()));
        archive.out->add(done.entry->data(), done.entry->size());
    }

    void finish(PackingArchive& archive) override
    {
        const PackedFolder& from = archive.from;
        const Arrangement arranged = arrangement(archive.manifest, archive.plan, archive.shapes, from.target);
        archive.out->keep();
        archive.made->keep();
        noteHeader(from.target, archive.manifest, from.manifestPath);
        printSummary(archive.shapes.size(), from.folder, from.target, archive.changes, arranged);
    }

    // What each worker holds ahead is an entry made whole: as few as
    // before, whatever their size.
    std::size_t leadPerWorker(std::uintmax_t) const override { return LEAD_PER_WORKER; }

private:
    // Two folders given may name the same archive (the same folder twice,
    // or two copies of one under -o): the second would replace the first.
    void requireOwnTarget(const PackedFolder& folder)
    {
        std::error_code error;
        const fs::path landing = fs::weakly_canonical(fs::absolute(folder.target), error);
        const auto [taken, fresh] = targets.emplace(error ? fs::path(folder.target) : landing, folder.folder);
        if (fresh)
            return;
        if (fs::equivalent(taken->second, folder.folder, error))
            throw std::runtime_error("'" + folder.folder + "' is given twice; it is packed once");
        throw std::runtime_error("'" + folder.folder + "' packs into '" + folder.target + "' as '" + taken->second +
                                 "' does; pack one of them on its own");
    }

    const PackOptions& options;
    std::vector<PackedFolder>& folders;
    SafeWriter& writer;
    TerminalWarnings warnings;
    Existing existing;
    std::map<fs::path, std::string> targets; // of the folders planned, and by which
};

void requireOutputFolder(const PackOptions& options)
{
    std::error_code error;
    if (options.folders.size() > 1 && fs::exists(options.output, error) && !fs::is_directory(options.output, error))
        throw UsageError("-o names the folder the archives go into when several folders are packed, and '" +
                         options.output + "' is a file");
}

int pack(const PackOptions& options)
{
    if (!options.output.empty())
        requireOutputFolder(options);
    SafeWriter writer;
    // Every folder is read first, several at once, so that the archives'
    // writes can keep clear of all of them.
    std::vector<PackedFolder> folders(options.folders.size());
    inOrder(
        options.jobs, folders.size(), [&](std::size_t f) { readFolder(options, options.folders[f], folders[f]); },
        [&](std::size_t f, const Outcome& outcome) {
            folders[f].said = outcome.said;
            folders[f].failure = outcome.failure;
        });
    Packing packing(options, folders, writer);
    return forEachArchive(options.jobs, options.folders, packing);
}

} // namespace

void addPack(CLI::App& app, int& status)
{
    auto options = std::make_shared<PackOptions>();
    CLI::App* command = app.add_subcommand("pack", "Build archives again from folders that unpack made");
    command->add_option("FOLDER", options->folders, "Folders DIR/STEM/ that unpack made, each with its archive.json")
        ->required();
    command->add_option("-o,--output", options->output,
                        "Archive to write, or with several folders the folder to write the archives into under "
                        "their own names; by default each goes beside its folder");
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
                       "  lbx pack mods/STARNAME --records --grow\n  lbx pack mod/*/ -o game/");
    define(*command, status, [options] { return pack(*options); });
}

} // namespace lbxtool
