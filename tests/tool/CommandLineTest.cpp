#include "tests/tool/ToolRun.h"

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

TEST_F(Tool, ExitStatusTellsUsageErrorsFromFailures)
{
    const std::string fonts = sample("FONTS.LBX");
    const struct {
        std::vector<std::string> args;
        int status;
        std::string err;
    } cases[] = {
        {{"frob"}, 2, "lbx: unknown command 'frob'; see 'lbx --help'\n"},
        {{"--frob"}, 2, "lbx: unknown option '--frob'; see 'lbx --help'\n"},
        {{"list", "--frob", fonts}, 2, "lbx: unknown option '--frob'; see 'lbx list --help'\n"},
        {{"list"}, 2, "lbx: ARCHIVE is required; see 'lbx list --help'\n"},
        {{"replace", fonts, "one", fonts}, 2, "lbx: INDEX takes a number, not 'one'; see 'lbx replace --help'\n"},
        {{"import", "x", "y", "--clear-mod", "2x"}, 2,
         "lbx: --clear-mod takes a number, not '2x'; see 'lbx import --help'\n"},
        {{"extract", "3", "4"}, 2, "lbx: no archive given; see 'lbx extract --help'\n"},
        {{"check", dir.path("none.lbx")}, 1,
         "lbx: could not open '" + dir.path("none.lbx") + "' (No such file or directory)\n"},
        {{"list", fonts + "/x.lbx"}, 1, "lbx: could not open '" + fonts + "/x.lbx' (Not a directory)\n"},
        {{"check", fonts}, 0, ""},
    };
    for (const auto& c : cases) {
        const Outcome run = lbx(c.args);
        EXPECT_EQ(run.status, c.status) << c.args[0];
        EXPECT_EQ(run.err, c.err);
    }
    const Outcome bare = lbx({});
    EXPECT_EQ(bare.status, 2);
    EXPECT_NE(bare.err.find("Exit status: 0 done, 1 a bad file or a failed operation, 2 a bad command line"),
              std::string::npos);
}

// One number, from the build's one definition, in the tool, the pkg-config
// file and the CMake package.
TEST_F(Tool, VersionIsTheProjectsOwn)
{
    const Outcome run = lbx({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, std::string("lbx ") + LBX_PROJECT_VERSION + "\n");
    EXPECT_NE(readFile(LBX_PKG_CONFIG).find(std::string("\nVersion: ") + LBX_PROJECT_VERSION + "\n"),
              std::string::npos);
    EXPECT_NE(readFile(LBX_PACKAGE_VERSION).find(std::string("\"") + LBX_PROJECT_VERSION + "\""), std::string::npos);
}

TEST_F(Tool, EveryCommandsHelpGivesExamples)
{
    for (const char* command :
         {"list", "check", "extract", "export", "verify", "create", "replace", "import", "sample", "unpack", "pack"}) {
        const Outcome help = lbx({command, "--help"});
        EXPECT_EQ(help.status, 0);
        EXPECT_NE(help.out.find("Examples:\n  lbx " + std::string(command) + " "), std::string::npos) << command;
    }
    const Outcome import = lbx({"import", "--help"});
    for (const char* words : {"loop (starts over after the last frame)", "Every Nth frame", "Frame N"})
        EXPECT_NE(import.out.find(words), std::string::npos) << words;
}

// Two archives of one stem into one folder: the second's files get a name
// of their own instead of replacing the first's.
TEST_F(Tool, ExportAndExtractTakeSeveralArchivesAndKeepEqualStemsApart)
{
    fs::create_directories(dir.path("other"));
    fs::copy_file(sample("STARNAME.LBX"), dir.path("other/starname.lbx"));
    const std::string table = dir.file("t.lbx", archive({le16(1) + le16(4) + std::string("Orb\0", 4)}));
    fs::copy_file(table, dir.path("other/STARNAME.LBX"));

    const Outcome exported =
        lbx({"export", sample("STARNAME.LBX"), dir.path("other/STARNAME.LBX"), "0", "-o", dir.path("out")});
    ASSERT_EQ(exported.status, 0) << exported.err;
    EXPECT_EQ(readFile(dir.path("out/STARNAME_000.txt")).substr(0, 4), "Sol\n");
    EXPECT_EQ(readFile(dir.path("out/STARNAME-2_000.txt")), "Orb\n");
    EXPECT_FALSE(fs::exists(dir.path("out/STARNAME_001.txt")));

    const Outcome extracted =
        lbx({"extract", dir.path("other/starname.lbx"), dir.path("other/STARNAME.LBX"), "-o", dir.path("parts")});
    ASSERT_EQ(extracted.status, 0) << extracted.err;
    EXPECT_TRUE(fs::exists(dir.path("parts/starname_001.text")));
    EXPECT_EQ(readFile(dir.path("parts/STARNAME-2_000.text")), readFile(table).substr(2048));
    EXPECT_NE(extracted.out.find("to " + dir.path("parts") + " as STARNAME-2\n"), std::string::npos);
}

// The demo script writes only into a folder of its own: one the user names
// must be empty, and it is refused before anything is built or written.
TEST_F(Tool, DemoRefusesAFolderThatHoldsAnything)
{
    fs::create_directories(dir.path("mine"));
    dir.file("mine/notes.txt", "keep me");
    const Outcome run = this->run(quote(LBX_SOURCE_DIR "/scripts/demo"), {dir.path("mine")});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "demo: " + dir.path("mine") + " is not empty; name a new or empty folder\n");
    EXPECT_EQ(readFile(dir.path("mine/notes.txt")), "keep me");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path("mine")), fs::directory_iterator()), 1);
}
