#include "tools/Gallery.h"

#include "tools/Support.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

const std::string PART_SUFFIX = ".part.html";
// Frame names of an animation are joined with a character that safe names
// never hold.
const char FRAME_SEPARATOR = '|';
constexpr int FRAME_MILLISECONDS = 120;

const std::string PAGE_HEAD = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>LBX gallery</title>
<style>
body { font-family: sans-serif; background: #222; color: #ddd; margin: 2em; }
h2 { border-bottom: 1px solid #555; }
section.entry { margin: 1em 0; padding: 0.5em; background: #2c2c2c; }
pre { margin: 0.3em 0; color: #9c9; white-space: pre-wrap; }
img { image-rendering: pixelated; background: repeating-conic-gradient(#444 0 25%, #333 0 50%) 0 0 / 16px 16px;
      margin: 2px; vertical-align: top; }
img.play { zoom: 3; }
img.frame { zoom: 2; }
a { color: #8bf; }
</style>
</head>
<body>
<h1>LBX gallery</h1>
)";

const std::string PAGE_TAIL = R"(<script>
for (const player of document.querySelectorAll('img.play[data-frames]')) {
  const frames = player.dataset.frames.split(')" + std::string(1, FRAME_SEPARATOR) + R"(');
  let shown = 0;
  setInterval(() => { shown = (shown + 1) % frames.length; player.src = frames[shown]; }, )" +
                              std::to_string(FRAME_MILLISECONDS) + R"();
}
</script>
</body>
</html>
)";

std::string escape(const std::string& text)
{
    std::string html;
    for (char c : text) {
        switch (c) {
        case '&': html += "&amp;"; break;
        case '<': html += "&lt;"; break;
        case '>': html += "&gt;"; break;
        case '"': html += "&quot;"; break;
        default: html += c;
        }
    }
    return html;
}

std::string readWhole(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string images(const GalleryEntry& entry)
{
    std::ostringstream html;
    if (entry.frames.size() > 1) {
        std::string all;
        for (const std::string& frame : entry.frames)
            all += (all.empty() ? "" : std::string(1, FRAME_SEPARATOR)) + frame;
        html << "<img class=\"play\" src=\"" << entry.frames.front() << "\" data-frames=\"" << all
             << "\" alt=\"animation\">\n";
    }
    for (const std::string& frame : entry.frames)
        html << "<img class=\"" << (entry.frames.size() > 1 ? "frame" : "play") << "\" src=\"" << frame << "\" alt=\""
             << frame << "\">";
    if (!entry.frames.empty())
        html << '\n';
    if (!entry.sheet.empty())
        html << "<p><a href=\"" << entry.sheet << "\">sprite sheet</a></p>\n";
    return html.str();
}

} // namespace

Gallery::Gallery(std::string archive) : archive(std::move(archive))
{
}

void Gallery::add(GalleryEntry entry)
{
    entries.push_back(std::move(entry));
}

std::string Gallery::part()
{
    std::ostringstream html;
    html << "<h2>" << escape(archive) << "</h2>\n";
    for (const GalleryEntry& entry : entries) {
        html << "<section class=\"entry\"><b>" << escape(entry.name) << "</b>\n<pre>" << escape(entry.info)
             << "</pre>\n"
             << images(entry);
        if (!entry.preview.empty())
            html << "<pre>" << escape(entry.preview) << "</pre>\n";
        if (entry.sound)
            html << "<audio controls src=\"" << entry.file << "\"></audio>\n";
        else if (!entry.file.empty())
            html << "<p><a href=\"" << entry.file << "\">" << entry.file << "</a></p>\n";
        html << "</section>\n";
    }
    return html.str();
}

std::string Gallery::write(const std::string& folder, const std::string& stem)
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
    std::string page = PAGE_HEAD;
    for (const fs::path& path : parts)
        page += readWhole(path);
    page += PAGE_TAIL;
    const std::string index = (fs::path(folder) / "index.html").string();
    writeText(index, page);
    return index;
}

} // namespace lbxtool
