#include "tools/modding/Store.h"

#include "tools/modding/EntryView.h"
#include "tools/modding/Names.h"

#include <stdexcept>

namespace lbxtool {

void storeEntry(File& archive, const std::string& path, unsigned int index, std::unique_ptr<Content> entry,
                bool strict, Warnings& warnings)
{
    if (index > archive.size())
        throw noEntry(path, index, archive.size(), true);
    if (index == archive.size()) {
        archive.push_back(entry.get());
        entry.release();
        return;
    }
    const std::string name = entryName(path, index);
    const std::string change = shapeChange(shapeOf(archive.at(index)), shapeOf(entry.get()));
    if (!change.empty() && strict)
        throw std::runtime_error(name + " " + change + "; --strict leaves the archive as it is");
    if (!change.empty())
        warnings.warn(name + " " + change);
    std::unique_ptr<Content> former(archive.at(index));
    archive.replace(index, entry.release());
}

} // namespace lbxtool
