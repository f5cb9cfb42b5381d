#include "images/Font.h"
#include "kinds/Empty.h"
#include "kinds/Text.h"
#include "tests/support/Fixtures.h"
#include "tests/tool/ToolRun.h"
#include "tools/modding/Files.h"
#include "tools/render/Gallery.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using zorv2::Lbx::Content;
using zorv2::Lbx::File;
using namespace fixtures;
using namespace lbxtool;
using toolrun::decodePng;

namespace {

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

GalleryEntry entry(unsigned int index, const std::string& kind)
{
    GalleryEntry shown;
    shown.view.index = index;
    shown.view.name = "T.LBX[" + std::to_string(index) + "]";
    shown.view.kind = kind;
    return shown;
}

// The page's own non-ASCII characters; anything else above 0x7F would come
// from an entry or a path and must have gone through the escape.
std::string withoutPageSymbols(std::string page)
{
    for (const std::string symbol : {"\u2013", "\u00d7"})
        for (std::size_t at; (at = page.find(symbol)) != std::string::npos;)
            page.erase(at, symbol.size());
    return page;
}

class GalleryPage : public toolrun::Tool {
protected:
    // The whole sample exported into one folder, as scripts/demo does.
    std::string exportedSample()
    {
        for (const std::string& archive : wholeSample())
            EXPECT_EQ(lbx({"export", archive, "-o", dir.path("out"), "--html"}).status, 0) << archive;
        return readFile(dir.path("out/index.html"));
    }

    // The section of the entry with anchor `id`.
    static std::string section(const std::string& page, const std::string& id)
    {
        const std::size_t begin = page.find("<section class=\"entry\" id=\"" + id + "\"");
        return begin == std::string::npos ? "" : page.substr(begin, page.find("</section>", begin) - begin);
    }

    PlainFiles files;
};

} // namespace

TEST_F(GalleryPage, FoldsRunsOfEmptyEntriesInTheContentsAndTheBody)
{
    Gallery gallery("/x/T.LBX", "T");
    for (const auto& [index, kind] : std::vector<std::pair<unsigned int, std::string>>{
             {0, "font"}, {1, "empty"}, {2, "empty"}, {3, "empty"}, {5, "empty"}, {6, "text"}, {7, "empty"}})
        gallery.add(entry(index, kind));
    const std::string page = readFile(gallery.write(dir.path(""), files));
    EXPECT_TRUE(contains(page, "<p>7 entries: 5 empty, 1 font, 1 text</p>"));
    EXPECT_TRUE(contains(page, "<li><a href=\"#T-1\">1\u20133</a> empty \u00d73</li>"));
    EXPECT_TRUE(contains(page, "<li><a href=\"#T-5\">5</a> empty</li>")); // 4 is missing: no run across it
    EXPECT_TRUE(contains(page, "<li><a href=\"#T-7\">7</a> empty</li>"));
    EXPECT_TRUE(contains(page, "T.LBX[1\u20133]<span class=\"kind\">empty</span>"));
    for (const char* id : {"T-0", "T-1", "T-5", "T-6", "T-7"})
        EXPECT_TRUE(contains(page, "id=\"" + std::string(id) + "\"")) << id;
    EXPECT_FALSE(contains(page, "id=\"T-2\""));
}

TEST_F(GalleryPage, AnyBytesOfTextOrPathReachThePageEscapedAndAsValidUtf8)
{
    const std::string records[] = {"Sol", std::string("\xff<b>\n\0\\", 7), "caf\xc3\xa9", "\xc0\xaf\xed\xa0\x80"};
    Gallery gallery("/tmp/caf\xc3\xa9/\xe9t\xe9.lbx", "t_t");
    GalleryEntry table = entry(0, "text");
    table.view.rows.assign(std::begin(records), std::end(records));
    gallery.add(table);
    const std::string page = readFile(gallery.write(dir.path(""), files));
    EXPECT_TRUE(contains(page, "<h2 id=\"t_t\">\\xE9t\\xE9.lbx</h2>\n<p class=\"note\">/tmp/caf\xc3\xa9/\\xE9t\\xE9.lbx</p>"))
        << page;
    EXPECT_TRUE(contains(page, "<ol class=\"rows\" start=\"0\">\n<li>Sol</li>\n<li>\\xFF&lt;b&gt;\\n\\x00\\\\</li>\n"
                               "<li>caf\\xC3\\xA9</li>\n<li>\\xC0\\xAF\\xED\\xA0\\x80</li>\n</ol>"));
    const std::string rest = withoutPageSymbols(page);
    // Only the well-formed "é" of the path stays as it is.
    EXPECT_EQ(std::count_if(rest.begin(), rest.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7f; }), 2);
}

TEST_F(GalleryPage, ShowsEachKindOfTheSampleWithWhatTheGameKnowsOfIt)
{
    const std::string page = exportedSample();
    const struct {
        std::string id;
        std::vector<std::string> shown;
        std::vector<std::string> absent;
    } cases[] = {
        {"INBOX-1", {"data-loop=\"1\"", "drawn over it", "INBOX_001_007.png", "style=\"--w:48;--h:32\""}, {}},
        {"CONFIRM-1", {"data-loop=\"0\"", "plays once"}, {"drawn over it"}}, // raw frames stand alone
        {"CONFIRM-2", {"data-loop=\"1\""}, {"drawn over it"}},              // cleared every frame
        {"CONFIRM-0", {"palette, colours 0\u20134", "<i style=\"background:#"}, {"class=\"player\""}},
        {"SPHERSFX-1", {"palette, colours 240\u2013247"}, {}},
        {"FONTS-1", {"palette, colours 0\u2013255", "data-loop=\"1\"", "FONTS_001_019.png"}, {}},
        {"FONTS-0", {"font 0, height 8", "font 5, height 9", "FONTS_000_font5.png", "\n20: 3 4 5 6 3 4"}, {}},
        {"STARNAME-0", {"<li>Sol</li>\n<li>Vega</li>"}, {}},
        {"SPHERSFX-0", {"<audio controls preload=\"metadata\" src=\"SPHERSFX_000.wav\">"}, {}},
    };
    for (const auto& c : cases) {
        const std::string shown = section(page, c.id);
        ASSERT_NE(shown, "") << c.id;
        for (const std::string& part : c.shown)
            EXPECT_TRUE(contains(shown, part)) << c.id << " lacks " << part;
        for (const std::string& part : c.absent)
            EXPECT_FALSE(contains(shown, part)) << c.id << " has " << part;
    }
    for (const char* stem : {"CONFIRM", "FONTS", "INBOX", "SPHERSFX", "STARNAME"})
        EXPECT_TRUE(contains(page, "<a href=\"#" + std::string(stem) + "\">" + stem + "</a>")) << stem;
    EXPECT_TRUE(contains(page, "<li><a href=\"#FONTS-3\">3\u201313</a> empty \u00d711</li>"));
}

// Glyph boxes of width w and the font's height in rows of 16, a line apart:
// font 0 of the sample is 8 high and its widest glyph 6 wide.
TEST_F(GalleryPage, GlyphSheetsDrawEachGlyphsBoxInItsCell)
{
    exportedSample();
    const Image sheet = decodePng(dir.path("out/FONTS_000_font0.png"));
    const unsigned width = sheet.width, height = sheet.height;
    const std::vector<unsigned char>& rgba = sheet.rgba;
    ASSERT_EQ(width, 16u * 7);
    ASSERT_EQ(height, 16u * 9);
    const auto alpha = [&](unsigned x, unsigned y) { return rgba[(y * width + x) * 4 + 3]; };
    const unsigned left = 65 % 16 * 7, top = 65 / 16 * 9; // 'A', 4 wide
    EXPECT_EQ(alpha(left, top), 255);
    EXPECT_EQ(alpha(left + 3, top + 7), 255);
    EXPECT_EQ(alpha(left + 4, top), 0);
    EXPECT_EQ(alpha(left, top + 8), 0);
    EXPECT_NE(rgba[(top * width + left) * 4], rgba[(top * width + left - 7) * 4]) << "neighbours share a shade";
    EXPECT_EQ(alpha(0, 0), 0); // glyph 0 has no width
}

TEST_F(GalleryPage, AnEntryThatCannotBeDrawnIsShownWithItsReason)
{
    unsigned short heights[6] = {8, 300, 8, 8, 8, 8};
    std::vector<unsigned char> widths(6 * 256, 4);
    std::unique_ptr<Content> font(Content::Font::create(nullptr, heights, widths.data(), nullptr));
    const std::string path = dir.file("tall.lbx", archive({bytesOf(font->data(), font->size())}));
    EXPECT_EQ(lbx({"export", path, "-o", dir.path("out"), "--html"}).status, 1);
    const std::string page = readFile(dir.path("out/index.html"));
    EXPECT_TRUE(contains(page, "<p class=\"error\">font 1 is 300 lines high, too high to draw</p>")) << page;
    EXPECT_TRUE(contains(page, "<p>1 entry: 1 font</p>"));
}
