#include "tests/tool/ToolRun.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

namespace {

class WriteRules : public Tool {
protected:
    void SetUp() override
    {
        inbox = sample("INBOX.LBX");
        fonts = sample("FONTS.LBX");
        ASSERT_EQ(lbx({"export", inbox, "0", "-o", dir.path("out")}).status, 0);
        png = frameFile(dir.path("out"), "INBOX_000", 0);
        ASSERT_EQ(lbx({"extract", fonts, "1", "2", "-o", dir.path("parts")}).status, 0);
        cursor = dir.path("parts/FONTS_001.cursor");
    }

    // Runs a command that must be refused with `message` as its one line,
    // and checks that nothing in the test's folder changed.
    void expectRefused(const std::vector<std::string>& args, const std::string& message)
    {
        const auto before = snapshot(dir.path("sample")), exported = snapshot(dir.path("out"));
        const Outcome run = lbx(args);
        EXPECT_EQ(run.status, 1) << args[0] << ' ' << message;
        EXPECT_EQ(run.err, "lbx: " + message + "\n");
        EXPECT_EQ(snapshot(dir.path("sample")), before) << message;
        EXPECT_EQ(snapshot(dir.path("out")), exported) << message;
    }

    std::string inbox, fonts, png, cursor;
};

} // namespace

TEST_F(WriteRules, NothingIsReplacedUnlessTheUserSaidSo)
{
    const std::string entry = dir.file("out/ball.graphic", "not yet a graphic");
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"import", inbox, png}, "'" + inbox + "' is an archive; -i INDEX stores into it"},
        {{"import", "--force", inbox, png}, "'" + inbox + "' is an archive; -i INDEX stores into it"},
        {{"import", entry, png}, "'" + entry + "' already exists; --force replaces it"},
        {{"create", fonts, cursor}, "'" + fonts + "' already exists; --force replaces it"},
        {{"sample", dir.path("sample")}, "'" + dir.path("sample/FONTS.LBX") + "' already exists; --force replaces it"},
    };
    for (const auto& c : cases)
        expectRefused(c.args, c.message);

    ASSERT_EQ(lbx({"import", "--force", entry, png}).status, 0);
    std::unique_ptr<Content> written(new Content(entry));
    EXPECT_EQ(written->type(), Content::GRAPHIC);
    ASSERT_EQ(lbx({"create", "--force", fonts, cursor}).status, 0);
    EXPECT_EQ(File::size(fonts), 1u);
}

// One name of the sample in the way, and none of the five is written.
TEST_F(WriteRules, SampleChecksEveryNameBeforeWritingAny)
{
    const std::string folder = dir.path("partial");
    fs::create_directories(folder);
    dir.file("partial/STARNAME.LBX", "mine");
    const Outcome run = lbx({"sample", folder});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "lbx: '" + folder + "/STARNAME.LBX' already exists; --force replaces it\n");
    EXPECT_EQ(snapshot(folder), (std::map<std::string, std::string>{{folder + "/STARNAME.LBX", "mine"}}));
    ASSERT_EQ(lbx({"sample", "--force", folder}).status, 0);
    EXPECT_EQ(readFile(folder + "/STARNAME.LBX"), readFile(sample("STARNAME.LBX")));
}

TEST_F(WriteRules, NoCommandWritesOntoItsOwnInputsWhateverPathLeadsThere)
{
    fs::create_symlink(inbox, dir.path("sample/link.lbx"));
    fs::create_hard_link(cursor, dir.path("sample/hard.cursor"));
    const std::string other = dir.path("sample/../sample/INBOX.LBX");
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"create", "--force", inbox, inbox, cursor}, "'" + inbox + "' is one of this command's inputs; it is left as it is"},
        {{"create", "--force", other, cursor, inbox},
         "'" + other + "' is one of this command's inputs ('" + inbox + "'); it is left as it is"},
        {{"create", "--force", dir.path("sample/link.lbx"), inbox},
         "'" + inbox + "' is one of this command's inputs; it is left as it is"},
        {{"import", "--force", png, png}, "'" + png + "' is one of this command's inputs; it is left as it is"},
        {{"import", "--force", dir.path("sample/hard.cursor"), "-p", cursor + ":0", png},
         "'" + dir.path("sample/hard.cursor") + "' is one of this command's inputs ('" + cursor + "'); it is left as it is"},
        {{"replace", inbox, "0", dir.path("sample/link.lbx")},
         "'" + inbox + "' is one of this command's inputs ('" + dir.path("sample/link.lbx") + "'); it is left as it is"},
    };
    for (const auto& c : cases)
        expectRefused(c.args, c.message);
}

TEST_F(WriteRules, ChangingInPlaceKeepsModeOwnerAndLinks)
{
    ASSERT_EQ(::chmod(inbox.c_str(), 0640), 0);
    const bool root = ::geteuid() == 0;
    if (root) {
        ASSERT_EQ(::chown(inbox.c_str(), 1234, 2345), 0);
    }
    fs::create_symlink("INBOX.LBX", dir.path("sample/link.lbx"));

    ASSERT_EQ(lbx({"replace", dir.path("sample/link.lbx"), "2", cursor}).status, 0);
    ASSERT_EQ(lbx({"import", dir.path("sample/link.lbx"), "-i", "3", png}).status, 0);
    EXPECT_TRUE(fs::is_symlink(dir.path("sample/link.lbx")));
    EXPECT_EQ(File::size(inbox), 4u);
    struct stat status;
    ASSERT_EQ(::stat(inbox.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    if (root) {
        EXPECT_EQ(status.st_uid, 1234u);
        EXPECT_EQ(status.st_gid, 2345u);
    }
    EXPECT_EQ(snapshot(dir.path("sample")).size(), 6u) << "no temporary file stays";
}

TEST_F(WriteRules, AChangeOfKindOrShapeIsWarnedAboutAndStrictRefusesIt)
{
    const std::string text = dir.file("names.text", le16(1) + le16(3) + "abc");
    const Outcome warned = lbx({"replace", inbox, "1", cursor});
    EXPECT_EQ(warned.status, 0);
    EXPECT_EQ(warned.err, "lbx: warning: " + inbox + "[1] was graphic (8 frames of 48x32), becomes cursor\n");
    const Outcome same = lbx({"replace", inbox, "1", dir.path("parts/FONTS_002.cursor")});
    EXPECT_EQ(same.err, "");

    const std::string strictly = "; --strict leaves the archive as it is";
    expectRefused({"replace", "--strict", inbox, "1", text}, inbox + "[1] was cursor, becomes text (1 record of 3 bytes)" + strictly);
    expectRefused({"import", "--strict", inbox, "-i", "0", png, png},
                  inbox + "[0] was graphic (1 frame of 64x40), becomes graphic (2 frames of 64x40)" + strictly);
    EXPECT_EQ(lbx({"import", "--strict", inbox, "-i", "0", png}).status, 0);
    EXPECT_EQ(lbx({"replace", "--strict", inbox, "2", text}).status, 0) << "appending replaces nothing";
}

// Failures at each step of a write: before it (a bad index, an unreadable
// input, something in the way of the temporary file) and half-way through
// (a file size limit, as a full disk would stop it).
TEST_F(WriteRules, AFailedWriteLeavesTheOriginalByteForByteAndNoTemporaryFile)
{
    const std::string big = dir.file("big.bin", std::string(64 * 1024, 'x'));
    const struct {
        std::vector<std::string> args;
        std::string message;
    } before[] = {
        {{"replace", inbox, "7", cursor}, "'" + inbox + "' has no entry 7; its entries are 0 to 1, and 2 appends"},
        {{"replace", inbox, "1", dir.path("gone")}, "could not open '" + dir.path("gone") + "' (No such file or directory)"},
        {{"import", inbox, "-i", "1", dir.path("parts")}, "'" + dir.path("parts") + "' is a directory"},
    };
    for (const auto& c : before)
        expectRefused(c.args, c.message);

    fs::create_directory(inbox + ".lbx-part");
    expectRefused({"import", inbox, "-i", "2", png}, "'" + inbox + ".lbx-part' is in the way of writing '" + inbox +
                                                       "'; remove it if an interrupted write left it");
    EXPECT_TRUE(fs::is_directory(inbox + ".lbx-part")) << "what the tool did not make it does not remove";
    fs::remove(inbox + ".lbx-part");

    // 32 blocks are 16 or 32 KiB, whichever the shell counts in: the archive
    // with the new entry is larger, and so is the entry file.
    const auto before2 = snapshot(dir.path("sample"));
    const Outcome cut = run("ulimit -f 32; exec " + quote(LBX_TOOL), {"replace", inbox, "2", big});
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(cut.err, "lbx: could not write to '" + inbox + "' (File too large)\n");
    EXPECT_EQ(snapshot(dir.path("sample")), before2);

    const std::string frames = dir.path("frames.graphic");
    std::vector<std::string> many = {"import", frames};
    for (int f = 0; f < 40; ++f)
        many.push_back(png);
    const Outcome full = run("ulimit -f 1; exec " + quote(LBX_TOOL), many);
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.err, "lbx: could not write to '" + frames + "' (File too large)\n");
    EXPECT_FALSE(fs::exists(frames));
    EXPECT_FALSE(fs::exists(frames + ".lbx-part"));
}

// pack writes the archive as its entries are made: a write that fails on
// the way, or an entry refused after others were written, leaves no archive,
// no temporary file, and none of the folders it made for the archive.
TEST_F(WriteRules, APackThatFailsOnTheWayLeavesNothingItMade)
{
    ASSERT_EQ(lbx({"unpack", inbox, "-o", dir.path("u")}).status, 0);
    const std::string folder = dir.path("u/INBOX");
    const std::string target = dir.path("new/deeper/INBOX.LBX");
    const auto unpacked = snapshot(folder);

    const Outcome cut = run("ulimit -f 1; exec " + quote(LBX_TOOL), {"pack", folder, "-o", target});
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(cut.err, "lbx: could not write to '" + target + "' (File too large)\n");
    EXPECT_FALSE(fs::exists(dir.path("new")));

    const std::string last = frameFile(folder, "INBOX_001", 0);
    const Bytes frame = readFile(last);
    std::ofstream(last, std::ios::binary) << "GIF89a";
    const Outcome refused = lbx({"pack", folder, "-o", target});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "lbx: '" + last + "' is not a PNG file\n");
    EXPECT_FALSE(fs::exists(dir.path("new")));

    std::ofstream(last, std::ios::binary) << frame;
    EXPECT_EQ(snapshot(folder), unpacked);
    ASSERT_EQ(lbx({"pack", folder, "-o", target}).status, 0);
    EXPECT_EQ(readFile(target), readFile(inbox));
}

// unpack makes each file of an empty folder in place: one that a write
// stops half-way is removed, and without the manifest, which comes last,
// the folder is no unpacked archive for pack.
TEST_F(WriteRules, AnUnpackThatFailsOnTheWayLeavesOnlyWholeFilesAndNoManifest)
{
    ASSERT_EQ(lbx({"unpack", inbox, "-o", dir.path("whole")}).status, 0);
    const auto whole = snapshot(dir.path("whole/INBOX"));
    // 1 KiB or 512 bytes, as the shell counts: the first frame is larger.
    const Outcome cut = run("ulimit -f 1; exec " + quote(LBX_TOOL), {"unpack", inbox, "-o", dir.path("cut")});
    EXPECT_EQ(cut.status, 1);
    const std::string frame = frameFile(dir.path("cut/INBOX"), "INBOX_000", 0);
    EXPECT_EQ(cut.err, "lbx: could not write to '" + frame + "' (File too large)\n");
    const auto left = snapshot(dir.path("cut/INBOX"));
    EXPECT_FALSE(left.empty()) << "the palette file, written before the frame";
    for (const auto& [path, bytes] : left)
        EXPECT_EQ(bytes, whole.at(dir.path("whole/INBOX/" + fs::path(path).filename().string()))) << path;
    EXPECT_FALSE(fs::exists(dir.path("cut/INBOX/archive.json")));
}

// A disk of 64 KiB, where the system lets the test make one: every command
// that writes gives the system's reason, and leaves the disk as it was.
TEST_F(WriteRules, AFullDiskIsSaidInTheSystemsWords)
{
    const std::string disk = dir.path("disk");
    fs::create_directory(disk);
    if (run("mount -t tmpfs -o size=64k tmpfs " + quote(disk), {}).status != 0)
        GTEST_SKIP() << "no small disk can be mounted here";
    struct Unmount {
        std::string disk;
        ~Unmount() { std::system(("umount " + quote(disk)).c_str()); }
    } unmount{disk};
    dir.file("disk/fill", std::string(40 * 1024, 'f'));
    const auto before = snapshot(disk);
    const struct {
        std::vector<std::string> args;
        std::string target;
    } cases[] = {
        {{"create", disk + "/x.lbx", cursor, dir.path("parts/FONTS_002.cursor")}, disk + "/x.lbx"},
        {{"extract", fonts, "-o", disk + "/parts"}, disk + "/parts/FONTS_001.cursor"},
    };
    for (const auto& c : cases) {
        const Outcome full = lbx(c.args);
        EXPECT_EQ(full.status, 1);
        EXPECT_EQ(full.err, "lbx: could not write to '" + c.target + "' (No space left on device)\n") << c.args[0];
        fs::remove_all(disk + "/parts");
        EXPECT_EQ(snapshot(disk), before) << c.args[0];
    }
}
