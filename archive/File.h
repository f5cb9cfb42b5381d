#ifndef ZORV2_LBX_FILE_H
#define ZORV2_LBX_FILE_H

#include "entry/Content.h"

#include <fstream>
#include <string>
#include <vector>

namespace zorv2 {
namespace Lbx {

// An LBX archive in memory: up to 509 entries behind a 2048-byte header area,
// each entry a Content that the File owns. The static operations work on a
// path without an object.
class File {
public:
    // The catalogue of the game's archives, eight rows a line; the numbers are
    // fixed and key every table of Magic.
    enum LBX_FILE {
        AMEBAFIN, ANATKFIN, KOLARMSG, KOLAROOM, ANWINFIN, APP_PICS, BEAMS, DORNTEX2,
        DORNTEXT, BLDG0, BLDG1, BLDG2, BLDG3, BLDG4, BLDG5, BUFFER0,
        CMBTFGTR, CMBTMISL, CMBTPLNT, CMBTSFX, CMBTSHP, COLBLDG, COLGCBT, COLONY,
        COLONY2, COLPUPS, COLPUSP, COLREFIT, COLROADS, COLSUM, COLSYSDI, COLVEGGI,
        COMBAT, CONFIRM, COUNCIL, COUNCMSG, CREDITS, CUSTMSTR, DESIGN, DIMTVFIN,
        DIPLOMAT, DIPLOMSE, DIPLOMSF, DIPLOMSG, DIPLOMSI, DIPLOMSS, DIPSTARS, ENGMSG,
        ESTRFREN, ESTRGERM, ESTRINGS, ESTRITAL, ESTRPOLI, ESTRSPAN, EVENTMSE, EVENTMSF,
        EVENTMSG, EVENTMSI, EVENTMSS, EVENTS, FILEDATA, FIREPTS, FLEET, FLTICONS,
        FONTS, FONTSF, FONTSG, FONTSI, FONTSS, FRECRDTS, FRESKLLS, FRETECD,
        FRE_HELP, GAME, GENWINFN, GERCRDTS, GERSKLLS, GERTECD, GER_HELP, GSTAR,
        HELP, HERODATA, HERODATF, HERODATG, HERODATI, HERODATS, HESTRNGS, HFSTRNGS,
        HGSTRNGS, HISTRNGS, HSSTRNGS, IFONTS, INBOX, INFO, INSTALL, INTRO,
        ITACRDTS, ITASKLLS, ITATECD, ITA_HELP, MIRTEXT, MIRTEXT2, LOBTEXT, LOBTEXT1,
        LOADSAVE, LOGO, LOSERFIN, MAINFREN, MAINGERM, MAINITAL, MAINMENU, MAINPUPS,
        MAINSPAN, MAINTEXT, MONSTER, MSGENG, MULTIGM, NDATA, NEWGAME, NEXTPLYR,
        OCPOL, OFFICER, ZENITFIN, PATCH13, PLANETS, PLAYSPEC, PLNTDFIN, PLNTSUM,
        RACEICON, RACENAME, RACEOPT, RACERPRT, RACES, RACESEL, RACESTUF, REFITPUP,
        RSTRING0, RSTRING1, RSTRING2, RSTRING3, RSTRING4, RSTRINGS, SCIENCE, SCORE,
        SHIPNAME, SHIPS, HOLMEX, SKILDESC, SOUND, SPACRDTS, SPASKLLS, SPATECD,
        SPA_HELP, SPHERSFX, SR_R0_SC, SR_R0_SP, SR_R0_TR, SR_R1_SC, SR_R1_SP, SR_R1_TR,
        SR_R2_SC, SR_R2_SP, SR_R2_TR, SR_R3_SC, SR_R3_SP, SR_R3_TR, SR_R4_SC, SR_R4_SP,
        SR_R4_TR, SR_R5_SC, SR_R5_SP, SR_R5_TR, SR_R6_SC, SR_R6_SP, SR_R6_TR, SR_R7_SC,
        SR_R7_SP, SR_R7_TR, SR_R8_SC, SR_R8_SP, SR_R8_TR, SR_R9_SC, SR_R9_SP, SR_R9_TR,
        SR_RA_SC, SR_RA_SP, SR_RA_TR, SR_RB_SC, SR_RB_SP, SR_RB_TR, SR_RC_SC, SR_RC_SP,
        SR_RC_TR, STARBG, STARNAME, STREAM, STREAMHD, SYSDISP, TANM_001, TANM_002,
        TANM_003, TANM_004, TANM_005, TANM_006, TANM_007, TANM_008, TANM_009, TANM_010,
        TANM_011, TANM_012, TANM_013, TANM_014, TANM_015, TANM_016, TANM_017, TANM_018,
        TANM_019, TANM_020, TANM_021, TANM_022, TANM_023, TANM_024, TANM_025, TANM_026,
        TANM_027, TANM_028, TANM_029, TANM_030, TANM_031, TANM_032, TANM_033, TANM_034,
        TANM_035, TANM_036, TANM_037, TANM_038, TANM_039, TANM_040, TANM_041, TANM_042,
        TANM_043, TANM_044, TANM_045, TANM_046, TANM_047, TANM_048, TANM_049, TANM_050,
        TANM_051, TANM_052, TANM_053, TANM_054, TANM_055, TANM_056, TANM_057, TANM_058,
        TANM_059, TANM_060, TANM_061, TANM_062, TANM_063, TANM_064, TANM_065, TANM_066,
        TANM_067, TANM_068, TANM_069, TANM_070, TANM_071, TANM_072, TANM_073, TANM_074,
        TANM_075, TANM_076, TANM_077, TANM_078, TANM_079, TANM_080, TANM_081, TANM_082,
        TANM_083, TANM_084, TANM_085, TANM_086, TANM_087, TANM_088, TANM_089, TANM_090,
        TANM_091, TANM_092, TANM_093, TANM_094, TANM_095, TANM_096, TANM_097, TANM_098,
        TANM_099, TANM_100, TANM_101, TANM_102, TANM_103, TANM_104, TANM_105, TANM_106,
        TANM_107, TANM_108, TANM_109, TANM_110, TANM_111, TANM_112, TANM_113, TANM_114,
        TANM_115, TANM_116, TANM_117, TANM_118, TANM_119, TANM_120, TANM_121, TANM_122,
        TANM_123, TANM_124, TANM_125, TANM_126, TANM_127, TANM_128, TANM_129, TANM_130,
        TANM_131, TANM_132, TANM_133, TANM_134, TANM_135, TANM_136, TANM_137, TANM_138,
        TANM_139, TANM_140, TANM_141, TANM_142, TANM_143, TANM_144, TANM_145, TANM_146,
        TANM_147, TANM_148, TANM_149, TANM_150, TANM_151, TANM_152, TANM_153, TANM_154,
        TANM_155, TANM_156, TANM_157, TANM_158, TANM_159, TANM_160, TANM_161, TANM_162,
        TANM_163, TANM_164, TANM_165, TANM_166, TANM_167, TANM_168, TANM_169, TANM_170,
        TANM_171, TANM_172, TANM_173, TANM_174, TANM_175, TANM_176, TANM_177, TANM_178,
        TANM_179, TANM_180, TANM_181, TANM_182, TANM_183, TANM_184, TANM_185, TANM_186,
        TANM_187, TANM_188, TANM_189, TANM_190, TANM_191, TANM_192, TANM_193, TANM_194,
        TANM_195, TANM_196, TANM_197, TANM_198, TANM_199, TANM_200, TANM_201, TANM_202,
        TANM_203, TANM_204, TANM_205, TANM_206, TANM_207, TANM_208, TANM_209, TANM_210,
        TANM_211, TANM_212, TANM_213, TECHDESC, TECHNAME, TECHSEL, TEXTBOX, TURNSUM,
        WARNING, WININFIN,
        LBX_UNKNOWN
    };

    File();
    File(std::string path);
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    virtual ~File();

    void open(std::string path);
    void clear();
    Content*& at(unsigned int index);
    Content*& operator[](unsigned int index);
    unsigned int size();
    bool tagged();
    std::string path();
    void push_back(Content* content);
    void push_back(char* data, unsigned int size);
    void push_back(std::string path);
    void push_back(std::ifstream& stream, unsigned int begin, unsigned int end);
    void replace(unsigned int index, Content* content);
    void write(std::string path);

    static bool header(std::string path, std::string* error, std::vector<unsigned int>* offsets, bool* tagged);
    static bool check(std::string path);
    static unsigned int size(std::string path);
    static Content* at(std::string path, unsigned int index);

    static std::string LBX_FILE_NAME(LBX_FILE file);
    static LBX_FILE LBX_ENUM(std::string name);

private:
    std::string filePath;
    std::vector<Content*> entries;
    bool isTagged;
};

} // namespace Lbx
} // namespace zorv2

#endif
