#ifndef ZORV2_LBX_TOOLS_MODDING_PATCH_H
#define ZORV2_LBX_TOOLS_MODDING_PATCH_H

#include "tools/modding/ArchiveBytes.h"
#include "tools/modding/Mod.h"
#include "tools/modding/Warnings.h"

#include <string>
#include <vector>

// Mods applied to an archive, each checked against it before anything of
// it is taken.
namespace lbxtool {

struct NamedMod {
    std::string path; // names it in messages
    Mod mod;
};

// `base`, read from `basePath`, with `mods` applied in order. Every entry a
// mod replaces must be the one it was made for: else the mod was made for
// another version, and it is refused naming the entry. A mod may build on
// an earlier one of the list; two that change the same entry from the same
// base conflict, and are refused naming both, unless `preferLast`, when the
// later wins and `warnings` says so. Changes to different records of one
// text table merge.
ArchiveBytes applyMods(const ArchiveBytes& base, const std::string& basePath, const std::vector<NamedMod>& mods,
                       bool preferLast, Warnings& warnings);

} // namespace lbxtool

#endif
