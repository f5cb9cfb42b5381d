#ifndef ZORV2_LBX_LEADER_H
#define ZORV2_LBX_LEADER_H

#include "entry/AbstractContent.h"

#include <string>

namespace zorv2 {
namespace Lbx {

// A fixed record of 3957 bytes.
class Content::Leader : public Content::AbstractContent {
public:
    Leader(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Leader();
    virtual std::string info();
    static Content* createDebug(Content* content);
};

} // namespace Lbx
} // namespace zorv2

#endif
