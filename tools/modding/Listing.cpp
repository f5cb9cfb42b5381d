#include "tools/modding/Listing.h"

#include "knowledge/Magic.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Names.h"

#include <iomanip>
#include <sstream>

namespace lbxtool {

namespace {

using zorv2::Lbx::Magic;

constexpr int INDEX_WIDTH = 5;

std::string catalogueLine(const std::string& path, unsigned int count, Warnings& warnings)
{
    const File::LBX_FILE row = catalogueRow(path);
    if (row == File::LBX_UNKNOWN)
        return "not in the catalogue";
    const std::string name = File::LBX_FILE_NAME(row);
    const unsigned int expected = Magic::size(row);
    if (count != expected)
        warnings.warn(path + " holds " + entries(count) + ", the game's " + name + " holds " + std::to_string(expected));
    return "catalogue " + name + " (row " + std::to_string(row) + "), expected " + std::to_string(expected);
}

} // namespace

std::string listing(const std::string& path, File& archive, Warnings& warnings)
{
    std::ostringstream lines;
    lines << path << ": " << entries(archive.size()) << ", " << (archive.tagged() ? "tagged" : "not tagged") << ", "
          << catalogueLine(path, archive.size(), warnings) << '\n';
    for (unsigned int i = 0; i < archive.size(); ++i)
        lines << std::setw(INDEX_WIDTH) << i << ' ' << headingOf(archive, path, i).info << '\n';
    return lines.str();
}

} // namespace lbxtool
