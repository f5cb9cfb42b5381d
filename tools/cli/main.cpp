// lbx: look into the archives of tesk and change what is inside.

#include "tools/cli/Commands.h"
#include "tools/platform/Heap.h"
#include "tools/platform/Report.h"
#include "tools/platform/Signals.h"

#include "LbxVersion.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <iostream>

namespace {

using namespace lbxtool;

// In the order `lbx --help` lists them.
const AddCommand COMMANDS[] = {addList,   addCheck, addExtract, addVerify,   addCreate,   addReplace, addExport, addImport,
                               addUnpack, addPack,  addDiff,    addPatch,    addPoExport, addPoImport, addSample};

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
    reportError(usageProblem(e, first) + "; see '" + help + "'");
    return EXIT_USAGE;
}

} // namespace

int main(int argc, char** argv)
{
    prepareProcessHeap();
    // Past a file size limit a write then fails and is undone like any
    // other, instead of the signal ending the tool half-way.
    std::signal(SIGXFSZ, SIG_IGN);
    removeTemporariesOnSignal();
    CLI::App app{"Look into the LBX archives of tesk and change what is inside.\n"
                 "Exit status: 0 done, 1 a bad file or a failed operation, 2 a bad command line.",
                 "lbx"};
    app.set_version_flag("--version", std::string("lbx ") + LBX_VERSION, "Show the version and exit");
    app.require_subcommand(1);
    int status = EXIT_DONE;
    for (const AddCommand add : COMMANDS)
        add(app, status);
    if (argc < 2) {
        std::cerr << app.help();
        return EXIT_USAGE;
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
