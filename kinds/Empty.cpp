#include "kinds/Empty.h"

#include <algorithm>
#include <iostream>

namespace zorv2 {
namespace Lbx {

namespace {

// An entry without data holds either no bytes at all or this marker: 20
// characters, then CR and LF, with no terminator behind them.
constexpr char MARKER[] = "cats rule dogs drool\r\n";
constexpr unsigned int MARKER_SIZE = sizeof(MARKER) - 1;

} // namespace

Content::Empty::Empty(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    // A block of no bytes is accepted without looking at its pointer, which
    // may be null.
    valid = size == 0 || (size == MARKER_SIZE && std::equal(data, data + MARKER_SIZE, MARKER));
}

Content::Empty::~Empty() = default;

std::string Content::Empty::info()
{
    return "";
}

Content* Content::Empty::create()
{
    return create(false);
}

Content* Content::Empty::create(bool marker)
{
    Write write;
    return create(write, marker);
}

Content* Content::Empty::create(Write& write, bool marker)
{
    if (marker) {
        // Appended raw and unlabelled: when verifying, only the total size is
        // held against the stored entry.
        std::string text(MARKER, MARKER_SIZE);
        write.add(&text[0], MARKER_SIZE);
    }
    return genContent(write, EMPTY);
}

Content* Content::Empty::createDebug(Content* content)
{
    return createDebug(content, std::cerr);
}

Content* Content::Empty::createDebug(Content* content, std::ostream& report)
{
    Write write;
    write.setDebug("empty", content->data(), content->size(), report);
    return create(write, content->size() == MARKER_SIZE);
}

} // namespace Lbx
} // namespace zorv2
