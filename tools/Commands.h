#ifndef ZORV2_LBX_TOOLS_COMMANDS_H
#define ZORV2_LBX_TOOLS_COMMANDS_H

#include "tools/Paths.h"

#include <string>
#include <vector>

// The commands that work on archives as wholes. Each returns the exit status
// and reports its failures itself, one line each.
namespace lbxtool {

int list(const std::vector<std::string>& archives);
// What `list` prints for one archive opened from `path`: a head line, then a
// line per entry.
std::string listing(const std::string& path, File& archive);
int check(const std::vector<std::string>& archives);
// Each archive's entries into `folder`; archives of one stem get names of
// their own there.
int extract(const std::vector<std::string>& archives, const std::vector<unsigned int>& indices,
            const std::string& folder);
// Re-creates each entry that can be and holds it against its bytes, on up
// to `jobs` workers (0: one a core), for now at most one.
int verify(const std::vector<std::string>& archives, bool verbose, unsigned int jobs = 0);
// Refuses to replace an existing `target` unless `force`.
int create(const std::string& target, const std::vector<std::string>& files, bool force);
// With `strict`, an entry of another kind or shape than the one it replaces
// is refused instead of warned about.
int replace(const std::string& archive, unsigned int index, const std::string& file, bool strict);

} // namespace lbxtool

#endif
