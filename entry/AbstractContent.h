#ifndef ZORV2_LBX_ABSTRACTCONTENT_H
#define ZORV2_LBX_ABSTRACTCONTENT_H

#include "entry/Content.h"

#include <functional>
#include <string>

namespace zorv2 {
namespace Lbx {

// Base of every entry kind. A kind tests the bytes in its constructor and sets
// `valid` when it accepts them; it reads through `data` but never owns it.
class Content::AbstractContent {
public:
    AbstractContent(std::string name, char* data, unsigned int size, TYPE type);
    virtual ~AbstractContent();
    virtual std::string info() = 0;

    // Little-endian reads composed byte by byte; they test no bounds.
    unsigned char read1(unsigned int offset);
    unsigned short read2(unsigned int offset);
    unsigned int read4(unsigned int offset);
    static unsigned char read1(char* data, unsigned int offset);
    static unsigned short read2(char* data, unsigned int offset);
    static unsigned int read4(char* data, unsigned int offset);

    std::string typeStr();
    static std::string typeStr(TYPE type);

    // The last step of every create: classifies the built bytes and insists
    // that they come out as `type`.
    static Content* genContent(Write& write, TYPE type);
    // The same for bytes built already: a block from new[] that the new
    // Content takes over.
    static Content* genContent(char* bytes, unsigned int size, TYPE type);
    // Verifying field by field costs a labelled field a byte, which an entry
    // that the plain create rebuilds byte for byte does not need: what
    // `create` makes when its bytes are those of `content`, else null (a
    // failure included), and the verifying path then reports as it goes.
    static Content* rebuiltAsIs(Content* content, const std::function<Content*()>& create);

    bool valid;
    std::string name;
    char* data;
    unsigned int size;
    TYPE type;

protected:
    // createDebug of the kinds that cannot be re-created.
    [[noreturn]] static void refuseDebugCreation(Content* content);
};

// Every decoder and every verified field reads through these: inline, a read
// is a load or two and no call.
inline unsigned char Content::AbstractContent::read1(char* data, unsigned int offset)
{
    return static_cast<unsigned char>(data[offset]);
}

inline unsigned short Content::AbstractContent::read2(char* data, unsigned int offset)
{
    return static_cast<unsigned short>(read1(data, offset) | (read1(data, offset + 1) << 8));
}

inline unsigned int Content::AbstractContent::read4(char* data, unsigned int offset)
{
    return read2(data, offset) | (static_cast<unsigned int>(read2(data, offset + 2)) << 16);
}

} // namespace Lbx
} // namespace zorv2

#endif
