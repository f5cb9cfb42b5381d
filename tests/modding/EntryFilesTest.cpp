// What a file handed over as an entry turns out to be, and the WAVE reader,
// without the command line.
#include "tests/support/Fixtures.h"
#include "tools/modding/EntryFiles.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/PaletteFile.h"
#include "tools/modding/Png.h"
#include "tools/modding/Sample.h"
#include "tools/modding/Shapes.h"

#include <gtest/gtest.h>

#include <memory>

using namespace fixtures;
using namespace lbxtool;

namespace {

FileKind kindOf(const std::string& bytes)
{
    return fileKind(bytes.data(), bytes.size());
}

std::string problemOf(const std::string& bytes)
{
    return soundProblem(bytes.data(), bytes.size());
}

// A RIFF WAVE file of `chunks`, its length field counting them.
std::string wave(const std::string& chunks)
{
    return "RIFF" + le32(static_cast<unsigned int>(4 + chunks.size())) + "WAVE" + chunks;
}

std::string formatChunk(unsigned int channels, unsigned int rate, unsigned int bits)
{
    const unsigned int block = channels * bits / 8;
    return "fmt " + le32(16) + le16(1) + le16(channels) + le32(rate) + le32(rate * block) + le16(block) + le16(bits);
}

std::string dataChunk(const std::string& samples)
{
    return "data" + le32(static_cast<unsigned int>(samples.size())) + samples;
}

} // namespace

TEST(EntryFiles, FilesThatArePlainlySomethingElseAreKnownByTheirBytes)
{
    const std::string archiveBytes = archive({"abc", le16(1) + le16(3) + "Sol"});
    const unsigned char pixel[4] = {1, 2, 3, 255};
    const unsigned char palette[PALETTE_BYTES] = {};
    const struct {
        std::string what, bytes;
        FileKind kind;
    } cases[] = {
        {"a PNG", rgbaPng(pixel, 1, 1, "p.png"), FileKind::PNG},
        {"the PNG signature alone", std::string("\x89PNG\r\n\x1A\n", 8), FileKind::PNG},
        {"an archive", archiveBytes, FileKind::ARCHIVE},
        {"an archive cut off behind its head", archiveBytes.substr(0, 12), FileKind::ARCHIVE},
        {"an archive head of too many entries", le16(510) + archiveBytes.substr(2), FileKind::ENTRY},
        {"an archive head of a version other than 0", archiveBytes.substr(0, 6) + le16(1) + archiveBytes.substr(8),
         FileKind::ENTRY},
        {"a manifest", R"({"archive": "A.LBX", "tagged": true, "entries": []})", FileKind::MANIFEST},
        {"a manifest behind a byte-order mark and spaces", "\xEF\xBB\xBF \n{\"entries\": [], \"archive\": \"A\"}\n",
         FileKind::MANIFEST},
        {"other JSON", "[1, 2]\n", FileKind::JSON},
        {"an object without entries", R"({"archive": "A.LBX"})", FileKind::JSON},
        {"JSON cut off", "{\"archive\": \n", FileKind::TEXT},
        {"a palette file", paletteFile(palette, 0, 2), FileKind::PALETTE},
        {"a palette file with CRLF", "JASC-PAL\r\n0100\r\n0\r\n", FileKind::PALETTE},
        {"the palette word inside a line", "JASC-PALETTE\n", FileKind::TEXT},
        {"a text table's lines", "Sol\nV\\xE9ga\n", FileKind::TEXT},
        {"UTF-8 text with CRLF", "V\xC3\xA9ga\r\n\tSol\r\n", FileKind::TEXT},
        {"text without its last line break", "Sol\nVega", FileKind::ENTRY},
        {"a byte that is no UTF-8", "V\xE9ga\n", FileKind::ENTRY},
        {"UTF-8 cut off before the line break", "V\xC3\n", FileKind::ENTRY},
        {"a control byte", "So\x01l\n", FileKind::ENTRY},
        {"an empty entry's marker, which is a line", "cats rule dogs drool\r\n", FileKind::ENTRY},
        {"nothing", "", FileKind::ENTRY},
    };
    for (const auto& c : cases)
        EXPECT_EQ(kindOf(c.bytes), c.kind) << c.what;
}

// Nothing that the library or the sample makes as an entry may be taken for
// another kind of file: that would refuse a true entry.
TEST(EntryFiles, NoEntryOfAnyKindIsTakenForAnotherFile)
{
    std::vector<std::unique_ptr<Content>> entries;
    for (Content* entry : entriesOfEveryKind())
        entries.emplace_back(entry);
    for (Content* entry : animations())
        entries.emplace_back(entry);
    for (const SampleArchive& made : sampleArchives()) {
        File archive;
        made.fill(archive);
        for (unsigned int i = 0; i < archive.size(); ++i) {
            entries.emplace_back(archive[i]);
            archive[i] = nullptr;
        }
    }
    for (const auto& entry : entries)
        EXPECT_EQ(fileKind(entry->data(), entry->size()), FileKind::ENTRY) << entry->typeStr();
}

// The reasons given agree with the library: empty exactly when it takes
// the bytes as a sound.
TEST(EntryFiles, ASoundIsARiffWaveAsTheLibraryTakesItOrTheReasonIsSaid)
{
    const std::string plain = wave(formatChunk(1, 8000, 8) + dataChunk("abcd"));
    const std::string listFirst = wave("LIST" + le32(4) + "INFO" + formatChunk(1, 8000, 8) + dataChunk("ab"));
    const std::string taken = "is a WAVE file that the game does not take as a sound: ";
    const struct {
        std::string what, bytes, problem;
    } cases[] = {
        {"a plain WAVE file", plain, ""},
        {"a format chunk cut short, which the library does not read", "RIFF" + le32(9) + "WAVEfmt x", ""},
        {"text", "hello", "is no RIFF WAVE file, as a sound must be"},
        {"a RIFF file of another form", "RIFF" + le32(8) + "AVI fmt ", "is no RIFF WAVE file, as a sound must be"},
        {"bytes behind the RIFF length", plain + "xy",
         taken + "its RIFF header says it is " + std::to_string(plain.size()) + " bytes long, and it is " +
             std::to_string(plain.size() + 2)},
        {"a RIFF length of 4 GiB", "RIFF" + le32(0xFFFFFFFF) + "WAVEfmt x",
         taken + "its RIFF header says it is 4294967303 bytes long, and it is 17"},
        {"another chunk first", listFirst, taken + "its first chunk is 'LIST', not the format 'fmt '"},
        {"a chunk name of control bytes", wave(std::string("\x01\x02\x03\x04", 4) + "x"),
         taken + "its first chunk is '????" "', not the format 'fmt '"},
        {"no chunk", wave(""), taken + "it ends before its first chunk"},
        {"the format's name alone", wave("fmt "), taken + "it ends inside its format chunk"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(problemOf(c.bytes), c.problem) << c.what;
        EXPECT_EQ(entryOf(c.bytes)->type() == Content::SOUND, c.problem.empty()) << c.what;
    }
}

TEST(EntryFiles, AWavesFormatIsReadWhereverItsChunkStandsAndNeverPastTheEnd)
{
    const struct {
        std::string what, bytes, format; // "" when none can be read
    } cases[] = {
        {"format first", wave(formatChunk(1, 8000, 8) + dataChunk("ab")), "8000 Hz, 8-bit, mono"},
        {"behind a chunk of odd length, padded", wave("LIST" + le32(3) + "abc" + std::string(1, '\0') +
                                                      formatChunk(2, 44100, 16)),
         "44100 Hz, 16-bit, stereo"},
        {"six channels", wave(formatChunk(6, 48000, 24)), "48000 Hz, 24-bit, 6 channels"},
        {"a format chunk cut off", wave(formatChunk(1, 8000, 8)).substr(0, 30), ""},
        {"a format chunk that says it is short", wave("fmt " + le32(8) + le16(1) + le16(1) + le32(8000)), ""},
        {"a chunk length that points past the end", wave("LIST" + le32(0xFFFFFFF0) + formatChunk(1, 8000, 8)), ""},
        {"no format chunk", wave(dataChunk("abc")), ""},
        {"no WAVE at all", "RIFF" + le32(4) + "AVI " + formatChunk(1, 8000, 8), ""},
        {"nothing", "", ""},
    };
    for (const auto& c : cases) {
        const std::optional<WaveFormat> format = waveFormat(c.bytes.data(), c.bytes.size());
        EXPECT_EQ(format ? formatName(*format) : "", c.format) << c.what;
    }
}

TEST(EntryFiles, ASoundIsClaimedByItsNameOrItsHead)
{
    const struct {
        std::string name, bytes;
        bool claims;
    } cases[] = {
        {"a.wav", "hello", true},
        {"A.WaV", "", true},
        {"wav", "hello", false},
        {"a.bin", "RIFF" + le32(4) + "WAVE", true},
        {"a.bin", "RIFF" + le32(4) + "AVI ", false},
        {"a.wav.bin", "hello", false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(claimsSound(c.name, c.bytes.data(), c.bytes.size()), c.claims) << c.name;
}

// A palette file as an editor may save it again: spaces where it likes, a
// sign, CRLF; anything else refused on its line.
TEST(EntryFiles, APaletteFileReadsAsAStreamOfNumbersWouldAndNamesTheLineItRefuses)
{
    const std::string head = "JASC-PAL\n0100\n";
    const struct {
        std::string what, text;
        std::vector<unsigned char> colours; // RGBA, when read
        std::string problem;                // when refused
    } cases[] = {
        {"as written", paletteFile(std::vector<unsigned char>{1, 2, 3, 255, 255, 0, 128, 255}.data(), 0, 2),
         {1, 2, 3, 255, 255, 0, 128, 255}, ""},
        {"spaces and tabs around the numbers", head + "1\n \t7  +8\t9 \n", {7, 8, 9, 255}, ""},
        {"CRLF and leading zeros", "JASC-PAL\r\n0100\r\n1\r\n007 0 255\r\n", {7, 0, 255, 255}, ""},
        {"no colours", head + "0\n", {}, ""},
        {"blank lines after the colours", head + "1\n1 2 3\n\n\n", {1, 2, 3, 255}, ""},
        {"another first line", "JASC-PAL2\n0100\n0\n", {}, "'p.pal' is not a palette file (it starts with JASC-PAL and 0100)"},
        {"a count with a space behind", head + "1 \n1 2 3\n", {}, "'p.pal' line 3: the number of colours, 0 to 256, is missing"},
        {"a negative count", head + "-1\n", {}, "'p.pal' line 3: the number of colours, 0 to 256, is missing"},
        {"a count past 256", head + "257\n", {}, "'p.pal' line 3: the number of colours, 0 to 256, is missing"},
        {"a count past any number", head + "99999999999999999999\n", {}, "'p.pal' line 3: the number of colours, 0 to 256, is missing"},
        {"too few colours", head + "3\n1 2 3\n", {}, "'p.pal' line 5: the file ends after 1 of 3 colours"},
        {"two numbers", head + "1\n1 2\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"four numbers", head + "1\n1 2 3 4\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"256", head + "1\n1 256 3\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"a negative number", head + "1\n1 -2 3\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"a sign alone", head + "1\n1 + 3\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"hexadecimal", head + "1\n0x10 2 3\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"a word behind", head + "1\n1 2 3 red\n", {}, "'p.pal' line 4: a colour is three numbers from 0 to 255"},
        {"a colour more", head + "1\n1 2 3\n4 5 6\n", {}, "'p.pal' line 5: more colours than the file says it holds"},
    };
    for (const auto& c : cases) {
        std::vector<unsigned char> read;
        std::string problem;
        try {
            read = readPaletteFile(c.text, "p.pal");
        } catch (const std::runtime_error& e) {
            problem = e.what();
        }
        EXPECT_EQ(problem, c.problem) << c.what;
        EXPECT_EQ(read, c.colours) << c.what;
    }
}
