#ifndef ZORV2_LBX_TOOLS_MODDING_CHARSET_H
#define ZORV2_LBX_TOOLS_MODDING_CHARSET_H

#include <cstddef>
#include <map>
#include <stdexcept>
#include <functional>
#include <string>
#include <vector>

// The game's bytes as the characters its fonts draw, and back: for the text
// that translators and modders edit in their own letters. The library keeps
// a text table's bytes as they are; a charset says which character each
// byte stands for.
//
// Text in a charset is UTF-8 with two escapes: `\xHH` (two hex digits, upper
// case on the way out, either case on the way in) for a byte the charset
// does not map, or that would read back as another, and `\\` for a
// backslash. Decoding and then encoding gives back the same bytes, whatever
// they are. Text is normalised (NFC) before it is looked up, so that a
// composed and a decomposed letter find the same byte.
namespace lbxtool {

// A character the charset cannot write, or a broken escape: what and where,
// the column counted in characters from 1.
class CharsetError : public std::runtime_error {
public:
    CharsetError(const std::string& what, std::size_t column);
    std::size_t column;
    std::string problem;
};

class Charset {
public:
    // The DOS code page 437, the game's own: ASCII, and the letters, symbols
    // and box drawing of its upper half; control codes (0x00 to 0x1F, 0x7F)
    // and the no-break space (0xFF), which reads as a blank, stay escapes.
    static Charset codePage437();

    // A table in the form text hackers use: `HEX=text` a line, UTF-8, HEX
    // one or more bytes, text one or more characters; blank lines and lines
    // beginning with '#' are passed over. `name` names it in PO headers and
    // manifests. Throws naming `path` and the line that is not one.
    static Charset fromTable(const std::string& table, const std::string& name, const std::string& path);

    // The name of the built-in charset, as headers and manifests give it.
    static const char* const CODE_PAGE_437;

    const std::string& name() const { return charsetName; }
    // The table's text as it was read; empty for the built-in one.
    const std::string& table() const { return tableText; }
    bool builtIn() const { return tableText.empty(); }

    // The bytes as text in this charset.
    std::string decode(const std::string& bytes) const;

    // The bytes that `text` stands for; throws CharsetError for a character
    // the charset cannot write or a broken escape.
    std::string encode(const std::string& text) const;

private:
    void add(const std::string& bytes, const std::string& text);
    // The text of `bytes` cut at the charset's longest matches, without the
    // check that it reads back; `escaped` marks the pieces to escape.
    struct Piece {
        std::size_t at, size;
        const std::string* text; // null: escaped
    };
    std::vector<Piece> pieces(const std::string& bytes) const;
    static std::string render(const std::string& bytes, const std::vector<Piece>& pieces);

    std::string charsetName;
    std::string tableText;
    std::map<std::string, std::string> byBytes; // bytes to their text, as normalised
    std::map<std::string, std::string> byText;  // normalised text to its bytes, the first of a text only
    std::size_t longestBytes = 1, longestText = 1;
};

// `text` (UTF-8) in Unicode's normalisation form C; throws when it is not
// UTF-8.
std::string composed(const std::string& text);

// The column, counted in characters from 1, where byte `byte` of the UTF-8
// `text` stands; 1 when it is past the end.
std::size_t columnOf(const std::string& text, std::size_t byte);

// Whether `text` is valid UTF-8.
bool validUtf8(const std::string& text);

// The charset an option names: the built-in one by its name (any case) or
// when none is named, else a table file, read by `read` and named after its
// file name.
Charset charsetNamed(const std::string& option, const std::function<std::string(const std::string&)>& read);

} // namespace lbxtool

#endif
