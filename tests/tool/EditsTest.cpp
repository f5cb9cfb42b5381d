// The edits a front end makes in memory against what a modder gets from
// unpack, the same edit of the files, and pack: the same bytes, or the same
// refusal with the archive left as it was.
#include "tests/tool/ToolRun.h"
#include "tools/modding/Edits.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Png.h"
#include "tools/modding/TextEscape.h"

#include <functional>

using namespace fixtures;
using namespace toolrun;
using lbxtool::ArchiveEdits;
using lbxtool::PackRules;
namespace fs = std::filesystem;

namespace {

using FilesEdit = std::function<void(const std::string& folder)>;
using MemoryEdit = std::function<void(ArchiveEdits& edits)>;

struct EditCase {
    const char* name;
    const char* archive;
    FilesEdit onFiles;
    MemoryEdit inMemory;
    std::vector<std::string> packOptions = {};
};

void writeFile(const std::string& path, const std::string& bytes)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

lbxtool::Json readManifest(const std::string& folder)
{
    return lbxtool::Json::parse(readFile(folder + "/archive.json"));
}

void writeManifest(const std::string& folder, const lbxtool::Json& manifest)
{
    writeFile(folder + "/archive.json", manifest.dump(2));
}

// A text table's file with line `line` replaced.
void replaceLine(const std::string& path, unsigned int line, const std::string& text)
{
    std::vector<std::string> lines = lbxtool::textLines(readFile(path));
    lines.at(line) = text;
    std::string joined;
    for (const std::string& each : lines)
        joined += each + '\n';
    writeFile(path, joined);
}

class Edits : public Tool {
protected:
    void SetUp() override
    {
        fs::create_directories(dir.path("work"));
        for (const std::string& archive : wholeSample())
            fs::copy_file(archive, dir.path("work/") + fs::path(archive).filename().string());
    }

    // Runs lbx in the working folder, as a modder in the game's folder does.
    Outcome here(const std::vector<std::string>& args) { return run("cd " + quote(dir.path("work")) + " && " + quote(LBX_TOOL), args); }

    std::string stemOf(const std::string& archive) { return archive.substr(0, archive.find('.')); }

    // What pack makes of the edit, or its message.
    Outcome packed(const EditCase& edit)
    {
        const std::string stem = stemOf(edit.archive);
        fs::remove_all(dir.path("work/" + stem));
        EXPECT_EQ(here({"unpack", edit.archive}).status, 0);
        edit.onFiles(dir.path("work/" + stem));
        std::vector<std::string> args = {"pack", stem, "-o", "../packed.lbx", "--force"};
        args.insert(args.end(), edit.packOptions.begin(), edit.packOptions.end());
        return here(args);
    }

    std::string frame(const std::string& archive, unsigned int index, unsigned int number)
    {
        const std::string stem = stemOf(archive);
        return readFile(frameFile(dir.path("work/" + stem), stem + "_" + std::string(index < 10 ? "00" : "0") +
                                                                 std::to_string(index),
                                  number));
    }

    lbxtool::PlainFiles files;
};

// Archives are compared by where they first differ, not printed whole.
std::string firstDifference(const std::string& one, const std::string& other)
{
    const auto differ = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    if (differ.first == one.end() && differ.second == other.end())
        return "the same";
    return "sizes " + std::to_string(one.size()) + " and " + std::to_string(other.size()) + ", first different byte " +
           std::to_string(differ.first - one.begin());
}

PackRules nearest()
{
    PackRules rules;
    rules.nearest = true;
    return rules;
}

} // namespace

TEST_F(Edits, EachEditInMemoryIsWhatPackMakesOfTheSameEditOfTheFiles)
{
    here({"unpack", "INBOX.LBX", "SPHERSFX.LBX", "-o", "../original"});
    const std::string frame2 = readFile(frameFile(dir.path("original/INBOX"), "INBOX_001", 2));
    const std::string sound = readFile(dir.path("original/SPHERSFX/SPHERSFX_000.wav"));
    std::string louder = sound;
    louder[louder.size() - 1] = static_cast<char>(louder.back() + 1);
    const EditCase cases[] = {
        {"replace a frame", "INBOX.LBX",
         [&](const std::string& folder) { writeFile(frameFile(folder, "INBOX_001", 0), frame2); },
         [&](ArchiveEdits& edits) { edits.replaceFrame(1, 0, frame2, {}); }},
        {"two frames, one edit after the other", "INBOX.LBX",
         [&](const std::string& folder) {
             writeFile(frameFile(folder, "INBOX_001", 0), frame2);
             writeFile(frameFile(folder, "INBOX_001", 5), frame2);
         },
         [&](ArchiveEdits& edits) {
             edits.replaceFrame(1, 0, frame2, {});
             edits.replaceFrame(1, 5, frame2, {});
             edits.undo(); // the undone edit goes, the one before stays
             edits.redo();
         }},
        {"add a frame", "INBOX.LBX",
         [&](const std::string& folder) {
             lbxtool::Json manifest = readManifest(folder);
             manifest["entries"][1]["frames"].push_back("INBOX_001_008.png");
             writeManifest(folder, manifest);
             writeFile(frameFile(folder, "INBOX_001", 8), frame2);
         },
         [&](ArchiveEdits& edits) { edits.addFrame(1, frame2, {}); }},
        {"remove a frame", "INBOX.LBX",
         [&](const std::string& folder) {
             lbxtool::Json manifest = readManifest(folder);
             manifest["entries"][1]["frames"].erase(3);
             writeManifest(folder, manifest);
             fs::remove(frameFile(folder, "INBOX_001", 3));
         },
         [&](ArchiveEdits& edits) { edits.removeFrame(1, 3, {}); }},
        {"edit a record", "STARNAME.LBX",
         [&](const std::string& folder) { replaceLine(folder + "/STARNAME_000.txt", 1, "Wega\\x01"); },
         [&](ArchiveEdits& edits) { edits.setRecord(0, 1, "Wega\\x01", {}); }},
        {"replace a sound", "SPHERSFX.LBX",
         [&](const std::string& folder) { writeFile(folder + "/SPHERSFX_000.wav", louder); },
         [&](ArchiveEdits& edits) { edits.replaceSound(0, louder, {}); }},
    };
    for (const EditCase& edit : cases) {
        const Outcome pack = packed(edit);
        ASSERT_EQ(pack.status, 0) << edit.name << ": " << pack.err;
        ArchiveEdits edits(files, dir.path(std::string("work/") + edit.archive));
        edit.inMemory(edits);
        EXPECT_EQ(firstDifference(edits.current().file(), readFile(dir.path("packed.lbx"))), "the same") << edit.name;
        EXPECT_TRUE(edits.current().file() != edits.opened().file()) << edit.name;
        while (edits.canUndo())
            edits.undo();
        EXPECT_EQ(firstDifference(edits.current().file(), readFile(dir.path(std::string("work/") + edit.archive))),
                  "the same")
            << edit.name;
        while (edits.canRedo())
            edits.redo();
        EXPECT_EQ(firstDifference(edits.current().file(), readFile(dir.path("packed.lbx"))), "the same") << edit.name;
    }
}

TEST_F(Edits, AnEditPackRefusesIsRefusedWithPacksMessageAndChangesNothing)
{
    const std::string wide = lbxtool::rgbaPng(std::vector<unsigned char>(49 * 32 * 4, 255).data(), 49, 32, "wide");
    std::vector<unsigned char> pink(48 * 32 * 4, 255);
    pink[0] = 250;
    const std::string offPalette = lbxtool::rgbaPng(pink.data(), 48, 32, "pink");
    const std::string longName(120, 'x');
    const EditCase cases[] = {
        {"not a PNG", "INBOX.LBX",
         [&](const std::string& folder) { writeFile(frameFile(folder, "INBOX_001", 0), "GIF89a"); },
         [&](ArchiveEdits& edits) { edits.replaceFrame(1, 0, "GIF89a", {}); }},
        {"a frame of another size", "INBOX.LBX",
         [&](const std::string& folder) { writeFile(frameFile(folder, "INBOX_001", 4), wide); },
         [&](ArchiveEdits& edits) { edits.replaceFrame(1, 4, wide, {}); }},
        {"a colour the palette lacks", "INBOX.LBX",
         [&](const std::string& folder) { writeFile(frameFile(folder, "INBOX_001", 4), offPalette); },
         [&](ArchiveEdits& edits) { edits.replaceFrame(1, 4, offPalette, {}); }},
        {"a record over its length", "STARNAME.LBX",
         [&](const std::string& folder) { replaceLine(folder + "/STARNAME_000.txt", 2, longName); },
         [&](ArchiveEdits& edits) { edits.setRecord(0, 2, longName, {}); }},
        {"a sound that is no WAVE", "SPHERSFX.LBX",
         [&](const std::string& folder) { writeFile(folder + "/SPHERSFX_000.wav", "RIFF"); },
         [&](ArchiveEdits& edits) { edits.replaceSound(0, "RIFF", {}); }},
    };
    for (const EditCase& edit : cases) {
        const Outcome pack = packed(edit);
        ASSERT_EQ(pack.status, 1) << edit.name;
        ArchiveEdits edits(files, dir.path(std::string("work/") + edit.archive));
        try {
            edit.inMemory(edits);
            ADD_FAILURE() << edit.name << " was not refused";
        } catch (const std::runtime_error& e) {
            EXPECT_EQ("lbx: " + std::string(e.what()) + "\n", pack.err) << edit.name;
        }
        EXPECT_TRUE(edits.current().file() == edits.opened().file()) << edit.name;
        EXPECT_FALSE(edits.canUndo()) << edit.name;
    }
}

TEST_F(Edits, NearestColoursAreWhatPackNearestMakes)
{
    std::vector<unsigned char> pink(48 * 32 * 4, 255);
    pink[0] = 250;
    const std::string offPalette = lbxtool::rgbaPng(pink.data(), 48, 32, "pink");
    const EditCase edit{"nearest", "INBOX.LBX",
                        [&](const std::string& folder) { writeFile(frameFile(folder, "INBOX_001", 4), offPalette); },
                        [&](ArchiveEdits& edits) { edits.replaceFrame(1, 4, offPalette, nearest()); },
                        {"--nearest"}};
    ASSERT_EQ(packed(edit).status, 0);
    ArchiveEdits edits(files, dir.path("work/INBOX.LBX"));
    edit.inMemory(edits);
    EXPECT_EQ(firstDifference(edits.current().file(), readFile(dir.path("packed.lbx"))), "the same");
}

TEST_F(Edits, TheEditsTravelAsAModAndABpsPatchThatPatchApplies)
{
    ArchiveEdits edits(files, dir.path("work/STARNAME.LBX"));
    edits.setRecord(0, 1, "Wega", {});
    edits.setRecord(1, 0, "Oasis", {});
    writeFile(dir.path("edits.lbxmod"), edits.mod(true));
    writeFile(dir.path("edits.bps"), edits.bps());
    for (const char* patch : {"edits.lbxmod", "edits.bps"}) {
        ASSERT_EQ(lbx({"patch", dir.path("work/STARNAME.LBX"), dir.path(patch), "-o", dir.path(patch) + ".out"}).status, 0);
        EXPECT_EQ(firstDifference(readFile(dir.path(patch) + ".out"), edits.current().file()), "the same") << patch;
    }
    ArchiveEdits other(files, dir.path("work/STARNAME.LBX"));
    other.applyPatches({{"edits.lbxmod", readFile(dir.path("edits.lbxmod"))}}, false);
    EXPECT_EQ(firstDifference(other.current().file(), edits.current().file()), "the same");
    EXPECT_EQ(edits.recordBytes(0, "Wega\\x01"), std::make_pair(std::size_t(5), std::size_t(99)));
}

TEST_F(Edits, AModForAnotherVersionIsRefusedAsPatchRefusesIt)
{
    ArchiveEdits edits(files, dir.path("work/STARNAME.LBX"));
    edits.setRecord(0, 1, "Wega", {});
    const std::string mod = dir.path("edits.lbxmod");
    writeFile(mod, edits.mod(false));
    ArchiveEdits other(files, dir.path("work/STARNAME.LBX"));
    other.setRecord(0, 1, "Vela", {});
    writeFile(dir.path("other/STARNAME.LBX"), other.current().file());
    const Outcome refused = lbx({"patch", dir.path("other/STARNAME.LBX"), mod, "-o", dir.path("out.lbx")});
    ASSERT_EQ(refused.status, 1);
    const std::string before = other.current().file();
    try {
        other.applyPatches({{mod, readFile(mod)}}, false);
        ADD_FAILURE() << "a mod for another version was applied";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ("lbx: " + std::string(e.what()) + "\n", refused.err);
    }
    EXPECT_TRUE(other.current().file() == before);
}
