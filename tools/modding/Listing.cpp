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

// The archive's catalogue row, and the count the game expects; a count
// other than that is said to `warnings`. False when it has no row.
bool catalogued(const std::string& path, unsigned int count, Warnings& warnings, File::LBX_FILE& row,
                unsigned int& expected)
{
    row = catalogueRow(path);
    if (row == File::LBX_UNKNOWN)
        return false;
    expected = Magic::size(row);
    if (count != expected)
        warnings.warn(path + " holds " + entries(count) + ", the game's " + File::LBX_FILE_NAME(row) + " holds " +
                      std::to_string(expected));
    return true;
}

std::string catalogueLine(const std::string& path, unsigned int count, Warnings& warnings)
{
    File::LBX_FILE row;
    unsigned int expected = 0;
    if (!catalogued(path, count, warnings, row, expected))
        return "not in the catalogue";
    return "catalogue " + File::LBX_FILE_NAME(row) + " (row " + std::to_string(row) + "), expected " +
           std::to_string(expected);
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

namespace lbxtool {

Json listingJson(const std::string& path, File& archive, Warnings& warnings)
{
    Json listed;
    listed["path"] = path;
    listed["count"] = archive.size();
    listed["tagged"] = archive.tagged();
    File::LBX_FILE row;
    unsigned int expected = 0;
    if (catalogued(path, archive.size(), warnings, row, expected))
        listed["catalogue"] = {{"name", File::LBX_FILE_NAME(row)}, {"row", static_cast<unsigned int>(row)},
                               {"expected", expected}};
    else
        listed["catalogue"] = nullptr;
    listed["entries"] = Json::array();
    for (unsigned int i = 0; i < archive.size(); ++i) {
        const EntryView heading = headingOf(archive, path, i);
        listed["entries"].push_back({{"index", i},
                                     {"kind", heading.kind},
                                     {"info", heading.info},
                                     {"shape", shapeOf(archive.at(i))}});
    }
    return listed;
}

} // namespace lbxtool
