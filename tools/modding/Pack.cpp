#include "tools/modding/Pack.h"

#include "tools/modding/EntryView.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Names.h"

#include <set>
#include <stdexcept>

namespace lbxtool {

namespace {

constexpr unsigned int LARGEST_ARCHIVE = 509;

} // namespace

PackPlan planPack(const Json& manifest, const std::string& manifestPath)
{
    const ManifestPlace top{manifestPath};
    PackPlan plan{fileName(manifest, key::ARCHIVE, top), &member(manifest, key::ENTRIES, top)};
    if (!plan.entries->is_array() || plan.entries->size() > LARGEST_ARCHIVE)
        throw top.problem("'entries' must be a list of at most 509 entries");
    return plan;
}

void requireNamedFiles(const std::string& folder, const std::vector<Files::Listed>& held, const Json& entries,
                       const std::string& manifestPath)
{
    std::set<std::string> present;
    for (const Files::Listed& file : held)
        present.insert(file.name);
    std::set<std::string> named = {MANIFEST_NAME};
    for (unsigned int i = 0; i < entries.size(); ++i) {
        for (const std::string& name : formFiles(entries[i], {manifestPath, static_cast<int>(i)})) {
            named.insert(name);
            if (present.count(name) == 0)
                throw std::runtime_error("'" + inFolder(folder, name) + "' is missing (entry " + std::to_string(i) +
                                         " of '" + manifestPath + "')");
        }
        for (const std::string& name : viewFiles(entries[i]))
            named.insert(name);
    }
    for (const Files::Listed& file : held)
        if (named.count(file.name) == 0)
            throw std::runtime_error("'" + inFolder(folder, file.name) + "' is not named in '" + manifestPath + "'");
}

PackedEntry packEntry(const PackPlan& plan, unsigned int index, const PackPlace& place, const std::string& target)
{
    const Json& described = (*plan.entries)[index];
    PackedEntry packed;
    packed.entry = entryFromForm(described, place);
    Content* entry = packed.entry.get();
    if (described.value(key::HASH, "") != hashOf(std::string(entry->data(), entry->size()))) {
        const std::string becomes = shapeOf(entry);
        const std::string change = shapeChange(described.value(key::SHAPE, ""), becomes);
        packed.change = entryName(target, index) + ": " + (change.empty() ? becomes : change);
    }
    return packed;
}

std::string headerNote(const Json& manifest, const std::string& area, bool tagged, const std::string& manifestPath)
{
    if (manifest.value(key::HEADER, "") == hashOf(area))
        return "";
    const std::string which = manifest.value(key::TAGGED, tagged) == tagged ? "a fill other than zeros" : "no tag word";
    return "the header area of the archive unpacked into " + manifestPath + " held bytes the writer does not write (" +
           which + "); the entries are as they were";
}

} // namespace lbxtool
