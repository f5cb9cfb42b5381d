#ifndef ZORV2_LBX_RACE_H
#define ZORV2_LBX_RACE_H

#include "entry/AbstractContent.h"

#include <string>

namespace zorv2 {
namespace Lbx {

// A fixed record of 407 bytes that starts with the 16-bit values 13 and 31.
class Content::Race : public Content::AbstractContent {
public:
    Race(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Race();
    virtual std::string info();
    static Content* createDebug(Content* content);
};

} // namespace Lbx
} // namespace zorv2

#endif
