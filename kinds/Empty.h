#ifndef ZORV2_LBX_EMPTY_H
#define ZORV2_LBX_EMPTY_H

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <iosfwd>
#include <string>

namespace zorv2 {
namespace Lbx {

// An entry with nothing in it: no bytes at all, or the 22-byte marker text.
class Content::Empty : public Content::AbstractContent {
public:
    Empty(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Empty();
    virtual std::string info();

    static Content* create();
    static Content* create(bool marker);
    static Content* create(Write& write, bool marker);
    static Content* createDebug(Content* content);
    static Content* createDebug(Content* content, std::ostream& report);
};

} // namespace Lbx
} // namespace zorv2

#endif
