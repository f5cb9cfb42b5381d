#include "tests/tool/ToolRun.h"

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

namespace {

// Commands that spread their work, each over archives and entries that give
// warnings, failures and refusals along with their output.
class Jobs : public Tool {
protected:
    void SetUp() override
    {
        archives = wholeSample();
        const std::string wild = le16(1) + le16(0) + le16(0xFFFF) + le16(0xFFFF) + "abcd" + le16(0) + le16(1000);
        broken = dir.file("broken.lbx", archive({
            graphicEntry(0xFFFF, 0xFFFF, le16(1) + le16(0) + le32(0)), // too large to decode
            graphicEntry(4, 2, wild),                                  // differs once made again
            le16(1) + le16(5) + "abcde",                               // a table of records no writer makes
            graphicEntry(2, 1, le16(1) + le16(2) + le32(0), le16(250) + le16(10) + std::string(40, '\x3f')),
        }));
        archives.push_back(broken);
        // Beside no FONTS.LBX: its graphic is warned about.
        fs::create_directory(dir.path("alone"));
        fs::copy_file(sample("INBOX.LBX"), dir.path("alone/INBOX.LBX"));
        archives.push_back(dir.path("alone/INBOX.LBX"));
        archives.push_back(dir.path("sample")); // a folder, refused
        archives.push_back(sample("INBOX.LBX")); // again, under a stem of its own
    }

    // Runs `args` with -j 1, then with other numbers of jobs, and expects
    // the same outcome and the same files in `output` each time.
    void expectSameWithAnyJobs(const std::vector<std::string>& args, const std::string& output)
    {
        const auto runWith = [&](const std::vector<std::string>& jobs) {
            fs::remove_all(output);
            std::vector<std::string> all = args;
            all.insert(all.end(), jobs.begin(), jobs.end());
            const Outcome run = lbx(all);
            return std::make_pair(run, fs::exists(output) ? snapshot(output) : std::map<std::string, std::string>{});
        };
        const auto [one, written] = runWith({"-j", "1"});
        for (const std::vector<std::string>& jobs :
             std::vector<std::vector<std::string>>{{"-j", "4"}, {}, {"--jobs", "3"}, {"-j2"}}) {
            const auto [many, alsoWritten] = runWith(jobs);
            const std::string with = args[0] + (jobs.empty() ? "" : " " + jobs[0]);
            EXPECT_EQ(many.status, one.status) << with;
            EXPECT_EQ(many.out, one.out) << with;
            EXPECT_EQ(many.err, one.err) << with;
            EXPECT_TRUE(alsoWritten == written) << with;
        }
        outcome = one;
    }

    std::vector<std::string> archives;
    std::string broken;
    Outcome outcome;
};

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& then)
{
    first.insert(first.end(), then.begin(), then.end());
    return first;
}

} // namespace

TEST_F(Jobs, ExportWritesTheSameFilesAndSaysTheSameWhateverTheNumberOfJobs)
{
    const std::string out = dir.path("out");
    expectSameWithAnyJobs(joined({"export", "--html", "-o", out}, archives), out);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("is too large to decode"), std::string::npos);
    EXPECT_NE(outcome.err.find("lbx: warning: palette source FONTS.LBX not found beside "), std::string::npos);
    EXPECT_NE(outcome.err.find("is a directory"), std::string::npos);
    EXPECT_NE(outcome.out.find(" as INBOX-2\n"), std::string::npos);
}

TEST_F(Jobs, UnpackWritesTheSameFilesAndSaysTheSameWhateverTheNumberOfJobs)
{
    const std::string out = dir.path("out");
    expectSameWithAnyJobs(joined({"unpack", "-o", out}, archives), out);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("  kept as bytes: "), std::string::npos);
}

TEST_F(Jobs, VerifySaysTheSameWhateverTheNumberOfJobs)
{
    expectSameWithAnyJobs(joined({"verify", "-v"}, archives), dir.path("none"));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("  differs: " + broken + "[2]: debug text\n"), std::string::npos);
    EXPECT_NE(outcome.err.find("debug text - is   100, should be     5  'textsize'\n"), std::string::npos);
    expectSameWithAnyJobs(joined({"verify"}, archives), dir.path("none"));
    EXPECT_EQ(outcome.err.find("debug "), std::string::npos);
}

// A folder with two frames broken: the first of them in entry order is the
// one reported, and nothing is written.
TEST_F(Jobs, PackBuildsTheSameArchiveAndRefusesTheSameFrameWhateverTheNumberOfJobs)
{
    ASSERT_EQ(lbx({"unpack", sample("FONTS.LBX"), broken, "-o", dir.path("mod"), "-j", "1"}).status, 0);
    fs::copy(dir.path("mod/FONTS"), dir.path("damaged"));
    for (const char* frame : {"damaged/FONTS_001_005.png", "damaged/FONTS_002_000.png"})
        dir.file(frame, "not a picture");
    const std::string out = dir.path("out");
    expectSameWithAnyJobs({"pack", dir.path("mod/FONTS"), "-o", out + "/FONTS.LBX"}, out);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(readFile(out + "/FONTS.LBX"), readFile(sample("FONTS.LBX")));
    expectSameWithAnyJobs({"pack", dir.path("mod/broken"), "-o", out + "/broken.lbx"}, out);
    EXPECT_EQ(readFile(out + "/broken.lbx").substr(2048), readFile(broken).substr(2048));
    expectSameWithAnyJobs({"pack", dir.path("damaged"), "-o", out + "/FONTS.LBX"}, out);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "lbx: '" + dir.path("damaged/FONTS_001_005.png") +
                               "' is not a PNG file\n");
    EXPECT_FALSE(fs::exists(out));
}

TEST_F(Jobs, NoJobsIsAUsageError)
{
    const std::vector<std::vector<std::string>> commands = {
        {"export", sample("INBOX.LBX"), "-o", dir.path("out")},
        {"unpack", sample("INBOX.LBX"), "-o", dir.path("out")},
        {"pack", dir.path("sample"), "-o", dir.path("out/INBOX.LBX")},
        {"verify", sample("INBOX.LBX")},
    };
    for (const auto& command : commands)
        for (const char* jobs : {"0", "-3", "two"}) {
            const Outcome run = lbx(joined(command, {"-j", jobs}));
            EXPECT_EQ(run.status, 2) << command[0] << ' ' << jobs;
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.err, "lbx: --jobs takes a number of at least 1, not '" + std::string(jobs) + "'; see 'lbx " +
                                   command[0] + " --help'\n");
            EXPECT_FALSE(fs::exists(dir.path("out")));
        }
}
