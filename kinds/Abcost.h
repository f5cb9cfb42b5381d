#ifndef ZORV2_LBX_ABCOST_H
#define ZORV2_LBX_ABCOST_H

#include "entry/AbstractContent.h"

#include <string>

namespace zorv2 {
namespace Lbx {

// A fixed record of 56 or 57 bytes that ends in four zero bytes.
class Content::Abcost : public Content::AbstractContent {
public:
    Abcost(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Abcost();
    virtual std::string info();
    static Content* createDebug(Content* content);
};

} // namespace Lbx
} // namespace zorv2

#endif
