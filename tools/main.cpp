// lbx: look into the archives of tesk and change what is inside.

#include "tools/Commands.h"
#include "tools/Export.h"
#include "tools/Import.h"
#include "tools/Sample.h"
#include "tools/Support.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <iostream>

namespace {

using lbxtool::ExportOptions;
using lbxtool::ImportOptions;

struct Arguments {
    std::vector<std::string> archives;
    std::string archive;
    std::vector<unsigned int> indices;
    unsigned int index = 0;
    std::string folder = ".";
    std::string target;
    std::vector<std::string> files;
    std::string file;
    bool verbose = false;
    ExportOptions exporting;
    ImportOptions importing;
};

// Each command runs once parsing is done; a failure it does not report
// itself becomes one line and exit status 1.
void define(CLI::App& command, int& status, std::function<int()> run)
{
    command.callback([&status, run]() {
        try {
            status = run();
        } catch (const std::exception& e) {
            lbxtool::reportError(e.what());
            status = 1;
        }
    });
}

void defineArchiveCommands(CLI::App& app, Arguments& a, int& status)
{
    CLI::App* list = app.add_subcommand("list", "Show each archive's entries, and how it fits the game's catalogue");
    list->add_option("ARCHIVE", a.archives, "Archives to list")->required();
    define(*list, status, [&a]() { return lbxtool::list(a.archives); });

    CLI::App* check = app.add_subcommand("check", "Validate archives; exit status 1 if any is invalid");
    check->add_option("ARCHIVE", a.archives, "Archives to validate")->required();
    define(*check, status, [&a]() { return lbxtool::check(a.archives); });

    CLI::App* extract = app.add_subcommand("extract", "Write entries to files of their own");
    extract->add_option("ARCHIVE", a.archive, "Archive to read")->required();
    extract->add_option("INDEX", a.indices, "Entries to write; all when none are given");
    extract->add_option("-o,--output", a.folder, "Folder to write into")->capture_default_str();
    define(*extract, status, [&a]() { return lbxtool::extract(a.archive, a.indices, a.folder); });

    CLI::App* verify = app.add_subcommand("verify", "Re-create each entry that can be and compare it with its bytes");
    verify->add_option("ARCHIVE", a.archives, "Archives to verify")->required();
    verify->add_flag("-v,--verbose", a.verbose, "Show each differing field");
    define(*verify, status, [&a]() { return lbxtool::verify(a.archives, a.verbose); });

    CLI::App* create = app.add_subcommand("create", "Build an archive, one entry a file");
    create->add_option("OUT", a.target, "Archive to write")->required();
    create->add_option("FILE", a.files, "Entries, in order")->required();
    define(*create, status, [&a]() { return lbxtool::create(a.target, a.files); });

    CLI::App* replace = app.add_subcommand("replace", "Put a file in place of an entry (the entry count appends)");
    replace->add_option("ARCHIVE", a.archive, "Archive to change")->required();
    replace->add_option("INDEX", a.index, "Entry to replace")->required();
    replace->add_option("FILE", a.file, "The new entry")->required();
    define(*replace, status, [&a]() { return lbxtool::replace(a.archive, a.index, a.file); });
}

void defineImageCommands(CLI::App& app, Arguments& a, int& status)
{
    ExportOptions& e = a.exporting;
    CLI::App* exporting = app.add_subcommand(
        "export", "Graphics and cursors to PNG, text tables and font metrics to text, sounds to WAV");
    exporting->add_option("ARCHIVE", e.archive, "Archive to read")->required();
    exporting->add_option("INDEX", e.indices, "Entries to export; all when none are given");
    exporting->add_option("-o,--output", e.folder, "Folder to write into")->capture_default_str();
    exporting->add_option("-p,--palette", e.palette,
                          "Take the palette from ARCHIVE:INDEX instead of the game's own sources");
    exporting->add_flag("--html", e.html, "Also write an index.html gallery");
    define(*exporting, status, [&e]() { return lbxtool::exportEntries(e); });

    ImportOptions& i = a.importing;
    CLI::App* importing = app.add_subcommand("import", "Turn PNG frames into a graphic entry");
    importing->add_option("OUT", i.target, "Entry file to write, or the archive with --index")->required();
    importing->add_option("PNG", i.images, "Frames, in order")->required();
    importing->add_option("-i,--index", i.index, "Store into archive OUT at this entry (the entry count appends)");
    importing->add_option("-p,--palette", i.palette,
                          "Palette from ARCHIVE:INDEX; otherwise built from the images and stored with them");
    importing->add_option("--clear-once", i.clearOnce, "The one frame that starts from an empty image");
    importing->add_option("--clear-mod", i.clearMod, "Every frame whose index it divides starts empty");
    importing->add_option("--flags", i.flags, "raw, clear, shadows, palette, loop, joined by ',', or a number");
    define(*importing, status, [&i]() { return lbxtool::importGraphic(i); });

    CLI::App* sample = app.add_subcommand("sample", "Write a small sample set of archives");
    sample->add_option("DIR", a.folder, "Folder to write into")->required();
    define(*sample, status, [&a]() { return lbxtool::sample(a.folder); });
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app{"Look into the LBX archives of tesk and change what is inside", "lbx"};
    app.require_subcommand(1);
    Arguments arguments;
    int status = 0;
    defineArchiveCommands(app, arguments, status);
    defineImageCommands(app, arguments, status);
    if (argc < 2) {
        std::cerr << app.help();
        return 1;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }
    return status;
}
