// The translators' road as a translator walks it, with gettext's own tools:
// po-export, msgfmt --check, msgcat, msgen, msgmerge, po-import, and each
// refusal of po-import.
#include "kinds/Text.h"
#include "tests/tool/ToolRun.h"
#include "tools/modding/Forms.h"

using namespace fixtures;
using namespace toolrun;
namespace fs = std::filesystem;

namespace {

bool haveGettext()
{
    return std::system("command -v msgfmt >/dev/null && command -v msgcat >/dev/null && "
                       "command -v msgmerge >/dev/null && command -v msgen >/dev/null") == 0;
}

class Translate : public Tool {
protected:
    void SetUp() override
    {
        if (!haveGettext())
            GTEST_SKIP() << "gettext's msgfmt, msgcat, msgmerge and msgen are not installed (scripts/setup installs them)";
    }

    // An archive of text tables that hold every byte from 1 to 255: records
    // of the library's length and of 5 bytes, filled to the last byte.
    std::string everyByteArchive()
    {
        std::vector<std::string> records(3);
        for (unsigned int b = 1; b < 256; ++b)
            records[(b - 1) / 90] += static_cast<char>(b);
        records.push_back("");
        records.push_back("Sol \\ \"quoted\" \x82t\x82");
        File archive;
        archive.push_back(Content::Text::create(records));
        std::vector<std::string> short_ = {"ab\x01\xFF\x7F", "\\x41", "\xFE\xFE\xFE\xFE\xFE"};
        archive.push_back(lbxtool::tableOfLength(short_, 5));
        const std::string path = dir.path("BYTES.LBX");
        archive.write(path);
        return path;
    }

    Outcome gettext(const std::string& command, const std::vector<std::string>& args) { return run(command, args); }

    // The PO file `po` with record `context` translated as `msgstr` (already
    // in PO's quoting).
    static std::string translated(std::string po, const std::string& context, const std::string& msgstr)
    {
        const std::size_t at = po.find("msgctxt \"" + context + "\"\n");
        EXPECT_NE(at, std::string::npos) << context;
        const std::size_t str = po.find("msgstr \"\"\n", at);
        return po.replace(str, 10, "msgstr \"" + msgstr + "\"\n");
    }

    // Runs po-import, which must fail with `message` alone and write nothing.
    void expectRefused(const std::vector<std::string>& args, const std::string& message)
    {
        const auto before = snapshot(dir.path("sample"));
        const Outcome run = lbx(args);
        EXPECT_EQ(run.status, 1) << message;
        EXPECT_EQ(run.err, "lbx: " + message + "\n");
        EXPECT_EQ(run.out, "");
        EXPECT_FALSE(fs::exists(dir.path("out"))) << message;
        EXPECT_EQ(snapshot(dir.path("sample")), before);
    }
};

} // namespace

TEST_F(Translate, TheTemplateIsPoAsGettextWritesIt)
{
    std::vector<std::string> archives = wholeSample();
    archives.push_back(everyByteArchive());
    const std::string pot = dir.path("all.pot");
    std::vector<std::string> args = {"po-export"};
    args.insert(args.end(), archives.begin(), archives.end());
    for (const std::string& more : {std::string("-o"), pot, std::string("--font"), sample("FONTS.LBX") + ":0:1"})
        args.push_back(more);
    const Outcome exported = lbx(args);
    ASSERT_EQ(exported.status, 0) << exported.err;
    EXPECT_EQ(exported.out, "exported 19 records of 6 archives into " + pot + " (charset CP437)\n");
    const std::string text = readFile(pot);
    EXPECT_NE(text.find("#. at most 99 bytes\n#. 23 px wide in font " + sample("FONTS.LBX") +
                        ":0:1\n#: STARNAME/STARNAME_000.txt:2\nmsgctxt \"STARNAME.LBX 0:1\"\nmsgid \"Vega\"\nmsgstr \"\"\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("msgid \"\"\n\"\\\\x01\\\\x02"), std::string::npos) << "control codes stand as \\xHH";
    EXPECT_NE(text.find("\"Content-Type: text/plain; charset=UTF-8\\n\"\n"), std::string::npos);
    EXPECT_NE(text.find("\"X-Lbx-Charset: CP437\\n\"\n"), std::string::npos);

    const Outcome checked = gettext("msgfmt", {"--check", "-o", "/dev/null", pot});
    EXPECT_EQ(checked.status, 0) << checked.err;
    EXPECT_EQ(checked.err.find("error"), std::string::npos) << checked.err;
    // gettext's own layout, to the byte: long records wrapped as it wraps them.
    ASSERT_EQ(gettext("msgcat", {pot, "-o", dir.path("cat.pot")}).status, 0);
    EXPECT_TRUE(readFile(dir.path("cat.pot")) == text);
    ASSERT_EQ(gettext("msgen", {pot, "-o", dir.path("en.po")}).status, 0);
    ASSERT_EQ(gettext("msgcat", {dir.path("en.po"), "-o", dir.path("en-cat.po")}).status, 0);
    EXPECT_TRUE(readFile(dir.path("en-cat.po")) == readFile(dir.path("en.po")));
    const Outcome filled = gettext("msgfmt", {"--check", "-o", "/dev/null", dir.path("en.po")});
    EXPECT_EQ(filled.status, 0) << filled.err;
}

TEST_F(Translate, EachMsgstrAsItsMsgidGivesTheArchivesBackByteForByte)
{
    const std::string bytes = everyByteArchive();
    const std::string table = dir.file("greek.tbl", "# Greek at the top\nC1=\xCE\x91\nC2=\xCE\x92\n41=A\n61=a\n"
                                                    "E9=\xC3\xA9\n65=e\nD3=\xCC\x81\n20= \n");
    for (const std::vector<std::string>& charset : {std::vector<std::string>{}, {"--charset", table}}) {
        std::vector<std::string> args = {"po-export", bytes, sample("STARNAME.LBX"), sample("FONTS.LBX"),
                                         "-o", dir.path("t.pot"), "--force"};
        args.insert(args.end(), charset.begin(), charset.end());
        ASSERT_EQ(lbx(args).status, 0);
        ASSERT_EQ(gettext("msgen", {dir.path("t.pot"), "-o", dir.path("t.po")}).status, 0);
        args = {"po-import", dir.path("t.po"), bytes, sample("STARNAME.LBX"), sample("FONTS.LBX"),
                "-o", dir.path("back"), "--force"};
        args.insert(args.end(), charset.begin(), charset.end());
        const Outcome imported = lbx(args);
        ASSERT_EQ(imported.status, 0) << imported.err;
        EXPECT_NE(imported.out.find("translated 7 of 8 records of " + bytes + " into " + dir.path("back/BYTES.LBX") +
                                    ", 0 changed\n"),
                  std::string::npos)
            << imported.out;
        for (const std::string& archive : {bytes, sample("STARNAME.LBX"), sample("FONTS.LBX")})
            EXPECT_TRUE(readFile(dir.path("back/" + fs::path(archive).filename().string())) == readFile(archive))
                << archive << (charset.empty() ? "" : " with a table");
    }
}

TEST_F(Translate, StarNamesInFrenchGoInAndShowInExport)
{
    const std::string pot = dir.path("starname.pot");
    ASSERT_EQ(lbx({"po-export", sample("STARNAME.LBX"), "-o", pot}).status, 0);
    std::string po = translated(readFile(pot), "STARNAME.LBX 0:1", "V\xC3\xA9ga");   // composed é
    po = translated(po, "STARNAME.LBX 0:4", "Alta\xC3\xAFr");                         // ï
    po = translated(po, "STARNAME.LBX 0:7", "Sirius l'\xC3\xA9toile");
    po = translated(po, "STARNAME.LBX 0:3", "De\xCC\x81ne\xCC\x81");                  // e and U+0301
    const std::string fr = dir.file("fr.po", po);
    const std::string out = dir.path("fr/STARNAME.LBX");
    const Outcome imported = lbx({"po-import", fr, sample("STARNAME.LBX"), "-o", out});
    ASSERT_EQ(imported.status, 0) << imported.err;
    EXPECT_EQ(imported.out, "translated 4 of 11 records of " + sample("STARNAME.LBX") + " into " + out + ", 4 changed\n");
    File archive(out);
    EXPECT_EQ(archive[0]->text()->get(1), "V\x82ga");
    EXPECT_EQ(archive[0]->text()->get(3), "D\x82n\x82");
    EXPECT_EQ(archive[0]->text()->get(4), "Alta\x8Br");
    EXPECT_EQ(archive[1]->text()->get(0), File(sample("STARNAME.LBX"))[1]->text()->get(0));
    ASSERT_EQ(lbx({"export", out, "-o", dir.path("shown")}).status, 0);
    EXPECT_EQ(readFile(dir.path("shown/STARNAME_000.txt")),
              "Sol\nV\\x82ga\nRigel\nD\\x82n\\x82\nAlta\\x8Br\nMira\nPolaris\nSirius l'\\x82toile\n");
    ASSERT_EQ(lbx({"export", out, "-o", dir.path("letters"), "--charset", "cp437"}).status, 0);
    EXPECT_EQ(readFile(dir.path("letters/STARNAME_000.txt")),
              "Sol\nV\xC3\xA9ga\nRigel\nD\xC3\xA9n\xC3\xA9\nAlta\xC3\xAFr\nMira\nPolaris\nSirius l'\xC3\xA9toile\n");
    // And out again, the accents as the translator typed them.
    ASSERT_EQ(lbx({"po-export", out, "-o", dir.path("again.pot")}).status, 0);
    EXPECT_NE(readFile(dir.path("again.pot")).find("msgid \"D\xC3\xA9n\xC3\xA9\"\n"), std::string::npos);
}

TEST_F(Translate, MsgmergeOfANewerTemplateKeepsTheTranslationsAndImports)
{
    const std::string old = dir.path("old.pot");
    ASSERT_EQ(lbx({"po-export", sample("STARNAME.LBX"), "-o", old}).status, 0);
    std::string po = translated(readFile(old), "STARNAME.LBX 0:1", "V\xC3\xA9ga");
    po = translated(po, "STARNAME.LBX 0:2", "Rigel la bleue");
    const std::string fr = dir.file("fr.po", po);
    // The game changes: a record's text, and a record more.
    ASSERT_EQ(lbx({"unpack", sample("STARNAME.LBX"), "-o", dir.path("mod")}).status, 0);
    dir.file("mod/STARNAME/STARNAME_000.txt", "Sol\nVega\nRigel Prime\nDeneb\nAltair\nMira\nPolaris\nSirius\nProcyon\n");
    const Outcome packed = lbx({"pack", dir.path("mod/STARNAME"), "-o", dir.path("v2/STARNAME.LBX"), "--records"});
    ASSERT_EQ(packed.status, 0) << packed.err;
    const std::string v2 = dir.path("v2/STARNAME.LBX"), pot = dir.path("new.pot");
    ASSERT_EQ(lbx({"po-export", v2, "-o", pot}).status, 0);
    const Outcome merged = gettext("msgmerge", {"--quiet", fr, pot, "-o", dir.path("merged.po")});
    ASSERT_EQ(merged.status, 0) << merged.err;
    const std::string text = readFile(dir.path("merged.po"));
    EXPECT_NE(text.find("msgctxt \"STARNAME.LBX 0:1\"\nmsgid \"Vega\"\nmsgstr \"V\xC3\xA9ga\"\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("#, fuzzy"), std::string::npos) << "the changed record's translation is a guess";
    const Outcome imported = lbx({"po-import", dir.path("merged.po"), v2, "-o", dir.path("out/STARNAME.LBX")});
    ASSERT_EQ(imported.status, 0) << imported.err;
    File archive(dir.path("out/STARNAME.LBX"));
    EXPECT_EQ(archive[0]->text()->get(1), "V\x82ga");
    EXPECT_EQ(archive[0]->text()->get(2), "Rigel Prime") << "a fuzzy translation keeps the original";
    EXPECT_EQ(archive[0]->text()->get(8), "Procyon");
}

TEST_F(Translate, EachRefusalNamesTheMsgctxtAndTheLineAndWritesNothing)
{
    const std::string pot = dir.path("s.pot"), star = sample("STARNAME.LBX");
    ASSERT_EQ(lbx({"po-export", star, "-o", pot}).status, 0);
    const std::string po = readFile(pot);
    const auto lineOf = [&po](const std::string& context) {
        const std::size_t at = po.find("msgctxt \"" + context + "\"");
        return std::to_string(std::count(po.begin(), po.begin() + static_cast<std::ptrdiff_t>(at), '\n') + 3);
    };
    const std::string at11 = "STARNAME.LBX 0:1";
    const std::string longest(100, 'x');
    const struct {
        std::string po, message;
    } cases[] = {
        {translated(po, "STARNAME.LBX 0:2", "\xD0\xA0\xD0\xB8gel"),
         "line " + lineOf("STARNAME.LBX 0:2") + ": msgctxt \"STARNAME.LBX 0:2\": '\xD0\xA0' (U+0420) is not in the "
         "charset CP437 at column 1 of msgstr"},
        {translated(po, at11, longest),
         "line " + lineOf(at11) + ": msgctxt \"" + at11 + "\": msgstr is 100 bytes in the charset CP437, more than "
         "the 99 the record holds"},
        {translated(po, "STARNAME.LBX 0:2", "a\\\\x00b"),
         "line " + lineOf("STARNAME.LBX 0:2") + ": msgctxt \"STARNAME.LBX 0:2\": \\x00 in msgstr would end the record "
         "there, as the game reads up to a zero byte; take it out"},
        {translated(po, "STARNAME.LBX 0:2", "a\\\\q"),
         "line " + lineOf("STARNAME.LBX 0:2") + ": msgctxt \"STARNAME.LBX 0:2\": a backslash stands alone (write \\\\ "
         "for one, \\xHH for a byte) at column 2 of msgstr"},
        {po + "\nmsgctxt \"STARNAME.LBX 0:9\"\nmsgid \"Vega\"\nmsgstr \"V\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 2) +
             ": msgctxt \"STARNAME.LBX 0:9\" names no record: entry 0 of STARNAME.LBX has 8 records"},
        {po + "\nmsgctxt \"STARNAME.LBX 2:0\"\nmsgid \"Vega\"\nmsgstr \"\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 2) +
             ": msgctxt \"STARNAME.LBX 2:0\" names no record: STARNAME.LBX has no entry 2 (its entries are 0 to 1)"},
        {po + "\nmsgctxt \"INBOX.LBX 0:0\"\nmsgid \"Vega\"\nmsgstr \"\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 2) +
             ": msgctxt \"INBOX.LBX 0:0\" names no record: no archive INBOX.LBX is given (given: STARNAME.LBX)"},
        {po + "\nmsgctxt \"STARNAME.LBX 0:1\"\nmsgid \"Vega\"\nmsgstr \"\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 2) +
             ": msgctxt \"STARNAME.LBX 0:1\" comes twice; first at line " + std::to_string(std::stoul(lineOf("STARNAME.LBX 0:1")) - 2)},
        {po + "\nmsgid \"Vega\"\nmsgstr \"\n", "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 3) +
                                                  ": a string without its closing quote"},
        {po + "\nmsgctxt \"STARNAME.LBX 0:1\"\nmsgstr \"x\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 3) + ": msgstr without msgid before it"},
        {po + "\nmsgid \"V\xE9ga\"\nmsgstr \"\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 2) + ": not UTF-8; save the file as UTF-8"},
        {po + "\nmsgid \"Vega\"\nmsgstr \"\"\n", "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 2) +
                                                    ": an entry without msgctxt, which names the record it translates"},
        {po + "\nmsgid \"a\"\nmsgid_plural \"b\"\nmsgstr[0] \"\"\n",
         "line " + std::to_string(std::count(po.begin(), po.end(), '\n') + 3) +
             ": plural forms; a text table's records have none"},
    };
    for (const auto& c : cases) {
        const std::string file = dir.file("bad.po", c.po);
        expectRefused({"po-import", file, star, "-o", dir.path("out/STARNAME.LBX")}, "'" + file + "' " + c.message);
    }
    const std::string other = dir.file("other.po", po);
    expectRefused({"po-import", other, star, "-o", dir.path("out/STARNAME.LBX"), "--charset",
                   dir.file("x.tbl", "41=A\n")},
                  "'" + other + "' line 4: its texts are in the charset CP437, not x.tbl; give --charset CP437 as on "
                  "export");
}

TEST_F(Translate, ATranslationWiderThanItsOriginalIsSaid)
{
    const std::string pot = dir.path("s.pot"), star = sample("STARNAME.LBX"), font = sample("FONTS.LBX") + ":0:1";
    ASSERT_EQ(lbx({"po-export", star, "-o", pot, "--font", font}).status, 0);
    const std::string po = translated(translated(readFile(pot), "STARNAME.LBX 0:2", "Rigel la bleue"),
                                      "STARNAME.LBX 0:5", "Mir");
    const std::string file = dir.file("fr.po", po);
    const Outcome imported = lbx({"po-import", file, star, "-o", dir.path("out"), "--font", font});
    ASSERT_EQ(imported.status, 0) << imported.err;
    const std::size_t line = po.find("msgstr \"Rigel la bleue\"");
    EXPECT_EQ(imported.err, "lbx: warning: '" + file + "' line " +
                                std::to_string(std::count(po.begin(), po.begin() + static_cast<std::ptrdiff_t>(line), '\n') + 1) +
                                ": msgctxt \"STARNAME.LBX 0:2\": the translation is 69 px wide, its original 27 px, "
                                "in font " + font + "\n");
    EXPECT_TRUE(fs::exists(dir.path("out/STARNAME.LBX")));
}

TEST_F(Translate, AMsgidThatIsNoLongerTheRecordIsSaid)
{
    const std::string pot = dir.path("s.pot"), star = sample("STARNAME.LBX");
    ASSERT_EQ(lbx({"po-export", star, "-o", pot}).status, 0);
    std::string po = translated(readFile(pot), "STARNAME.LBX 0:5", "Mire");
    po.replace(po.find("msgid \"Mira\""), 12, "msgid \"Myra\"");
    const std::string file = dir.file("fr.po", po);
    const Outcome imported = lbx({"po-import", file, star, "-o", dir.path("out")});
    ASSERT_EQ(imported.status, 0) << imported.err;
    const std::size_t line = po.find("msgstr \"Mire\"");
    EXPECT_EQ(imported.err, "lbx: warning: '" + file + "' line " +
                                std::to_string(std::count(po.begin(), po.begin() + static_cast<std::ptrdiff_t>(line), '\n') + 1) +
                                ": msgctxt \"STARNAME.LBX 0:5\": the record is \"Mira\" now, not its msgid; translated all the "
                                "same (msgmerge onto a new template finds such changes)\n");
    EXPECT_EQ(File(dir.path("out/STARNAME.LBX"))[0]->text()->get(5), "Mire");
}

namespace {

class UnpackInACharset : public Tool {};

} // namespace

TEST_F(UnpackInACharset, TextFilesHoldLettersThatPackReadsBack)
{
    const std::string star = sample("STARNAME.LBX"), folder = dir.path("mod/STARNAME");
    ASSERT_EQ(lbx({"unpack", star, "-o", dir.path("plain")}).status, 0);
    EXPECT_EQ(readFile(dir.path("plain/STARNAME/archive.json")).find("\"charset\""), std::string::npos)
        << "without --charset, a folder is as it always was";
    ASSERT_EQ(lbx({"unpack", star, "-o", dir.path("mod"), "--charset", "cp437"}).status, 0);
    EXPECT_NE(readFile(folder + "/archive.json").find("\"charset\": \"CP437\",\n"), std::string::npos);
    Outcome packed = lbx({"pack", folder, "-o", dir.path("same.LBX")});
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_TRUE(readFile(dir.path("same.LBX")) == readFile(star));

    dir.file("mod/STARNAME/STARNAME_000.txt", "Sol\nV\xC3\xA9ga\nRigel\nDeneb\nAltair\nMira\nPolaris\nSirius\n");
    packed = lbx({"pack", folder, "-o", dir.path("fr.LBX")});
    ASSERT_EQ(packed.status, 0) << packed.err;
    EXPECT_NE(packed.out.find("; record 1\n"), std::string::npos) << packed.out;
    EXPECT_EQ(File(dir.path("fr.LBX"))[0]->text()->get(1), "V\x82ga");

    dir.file("mod/STARNAME/STARNAME_000.txt", "Sol\nV\xD0\x96ga\nRigel\nDeneb\nAltair\nMira\nPolaris\nSirius\n");
    packed = lbx({"pack", folder, "-o", dir.path("ru.LBX")});
    EXPECT_EQ(packed.status, 1);
    EXPECT_EQ(packed.err, "lbx: '" + folder + "/STARNAME_000.txt' line 2: '\xD0\x96' (U+0416) is not in the charset "
                          "CP437 at column 2\n");
    EXPECT_FALSE(fs::exists(dir.path("ru.LBX")));
}

TEST_F(UnpackInACharset, ATableTravelsInTheManifest)
{
    const std::string table = dir.file("greek.tbl", "C1=\xCE\x91\n20= \n53=S\n6F=o\n6C=l\n");
    const std::string star = sample("STARNAME.LBX"), folder = dir.path("mod/STARNAME");
    ASSERT_EQ(lbx({"unpack", star, "-o", dir.path("mod"), "--charset", table}).status, 0);
    const std::string manifest = readFile(folder + "/archive.json");
    EXPECT_NE(manifest.find("\"charset\": \"greek.tbl\",\n  \"charsetTable\": \"C1="), std::string::npos) << manifest;
    EXPECT_EQ(readFile(folder + "/STARNAME_000.txt").substr(0, 12), "Sol\n\\x56\\x65");
    dir.file("mod/STARNAME/STARNAME_000.txt",
             "Sol \xCE\x91\n" + readFile(folder + "/STARNAME_000.txt").substr(4));
    fs::remove(table); // the manifest holds it
    const Outcome packed = lbx({"pack", folder, "-o", dir.path("gr.LBX")});
    ASSERT_EQ(packed.status, 0) << packed.err;
    File archive(dir.path("gr.LBX"));
    EXPECT_EQ(archive[0]->text()->get(0), "Sol \xC1");
    EXPECT_EQ(archive[0]->text()->get(1), "Vega");
}
