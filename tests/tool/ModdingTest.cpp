#include "images/Graphic.h"
#include "images/Palette.h"
#include "kinds/Text.h"
#include "tests/tool/ToolRun.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Png.h"

#include <nlohmann/json.hpp>

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;
using Graphic = Content::Graphic;
using lbxtool::Json;

namespace {

std::vector<std::string> entryBytes(const std::string& archivePath)
{
    File archive(archivePath);
    std::vector<std::string> entries;
    for (unsigned int i = 0; i < archive.size(); ++i)
        entries.push_back(bytesOf(archive[i]->data(), archive[i]->size()));
    return entries;
}

std::string bytesOfEntry(Content* entry)
{
    const std::unique_ptr<Content> owned(entry);
    return bytesOf(owned->data(), owned->size());
}

// A graphic re-made from its own decoded frames, as an archive's graphics
// are: a frame painted over its predecessor then paints only what differs.
std::string settled(Content* made)
{
    const std::unique_ptr<Content> graphic(made);
    std::unique_ptr<unsigned char[]> palette(Content::Palette::fake());
    return bytesOfEntry(Graphic::create(palette.get(), graphic.get()));
}

// Graphics with every flag combination, clear settings and a palette block
// at an odd place, and frames of fake colours, each one its stored index.
std::vector<std::string> graphicsOfEverySetting()
{
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    constexpr unsigned int width = 5, height = 4, count = 3;
    std::vector<std::string> graphics;
    for (unsigned int combination = 0; combination < 32; ++combination) {
        const unsigned short flags = (combination & 1 ? Graphic::RAW : 0) | (combination & 2 ? Graphic::CLEAR : 0) |
                                     (combination & 4 ? Graphic::SHADOWS : 0) | (combination & 8 ? Graphic::PALETTE : 0) |
                                     (combination & 16 ? Graphic::LOOP : 0);
        std::vector<std::vector<unsigned char>> frames(count, std::vector<unsigned char>(width * height * 4, 0));
        for (unsigned int f = 0; f < count; ++f)
            for (unsigned int p = 0; p < width * height; ++p)
                if ((flags & Graphic::RAW) || (p + f) % 4 != 0) {
                    const unsigned int index = (p * 7 + f * 11 + combination) % 250 + 3;
                    std::copy(fake.get() + index * 4, fake.get() + index * 4 + 4, &frames[f][p * 4]);
                }
        unsigned char* pointers[] = {frames[0].data(), frames[1].data(), frames[2].data()};
        graphics.push_back(settled(Graphic::create(pointers, fake.get(), width, height, count, combination % 3 == 0 ? 1 : 0,
                                                   combination % 5 == 1 ? 2 : 0, 7, 3, flags)));
    }
    return graphics;
}

// Two frames in colours of a palette block of 256 different ones.
std::string ownColours()
{
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    std::vector<std::vector<unsigned char>> frames(2, std::vector<unsigned char>(5 * 4 * 4, 0));
    for (unsigned int f = 0; f < 2; ++f)
        for (unsigned int p = f; p < 20; ++p)
            std::copy(fake.get() + (p * 9 + f) * 4, fake.get() + (p * 9 + f) * 4 + 4, &frames[f][p * 4]);
    unsigned char* pointers[] = {frames[0].data(), frames[1].data()};
    return settled(Graphic::create(pointers, fake.get(), 5, 4, 2, 0, 0, 0, 256, Graphic::PALETTE));
}

// Every one of the 256 indices painted, and a column left transparent.
std::string allIndicesPainted(bool ownColours)
{
    std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
    std::vector<unsigned char> frame(17 * 16 * 4, 0);
    for (unsigned int y = 0; y < 16; ++y)
        for (unsigned int x = 0; x < 16; ++x)
            std::copy(fake.get() + (y * 16 + x) * 4, fake.get() + (y * 16 + x) * 4 + 4, &frame[(y * 17 + x) * 4]);
    unsigned char* pointers[] = {frame.data()};
    return bytesOfEntry(Graphic::create(pointers, fake.get(), 17, 16, 1, 0, 0, 0, ownColours ? 256 : 0,
                                        ownColours ? Graphic::PALETTE : 0));
}

class Modding : public Tool {
protected:
    Outcome unpack(const std::string& archive, const std::string& folder = "mod")
    {
        return lbx({"unpack", archive, "-o", dir.path(folder)});
    }

    Outcome pack(const std::string& folder, const std::string& out, const std::vector<std::string>& more = {})
    {
        std::vector<std::string> args = {"pack", folder, "-o", out};
        args.insert(args.end(), more.begin(), more.end());
        return lbx(args);
    }

    Json manifestOf(const std::string& folder) { return Json::parse(readFile(folder + "/archive.json")); }

    // The sample's INBOX unpacked, ready for an edit.
    std::string unpackedInbox()
    {
        EXPECT_EQ(unpack(sample("INBOX.LBX")).status, 0);
        return dir.path("mod/INBOX");
    }
};

// Replaces pixel (x, y) of an indexed frame with palette index `index`.
void paintIndex(const std::string& path, unsigned int x, unsigned int y, unsigned char index)
{
    lbxtool::Picture picture = lbxtool::readPicture(readFile(path), path);
    ASSERT_TRUE(picture.indexed) << path;
    picture.pixels[y * picture.width + x] = index;
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        << lbxtool::indexedPng(picture.pixels.data(), picture.width, picture.height, picture.palette.data(), path);
}

} // namespace

TEST_F(Modding, EveryArchiveOfTheSampleComesBackByteForByte)
{
    for (const std::string& archive : wholeSample()) {
        const Outcome unpacked = unpack(archive);
        ASSERT_EQ(unpacked.status, 0) << unpacked.err;
        EXPECT_EQ(unpacked.out.find("kept as bytes"), std::string::npos) << unpacked.out;
        const std::string stem = fs::path(archive).stem().string();
        const Outcome packed = pack(dir.path("mod/" + stem), dir.path(stem + ".LBX"));
        ASSERT_EQ(packed.status, 0) << packed.err;
        EXPECT_EQ(packed.err, "");
        EXPECT_NE(packed.out.find(", 0 changed\n"), std::string::npos) << packed.out;
        EXPECT_EQ(readFile(dir.path(stem + ".LBX")), readFile(archive)) << stem;
    }
    const Outcome again = pack(dir.path("mod/INBOX"), dir.path("INBOX.LBX"));
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, "lbx: '" + dir.path("INBOX.LBX") + "' already exists; --force replaces it\n");
    EXPECT_EQ(pack(dir.path("mod/INBOX"), dir.path("INBOX.LBX"), {"--force"}).status, 0);
}

TEST_F(Modding, EveryKindAndUnusualSettingComeBackByteForByte)
{
    std::vector<std::string> entries = graphicsOfEverySetting();
    for (Content* entry : entriesOfEveryKind())
        entries.push_back(bytesOfEntry(entry));
    for (Content* entry : animations())
        entries.push_back(bytesOfEntry(entry));
    std::vector<std::string> strings = {"", "plain", "line\nbreak\ttab\\"};
    strings.push_back("");
    for (int byte = 1; byte < 256; ++byte)
        strings.back() += static_cast<char>(byte);
    entries.push_back(bytesOfEntry(Content::Text::create(strings)));
    entries.push_back(le16(2) + le16(5) + std::string("ab\0\0\0", 5) + "hello"); // records the rule would not choose
    entries.push_back(allIndicesPainted(true));
    entries.push_back(allIndicesPainted(false));
    entries.push_back(entryBytes(sample("SPHERSFX.LBX"))[0]); // the sample's sound
    const std::string archivePath = dir.file("every.lbx", archive(entries));

    const Outcome unpacked = unpack(archivePath);
    ASSERT_EQ(unpacked.status, 0) << unpacked.err;
    const Json manifest = manifestOf(dir.path("mod/every"));
    const struct {
        std::size_t entry;
        std::string kind;
    } expected[] = {
        {0, "graphic"},   {1, "graphic"},  {31, "graphic"}, {32, "text"},  {33, "bytes"},
        {36, "cursor"},   {40, "font"},    {41, "sound"},   {43, "bytes"},   {44, "graphic"},
        {45, "graphic"}, {46, "text"},    {47, "text"},    {48, "graphic"}, {49, "bytes"},
    };
    for (const auto& e : expected)
        EXPECT_EQ(manifest["entries"][e.entry]["kind"], e.kind) << e.entry;
    EXPECT_EQ(manifest["entries"][47]["recordLength"], 5);
    // Frame 3 of this animation repeats pixels of frame 2 that the encoder
    // would leave out: verify finds it different too.
    EXPECT_EQ(manifest["entries"][43]["why"], "made again from its editable form it comes out with other bytes");
    EXPECT_EQ(manifest["entries"][49]["why"], "made again from its editable form it comes out with other bytes");
    EXPECT_EQ(lbxtool::readPicture(readFile(dir.path("mod/every/every_048_000.png")), "").indexed, false)
        << "all 256 indices painted and transparency: RGBA";
    EXPECT_EQ(lbxtool::readPicture(readFile(dir.path("mod/every/every_000_000.png")), "").indexed, true);

    const Outcome packed = pack(dir.path("mod/every"), dir.path("again.lbx"));
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_EQ(readFile(dir.path("again.lbx")), readFile(archivePath));
}

// The header area is the writer's own; an original with other bytes there
// is told once, and its entries still come back.
TEST_F(Modding, AHeaderTheWriterWouldNotWriteIsToldOnceAndTheEntriesStay)
{
    std::string untagged = archive({"abc", le16(1) + le16(3) + "Sol"}, false);
    untagged[2000] = 'x';
    const std::string original = dir.file("odd.lbx", untagged);
    ASSERT_EQ(unpack(original).status, 0);
    const Outcome packed = pack(dir.path("mod/odd"), dir.path("again.lbx"));
    ASSERT_EQ(packed.status, 0);
    EXPECT_EQ(packed.err, "lbx: warning: the header area of the archive unpacked into " + dir.path("mod/odd") +
                              "/archive.json held bytes the writer does not write (no tag word); the entries are as "
                              "they were\n");
    EXPECT_EQ(entryBytes(dir.path("again.lbx")), entryBytes(original));
    EXPECT_NE(readFile(dir.path("again.lbx")), readFile(original));
}

// One edit of each kind changes its entry alone, and the archive verifies.
TEST_F(Modding, AnEditChangesItsEntryAndNothingElse)
{
    for (const char* name : {"INBOX.LBX", "STARNAME.LBX", "SPHERSFX.LBX"})
        ASSERT_EQ(unpack(sample(name)).status, 0);
    const std::string mod = dir.path("mod");
    // The sound cut to its first 56 samples, its lengths told so.
    std::string wave = readFile(dir.path("mod/SPHERSFX/SPHERSFX_000.wav")).substr(0, 100);
    wave.replace(4, 4, le32(92));
    wave.replace(40, 4, le32(56));
    const struct {
        std::string stem;
        unsigned int entry;
        std::function<void()> edit;
        std::function<void(Content*)> check;
    } cases[] = {
        {"INBOX", 1, [&] { paintIndex(mod + "/INBOX/INBOX_001_002.png", 3, 4, 200); },
         [&](Content* entry) {
             std::unique_ptr<unsigned char[]> fake(Content::Palette::fake());
             entry->graphic()->setPalette(fake.get());
             EXPECT_EQ(std::vector<unsigned char>(entry->graphic()->frame(2) + (4 * 48 + 3) * 4,
                                                  entry->graphic()->frame(2) + (4 * 48 + 3) * 4 + 4),
                       std::vector<unsigned char>(fake.get() + 200 * 4, fake.get() + 201 * 4));
             entry->graphic()->setPalette(nullptr);
         }},
        {"STARNAME", 0,
         [&] {
             const std::string names = mod + "/STARNAME/STARNAME_000.txt";
             std::string lines = readFile(names);
             lines.replace(lines.find("Vega"), 4, "V\\xE9ga\\nnorth");
             std::ofstream(names) << lines;
         },
         [](Content* entry) {
             ASSERT_EQ(entry->text()->size(), 8u);
             EXPECT_EQ(entry->text()->get(1), "V\xE9ga\nnorth");
         }},
        {"SPHERSFX", 0, [&] { std::ofstream(mod + "/SPHERSFX/SPHERSFX_000.wav", std::ios::binary) << wave; },
         [&](Content* entry) { EXPECT_EQ(bytesOf(entry->data(), entry->size()), wave); }},
    };
    for (const auto& c : cases) {
        c.edit();
        const std::string before = sample(c.stem + ".LBX"), after = dir.path(c.stem + ".LBX");
        const Outcome packed = pack(mod + "/" + c.stem, after);
        ASSERT_EQ(packed.status, 0) << packed.err;
        EXPECT_NE(packed.out.find(", 1 changed\n  changed " + after + "[" + std::to_string(c.entry) + "]: "),
                  std::string::npos)
            << packed.out;
        std::vector<std::string> was = entryBytes(before), now = entryBytes(after);
        ASSERT_EQ(was.size(), now.size());
        for (std::size_t i = 0; i < was.size(); ++i)
            EXPECT_EQ(was[i] == now[i], i != c.entry) << c.stem << " entry " << i;
        File packedArchive(after);
        c.check(packedArchive[c.entry]);
        EXPECT_EQ(lbx({"verify", after}).status, 0) << c.stem;
    }
}

TEST_F(Modding, AChangedFrameCountOrSizeIsAllowedAndReported)
{
    const std::string folder = unpackedInbox();
    fs::copy_file(folder + "/INBOX_001_007.png", folder + "/INBOX_001_008.png");
    Json manifest = manifestOf(folder);
    manifest["entries"][1]["frames"].push_back("INBOX_001_008.png");
    std::ofstream(folder + "/archive.json") << manifest.dump(1);
    const Outcome packed = pack(folder, dir.path("INBOX.LBX"));
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_NE(packed.out.find("changed " + dir.path("INBOX.LBX") +
                              "[1]: was graphic (8 frames of 48x32), becomes graphic (9 frames of 48x32); frame 8\n"),
              std::string::npos)
        << packed.out;
    EXPECT_EQ(packed.err, "") << "the header area differs in its offsets alone";
    EXPECT_EQ(lbx({"verify", dir.path("INBOX.LBX")}).status, 0);
}

// Pack names the parts of an entry that changed, by the files that differ
// from those unpack wrote, or its settings when none does.
TEST_F(Modding, AChangedEntryIsToldByThePartsThatChanged)
{
    const struct {
        std::string what;
        std::function<void(const std::string& folder)> edit;
        std::string change;
    } cases[] = {
        {"two frames repainted",
         [](const std::string& folder) {
             paintIndex(folder + "/INBOX_001_002.png", 0, 0, 9);
             paintIndex(folder + "/INBOX_001_005.png", 47, 31, 9);
         },
         "[1]: graphic (8 frames of 48x32); frames 2, 5\n"},
        {"a palette colour",
         [](const std::string& folder) {
             std::string palette = readFile(folder + "/INBOX_000.pal");
             palette.replace(palette.find("32 80 224"), 9, "36 80 224");
             std::ofstream(folder + "/INBOX_000.pal", std::ios::binary | std::ios::trunc) << palette;
         },
         "[0]: graphic (1 frame of 64x40); palette\n"},
        {"a setting in the manifest",
         [this](const std::string& folder) {
             Json manifest = manifestOf(folder);
             manifest["entries"][1]["clearMod"] = 1;
             std::ofstream(folder + "/archive.json", std::ios::trunc) << manifest.dump(1);
         },
         "[1]: graphic (8 frames of 48x32); its settings in archive.json\n"},
    };
    for (const auto& c : cases) {
        fs::remove_all(dir.path("mod"));
        const std::string folder = unpackedInbox();
        c.edit(folder);
        const std::string out = dir.path("INBOX.LBX");
        const Outcome packed = pack(folder, out, {"--force"});
        ASSERT_EQ(packed.status, 0) << c.what << ": " << packed.err;
        EXPECT_NE(packed.out.find(", 1 changed\n  changed " + out + c.change), std::string::npos)
            << c.what << ": " << packed.out;
    }
}

// A frame that an editor saved as RGBA goes back by exact colour; a colour
// the palette lacks is refused where it stands, or with --nearest mapped.
TEST_F(Modding, RgbaFramesMapBackByExactColourOrTheNearest)
{
    const std::string original = dir.file("colours.lbx", archive({ownColours()})); // 256 colours, all different
    ASSERT_EQ(unpack(original).status, 0);
    const std::string frame = dir.path("mod/colours/colours_000_001.png");
    const lbxtool::Picture indexed = lbxtool::readPicture(readFile(frame), frame);
    std::vector<unsigned char> rgba = lbxtool::rgbaOf(indexed);
    writePng(frame, rgba, indexed.width, indexed.height);
    const Outcome same = pack(dir.path("mod/colours"), dir.path("same.lbx"));
    ASSERT_EQ(same.status, 0) << same.err;
    EXPECT_EQ(readFile(dir.path("same.lbx")), readFile(original));

    const std::size_t at = (2 * indexed.width + 1) * 4; // x 1, y 2
    rgba[at] = 9;
    rgba[at + 1] = 251;
    rgba[at + 2] = 130;
    rgba[at + 3] = 255;
    writePng(frame, rgba, indexed.width, indexed.height);
    const Outcome refused = pack(dir.path("mod/colours"), dir.path("new.lbx"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "lbx: '" + frame +
                               "': frame 1, x 1, y 2: colour 9,251,130 is not in the entry's palette (--nearest "
                               "takes the nearest)\n");
    EXPECT_FALSE(fs::exists(dir.path("new.lbx")));
    const Outcome nearest = pack(dir.path("mod/colours"), dir.path("new.lbx"), {"--nearest"});
    EXPECT_EQ(nearest.status, 0) << nearest.err;
    EXPECT_NE(nearest.out.find(", 1 changed\n"), std::string::npos);
}

TEST_F(Modding, ABadFolderIsRefusedInOneLineAndNothingIsWritten)
{
    const std::string folder = unpackedInbox();
    ASSERT_EQ(unpack(sample("STARNAME.LBX")).status, 0);
    const std::string names = dir.path("mod/STARNAME");
    const std::string manifest = readFile(folder + "/archive.json");
    const std::string frame = folder + "/INBOX_001_003.png";
    const std::string original = readFile(frame);
    std::vector<unsigned char> small(10 * 10 * 4, 255);
    const struct {
        std::string folder;
        std::function<void()> spoil;
        std::string message;
    } cases[] = {
        {folder, [&] { fs::remove(frame); },
         "'" + frame + "' is missing (entry 1 of '" + folder + "/archive.json')"},
        {folder, [&] { dir.file("mod/INBOX/archive.json", manifest.substr(0, 40)); },
         "'" + folder + "/archive.json' is not valid JSON (parse error at line 3, column 13: syntax error while "
                        "parsing value - unexpected end of input; expected '[', '{', or a literal)"},
        {folder,
         [&] {
             Json changed = Json::parse(manifest);
             changed["entries"][0]["kind"] = "sprite";
             dir.file("mod/INBOX/archive.json", changed.dump());
         },
         "'" + folder + "/archive.json' entry 0: unknown kind 'sprite' (known: graphic, cursor, text, font, sound, bytes)"},
        {folder, [&] { writePng(frame, small, 10, 10); },
         "'" + frame + "' is 10x10, the entry's first frame 48x32"},
        {names, [&] { dir.file("mod/STARNAME/STARNAME_000.txt", "Sol\nVe\\qga\n"); },
         "'" + names + "/STARNAME_000.txt' line 2: unknown escape '\\q' at column 3"},
    };
    for (const auto& c : cases) {
        c.spoil();
        const Outcome run = pack(c.folder, dir.path("out.lbx"));
        EXPECT_EQ(run.status, 1) << c.message;
        EXPECT_EQ(run.err, "lbx: " + c.message + "\n");
        EXPECT_FALSE(fs::exists(dir.path("out.lbx")));
        fs::remove(folder + "/notes.txt");
        dir.file("mod/INBOX/archive.json", manifest);
        dir.file("mod/INBOX/INBOX_001_003.png", original);
    }
}

TEST_F(Modding, ImportTakesUnpackedFramesByTheirIndices)
{
    const std::string folder = unpackedInbox();
    std::vector<std::string> args = {"import", dir.path("ball.graphic"), "--flags", "loop"};
    for (unsigned int f = 0; f < 8; ++f)
        args.push_back(frameFile(folder, "INBOX_001", f));
    ASSERT_EQ(lbx(args).status, 0);
    EXPECT_EQ(readFile(dir.path("ball.graphic")), entryBytes(sample("INBOX.LBX"))[1]);
}

TEST_F(Modding, UnpackWritesOnlyIntoAnEmptyFolderUnlessForced)
{
    fs::create_directories(dir.path("mod/INBOX"));
    dir.file("mod/INBOX/mine.txt", "mine");
    const Outcome refused = unpack(sample("INBOX.LBX"));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "lbx: '" + dir.path("mod/INBOX") + "' already holds files; --force writes into it\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path("mod/INBOX")), fs::directory_iterator()), 1);
    EXPECT_EQ(lbx({"unpack", "--force", sample("INBOX.LBX"), "-o", dir.path("mod")}).status, 0);
    EXPECT_EQ(readFile(dir.path("mod/INBOX/mine.txt")), "mine");
}
