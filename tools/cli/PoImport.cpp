// lbx po-import: a translated PO file back into the archives it was exported
// from, written as new archives.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/modding/Translation.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Paths.h"
#include "tools/platform/Report.h"

#include <filesystem>
#include <iostream>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

struct PoImportOptions {
    std::string po;
    std::vector<std::string> archives;
    std::string output;
    std::string charset;
    std::string font;
    bool force = false;
};

// Where each archive goes: into the folder, or, for one archive, to the
// archive named.
std::vector<std::string> targets(const PoImportOptions& options)
{
    std::error_code error;
    const std::string upper = upperCase(options.output);
    const bool file = options.archives.size() == 1 && !fs::is_directory(options.output, error) &&
                      (fs::is_regular_file(options.output, error) ||
                       (upper.size() > 4 && upper.compare(upper.size() - 4, 4, ".LBX") == 0));
    if (file)
        return {options.output};
    if (upper.size() > 4 && upper.compare(upper.size() - 4, 4, ".LBX") == 0 && !fs::is_directory(options.output, error))
        throw UsageError("-o " + options.output + " names one archive, and " + std::to_string(options.archives.size()) +
                         " are given; name a folder to write them into");
    std::vector<std::string> paths;
    for (const std::string& archive : options.archives)
        paths.push_back(inFolder(options.output, fs::path(archive).filename().string()));
    return paths;
}

int poImport(const PoImportOptions& options)
{
    const Charset charset = charsetOf(options.charset);
    const std::unique_ptr<FontMeasure> font = fontOf(options.font);
    requireRegularFile(options.po);
    const TranslatedArchives opened = translatedArchives(options.archives);
    const std::vector<TranslatedArchive>& archives = opened.archives;
    SafeWriter writer;
    std::vector<std::string> read = options.archives;
    read.push_back(options.po);
    writer.protect(translationInputs(read, options.charset, options.font));
    const std::vector<std::string> to = targets(options);
    const Existing existing = replaceIf(options.force);
    for (const std::string& target : to)
        writer.check(target, existing);
    TerminalWarnings warnings;
    const std::vector<ImportCount> counts =
        importPo(readBytes(options.po), options.po, archives, charset, font.get(), warnings);
    for (std::size_t a = 0; a < archives.size(); ++a) {
        const std::string folder = fs::path(to[a]).parent_path().string();
        if (!folder.empty())
            makeFolder(folder);
        writer.writeArchive(to[a], *archives[a].archive, existing);
    }
    for (std::size_t a = 0; a < archives.size(); ++a)
        std::cout << "translated " << counts[a].translated << " of " << counts[a].records << " records of "
                  << archives[a].path << " into " << to[a] << ", " << counts[a].changed << " changed\n";
    return EXIT_DONE;
}

} // namespace

void addPoImport(CLI::App& app, int& status)
{
    auto options = std::make_shared<PoImportOptions>();
    CLI::App* command = app.add_subcommand(
        "po-import", "Put the translations of a PO file into the archives' text tables, written anew");
    command->add_option("PO", options->po, "The translated PO file")->required();
    command->add_option("ARCHIVE", options->archives, "The archives it was exported from")->required();
    command->add_option("-o,--output", options->output,
                        "Folder DIR to write the translated archives into, or for one archive OUT.LBX")
        ->required();
    charsetOption(*command, options->charset, "The characters to write the translations in (default CP437)");
    fontOption(*command, options->font);
    command->add_flag("--force", options->force, "Replace archives that exist");
    examples(*command, "  lbx po-import starname.pot demo/STARNAME.LBX -o translated/STARNAME.LBX\n"
                       "  lbx po-import starname-widths.pot demo/STARNAME.LBX -o translated --force --font "
                       "demo/FONTS.LBX:0:1");
    define(*command, status, [options] { return poImport(*options); });
}

} // namespace lbxtool
