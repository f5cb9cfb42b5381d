// lbx: look into the archives of tesk and change what is inside.

#include "tools/Commands.h"
#include "tools/Export.h"
#include "tools/Import.h"
#include "tools/Modding.h"
#include "tools/Report.h"
#include "tools/Sample.h"

#include "LbxVersion.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <csignal>

#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <functional>
#include <iostream>

namespace {

using lbxtool::ExportOptions;
using lbxtool::ImportOptions;

// At most this many digits always fit an unsigned int.
constexpr std::size_t LARGEST_NUMBER_DIGITS = 9;

struct Arguments {
    std::vector<std::string> archives;
    std::vector<std::string> archivesAndIndices;
    std::string archive;
    std::vector<unsigned int> indices;
    unsigned int index = 0;
    std::string folder = ".";
    std::string target;
    std::vector<std::string> files;
    std::string file;
    bool verbose = false;
    unsigned int jobs = 0;
    bool force = false;
    bool strict = false;
    ExportOptions exporting;
    ImportOptions importing;
    lbxtool::UnpackOptions unpacking;
    lbxtool::PackOptions packing;
};

// A misuse of the command line, found after parsing: exit status 2 like the
// parser's own.
class UsageError : public CLI::ParseError {
public:
    explicit UsageError(const std::string& message) : CLI::ParseError("UsageError", message, lbxtool::EXIT_USAGE) {}
};

// Each command runs once parsing is done; a failure it does not report
// itself becomes one line and exit status 1.
void define(CLI::App& command, int& status, std::function<int()> run)
{
    command.callback([&status, run]() {
        try {
            status = run();
        } catch (const CLI::ParseError&) {
            throw;
        } catch (const std::exception& e) {
            lbxtool::reportError(e.what());
            status = lbxtool::EXIT_FAILED;
        }
    });
}

void examples(CLI::App& command, const std::string& lines)
{
    command.footer("\nExamples:\n" + lines + "\n");
}

// The output is the same whatever the number: only the time changes.
void jobsOption(CLI::App& command, unsigned int& jobs)
{
    const auto positive = [](std::string& value) {
        const bool digits = !value.empty() && value.find_first_not_of("0123456789") == std::string::npos;
        const bool zero = value.find_first_not_of('0') == std::string::npos;
        return digits && !zero && value.size() <= LARGEST_NUMBER_DIGITS
                   ? std::string()
                   : "takes a number of at least 1, not '" + value + "'";
    };
    command.add_option("-j,--jobs", jobs, "Work on N entries at once (default: one a core)")
        ->type_name("N")
        ->check(CLI::Validator(positive, "", "at least 1"));
}

// extract and export take archives and entry numbers in one list: an
// argument of digits alone is an entry of every archive (write ./12 for a
// file named 12).
void splitArchivesAndIndices(const std::vector<std::string>& items, std::vector<std::string>& archives,
                             std::vector<unsigned int>& indices)
{
    for (const std::string& item : items) {
        const bool digits = std::all_of(item.begin(), item.end(), [](unsigned char c) { return std::isdigit(c); });
        if (!digits)
            archives.push_back(item);
        else if (item.size() > LARGEST_NUMBER_DIGITS)
            throw UsageError("entry number " + item + " is too large");
        else
            indices.push_back(static_cast<unsigned int>(std::stoul(item)));
    }
    if (archives.empty())
        throw UsageError("no archive given");
}

void defineArchiveCommands(CLI::App& app, Arguments& a, int& status)
{
    CLI::App* list = app.add_subcommand("list", "Show each archive's entries, and how it fits the game's catalogue");
    list->add_option("ARCHIVE", a.archives, "Archives to list")->required();
    examples(*list, "  lbx list demo/INBOX.LBX\n  lbx list demo/*.LBX");
    define(*list, status, [&a]() { return lbxtool::list(a.archives); });

    CLI::App* check = app.add_subcommand("check", "Validate archives; exit status 1 if any is invalid");
    check->add_option("ARCHIVE", a.archives, "Archives to validate")->required();
    examples(*check, "  lbx check demo/*.LBX");
    define(*check, status, [&a]() { return lbxtool::check(a.archives); });

    CLI::App* extract = app.add_subcommand("extract", "Write entries to files of their own, STEM_007.graphic");
    extract->add_option("ARCHIVE", a.archivesAndIndices,
                        "Archives, and the entry numbers to take from each; all entries when none are given")
        ->required();
    extract->add_option("-o,--output", a.folder, "Folder to write into")->capture_default_str();
    examples(*extract, "  lbx extract demo/FONTS.LBX 1 2 -o parts\n  lbx extract demo/*.LBX -o parts");
    define(*extract, status, [&a]() {
        splitArchivesAndIndices(a.archivesAndIndices, a.archives, a.indices);
        return lbxtool::extract(a.archives, a.indices, a.folder);
    });

    CLI::App* verify = app.add_subcommand("verify", "Re-create each entry that can be and compare it with its bytes");
    verify->add_option("ARCHIVE", a.archives, "Archives to verify")->required();
    verify->add_flag("-v,--verbose", a.verbose, "Show each differing field");
    jobsOption(*verify, a.jobs);
    examples(*verify, "  lbx verify demo/*.LBX\n  lbx verify -v demo/STARNAME.LBX");
    define(*verify, status, [&a]() { return lbxtool::verify(a.archives, a.verbose, a.jobs); });

    CLI::App* create = app.add_subcommand("create", "Build an archive, one entry a file");
    create->add_option("OUT", a.target, "Archive to write")->required();
    create->add_option("FILE", a.files, "Entries, in order")->required();
    create->add_flag("--force", a.force, "Replace OUT if it exists");
    examples(*create, "  lbx create copy.lbx parts/FONTS_001.cursor parts/FONTS_002.cursor");
    define(*create, status, [&a]() { return lbxtool::create(a.target, a.files, a.force); });

    CLI::App* replace = app.add_subcommand("replace", "Put a file in place of an entry (the entry count appends)");
    replace->add_option("ARCHIVE", a.archive, "Archive to change")->required();
    replace->add_option("INDEX", a.index, "Entry to replace")->required();
    replace->add_option("FILE", a.file, "The new entry")->required();
    replace->add_flag("--strict", a.strict,
                      "Refuse, instead of warning, when the new entry is of another kind, size or frame count");
    examples(*replace, "  lbx replace demo/INBOX.LBX 1 ball.graphic\n"
                       "  lbx replace --strict demo/STARNAME.LBX 0 names.text");
    define(*replace, status, [&a]() { return lbxtool::replace(a.archive, a.index, a.file, a.strict); });
}

void defineExport(CLI::App& app, Arguments& a, int& status)
{
    ExportOptions& e = a.exporting;
    CLI::App* exporting = app.add_subcommand(
        "export", "Graphics and cursors to PNG, text tables and font metrics to text, sounds to WAV");
    exporting->add_option("ARCHIVE", a.archivesAndIndices,
                          "Archives, and the entry numbers to take from each; all entries when none are given")
        ->required();
    exporting->add_option("-o,--output", e.folder, "Folder to write into")->capture_default_str();
    exporting->add_option("-p,--palette", e.palette,
                          "Take the palette from ARCHIVE:INDEX instead of the game's own sources");
    exporting->add_flag("--html", e.html, "Also write an index.html gallery");
    jobsOption(*exporting, e.jobs);
    examples(*exporting, "  lbx export demo/INBOX.LBX --html -o gallery\n"
                         "  lbx export demo/INBOX.LBX 1 -p demo/FONTS.LBX:2 -o out");
    define(*exporting, status, [&a, &e]() {
        splitArchivesAndIndices(a.archivesAndIndices, e.archives, e.indices);
        return lbxtool::exportEntries(e);
    });
}

void defineImport(CLI::App& app, Arguments& a, int& status)
{
    ImportOptions& i = a.importing;
    CLI::App* importing = app.add_subcommand("import", "Turn PNG frames into a graphic entry");
    importing->add_option("OUT", i.target, "Entry file to write, or the archive with --index")->required();
    importing->add_option("PNG", i.images, "Frames, in order")->required();
    importing->add_option("-i,--index", i.index, "Store into archive OUT at this entry (the entry count appends)");
    importing->add_option("-p,--palette", i.palette,
                          "Palette from ARCHIVE:INDEX. Without it, frames saved with a palette of 256 colours (as "
                          "unpack writes them) keep their indices, and any others get a palette built from the images "
                          "and stored with them");
    importing->add_option("--clear-once", i.clearOnce,
                          "Frame N (not the first or last) is drawn on an empty picture instead of over the one "
                          "before; 0 for none");
    importing->add_option("--clear-mod", i.clearMod,
                          "Every Nth frame (0, N, 2N, ...) is drawn on an empty picture; 0 for none");
    importing->add_option("--flags", i.flags,
                          "How the game treats the animation, joined by ',': loop (starts over after the last "
                          "frame), clear (every frame on an empty picture), raw (frames stored unpacked, each on an "
                          "empty picture), palette (the colours stored in the entry), shadows; or the number itself");
    importing->add_flag("--force", i.force, "Replace the entry file OUT if it exists (never an archive)");
    importing->add_flag("--strict", i.strict,
                        "With --index: refuse, instead of warning, when the new entry is of another kind, size or "
                        "frame count");
    examples(*importing, "  lbx import ball.graphic frames/*.png -p demo/FONTS.LBX:1 --flags loop\n"
                         "  lbx import demo/INBOX.LBX -i 2 frame.png");
    define(*importing, status, [&i]() { return lbxtool::importGraphic(i); });
}

void defineModding(CLI::App& app, Arguments& a, int& status)
{
    lbxtool::UnpackOptions& u = a.unpacking;
    CLI::App* unpack = app.add_subcommand("unpack", "Take archives apart into files that editors open, and a manifest");
    unpack->add_option("ARCHIVE", u.archives, "Archives to unpack, each into DIR/STEM/")->required();
    unpack->add_option("-o,--output", u.folder, "Folder DIR to unpack into")->capture_default_str();
    unpack->add_flag("--force", u.force, "Write into a DIR/STEM/ that already holds files");
    jobsOption(*unpack, u.jobs);
    examples(*unpack, "  lbx unpack demo/INBOX.LBX -o mod\n  lbx unpack demo/*.LBX -o mod");
    define(*unpack, status, [&u]() { return lbxtool::unpack(u); });

    lbxtool::PackOptions& p = a.packing;
    CLI::App* pack = app.add_subcommand("pack", "Build an archive from a folder that unpack made");
    pack->add_option("FOLDER", p.folder, "The folder DIR/STEM/, with its archive.json")->required();
    pack->add_option("-o,--output", p.output, "Archive to write; by default DIR/ and the archive's own name");
    pack->add_flag("--force", p.force, "Replace the archive if it exists");
    pack->add_flag("--nearest", p.nearest,
                   "In frames saved as RGBA, take the nearest palette colour for a colour the palette lacks");
    jobsOption(*pack, p.jobs);
    examples(*pack, "  lbx pack mod/INBOX -o INBOX.LBX\n  lbx pack mod/INBOX --nearest --force");
    define(*pack, status, [&p]() { return lbxtool::pack(p); });
}

void defineSample(CLI::App& app, Arguments& a, int& status)
{
    CLI::App* sample = app.add_subcommand("sample", "Write a small sample set of archives");
    sample->add_option("DIR", a.folder, "Folder to write into")->required();
    sample->add_flag("--force", a.force, "Replace files of the sample's names in DIR");
    examples(*sample, "  lbx sample demo");
    define(*sample, status, [&a]() { return lbxtool::sample(a.folder, a.force); });
}

// The parser's failures as one line that names the problem and where help is.
std::string usageProblem(const CLI::ParseError& e, const std::string& first)
{
    const std::string what = e.what();
    if (dynamic_cast<const CLI::RequiredError*>(&e) != nullptr && what == "A subcommand is required")
        return (first.rfind('-', 0) == 0 ? "unknown option '" : "unknown command '") + first + "'";
    if (dynamic_cast<const CLI::ExtrasError*>(&e) != nullptr) {
        const std::string extra = what.substr(what.find(": ") + 2);
        const std::string item = extra.substr(extra.rfind(' ') + 1); // the parser lists them last first
        return (item.rfind('-', 0) == 0 ? "unknown option '" : "unexpected argument '") + item + "'";
    }
    if (dynamic_cast<const CLI::ValidationError*>(&e) != nullptr && what.find(": ") != std::string::npos)
        return what.substr(0, what.find(": ")) + ' ' + what.substr(what.find(": ") + 2); // "--jobs takes ..."
    if (dynamic_cast<const CLI::ConversionError*>(&e) != nullptr && what.rfind("Could not convert: ", 0) == 0) {
        const std::string rest = what.substr(std::string("Could not convert: ").size());
        const std::size_t equals = rest.find(" = ");
        if (equals != std::string::npos)
            return rest.substr(0, equals) + " takes a number, not '" + rest.substr(equals + 3) + "'";
    }
    std::string line = what;
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

int reportUsage(CLI::App& app, const CLI::ParseError& e, const std::string& first)
{
    std::string help = "lbx --help";
    for (CLI::App* command : app.get_subcommands())
        help = "lbx " + command->get_name() + " --help";
    lbxtool::reportError(usageProblem(e, first) + "; see '" + help + "'");
    return lbxtool::EXIT_USAGE;
}

} // namespace

// The tool decodes, encodes and frees images of up to megabytes, entry after
// entry. By default the C library maps every block above 128 KiB fresh from
// the system and hands it back when freed, and each reuse then pays a page
// fault per 4 KiB: a third of the time `verify` takes. Freed memory is kept
// for the next entry instead; the tool's life is one command.
void keepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int LARGEST_REUSED_BLOCK = 64 * 1024 * 1024;
    constexpr int MOST_KEPT_FREE = 512 * 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, LARGEST_REUSED_BLOCK);
    mallopt(M_TRIM_THRESHOLD, MOST_KEPT_FREE);
#endif
}

int main(int argc, char** argv)
{
    keepFreedMemory();
    // Past a file size limit a write then fails and is undone like any
    // other, instead of the signal ending the tool half-way.
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App app{"Look into the LBX archives of tesk and change what is inside.\n"
                 "Exit status: 0 done, 1 a bad file or a failed operation, 2 a bad command line.",
                 "lbx"};
    app.set_version_flag("--version", std::string("lbx ") + LBX_VERSION, "Show the version and exit");
    app.require_subcommand(1);
    Arguments arguments;
    int status = lbxtool::EXIT_DONE;
    defineArchiveCommands(app, arguments, status);
    defineExport(app, arguments, status);
    defineImport(app, arguments, status);
    defineModding(app, arguments, status);
    defineSample(app, arguments, status);
    if (argc < 2) {
        std::cerr << app.help();
        return lbxtool::EXIT_USAGE;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        return reportUsage(app, e, argv[1]);
    }
    return status;
}
