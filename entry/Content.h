#ifndef ZORV2_LBX_CONTENT_H
#define ZORV2_LBX_CONTENT_H

#include <iosfwd>
#include <string>

namespace zorv2 {
namespace Lbx {

// Handle over one entry of an archive: owns the entry's bytes and the kind
// object that the classification chose for them.
class Content {
public:
    // Values are in alphabetical order of the names, not in the order in
    // which the kinds are tried.
    enum TYPE {
        ABCOST,
        CURSOR,
        EMPTY,
        FONT,
        GRAPHIC,
        LEADER,
        RACE,
        SOUND,
        TEXT,
        UNKNOWN
    };

    class AbstractContent;
    class Write;
    class Palette;
    class Unknown;
    class Empty;
    class Graphic;
    class Font;
    class Sound;
    class Cursor;
    class Leader;
    class Race;
    class Abcost;
    class Text;

    Content();
    Content(std::string name, char* data, unsigned int size);
    Content(std::string path);
    Content(const Content& other);
    Content& operator=(const Content&) = delete;
    virtual ~Content();

    char* data();
    unsigned int size();
    TYPE type();
    std::string typeStr();
    static std::string typeStr(TYPE type);
    std::string info();
    std::string contentInfo();
    Content* debugCreate();
    // The same, with the differing fields reported on `report` instead of
    // std::cerr, so that entries can be verified side by side.
    Content* debugCreate(std::ostream& report);
    void write(std::string path);
    AbstractContent* gen(std::string name, char* data, unsigned int size);

    Abcost* abcost();
    Cursor* cursor();
    Font* font();
    Graphic* graphic();
    Leader* leader();
    Race* race();
    Sound* sound();
    Text* text();

private:
    // The kind object if this entry is of kind `wanted`; throws otherwise.
    AbstractContent* expect(TYPE wanted);

    AbstractContent* content;
};

} // namespace Lbx
} // namespace zorv2

#endif
