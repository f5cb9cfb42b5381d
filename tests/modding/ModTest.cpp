// Mods and whole-file patches: what diff writes, patch gives back byte for
// byte, and what a damaged, foreign or conflicting patch is refused with.
#include "archive/File.h"
#include "kinds/Text.h"
#include "tests/support/Fixtures.h"
#include "tests/support/ModExercise.h"
#include "tools/modding/Base64.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Crc32.h"
#include "tools/modding/Header.h"
#include "tools/modding/Mod.h"
#include "tools/modding/Patch.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace fixtures;
using namespace lbxtool;

namespace {

class Said : public Warnings {
public:
    void warn(const std::string& message) override { lines.push_back(message); }
    std::vector<std::string> lines;
};

std::vector<Bytes> bytesOfAll(std::vector<Content*> entries)
{
    std::vector<Bytes> all;
    for (Content* entry : entries) {
        all.push_back(bytesOf(entry));
        delete entry;
    }
    return all;
}

Bytes tableOf(std::vector<std::string> records)
{
    return bytesOfAll({Content::Text::create(records)}).front();
}

std::vector<std::string> names(unsigned int count, const std::string& stem)
{
    std::vector<std::string> records;
    for (unsigned int i = 0; i < count; ++i)
        records.push_back(stem + std::to_string(i));
    return records;
}

ArchiveBytes written(std::vector<Bytes> entries)
{
    return ArchiveBytes::written(std::move(entries));
}

// The same entries behind a header area that the writer would not write.
ArchiveBytes untagged(std::vector<Bytes> entries)
{
    ArchiveBytes archive = written(std::move(entries));
    const Bytes file = fixtures::archive(archive.entries, false);
    archive.header = file.substr(0, HEADER_AREA_SIZE);
    archive.header.back() = '\x7F';
    return archive;
}

Bytes patched(const ArchiveBytes& base, const std::vector<NamedMod>& mods, bool preferLast = false)
{
    Said said;
    return applyMods(base, "BASE.LBX", mods, preferLast, said).file();
}

NamedMod modOf(const ArchiveBytes& base, const ArchiveBytes& result, const std::string& path = "a.lbxmod",
               bool reversible = false)
{
    return {path, readMod(modFile(makeMod(base, result, "BASE.LBX", reversible)), path)};
}

std::vector<Bytes> everyKind()
{
    return bytesOfAll(entriesOfEveryKind());
}

} // namespace

TEST(Mod, PatchGivesTheNewArchiveAndUndoTheOld)
{
    const std::vector<Bytes> kinds = everyKind();
    std::vector<Bytes> many;
    for (unsigned int i = 0; i < 509; ++i)
        many.push_back(tableOf({"entry " + std::to_string(i % 7)}));
    std::vector<Bytes> manyEdited = many;
    manyEdited[300] = tableOf({"edited"});
    manyEdited[508] = kinds[2];
    std::vector<Bytes> reordered(kinds.rbegin(), kinds.rend());
    std::vector<Bytes> resized = kinds;
    resized[0] = tableOf(names(40, "a long record "));
    std::vector<Bytes> fewRecords = {tableOf(names(30, "star ")), kinds[1]};
    std::vector<Bytes> fewEdited = {tableOf(names(30, "star ")), kinds[1]};
    fewEdited[0].replace(4 + 7 * 100, 4, "Vega");
    const std::vector<Bytes> grown(kinds.begin(), kinds.begin() + 3);

    const struct {
        std::string what;
        ArchiveBytes base, result;
    } cases[] = {
        {"every kind, the same", written(kinds), written(kinds)},
        {"entries added", written(grown), written(kinds)},
        {"entries removed", written(kinds), written(grown)},
        {"entries moved", written(kinds), written(reordered)},
        {"an entry resized", written(kinds), written(resized)},
        {"records of a table", written(fewRecords), written(fewEdited)},
        {"from an empty archive", written({}), written(kinds)},
        {"to an empty archive", written(kinds), written({})},
        {"509 entries", written(many), written(manyEdited)},
        {"a header the writer would not write", untagged(kinds), written(resized)},
        {"to such a header", written(kinds), untagged(grown)},
    };
    for (const auto& c : cases) {
        const NamedMod mod = modOf(c.base, c.result, "a.lbxmod", true);
        EXPECT_EQ(patched(c.base, {mod}), c.result.file()) << c.what;
        EXPECT_EQ(patched(c.result, {{"a.lbxmod", undoOf(mod.mod, "a.lbxmod")}}), c.base.file()) << c.what;
        EXPECT_EQ(applyBps(c.base.file(), "BASE.LBX", bpsPatch(c.base.file(), c.result.file()), "a.bps"),
                  c.result.file())
            << c.what;
    }
}

TEST(Mod, CarriesOnlyWhatChanged)
{
    std::vector<Bytes> entries;
    for (unsigned int i = 0; i < 100; ++i)
        entries.push_back(tableOf(names(20, "record " + std::to_string(i) + " ")));
    std::vector<Bytes> edited = entries;
    edited[4] = tableOf({"new"});
    std::swap(edited[10], edited[11]);
    edited[50].replace(4, 3, "REC");
    const ArchiveBytes base = written(entries), result = written(edited);
    const std::string mod = modFile(makeMod(base, result, "BASE.LBX", false));
    // The new entry whole, one record, a move by reference: a few kilobytes
    // of an archive of 200.
    EXPECT_LT(mod.size(), 4 * (edited[4].size() + 100) / 3 + 2500) << mod;
    const std::string bps = bpsPatch(base.file(), result.file());
    // The offsets of the entries behind the edit all change too.
    EXPECT_LT(bps.size(), edited[4].size() + 4 * edited.size() + 300);
}

TEST(Mod, RefusesAFileThatIsNoModItCanRead)
{
    const ArchiveBytes base = written(everyKind());
    std::vector<Bytes> edited = base.entries;
    edited[1] = "abcd";
    const std::string good = modFile(makeMod(base, written(edited), "BASE.LBX", false));
    const auto with = [&](const std::string& from, const std::string& to) {
        std::string text = good;
        const std::size_t at = text.find(from);
        return at == std::string::npos ? "" : text.replace(at, from.size(), to);
    };
    const std::string bytes = "\"" + toBase64("abcd") + "\"";
    const struct {
        std::string what, text, message;
    } cases[] = {
        {"cut short", good.substr(0, good.rfind('}')),
         "'m' is not valid JSON (parse error at line 28, column 1: syntax error while parsing object - unexpected end "
         "of input; expected '}')"},
        {"another JSON file", "{\"archive\": \"X.LBX\"}", "'m' is not a mod: it has no 'lbxMod'"},
        {"an archive", fixtures::archive({"abc"}), "'m' is neither a mod nor a BPS patch"},
        {"only blanks", " \n", "'m' is neither a mod nor a BPS patch"},
        {"a later format", with("\"lbxMod\": 1", "\"lbxMod\": 2"),
         "'m' is a mod of format 2; this lbx reads format 1 and older, and a newer lbx is needed"},
        {"bytes that are no base64", with(bytes, "\"abc!\""), "'m' entry 1: 'bytes' is not base64"},
        {"bytes changed", with(bytes, "\"" + toBase64("abce") + "\""),
         "'m' entry 1: its bytes do not match their fingerprint: the file is damaged"},
        {"an entry past the largest archive", with("\"index\": 1", "\"index\": 509"),
         "'m': 'index' must be a number from 0 to 508"},
        {"no fingerprint", with("\"fingerprint\"", "\"print\""), "'m': 'fingerprint' is missing"},
    };
    for (const auto& c : cases) {
        ASSERT_FALSE(c.text.empty()) << c.what;
        EXPECT_EQ(thrownBy([&] { readMod(c.text, "m"); }), c.message) << c.what;
    }
    EXPECT_EQ(thrownBy([&] { undoOf(readMod(good, "m"), "m"); }), "'m' cannot be undone: it was made without --reversible");
}

TEST(Mod, RefusesABaseItWasNotMadeFor)
{
    const std::vector<Bytes> kinds = everyKind();
    std::vector<Bytes> edited = kinds, other = kinds;
    edited[1] = "abcd";
    other[1] = "wxyz";
    const NamedMod mod = modOf(written(kinds), written(edited));
    Said said;
    EXPECT_EQ(thrownBy([&] { applyMods(written(other), "x/base.lbx", {mod}, false, said); }),
              "'a.lbxmod' was made for another version of BASE.LBX: entry 1 differs");
    EXPECT_EQ(thrownBy([&] { applyMods(written(other), "x/FONTS.LBX", {mod}, false, said); }),
              "'a.lbxmod' was made for BASE.LBX, not for 'x/FONTS.LBX': entry 1 differs");
    // An archive with an entry where the mod adds one.
    const NamedMod adds = modOf(written({kinds[0]}), written({kinds[0], kinds[1]}));
    EXPECT_EQ(thrownBy([&] { applyMods(written({kinds[0], kinds[2]}), "BASE.LBX", {adds}, false, said); }),
              "'a.lbxmod' was made for another version of BASE.LBX: entry 1 differs");
    // Entries the mod leaves alone may differ: that is what lets mods combine.
    std::vector<Bytes> elsewhere = kinds, both = edited;
    elsewhere[3] = both[3] = "elsewhere";
    EXPECT_EQ(patched(written(elsewhere), {mod}), written(both).file());
}

TEST(Mod, TwoModsOfOneEntryConflictUnlessTheLastIsPreferred)
{
    const std::vector<Bytes> kinds = everyKind();
    std::vector<Bytes> first = kinds, second = kinds;
    first[1] = "first";
    second[1] = "second";
    second[3] = "third";
    const ArchiveBytes base = written(kinds);
    const NamedMod a = modOf(base, written(first), "a.lbxmod"), b = modOf(base, written(second), "b.lbxmod");
    Said said;
    EXPECT_EQ(thrownBy([&] { applyMods(base, "BASE.LBX", {a, b}, false, said); }),
              "'a.lbxmod' and 'b.lbxmod' both change entry 1 of BASE.LBX; --prefer-last lets the later one win");
    EXPECT_EQ(applyMods(base, "BASE.LBX", {a, b}, true, said).file(), written(second).file());
    EXPECT_EQ(said.lines, std::vector<std::string>{"'b.lbxmod' wins over 'a.lbxmod' at entry 1 of BASE.LBX (--prefer-last)"});
    // A mod made on top of another builds on it, and one that makes the same
    // change again changes nothing.
    std::vector<Bytes> onTop = first;
    onTop[1] = "on top";
    EXPECT_EQ(patched(base, {a, modOf(written(first), written(onTop), "c.lbxmod")}), written(onTop).file());
    EXPECT_EQ(patched(base, {a, a}), written(first).file());
}

TEST(Mod, ChangesToOtherRecordsOfATableMerge)
{
    const Bytes table = tableOf(names(30, "star "));
    const auto withRecord = [&](unsigned int number, const std::string& text) {
        Bytes edited = table;
        edited.replace(4 + number * 100, text.size(), text);
        return edited;
    };
    const ArchiveBytes base = written({table});
    const NamedMod a = modOf(base, written({withRecord(3, "Sol")}), "a.lbxmod");
    const NamedMod b = modOf(base, written({withRecord(7, "Vega")}), "b.lbxmod");
    const NamedMod c = modOf(base, written({withRecord(3, "Mira")}), "c.lbxmod");
    Bytes both = withRecord(3, "Sol");
    both.replace(4 + 700, 4, "Vega");
    EXPECT_EQ(patched(base, {a, b}), written({both}).file());
    Said said;
    EXPECT_EQ(thrownBy([&] { applyMods(base, "BASE.LBX", {a, b, c}, false, said); }),
              "'a.lbxmod' and 'c.lbxmod' both change record 3 of entry 0 of BASE.LBX; --prefer-last lets the later "
              "one win");
}

TEST(Mod, RefusesMissingEntriesBetweenOthers)
{
    const std::vector<Bytes> kinds = everyKind();
    const ArchiveBytes base = written({kinds[0], kinds[1]});
    const NamedMod removes = modOf(base, written({kinds[0]}), "a.lbxmod");
    const NamedMod adds = modOf(base, written({kinds[0], kinds[1], kinds[2]}), "b.lbxmod");
    Said said;
    EXPECT_EQ(thrownBy([&] { applyMods(base, "BASE.LBX", {removes, adds}, false, said); }),
              "the mods leave BASE.LBX without an entry 1 but with entries behind it");
}

TEST(Header, WrittenAsTheLibraryWritesIt)
{
    const std::string path = (std::filesystem::temp_directory_path() / "zorv2-header-test.lbx").string();
    for (const unsigned int count : {0u, 1u, 506u, 507u, 508u, 509u}) {
        File archive;
        for (unsigned int i = 0; i < count; ++i)
            archive.push_back(block(Bytes(i % 3, 'x')), i % 3);
        archive.write(path);
        const Bytes file = readFile(path);
        std::vector<std::size_t> sizes;
        for (unsigned int i = 0; i < count; ++i)
            sizes.push_back(i % 3);
        EXPECT_EQ(writtenHeader(sizes), file.substr(0, HEADER_AREA_SIZE)) << count;
    }
    std::filesystem::remove(path);
}

TEST(Bps, NumbersAndChecksumsAsTheFormatDefinesThem)
{
    EXPECT_EQ(crc32Of("123456789"), 0xCBF43926u);
    EXPECT_EQ(crc32Of(""), 0u);
    // "BPS1", source 0, target 3, no metadata; TargetRead 1 byte "a", then
    // TargetCopy of 2 from 0 back: "aaa"; the three CRC32s.
    Bytes patch = "BPS1" + octets({0x80, 0x83, 0x80, 0x81}) + "a" + octets({0x87, 0x80});
    patch += le32(crc32Of("")) + le32(crc32Of("aaa"));
    patch += le32(crc32Of(patch));
    EXPECT_EQ(applyBps("", "s", patch, "p.bps"), "aaa");
    // A number is 7 bits a byte, the last flagged, each step less one: 128 is 00 80.
    const Bytes source(200, 's');
    EXPECT_EQ(bpsPatch(source, source).substr(4, 4), octets({0x48, 0x80, 0x48, 0x80})); // 200 = 0x48 + 128
    EXPECT_EQ(bpsPatch(Bytes(128, 's'), "").substr(4, 3), octets({0x00, 0x80, 0x80}));
}

TEST(Bps, RefusesADamagedOrForeignPatch)
{
    const Bytes source = "the source of a patch, long enough to copy from", target = "the target, copied from its source";
    const Bytes patch = bpsPatch(source, target);
    Bytes flipped = patch;
    flipped[6] ^= 1;
    Bytes resealed = patch.substr(0, patch.size() - 4);
    resealed[4] = '\x85'; // a source of 5 bytes
    resealed += le32(crc32Of(resealed));
    const struct {
        std::string what, source, patch, message;
    } cases[] = {
        {"a byte changed", source, flipped, "'p.bps' is damaged: its checksum does not match"},
        {"cut short", source, patch.substr(0, patch.size() - 1), "'p.bps' is damaged: its checksum does not match"},
        {"no patch", source, "PK\x03\x04", "'p.bps' is damaged: it is not a BPS patch"},
        {"another source", source + "!", patch, "'p.bps' was made for another file than 's': the size of its source differs"},
        {"another source of its size", Bytes(source.size(), 'x'), patch,
         "'p.bps' was made for another file than 's': the CRC32 of its source differs"},
        {"a size that lies", source.substr(0, 5), resealed,
         "'p.bps' was made for another file than 's': the CRC32 of its source differs"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrownBy([&] { applyBps(c.source, "s", c.patch, "p.bps"); }), c.message) << c.what;
}

TEST(Base64, StandardAlphabetPadded)
{
    const struct {
        std::string bytes, text;
    } cases[] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
                 {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {octets({0xFF, 0xFE, 0x00}), "//4A"}};
    for (const auto& c : cases) {
        EXPECT_EQ(toBase64(c.bytes), c.text);
        std::string back;
        EXPECT_TRUE(fromBase64(c.text, back)) << c.text;
        EXPECT_EQ(back, c.bytes);
    }
    std::string ignored;
    for (const std::string bad : {"Zg=", "Z===", "Zm9v!A==", "Zg==Zg==", "=Zg="})
        EXPECT_FALSE(fromBase64(bad, ignored)) << bad;
}

// The fuzz target's body on its seeds and on blocks of every byte pattern a
// small generator gives: what it promises holds on any archives.
TEST(ModFuzzTarget, HoldsOnItsSeedsAndOnGeneratedBytes)
{
    std::vector<exercise::Seed> inputs = exercise::modSeeds();
    std::uint32_t state = 12345;
    for (unsigned int i = 0; i < 60; ++i) {
        std::string block(64 + i * 7 % 400, '\0');
        for (char& byte : block)
            byte = static_cast<char>((state = state * 1103515245u + 12345u) >> 24);
        inputs.push_back({"generated " + std::to_string(i), block});
    }
    for (const exercise::Seed& input : inputs)
        EXPECT_NO_THROW(exercise::modBytes(reinterpret_cast<const std::uint8_t*>(input.bytes.data()), input.bytes.size()))
            << input.name;
}
