#ifndef ZORV2_LBX_UNKNOWN_H
#define ZORV2_LBX_UNKNOWN_H

#include "entry/AbstractContent.h"

namespace zorv2 {
namespace Lbx {

// The last kind of the chain: takes whatever no other kind took.
class Content::Unknown : public Content::AbstractContent {
public:
    Unknown(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Unknown();
    virtual std::string info();
    static Content* createDebug(Content* content);
};

} // namespace Lbx
} // namespace zorv2

#endif
