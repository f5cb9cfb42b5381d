#include "tools/modding/Edits.h"

#include "entry/Content.h"
#include "kinds/Text.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Header.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Mod.h"
#include "tools/modding/Names.h"
#include "tools/modding/Pack.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/TextEscape.h"
#include "tools/modding/Unpack.h"

#include <filesystem>
#include <stdexcept>

namespace lbxtool {

namespace {

class Collected : public Warnings {
public:
    void warn(const std::string& message) override { said.push_back(message); }
    std::vector<std::string> said;
};

std::string fileNameOf(const std::string& path)
{
    return std::filesystem::path(path).filename().string();
}

} // namespace

ArchiveEdits::ArchiveEdits(Files& files, const std::string& path)
    : files(files), name(path), base(readArchiveBytes(files, path)), now(base)
{
}

std::string ArchiveEdits::entryCalled(unsigned int index) const
{
    return entryName(fileNameOf(name), index);
}

std::string ArchiveEdits::folder() const
{
    // As `lbx unpack` names the folder it makes, which pack's messages name.
    return safeStem(name);
}

UnpackedEntry ArchiveEdits::filesOf(unsigned int index, Warnings& warnings) const
{
    const auto found = edited.find(index);
    if (found != edited.end())
        return found->second;
    std::unique_ptr<File> archive = archiveOf(now, name);
    if (index >= archive->size())
        throw std::runtime_error(entryCalled(index) + " is not in the archive");
    PaletteSource palettes(*archive, name, PaletteLookup{}, files, warnings);
    return unpackEntry(*archive, name, index, folder(), palettes);
}

EditDone ArchiveEdits::edit(unsigned int index, const PackRules& rules, const FormEdit& change)
{
    Collected warnings;
    UnpackedEntry entry = filesOf(index, warnings);
    change(entry);
    // Pack looks an entry up by its place in the manifest's list.
    Json entries = Json::array();
    for (unsigned int i = 0; i < index; ++i)
        entries.push_back(nullptr);
    entries.push_back(entry.manifest);
    const PackPlan plan{fileNameOf(name), &entries, nullptr};
    const FileReader read = [&](const std::string& file) {
        const auto found = entry.files.find(file);
        if (found == entry.files.end())
            throw std::runtime_error("'" + inFolder(folder(), file) + "' is not there");
        return found->second;
    };
    const PackPlace place{{inFolder(folder(), MANIFEST_NAME), static_cast<int>(index)}, read, folder(), rules, warnings};
    const PackedEntry packed = packEntry(plan, index, place, fileNameOf(name));

    Revision after;
    after.index = index;
    after.entry.assign(packed.entry->data(), packed.entry->size());
    std::vector<std::size_t> sizes = now.sizes();
    sizes[index] = after.entry.size();
    after.header = writtenHeader(sizes);
    after.files = std::move(entry);
    commit(std::move(after));
    return {packed.change, warnings.said};
}

Json& ArchiveEdits::framesOf(UnpackedEntry& entry, unsigned int index) const
{
    if (!entry.manifest.contains(key::FRAMES))
        throw std::runtime_error(entryCalled(index) + " has no frames");
    return entry.manifest[key::FRAMES];
}

std::string& ArchiveEdits::fileOf(UnpackedEntry& entry, unsigned int index, const char* kind) const
{
    if (entry.manifest.value(key::KIND, "") != kind)
        throw std::runtime_error(entryCalled(index) + " is not a " + kind);
    return entry.files[entry.manifest[key::FILE].get<std::string>()];
}

void ArchiveEdits::requireFrame(const Json& frames, unsigned int index, unsigned int frame) const
{
    if (frame >= frames.size())
        throw std::runtime_error(entryCalled(index) + " has no frame " + std::to_string(frame));
}

EditDone ArchiveEdits::replaceFrame(unsigned int index, unsigned int frame, const std::string& png,
                                    const PackRules& rules)
{
    return edit(index, rules, [&](UnpackedEntry& entry) {
        const Json& frames = framesOf(entry, index);
        requireFrame(frames, index, frame);
        entry.files[frames[frame].get<std::string>()] = png;
    });
}

EditDone ArchiveEdits::addFrame(unsigned int index, const std::string& png, const PackRules& rules)
{
    return edit(index, rules, [&](UnpackedEntry& entry) {
        Json& frames = framesOf(entry, index);
        // Named as the frame after the last, unless a file has that name.
        unsigned int number = static_cast<unsigned int>(frames.size());
        while (entry.files.count(frameFileName(folder(), index, number)) != 0)
            ++number;
        const std::string file = frameFileName(folder(), index, number);
        frames.push_back(file);
        entry.files[file] = png;
    });
}

EditDone ArchiveEdits::removeFrame(unsigned int index, unsigned int frame, const PackRules& rules)
{
    return edit(index, rules, [&](UnpackedEntry& entry) {
        Json& frames = framesOf(entry, index);
        requireFrame(frames, index, frame);
        entry.files.erase(frames[frame].get<std::string>());
        frames.erase(frame);
    });
}

EditDone ArchiveEdits::setRecord(unsigned int index, unsigned int record, const std::string& line,
                                 const PackRules& rules)
{
    return edit(index, rules, [&](UnpackedEntry& entry) {
        std::string& text = fileOf(entry, index, kind::TEXT);
        std::vector<std::string> lines = textLines(text);
        if (record >= lines.size())
            throw std::runtime_error(entryCalled(index) + " has no record " + std::to_string(record));
        lines[record] = line;
        text.clear();
        for (const std::string& each : lines)
            text += each + '\n';
    });
}

EditDone ArchiveEdits::replaceSound(unsigned int index, const std::string& wave, const PackRules& rules)
{
    return edit(index, rules, [&](UnpackedEntry& entry) { fileOf(entry, index, kind::SOUND) = wave; });
}

std::pair<std::size_t, std::size_t> ArchiveEdits::recordBytes(unsigned int index, const std::string& line) const
{
    if (index >= now.entries.size())
        throw std::runtime_error(entryCalled(index) + " is not in the archive");
    const std::string& bytes = now.entries[index];
    std::unique_ptr<char[]> block(new char[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), block.get());
    Content entry(entryCalled(index), block.release(), static_cast<unsigned int>(bytes.size()));
    if (entry.type() != Content::TEXT)
        throw std::runtime_error(entryCalled(index) + " is not a " + kind::TEXT);
    return {unescapeText(line).size(), recordRoom(entry.text()->read2(RECORD_LENGTH_OFFSET))};
}

EditDone ArchiveEdits::applyPatches(const std::vector<std::pair<std::string, std::string>>& patches, bool preferLast)
{
    Collected warnings;
    std::vector<NamedMod> mods;
    for (const auto& [path, text] : patches)
        mods.push_back({path, readMod(text, path)});
    ArchiveBytes result = applyMods(now, name, mods, preferLast, warnings);
    replaceWhole(std::move(result));
    return {"", warnings.said};
}

void ArchiveEdits::replaceWhole(ArchiveBytes archive)
{
    Revision after;
    after.whole = true;
    after.header = std::move(archive.header);
    after.entries = std::move(archive.entries);
    commit(std::move(after));
}

ArchiveEdits::Revision ArchiveEdits::swapIn(Revision revision)
{
    std::swap(now.header, revision.header);
    if (revision.whole) {
        std::swap(now.entries, revision.entries);
        std::swap(edited, revision.allFiles);
        return revision;
    }
    std::swap(now.entries[revision.index], revision.entry);
    std::optional<UnpackedEntry> before;
    if (const auto found = edited.find(revision.index); found != edited.end()) {
        before = std::move(found->second);
        edited.erase(found);
    }
    if (revision.files)
        edited.emplace(revision.index, std::move(*revision.files));
    revision.files = std::move(before);
    return revision;
}

void ArchiveEdits::commit(Revision revision)
{
    done.push_back(swapIn(std::move(revision)));
    undone.clear();
}

void ArchiveEdits::undo()
{
    if (done.empty())
        return;
    undone.push_back(swapIn(std::move(done.back())));
    done.pop_back();
}

void ArchiveEdits::redo()
{
    if (undone.empty())
        return;
    done.push_back(swapIn(std::move(undone.back())));
    undone.pop_back();
}

std::string ArchiveEdits::mod(bool reversible) const
{
    return modFile(makeMod(base, now, fileNameOf(name), reversible));
}

std::string ArchiveEdits::bps() const
{
    return bpsPatch(base.file(), now.file());
}

} // namespace lbxtool
