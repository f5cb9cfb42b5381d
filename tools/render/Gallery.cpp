#include "tools/render/Gallery.h"

#include "tools/modding/Shapes.h"
#include "tools/modding/TextEscape.h"
#include "tools/render/PageAssets.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

const std::string PART_SUFFIX = ".part.html";
// Frame names of an animation are joined with a character that safe names
// never hold.
const char FRAME_SEPARATOR = '|';
constexpr unsigned int WIDTHS_PER_LINE = 16;

// The length of the well-formed UTF-8 sequence at `at`, or 0.
std::size_t utf8Sequence(const std::string& text, std::size_t at)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80)
        return 1;
    // The smallest and largest second byte each lead allows rule out overlong
    // forms, surrogates and code points past U+10FFFF.
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF)
        length = 2;
    else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0 || at + length > text.size() || byte(at + 1) < low || byte(at + 1) > high)
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (byte(at + i) < 0x80 || byte(at + i) > 0xBF)
            return 0;
    return length;
}

// Text for the page: markup characters escaped, and any byte that is not
// part of well-formed UTF-8 (a file name may hold such) in the text escape.
std::string htmlText(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = utf8Sequence(text, at);
        if (length == 0) {
            out += escapeText(text.substr(at, 1));
            ++at;
            continue;
        }
        switch (text[at]) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: out.append(text, at, length);
        }
        at += length;
    }
    return out;
}

// Entries are headed by the archive's file name; the archive's heading
// above them gives the whole path.
std::string shortName(const std::string& name)
{
    return fs::path(name).filename().string();
}

std::string anchor(const std::string& stem, unsigned int index)
{
    return stem + "-" + std::to_string(index);
}

std::string picture(const std::string& file, unsigned int width, unsigned int height)
{
    return "<img class=\"pix\" src=\"" + file + "\" style=\"--w:" + std::to_string(width) +
           ";--h:" + std::to_string(height) + "\" alt=\"" + file + "\">";
}

std::string colour(const unsigned char* rgba)
{
    char hex[8];
    std::snprintf(hex, sizeof hex, "#%02x%02x%02x", rgba[0], rgba[1], rgba[2]);
    return hex;
}

std::string swatch(const Swatch& palette)
{
    const std::size_t count = palette.rgba.size() / PIXEL_SIZE;
    std::ostringstream html;
    html << "<p class=\"note\">palette, colours " << palette.first << "\u2013" << palette.first + count - 1
         << "</p><div class=\"swatch\">";
    for (std::size_t at = 0; at + PIXEL_SIZE <= palette.rgba.size(); at += PIXEL_SIZE) {
        const unsigned char* rgba = &palette.rgba[at];
        const std::string title = std::to_string(palette.first + at / PIXEL_SIZE) + " " + colour(rgba);
        if (rgba[ALPHA] == 0)
            html << "<i class=\"clear\" title=\"" << title << " transparent\"></i>";
        else
            html << "<i style=\"background:" << colour(rgba) << "\" title=\"" << title << "\"></i>";
    }
    html << "</div>\n";
    return html.str();
}

// The frames' files, for page.js to add its controls to.
std::string player(const GalleryEntry& entry)
{
    std::string all;
    for (const std::string& frame : entry.files.frames)
        all += (all.empty() ? "" : std::string(1, FRAME_SEPARATOR)) + frame;
    std::ostringstream html;
    html << "<div class=\"player\" data-frames=\"" << all << "\" data-loop=\"" << (entry.view.loop ? 1 : 0) << "\">"
         << picture(entry.files.frames.front(), entry.view.width, entry.view.height) << "</div>\n<p class=\"note\">"
         << (entry.view.loop ? "loops" : "plays once, as it has no loop flag")
         << (entry.view.delta ? "; frames that build on the one before are shown drawn over it, as the game shows them" : "")
         << "</p>\n<details class=\"strip\"><summary>" << entry.files.frames.size() << " frames</summary>\n";
    for (const std::string& frame : entry.files.frames)
        html << picture(frame, entry.view.width, entry.view.height);
    html << "\n</details>\n";
    if (!entry.files.sheet.empty())
        html << "<p><a href=\"" << entry.files.sheet << "\">sprite sheet</a></p>\n";
    return html.str();
}

std::string fontFaces(const GalleryEntry& entry)
{
    std::ostringstream html;
    for (std::size_t f = 0; f < entry.files.fontSheets.size(); ++f) {
        const SheetFile& sheet = entry.files.fontSheets[f];
        const FontFace& face = entry.view.fonts[f];
        html << "<figure>" << picture(sheet.name, sheet.width, sheet.height) << "<figcaption>font " << f
             << ", height " << face.height << "</figcaption>\n<details><summary>widths</summary><pre>";
        for (std::size_t g = 0; g < face.widths.size(); ++g) {
            if (g % WIDTHS_PER_LINE == 0) {
                char row[24];
                std::snprintf(row, sizeof row, "%s%02zx:", g == 0 ? "" : "\n", g);
                html << row;
            }
            html << ' ' << face.widths[g];
        }
        html << "</pre></details></figure>\n";
    }
    return html.str();
}

std::string rows(const GalleryEntry& entry)
{
    std::ostringstream html;
    html << "<ol class=\"rows\" start=\"0\">\n";
    for (const std::string& record : entry.view.rows)
        html << "<li>" << htmlText(escapeText(record)) << "</li>\n";
    html << "</ol>\n";
    return html.str();
}

std::string section(const std::string& stem, const GalleryEntry& entry)
{
    std::ostringstream html;
    html << "<section class=\"entry\" id=\"" << anchor(stem, entry.view.index) << "\"><h3>" << htmlText(shortName(entry.view.name))
         << "<span class=\"kind\">" << entry.view.kind << "</span></h3>\n<pre>" << htmlText(entry.view.info) << "</pre>\n";
    if (!entry.error.empty())
        html << "<p class=\"error\">" << htmlText(entry.error) << "</p>\n";
    if (entry.files.frames.size() == 1)
        html << picture(entry.files.frames.front(), entry.view.width, entry.view.height) << '\n';
    else if (entry.files.frames.size() > 1)
        html << player(entry);
    if (!entry.view.palette.rgba.empty())
        html << swatch(entry.view.palette);
    html << fontFaces(entry);
    if (!entry.view.rows.empty())
        html << rows(entry);
    if (entry.view.sound)
        html << "<audio controls preload=\"metadata\" src=\"" << entry.files.file << "\"></audio>\n";
    if (!entry.files.file.empty())
        html << "<p><a href=\"" << entry.files.file << "\">" << entry.files.file << "</a></p>\n";
    html << "</section>\n";
    return html.str();
}

bool foldable(const GalleryEntry& entry)
{
    return entry.view.kind == "empty" && entry.error.empty();
}

// Consecutive empty entries make one run, anything else a run of its own:
// [begin, end) into the entries.
std::vector<std::pair<std::size_t, std::size_t>> runs(const std::vector<GalleryEntry>& entries)
{
    std::vector<std::pair<std::size_t, std::size_t>> found;
    for (std::size_t begin = 0; begin < entries.size();) {
        std::size_t end = begin + 1;
        while (foldable(entries[begin]) && end < entries.size() && foldable(entries[end]) &&
               entries[end].view.index == entries[end - 1].view.index + 1)
            ++end;
        found.emplace_back(begin, end);
        begin = end;
    }
    return found;
}

std::string span(const std::vector<GalleryEntry>& entries, std::size_t begin, std::size_t end)
{
    return end - begin == 1 ? std::to_string(entries[begin].view.index)
                            : std::to_string(entries[begin].view.index) + "\u2013" + std::to_string(entries[end - 1].view.index);
}

std::string contents(const std::string& stem, const std::vector<GalleryEntry>& entries)
{
    std::map<std::string, unsigned int> kinds;
    for (const GalleryEntry& entry : entries)
        ++kinds[entry.view.kind];
    std::ostringstream html;
    html << "<nav class=\"contents\"><p>" << entries.size() << (entries.size() == 1 ? " entry" : " entries");
    const char* separator = ": ";
    for (const auto& [kind, count] : kinds) {
        html << separator << count << ' ' << kind;
        separator = ", ";
    }
    html << "</p>\n<ol>\n";
    for (const auto& [begin, end] : runs(entries)) {
        html << "<li><a href=\"#" << anchor(stem, entries[begin].view.index) << "\">" << span(entries, begin, end) << "</a> "
             << entries[begin].view.kind;
        if (end - begin > 1)
            html << " \u00d7" << end - begin;
        html << "</li>\n";
    }
    html << "</ol></nav>\n";
    return html.str();
}

// How every gallery page begins.
constexpr char PAGE_HEAD[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>LBX gallery</title>\n";
static_assert(sizeof PAGE_HEAD - 1 <= GALLERY_MARK_SIZE, "a page is told by its head");

std::string page(const std::vector<std::string>& stems, const std::string& parts)
{
    std::ostringstream html;
    html << PAGE_HEAD << "<style>\n"
         << PAGE_STYLE << "</style>\n</head>\n<body>\n<header><h1>LBX gallery</h1><span id=\"zoom\"></span>\n<nav>";
    for (const std::string& stem : stems)
        html << "<a href=\"#" << stem << "\">" << stem << "</a>";
    html << "</nav></header>\n" << parts << "<script>\n" << PAGE_SCRIPT << GALLERY_SCRIPT << "</script>\n</body>\n</html>\n";
    return html.str();
}

} // namespace

bool isGalleryPage(const std::string& start)
{
    return start.rfind(PAGE_HEAD, 0) == 0;
}

Gallery::Gallery(std::string archive, std::string stem) : archive(std::move(archive)), stem(std::move(stem))
{
}

void Gallery::add(GalleryEntry entry)
{
    entries.push_back(std::move(entry));
}

std::string Gallery::part()
{
    std::ostringstream html;
    html << "<h2 id=\"" << stem << "\">" << htmlText(shortName(archive)) << "</h2>\n<p class=\"note\">"
         << htmlText(archive) << "</p>\n" << contents(stem, entries);
    for (const auto& [begin, end] : runs(entries)) {
        if (end - begin == 1) {
            html << section(stem, entries[begin]);
            continue;
        }
        html << "<section class=\"entry\" id=\"" << anchor(stem, entries[begin].view.index) << "\"><h3>"
             << htmlText(shortName(archive)) << '[' << span(entries, begin, end) << "]<span class=\"kind\">empty</span></h3>"
             << "<p class=\"note\">" << end - begin << " empty entries</p></section>\n";
    }
    return html.str();
}

std::string Gallery::write(const std::string& folder, Files& files)
{
    files.write((fs::path(folder) / (stem + PART_SUFFIX)).string(), part());
    std::vector<std::string> parts;
    for (const Files::Listed& file : files.list(folder))
        if (file.name.size() > PART_SUFFIX.size() &&
            file.name.compare(file.name.size() - PART_SUFFIX.size(), std::string::npos, PART_SUFFIX) == 0)
            parts.push_back(file.name);
    std::sort(parts.begin(), parts.end());
    std::vector<std::string> stems;
    std::string all;
    for (const std::string& name : parts) {
        stems.push_back(name.substr(0, name.size() - PART_SUFFIX.size()));
        all += files.read((fs::path(folder) / name).string());
    }
    const std::string index = (fs::path(folder) / GALLERY_PAGE).string();
    files.write(index, page(stems, all));
    return index;
}

} // namespace lbxtool
