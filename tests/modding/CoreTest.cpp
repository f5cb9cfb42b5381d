// The modding core without the command line: what an entry shows, names,
// files, the checks of pack and import, and what it says to its caller.
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tests/support/Fixtures.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Files.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Header.h"
#include "tools/modding/Import.h"
#include "tools/modding/Listing.h"
#include "tools/modding/Names.h"
#include "tools/modding/Pack.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/Sample.h"
#include "tools/modding/Store.h"
#include "tools/modding/Unpack.h"
#include "tools/modding/TextEscape.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

using namespace fixtures;
using namespace lbxtool;

namespace {

// What the core said, in order.
class Heard : public Warnings {
public:
    void warn(const std::string& message) override { said.push_back(message); }
    std::vector<std::string> said;
};

// The sample set in memory, by file name.
class Sample : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        for (const SampleArchive& made : sampleArchives()) {
            archives[made.name] = std::make_unique<File>();
            made.fill(*archives[made.name]);
        }
    }
    static void TearDownTestSuite() { archives.clear(); }

    static File& archive(const std::string& name) { return *archives.at(name); }

    static std::map<std::string, std::unique_ptr<File>> archives;
};

std::map<std::string, std::unique_ptr<File>> Sample::archives;

TEST_F(Sample, EachKindShowsWhatTheGameKnowsOfIt)
{
    const auto palette = fakePalette();
    const struct {
        const char* archive;
        unsigned int index;
        const char* kind;
        unsigned int width, height, frames;
        bool loop, delta;
        unsigned int paletteFirst, paletteColours;
        std::size_t fonts, rows;
        bool sound;
    } cases[] = {
        {"INBOX.LBX", 1, "graphic", 48, 32, 8, true, true, 0, 0, 0, 0, false},
        {"INBOX.LBX", 0, "graphic", 64, 40, 1, false, false, 0, 33, 0, 0, false},
        {"CONFIRM.LBX", 1, "graphic", 16, 8, 2, false, false, 0, 0, 0, 0, false}, // raw frames stand alone
        {"CONFIRM.LBX", 2, "graphic", 12, 12, 4, true, false, 0, 0, 0, 0, false}, // cleared every frame
        {"SPHERSFX.LBX", 1, "graphic", 32, 32, 1, false, false, 240, 8, 0, 0, false},
        {"FONTS.LBX", 1, "cursor", 24, 24, 20, true, false, 0, 256, 0, 0, false},
        {"FONTS.LBX", 0, "font", 0, 0, 0, false, false, 0, 0, 6, 0, false},
        {"FONTS.LBX", 4, "empty", 0, 0, 0, false, false, 0, 0, 0, 0, false},
        {"STARNAME.LBX", 0, "text", 0, 0, 0, false, false, 0, 0, 0, 8, false},
        {"SPHERSFX.LBX", 0, "sound", 0, 0, 0, false, false, 0, 0, 0, 0, true},
    };
    for (const auto& c : cases) {
        const EntryView view = viewOf(archive(c.archive), c.archive, c.index, palette.get());
        const std::string which = std::string(c.archive) + " " + std::to_string(c.index);
        EXPECT_EQ(view.name, std::string(c.archive) + "[" + std::to_string(c.index) + "]") << which;
        EXPECT_EQ(view.kind, c.kind) << which;
        EXPECT_EQ(view.info, archive(c.archive)[c.index]->info()) << which;
        EXPECT_EQ(view.width, c.width) << which;
        EXPECT_EQ(view.height, c.height) << which;
        EXPECT_EQ(view.frames, c.frames) << which;
        EXPECT_EQ(view.loop, c.loop) << which;
        EXPECT_EQ(view.delta, c.delta) << which;
        EXPECT_EQ(view.palette.first, c.paletteFirst) << which;
        EXPECT_EQ(view.palette.rgba.size(), c.paletteColours * 4u) << which;
        EXPECT_EQ(view.fonts.size(), c.fonts) << which;
        EXPECT_EQ(view.rows.size(), c.rows) << which;
        EXPECT_EQ(view.sound, c.sound) << which;
    }
}

TEST_F(Sample, AGraphicsBlockShowsInThePaletteItIsDrawnIn)
{
    const auto palette = fakePalette();
    const EntryView view = viewOf(archive("SPHERSFX.LBX"), "S.LBX", 1, palette.get());
    EXPECT_TRUE(std::equal(view.palette.rgba.begin(), view.palette.rgba.end(), palette.get() + 240 * 4));
    EXPECT_TRUE(viewOf(archive("SPHERSFX.LBX"), "S.LBX", 1, nullptr).palette.rgba.empty()) << "no colours, no swatch";
}

TEST_F(Sample, FontsAndTextsShowTheirMetricsAndRecordsAsStored)
{
    const EntryView font = viewOf(archive("FONTS.LBX"), "F", 0, nullptr);
    for (const FontFace& face : font.fonts)
        EXPECT_EQ(face.widths.size(), 256u);
    EXPECT_EQ(font.fonts[0].height, 8u);
    EXPECT_EQ(font.fonts[5].height, 9u);
    const EntryView names = viewOf(archive("STARNAME.LBX"), "S", 0, nullptr);
    EXPECT_EQ(names.rows.front(), "Sol");
    EXPECT_EQ(names.rows[1], "Vega");
}

TEST_F(Sample, AHeadingKeepsOnlyWhatIsKnownBeforeDecoding)
{
    const EntryView view = viewOf(archive("INBOX.LBX"), "I.LBX", 1, nullptr);
    const EntryView heading = headingOf(view);
    EXPECT_EQ(heading.name, "I.LBX[1]");
    EXPECT_EQ(heading.kind, "graphic");
    EXPECT_EQ(heading.info, view.info);
    EXPECT_EQ(heading.index, 1u);
    EXPECT_EQ(heading.frames, 0u);
    EXPECT_FALSE(heading.loop);
    EXPECT_EQ(headingOf(archive("INBOX.LBX"), "I.LBX", 1).info, view.info);
}

// Unpacked into files in memory and packed from them, every entry of the
// sample comes back byte for byte and as unchanged: no disk, no command line.
TEST_F(Sample, UnpackAndPackGiveEveryEntryBackInMemory)
{
    PlainFiles files;
    Heard heard;
    for (const SampleArchive& made : sampleArchives()) {
        File& unpacked = archive(made.name);
        PaletteSource palettes(unpacked, {}, files, heard);
        Json manifest = archiveManifest(unpacked, made.name, std::string(2048, '\0'));
        std::map<std::string, std::string> written;
        for (unsigned int i = 0; i < unpacked.size(); ++i) {
            UnpackedEntry entry = unpackEntry(unpacked, made.name, i, "S", palettes);
            EXPECT_EQ(entry.kept, "") << made.name << " " << i;
            manifest[key::ENTRIES].push_back(entry.manifest);
            written.insert(entry.files.begin(), entry.files.end());
        }
        const Json reread = parseManifest(manifestText(manifest), "m.json");
        const PackPlan plan = planPack(reread, "m.json");
        EXPECT_EQ(plan.archive, made.name);
        const FileReader read = [&](const std::string& name) { return written.at(name); };
        for (unsigned int i = 0; i < unpacked.size(); ++i) {
            const PackedEntry packed = packEntry(plan, i, {{"m.json", static_cast<int>(i)}, read, "", {}, heard}, "O");
            EXPECT_EQ(bytesOf(packed.entry.get()), bytesOf(unpacked[i])) << made.name << " " << i;
            EXPECT_EQ(packed.change, "") << made.name << " " << i;
        }
    }
    EXPECT_NE(heard.said, std::vector<std::string>{}) << "no archive beside: palettes are said to be missing";
}

TEST(EntryView, AGraphicWhoseFramesHoldNoPixelsShowsNoFrames)
{
    const std::string path = "t.lbx";
    File archive;
    const Bytes rowEnds = octets({1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0});
    archive.push_back(entryOf(graphicHeader(0, 5, 1, 0, {20, 34}) + rowEnds).release());
    const EntryView view = viewOf(archive, path, 0, nullptr);
    EXPECT_EQ(view.kind, "graphic");
    EXPECT_EQ(view.frames, 0u);
    EXPECT_EQ(view.height, 5u);
}

TEST(EntryView, ShapesNameKindAndAGraphicsFramesAndSize)
{
    const auto palette = fakePalette();
    std::vector<unsigned char> pixels(2 * 3 * 4, 0);
    std::copy(palette.get() + 4, palette.get() + 8, pixels.begin());
    std::vector<unsigned char*> frames(3, pixels.data());
    std::unique_ptr<Content> three(Content::Graphic::create(frames.data(), palette.get(), 2, 3, 3, 0, 0, 0, 0, 0));
    std::unique_ptr<Content> one(Content::Graphic::create(frames.data(), palette.get(), 2, 3, 1, 0, 0, 0, 0, 0));
    std::unique_ptr<Content> text(table({"a"}));
    EXPECT_EQ(shapeOf(three.get()), "graphic (3 frames of 2x3)");
    EXPECT_EQ(shapeOf(one.get()), "graphic (1 frame of 2x3)");
    std::unique_ptr<Content> longer(table({"a", std::string(150, 'b')}));
    std::unique_ptr<Content> odd(entryOf(le16(1) + le16(3) + "abc"));
    EXPECT_EQ(shapeOf(text.get()), "text (1 record of 100 bytes)");
    EXPECT_EQ(shapeOf(longer.get()), "text (2 records of 200 bytes)");
    EXPECT_EQ(shapeOf(odd.get()), "text (1 record of 3 bytes)");
    EXPECT_EQ(shapeOf(entryOf("abc").get()), "unknown");
    EXPECT_EQ(shapeChange("text", "text"), "");
    EXPECT_EQ(shapeChange(shapeOf(one.get()), shapeOf(three.get())),
              "was graphic (1 frame of 2x3), becomes graphic (3 frames of 2x3)");
}

TEST(Names, FilesMadeFromAnEntrySortInTheirOrder)
{
    EXPECT_EQ(entryFileName("INBOX", 7, ".bin"), "INBOX_007.bin");
    EXPECT_EQ(frameFileName("INBOX", 7, 3), "INBOX_007_003.png");
    EXPECT_EQ(frameFileName("INBOX", 1234, 1000), "INBOX_1234_1000.png");
    EXPECT_EQ(sheetFileName("INBOX", 1), "INBOX_001_sheet.png");
    EXPECT_EQ(fontSheetFileName("FONTS", 0, 5), "FONTS_000_font5.png");
    EXPECT_EQ(textFileName("STARNAME", 0), "STARNAME_000.txt");
    EXPECT_EQ(safeStem("a dir/caf\xc3\xa9 1.lbx"), "caf___1");
    EXPECT_EQ(safeStem(".lbx"), "_lbx") << "a dot file's whole name is its stem";
    EXPECT_EQ(safeStem("/"), "entry");
}

TEST(Names, ArchivesOfOneStemKeepApartWhateverTheirCase)
{
    StemNames stems;
    EXPECT_EQ(stems.next("a/FONTS.LBX"), "FONTS");
    EXPECT_EQ(stems.next("b/fonts.lbx"), "fonts-2");
    EXPECT_EQ(stems.next("c/Fonts.lbx"), "Fonts-3");
    EXPECT_EQ(stems.next("INBOX.LBX"), "INBOX");
}

TEST(Names, NumbersAndEntryReferences)
{
    const struct {
        std::string text;
        bool digits, small;
    } numbers[] = {{"0", true, true}, {"123456789", true, true}, {"1234567890", true, false},
                   {"", true, false}, {"12a", false, false},     {"-1", false, false}};
    for (const auto& n : numbers) {
        EXPECT_EQ(allDigits(n.text), n.digits) << n.text;
        EXPECT_EQ(smallNumber(n.text), n.small) << n.text;
    }
    const EntryRef ref = parseEntryRef("C:/game/FONTS.LBX:12");
    EXPECT_EQ(ref.archive, "C:/game/FONTS.LBX");
    EXPECT_EQ(ref.index, 12u);
    for (const std::string bad : {"FONTS.LBX", ":3", "FONTS.LBX:", "FONTS.LBX:x", "FONTS.LBX:1234567890"})
        EXPECT_EQ(thrownBy([&] { parseEntryRef(bad); }), "'" + bad + "' names no entry; write ARCHIVE:INDEX") << bad;
}

// Unpack writes each entry's part of the manifest on the workers and joins
// them: the same text, whatever its keys hold.
TEST(Manifest, EntriesWrittenApartMakeTheSameTextAsTheWhole)
{
    const Json archive = {{"archive", "A.LBX"}, {"count", 2}, {"entries", Json::array()}};
    const Json entries[] = {
        {{"kind", "graphic"}, {"widths", {1, 2, 3}}, {"frames", {"A_000_000.png", "q\"uote\\d.png"}}},
        {{"kind", "text"}, {"files", {{"\u00e9t\u00e9.txt", "00ff"}, {"tab\there", ""}}}, {"empty", Json::object()}},
    };
    Json whole = archive;
    std::vector<std::string> apart;
    for (const Json& entry : entries) {
        whole["entries"].push_back(entry);
        apart.push_back(entryText(entry));
    }
    EXPECT_EQ(manifestText(archive, apart), manifestText(whole));
    EXPECT_EQ(manifestText(archive, {}), manifestText(archive));
    EXPECT_EQ(parseManifest(manifestText(whole), "m.json"), whole);
}

TEST(Hash, EachPartHashedBesideOthersAsAlone)
{
    // FNV-1a's published values; the parts run out at different bytes, so
    // that lanes finish, take the next part or idle at every point.
    const std::map<std::string, std::string> known = {
        {"", "cbf29ce484222325"}, {"a", "af63dc4c8601ec8c"}, {"foobar", "85944171f73967e8"}};
    for (const auto& [bytes, hash] : known)
        EXPECT_EQ(hashOf(bytes), hash) << bytes;
    std::vector<std::string> parts;
    for (std::size_t size : {0, 1, 7, 0, 300, 2, 64, 1, 0, 5, 999, 3})
        parts.push_back(std::string(size, static_cast<char>('a' + size % 26)));
    parts.push_back("foobar");
    const std::vector<std::string> hashes = hashOfEach({parts.begin(), parts.end()});
    ASSERT_EQ(hashes.size(), parts.size());
    for (std::size_t p = 0; p < parts.size(); ++p)
        EXPECT_EQ(hashes[p], hashOf(parts[p])) << p;
    EXPECT_EQ(hashes.back(), "85944171f73967e8");
    EXPECT_TRUE(hashOfEach({}).empty());
}

TEST(TextLines, EachLineWithoutItsEndsAndBack)
{
    EXPECT_EQ(textLines("a\r\nb\n\nc"), (std::vector<std::string>{"a", "b", "", "c"}));
    EXPECT_EQ(textLines("a\n"), (std::vector<std::string>{"a"}));
    EXPECT_EQ(textLines(""), (std::vector<std::string>{}));
    EXPECT_EQ(textLines("a\r\r\n"), (std::vector<std::string>{"a\r"})) << "only the carriage return before the end";
    const std::vector<std::string> records = {"Sol", "", std::string("\r\n\0\\", 4)};
    const std::string lines = escapedLines(records);
    EXPECT_EQ(lines, "Sol\n\n\\r\\n\\x00\\\\\n");
    std::vector<std::string> back;
    for (const std::string& line : textLines(lines))
        back.push_back(unescapeText(line));
    EXPECT_EQ(back, records);
}

TEST(Files, ArchivesAreFoundBesideWhateverTheCaseOfTheirNames)
{
    TempDir dir;
    dir.file("fonts.Lbx", "x");
    std::filesystem::create_directory(dir.path("INBOX.LBX"));
    PlainFiles files;
    EXPECT_EQ(findArchive(files, dir.path(""), "FONTS"), dir.path("fonts.Lbx"));
    EXPECT_EQ(findArchive(files, dir.path(""), "INBOX"), "") << "a folder is no archive";
    EXPECT_EQ(findArchive(files, dir.path("missing"), "FONTS"), "");
}

TEST(Files, PlainFilesReadWriteAndListWithMessagesThatNameTheFile)
{
    TempDir dir;
    PlainFiles files;
    files.write(dir.path("a.bin"), std::string("\0x", 2));
    EXPECT_EQ(files.read(dir.path("a.bin")), std::string("\0x", 2));
    EXPECT_EQ(thrownBy([&] { files.read(dir.path("none")); }), "could not open '" + dir.path("none") + "'");
    EXPECT_EQ(thrownBy([&] { files.read(dir.path("")); }), "'" + dir.path("") + "' is a directory");
    std::filesystem::create_directory(dir.path("sub"));
    std::vector<std::string> listed;
    for (const Files::Listed& file : files.list(dir.path("")))
        listed.push_back(file.name + (file.regular ? "" : "/"));
    std::sort(listed.begin(), listed.end());
    EXPECT_EQ(listed, (std::vector<std::string>{"a.bin", "sub/"}));
    EXPECT_NE(thrownBy([&] { files.list(dir.path("none")); }), "");
}

TEST(Listing, ACountOtherThanTheGamesIsSaidToTheCaller)
{
    File archive;
    archive.push_back(table({"a"}));
    Heard heard;
    const std::string lines = listing("x/INBOX.LBX", archive, heard);
    EXPECT_EQ(lines.substr(0, lines.find('\n')),
              "x/INBOX.LBX: 1 entry, tagged, catalogue INBOX (row 92), expected 2");
    EXPECT_EQ(heard.said, (std::vector<std::string>{"x/INBOX.LBX holds 1 entry, the game's INBOX holds 2"}));
    listing("x/OWN.LBX", archive, heard);
    EXPECT_EQ(heard.said.size(), 1u) << "an archive outside the catalogue has no count to miss";
}

TEST(PaletteSources, ThoseThatCannotBeFoundAreSaidAndBlackStandsIn)
{
    TempDir dir;
    File inbox;
    for (const SampleArchive& made : sampleArchives())
        if (std::string(made.name) == "INBOX.LBX")
            made.fill(inbox);
    const std::string path = dir.path("INBOX.LBX");
    inbox.write(path);
    File alone(path);
    PlainFiles files;
    Heard heard;
    PaletteSource sources(alone, {}, files, heard);
    EXPECT_EQ(sources.sourcePaths(), std::vector<std::string>{});
    const PaletteArray palette = sources.forGraphic(1);
    EXPECT_EQ(heard.said, (std::vector<std::string>{"palette source FONTS.LBX not found beside " + path +
                                                    "; graphics that need it show in black with the colours they "
                                                    "hold themselves"}));
    for (unsigned int at = 0; at < PALETTE_BYTES; at += PIXEL_SIZE)
        EXPECT_EQ(palette[at] | palette[at + 1] | palette[at + 2], 0) << "black, at colour " << at / PIXEL_SIZE;

    dir.file("Fonts.lbx", readFile(path));
    PaletteSource beside(alone, {}, files, heard);
    EXPECT_EQ(beside.sourcePaths(), std::vector<std::string>{dir.path("Fonts.lbx")});

    TempDir elsewhere;
    PaletteSource named(alone, {"", elsewhere.path(""), "name it"}, files, heard);
    named.forGraphic(1);
    EXPECT_EQ(heard.said.back(), "palette source FONTS.LBX not found in '" + elsewhere.path("") +
                                     "'; graphics that need it show in black with the colours they hold themselves "
                                     "(name it)");
}

TEST(Store, AChangeOfShapeIsSaidOrWithStrictRefusedBeforeTheArchiveChanges)
{
    File archive;
    archive.push_back(table({"a"}));
    Heard heard;
    EXPECT_EQ(thrownBy([&] {
                  storeEntry(archive, "T.LBX", 0, entryOf("abc"), true, heard);
              }),
              "T.LBX[0] was text (1 record of 100 bytes), becomes unknown; --strict leaves the archive as it is");
    EXPECT_EQ(archive[0]->typeStr(), "text");
    storeEntry(archive, "T.LBX", 0, entryOf("abc"), false, heard);
    EXPECT_EQ(heard.said, (std::vector<std::string>{"T.LBX[0] was text (1 record of 100 bytes), becomes unknown"}));
    storeEntry(archive, "T.LBX", 1, std::unique_ptr<Content>(table({"b"})), true, heard);
    EXPECT_EQ(archive.size(), 2u) << "the entry count appends";
    EXPECT_EQ(heard.said.size(), 1u);
    EXPECT_NE(thrownBy([&] {
                  storeEntry(archive, "T.LBX", 5, std::unique_ptr<Content>(table({"c"})), false,
                             heard);
              }),
              "");
}

TEST(Pack, TheFolderMustHoldTheFilesTheManifestNamesAndWhatElseItHoldsIsSaid)
{
    const Json entries = Json::parse(R"([{"kind": "bytes", "file": "A_000.bin"},
                                         {"kind": "text", "file": "A_001.txt", "views": ["A_001_x.png"]}])");
    const auto held = [](std::vector<std::string> names) {
        std::vector<Files::Listed> listed;
        for (const std::string& name : names)
            listed.push_back({name, true});
        return listed;
    };
    Heard heard;
    const auto require = [&](std::vector<std::string> names) {
        return thrownBy([&] { requireNamedFiles("mod/A", held(names), entries, "m.json", heard); });
    };
    EXPECT_EQ(require({"archive.json", "A_000.bin", "A_001.txt"}), "") << "a view may be gone";
    EXPECT_EQ(require({"archive.json", "A_000.bin"}), "'mod/A/A_001.txt' is missing (entry 1 of 'm.json')");
    EXPECT_EQ(heard.said, std::vector<std::string>{});
    // What editors and file managers leave goes unsaid; anything else may be
    // an edit in the wrong place.
    EXPECT_EQ(require({"archive.json", "A_000.bin", "A_001.txt", "A_001.txt~", ".A_001.txt.swp", "#A_001.txt#",
                       "Thumbs.db", "desktop.ini", ".DS_Store", "A_001.bak", "notes.txt", "A_001.png"}),
              "");
    EXPECT_EQ(heard.said, (std::vector<std::string>{"'mod/A/notes.txt' is not named in 'm.json'; it is left out",
                                                    "'mod/A/A_001.png' is not named in 'm.json'; it is left out"}));
}

TEST(Pack, TheManifestsOwnFieldsAreCheckedWithTheirNames)
{
    const struct {
        const char* manifest;
        std::string message;
    } cases[] = {
        {R"({"entries": []})", "'m.json': 'archive' is missing"},
        {R"({"archive": "../X.LBX", "entries": []})", "'m.json': '../X.LBX' is not the name of a file in the folder"},
        {R"({"archive": "X.LBX", "entries": {}})", "'m.json': 'entries' must be a list of at most 509 entries"},
        {R"({"archive": "X.LBX"})", "'m.json': 'entries' is missing"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy([&] { planPack(Json::parse(c.manifest), "m.json"); }), c.message) << c.manifest;
    const Json manifest = Json::parse(R"({"archive": "X.LBX", "entries": [{}]})");
    const PackPlan plan = planPack(manifest, "m.json");
    EXPECT_EQ(plan.archive, "X.LBX");
    EXPECT_EQ(plan.entries->size(), 1u);
    EXPECT_EQ(thrownBy([] { parseManifest("{", "m.json"); }).rfind("'m.json' is not valid JSON (", 0), 0u);
}

TEST(Pack, AHeaderAreaOtherThanTheOneUnpackedIsNamed)
{
    const std::string area(2048, '\0');
    Json manifest = Json::parse(R"({"tagged": true})");
    EXPECT_EQ(headerNote(manifest, area, 0, true, "m.json"),
              "the header area of the archive unpacked into m.json held bytes the writer does not write (a fill "
              "other than zeros); the entries are as they were");
    manifest["tagged"] = false;
    EXPECT_NE(headerNote(manifest, area, 0, true, "m.json").find("(no tag word)"), std::string::npos);
    manifest["header"] = hashOf(withoutOffsets(area, 0));
    EXPECT_EQ(headerNote(manifest, area, 0, true, "m.json"), "");
}

TEST(Import, SettingsAndFramesThatDoNotFitAreRefusedWithWhatIsWrong)
{
    const struct {
        std::size_t frames;
        std::string flags;
        unsigned int clearOnce, clearMod;
        std::string message;
    } cases[] = {
        {65536, "frob", 300, 0, "a graphic holds at most 65535 frames"},
        {1, "loop,frob", 0, 0, "unknown flag 'frob' (known: raw, clear, shadows, palette, loop)"},
        {1, "0x10000", 0, 0, "'0x10000' is no flag word"},
        {1, "loop", 256, 0, "clearOnce 256 is above 255"},
        {1, "", 0, 1000, "clearMod 1000 is above 255"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy([&] { graphicSettings(c.frames, c.flags, c.clearOnce, c.clearMod); }), c.message);
    const GraphicSettings settings = graphicSettings(65535, "loop,raw", 255, 3);
    EXPECT_EQ(settings.flags, Content::Graphic::LOOP | Content::Graphic::RAW);
    EXPECT_EQ(settings.clearOnce, 255);
    EXPECT_EQ(settings.clearMod, 3);

    Picture first, other, huge;
    first.width = first.height = 4;
    other.width = 2;
    other.height = 3;
    huge.width = 65536;
    huge.height = 1;
    EXPECT_EQ(thrownBy([&] { requireFrameFits(first, "a.png", first); }), "");
    EXPECT_EQ(thrownBy([&] { requireFrameFits(other, "b.png", first); }), "'b.png' is 2x3, the first frame 4x4");
    EXPECT_EQ(thrownBy([&] { requireFrameFits(huge, "c.png", huge); }),
              "'c.png' is larger than a graphic can be (65535 pixels a side)");
}

} // namespace
