#ifndef ZORV2_LBX_TOOLS_MODDING_HASH_H
#define ZORV2_LBX_TOOLS_MODDING_HASH_H

#include <string>
#include <string_view>
#include <vector>

namespace lbxtool {

// A short fingerprint of some bytes, 16 hex digits (64-bit FNV-1a): enough to
// tell an edited file or entry from the one that was written, not a guard
// against anyone who wants a collision.
std::string hashOf(std::string_view bytes);

// The fingerprint of each of `parts`, in their order: many parts take
// about a quarter of the time one by one would.
std::vector<std::string> hashOfEach(const std::vector<std::string_view>& parts);

// The fingerprints of `parts`, joined by spaces, and split again.
std::string hashesOf(const std::vector<std::string>& parts);
std::vector<std::string> splitHashes(const std::string& joined);

} // namespace lbxtool

#endif
