#include "entry/Content.h"

#include "entry/AbstractContent.h"
#include "entry/Unknown.h"
#include "entry/Write.h"
#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "kinds/Abcost.h"
#include "kinds/Empty.h"
#include "kinds/Leader.h"
#include "kinds/Race.h"
#include "kinds/Sound.h"
#include "kinds/Text.h"

#include <fstream>
#include <iostream>
#include <iomanip>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

namespace {

using Kind = Content::AbstractContent;
using Factory = Kind* (*)(const std::string& name, char* data, unsigned int size);

Kind* makeEmpty(const std::string& name, char* data, unsigned int size)
{
    return new Content::Empty(name, data, size, Content::EMPTY);
}

Kind* makeGraphic(const std::string& name, char* data, unsigned int size)
{
    return new Content::Graphic(name, data, size, Content::GRAPHIC);
}

Kind* makeFont(const std::string& name, char* data, unsigned int size)
{
    return new Content::Font(name, data, size, Content::FONT);
}

Kind* makeSound(const std::string& name, char* data, unsigned int size)
{
    return new Content::Sound(name, data, size, Content::SOUND);
}

Kind* makeCursor(const std::string& name, char* data, unsigned int size)
{
    return new Content::Cursor(name, data, size, Content::CURSOR);
}

Kind* makeLeader(const std::string& name, char* data, unsigned int size)
{
    return new Content::Leader(name, data, size, Content::LEADER);
}

Kind* makeRace(const std::string& name, char* data, unsigned int size)
{
    return new Content::Race(name, data, size, Content::RACE);
}

Kind* makeAbcost(const std::string& name, char* data, unsigned int size)
{
    return new Content::Abcost(name, data, size, Content::ABCOST);
}

Kind* makeText(const std::string& name, char* data, unsigned int size)
{
    return new Content::Text(name, data, size, Content::TEXT);
}

std::runtime_error cannotOpen(const std::string& path)
{
    return std::runtime_error("'" + path + "' could not be opened");
}

// The classification order: the first kind whose test accepts the bytes wins,
// so an entry that several tests would accept gets the earliest of them.
// Unknown, which accepts everything, closes the chain in Content::gen.
const Factory classificationChain[] = {
    makeEmpty, makeGraphic, makeFont, makeSound, makeCursor, makeLeader, makeRace, makeAbcost, makeText,
};

} // namespace

Content::Content() : Content("empty", nullptr, 0)
{
}

Content::Content(std::string name, char* data, unsigned int size) : content(gen(std::move(name), data, size))
{
}

Content::Content(std::string path) : content(nullptr)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    const std::streamoff end = in.good() ? std::streamoff(in.tellg()) : -1;
    // A directory opens as a stream whose end lies beyond 4 GiB; nothing of
    // that size can be an entry, so it is refused before anything is allocated.
    if (end < 0 || end > std::streamoff{std::numeric_limits<unsigned int>::max()})
        throw cannotOpen(path);
    const auto size = static_cast<unsigned int>(end);
    in.seekg(0);
    std::unique_ptr<char[]> block(new char[size]);
    in.read(block.get(), size);
    if (static_cast<unsigned int>(in.gcount()) != size)
        throw cannotOpen(path);
    content = gen(path, block.get(), size);
    block.release();
}

Content::Content(const Content& other) : content(nullptr)
{
    const unsigned int size = other.content->size;
    std::unique_ptr<char[]> block(new char[size]);
    std::copy(other.content->data, other.content->data + size, block.get());
    content = gen(other.content->name, block.get(), size);
    block.release();
}

Content::~Content()
{
    // The block goes first; no kind's destructor reads it.
    delete[] content->data;
    delete content;
}

char* Content::data()
{
    return content->data;
}

unsigned int Content::size()
{
    return content->size;
}

Content::TYPE Content::type()
{
    return content->type;
}

std::string Content::typeStr()
{
    return content->typeStr();
}

std::string Content::typeStr(TYPE type)
{
    return AbstractContent::typeStr(type);
}

std::string Content::info()
{
    std::ostringstream line;
    line << std::setw(7) << typeStr() << ' ' << std::setw(10) << size() << "    " << contentInfo();
    return line.str();
}

std::string Content::contentInfo()
{
    return content->info();
}

Content* Content::debugCreate()
{
    return debugCreate(std::cerr);
}

Content* Content::debugCreate(std::ostream& report)
{
    switch (type()) {
    case ABCOST: return Abcost::createDebug(this);
    case CURSOR: return Cursor::createDebug(this, report);
    case EMPTY: return Empty::createDebug(this, report);
    case FONT: return Font::createDebug(this, report);
    case GRAPHIC: return Graphic::createDebug(this, report);
    case LEADER: return Leader::createDebug(this);
    case RACE: return Race::createDebug(this);
    case SOUND: return Sound::createDebug(this);
    case TEXT: return Text::createDebug(this, report);
    case UNKNOWN: return Unknown::createDebug(this);
    default: throw std::runtime_error("unhandled type");
    }
}

void Content::write(std::string path)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out.good())
        throw std::runtime_error("could not write to '" + path + "'");
    out.write(data(), size());
}

Content::AbstractContent* Content::gen(std::string name, char* data, unsigned int size)
{
    // A kind's test reads the bytes alone, so only the kind that accepts them
    // gets the name: the refused ones cost no copy of it.
    static const std::string unnamed;
    for (const Factory make : classificationChain) {
        std::unique_ptr<AbstractContent> kind(make(unnamed, data, size));
        if (kind->valid) {
            kind->name = std::move(name);
            return kind.release();
        }
    }
    return new Unknown(std::move(name), data, size, UNKNOWN);
}

Content::AbstractContent* Content::expect(TYPE wanted)
{
    if (content->type != wanted)
        throw std::runtime_error(content->name + " is of type " + typeStr() + " , not " + typeStr(wanted));
    return content;
}

Content::Abcost* Content::abcost()
{
    return static_cast<Abcost*>(expect(ABCOST));
}

Content::Cursor* Content::cursor()
{
    return static_cast<Cursor*>(expect(CURSOR));
}

Content::Font* Content::font()
{
    return static_cast<Font*>(expect(FONT));
}

Content::Graphic* Content::graphic()
{
    return static_cast<Graphic*>(expect(GRAPHIC));
}

Content::Leader* Content::leader()
{
    return static_cast<Leader*>(expect(LEADER));
}

Content::Race* Content::race()
{
    return static_cast<Race*>(expect(RACE));
}

Content::Sound* Content::sound()
{
    return static_cast<Sound*>(expect(SOUND));
}

Content::Text* Content::text()
{
    return static_cast<Text*>(expect(TEXT));
}

} // namespace Lbx
} // namespace zorv2
