#include "kinds/Sound.h"

namespace zorv2 {
namespace Lbx {

namespace {

// A sound is a whole RIFF file of the WAVE form; only its head is tested,
// identifiers read as little-endian 32-bit words:
//
//   0   "RIFF"       4
//   4   length       4   of the rest of the file, the entry's size less 8
//   8   "WAVE"       4
//   12  "fmt "       4   the first sub-chunk
//   16  the rest         at least one byte
constexpr unsigned int RIFF_OFFSET = 0;
constexpr unsigned int LENGTH_OFFSET = 4;
constexpr unsigned int FORM_OFFSET = 8;
constexpr unsigned int FIRST_CHUNK_OFFSET = 12;
constexpr unsigned int HEAD_SIZE = 16;
// The length counts neither the "RIFF" identifier nor itself.
constexpr unsigned int UNCOUNTED = 8;
constexpr unsigned int RIFF_ID = 0x46464952;
constexpr unsigned int WAVE_ID = 0x45564157;
constexpr unsigned int FMT_ID = 0x20746D66;

} // namespace

Content::Sound::Sound(std::string name, char* data, unsigned int size, TYPE type)
    : AbstractContent(std::move(name), data, size, type)
{
    valid = size > HEAD_SIZE && read4(RIFF_OFFSET) == RIFF_ID && read4(LENGTH_OFFSET) == size - UNCOUNTED &&
            read4(FORM_OFFSET) == WAVE_ID && read4(FIRST_CHUNK_OFFSET) == FMT_ID;
}

Content::Sound::~Sound() = default;

std::string Content::Sound::info()
{
    return "";
}

Content* Content::Sound::createDebug(Content* content)
{
    refuseDebugCreation(content);
}

} // namespace Lbx
} // namespace zorv2
