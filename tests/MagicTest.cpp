#include "knowledge/Magic.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

using zorv2::Lbx::File;
using zorv2::Lbx::Magic;

namespace {

constexpr unsigned int TOP = std::numeric_limits<unsigned int>::max();
constexpr unsigned int NO_INT = 512;
const auto PAST_LAST = static_cast<File::LBX_FILE>(419);
const auto LARGEST = static_cast<File::LBX_FILE>(511);

// Index and expected entry, for one row.
struct RowCases {
    File::LBX_FILE file;
    std::vector<std::pair<unsigned int, unsigned int>> expected;
};

void expectRows(unsigned int (*lookUp)(File::LBX_FILE, unsigned int), const std::vector<RowCases>& rows)
{
    for (const RowCases& row : rows)
        for (const auto& c : row.expected)
            EXPECT_EQ(lookUp(row.file, c.first), c.second) << File::LBX_FILE_NAME(row.file) << " " << c.first;
}

} // namespace

TEST(Magic, Size)
{
    const std::vector<std::pair<File::LBX_FILE, unsigned int>> cases = {
        {File::FONTS, 14}, {File::SHIPS, 449}, {File::HOLMEX, 0}, {File::MIRTEXT, 498}, {File::AMEBAFIN, 1},
        {File::WININFIN, 1}, {File::SR_R0_SC, 1}, {File::SR_RC_TR, 1}, {File::TANM_001, 1}, {File::TANM_213, 1},
        {File::BLDG4, 324}, {File::BLDG5, 1}, {File::LBX_UNKNOWN, 0}, {LARGEST, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Magic::size(c.first), c.second) << File::LBX_FILE_NAME(c.first);
}

// Both sides of every boundary the tables name, and the top index.
TEST(Magic, PalExtByIndex)
{
    expectRows(&Magic::palExt, {
        {File::BEAMS, {{0, 3}, {16, 3}, {17, 1}, {32, 1}, {33, 3}, {48, 3}, {49, 1}, {64, 1}, {65, 2}, {66, 2},
                       {67, 4}, {TOP, 4}}},
        {File::BUFFER0, {{111, 0}, {112, 1}, {121, 1}, {122, 0}, {131, 0}, {132, 1}, {136, 1}, {137, 0}, {141, 0},
                         {142, 1}, {143, 1}, {144, 0}}},
        {File::CMBTSFX, {{0, 0}, {1, 1}, {2, 4}, {7, 4}, {8, 1}, {9, 2}, {13, 2}, {14, 4}, {15, 4}, {16, 2}, {39, 2},
                         {40, 0}, {41, 2}, {42, 0}, {43, 4}, {46, 4}, {47, 0}, {48, 4}, {51, 4}, {52, 2}, {68, 2},
                         {69, 1}, {TOP, 1}}},
        {File::COLSYSDI, {{5, 1}, {6, 2}}},
        {File::SYSDISP, {{5, 1}, {6, 2}}},
        {File::GAME, {{19, 1}, {20, 6}, {26, 6}, {27, 1}}},
        {File::GSTAR, {{22, 1}, {23, 2}}},
        {File::INBOX, {{0, 0}, {1, 1}, {2, 0}}},
        {File::MAINPUPS, {{55, 1}, {56, 2}, {57, 1}, {61, 2}, {73, 2}, {74, 1}}},
        {File::MONSTER, {{6, 0}, {7, 1}, {9, 1}, {10, 0}, {12, 1}, {13, 0}, {19, 0}, {20, 1}, {21, 1}, {22, 0},
                         {23, 0}, {24, 1}}},
        {File::NEWGAME, {{22, 0}, {23, 10}}},
        {File::RACESEL, {{0, 10}, {14, 10}, {15, 0}, {28, 0}, {29, 10}, {33, 10}, {34, 0}}},
        {File::TECHSEL, {{13, 0}, {14, 1}}},
        // whole rows, and the rows and numbers no line names
        {File::FLEET, {{0, 1}, {TOP, 1}}}, {File::INSTALL, {{0, 1}}}, {File::BLDG4, {{7, 2}}},
        {File::SPHERSFX, {{0, 2}}}, {File::CMBTSHP, {{300, 4}}}, {File::DESIGN, {{0, 5}}}, {File::PATCH13, {{1, 10}}},
        {File::FONTS, {{3, 0}}}, {File::BLDG5, {{0, 0}}}, {File::LBX_UNKNOWN, {{1, 0}}}, {LARGEST, {{1, 0}}},
    });
}

TEST(Magic, PalIntByIndex)
{
    expectRows(&Magic::palInt, {
        {File::APP_PICS, {{0, 1}, {1, 1}, {3, 3}}},
        {File::BEAMS, {{0, 0}, {1, NO_INT}, {66, NO_INT}, {67, 67}, {68, 67}, {69, 69}, {70, 67}, {86, 67}, {87, 87},
                       {88, NO_INT}, {98, NO_INT}, {99, 99}, {100, NO_INT}, {108, NO_INT}, {109, 67}}},
        {File::BUFFER0, {{91, 0}, {92, 92}, {111, 111}, {112, NO_INT}, {121, NO_INT}, {122, 122}, {131, 131},
                         {132, NO_INT}, {136, NO_INT}, {137, 137}, {141, 141}, {142, NO_INT}, {143, NO_INT}, {144, 0}}},
        {File::CMBTSFX, {{0, 0}, {1, 1}, {2, NO_INT}, {6, 6}, {15, 15}, {40, 40}, {41, NO_INT}, {42, 42}, {47, 47},
                         {52, 52}, {68, 68}, {69, NO_INT}}},
        {File::COLONY2, {{49, NO_INT}, {50, 50}, {51, 51}, {52, NO_INT}}},
        {File::COLSUM, {{0, 0}, {1, 21}}},
        {File::EVENTS, {{0, 0}, {1, 0}, {2, 2}}},
        {File::FLEET, {{44, NO_INT}, {45, 111}}},
        {File::MONSTER, {{0, 13}, {6, 13}, {7, 14}, {8, NO_INT}, {9, 14}, {10, 15}, {11, 18}, {12, NO_INT}, {13, 13},
                         {19, 19}, {20, NO_INT}, {21, NO_INT}, {22, 15}, {23, 18}, {24, NO_INT}, {25, 13},
                         {26, NO_INT}}},
        {File::MULTIGM, {{41, 0}, {42, 42}, {45, 42}, {46, 0}, {149, 0}, {150, 42}, {253, 42}, {254, 0}}},
        {File::NEWGAME, {{1, 1}, {2, 2}, {3, 3}, {4, 1}}},
        {File::RACESEL, {{14, NO_INT}, {15, 15}, {28, 28}, {29, NO_INT}, {31, NO_INT}, {32, 32}, {33, NO_INT},
                         {34, 32}}},
        {File::SCORE, {{14, 0}, {15, 15}}},
        {File::TECHSEL, {{13, 0}, {14, 14}}},
        {File::TEXTBOX, {{3, 0}, {4, 4}, {5, 0}}},
        // the modular rules; counting up past the largest index finds no entry
        {File::RACEOPT, {{0, 0}, {1, 4}, {4, 4}, {7, 4}, {8, 0}, {9, 4}, {12, 0}, {TOP, 4}, {TOP - 3, 0}}},
        {File::DIPLOMAT, {{12, 12}, {13, 0}, {14, 0}, {15, 1}, {TOP, (TOP - 13) / 2}}},
        {File::CMBTPLNT, {{0, 5}, {5, 5}, {6, 11}, {59, 59}, {60, 62}, {62, 62}, {63, 65}, {TOP, NO_INT}}},
        {File::CMBTSHP, {{0, 44}, {44, 44}, {45, 89}, {TOP - 31, TOP - 31}, {TOP - 30, NO_INT}}},
        {File::SHIPS, {{0, 49}, {49, 49}, {50, 99}, {399, 399}, {400, 413}, {412, 413}, {413, 413}, {419, 419},
                       {420, 419}, {TOP, 419}}},
        // whole rows, and the rows and numbers no line names
        {File::KOLAROOM, {{5, 0}}}, {File::SR_RC_TR, {{0, 0}}}, {File::TANM_001, {{9, 0}}}, {File::INFO, {{0, 1}}},
        {File::MAINMENU, {{30, 1}}}, {File::COMBAT, {{0, 11}}}, {File::INBOX, {{7, 7}}}, {File::SPHERSFX, {{TOP, TOP}}},
        {File::FONTS, {{0, NO_INT}}}, {File::LBX_UNKNOWN, {{0, NO_INT}}}, {LARGEST, {{0, NO_INT}}},
    });
}

// Each four-argument form answers from the two-argument form of the other
// name, and writes only through the pointers it is given, and only on true.
TEST(Magic, FourArgumentFormsCrossOver)
{
    using Form = bool (*)(File::LBX_FILE, unsigned int, File::LBX_FILE*, unsigned int*);
    const Form INT = &Magic::palInt, EXT = &Magic::palExt;
    struct FourCase {
        Form ask;
        File::LBX_FILE file;
        unsigned int index;
        bool found;
        File::LBX_FILE palFile;
        unsigned int palIndex;
    };
    const std::vector<FourCase> cases = {
        {EXT, File::SR_R0_SC, 0, true, File::SR_R0_SC, 0}, {EXT, File::BUFFER0, 5, true, File::BUFFER0, 0},
        {EXT, File::APP_PICS, 0, true, File::INFO, 1}, {EXT, File::APP_PICS, 3, true, File::APP_PICS, 3},
        {EXT, File::DIPSTARS, 7, true, File::DIPLOMAT, 0}, {EXT, File::FONTS, 0, false, File::LBX_UNKNOWN, 0},
        {EXT, File::BEAMS, 1, false, File::LBX_UNKNOWN, 0}, {EXT, PAST_LAST, 0, false, File::LBX_UNKNOWN, 0},
        {INT, File::INSTALL, 4, true, File::IFONTS, 1}, {INT, File::BEAMS, 0, true, File::FONTS, 3},
        {INT, File::BEAMS, 67, true, File::FONTS, 4}, {INT, File::DIPSTARS, 0, false, File::LBX_UNKNOWN, 0},
        {INT, File::CMBTSFX, 0, false, File::LBX_UNKNOWN, 0}, {INT, PAST_LAST, 1, false, File::LBX_UNKNOWN, 0},
    };
    for (const FourCase& c : cases) {
        SCOPED_TRACE(File::LBX_FILE_NAME(c.file) + " " + std::to_string(c.index));
        EXPECT_EQ(c.ask(c.file, c.index, nullptr, nullptr), c.found);

        File::LBX_FILE palFile = File::LBX_UNKNOWN;
        unsigned int palIndex = 777;
        EXPECT_EQ(c.ask(c.file, c.index, &palFile, nullptr), c.found);
        EXPECT_EQ(palFile, c.palFile);
        EXPECT_EQ(c.ask(c.file, c.index, nullptr, &palIndex), c.found);
        EXPECT_EQ(palIndex, c.found ? c.palIndex : 777);
    }
}

// Any entry the game expects in an archive that has a palette source names an
// entry that its source archive is expected to hold.
TEST(Magic, SourcesLieInsideTheirArchives)
{
    for (unsigned int row = 0; row < File::LBX_UNKNOWN; ++row) {
        const auto file = static_cast<File::LBX_FILE>(row);
        for (unsigned int index = 0; index < Magic::size(file); ++index) {
            File::LBX_FILE palFile = File::LBX_UNKNOWN;
            unsigned int palIndex = 0;
            SCOPED_TRACE(File::LBX_FILE_NAME(file) + " " + std::to_string(index));
            if (Magic::palExt(file, index, &palFile, &palIndex)) {
                EXPECT_LT(palIndex, Magic::size(palFile));
            }
            if (Magic::palInt(file, index, &palFile, &palIndex)) {
                EXPECT_LT(palIndex, Magic::size(palFile));
            }
        }
    }
}
