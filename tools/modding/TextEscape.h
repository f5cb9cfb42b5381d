#ifndef ZORV2_LBX_TOOLS_MODDING_TEXTESCAPE_H
#define ZORV2_LBX_TOOLS_MODDING_TEXTESCAPE_H

#include <cstddef>
#include <string>
#include <vector>

// One text record as one line of plain ASCII, and back. Bytes 0x20 to 0x7E
// other than the backslash stand as themselves; a backslash is written `\\`,
// a line feed `\n`, a carriage return `\r`, a tab `\t`, and every other byte
// `\xHH` with two upper-case hex digits. The line is thus valid UTF-8 and
// opens in any editor, whatever the record holds.
namespace lbxtool {

std::string escapeText(const std::string& record);

// The value of a hex digit of either case; -1 for any other character.
int hexValue(char digit);

// The record a line stands for. Accepts exactly the forms above (hex digits
// in either case); anything else throws a message naming the problem and
// the column (counted from 1) where it starts.
std::string unescapeText(const std::string& line);

// The column (counted from 1) of `line` where the escape of the record's
// byte number `byte` (counted from 0) begins.
std::size_t lineColumn(const std::string& line, std::size_t byte);

// Records as a text file: each escaped, each ended by a line feed.
std::string escapedLines(const std::vector<std::string>& records);

// The lines of a text file, without their line feeds, and without what
// editors add that is no part of a line: the carriage return some write
// before a line feed, and a UTF-8 byte-order mark before the first line. A
// final line feed ends the last line and begins none.
std::vector<std::string> textLines(const std::string& text);

} // namespace lbxtool

#endif
