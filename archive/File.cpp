#include "archive/File.h"

#include "entry/AbstractContent.h"
#include "entry/Write.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

namespace {

// The header area, all fields little-endian:
//
//   0  count       2        entries, at most 509
//   2  signature   4        AD FE 00 00
//   6  version     2        0
//   8  offsets     4 x (count + 1)   offset[0] = 2048, offset[count] = file size
//   .  tag word    4        "ZORV" right behind the table, optional
//   .  fill        up to 2048
//
// Entry i runs from offset[i] up to offset[i + 1]; entries adjoin in table order.
constexpr unsigned int HEADER_AREA_SIZE = 2048;
constexpr unsigned int COUNT_OFFSET = 0;
constexpr unsigned int SIGNATURE_OFFSET = 2;
constexpr unsigned int VERSION_OFFSET = 6;
constexpr unsigned int TABLE_OFFSET = 8;
constexpr unsigned int OFFSET_SIZE = 4;
constexpr unsigned int MAX_ENTRIES = 509;
// Small entries gather in a read buffer of this size, well inside a core's
// cache: a read of the system costs more than copying a few kilobytes, and
// a buffer that stays in cache makes the copy nearly free. An entry larger
// than the buffer is read straight into its own block.
constexpr unsigned int READ_BUFFER_SIZE = 256 * 1024;
constexpr unsigned int SIGNATURE = 0x0000FEAD;
constexpr unsigned int TAG_WORD = 0x56524F5A;
// The reader looks for a tag word up to 506 entries, the writer writes one up
// to 507: at 507 the word ends 4 bytes short of 2048, where the reader does
// not look; at 508 it would still fit, but neither side uses that room.
constexpr unsigned int READER_TAG_LIMIT = 506;
constexpr unsigned int WRITER_TAG_LIMIT = 507;

std::runtime_error cannotOpen(const std::string& path)
{
    return std::runtime_error("could not open '" + path + "'");
}

std::runtime_error cannotWrite(const std::string& path)
{
    return std::runtime_error("could not write to " + path);
}

std::runtime_error invalidIndex(unsigned int index, const std::string& path)
{
    return std::runtime_error("invalid index '" + std::to_string(index) + "' for " + path);
}

// Every form of push_back checks first, so that a refused entry stays
// entirely the caller's.
void ensureRoom(const std::vector<Content*>& entries)
{
    if (entries.size() >= MAX_ENTRIES)
        throw std::runtime_error("lbx files cannot contain more than " + std::to_string(MAX_ENTRIES) + " files");
}

bool refuse(std::string* error, const std::string& path, const std::string& reason)
{
    if (error)
        *error = "'" + path + "' is not a valid tesk lbx file (" + reason + ")";
    return false;
}

} // namespace

File::File() : isTagged(true)
{
    // With room for every entry reserved, appending never reallocates and so
    // never throws once a push_back has passed ensureRoom.
    entries.reserve(MAX_ENTRIES);
}

File::File(std::string path) : File()
{
    open(std::move(path));
}

File::~File()
{
    clear();
}

void File::open(std::string path)
{
    // The path is taken first and stays even when the archive is refused.
    filePath = std::move(path);
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagWord = false;
    if (!header(filePath, &error, &offsets, &tagWord))
        throw std::runtime_error(error);

    clear();
    isTagged = tagWord;
    const unsigned int bufferSize = std::min(READ_BUFFER_SIZE, offsets.back() - HEADER_AREA_SIZE + 1);
    std::unique_ptr<char[]> buffer(new char[bufferSize]);
    std::ifstream in;
    in.rdbuf()->pubsetbuf(buffer.get(), bufferSize);
    in.open(filePath, std::ios::binary);
    if (!in.good())
        throw cannotOpen(filePath);
    in.seekg(HEADER_AREA_SIZE);
    // Entries adjoin in table order, so one read follows the other.
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        const unsigned int length = offsets[i] - offsets[i - 1];
        std::unique_ptr<char[]> block(new char[length]);
        if (!in.read(block.get(), length))
            throw cannotOpen(filePath);
        push_back(new Content(filePath + "[" + std::to_string(i - 1) + "]", block.get(), length));
        block.release();
    }
}

void File::clear()
{
    for (Content* entry : entries)
        delete entry;
    entries.clear();
    isTagged = true;
}

Content*& File::at(unsigned int index)
{
    if (index >= entries.size())
        throw invalidIndex(index, filePath);
    return entries[index];
}

Content*& File::operator[](unsigned int index)
{
    return at(index);
}

unsigned int File::size()
{
    return static_cast<unsigned int>(entries.size());
}

bool File::tagged()
{
    return isTagged;
}

std::string File::path()
{
    return filePath;
}

void File::push_back(Content* content)
{
    // The one door into the list: every other form ends here, so all are
    // bound by the limit.
    ensureRoom(entries);
    entries.push_back(content);
}

void File::push_back(char* data, unsigned int size)
{
    // Checked before the block is taken over, so that a refused block stays
    // the caller's.
    ensureRoom(entries);
    push_back(new Content("added content", data, size));
}

void File::push_back(std::string path)
{
    // The file is read first: a missing one is reported even on a full archive.
    std::unique_ptr<Content> entry(new Content(std::move(path)));
    push_back(entry.get());
    entry.release();
}

void File::push_back(std::ifstream& stream, unsigned int begin, unsigned int end)
{
    // begin and end give the length only; the caller has positioned the
    // stream, which has moved on by then even when the limit refuses the
    // bytes. An end below begin gives an empty entry rather than a 4 GiB one.
    const unsigned int length = end > begin ? end - begin : 0;
    std::unique_ptr<char[]> block(new char[length]());
    stream.read(block.get(), length);
    push_back(block.get(), length);
    block.release();
}

void File::replace(unsigned int index, Content* content)
{
    // The former entry leaves the archive's ownership; the caller, who could
    // fetch it with at() first, deals with it.
    entries[index] = content;
}

void File::write(std::string path)
{
    Content::Write header;
    header.add2("size", static_cast<unsigned short>(entries.size()));
    header.add4("signature?", SIGNATURE);
    header.add2("version?", 0);
    header.add4("offset0", HEADER_AREA_SIZE);
    unsigned int offset = HEADER_AREA_SIZE;
    for (Content* entry : entries) {
        offset += entry->size();
        header.add4("offset", offset);
    }
    if (entries.size() <= WRITER_TAG_LIMIT) {
        isTagged = true;
        header.add4("zorv", TAG_WORD);
    }
    while (header.size() < HEADER_AREA_SIZE)
        header.add1("fill", 0);
    const std::unique_ptr<char[]> area(header.gen());
    // Every entry is a block in memory, so the target may be the archive's
    // own source: nothing is read from it any more. The entries go out from
    // their blocks, not gathered into one image first, which cost a copy of
    // the whole archive into fresh memory.
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out.good())
        throw cannotWrite(path);
    out.write(area.get(), HEADER_AREA_SIZE);
    for (Content* entry : entries)
        out.write(entry->data(), entry->size());
}

bool File::header(std::string path, std::string* error, std::vector<unsigned int>* offsets, bool* tagged)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in.good())
        throw cannotOpen(path);
    const auto fileSize = static_cast<unsigned int>(in.tellg());
    if (fileSize < HEADER_AREA_SIZE)
        return refuse(error, path, "too small");

    // Every field lies in the header area, so one read serves all checks. A
    // stream that opens but cannot be read (a directory) counts as unopenable.
    char area[HEADER_AREA_SIZE];
    in.seekg(0);
    if (!in.read(area, HEADER_AREA_SIZE))
        throw cannotOpen(path);

    const unsigned int count = Content::AbstractContent::read2(area, COUNT_OFFSET);
    if (count > MAX_ENTRIES)
        return refuse(error, path, "invalid file count");
    const unsigned int signature = Content::AbstractContent::read4(area, SIGNATURE_OFFSET);
    const unsigned int version = Content::AbstractContent::read2(area, VERSION_OFFSET);

    std::vector<unsigned int> table(count + 1);
    for (unsigned int i = 0; i <= count; ++i) {
        table[i] = Content::AbstractContent::read4(area, TABLE_OFFSET + OFFSET_SIZE * i);
        if (i == 0 && table[i] != HEADER_AREA_SIZE)
            return refuse(error, path, "first offset is invalid");
        if (i > 0 && (table[i] < table[i - 1] || table[i] > fileSize))
            return refuse(error, path, "offset " + std::to_string(i) + " is invalid");
    }
    if (table[count] != fileSize)
        return refuse(error, path, "invalid size");
    if (signature != SIGNATURE)
        return refuse(error, path, "invalid signature");
    if (version != 0)
        return refuse(error, path, "invalid version");

    if (offsets)
        offsets->insert(offsets->end(), table.begin(), table.end());
    if (tagged) {
        const unsigned int tagOffset = TABLE_OFFSET + OFFSET_SIZE * (count + 1);
        *tagged = count <= READER_TAG_LIMIT && Content::AbstractContent::read4(area, tagOffset) == TAG_WORD;
    }
    return true;
}

bool File::check(std::string path)
{
    return header(std::move(path), nullptr, nullptr, nullptr);
}

unsigned int File::size(std::string path)
{
    std::string error;
    std::vector<unsigned int> offsets;
    if (!header(path, &error, &offsets, nullptr))
        throw std::runtime_error(error);
    return static_cast<unsigned int>(offsets.size() - 1);
}

Content* File::at(std::string path, unsigned int index)
{
    std::string error;
    std::vector<unsigned int> offsets;
    if (!header(path, &error, &offsets, nullptr))
        throw std::runtime_error(error);
    if (index >= offsets.size() - 1)
        throw invalidIndex(index, path);

    const unsigned int length = offsets[index + 1] - offsets[index];
    std::unique_ptr<char[]> block(new char[length]);
    std::ifstream in(path, std::ios::binary);
    if (!in.good())
        throw cannotOpen(path);
    in.seekg(offsets[index]);
    if (!in.read(block.get(), length))
        throw cannotOpen(path);

    auto* content = new Content(path + "[" + std::to_string(index) + "]", block.get(), length);
    block.release();
    return content;
}

} // namespace Lbx
} // namespace zorv2

// The catalogue of the game's archives.
namespace zorv2 {
namespace Lbx {

namespace {

// The archives' names, indexed by their row of LBX_FILE, eight rows a line as
// in the enumeration.
constexpr const char* LBX_FILE_NAMES[] = {
    "AMEBAFIN", "ANATKFIN", "KOLARMSG", "KOLAROOM", "ANWINFIN", "APP_PICS", "BEAMS", "DORNTEX2",
    "DORNTEXT", "BLDG0", "BLDG1", "BLDG2", "BLDG3", "BLDG4", "BLDG5", "BUFFER0",
    "CMBTFGTR", "CMBTMISL", "CMBTPLNT", "CMBTSFX", "CMBTSHP", "COLBLDG", "COLGCBT", "COLONY",
    "COLONY2", "COLPUPS", "COLPUSP", "COLREFIT", "COLROADS", "COLSUM", "COLSYSDI", "COLVEGGI",
    "COMBAT", "CONFIRM", "COUNCIL", "COUNCMSG", "CREDITS", "CUSTMSTR", "DESIGN", "DIMTVFIN",
    "DIPLOMAT", "DIPLOMSE", "DIPLOMSF", "DIPLOMSG", "DIPLOMSI", "DIPLOMSS", "DIPSTARS", "ENGMSG",
    "ESTRFREN", "ESTRGERM", "ESTRINGS", "ESTRITAL", "ESTRPOLI", "ESTRSPAN", "EVENTMSE", "EVENTMSF",
    "EVENTMSG", "EVENTMSI", "EVENTMSS", "EVENTS", "FILEDATA", "FIREPTS", "FLEET", "FLTICONS",
    "FONTS", "FONTSF", "FONTSG", "FONTSI", "FONTSS", "FRECRDTS", "FRESKLLS", "FRETECD",
    "FRE_HELP", "GAME", "GENWINFN", "GERCRDTS", "GERSKLLS", "GERTECD", "GER_HELP", "GSTAR",
    "HELP", "HERODATA", "HERODATF", "HERODATG", "HERODATI", "HERODATS", "HESTRNGS", "HFSTRNGS",
    "HGSTRNGS", "HISTRNGS", "HSSTRNGS", "IFONTS", "INBOX", "INFO", "INSTALL", "INTRO",
    "ITACRDTS", "ITASKLLS", "ITATECD", "ITA_HELP", "MIRTEXT", "MIRTEXT2", "LOBTEXT", "LOBTEXT1",
    "LOADSAVE", "LOGO", "LOSERFIN", "MAINFREN", "MAINGERM", "MAINITAL", "MAINMENU", "MAINPUPS",
    "MAINSPAN", "MAINTEXT", "MONSTER", "MSGENG", "MULTIGM", "NDATA", "NEWGAME", "NEXTPLYR",
    "OCPOL", "OFFICER", "ZENITFIN", "PATCH13", "PLANETS", "PLAYSPEC", "PLNTDFIN", "PLNTSUM",
    "RACEICON", "RACENAME", "RACEOPT", "RACERPRT", "RACES", "RACESEL", "RACESTUF", "REFITPUP",
    "RSTRING0", "RSTRING1", "RSTRING2", "RSTRING3", "RSTRING4", "RSTRINGS", "SCIENCE", "SCORE",
    "SHIPNAME", "SHIPS", "HOLMEX", "SKILDESC", "SOUND", "SPACRDTS", "SPASKLLS", "SPATECD",
    "SPA_HELP", "SPHERSFX", "SR_R0_SC", "SR_R0_SP", "SR_R0_TR", "SR_R1_SC", "SR_R1_SP", "SR_R1_TR",
    "SR_R2_SC", "SR_R2_SP", "SR_R2_TR", "SR_R3_SC", "SR_R3_SP", "SR_R3_TR", "SR_R4_SC", "SR_R4_SP",
    "SR_R4_TR", "SR_R5_SC", "SR_R5_SP", "SR_R5_TR", "SR_R6_SC", "SR_R6_SP", "SR_R6_TR", "SR_R7_SC",
    "SR_R7_SP", "SR_R7_TR", "SR_R8_SC", "SR_R8_SP", "SR_R8_TR", "SR_R9_SC", "SR_R9_SP", "SR_R9_TR",
    "SR_RA_SC", "SR_RA_SP", "SR_RA_TR", "SR_RB_SC", "SR_RB_SP", "SR_RB_TR", "SR_RC_SC", "SR_RC_SP",
    "SR_RC_TR", "STARBG", "STARNAME", "STREAM", "STREAMHD", "SYSDISP", "TANM_001", "TANM_002",
    "TANM_003", "TANM_004", "TANM_005", "TANM_006", "TANM_007", "TANM_008", "TANM_009", "TANM_010",
    "TANM_011", "TANM_012", "TANM_013", "TANM_014", "TANM_015", "TANM_016", "TANM_017", "TANM_018",
    "TANM_019", "TANM_020", "TANM_021", "TANM_022", "TANM_023", "TANM_024", "TANM_025", "TANM_026",
    "TANM_027", "TANM_028", "TANM_029", "TANM_030", "TANM_031", "TANM_032", "TANM_033", "TANM_034",
    "TANM_035", "TANM_036", "TANM_037", "TANM_038", "TANM_039", "TANM_040", "TANM_041", "TANM_042",
    "TANM_043", "TANM_044", "TANM_045", "TANM_046", "TANM_047", "TANM_048", "TANM_049", "TANM_050",
    "TANM_051", "TANM_052", "TANM_053", "TANM_054", "TANM_055", "TANM_056", "TANM_057", "TANM_058",
    "TANM_059", "TANM_060", "TANM_061", "TANM_062", "TANM_063", "TANM_064", "TANM_065", "TANM_066",
    "TANM_067", "TANM_068", "TANM_069", "TANM_070", "TANM_071", "TANM_072", "TANM_073", "TANM_074",
    "TANM_075", "TANM_076", "TANM_077", "TANM_078", "TANM_079", "TANM_080", "TANM_081", "TANM_082",
    "TANM_083", "TANM_084", "TANM_085", "TANM_086", "TANM_087", "TANM_088", "TANM_089", "TANM_090",
    "TANM_091", "TANM_092", "TANM_093", "TANM_094", "TANM_095", "TANM_096", "TANM_097", "TANM_098",
    "TANM_099", "TANM_100", "TANM_101", "TANM_102", "TANM_103", "TANM_104", "TANM_105", "TANM_106",
    "TANM_107", "TANM_108", "TANM_109", "TANM_110", "TANM_111", "TANM_112", "TANM_113", "TANM_114",
    "TANM_115", "TANM_116", "TANM_117", "TANM_118", "TANM_119", "TANM_120", "TANM_121", "TANM_122",
    "TANM_123", "TANM_124", "TANM_125", "TANM_126", "TANM_127", "TANM_128", "TANM_129", "TANM_130",
    "TANM_131", "TANM_132", "TANM_133", "TANM_134", "TANM_135", "TANM_136", "TANM_137", "TANM_138",
    "TANM_139", "TANM_140", "TANM_141", "TANM_142", "TANM_143", "TANM_144", "TANM_145", "TANM_146",
    "TANM_147", "TANM_148", "TANM_149", "TANM_150", "TANM_151", "TANM_152", "TANM_153", "TANM_154",
    "TANM_155", "TANM_156", "TANM_157", "TANM_158", "TANM_159", "TANM_160", "TANM_161", "TANM_162",
    "TANM_163", "TANM_164", "TANM_165", "TANM_166", "TANM_167", "TANM_168", "TANM_169", "TANM_170",
    "TANM_171", "TANM_172", "TANM_173", "TANM_174", "TANM_175", "TANM_176", "TANM_177", "TANM_178",
    "TANM_179", "TANM_180", "TANM_181", "TANM_182", "TANM_183", "TANM_184", "TANM_185", "TANM_186",
    "TANM_187", "TANM_188", "TANM_189", "TANM_190", "TANM_191", "TANM_192", "TANM_193", "TANM_194",
    "TANM_195", "TANM_196", "TANM_197", "TANM_198", "TANM_199", "TANM_200", "TANM_201", "TANM_202",
    "TANM_203", "TANM_204", "TANM_205", "TANM_206", "TANM_207", "TANM_208", "TANM_209", "TANM_210",
    "TANM_211", "TANM_212", "TANM_213", "TECHDESC", "TECHNAME", "TECHSEL", "TEXTBOX", "TURNSUM",
    "WARNING", "WININFIN"
};
constexpr unsigned int LBX_FILE_COUNT = sizeof(LBX_FILE_NAMES) / sizeof(LBX_FILE_NAMES[0]);
static_assert(LBX_FILE_COUNT == File::LBX_UNKNOWN, "one name for every row of the catalogue");

constexpr const char* UNKNOWN_NAME = "unknown";

} // namespace

std::string File::LBX_FILE_NAME(LBX_FILE file)
{
    // Any other value, including one cast from outside the enumeration, is no row.
    const auto row = static_cast<unsigned int>(file);
    return row < LBX_FILE_COUNT ? LBX_FILE_NAMES[row] : UNKNOWN_NAME;
}

File::LBX_FILE File::LBX_ENUM(std::string name)
{
    // Whole and case-sensitive: a name with a path, an extension or in small
    // letters names no row.
    for (unsigned int row = 0; row < LBX_FILE_COUNT; ++row)
        if (name == LBX_FILE_NAMES[row])
            return static_cast<LBX_FILE>(row);
    return LBX_UNKNOWN;
}

} // namespace Lbx
} // namespace zorv2
