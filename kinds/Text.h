#ifndef ZORV2_LBX_TEXT_H
#define ZORV2_LBX_TEXT_H

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace zorv2 {
namespace Lbx {

// A table of strings in records of one fixed length. The constructor checks
// the header against the size and keeps the strings, so that they no longer
// depend on the entry's bytes.
class Content::Text : public Content::AbstractContent {
public:
    Text(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Text();
    virtual std::string info();

    std::string get(unsigned int index);
    // The number of strings; the entry's byte count stays AbstractContent::size.
    unsigned int size();

    static Content* create(std::vector<std::string>& strings);
    static void create(Write& write, std::vector<std::string>& strings);
    static Content* createDebug(Content* content);
    static Content* createDebug(Content* content, std::ostream& report);

private:
    // Appends "nr" and "textsize"; returns the record length it chose.
    static std::size_t addHeader(Write& write, const std::vector<std::string>& strings);
    void keepStrings(unsigned int nr, unsigned int textsize);
    // Where string `index` begins in `characters`: where the one before ends.
    unsigned int startOf(unsigned int index);

    // Every string, one behind the other, and where each ends there: two
    // blocks instead of a string each keep opening an archive cheap, and
    // what follows a string's terminator is not kept. Both are empty for a
    // refused entry, which so has no strings.
    std::string characters;
    std::vector<unsigned int> ends;
};

} // namespace Lbx
} // namespace zorv2

#endif
