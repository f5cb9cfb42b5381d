// Frames that come back from a paint program keep the transparency and the
// colours the modder saw, or pack and import say what they did instead, and
// with --strict refuse, leaving every file as it was.
#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "tests/tool/ToolRun.h"
#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Png.h"

#include <algorithm>
#include <functional>
#include <set>

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;
using lbxtool::CLEAR;
using lbxtool::Indices;
using lbxtool::Picture;

namespace {

Picture readFrame(const std::string& path)
{
    return lbxtool::readPicture(readFile(path), path);
}

void writeIndexed(const std::string& path, const Picture& picture)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        << lbxtool::indexedPng(picture.pixels.data(), picture.width, picture.height, picture.palette.data(), path);
}

// Pixel positions of `picture` that hold `index`.
std::vector<std::size_t> pixelsAt(const Picture& picture, unsigned char index)
{
    std::vector<std::size_t> at;
    for (std::size_t p = 0; p < picture.pixels.size(); ++p)
        if (picture.pixels[p] == index)
            at.push_back(p);
    return at;
}

// As a paint program that drops the transparency chunk saves the frame.
std::vector<std::size_t> dropTransparency(const std::string& path, unsigned char transparent)
{
    Picture picture = readFrame(path);
    for (std::size_t alpha = 3; alpha < picture.palette.size(); alpha += 4)
        picture.palette[alpha] = 255;
    writeIndexed(path, picture);
    return pixelsAt(picture, transparent);
}

// The frame saved as RGBA, the first `count` painted pixels given `alpha`.
std::vector<std::size_t> partlyTransparentRgba(const std::string& path, std::size_t count, unsigned char alpha)
{
    const Picture picture = readFrame(path);
    std::vector<unsigned char> rgba = lbxtool::rgbaOf(picture);
    std::vector<std::size_t> at;
    for (std::size_t p = 0; p < rgba.size() / 4 && at.size() < count; ++p)
        if (rgba[p * 4 + 3] == 255) {
            rgba[p * 4 + 3] = alpha;
            at.push_back(p);
        }
    writePng(path, rgba, picture.width, picture.height);
    return at;
}

// The palette entry of the colour at the frame's first pixel made half
// transparent: every pixel of that index is.
std::vector<std::size_t> halfTransparentIndex(const std::string& path)
{
    Picture picture = readFrame(path);
    picture.palette[picture.pixels[0] * 4 + 3] = 128;
    writeIndexed(path, picture);
    return pixelsAt(picture, picture.pixels[0]);
}

// The indices frame `f` of entry `index` stores, CLEAR where it paints nothing.
Indices storedFrame(Content* entry, unsigned int f)
{
    PaletteArray fake(Content::Palette::fake());
    if (entry->type() == Content::CURSOR) {
        std::unique_ptr<unsigned char[]> decoded(entry->cursor()->gen(f, fake.get()));
        return lbxtool::indicesOfFake(decoded.get(), 24 * 24);
    }
    Content::Graphic* graphic = entry->graphic();
    graphic->setPalette(fake.get());
    Indices indices = lbxtool::indicesOfFake(graphic->frame(f), std::size_t(graphic->width()) * graphic->height());
    graphic->setPalette(nullptr);
    return indices;
}

Indices storedFrame(const std::string& archivePath, unsigned int index, unsigned int f)
{
    File archive(archivePath);
    return storedFrame(archive[index], f);
}

Indices indicesOf(const Picture& picture)
{
    return Indices(picture.pixels.begin(), picture.pixels.end());
}

std::vector<std::string> entryBytes(const std::string& archivePath)
{
    File archive(archivePath);
    std::vector<std::string> entries;
    for (unsigned int i = 0; i < archive.size(); ++i)
        entries.push_back(bytesOf(archive[i]));
    return entries;
}

std::string colour(const Picture& picture, unsigned int index)
{
    const unsigned char* entry = &picture.palette[index * 4];
    return std::to_string(entry[0]) + "," + std::to_string(entry[1]) + "," + std::to_string(entry[2]);
}

class EditLoopColour : public Tool {
protected:
    std::string unpacked(const std::string& stem, const std::string& folder)
    {
        const Outcome run = lbx({"unpack", sample(stem + ".LBX"), "-o", dir.path(folder)});
        EXPECT_EQ(run.status, 0) << run.err;
        return dir.path(folder + "/" + stem);
    }

    // Every file of the test's folder but what the tool printed: what a
    // refusal must leave as it was.
    std::map<std::string, std::string> files()
    {
        std::map<std::string, std::string> all = snapshot(dir.path(""));
        all.erase(dir.path("stdout"));
        all.erase(dir.path("stderr"));
        return all;
    }
};

std::vector<std::string> joined(std::vector<std::string> head, const std::vector<std::string>& tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

} // namespace

// Unpack writes down the index that stands for transparent pixels, so that
// pack knows it when an editor has made it opaque.
TEST_F(EditLoopColour, TheManifestNamesTheTransparentIndexOfGraphicsThatHaveOne)
{
    const struct {
        std::string stem;
        unsigned int entry;
        int transparent; // -1: none written
    } cases[] = {
        {"SPHERSFX", 1, 255}, // a sphere on nothing
        {"CONFIRM", 2, 255},  // a spinner drawn on an empty picture
        {"INBOX", 1, -1},     // every pixel painted
        {"FONTS", 1, -1},     // a cursor: index 0 is transparent anyway
    };
    for (const auto& c : cases) {
        const std::string folder = unpacked(c.stem, "mod-" + c.stem);
        const lbxtool::Json entry = lbxtool::Json::parse(readFile(folder + "/archive.json"))["entries"][c.entry];
        if (c.transparent < 0) {
            EXPECT_FALSE(entry.contains("transparentIndex")) << c.stem;
        } else {
            EXPECT_EQ(entry["transparentIndex"], c.transparent) << c.stem;
            const Picture first = readFrame(folder + "/" + entry["frames"][0].get<std::string>());
            EXPECT_EQ(first.palette[c.transparent * 4 + 3], 0) << c.stem;
        }
    }
}

// --strict refuses only what changed: every unedited archive packs with it,
// silently and byte for byte.
TEST_F(EditLoopColour, StrictPacksEveryUneditedArchiveSilently)
{
    for (const std::string& archive : wholeSample()) {
        const std::string stem = fs::path(archive).stem().string();
        const std::string folder = unpacked(stem, "mod");
        const Outcome packed = lbx({"pack", folder, "-o", dir.path(stem + ".LBX"), "--strict"});
        ASSERT_EQ(packed.status, 0) << packed.err;
        EXPECT_EQ(packed.err, "");
        EXPECT_EQ(readFile(dir.path(stem + ".LBX")), readFile(archive)) << stem;
    }
}

// Pixels that the file shows opaque at the transparent index, or partly
// transparent, are stored transparent and named with their count; --strict
// refuses with the same facts and writes nothing.
TEST_F(EditLoopColour, PackSaysOrRefusesTransparencyTheFrameNoLongerShows)
{
    const std::string opaqueAt = " opaque at index ";
    const std::string lost = ", the entry's transparent index (the file's palette no longer makes it transparent)";
    const std::string partly = " partly transparent (alpha neither 0 nor 255)";
    const struct {
        std::string what, stem;
        unsigned int entry, frame;
        std::function<std::vector<std::size_t>(const std::string& path)> edit; // the pixels it touches
        std::function<std::string(std::size_t count)> shows;                   // what the file shows of them
        std::string mend;
    } cases[] = {
        {"a graphic's frame without its transparency", "SPHERSFX", 1, 0,
         [](const std::string& path) { return dropTransparency(path, 255); },
         [&](std::size_t count) { return std::to_string(count) + " pixels are" + opaqueAt + "255" + lost; },
         "save the frame with index 255 transparent, or paint with another index"},
        {"a cursor's frame without its transparency", "FONTS", 1, 3,
         [](const std::string& path) { return dropTransparency(path, 0); },
         [&](std::size_t count) { return std::to_string(count) + " pixels are" + opaqueAt + "0" + lost; },
         "save the frame with index 0 transparent, or paint with another index"},
        {"an RGBA frame with half-transparent pixels", "CONFIRM", 2, 1,
         [](const std::string& path) { return partlyTransparentRgba(path, 3, 128); },
         [&](std::size_t count) { return std::to_string(count) + " pixels are" + partly; },
         "make each fully transparent or fully opaque"},
        {"an RGBA frame with one faint pixel", "INBOX", 0, 0,
         [](const std::string& path) { return partlyTransparentRgba(path, 1, 1); },
         [&](std::size_t) { return "1 pixel is" + partly; }, "make each fully transparent or fully opaque"},
        {"a half-transparent palette entry", "INBOX", 1, 0, halfTransparentIndex,
         [&](std::size_t count) { return std::to_string(count) + " pixels are" + partly; },
         "make each fully transparent or fully opaque"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string original = sample(c.stem + ".LBX");
        const std::string folder = unpacked(c.stem, "mod-" + std::to_string(&c - cases));
        const std::string frame = frameFile(folder, c.stem + "_00" + std::to_string(c.entry), c.frame);
        const std::vector<std::size_t> touched = c.edit(frame);
        ASSERT_FALSE(touched.empty());
        const std::string shows = "'" + frame + "': " + c.shows(touched.size());

        const std::string out = dir.file("out.lbx", "the modder's own file");
        const auto before = files();
        const Outcome refused = lbx({"pack", folder, "-o", out, "--force", "--strict"});
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err, "lbx: " + shows + "; " + c.mend + "\n");
        EXPECT_TRUE(files() == before) << "a refusal changed a file";

        const Outcome packed = lbx({"pack", folder, "-o", out, "--force"});
        ASSERT_EQ(packed.status, 0) << packed.err;
        EXPECT_EQ(packed.err, "lbx: warning: " + shows + (touched.size() == 1 ? "; it is" : "; they are") +
                                  " stored transparent\n");
        Indices expected = storedFrame(original, c.entry, c.frame);
        for (const std::size_t p : touched)
            expected[p] = CLEAR;
        EXPECT_EQ(storedFrame(out, c.entry, c.frame), expected);
        const std::vector<std::string> was = entryBytes(original), now = entryBytes(out);
        ASSERT_EQ(was.size(), now.size());
        for (std::size_t i = 0; i < was.size(); ++i) {
            if (i != c.entry) {
                EXPECT_EQ(now[i], was[i]) << "entry " << i;
            }
        }
    }
}

// Frames taken by their indices bring colours of their own. Where those are
// not the colours the entry is shown in (the archive's with -i, the first
// frame's with --flags palette, none otherwise), import says so for each
// file; --strict refuses instead, before anything is written.
TEST_F(EditLoopColour, ImportSaysOrRefusesColoursThatAreNotStored)
{
    const std::string folder = unpacked("INBOX", "mod");
    const std::string inbox = sample("INBOX.LBX"), fonts = sample("FONTS.LBX");
    const std::string pristine = readFile(inbox);
    std::vector<std::string> ball;
    for (unsigned int f = 0; f < 8; ++f)
        ball.push_back(frameFile(folder, "INBOX_001", f));

    // Frame 0 with two of its painted colours changed, one only below what
    // the game tells apart, and one colour it does not paint.
    const Picture first = readFrame(ball[0]);
    Picture repainted = first;
    const unsigned char a = first.pixels[0];
    const auto other = std::find_if(first.pixels.begin(), first.pixels.end(), [&](unsigned char i) { return i != a; });
    ASSERT_NE(other, first.pixels.end());
    const unsigned char b = *other;
    const auto third =
        std::find_if(first.pixels.begin(), first.pixels.end(), [&](unsigned char i) { return i != a && i != b; });
    ASSERT_NE(third, first.pixels.end());
    const std::set<unsigned char> used(first.pixels.begin(), first.pixels.end());
    unsigned int unused = 0;
    while (used.count(static_cast<unsigned char>(unused)) != 0)
        ++unused;
    ASSERT_LT(unused, 256u);
    const auto paint = [&](unsigned int index, std::vector<unsigned char> rgb) {
        std::copy(rgb.begin(), rgb.end(), &repainted.palette[index * 4]);
    };
    paint(a, {4, 200, 4});
    paint(b, {200, 4, 4});
    paint(unused, {1, 2, 3});
    repainted.palette[*third * 4] ^= 1;
    const std::string changed = dir.path("changed.png");
    writeIndexed(changed, repainted);
    const unsigned int lowest = std::min(a, b);
    const std::string differ = "'" + changed + "': 2 colours it paints are not the entry's (index " +
                               std::to_string(lowest) + " is " + colour(repainted, lowest) + " in it, " +
                               colour(first, lowest) + " in the entry)";
    const std::string dropped = "'" + ball[0] + "': its colours ";
    const std::string none = ", since the entry holds none without --flags palette";
    const std::string maps = "-p ARCHIVE:INDEX maps it by colour";

    std::vector<std::string> repaintedBall = ball;
    repaintedBall[0] = changed;
    const std::string out = dir.path("out.graphic");
    const struct {
        std::string what;
        std::vector<std::string> args;
        std::string warning, refusal; // empty: silent, and --strict takes it too
        std::function<void()> check;
    } cases[] = {
        {"its own frames back into the archive", joined({"import", inbox, "-i", "1", "--flags", "loop"}, ball),
         "", "", [&] { EXPECT_EQ(readFile(inbox), pristine); }},
        {"a frame in other colours into the archive",
         joined({"import", inbox, "-i", "1", "--flags", "loop"}, repaintedBall),
         differ + "; it is imported by its indices, its colours not stored (" + maps + ")",
         differ + "; " + maps + " instead", [&] { EXPECT_EQ(storedFrame(inbox, 1, 0), indicesOf(repainted)); }},
        {"a frame in other colours than the first, whose palette is stored",
         {"import", out, "--flags", "palette", ball[0], changed},
         differ + "; it is imported by its indices, its colours not stored (" + maps + ")",
         differ + "; " + maps + " instead",
         [&] {
             const std::unique_ptr<Content> entry = entryOf(readFile(out));
             PaletteArray stored(Content::Palette::empty());
             entry->graphic()->palette(stored.get());
             EXPECT_EQ(std::vector<unsigned char>(stored.get(), stored.get() + 1024), first.palette);
             EXPECT_EQ(storedFrame(entry.get(), 1), indicesOf(repainted));
         }},
        {"a frame into an entry that holds no colours", {"import", out, ball[0]},
         dropped + "are not stored" + none + "; it is imported by its indices (" + maps + ")",
         dropped + "would not be stored" + none + "; " + maps + " instead",
         [&] { EXPECT_EQ(storedFrame(entryOf(readFile(out)).get(), 0), indicesOf(first)); }},
        {"a frame mapped by colour", {"import", out, "-p", fonts + ":1", ball[0]}, "", "",
         [&] { EXPECT_EQ(storedFrame(entryOf(readFile(out)).get(), 0), indicesOf(first)); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::vector<std::string>& args = c.args;
        std::vector<std::string> strict = args;
        strict.push_back("--strict");
        if (!c.refusal.empty()) {
            const auto before = files();
            const Outcome refused = lbx(strict);
            EXPECT_EQ(refused.status, 1);
            EXPECT_EQ(refused.err, "lbx: " + c.refusal + "\n");
            EXPECT_TRUE(files() == before) << "a refusal changed a file";
        }
        const Outcome run = lbx(c.refusal.empty() ? strict : args);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, c.warning.empty() ? "" : "lbx: warning: " + c.warning + "\n");
        c.check();
        dir.file("sample/INBOX.LBX", pristine);
        fs::remove(out);
    }
}

// Import paints only fully opaque pixels, as pack does, whichever way it
// takes the frame; partly transparent ones are said, or refused.
TEST_F(EditLoopColour, ImportStoresPartlyTransparentPixelsTransparent)
{
    const std::string folder = unpacked("INBOX", "mod");
    const std::string frame = frameFile(folder, "INBOX_001", 0);
    const Picture indexed = readFrame(frame);
    const std::string rgba = dir.path("rgba.png"), half = dir.path("half.png");
    fs::copy_file(frame, rgba);
    fs::copy_file(frame, half);
    const std::vector<std::size_t> faint = partlyTransparentRgba(rgba, 2, 128);
    const std::vector<std::size_t> halfIndex = halfTransparentIndex(half);
    const std::string out = dir.path("out.graphic");
    const struct {
        std::string path;
        std::vector<std::string> args;
        std::vector<std::size_t> touched;
    } cases[] = {
        {rgba, {"-p", sample("FONTS.LBX") + ":1"}, faint},
        {half, {"--flags", "palette"}, halfIndex},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        std::vector<std::string> args = {"import", out, c.path};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const std::string shows = "'" + c.path + "': " + std::to_string(c.touched.size()) +
                                  " pixels are partly transparent (alpha neither 0 nor 255)";
        std::vector<std::string> strict = args;
        strict.push_back("--strict");
        const auto before = files();
        const Outcome refused = lbx(strict);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.err, "lbx: " + shows + "; make each fully transparent or fully opaque\n");
        EXPECT_TRUE(files() == before) << "a refusal changed a file";

        const Outcome run = lbx(args);
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.err, "lbx: warning: " + shows + "; they are stored transparent\n");
        Indices expected = indicesOf(indexed);
        for (const std::size_t p : c.touched)
            expected[p] = CLEAR;
        EXPECT_EQ(storedFrame(entryOf(readFile(out)).get(), 0), expected);
        fs::remove(out);
    }
}

// A raw graphic paints every pixel: it has no transparency to store such
// pixels as, so a frame for one that is not fully opaque is refused, with
// or without --strict.
TEST_F(EditLoopColour, ARawGraphicRefusesAFrameThatIsNotFullyOpaque)
{
    const std::string folder = unpacked("CONFIRM", "mod");
    const std::string button = frameFile(folder, "CONFIRM_001", 0);
    const std::string erased = dir.path("erased.png"), half = dir.path("half.png");
    fs::copy_file(button, erased);
    fs::copy_file(button, half);
    partlyTransparentRgba(erased, 1, 0);
    const std::size_t halfCount = halfTransparentIndex(half).size();
    const auto refusal = [](const std::string& path, std::size_t count) {
        return "'" + path + "': " + std::to_string(count) + (count == 1 ? " pixel is" : " pixels are") +
               " not fully opaque, and a raw graphic paints every pixel; paint " + (count == 1 ? "it" : "them") +
               ", or take raw out of its flags";
    };
    const std::string out = dir.path("out.lbx");
    const struct {
        std::string what;
        std::function<void()> edit; // undone by the next case's
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {"a pixel erased in pack's frame", [&] { fs::copy_file(erased, button, fs::copy_options::overwrite_existing); },
         {"pack", folder, "-o", out}, refusal(button, 1)},
        {"a half-transparent colour in pack's frame",
         [&] { fs::copy_file(half, button, fs::copy_options::overwrite_existing); }, {"pack", folder, "-o", out},
         refusal(button, halfCount)},
        {"import by colour", [] {}, {"import", out, "--flags", "raw", "-p", sample("CONFIRM.LBX") + ":0", erased},
         refusal(erased, 1)},
        {"import by indices", [] {}, {"import", out, "--flags", "raw", half}, refusal(half, halfCount)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.edit();
        for (const bool strict : {false, true}) {
            std::vector<std::string> args = c.args;
            if (strict)
                args.push_back("--strict");
            const auto before = files();
            const Outcome refused = lbx(args);
            EXPECT_EQ(refused.status, 1);
            EXPECT_EQ(refused.err, "lbx: " + c.message + "\n");
            EXPECT_TRUE(files() == before) << "a refusal changed a file";
        }
    }
}
