#include "tools/Gallery.h"

#include "tools/Pictures.h"
#include "tools/SafeWrite.h"
#include "tools/TextEscape.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

const std::string PART_SUFFIX = ".part.html";
// Frame names of an animation are joined with a character that safe names
// never hold.
const char FRAME_SEPARATOR = '|';
constexpr int FRAME_MILLISECONDS = 120;
constexpr int DEFAULT_ZOOM = 3;
constexpr int LARGEST_ZOOM = 8;
constexpr unsigned int WIDTHS_PER_LINE = 16;

const std::string STYLE = R"(<style>
:root { --zoom: )" + std::to_string(DEFAULT_ZOOM) + R"(; }
body { font-family: sans-serif; background: #222; color: #ddd; margin: 1em 2em; }
header { position: sticky; top: 0; background: #222; padding: 0.4em 0; z-index: 1; border-bottom: 1px solid #444; }
header h1 { display: inline; font-size: 1.3em; margin-right: 1em; }
header nav a { margin-right: 0.6em; }
button { background: #3a3a3a; color: #ddd; border: 1px solid #555; border-radius: 3px; padding: 0.1em 0.5em; }
button.on { background: #68a; color: #fff; }
select { background: #3a3a3a; color: #ddd; border: 1px solid #555; }
h2 { border-bottom: 1px solid #555; margin-top: 1.5em; }
h2, section.entry { scroll-margin-top: 5em; }
h3 { margin: 0 0 0.3em; font-size: 1em; }
.kind { color: #9bd; font-weight: normal; margin-left: 0.5em; }
nav.contents ol { columns: 14em auto; list-style: none; padding: 0; font-family: monospace; }
section.entry { margin: 0.8em 0; padding: 0.5em 0.7em; background: #2c2c2c; border-radius: 4px; }
pre { margin: 0.3em 0; color: #9c9; white-space: pre-wrap; }
.error { color: #f88; }
img.pix { image-rendering: pixelated; image-rendering: crisp-edges;
          width: calc(var(--w) * var(--zoom) * 1px); height: calc(var(--h) * var(--zoom) * 1px);
          background: repeating-conic-gradient(#555 0 25%, #444 0 50%) 0 0 / 16px 16px;
          margin: 2px; vertical-align: top; }
.player .controls { margin: 0.3em 0; display: flex; gap: 0.4em; align-items: center; }
.player .at { font-family: monospace; min-width: 9em; }
.note { color: #aaa; font-size: 0.9em; }
details { margin: 0.3em 0; }
.swatch { display: grid; grid-template-columns: repeat(16, 1.1em); gap: 1px; margin: 0.3em 0; }
.swatch i { display: block; height: 1.1em; }
.swatch i.clear { background: repeating-conic-gradient(#555 0 25%, #444 0 50%) 0 0 / 8px 8px; }
figure { display: inline-block; margin: 0.3em 1em 0.3em 0; vertical-align: top; }
ol.rows { font-family: monospace; max-height: 24em; overflow: auto; background: #262626; padding-left: 4em; }
a { color: #8bf; }
</style>
)";

// Plays each animation, and keeps the zoom the reader chose; the frames of
// a player are the file names in its data-frames.
const std::string SCRIPT = R"(<script>
'use strict';
(() => {
  const zoomKey = 'lbx-gallery-zoom';
  const zoomButtons = document.querySelectorAll('#zoom button');
  const setZoom = (zoom) => {
    document.documentElement.style.setProperty('--zoom', zoom);
    for (const button of zoomButtons) button.classList.toggle('on', Number(button.dataset.zoom) === zoom);
    try { localStorage.setItem(zoomKey, String(zoom)); } catch (e) { /* storage may be off for file pages */ }
  };
  let remembered = )" + std::to_string(DEFAULT_ZOOM) + R"(;
  try { remembered = Number(localStorage.getItem(zoomKey)) || remembered; } catch (e) { /* as above */ }
  for (const button of zoomButtons) button.addEventListener('click', () => setZoom(Number(button.dataset.zoom)));
  setZoom(remembered);

  class Player {
    constructor(element) {
      this.element = element;
      this.frames = element.dataset.frames.split(')" + std::string(1, FRAME_SEPARATOR) + R"(');
      this.loop = element.dataset.loop === '1';
      this.image = element.querySelector('img');
      this.at = element.querySelector('.at');
      this.playButton = element.querySelector('[data-act=play]');
      this.speed = element.querySelector('select');
      this.timer = null;
      element.querySelector('[data-act=back]').addEventListener('click', () => { this.pause(); this.show(this.shown - 1); });
      element.querySelector('[data-act=next]').addEventListener('click', () => { this.pause(); this.show(this.shown + 1); });
      this.playButton.addEventListener('click', () => (this.timer === null ? this.play() : this.pause()));
      element.parentElement.querySelectorAll('.strip img').forEach((thumb, frame) =>
        thumb.addEventListener('click', () => { this.pause(); this.show(frame); }));
      this.show(0);
      this.play();
    }
    get last() { return this.frames.length - 1; }
    show(frame) {
      const count = this.frames.length;
      this.shown = ((frame % count) + count) % count;
      this.image.src = this.frames[this.shown];
      this.at.textContent = 'frame ' + this.shown + ' of ' + count;
      this.element.dataset.shown = String(this.shown);
    }
    play() {
      if (!this.loop && this.shown === this.last) this.show(0);
      this.playButton.textContent = 'pause';
      this.element.dataset.state = 'playing';
      this.schedule();
    }
    schedule() {
      this.timer = setTimeout(() => this.tick(), )" + std::to_string(FRAME_MILLISECONDS) + R"( / Number(this.speed.value));
    }
    tick() {
      this.show(this.shown + 1);
      if (!this.loop && this.shown === this.last) this.pause();
      else this.schedule();
    }
    pause() {
      clearTimeout(this.timer);
      this.timer = null;
      this.playButton.textContent = 'play';
      this.element.dataset.state = 'stopped';
    }
  }
  document.querySelectorAll('.player').forEach((element) => new Player(element));
  document.body.dataset.ready = '1';
})();
</script>
)";

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

std::string readWhole(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
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

std::string player(const GalleryEntry& entry)
{
    std::string all;
    for (const std::string& frame : entry.frames)
        all += (all.empty() ? "" : std::string(1, FRAME_SEPARATOR)) + frame;
    std::ostringstream html;
    html << "<div class=\"player\" data-frames=\"" << all << "\" data-loop=\"" << (entry.loop ? 1 : 0) << "\">\n"
         << picture(entry.frames.front(), entry.width, entry.height) << "\n<div class=\"controls\">"
         << "<button data-act=\"back\">back</button><button data-act=\"play\">play</button>"
         << "<button data-act=\"next\">next</button><span class=\"at\"></span><label>speed <select>"
         << "<option value=\"0.25\">1/4</option><option value=\"0.5\">1/2</option>"
         << "<option value=\"1\" selected>1</option><option value=\"2\">2</option><option value=\"4\">4</option>"
         << "</select></label></div>\n<p class=\"note\">" << (entry.loop ? "loops" : "plays once, as it has no loop flag")
         << (entry.delta ? "; frames that build on the one before are shown drawn over it, as the game shows them" : "")
         << "</p>\n</div>\n<details class=\"strip\"><summary>" << entry.frames.size() << " frames</summary>\n";
    for (const std::string& frame : entry.frames)
        html << picture(frame, entry.width, entry.height);
    html << "\n</details>\n";
    if (!entry.sheet.empty())
        html << "<p><a href=\"" << entry.sheet << "\">sprite sheet</a></p>\n";
    return html.str();
}

std::string fontFaces(const GalleryEntry& entry)
{
    std::ostringstream html;
    for (std::size_t f = 0; f < entry.fonts.size(); ++f) {
        const FontFace& face = entry.fonts[f];
        html << "<figure>" << picture(face.sheet, face.sheetWidth, face.sheetHeight) << "<figcaption>font " << f
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
    for (const std::string& record : entry.rows)
        html << "<li>" << htmlText(escapeText(record)) << "</li>\n";
    html << "</ol>\n";
    return html.str();
}

std::string section(const std::string& stem, const GalleryEntry& entry)
{
    std::ostringstream html;
    html << "<section class=\"entry\" id=\"" << anchor(stem, entry.index) << "\"><h3>" << htmlText(shortName(entry.name))
         << "<span class=\"kind\">" << entry.kind << "</span></h3>\n<pre>" << htmlText(entry.info) << "</pre>\n";
    if (!entry.error.empty())
        html << "<p class=\"error\">" << htmlText(entry.error) << "</p>\n";
    if (entry.frames.size() == 1)
        html << picture(entry.frames.front(), entry.width, entry.height) << '\n';
    else if (entry.frames.size() > 1)
        html << player(entry);
    if (!entry.palette.rgba.empty())
        html << swatch(entry.palette);
    html << fontFaces(entry);
    if (!entry.rows.empty())
        html << rows(entry);
    if (entry.sound)
        html << "<audio controls preload=\"metadata\" src=\"" << entry.file << "\"></audio>\n";
    if (!entry.file.empty())
        html << "<p><a href=\"" << entry.file << "\">" << entry.file << "</a></p>\n";
    html << "</section>\n";
    return html.str();
}

bool foldable(const GalleryEntry& entry)
{
    return entry.kind == "empty" && entry.error.empty();
}

// Consecutive empty entries make one run, anything else a run of its own:
// [begin, end) into the entries.
std::vector<std::pair<std::size_t, std::size_t>> runs(const std::vector<GalleryEntry>& entries)
{
    std::vector<std::pair<std::size_t, std::size_t>> found;
    for (std::size_t begin = 0; begin < entries.size();) {
        std::size_t end = begin + 1;
        while (foldable(entries[begin]) && end < entries.size() && foldable(entries[end]) &&
               entries[end].index == entries[end - 1].index + 1)
            ++end;
        found.emplace_back(begin, end);
        begin = end;
    }
    return found;
}

std::string span(const std::vector<GalleryEntry>& entries, std::size_t begin, std::size_t end)
{
    return end - begin == 1 ? std::to_string(entries[begin].index)
                            : std::to_string(entries[begin].index) + "\u2013" + std::to_string(entries[end - 1].index);
}

std::string contents(const std::string& stem, const std::vector<GalleryEntry>& entries)
{
    std::map<std::string, unsigned int> kinds;
    for (const GalleryEntry& entry : entries)
        ++kinds[entry.kind];
    std::ostringstream html;
    html << "<nav class=\"contents\"><p>" << entries.size() << (entries.size() == 1 ? " entry" : " entries");
    const char* separator = ": ";
    for (const auto& [kind, count] : kinds) {
        html << separator << count << ' ' << kind;
        separator = ", ";
    }
    html << "</p>\n<ol>\n";
    for (const auto& [begin, end] : runs(entries)) {
        html << "<li><a href=\"#" << anchor(stem, entries[begin].index) << "\">" << span(entries, begin, end) << "</a> "
             << entries[begin].kind;
        if (end - begin > 1)
            html << " \u00d7" << end - begin;
        html << "</li>\n";
    }
    html << "</ol></nav>\n";
    return html.str();
}

std::string page(const std::vector<std::string>& stems, const std::string& parts)
{
    std::ostringstream html;
    html << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>LBX gallery</title>\n"
         << STYLE << "</head>\n<body>\n<header><h1>LBX gallery</h1><span id=\"zoom\">zoom";
    for (int zoom = 1; zoom <= LARGEST_ZOOM; ++zoom)
        html << " <button data-zoom=\"" << zoom << "\">" << zoom << "x</button>";
    html << "</span>\n<nav>";
    for (const std::string& stem : stems)
        html << "<a href=\"#" << stem << "\">" << stem << "</a>";
    html << "</nav></header>\n" << parts << SCRIPT << "</body>\n</html>\n";
    return html.str();
}

} // namespace

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
        html << "<section class=\"entry\" id=\"" << anchor(stem, entries[begin].index) << "\"><h3>"
             << htmlText(shortName(archive)) << '[' << span(entries, begin, end) << "]<span class=\"kind\">empty</span></h3>"
             << "<p class=\"note\">" << end - begin << " empty entries</p></section>\n";
    }
    return html.str();
}

std::string Gallery::write(const std::string& folder)
{
    writeText((fs::path(folder) / (stem + PART_SUFFIX)).string(), part());
    std::vector<fs::path> parts;
    for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
        const std::string name = file.path().filename().string();
        if (name.size() > PART_SUFFIX.size() && name.compare(name.size() - PART_SUFFIX.size(), std::string::npos,
                                                             PART_SUFFIX) == 0)
            parts.push_back(file.path());
    }
    std::sort(parts.begin(), parts.end());
    std::vector<std::string> stems;
    std::string all;
    for (const fs::path& path : parts) {
        const std::string name = path.filename().string();
        stems.push_back(name.substr(0, name.size() - PART_SUFFIX.size()));
        all += readWhole(path);
    }
    const std::string index = (fs::path(folder) / "index.html").string();
    writeText(index, page(stems, all));
    return index;
}

} // namespace lbxtool
