// Every example that a command's --help gives runs as written, against the
// sample, in a folder of its own: each command in the order a user meets
// them, so that one example's files are the next one's inputs.
#include "tests/tool/ToolRun.h"

#include <sstream>

using namespace fixtures;
using namespace toolrun;

namespace {

// The lines under "Examples:" of a command's help.
std::vector<std::string> examplesOf(const std::string& help)
{
    std::vector<std::string> lines;
    std::istringstream in(help.substr(std::min(help.size(), help.find("\nExamples:\n"))));
    for (std::string line; std::getline(in, line);)
        if (line.rfind("  lbx ", 0) == 0)
            lines.push_back(line.substr(2));
    return lines;
}

} // namespace

TEST_F(Tool, EveryExampleOfEveryHelpRunsAsWritten)
{
    const std::string folder = dir.path("examples");
    std::filesystem::create_directory(folder);
    std::size_t run = 0;
    for (const char* command : {"sample", "list", "check", "verify", "extract", "export", "create", "import",
                                "replace", "unpack", "pack", "diff", "patch", "po-export", "po-import"}) {
        const Outcome help = lbx({command, "--help"});
        const std::vector<std::string> examples = examplesOf(help.out);
        EXPECT_FALSE(examples.empty()) << command;
        for (const std::string& example : examples) {
            // As a shell runs it, globs and all, with this build's lbx.
            const std::string line = "cd " + quote(folder) + " && " + quote(LBX_TOOL) + example.substr(3);
            const Outcome ran = this->run(line, {});
            EXPECT_EQ(ran.status, 0) << example << "\n" << ran.err;
            ++run;
        }
    }
    EXPECT_GE(run, 20u);
}
