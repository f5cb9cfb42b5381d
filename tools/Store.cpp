#include "tools/Store.h"

#include "images/Graphic.h"
#include "tools/Inputs.h"
#include "tools/Paths.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"

#include <stdexcept>

namespace lbxtool {

std::string shapeOf(Content* entry)
{
    if (entry->type() != Content::GRAPHIC)
        return entry->typeStr();
    Content::Graphic* graphic = entry->graphic();
    return "graphic (" + std::to_string(graphic->frames()) + (graphic->frames() == 1 ? " frame of " : " frames of ") +
           std::to_string(graphic->width()) + "x" + std::to_string(graphic->height()) + ")";
}

std::string kindChange(Content* former, Content* entry)
{
    const std::string was = shapeOf(former), becomes = shapeOf(entry);
    return was == becomes ? "" : "was " + was + ", becomes " + becomes;
}

void storeEntry(const std::string& path, unsigned int index, std::unique_ptr<Content> entry, bool strict)
{
    checkTarget(path, Existing::Replace);
    std::unique_ptr<File> archive = openArchive(path);
    const std::string name = entryName(path, index);
    if (index == archive->size()) {
        archive->push_back(entry.get());
        entry.release();
    } else {
        const std::string change = kindChange(archive->at(index), entry.get());
        if (!change.empty() && strict)
            throw std::runtime_error(name + " " + change + "; --strict leaves the archive as it is");
        if (!change.empty())
            warn(name + " " + change);
        std::unique_ptr<Content> former(archive->at(index));
        archive->replace(index, entry.release());
    }
    writeArchive(path, *archive, Existing::Replace);
}

} // namespace lbxtool
