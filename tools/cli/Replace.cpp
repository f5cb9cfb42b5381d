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
    bool raw = false;    // the file's bytes are meant as they are, whatever they look like
};

int replace(const ReplaceOptions& options)
{
    SafeWriter writer;
    writer.protect({options.file});
    const auto entry = [&options] {
        std::unique_ptr<Content> file = readEntryFile(options.file);
        requireEntryFile(options.file, *file, options.raw,
                         "lbx import '" + options.archive + "' '" + options.file + "' -i " +
                             std::to_string(options.index) + " makes a graphic of it");
        return file;
    };
    storeIntoArchive(writer, options.archive, options.index, entry, options.strict);
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
                      "Refuse, instead of warning, when the new entry is of another kind or shape");
    command->add_flag("--raw", options->raw,
                      "Store FILE as it is, even when it is a picture, a manifest, text or no sound the game plays");
    examples(*command, "  lbx replace demo/INBOX.LBX 1 ball.graphic\n"
                       "  lbx replace --strict demo/STARNAME.LBX 0 parts/all/STARNAME_000.text\n"
                       "  lbx replace --raw demo/INBOX.LBX 2 gallery/INBOX_000_000.png");
    define(*command, status, [options] { return replace(*options); });
}

} // namespace lbxtool
