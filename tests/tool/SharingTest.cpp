// A mod shared without the game's files: made by diff, applied by patch to
// a fresh copy, undone, or refused in one line with nothing written.
#include "tests/tool/ToolRun.h"
#include "tools/modding/Manifest.h"

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

namespace {

class Sharing : public Tool {
protected:
    // The sample's INBOX.LBX and STARNAME.LBX with a frame and a record
    // edited through unpack and pack, as a modder edits them.
    void edit()
    {
        ASSERT_EQ(lbx({"unpack", sample("INBOX.LBX"), sample("STARNAME.LBX"), "-o", dir.path("work")}).status, 0);
        fs::copy_file(dir.path("work/INBOX/INBOX_001_002.png"), dir.path("work/INBOX/INBOX_001_000.png"),
                      fs::copy_options::overwrite_existing);
        std::string names = readFile(dir.path("work/STARNAME/STARNAME_000.txt"));
        names.replace(names.find("Vega"), 4, "Wega");
        std::ofstream(dir.path("work/STARNAME/STARNAME_000.txt"), std::ios::binary | std::ios::trunc) << names;
        for (const char* stem : {"INBOX", "STARNAME"})
            ASSERT_EQ(lbx({"pack", dir.path(std::string("work/") + stem), "-o", edited(stem)}).status, 0);
    }

    std::string edited(const std::string& stem) { return dir.path("edited/" + stem + ".LBX"); }

    // A copy of the sample the way someone else has it.
    std::string fresh(const std::string& archive)
    {
        if (!fs::exists(dir.path("fresh"))) {
            EXPECT_EQ(lbx({"sample", dir.path("fresh")}).status, 0);
        }
        return dir.path("fresh/" + archive);
    }

    void expectRefused(const std::vector<std::string>& args, const std::string& message)
    {
        const auto before = snapshot(dir.path("fresh"));
        const Outcome run = lbx(args);
        EXPECT_EQ(run.status, 1) << message;
        EXPECT_EQ(run.err, "lbx: " + message + "\n");
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(fs::exists(dir.path("out.lbx"))) << message;
        EXPECT_TRUE(snapshot(dir.path("fresh")) == before) << message;
    }
};

} // namespace

TEST_F(Sharing, AModFromTheSampleGivesTheEditedArchiveToAnotherCopy)
{
    edit();
    for (const char* stem : {"INBOX", "STARNAME"}) {
        const std::string archive = std::string(stem) + ".LBX", mod = dir.path(std::string(stem) + ".lbxmod");
        ASSERT_EQ(lbx({"diff", sample(archive), edited(stem), "-o", mod, "--reversible"}).status, 0);
        // One frame of eight, one record of eight, both ways.
        EXPECT_LT(fs::file_size(mod), fs::file_size(edited(stem)) / 2) << stem;
        const Outcome run = lbx({"patch", fresh(archive), mod, "-o", dir.path("patched/" + archive)});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(readFile(dir.path("patched/" + archive)), readFile(edited(stem))) << stem;
        EXPECT_EQ(lbx({"patch", "--reverse", dir.path("patched/" + archive), mod, "-o", dir.path("undone/" + archive)})
                      .status,
                  0);
        EXPECT_EQ(readFile(dir.path("undone/" + archive)), readFile(fresh(archive))) << stem;
        const std::string bps = dir.path(std::string(stem) + ".bps");
        ASSERT_EQ(lbx({"diff", sample(archive), edited(stem), "--bps", "-o", bps}).status, 0);
        EXPECT_EQ(lbx({"patch", fresh(archive), bps, "-o", dir.path("whole/" + archive)}).status, 0);
        EXPECT_EQ(readFile(dir.path("whole/" + archive)), readFile(edited(stem))) << stem;
    }
    const Outcome run = lbx({"patch", fresh("STARNAME.LBX"), dir.path("STARNAME.lbxmod"), "-o", dir.path("out.lbx")});
    EXPECT_EQ(run.out, fresh("STARNAME.LBX") + " -> " + dir.path("out.lbx") +
                           ": 1 changed\n  changed " + dir.path("out.lbx") +
                           "[0]: text (8 records of 100 bytes)\n    record 1: \"Vega\" -> \"Wega\"\n");
}

TEST_F(Sharing, APatchThatDoesNotFitIsRefusedInOneLineWithNothingWritten)
{
    edit();
    const std::string inbox = dir.path("inbox.lbxmod"), stars = dir.path("stars.lbxmod"), bps = dir.path("inbox.bps");
    ASSERT_EQ(lbx({"diff", sample("INBOX.LBX"), edited("INBOX"), "-o", inbox}).status, 0);
    ASSERT_EQ(lbx({"diff", sample("STARNAME.LBX"), edited("STARNAME"), "-o", stars}).status, 0);
    ASSERT_EQ(lbx({"diff", sample("INBOX.LBX"), edited("INBOX"), "--bps", "-o", bps}).status, 0);
    std::string text = readFile(inbox);
    std::ofstream(dir.path("cut.lbxmod"), std::ios::binary) << text.substr(0, text.size() - 2);
    text.replace(text.find("\"lbxMod\": 1"), 11, "\"lbxMod\": 7");
    std::ofstream(dir.path("later.lbxmod"), std::ios::binary) << text;
    const std::string out = dir.path("out.lbx"), other = dir.path("other/INBOX.LBX");
    ASSERT_EQ(lbx({"extract", fresh("INBOX.LBX"), "0", "-o", dir.path("parts")}).status, 0);
    fs::create_directories(dir.path("other"));
    fs::copy_file(fresh("INBOX.LBX"), other);
    ASSERT_EQ(lbx({"replace", other, "1", dir.path("parts/INBOX_000.graphic")}).status, 0);
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"patch", fresh("STARNAME.LBX"), inbox, "-o", out},
         "'" + inbox + "' was made for INBOX.LBX, not for '" + fresh("STARNAME.LBX") + "': entry 1 differs"},
        {{"patch", other, inbox, "-o", out}, "'" + inbox + "' was made for another version of INBOX.LBX: entry 1 differs"},
        {{"patch", fresh("INBOX.LBX"), dir.path("cut.lbxmod"), "-o", out},
         "'" + dir.path("cut.lbxmod") + "' is not valid JSON (parse error at line " +
             std::to_string(std::count(text.begin(), text.end(), '\n')) +
             ", column 1: syntax error while parsing object - unexpected end of input; expected '}')"},
        {{"patch", fresh("INBOX.LBX"), dir.path("later.lbxmod"), "-o", out},
         "'" + dir.path("later.lbxmod") + "' is a mod of format 7; this lbx reads format 1 and older, and a newer lbx "
                                          "is needed"},
        {{"patch", fresh("STARNAME.LBX"), bps, "-o", out},
         "'" + bps + "' was made for another file than '" + fresh("STARNAME.LBX") + "': the size of its source differs"},
        {{"patch", "--reverse", fresh("INBOX.LBX"), inbox, "-o", out},
         "'" + inbox + "' cannot be undone: it was made without --reversible"},
        {{"patch", fresh("INBOX.LBX"), inbox, inbox, "-o", fresh("INBOX.LBX")},
         "'" + fresh("INBOX.LBX") + "' is one of this command's inputs; it is left as it is"},
    };
    for (const auto& c : cases)
        expectRefused(c.args, c.message);
    std::ofstream(out) << "mine";
    const Outcome run = lbx({"patch", fresh("INBOX.LBX"), inbox, "-o", out});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "lbx: '" + out + "' already exists; --force replaces it\n");
    EXPECT_EQ(readFile(out), "mine");
}

TEST_F(Sharing, OptionsThatNeedAnotherAreAMisuse)
{
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"diff", sample("INBOX.LBX"), sample("INBOX.LBX"), "--reversible"}, "--reversible is for the file that -o names"},
        {{"diff", sample("INBOX.LBX"), sample("INBOX.LBX"), "--bps"}, "--bps is for the file that -o names"},
        {{"diff", sample("INBOX.LBX"), sample("INBOX.LBX"), "--bps", "--reversible", "-o", dir.path("x")},
         "a BPS patch cannot be undone: --reversible is for mods"},
    };
    for (const auto& c : cases) {
        const Outcome run = lbx(c.args);
        EXPECT_EQ(run.status, 2) << c.message;
        EXPECT_EQ(run.err, "lbx: " + c.message + "; see 'lbx diff --help'\n");
        EXPECT_FALSE(fs::exists(dir.path("x")));
    }
}

TEST_F(Sharing, DiffPrintsItsAccountAsJson)
{
    edit();
    const Outcome run = lbx({"diff", "--json", sample("STARNAME.LBX"), edited("STARNAME")});
    ASSERT_EQ(run.status, 0) << run.err;
    const lbxtool::Json account = lbxtool::Json::parse(run.out);
    EXPECT_EQ(account["base"], sample("STARNAME.LBX"));
    ASSERT_EQ(account["changes"].size(), 1u);
    const lbxtool::Json& change = account["changes"][0];
    EXPECT_EQ(change["change"], "changed");
    EXPECT_EQ(change["records"], lbxtool::Json::parse(R"([{"number": 1, "was": "Vega", "becomes": "Wega"}])"));
}
