#include "tools/modding/Po.h"

#include "tools/modding/TextEscape.h"

#include <unilbrk.h>

#include <cstring>
#include <stdexcept>

namespace lbxtool {

namespace {

// gettext's layout: lines of at most 79 columns, the quotes included.
constexpr int PAGE_WIDTH = 79;
// The escapes gettext writes for control characters, beside their letters.
constexpr char ESCAPES[] = "\a\b\f\n\r\t\v";
constexpr char ESCAPE_NAMES[] = "abfnrtv";

std::runtime_error broken(const std::string& path, std::size_t line, const std::string& what)
{
    return std::runtime_error("'" + path + "' line " + std::to_string(line) + ": " + what);
}

std::string comment(const std::string& mark, const std::string& text)
{
    return mark + (text.empty() ? "" : " " + text) + "\n";
}

} // namespace

// As gettext's write-po.c writes a string: the value cut into portions after
// each newline; in each, backslashes, quotes and control characters
// escaped, and breaks chosen by Unicode's line breaking (libunistring's, the
// one gettext calls) within 79 columns, never inside an escape or before a
// final "\n". A string that takes more than one line starts with "".
std::string poString(const std::string& keyword, const std::string& value)
{
    // Lines after the first begin with the quote alone.
    const int startAfterBreak = 1;
    const int width = PAGE_WIDTH - 1 - startAfterBreak;
    std::string out;
    bool first = true;
    std::size_t start = 0;
    do {
        std::size_t end = start;
        while (end < value.size())
            if (value[end++] == '\n')
                break;
        std::string portion;
        std::string overrides;
        for (std::size_t i = start; i < end; ++i) {
            const char c = value[i];
            const char* escape = c == '\0' ? nullptr : std::strchr(ESCAPES, c);
            if (escape != nullptr || c == '\\' || c == '"') {
                portion += '\\';
                portion += escape != nullptr ? ESCAPE_NAMES[escape - ESCAPES] : c;
                overrides += static_cast<char>(UC_BREAK_UNDEFINED);
                overrides += static_cast<char>(UC_BREAK_PROHIBITED);
            } else {
                portion += c;
                overrides += static_cast<char>(UC_BREAK_UNDEFINED);
            }
        }
        if (end > start && value[end - 1] == '\n')
            overrides[portion.size() - 2] = static_cast<char>(UC_BREAK_PROHIBITED);
        std::string breaks(portion.size(), static_cast<char>(UC_BREAK_PROHIBITED));
        for (;;) {
            // After the keyword, its blank and the opening quote.
            const int startColumn = (first ? static_cast<int>(keyword.size()) + 1 : 0) + 1 - startAfterBreak;
            if (!portion.empty())
                ulc_width_linebreaks(portion.data(), portion.size(), width, startColumn, 0, overrides.data(), "UTF-8",
                                     &breaks[0]);
            const bool wraps = end < value.size() || startColumn > width ||
                               breaks.find(static_cast<char>(UC_BREAK_POSSIBLE)) != std::string::npos;
            if (first && !portion.empty() && wraps) {
                out += keyword + " \"\"\n";
                first = false;
                continue;
            }
            break;
        }
        if (first) {
            out += keyword + " ";
            first = false;
        }
        out += '"';
        for (std::size_t i = 0; i < portion.size(); ++i) {
            if (breaks[i] == static_cast<char>(UC_BREAK_POSSIBLE))
                out += "\"\n\"";
            out += portion[i];
        }
        out += "\"\n";
        start = end;
    } while (start < value.size());
    return out;
}

std::string poText(const std::vector<PoEntry>& entries)
{
    std::string text;
    for (std::size_t e = 0; e < entries.size(); ++e) {
        const PoEntry& entry = entries[e];
        if (e > 0)
            text += '\n';
        for (const std::string& line : entry.translatorComments)
            text += comment("#", line);
        for (const std::string& line : entry.comments)
            text += comment("#.", line);
        if (!entry.references.empty()) {
            // As gettext wraps references: a new "#:" line before one that
            // would reach the page's width.
            std::size_t column = 2;
            text += "#:";
            for (const std::string& reference : entry.references) {
                if (column > 2 && column + reference.size() >= static_cast<std::size_t>(PAGE_WIDTH)) {
                    text += "\n#:";
                    column = 2;
                }
                text += " " + reference;
                column += 1 + reference.size();
            }
            text += '\n';
        }
        // gettext keeps no fuzzy mark on an entry with nothing translated.
        if (entry.fuzzy && !entry.str.empty())
            text += "#, fuzzy\n";
        if (entry.hasContext)
            text += poString("msgctxt", entry.context);
        text += poString("msgid", entry.id);
        text += poString("msgstr", entry.str);
    }
    return text;
}

namespace {

// One PO file read line by line.
class PoReader {
public:
    PoReader(const std::string& text, const std::string& path) : path(path), lines(textLines(text)) {}

    std::vector<PoEntry> entries()
    {
        std::vector<PoEntry> found;
        PoEntry entry;
        enum { NONE, CONTEXT, ID, STR } last = NONE;
        bool obsolete = false, any = false;
        const auto finish = [&] {
            if (any && !obsolete) {
                if (last != STR)
                    throw broken(path, entry.line, "an entry without msgstr");
                found.push_back(entry);
            }
            entry = PoEntry();
            last = NONE;
            obsolete = false;
            any = false;
        };
        for (number = 1; number <= lines.size(); ++number) {
            std::string line = lines[number - 1];
            const std::size_t first = line.find_first_not_of(" \t");
            if (first == std::string::npos)
                continue; // a blank line
            line = line.substr(first);
            const bool obsoleteLine = line.compare(0, 2, "#~") == 0;
            if (obsolete != obsoleteLine)
                finish(); // an obsolete entry ends where another begins, and is left out
            if (line[0] == '#') {
                if (obsoleteLine) {
                    if (last == STR)
                        finish();
                    obsolete = any = true;
                    continue;
                }
                if (last == STR)
                    finish();
                if (line.compare(0, 2, "#.") == 0)
                    entry.comments.push_back(trimmed(line.substr(2)));
                else if (line.compare(0, 2, "#:") == 0)
                    addReferences(entry, line.substr(2));
                else if (line.compare(0, 2, "#,") == 0)
                    entry.fuzzy = entry.fuzzy || line.find("fuzzy") != std::string::npos;
                else if (line.compare(0, 2, "#|") != 0)
                    entry.translatorComments.push_back(trimmed(line.substr(1)));
                continue;
            }
            if (line[0] == '"') {
                std::string* into = last == CONTEXT ? &entry.context : last == ID ? &entry.id : last == STR ? &entry.str : nullptr;
                if (into == nullptr)
                    throw broken(path, number, "a string that follows no keyword");
                *into += quoted(line);
                continue;
            }
            const std::size_t space = line.find_first_of(" \t\"");
            const std::string keyword = line.substr(0, space);
            const std::string rest = space == std::string::npos ? "" : line.substr(line.find_first_not_of(" \t", space));
            if (keyword == "msgctxt") {
                if (last == STR)
                    finish();
                if (last != NONE)
                    throw broken(path, number, "msgctxt where msgid or msgstr should follow");
                entry.line = number;
                entry.hasContext = true;
                entry.context = quoted(rest);
                last = CONTEXT;
            } else if (keyword == "msgid") {
                if (last == STR)
                    finish();
                if (last == ID)
                    throw broken(path, number, "msgid where msgstr should follow");
                if (last == NONE)
                    entry.line = number;
                entry.id = quoted(rest);
                last = ID;
            } else if (keyword == "msgstr") {
                if (last != ID)
                    throw broken(path, number, "msgstr without msgid before it");
                entry.strLine = number;
                entry.str = quoted(rest);
                last = STR;
            } else if (keyword == "msgid_plural" || keyword.compare(0, 7, "msgstr[") == 0) {
                throw broken(path, number, "plural forms; a text table's records have none");
            } else {
                throw broken(path, number, "'" + keyword + "' is no PO keyword");
            }
            any = true;
        }
        if (last != NONE && last != STR)
            throw broken(path, lines.size(), "the file ends inside an entry");
        finish();
        return found;
    }

private:
    static std::string trimmed(const std::string& text)
    {
        return text.empty() || text[0] != ' ' ? text : text.substr(1);
    }

    static void addReferences(PoEntry& entry, const std::string& text)
    {
        std::size_t at = 0;
        while ((at = text.find_first_not_of(" \t", at)) != std::string::npos) {
            const std::size_t end = text.find_first_of(" \t", at);
            entry.references.push_back(text.substr(at, end - at));
            at = end;
        }
    }

    // A quoted C string, its escapes undone; nothing but blanks behind it.
    std::string quoted(const std::string& token)
    {
        if (token.empty() || token[0] != '"')
            throw broken(path, number, "a string in double quotes should follow");
        std::string value;
        std::size_t i = 1;
        for (; i < token.size() && token[i] != '"'; ++i) {
            if (token[i] != '\\') {
                value += token[i];
                continue;
            }
            if (++i == token.size())
                break;
            const char c = token[i];
            const char* named = std::strchr(ESCAPE_NAMES, c);
            if (c == '\\' || c == '"' || c == '\'' || c == '?') {
                value += c;
            } else if (c != '\0' && named != nullptr) {
                value += ESCAPES[named - ESCAPE_NAMES];
            } else if (c >= '0' && c <= '7') {
                int byte = 0;
                for (int digits = 0; digits < 3 && i < token.size() && token[i] >= '0' && token[i] <= '7'; ++digits)
                    byte = byte * 8 + (token[i++] - '0');
                --i;
                value += static_cast<char>(byte);
            } else if (c == 'x' && i + 1 < token.size() && hexValue(token[i + 1]) >= 0) {
                int byte = 0;
                while (i + 1 < token.size() && hexValue(token[i + 1]) >= 0)
                    byte = (byte * 16 + hexValue(token[++i])) & 0xFF;
                value += static_cast<char>(byte);
            } else {
                throw broken(path, number, "invalid escape '\\" + std::string(1, c) + "' in a string");
            }
        }
        if (i >= token.size())
            throw broken(path, number, "a string without its closing quote");
        if (token.find_first_not_of(" \t", i + 1) != std::string::npos)
            throw broken(path, number, "something after the string's closing quote");
        return value;
    }

    const std::string path;
    const std::vector<std::string> lines;
    std::size_t number = 0;
};

} // namespace

std::vector<PoEntry> parsePo(const std::string& text, const std::string& path)
{
    return PoReader(text, path).entries();
}

std::string headerField(const std::string& header, const std::string& field)
{
    std::size_t at = 0;
    while (at < header.size()) {
        std::size_t end = header.find('\n', at);
        if (end == std::string::npos)
            end = header.size();
        const std::string line = header.substr(at, end - at);
        if (line.size() > field.size() && line.compare(0, field.size(), field) == 0 && line[field.size()] == ':') {
            const std::size_t value = line.find_first_not_of(' ', field.size() + 1);
            return value == std::string::npos ? "" : line.substr(value);
        }
        at = end + 1;
    }
    return "";
}

} // namespace lbxtool
