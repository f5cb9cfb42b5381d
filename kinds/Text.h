#ifndef ZORV2_LBX_TEXT_H
#define ZORV2_LBX_TEXT_H

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <string>
#include <vector>

namespace zorv2 {
namespace Lbx {

// A table of strings in records of one fixed length. The constructor checks
// the header against the size and keeps a copy of the records, so that the
// strings no longer depend on the entry's bytes; get cuts a record out of
// that copy.
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

private:
    // Both 0 for a refused entry, which so has no strings.
    unsigned int recordCount;
    unsigned int recordLength;
    // The records as the entry held them: one copy instead of a string each
    // keeps opening an archive cheap.
    std::vector<char> records;
};

} // namespace Lbx
} // namespace zorv2

#endif
