#ifndef ZORV2_LBX_TOOLS_COMMANDS_H
#define ZORV2_LBX_TOOLS_COMMANDS_H

#include <string>
#include <vector>

// The commands that work on archives as wholes. Each returns the exit status
// and reports its failures itself, one line each.
namespace lbxtool {

int list(const std::vector<std::string>& archives);
int check(const std::vector<std::string>& archives);
int extract(const std::string& archive, const std::vector<unsigned int>& indices, const std::string& folder);
int verify(const std::vector<std::string>& archives, bool verbose);
int create(const std::string& target, const std::vector<std::string>& files);
int replace(const std::string& archive, unsigned int index, const std::string& file);

} // namespace lbxtool

#endif
