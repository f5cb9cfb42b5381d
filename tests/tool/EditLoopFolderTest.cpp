// The modder's loop as a user runs it: files in the way of export and
// extract, edits in files that are only to look at, strays in the folder, an
// unpack over an earlier one, palettes from elsewhere.
#include "tests/tool/ToolRun.h"
#include "tools/modding/Manifest.h"

#include <functional>

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

namespace {

class EditLoopFolder : public Tool {
protected:
    // Runs a command that must be refused with `message` as its one line,
    // and checks that nothing under `folders` changed.
    void expectRefused(const std::vector<std::string>& args, const std::string& message,
                       const std::vector<std::string>& folders)
    {
        std::vector<std::map<std::string, std::string>> before;
        for (const std::string& folder : folders)
            before.push_back(snapshot(folder));
        const Outcome run = lbx(args);
        EXPECT_EQ(run.status, 1) << message;
        EXPECT_EQ(run.err, "lbx: " + message + "\n");
        for (std::size_t f = 0; f < folders.size(); ++f)
            EXPECT_EQ(snapshot(folders[f]), before[f]) << message << " changed " << folders[f];
    }

    // A file of the test's own, its folders made as needed.
    std::string put(const std::string& name, const std::string& bytes)
    {
        fs::create_directories(fs::path(dir.path(name)).parent_path());
        return dir.file(name, bytes);
    }

    static bool sameBytes(const std::string& a, const std::string& b) { return readFile(a) == readFile(b); }

    std::string unpacked(const std::string& archive)
    {
        EXPECT_EQ(lbx({"unpack", sample(archive), "-o", dir.path("mod")}).status, 0);
        return dir.path("mod/" + fs::path(archive).stem().string());
    }
};

} // namespace

TEST_F(EditLoopFolder, ExportAndExtractReplaceNoFileUnlessForced)
{
    const std::string out = dir.path("out"), inbox = sample("INBOX.LBX"), fonts = sample("FONTS.LBX");
    const std::string mine = put("out/INBOX_001_sheet.png", "my own picture");
    const std::string page = put("out/index.html", "<html>my own page</html>");
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"export", inbox, "-o", out}, "'" + mine + "' already exists; --force replaces it"},
        {{"export", fonts, "-o", out, "--html"}, "'" + page + "' already exists; --force replaces it"},
        {{"extract", fonts, "3", "2", "-o", out}, "'" + out + "/FONTS_002.cursor' already exists; --force replaces it"},
    };
    put("out/FONTS_002.cursor", "mine too");
    for (const auto& c : cases)
        expectRefused(c.args, c.message, {out});

    // A gallery page that the tool wrote is its own to rebuild.
    fs::remove(page);
    ASSERT_EQ(lbx({"export", fonts, "0", "-o", out, "--html"}).status, 0);
    ASSERT_EQ(lbx({"export", sample("STARNAME.LBX"), "-o", out, "--html"}).status, 0);
    EXPECT_NE(readFile(page).find("STARNAME"), std::string::npos);

    EXPECT_EQ(lbx({"export", inbox, "-o", out, "--force"}).status, 0);
    EXPECT_NE(readFile(mine), "my own picture");
    EXPECT_EQ(lbx({"extract", fonts, "2", "2", "-o", out, "--force"}).status, 0) << "an entry named twice is one";
    File extracted(fonts);
    EXPECT_TRUE(readFile(out + "/FONTS_002.cursor") == bytesOf(extracted[2]->data(), extracted[2]->size()));
}

TEST_F(EditLoopFolder, AnEditToAFileOnlyToLookAtIsRefusedWithTheFilesToEdit)
{
    const std::string inbox = unpacked("INBOX.LBX"), fonts = unpacked("FONTS.LBX");
    const struct {
        std::string folder, view, message;
    } cases[] = {
        {inbox, "INBOX_001_sheet.png", "edit the frames INBOX_001_000.png to INBOX_001_007.png instead"},
        {fonts, "FONTS_001_sheet.png", "edit the frames FONTS_001_000.png to FONTS_001_019.png instead"},
        {fonts, "FONTS_000_font3.png", "a font packs from the heights and widths in archive.json"},
    };
    for (const auto& c : cases) {
        const std::string view = c.folder + "/" + c.view, original = readFile(view);
        const std::string target = dir.path(c.view + ".lbx");
        writePng(view, std::vector<unsigned char>(4 * 4 * 4, 200), 4, 4);
        expectRefused({"pack", c.folder, "-o", target},
                      "'" + view + "' is only to look at and was changed; " + c.message, {c.folder});
        EXPECT_FALSE(fs::exists(target));
        fs::remove(view); // gone, it holds no edit
        const Outcome packed = lbx({"pack", c.folder, "-o", target});
        EXPECT_EQ(packed.status, 0) << packed.err;
        EXPECT_TRUE(sameBytes(target, sample(fs::path(c.folder).filename().string() + ".LBX"))) << c.view;
        dir.file(fs::relative(view, dir.path("")).string(), original);
    }
}

TEST_F(EditLoopFolder, PackLeavesEditorsLeftoversAloneAndNamesOtherStrays)
{
    const std::string folder = unpacked("STARNAME.LBX"), target = dir.path("new.lbx");
    for (const char* leftover : {"STARNAME_000.txt~", ".STARNAME_000.txt.swp", "#STARNAME_000.txt#", ".DS_Store",
                                 "Thumbs.db", "STARNAME_000.bak"})
        dir.file("mod/STARNAME/" + std::string(leftover), "x");
    Outcome run = lbx({"pack", folder, "-o", target});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    dir.file("mod/STARNAME/names.txt", "Sol\n");
    fs::create_directory(folder + "/old");
    run = lbx({"pack", folder, "-o", target, "--force"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("lbx: warning: '" + folder + "/names.txt' is not named in '" + folder +
                           "/archive.json'; it is left out\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("'" + folder + "/old' is not named"), std::string::npos) << run.err;
    EXPECT_TRUE(sameBytes(target, sample("STARNAME.LBX")));
}

TEST_F(EditLoopFolder, PackOfAFolderThatUnpackDidNotMakeSaysWhatItTakes)
{
    expectRefused({"pack", sample(""), "-o", dir.path("x.lbx")},
                  "'" + sample("") + "' holds no archive.json; pack takes a folder that lbx unpack made",
                  {sample("")});
    EXPECT_FALSE(fs::exists(dir.path("x.lbx")));
}

TEST_F(EditLoopFolder, AStaleTemporaryFileIsFoundBeforeAnyWork)
{
    const std::string folder = unpacked("INBOX.LBX"), target = dir.path("new/INBOX.LBX");
    const std::string stale = put("new/INBOX.LBX.lbx-part", "");
    fs::remove(folder + "/INBOX_001_003.png"); // a failure the work would meet later
    expectRefused({"pack", folder, "-o", target},
                  "'" + stale + "' is in the way of writing '" + target +
                      "'; remove it if an interrupted write left it",
                  {folder, dir.path("new")});
}

TEST_F(EditLoopFolder, UnpackForcedOverAnEarlierUnpackReplacesOnlyWhatThatOneWrote)
{
    const std::string folder = dir.path("mod/INBOX");
    ASSERT_EQ(lbx({"unpack", sample("INBOX.LBX"), "-o", dir.path("mod")}).status, 0);
    const std::string mine = dir.file("mod/INBOX/notes.txt", "my notes");
    // Another archive of the same stem, with fewer entries, over it.
    put("other/INBOX.LBX", readFile(sample("STARNAME.LBX")));
    const Outcome run = lbx({"unpack", dir.path("other/INBOX.LBX"), "-o", dir.path("mod"), "--force"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("  removed 11 files of the earlier unpack that this one does not write\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(readFile(mine), "my notes");
    EXPECT_FALSE(fs::exists(folder + "/INBOX_001_000.png"));
    const Outcome packed = lbx({"pack", folder, "-o", dir.path("again.lbx")});
    EXPECT_EQ(packed.status, 0) << packed.err;
    EXPECT_TRUE(sameBytes(dir.path("again.lbx"), sample("STARNAME.LBX")));
}

TEST_F(EditLoopFolder, PalettesComeFromTheFolderTheUserNames)
{
    const std::string lonely = put("lonely/INBOX.LBX", readFile(sample("INBOX.LBX")));
    ASSERT_EQ(lbx({"export", sample("INBOX.LBX"), "1", "-o", dir.path("beside")}).status, 0);
    for (const std::string& named : {sample(""), sample("FONTS.LBX")}) {
        const Outcome run = lbx({"export", lonely, "1", "-o", dir.path("named"), "--palettes", named, "--force"});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "") << named;
        EXPECT_TRUE(decodePng(frameFile(dir.path("named"), "INBOX_001", 3)).rgba ==
                    decodePng(frameFile(dir.path("beside"), "INBOX_001", 3)).rgba)
            << named;
    }
    const Outcome unpacked = lbx({"unpack", lonely, "-o", dir.path("mod"), "--palettes", sample("")});
    EXPECT_EQ(unpacked.err, "");
    const Outcome wrong = lbx({"export", lonely, "-o", dir.path("x"), "--palettes", dir.path("none")});
    EXPECT_EQ(wrong.status, 1);
    EXPECT_EQ(wrong.err, "lbx: --palettes: '" + dir.path("none") + "' is neither a folder nor an archive\n");
    EXPECT_FALSE(fs::exists(dir.path("x")));
}

// The game finds entries by number: a summary that said "0 changed" of
// entries swapped or gone would hide what matters most.
TEST_F(EditLoopFolder, PacksSummarySaysWhatMovedCameAndWent)
{
    const std::string folder = unpacked("INBOX.LBX"), target = dir.path("new.lbx");
    const std::string manifestPath = folder + "/archive.json", original = readFile(manifestPath);
    const auto edited = [&](const std::function<void(lbxtool::Json&)>& edit) {
        lbxtool::Json manifest = lbxtool::Json::parse(original);
        edit(manifest["entries"]);
        dir.file("mod/INBOX/archive.json", manifest.dump(1));
        return lbx({"pack", folder, "-o", target, "--force"});
    };
    const struct {
        std::string what;
        std::function<void(lbxtool::Json&)> edit;
        std::string summary;
    } cases[] = {
        {"swapped", [](lbxtool::Json& entries) { std::swap(entries[0], entries[1]); },
         ", 0 changed, 2 moved\n  moved T[0]: was entry 1\n  moved T[1]: was entry 0\n"},
        {"removed", [](lbxtool::Json& entries) { entries.erase(0); },
         ", 0 changed, 1 moved, 1 removed\n  moved T[0]: was entry 1\n  removed entry 0 of INBOX.LBX as unpacked\n"},
        {"added",
         [](lbxtool::Json& entries) {
             lbxtool::Json copy = entries[1];
             copy.erase("index");
             copy.erase("hash");
             entries.push_back(copy);
         },
         ", 0 changed, 1 added\n  added T[2]: graphic (8 frames of 48x32)\n"},
    };
    for (const auto& c : cases) {
        const Outcome run = edited(c.edit);
        std::string out = run.out;
        for (std::size_t at; (at = out.find(target)) != std::string::npos;)
            out.replace(at, target.size(), "T");
        EXPECT_EQ(out.substr(out.find(',')), c.summary) << c.what;
        EXPECT_EQ(run.err.find("header area"), std::string::npos) << c.what << ": its offsets alone changed";
    }
}

TEST_F(EditLoopFolder, PackOfSeveralFoldersWritesEachArchiveWhereItsOwnWouldGo)
{
    std::vector<std::string> unpack = {"unpack", "-o", dir.path("mod")};
    for (const std::string& archive : wholeSample())
        unpack.push_back(archive);
    ASSERT_EQ(lbx(unpack).status, 0);
    std::vector<std::string> folders;
    for (const char* stem : {"CONFIRM", "FONTS", "INBOX", "SPHERSFX", "STARNAME"})
        folders.push_back(dir.path("mod/") + stem);
    for (const char* jobs : {"1", "2"}) {
        const std::string out = dir.path(std::string("out") + jobs);
        std::vector<std::string> pack = {"pack", "-j", jobs, "-o", out};
        pack.insert(pack.end(), folders.begin(), folders.end());
        const Outcome run = lbx(pack);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "");
        std::string said;
        for (const std::string& folder : folders) {
            const std::string name = fs::path(folder).filename().string() + ".LBX";
            EXPECT_TRUE(sameBytes(out + "/" + name, sample(name))) << name;
            said += "packed " + std::to_string(File(sample(name)).size()) + " entries from " + folder + " into " +
                    out + "/" + name + ", 0 changed\n";
        }
        EXPECT_EQ(run.out, said);
    }
    // Without -o, each beside its folder.
    ASSERT_EQ(lbx({"pack", folders[2], folders[4]}).status, 0);
    EXPECT_TRUE(sameBytes(dir.path("mod/INBOX.LBX"), sample("INBOX.LBX")));
    EXPECT_TRUE(sameBytes(dir.path("mod/STARNAME.LBX"), sample("STARNAME.LBX")));
    // One folder and -o naming a folder: into it.
    ASSERT_EQ(lbx({"pack", folders[0], "-o", dir.path("out1")}).status, 1);
    ASSERT_EQ(lbx({"pack", folders[0], "-o", dir.path("one/")}).status, 0);
    EXPECT_TRUE(sameBytes(dir.path("one/CONFIRM.LBX"), sample("CONFIRM.LBX")));
}

TEST_F(EditLoopFolder, AFolderThatCannotBePackedLeavesTheOthersPacked)
{
    const std::string inbox = unpacked("INBOX.LBX"), starname = unpacked("STARNAME.LBX"), out = dir.path("out");
    fs::remove(inbox + "/INBOX_001_003.png");
    const std::string busy = put("out/CONFIRM.LBX", "mine");
    const std::string confirm = unpacked("CONFIRM.LBX");
    const std::string copy = dir.path("copy/STARNAME");
    fs::create_directories(copy);
    fs::copy(starname, copy);
    const Outcome run =
        lbx({"pack", "-o", out, inbox, dir.path("nowhere"), confirm, starname, starname + "/", copy});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "lbx: '" + inbox + "/INBOX_001_003.png' is missing (entry 1 of '" + inbox + "/archive.json')\n"
                       "lbx: '" + dir.path("nowhere") + "' is not a folder\n"
                       "lbx: '" + busy + "' already exists; --force replaces it\n"
                       "lbx: '" + starname + "' is given twice; it is packed once\n"
                       "lbx: '" + copy + "' packs into '" + out + "/STARNAME.LBX' as '" + starname +
                           "' does; pack one of them on its own\n");
    EXPECT_EQ(run.out.rfind("packed ", 0), 0u);
    EXPECT_FALSE(fs::exists(out + "/INBOX.LBX"));
    EXPECT_EQ(readFile(busy), "mine");
    EXPECT_TRUE(sameBytes(out + "/STARNAME.LBX", sample("STARNAME.LBX")));
    EXPECT_EQ(std::distance(fs::directory_iterator(out), fs::directory_iterator()), 2);
}

TEST_F(EditLoopFolder, SeveralFoldersPackIntoAFolderAndNoFile)
{
    const std::string inbox = unpacked("INBOX.LBX"), starname = unpacked("STARNAME.LBX");
    const std::string file = put("out.lbx", "mine");
    const Outcome run = lbx({"pack", inbox, starname, "-o", file});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "lbx: -o names the folder the archives go into when several folders are packed, and '" +
                           file + "' is a file; see 'lbx pack --help'\n");
    EXPECT_EQ(readFile(file), "mine");
}
