#include "entry/AbstractContent.h"

#include "entry/Write.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

namespace {

// Indexed by Content::TYPE.
const char* const typeTexts[] = {"abcost", "cursor", "empty", "font", "graphic",
                                 "leader", "race",   "sound", "text", "unknown"};

} // namespace

Content::AbstractContent::AbstractContent(std::string name, char* data, unsigned int size, TYPE type)
    : valid(false), name(std::move(name)), data(data), size(size), type(type)
{
}

Content::AbstractContent::~AbstractContent() = default;

unsigned char Content::AbstractContent::read1(unsigned int offset)
{
    return read1(data, offset);
}

unsigned short Content::AbstractContent::read2(unsigned int offset)
{
    return read2(data, offset);
}

unsigned int Content::AbstractContent::read4(unsigned int offset)
{
    return read4(data, offset);
}

std::string Content::AbstractContent::typeStr()
{
    return typeStr(type);
}

std::string Content::AbstractContent::typeStr(TYPE type)
{
    const auto value = static_cast<unsigned int>(type);
    return value < std::size(typeTexts) ? typeTexts[value] : "invalid";
}

Content* Content::AbstractContent::genContent(Write& write, TYPE type)
{
    const unsigned int size = write.size();
    return genContent(write.gen(), size, type);
}

Content* Content::AbstractContent::genContent(char* bytes, unsigned int size, TYPE type)
{
    std::unique_ptr<char[]> block(bytes);
    std::unique_ptr<Content> content(new Content("created " + typeStr(type), block.get(), size));
    block.release();
    if (content->type() != type)
        throw std::runtime_error("bug in " + typeStr(type) + " creation, sorry");
    return content.release();
}

Content* Content::AbstractContent::rebuiltAsIs(Content* content, const std::function<Content*()>& create)
{
    std::unique_ptr<Content> made;
    try {
        made.reset(create());
    } catch (const std::exception&) {
        return nullptr;
    }
    if (made->size() != content->size() || !std::equal(made->data(), made->data() + made->size(), content->data()))
        return nullptr;
    return made.release();
}

void Content::AbstractContent::refuseDebugCreation(Content* content)
{
    throw std::runtime_error("error: debug creation not implemented for " + content->typeStr() + ", sorry.");
}

} // namespace Lbx
} // namespace zorv2
