// An edit lands as the modder meant it or is refused with the way forward:
// files given as entries are what they claim, and text tables keep their
// shape unless pack is told otherwise. Every refusal leaves every file as
// it was.
#include "kinds/Text.h"
#include "tests/tool/ToolRun.h"
#include "tools/modding/Manifest.h"


using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;
using lbxtool::Json;

namespace {

// A plain PCM WAVE file of `samples`.
std::string waveFile(unsigned int channels, unsigned int rate, unsigned int bits, const std::string& samples)
{
    const unsigned int block = channels * bits / 8;
    return "RIFF" + le32(static_cast<unsigned int>(36 + samples.size())) + "WAVE" + "fmt " + le32(16) + le16(1) +
           le16(channels) + le32(rate) + le32(rate * block) + le16(block) + le16(bits) + "data" +
           le32(static_cast<unsigned int>(samples.size())) + samples;
}

// The names of the sample's text table, a line each, as unpack writes them.
const std::vector<std::string> STARS = {"Sol", "Vega", "Rigel", "Deneb", "Altair", "Mira", "Polaris", "Sirius"};

std::string lines(const std::vector<std::string>& records, const std::string& end = "\n")
{
    std::string text;
    for (const std::string& record : records)
        text += record + end;
    return text;
}

class EditLoopEntries : public Tool {
protected:
    // Runs `args`, which must fail with `message` alone and leave this
    // test's whole folder byte for byte as it was.
    void expectRefused(const std::vector<std::string>& args, const std::string& message)
    {
        const auto before = mine();
        const Outcome run = lbx(args);
        EXPECT_EQ(run.status, 1) << message;
        EXPECT_EQ(run.err, "lbx: " + message + "\n");
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(mine() == before) << "a file changed: " << message;
    }

    // Every file of this test but the tool's stdout and stderr.
    std::map<std::string, std::string> mine()
    {
        std::map<std::string, std::string> files = snapshot(dir.path(""));
        files.erase(dir.path("stdout"));
        files.erase(dir.path("stderr"));
        return files;
    }

    static void overwrite(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }

    std::string unpacked(const std::string& stem)
    {
        if (!fs::exists(dir.path("mod/" + stem))) {
            EXPECT_EQ(lbx({"unpack", sample(stem + ".LBX"), "-o", dir.path("mod")}).status, 0);
        }
        return dir.path("mod/" + stem);
    }

    std::string entryBytes(const std::string& archive, unsigned int index)
    {
        const std::unique_ptr<Content> entry(File::at(archive, index));
        return bytesOf(entry->data(), entry->size());
    }
};

} // namespace

// The files that users hand to replace and create by mistake, each refused
// with the command that does the job.
TEST_F(EditLoopEntries, FilesThatAreNoEntryAreRefusedWithTheCommandThatDoesTheJob)
{
    const std::string inbox = sample("INBOX.LBX"), fonts = sample("FONTS.LBX");
    const std::string names = unpacked("STARNAME"), pictures = unpacked("INBOX");
    std::vector<unsigned char> rgba(4 * 4 * 4, 200);
    const std::string png = dir.path("INBOX_000_000.png");
    writePng(png, rgba, 4, 4);
    const std::string json = dir.file("notes.json", "{\"colours\": [1, 2]}\n");
    const std::string hello = dir.file("hello.wav", "hello");
    std::string cut = waveFile(1, 8000, 8, "abcd");
    cut.resize(cut.size() - 1);
    const std::string cutWave = dir.file("cut.bin", cut);
    const std::string raw = " (--raw stores the file as it is)";
    const std::string folder = "; it goes back with the folder that unpack wrote it into, by lbx pack FOLDER";
    const struct {
        std::string file, message;
    } cases[] = {
        {fonts, "is an LBX archive, which is never an entry; lbx extract '" + fonts + "' gives its entries as files"},
        {names + "/archive.json",
         "is the manifest of an unpacked archive, not an entry; lbx pack '" + names +
             "' makes the archive of its folder" + raw},
        {json, "is a JSON file, not an entry" + raw},
        {pictures + "/INBOX_000.pal", "is a palette file, not an entry" + folder + raw},
        {names + "/STARNAME_000.txt", "is text, not an entry" + folder + raw},
        {hello, "is no RIFF WAVE file, as a sound must be; save it as a plain WAVE file" + raw},
        {cutWave, "is a WAVE file that the game does not take as a sound: its RIFF header says it is 48 bytes long, "
                  "and it is 47; save it as a plain WAVE file" + raw},
    };
    for (const auto& c : cases) {
        expectRefused({"replace", inbox, "1", c.file}, "'" + c.file + "' " + c.message);
        expectRefused({"create", dir.path("new.lbx"), c.file}, "'" + c.file + "' " + c.message);
    }
    // A picture's way in depends on where it is going.
    expectRefused({"replace", inbox, "0", png}, "'" + png + "' is a PNG image, not an entry; lbx import '" + inbox +
                                                    "' '" + png + "' -i 0 makes a graphic of it" + raw);
    expectRefused({"create", dir.path("new.lbx"), png},
                  "'" + png + "' is a PNG image, not an entry; lbx import '" + dir.path("INBOX_000_000.graphic") +
                      "' '" + png + "' makes a graphic entry of it to create with" + raw);
    // What cannot be read is named before anything is judged.
    expectRefused({"create", dir.path("new.lbx"), png, dir.path("gone")},
                  "could not open '" + dir.path("gone") + "' (No such file or directory)");
    expectRefused({"replace", inbox, "9", png}, "'" + inbox + "' has no entry 9; its entries are 0 to 1, and 2 appends");
}

TEST_F(EditLoopEntries, RawStoresTheBytesAsTheyAreButNeverAnArchive)
{
    const std::string inbox = sample("INBOX.LBX");
    std::vector<unsigned char> rgba(4 * 4 * 4, 200);
    const std::string png = dir.path("picture.png");
    writePng(png, rgba, 4, 4);
    const Outcome replaced = lbx({"replace", "--raw", inbox, "0", png});
    EXPECT_EQ(replaced.status, 0);
    EXPECT_EQ(replaced.err, "lbx: warning: " + inbox + "[0] was graphic (1 frame of 64x40), becomes unknown\n");
    EXPECT_EQ(entryBytes(inbox, 0), readFile(png));

    const std::string notes = dir.file("notes.txt", "one\ntwo\n");
    const std::string hello = dir.file("hello.wav", "hello");
    const Outcome created = lbx({"create", "--raw", dir.path("raw.lbx"), notes, hello});
    ASSERT_EQ(created.status, 0) << created.err;
    EXPECT_EQ(created.err, "");
    EXPECT_EQ(entryBytes(dir.path("raw.lbx"), 0), "one\ntwo\n");
    EXPECT_EQ(entryBytes(dir.path("raw.lbx"), 1), "hello");

    const std::string rawArchive = dir.path("raw.lbx");
    const std::string nested = "'" + rawArchive + "' is an LBX archive, which is never an entry; lbx extract '" +
                               rawArchive + "' gives its entries as files";
    expectRefused({"replace", "--raw", inbox, "1", rawArchive}, nested);
    expectRefused({"create", "--raw", dir.path("new.lbx"), rawArchive}, nested);
}

// A sound of another rate, depth or channel count plays wrong in the game:
// replace names both formats, --strict refuses.
TEST_F(EditLoopEntries, ASoundOfAnotherFormatIsNamed)
{
    const std::string sounds = sample("SPHERSFX.LBX");
    const std::string same = dir.file("same.wav", waveFile(1, 8000, 8, "abcdef"));
    const std::string other = dir.file("other.WAV", waveFile(2, 44100, 16, "abcdefgh"));
    const struct {
        std::string file, warning;
    } cases[] = {
        {same, ""},
        {other, "lbx: warning: " + sounds + "[0] was sound (8000 Hz, 8-bit, mono), becomes sound (44100 Hz, 16-bit, "
                "stereo)\n"},
        {same, "lbx: warning: " + sounds + "[0] was sound (44100 Hz, 16-bit, stereo), becomes sound (8000 Hz, "
               "8-bit, mono)\n"},
    };
    for (const auto& c : cases) {
        const Outcome run = lbx({"replace", sounds, "0", c.file});
        EXPECT_EQ(run.status, 0) << c.file;
        EXPECT_EQ(run.err, c.warning);
        EXPECT_EQ(entryBytes(sounds, 0), readFile(c.file));
    }
    expectRefused({"replace", "--strict", sounds, "0", other},
                  sounds + "[0] was sound (8000 Hz, 8-bit, mono), becomes sound (44100 Hz, 16-bit, stereo); --strict "
                           "leaves the archive as it is");
}

// Pack's sound must be a sound the game plays; a .bin holds any bytes of an
// entry, but not a file that is plainly something else.
TEST_F(EditLoopEntries, PacksSoundAndBytesFormsHoldWhatTheyClaim)
{
    const std::string sounds = unpacked("SPHERSFX"), fonts = unpacked("FONTS");
    const std::string wave = sounds + "/SPHERSFX_000.wav", bin = fonts + "/FONTS_003.bin";
    std::vector<unsigned char> rgba(2 * 2 * 4, 9);
    const std::string png = dir.path("p.png");
    writePng(png, rgba, 2, 2);
    const std::string putBack = "; put back the file that unpack wrote";
    const struct {
        std::string folder, file, bytes, message;
    } cases[] = {
        {sounds, wave, "hello", "is no RIFF WAVE file, as a sound must be; save it as a plain WAVE file"},
        {sounds, wave, waveFile(1, 8000, 8, "ab") + "x",
         "is a WAVE file that the game does not take as a sound: its RIFF header says it is 46 bytes long, and it "
         "is 47; save it as a plain WAVE file"},
        {fonts, bin, readFile(png), "is a PNG image, not an entry's bytes" + putBack + " (lbx import makes pictures a graphic)"},
        {fonts, bin, readFile(sample("INBOX.LBX")), "is an LBX archive, which is never an entry" + putBack},
        {fonts, bin, readFile(sounds + "/archive.json"), "is the manifest of an unpacked archive, not an entry's bytes" + putBack},
        {fonts, bin, "[1]", "is a JSON file, not an entry's bytes" + putBack},
        {fonts, bin, readFile(sounds + "/SPHERSFX_001.pal"), "is a palette file, not an entry's bytes" + putBack},
    };
    for (const auto& c : cases) {
        const std::string was = readFile(c.file);
        overwrite(c.file, c.bytes);
        expectRefused({"pack", c.folder, "-o", dir.path("out.lbx")}, "'" + c.file + "' " + c.message);
        overwrite(c.file, was);
    }

    // Text is bytes an entry of the game may hold; the summary tells the
    // change of kind.
    dir.file("mod/FONTS/FONTS_003.bin", "a note\n");
    const Outcome packed = lbx({"pack", fonts, "-o", dir.path("out.lbx")});
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_NE(packed.out.find("changed " + dir.path("out.lbx") + "[3]: was empty, becomes unknown\n"), std::string::npos)
        << packed.out;
    EXPECT_EQ(entryBytes(dir.path("out.lbx"), 3), "a note\n");
}

// An archive that holds a PNG as an entry, stored with --raw, unpacks the
// entry to a .bin that packs back as it was.
TEST_F(EditLoopEntries, ABinAsUnpackWroteItPacksBackWhateverItHolds)
{
    std::vector<unsigned char> rgba(2 * 2 * 4, 9);
    const std::string png = dir.path("p.png");
    writePng(png, rgba, 2, 2);
    const std::string odd = dir.path("odd.lbx");
    ASSERT_EQ(lbx({"create", "--raw", odd, png, dir.file("n.json", "[]")}).status, 0);
    ASSERT_EQ(lbx({"unpack", odd, "-o", dir.path("mod")}).status, 0);
    const Outcome packed = lbx({"pack", dir.path("mod/odd"), "-o", dir.path("again.lbx")});
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_EQ(readFile(dir.path("again.lbx")), readFile(odd));
}

TEST_F(EditLoopEntries, UnpackWritesATablesRecordCountAndLength)
{
    const Json manifest = Json::parse(readFile(unpacked("STARNAME") + "/archive.json"));
    EXPECT_EQ(manifest["entries"][0]["records"], 8);
    EXPECT_EQ(manifest["entries"][0]["recordLength"], 100);
    EXPECT_EQ(manifest["entries"][0]["shape"], "text (8 records of 100 bytes)");
}

// Edits that would change the table's shape unasked, or that the game would
// read otherwise than they stand, are refused where they stand.
TEST_F(EditLoopEntries, ATextTableChangesShapeOnlyWhenTold)
{
    const std::string folder = unpacked("STARNAME");
    const std::string file = folder + "/STARNAME_000.txt", named = "'" + file + "' ";
    std::vector<std::string> deleted = STARS, longer = STARS, full = STARS, zero = STARS, accented = STARS;
    deleted.erase(deleted.begin() + 2);
    longer[1] = std::string(120, 'v');
    full[1] = std::string(100, 'f');
    zero[2] = "Ri\\x00gel";
    accented[1] = "V\xE9ga";
    const std::string counts = " (--records lets the count change)";
    const struct {
        std::string what, text, message;
    } cases[] = {
        {"a blank line at the end", lines(STARS) + "\n",
         named + "has 9 lines and the table 8 records; a line is a record" + counts},
        {"a line deleted", lines(deleted), named + "has 7 lines and the table 8 records; a line is a record" + counts},
        {"a line longer than the records", lines(longer),
         named + "line 2 has 120 bytes, more than the 99 that the table's records of 100 hold before the zero that "
                 "ends them (--grow lets records grow)"},
        {"a line as long as the records, which leaves no room for the zero", lines(full),
         named + "line 2 has 100 bytes, more than the 99 that the table's records of 100 hold before the zero that "
                 "ends them (--grow lets records grow)"},
        {"a zero byte", lines(zero),
         named + "line 3: \\x00 at column 3 would end the record there, as the game reads up to a zero byte; take it "
                 "out"},
        {"a byte that must be escaped", lines(accented),
         named + "line 2: byte 233 must be escaped at column 2: write it \\xE9"},
    };
    for (const auto& c : cases) {
        dir.file("mod/STARNAME/STARNAME_000.txt", c.text);
        expectRefused({"pack", folder, "-o", dir.path("out.lbx")}, c.message);
    }
}

TEST_F(EditLoopEntries, WhatEditorsWriteAndWhatPackIsToldLandsAsMeant)
{
    const std::string folder = unpacked("STARNAME"), original = sample("STARNAME.LBX"), out = dir.path("out.lbx");
    std::vector<std::string> grown = STARS, full = STARS;
    grown[1] = std::string(120, 'v');
    full[1] = std::string(99, 'f');
    std::vector<std::string> added = STARS;
    added.push_back("");
    const struct {
        std::string what, text;
        std::vector<std::string> flags;
        std::vector<std::string> records; // as the packed table holds them
        unsigned int length;
        std::string change; // empty: the archive comes back byte for byte
    } cases[] = {
        {"CRLF and a byte-order mark", "\xEF\xBB\xBF" + lines(STARS, "\r\n"), {}, STARS, 100, ""},
        {"no line break after the last line", lines(STARS).substr(0, lines(STARS).size() - 1), {}, STARS, 100, ""},
        {"a record as long as the records hold", lines(full), {}, full, 100, "text (8 records of 100 bytes); record 1"},
        {"a blank line kept as a record", lines(STARS) + "\n", {"--records"}, added, 100,
         "was text (8 records of 100 bytes), becomes text (9 records of 100 bytes); record 8"},
        {"a record grown", lines(grown), {"--grow"}, grown, 200,
         "was text (8 records of 100 bytes), becomes text (8 records of 200 bytes); record 1"},
        {"--grow with nothing to grow", lines(STARS), {"--grow", "--records"}, STARS, 100, ""},
    };
    for (const auto& c : cases) {
        dir.file("mod/STARNAME/STARNAME_000.txt", c.text);
        std::vector<std::string> args = {"pack", folder, "-o", out, "--force"};
        args.insert(args.end(), c.flags.begin(), c.flags.end());
        const Outcome packed = lbx(args);
        ASSERT_EQ(packed.status, 0) << c.what << ": " << packed.err;
        EXPECT_EQ(packed.err, "") << c.what;
        const std::unique_ptr<Content> table(File::at(out, 0));
        EXPECT_EQ(table->text()->read2(2), c.length) << c.what;
        std::vector<std::string> records;
        for (unsigned int i = 0; i < table->text()->size(); ++i)
            records.push_back(table->text()->get(i));
        EXPECT_EQ(records, c.records) << c.what;
        if (c.change.empty()) {
            EXPECT_EQ(readFile(out), readFile(original)) << c.what;
        } else {
            EXPECT_NE(packed.out.find("  changed " + out + "[0]: " + c.change + "\n"), std::string::npos)
                << c.what << ": " << packed.out;
        }
        EXPECT_EQ(lbx({"verify", out}).status, 0) << c.what;
    }
}

// A manifest written before tables said their record count and length packs
// as it always did: the library chooses the length, any count goes.
TEST_F(EditLoopEntries, AManifestWithoutRecordsKeepsTheOldRules)
{
    const std::string folder = unpacked("STARNAME");
    Json manifest = Json::parse(readFile(folder + "/archive.json"));
    manifest["entries"][0].erase("records");
    manifest["entries"][0].erase("recordLength");
    dir.file("mod/STARNAME/archive.json", manifest.dump(2));
    std::vector<std::string> records = STARS;
    records[0] = std::string(150, 's');
    records.push_back("Vega");
    dir.file("mod/STARNAME/STARNAME_000.txt", lines(records));
    const Outcome packed = lbx({"pack", folder, "-o", dir.path("out.lbx")});
    ASSERT_EQ(packed.status, 0) << packed.err;
    const std::unique_ptr<Content> table(File::at(dir.path("out.lbx"), 0));
    EXPECT_EQ(table->text()->size(), 9u);
    EXPECT_EQ(table->text()->read2(2), 200);
}
