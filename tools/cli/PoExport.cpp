// lbx po-export: every record of every text table of archives as an entry of
// a gettext PO template, for translators.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Translation.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <iostream>

namespace lbxtool {

namespace {

struct PoExportOptions {
    std::vector<std::string> archives;
    std::string output;
    std::string charset;
    std::string font;
    bool force = false;
};

int poExport(const PoExportOptions& options)
{
    const Charset charset = charsetOf(options.charset);
    const std::unique_ptr<FontMeasure> font = fontOf(options.font);
    const TranslatedArchives opened = translatedArchives(options.archives);
    const std::vector<TranslatedArchive>& archives = opened.archives;
    SafeWriter writer;
    writer.protect(translationInputs(options.archives, options.charset, options.font));
    writer.check(options.output, replaceIf(options.force));
    const std::string text = poTemplate(archives, charset, font.get());
    writer.writeBytes(options.output, text, replaceIf(options.force));
    std::size_t records = 0;
    for (std::size_t at = text.find("\nmsgctxt "); at != std::string::npos; at = text.find("\nmsgctxt ", at + 1))
        ++records;
    std::cout << "exported " << records << (records == 1 ? " record" : " records") << " of "
              << archives.size() << (archives.size() == 1 ? " archive" : " archives") << " into "
              << options.output << " (charset " << charset.name() << ")\n";
    return EXIT_DONE;
}

} // namespace

void addPoExport(CLI::App& app, int& status)
{
    auto options = std::make_shared<PoExportOptions>();
    CLI::App* command = app.add_subcommand(
        "po-export", "Write every record of the archives' text tables into a PO template for translators");
    command->add_option("ARCHIVE", options->archives, "Archives whose text tables to export")->required();
    command->add_option("-o,--output", options->output, "The PO template to write (FILE.pot)")->required();
    charsetOption(*command, options->charset, "The characters the records' bytes stand for (default CP437)");
    fontOption(*command, options->font);
    command->add_flag("--force", options->force, "Replace the template if it exists");
    examples(*command, "  lbx po-export demo/STARNAME.LBX -o starname.pot\n"
                       "  lbx po-export demo/STARNAME.LBX -o starname-widths.pot --font demo/FONTS.LBX:0:1");
    define(*command, status, [options] { return poExport(*options); });
}

} // namespace lbxtool
