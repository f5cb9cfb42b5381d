// lbx sample: a small set of archives made with the library's own create
// functions.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/modding/Sample.h"
#include "tools/platform/Paths.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

struct SampleOptions {
    std::string folder;
    bool force = false; // replace files of the sample's names
};

// Every name is checked before the first archive is written, so that a
// refusal leaves the folder as it was.
int sample(const SampleOptions& options)
{
    const Existing existing = replaceIf(options.force);
    SafeWriter writer;
    for (const SampleArchive& made : sampleArchives())
        writer.check(inFolder(options.folder, made.name), existing);
    makeFolder(options.folder);
    for (const SampleArchive& made : sampleArchives()) {
        File archive;
        made.fill(archive);
        writer.writeArchive(inFolder(options.folder, made.name), archive, existing);
        std::cout << "wrote " << inFolder(options.folder, made.name) << " (" << entries(archive.size()) << ")\n";
    }
    return EXIT_DONE;
}

} // namespace

void addSample(CLI::App& app, int& status)
{
    auto options = std::make_shared<SampleOptions>();
    CLI::App* command = app.add_subcommand("sample", "Write a small sample set of archives");
    command->add_option("DIR", options->folder, "Folder to write into")->required();
    command->add_flag("--force", options->force, "Replace files of the sample's names in DIR");
    examples(*command, "  lbx sample demo");
    define(*command, status, [options] { return sample(*options); });
}

} // namespace lbxtool
