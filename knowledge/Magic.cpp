#include "knowledge/Magic.h"

#include <initializer_list>
#include <limits>

namespace zorv2 {
namespace Lbx {

namespace {

// What the game knows of its archives, as tables of lines:
//
//   sizes        entries        <- rows
//   whole rows   result         <- rows      every index of those rows
//   by index     row, result    <- indices   the first line that matches wins
//
// Rows are single catalogue rows or runs {first, last}. Indices are single
// numbers or runs {first, last} or {first, last, step}; ON leaves a run open
// to the top. A result is one of a small set of rules over the index.

// palExt names an entry of a font archive, whose entry 0 is never a palette
// source; palInt names an entry of the archive itself, whose entry 0 may be
// one, so its "none" lies above every archive's entry count.
constexpr unsigned int PAL_EXT_NONE = 0;
constexpr unsigned int PAL_INT_NONE = 512;
constexpr unsigned int ON = std::numeric_limits<unsigned int>::max();

struct Rows {
    constexpr Rows(File::LBX_FILE only) : first(only), last(only) {}
    constexpr Rows(File::LBX_FILE from, File::LBX_FILE to) : first(from), last(to) {}
    constexpr bool holds(unsigned int row) const { return first <= row && row <= last; }
    unsigned int first;
    unsigned int last;
};

struct Indices {
    constexpr Indices(unsigned int only) : first(only), last(only), step(1) {}
    constexpr Indices(unsigned int from, unsigned int to, unsigned int every = 1) : first(from), last(to), step(every)
    {
    }
    constexpr bool holds(unsigned int index) const
    {
        return first <= index && index <= last && (index - first) % step == 0;
    }
    unsigned int first;
    unsigned int last;
    unsigned int step;
};

constexpr Indices ALL(0, ON);

enum class Rule {
    VALUE,    // a fixed entry
    INDEX,    // the index itself
    COUNT_UP, // counting up from the index, the first number that is the stop or leaves the remainder
    HALVED,   // the index less a start, halved and rounded down
};

struct Result {
    Rule rule;
    unsigned int value; // VALUE: the entry; COUNT_UP: the remainder; HALVED: the start
    unsigned int divisor;
    unsigned int stop;
};

constexpr unsigned int NO_STOP = ON;

constexpr Result value(unsigned int entry)
{
    return {Rule::VALUE, entry, 0, NO_STOP};
}

constexpr Result INDEX = {Rule::INDEX, 0, 0, NO_STOP};

constexpr Result countUp(unsigned int divisor, unsigned int remainder, unsigned int stop = NO_STOP)
{
    return {Rule::COUNT_UP, remainder, divisor, stop};
}

constexpr Result halvedFrom(unsigned int start)
{
    return {Rule::HALVED, start, 0, NO_STOP};
}

struct Sizes {
    unsigned int entries;
    std::initializer_list<Rows> rows;
};

struct WholeRows {
    Result result;
    std::initializer_list<Rows> rows;
};

struct ByIndex {
    File::LBX_FILE row;
    Result result;
    std::initializer_list<Indices> indices;
};

struct Table {
    std::initializer_list<WholeRows> wholeRows;
    std::initializer_list<ByIndex> byIndex;
    unsigned int none; // for every row and index that no line names
};

constexpr Sizes SIZES[] = {
    {0, {File::DIPLOMSI, File::ESTRFREN, File::ESTRGERM, File::ESTRITAL, File::ESTRPOLI, File::ESTRSPAN,
          File::EVENTMSI, File::FONTSF, File::FONTSG, File::FONTSI, File::FONTSS, File::FRECRDTS, File::FRESKLLS,
          File::FRETECD, File::FRE_HELP, File::GERCRDTS, File::GERSKLLS, File::GERTECD, File::GER_HELP,
          File::HERODATF, File::HERODATG, File::HERODATI, File::HERODATS, File::HFSTRNGS, File::HGSTRNGS,
          File::HISTRNGS, File::HSSTRNGS, File::ITACRDTS, File::ITASKLLS, File::ITATECD, File::ITA_HELP,
          File::MAINFREN, File::MAINGERM, File::MAINITAL, File::MAINSPAN, File::RSTRING1, File::RSTRING2,
          File::RSTRING3, File::RSTRING4, File::RSTRINGS, File::HOLMEX, File::SPACRDTS, File::SPASKLLS,
          File::SPATECD, File::SPA_HELP}},
    {1, {File::AMEBAFIN, File::ANATKFIN, File::ANWINFIN, File::BLDG5, File::CREDITS, File::DIMTVFIN, File::ENGMSG,
          File::ESTRINGS, File::FIREPTS, File::GENWINFN, File::HERODATA, File::HESTRNGS, File::INTRO,
          File::LOSERFIN, File::MSGENG, File::NDATA, File::ZENITFIN, File::PLNTDFIN, File::RACENAME,
          File::RSTRING0, File::SHIPNAME, File::WARNING, File::WININFIN, {File::SR_R0_SC, File::SR_RC_TR},
          {File::TANM_001, File::TANM_213}}},
    {2, {File::KOLAROOM, File::FILEDATA, File::INBOX, File::LOGO, File::NEXTPLYR, File::PATCH13, File::SKILDESC,
          File::SPHERSFX, File::STARNAME}},
    {3, {File::CONFIRM, File::SCIENCE}},
    {4, {File::CUSTMSTR, File::PLAYSPEC, File::TECHDESC, File::TURNSUM}},
    {5, {File::COLREFIT, File::IFONTS, File::OCPOL, File::REFITPUP, File::TEXTBOX}},
    {6, {File::TECHNAME}},
    {7, {File::COLBLDG, File::RACEOPT}},
    {10, {File::RACERPRT}},
    {11, {File::STREAM}},
    {12, {File::DIPSTARS}},
    {13, {File::FLTICONS}},
    {14, {File::FONTS, File::MAINTEXT, File::RACESTUF}},
    {16, {File::LOADSAVE}},
    {17, {File::HELP, File::SCORE}},
    {19, {File::COLONY}},
    {21, {File::INSTALL, File::STREAMHD}},
    {22, {File::COLGCBT, File::COLSUM}},
    {23, {File::COLPUPS, File::COLPUSP}},
    {26, {File::INFO, File::MONSTER}},
    {28, {File::TECHSEL}},
    {30, {File::NEWGAME, File::PLANETS}},
    {32, {File::GAME}},
    {33, {File::GSTAR}},
    {38, {File::EVENTS}},
    {39, {File::DIPLOMAT}},
    {44, {File::MAINMENU}},
    {48, {File::KOLARMSG}},
    {53, {File::COLONY2}},
    {54, {File::STARBG}},
    {62, {File::SYSDISP}},
    {63, {File::CMBTPLNT}},
    {64, {File::RACES}},
    {66, {File::COLSYSDI}},
    {69, {File::SOUND}},
    {72, {File::DESIGN}},
    {79, {File::CMBTSFX}},
    {80, {File::CMBTFGTR}},
    {84, {File::COUNCMSG, File::MAINPUPS, File::PLNTSUM}},
    {90, {File::COMBAT}},
    {104, {File::COLVEGGI}},
    {112, {File::FLEET}},
    {138, {File::RACESEL}},
    {152, {File::EVENTMSE, File::EVENTMSF, File::EVENTMSG, File::EVENTMSS}},
    {153, {File::BEAMS}},
    {156, {File::COLROADS}},
    {168, {File::DORNTEX2}},
    {171, {File::RACEICON}},
    {174, {File::LOBTEXT1}},
    {176, {File::CMBTMISL}},
    {180, {File::DIPLOMSE, File::DIPLOMSF, File::DIPLOMSG, File::DIPLOMSS}},
    {197, {File::COUNCIL}},
    {212, {File::APP_PICS}},
    {261, {File::MULTIGM}},
    {288, {File::BUFFER0}},
    {324, {File::BLDG4}},
    {344, {File::OFFICER}},
    {360, {File::BLDG0, File::BLDG1, File::BLDG2, File::BLDG3, File::CMBTSHP}},
    {449, {File::SHIPS}},
    {468, {File::DORNTEXT}},
    {480, {File::MIRTEXT2, File::LOBTEXT}},
    {498, {File::MIRTEXT}},
};

constexpr Table PAL_EXT = {
    {
        {value(1),
         {File::FLEET, File::INSTALL, File::LOADSAVE, File::OFFICER, File::SHIPS, File::STARBG, File::TURNSUM}},
        {value(2),
         {File::BLDG0, File::BLDG1, File::BLDG2, File::BLDG3, File::BLDG4, File::COLGCBT, File::COLONY, File::COLONY2,
          File::COLPUPS, File::COLPUSP, File::COLREFIT, File::COLROADS, File::COLVEGGI, File::OCPOL, File::RACEICON,
          File::REFITPUP, File::SPHERSFX}},
        {value(4), {File::CMBTFGTR, File::CMBTMISL, File::CMBTSHP, File::FLTICONS}},
        {value(5), {File::DESIGN}},
        {value(10), {File::PATCH13}},
    },
    {
        {File::BEAMS, value(3), {{0, 16}, {33, 48}}},
        {File::BEAMS, value(1), {{17, 32}, {49, 64}}},
        {File::BEAMS, value(2), {65, 66}},
        {File::BEAMS, value(4), {{67, ON}}},
        {File::BUFFER0, value(1), {{112, 121}, {132, 136}, 142, 143}},
        {File::BUFFER0, value(0), {ALL}},
        {File::CMBTSFX, value(0), {0, 40, 42, 47}},
        {File::CMBTSFX, value(1), {1, 8, {69, ON}}},
        {File::CMBTSFX, value(4), {{2, 7}, 14, 15, {43, 46}, {48, 51}}},
        {File::CMBTSFX, value(2), {ALL}},
        {File::COLSYSDI, value(1), {{0, 5}}},
        {File::COLSYSDI, value(2), {{6, ON}}},
        {File::SYSDISP, value(1), {{0, 5}}},
        {File::SYSDISP, value(2), {{6, ON}}},
        {File::GAME, value(6), {{20, 26}}},
        {File::GAME, value(1), {ALL}},
        {File::GSTAR, value(1), {{0, 22}}},
        {File::GSTAR, value(2), {{23, ON}}},
        {File::INBOX, value(1), {1}},
        {File::INBOX, value(0), {ALL}},
        {File::MAINPUPS, value(2), {56, 61, 73}},
        {File::MAINPUPS, value(1), {ALL}},
        {File::MONSTER, value(1), {{7, 9}, 12, 20, 21, {24, ON}}},
        {File::MONSTER, value(0), {ALL}},
        {File::NEWGAME, value(0), {{0, 22}}},
        {File::NEWGAME, value(10), {{23, ON}}},
        {File::RACESEL, value(10), {{0, 14}, {29, 33}}},
        {File::RACESEL, value(0), {ALL}},
        {File::TECHSEL, value(0), {{0, 13}}},
        {File::TECHSEL, value(1), {{14, ON}}},
    },
    PAL_EXT_NONE,
};

constexpr Table PAL_INT = {
    {
        {value(0),
         {File::KOLAROOM, File::COLBLDG, File::CONFIRM, File::COUNCIL, File::DIPSTARS, File::NEXTPLYR, File::PLNTSUM,
          File::RACERPRT, File::RACES, File::SCIENCE, File::WARNING, {File::SR_R0_SC, File::SR_RC_TR},
          {File::TANM_001, File::TANM_213}}},
        {value(1), {File::INFO, File::MAINMENU}},
        {value(11), {File::COMBAT}},
        {INDEX, {File::INBOX, File::LOGO, File::PLANETS, File::SPHERSFX}},
    },
    {
        {File::APP_PICS, value(1), {0}},
        {File::APP_PICS, INDEX, {ALL}},
        {File::BEAMS, INDEX, {0, 69, 87, 99}},
        {File::BEAMS, value(67), {67, 68, {70, 86}, {109, ON}}},
        {File::BEAMS, value(PAL_INT_NONE), {ALL}},
        {File::BUFFER0, INDEX, {{92, 111}, {122, 131}, {137, 141}}},
        {File::BUFFER0, value(PAL_INT_NONE), {{112, 121}, {132, 136}, 142, 143}},
        {File::BUFFER0, value(0), {{0, 91}, {144, ON}}},
        {File::CMBTPLNT, countUp(6, 5, 62), {ALL}},
        {File::CMBTSFX, INDEX, {0, 1, 6, 15, 40, 42, 47, 52, 68}},
        {File::CMBTSFX, value(PAL_INT_NONE), {ALL}},
        {File::CMBTSHP, countUp(45, 44), {ALL}},
        {File::COLONY2, INDEX, {50, 51}},
        {File::COLONY2, value(PAL_INT_NONE), {ALL}},
        {File::COLSUM, value(0), {0}},
        {File::COLSUM, value(21), {ALL}},
        {File::DIPLOMAT, INDEX, {{0, 12}}},
        {File::DIPLOMAT, halvedFrom(13), {{13, ON}}},
        {File::EVENTS, value(0), {1}},
        {File::EVENTS, INDEX, {ALL}},
        {File::FLEET, value(PAL_INT_NONE), {{0, 44}}},
        {File::FLEET, value(111), {{45, ON}}},
        {File::MONSTER, value(13), {{0, 6}, 25}},
        {File::MONSTER, value(14), {7, 9}},
        {File::MONSTER, value(15), {10, 22}},
        {File::MONSTER, value(18), {11, 23}},
        {File::MONSTER, INDEX, {{13, 19}}},
        {File::MONSTER, value(PAL_INT_NONE), {ALL}},
        {File::MULTIGM, value(42), {{42, 45}, {150, 253}}},
        {File::MULTIGM, value(0), {ALL}},
        {File::NEWGAME, INDEX, {2, 3}},
        {File::NEWGAME, value(1), {ALL}},
        {File::RACEOPT, value(0), {0, {8, ON, 4}}},
        {File::RACEOPT, value(4), {ALL}},
        {File::RACESEL, INDEX, {{15, 28}}},
        {File::RACESEL, value(32), {32, {34, ON}}},
        {File::RACESEL, value(PAL_INT_NONE), {ALL}},
        {File::SCORE, value(0), {{0, 14}}},
        {File::SCORE, value(15), {{15, ON}}},
        {File::SHIPS, countUp(50, 49), {{0, 399}}},
        {File::SHIPS, value(413), {{400, 412}}},
        {File::SHIPS, INDEX, {{413, 419}}},
        {File::SHIPS, value(419), {{420, ON}}},
        {File::TECHSEL, value(0), {{0, 13}}},
        {File::TECHSEL, value(14), {{14, ON}}},
        {File::TEXTBOX, value(4), {4}},
        {File::TEXTBOX, value(0), {ALL}},
    },
    PAL_INT_NONE,
};

// Every archive of the catalogue has exactly one expected size.
constexpr bool eachRowSizedOnce()
{
    for (unsigned int row = 0; row < File::LBX_UNKNOWN; ++row) {
        unsigned int lines = 0;
        for (const Sizes& line : SIZES)
            for (const Rows& rows : line.rows)
                lines += rows.holds(row) ? 1 : 0;
        if (lines != 1)
            return false;
    }
    return true;
}
static_assert(eachRowSizedOnce(), "every catalogue row needs exactly one size");

// Near the top of unsigned int the number counted up to may not be
// representable; no archive has such an entry, so that index has no source.
unsigned int countedUp(const Result& result, unsigned int index, unsigned int none)
{
    const unsigned long long ahead = (result.value + result.divisor - index % result.divisor) % result.divisor;
    const unsigned long long next = index + ahead;
    if (result.stop != NO_STOP && result.stop >= index && result.stop < next)
        return result.stop;
    return next <= ON ? static_cast<unsigned int>(next) : none;
}

unsigned int apply(const Result& result, unsigned int index, unsigned int none)
{
    switch (result.rule) {
    case Rule::VALUE:
        return result.value;
    case Rule::INDEX:
        return index;
    case Rule::COUNT_UP:
        return countedUp(result, index, none);
    case Rule::HALVED:
        // The tables give this rule only from its start on; below it nothing is halved.
        return index >= result.value ? (index - result.value) / 2 : none;
    }
    return none;
}

unsigned int lookUp(const Table& table, File::LBX_FILE file, unsigned int index)
{
    const auto row = static_cast<unsigned int>(file);
    for (const WholeRows& line : table.wholeRows)
        for (const Rows& rows : line.rows)
            if (rows.holds(row))
                return apply(line.result, index, table.none);
    for (const ByIndex& line : table.byIndex) {
        if (line.row != file)
            continue;
        for (const Indices& indices : line.indices)
            if (indices.holds(index))
                return apply(line.result, index, table.none);
    }
    return table.none;
}

// The installer carries fonts of its own; every other archive takes its
// palettes from the game's font archive.
File::LBX_FILE fontSource(File::LBX_FILE file)
{
    return file == File::INSTALL ? File::IFONTS : File::FONTS;
}

// The entry named lies in the archive itself, except where the game keeps
// that palette in a sibling archive.
File::LBX_FILE ownSource(File::LBX_FILE file, unsigned int index)
{
    if (file == File::APP_PICS && index == 0)
        return File::INFO;
    if (file == File::DIPSTARS)
        return File::DIPLOMAT;
    return file;
}

} // namespace

unsigned int Magic::size(File::LBX_FILE file)
{
    const auto row = static_cast<unsigned int>(file);
    for (const Sizes& line : SIZES)
        for (const Rows& rows : line.rows)
            if (rows.holds(row))
                return line.entries;
    return 0;
}

unsigned int Magic::palExt(File::LBX_FILE file, unsigned int index)
{
    return lookUp(PAL_EXT, file, index);
}

unsigned int Magic::palInt(File::LBX_FILE file, unsigned int index)
{
    return lookUp(PAL_INT, file, index);
}

// The four-argument forms cross over by name: palInt reports the font archive
// source that palExt names, palExt the source that palInt names.
bool Magic::palInt(File::LBX_FILE file, unsigned int index, File::LBX_FILE* palFile, unsigned int* palIndex)
{
    const unsigned int entry = palExt(file, index);
    if (entry == PAL_EXT_NONE)
        return false;
    if (palFile)
        *palFile = fontSource(file);
    if (palIndex)
        *palIndex = entry;
    return true;
}

bool Magic::palExt(File::LBX_FILE file, unsigned int index, File::LBX_FILE* palFile, unsigned int* palIndex)
{
    const unsigned int entry = palInt(file, index);
    if (entry == PAL_INT_NONE)
        return false;
    if (palFile)
        *palFile = ownSource(file, index);
    if (palIndex)
        *palIndex = entry;
    return true;
}

} // namespace Lbx
} // namespace zorv2
