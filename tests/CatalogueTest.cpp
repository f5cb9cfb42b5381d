#include "archive/File.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

using zorv2::Lbx::File;

namespace {

struct Row {
    unsigned int number;
    std::string name;
};

// The enumerator and its name come from one token, so a row that drifts in
// the enumeration or in the name table shows up against its position here.
#define ROW(name) Row{File::name, #name}

// The catalogue in order; the patterned runs are spelled out by their pattern.
std::vector<Row> catalogueInOrder()
{
    std::vector<Row> rows = {
        ROW(AMEBAFIN), ROW(ANATKFIN), ROW(KOLARMSG), ROW(KOLAROOM), ROW(ANWINFIN), ROW(APP_PICS), ROW(BEAMS),
        ROW(DORNTEX2), ROW(DORNTEXT), ROW(BLDG0), ROW(BLDG1), ROW(BLDG2), ROW(BLDG3), ROW(BLDG4), ROW(BLDG5),
        ROW(BUFFER0), ROW(CMBTFGTR), ROW(CMBTMISL), ROW(CMBTPLNT), ROW(CMBTSFX), ROW(CMBTSHP), ROW(COLBLDG),
        ROW(COLGCBT), ROW(COLONY), ROW(COLONY2), ROW(COLPUPS), ROW(COLPUSP), ROW(COLREFIT), ROW(COLROADS),
        ROW(COLSUM), ROW(COLSYSDI), ROW(COLVEGGI), ROW(COMBAT), ROW(CONFIRM), ROW(COUNCIL), ROW(COUNCMSG),
        ROW(CREDITS), ROW(CUSTMSTR), ROW(DESIGN), ROW(DIMTVFIN), ROW(DIPLOMAT), ROW(DIPLOMSE), ROW(DIPLOMSF),
        ROW(DIPLOMSG), ROW(DIPLOMSI), ROW(DIPLOMSS), ROW(DIPSTARS), ROW(ENGMSG), ROW(ESTRFREN), ROW(ESTRGERM),
        ROW(ESTRINGS), ROW(ESTRITAL), ROW(ESTRPOLI), ROW(ESTRSPAN), ROW(EVENTMSE), ROW(EVENTMSF), ROW(EVENTMSG),
        ROW(EVENTMSI), ROW(EVENTMSS), ROW(EVENTS), ROW(FILEDATA), ROW(FIREPTS), ROW(FLEET), ROW(FLTICONS),
        ROW(FONTS), ROW(FONTSF), ROW(FONTSG), ROW(FONTSI), ROW(FONTSS), ROW(FRECRDTS), ROW(FRESKLLS),
        ROW(FRETECD), ROW(FRE_HELP), ROW(GAME), ROW(GENWINFN), ROW(GERCRDTS), ROW(GERSKLLS), ROW(GERTECD),
        ROW(GER_HELP), ROW(GSTAR), ROW(HELP), ROW(HERODATA), ROW(HERODATF), ROW(HERODATG), ROW(HERODATI),
        ROW(HERODATS), ROW(HESTRNGS), ROW(HFSTRNGS), ROW(HGSTRNGS), ROW(HISTRNGS), ROW(HSSTRNGS), ROW(IFONTS),
        ROW(INBOX), ROW(INFO), ROW(INSTALL), ROW(INTRO), ROW(ITACRDTS), ROW(ITASKLLS), ROW(ITATECD),
        ROW(ITA_HELP), ROW(MIRTEXT), ROW(MIRTEXT2), ROW(LOBTEXT), ROW(LOBTEXT1), ROW(LOADSAVE), ROW(LOGO),
        ROW(LOSERFIN), ROW(MAINFREN), ROW(MAINGERM), ROW(MAINITAL), ROW(MAINMENU), ROW(MAINPUPS), ROW(MAINSPAN),
        ROW(MAINTEXT), ROW(MONSTER), ROW(MSGENG), ROW(MULTIGM), ROW(NDATA), ROW(NEWGAME), ROW(NEXTPLYR),
        ROW(OCPOL), ROW(OFFICER), ROW(ZENITFIN), ROW(PATCH13), ROW(PLANETS), ROW(PLAYSPEC), ROW(PLNTDFIN),
        ROW(PLNTSUM), ROW(RACEICON), ROW(RACENAME), ROW(RACEOPT), ROW(RACERPRT), ROW(RACES), ROW(RACESEL),
        ROW(RACESTUF), ROW(REFITPUP), ROW(RSTRING0), ROW(RSTRING1), ROW(RSTRING2), ROW(RSTRING3), ROW(RSTRING4),
        ROW(RSTRINGS), ROW(SCIENCE), ROW(SCORE), ROW(SHIPNAME), ROW(SHIPS), ROW(HOLMEX), ROW(SKILDESC),
        ROW(SOUND), ROW(SPACRDTS), ROW(SPASKLLS), ROW(SPATECD), ROW(SPA_HELP), ROW(SPHERSFX),
    };
    for (const char* race : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "A", "B", "C"})
        for (const char* part : {"SC", "SP", "TR"})
            rows.push_back({static_cast<unsigned int>(rows.size()), std::string("SR_R") + race + "_" + part});
    rows.insert(rows.end(), {ROW(STARBG), ROW(STARNAME), ROW(STREAM), ROW(STREAMHD), ROW(SYSDISP)});
    for (unsigned int n = 1; n <= 213; ++n) {
        char name[16];
        std::snprintf(name, sizeof name, "TANM_%03u", n);
        rows.push_back({static_cast<unsigned int>(rows.size()), name});
    }
    rows.insert(rows.end(), {ROW(TECHDESC), ROW(TECHNAME), ROW(TECHSEL), ROW(TEXTBOX), ROW(TURNSUM), ROW(WARNING),
                             ROW(WININFIN)});
    return rows;
}

// The patterned runs are generated above, so their enumerators are held here.
static_assert(File::SR_R0_SC == 154 && File::SR_RC_TR == 192 && File::TANM_001 == 198 && File::TANM_213 == 410 &&
                  File::LBX_UNKNOWN == 418,
              "patterned runs in their rows");

} // namespace

TEST(Catalogue, EveryRowMapsToItsNumberAndBack)
{
    const std::vector<Row> rows = catalogueInOrder();
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(File::LBX_UNKNOWN));
    for (unsigned int number = 0; number < rows.size(); ++number) {
        SCOPED_TRACE(rows[number].name);
        EXPECT_EQ(rows[number].number, number);
        EXPECT_EQ(File::LBX_FILE_NAME(static_cast<File::LBX_FILE>(number)), rows[number].name);
        EXPECT_EQ(File::LBX_ENUM(rows[number].name), static_cast<File::LBX_FILE>(number));
    }
}

TEST(Catalogue, OnlyTheWholeExactNameIsARow)
{
    EXPECT_EQ(File::LBX_ENUM("FONTS"), File::FONTS);
    for (const char* name : {"", "unknown", "fonts", "Fonts", "FONTS.LBX", "FONTS ", " FONTS", "data/FONTS", "FONT",
                             "FONTSX", "TANM_214", "TANM_000", "SR_RD_SC"})
        EXPECT_EQ(File::LBX_ENUM(name), File::LBX_UNKNOWN) << '"' << name << '"';
}

TEST(Catalogue, NumbersPastTheLastRowAreUnknown)
{
    for (unsigned int number : {418u, 419u, 511u})
        EXPECT_EQ(File::LBX_FILE_NAME(static_cast<File::LBX_FILE>(number)), "unknown") << number;
}
