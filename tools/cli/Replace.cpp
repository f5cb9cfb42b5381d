// lbx replace: a file in place of an entry, the archive changed in place.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

struct ReplaceOptions {
    std::string archive;
    unsigned int index = 0;
    std::string file;
    bool strict = false; // refuse an entry of another shape instead of warning
};

int replace(const ReplaceOptions& options)
{
    SafeWriter writer;
    writer.protect({options.file});
    storeIntoArchive(writer, options.archive, options.index, readEntryFile(options.file), options.strict);
    std::cout << "stored " << options.file << " as " << entryName(options.archive, options.index) << '\n';
    return EXIT_DONE;
}

} // namespace

void addReplace(CLI::App& app, int& status)
{
    auto options = std::make_shared<ReplaceOptions>();
    CLI::App* command =
        app.add_subcommand("replace", "Put a file in place of an entry (the entry count appends)");
    command->add_option("ARCHIVE", options->archive, "Archive to change")->required();
    command->add_option("INDEX", options->index, "Entry to replace")->required();
    command->add_option("FILE", options->file, "The new entry")->required();
    command->add_flag("--strict", options->strict,
                      "Refuse, instead of warning, when the new entry is of another kind, size or frame count");
    examples(*command, "  lbx replace demo/INBOX.LBX 1 ball.graphic\n"
                       "  lbx replace --strict demo/STARNAME.LBX 0 names.text");
    define(*command, status, [options] { return replace(*options); });
}

} // namespace lbxtool
