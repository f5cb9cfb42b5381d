#ifndef ZORV2_LBX_SOUND_H
#define ZORV2_LBX_SOUND_H

#include "entry/AbstractContent.h"

#include <string>

namespace zorv2 {
namespace Lbx {

// A whole RIFF file of the WAVE form, recognised by its head only.
class Content::Sound : public Content::AbstractContent {
public:
    Sound(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~Sound();
    virtual std::string info();
    static Content* createDebug(Content* content);
};

} // namespace Lbx
} // namespace zorv2

#endif
