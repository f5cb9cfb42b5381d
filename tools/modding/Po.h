#ifndef ZORV2_LBX_TOOLS_MODDING_PO_H
#define ZORV2_LBX_TOOLS_MODDING_PO_H

#include <cstddef>
#include <string>
#include <vector>

// gettext's PO files, as its own tools write them (msgcat leaves what is
// written here byte for byte as it is) and as translators' tools hand them
// back.
namespace lbxtool {

struct PoEntry {
    std::vector<std::string> translatorComments; // "# ..."
    std::vector<std::string> comments;           // "#. ...", for the translator from the tool
    std::vector<std::string> references;         // "#: FILE:LINE"
    bool fuzzy = false;
    bool hasContext = false;
    std::string context, id, str; // as the strings stand, their C escapes undone
    std::size_t line = 0;         // where its keywords begin, from 1
    std::size_t strLine = 0;      // where msgstr begins
};

// The entries as a PO file, the first being the header (msgid ""); each
// string wrapped at 79 columns as gettext wraps it.
std::string poText(const std::vector<PoEntry>& entries);

// `value` in C string syntax, as gettext writes it: a line `KEYWORD "..."`,
// or `KEYWORD ""` and the string cut after each newline and where gettext
// would break it.
std::string poString(const std::string& keyword, const std::string& value);

// The entries of the PO file `text`, read from `path`, the header among
// them; obsolete entries (`#~`) are left out. Throws "'PATH' line N: ..." at
// the first thing that is not PO, and for plural forms, which text tables
// do not have.
std::vector<PoEntry> parsePo(const std::string& text, const std::string& path);

// The value of header field `field` ("Content-Type") in a header's msgstr;
// empty when it has none.
std::string headerField(const std::string& header, const std::string& field);

} // namespace lbxtool

#endif
