#ifndef ZORV2_LBX_TOOLS_MODDING_BPS_H
#define ZORV2_LBX_TOOLS_MODDING_BPS_H

#include <string>

// Whole-file patches in the BPS format, which the patchers people already
// use apply: the target built from runs of the source, runs of itself and
// bytes of its own, checked by the CRC32s of source, target and patch.
namespace lbxtool {

// Whether `bytes` begin as a BPS patch does.
bool isBps(const std::string& bytes);

// A patch that makes `target` of `source`, copying from the source where
// their bytes are the same.
std::string bpsPatch(const std::string& source, const std::string& target);

// A BPS patch makes a whole file of another, so it goes alone: throws,
// naming the patch at `path`, when it comes among `patches` patches.
void requireAlone(const std::string& path, std::size_t patches);

// `source`, the file at `sourcePath`, patched by `patch`, the file at
// `patchPath`. A damaged patch, or one made for another source, is refused
// with a message that names it.
std::string applyBps(const std::string& source, const std::string& sourcePath, const std::string& patch,
                     const std::string& patchPath);

} // namespace lbxtool

#endif
