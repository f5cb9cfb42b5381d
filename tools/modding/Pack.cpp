#include "tools/modding/Pack.h"

#include "tools/modding/EntryView.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Header.h"
#include "tools/modding/Names.h"

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

namespace lbxtool {

namespace {

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Files that editors and file managers leave beside the ones they open:
// hidden files, backups, swap and lock files.
bool incidental(const std::string& name)
{
    const std::string upper = upperCase(name);
    if (name.front() == '.' || name.back() == '~' || (name.front() == '#' && name.back() == '#') ||
        upper == "THUMBS.DB" || upper == "DESKTOP.INI")
        return true;
    for (const char* end : {".BAK", ".SWP", ".SWO", ".ORIG", ".TMP"})
        if (endsWith(upper, end))
            return true;
    return false;
}

// What to edit instead of a file that is only to look at.
std::string whereToEdit(const Json& described, const ManifestPlace& where)
{
    if (described.contains(key::FRAMES)) {
        const std::vector<std::string> frames = fileNames(described, key::FRAMES, where);
        if (!frames.empty())
            return "edit " + (frames.size() == 1 ? "the frame " + frames.front()
                                                 : "the frames " + frames.front() + " to " + frames.back()) +
                   " instead";
    }
    if (described.value(key::KIND, "") == kind::FONT)
        return "a font packs from the heights and widths in " + MANIFEST_NAME;
    return "its edits would be lost";
}

// The views of an entry as unpack wrote them, or gone: a changed one holds
// an edit that pack would drop.
void requireViewsAsWritten(const Json& described, const PackPlace& place)
{
    if (!described.contains(key::FILES) || !described[key::FILES].is_object())
        return;
    const Json& written = described[key::FILES];
    for (const std::string& name : viewFiles(described)) {
        if (!written.contains(name) || !written[name].is_string())
            continue;
        std::string bytes;
        try {
            bytes = place.read(name);
        } catch (const std::exception&) {
            continue; // a view may be gone
        }
        if (hashOf(bytes) != written[name].get<std::string>())
            throw std::runtime_error("'" + place.pathOf(name) + "' is only to look at and was changed; " +
                                     whereToEdit(described, place.manifest));
    }
}

// "frame 3", "frames 2, 5": the numbers of the parts that changed.
std::string numbered(const std::string& one, const std::string& many, const std::vector<unsigned int>& numbers)
{
    std::string text = numbers.size() == 1 ? one : many;
    for (std::size_t n = 0; n < numbers.size(); ++n)
        text += (n == 0 ? " " : ", ") + std::to_string(numbers[n]);
    return text;
}

// The records of a table's file `text` that differ from those unpack wrote,
// by number; those past the table's count are new.
std::vector<unsigned int> changedRecords(const Json& described, const std::string& text, const PackPlace& place)
{
    const std::vector<std::string> before = splitHashes(described.value(key::RECORD_HASHES, ""));
    const std::vector<std::string> records =
        recordsOfFile(text, place.pathOf(fileName(described, key::FILE, place.manifest)), place.charset);
    std::vector<unsigned int> changed;
    for (unsigned int r = 0; r < records.size(); ++r)
        if (r >= before.size() || hashOf(records[r]) != before[r])
            changed.push_back(r);
    return changed;
}

// Which of an entry's files differ from those unpack wrote, by what pack
// read of them (`read`: each file's fingerprint): its frames by number, its
// palette, its other file; its settings in the manifest when no file did.
std::string changedParts(const Json& described, const std::map<std::string, std::string>& read,
                         const std::string& text, const PackPlace& place)
{
    const ManifestPlace& where = place.manifest;
    const Json none = Json::object();
    const Json& written = described.contains(key::FILES) && described[key::FILES].is_object() ? described[key::FILES] : none;
    const auto differs = [&](const std::string& name) {
        const auto found = read.find(name);
        return found != read.end() && written.value(name, "") != found->second;
    };
    std::vector<std::string> parts;
    if (described.contains(key::FRAMES)) {
        std::vector<unsigned int> frames;
        const std::vector<std::string> names = fileNames(described, key::FRAMES, where);
        for (unsigned int f = 0; f < names.size(); ++f)
            if (differs(names[f]))
                frames.push_back(f);
        if (!frames.empty())
            parts.push_back(numbered("frame", "frames", frames));
    }
    if (described.contains(key::PALETTE) && differs(fileName(described, key::PALETTE, where)))
        parts.push_back("palette");
    if (described.contains(key::RECORD_HASHES) && differs(fileName(described, key::FILE, where))) {
        const std::vector<unsigned int> records = changedRecords(described, text, place);
        if (!records.empty())
            parts.push_back(numbered("record", "records", records));
    }
    const bool filesAsWritten = std::none_of(read.begin(), read.end(), [&](const auto& file) { return differs(file.first); });
    if (parts.empty() && filesAsWritten)
        parts.push_back("its settings in " + MANIFEST_NAME);
    std::string joined;
    for (const std::string& part : parts)
        joined += "; " + part;
    return joined;
}

// The fingerprints of the files `names`, read once more: pack reads each
// file once to make the entry, and only an entry that changed needs to know
// which of its files did.
std::map<std::string, std::string> fingerprintsOf(const std::set<std::string>& names, const PackPlace& place)
{
    std::vector<std::string> files;
    for (const std::string& name : names)
        files.push_back(place.read(name));
    const std::vector<std::string> hashes = hashOfEach({files.begin(), files.end()});
    std::map<std::string, std::string> fingerprints;
    auto hash = hashes.begin();
    for (const std::string& name : names)
        fingerprints[name] = *hash++;
    return fingerprints;
}

} // namespace

PackPlan planPack(const Json& manifest, const std::string& manifestPath)
{
    const ManifestPlace top{manifestPath};
    PackPlan plan{fileName(manifest, key::ARCHIVE, top), &member(manifest, key::ENTRIES, top), nullptr};
    if (!plan.entries->is_array() || plan.entries->size() > LARGEST_ARCHIVE)
        throw top.problem("'entries' must be a list of at most 509 entries");
    if (manifest.contains(key::CHARSET))
        plan.charset = std::make_shared<const Charset>(manifestCharset(manifest, top));
    return plan;
}

void requireNamedFiles(const std::string& folder, const std::vector<Files::Listed>& held, const Json& entries,
                       const std::string& manifestPath, Warnings& warnings)
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
        if (named.count(file.name) == 0 && !incidental(file.name))
            warnings.warn("'" + inFolder(folder, file.name) + "' is not named in '" + manifestPath +
                          "'; it is left out");
}

PackedEntry packEntry(const PackPlan& plan, unsigned int index, const PackPlace& place, const std::string& target)
{
    const Json& described = (*plan.entries)[index];
    PackedEntry packed;
    requireViewsAsWritten(described, place);
    // The files the entry is made of; a table's text is kept to say which
    // records changed.
    std::set<std::string> read;
    std::string text;
    const std::string textFile = described.contains(key::RECORD_HASHES) ? described.value(key::FILE, "") : "";
    const PackPlace reading{place.manifest,
                            [&](const std::string& name) {
                                std::string bytes = place.read(name);
                                read.insert(name);
                                if (name == textFile)
                                    text = bytes;
                                return bytes;
                            },
                            place.folder, place.rules, place.warnings, place.charset};
    packed.entry = entryFromForm(described, reading);
    Content* entry = packed.entry.get();
    // An entry new to the archive is told as added, not as changed.
    if (described.contains(key::HASH) &&
        described.value(key::HASH, "") != hashOf(std::string_view(entry->data(), entry->size()))) {
        const std::string becomes = shapeOf(entry);
        const std::string change = shapeChange(described.value(key::SHAPE, ""), becomes);
        packed.change = entryName(target, index) + ": " + (change.empty() ? becomes : change) +
                        changedParts(described, fingerprintsOf(read, place), text, place);
    }
    return packed;
}

Arrangement arrangement(const Json& manifest, const PackPlan& plan, const std::vector<std::string>& shapes,
                        const std::string& target)
{
    Arrangement done;
    if (!manifest.contains(key::COUNT) || !manifest[key::COUNT].is_number_unsigned())
        return done; // unpacked before entries knew their places
    const std::size_t count = manifest[key::COUNT].get<std::size_t>();
    std::set<std::size_t> kept;
    for (std::size_t i = 0; i < plan.entries->size(); ++i) {
        const Json& described = (*plan.entries)[i];
        const std::string name = entryName(target, static_cast<unsigned int>(i));
        if (!described.contains(key::INDEX) || !described[key::INDEX].is_number_unsigned()) {
            done.lines.push_back("added " + name + ": " + shapes[i]);
            ++done.added;
            continue;
        }
        const std::size_t was = described[key::INDEX].get<std::size_t>();
        kept.insert(was);
        if (was != i) {
            done.lines.push_back("moved " + name + ": was entry " + std::to_string(was));
            ++done.moved;
        }
    }
    for (std::size_t was = 0; was < count; ++was)
        if (kept.count(was) == 0) {
            done.lines.push_back("removed entry " + std::to_string(was) + " of " + plan.archive + " as unpacked");
            ++done.removed;
        }
    return done;
}

std::string headerNote(const Json& manifest, const std::string& area, std::size_t entries, bool tagged,
                       const std::string& manifestPath)
{
    if (manifest.value(key::HEADER, "") == hashOf(withoutOffsets(area, entries)))
        return "";
    const std::string which = manifest.value(key::TAGGED, tagged) == tagged ? "a fill other than zeros" : "no tag word";
    return "the header area of the archive unpacked into " + manifestPath + " held bytes the writer does not write (" +
           which + "); the entries are as they were";
}

} // namespace lbxtool
