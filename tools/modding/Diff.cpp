#include "tools/modding/Diff.h"

#include "images/Cursor.h"
#include "images/Graphic.h"
#include "kinds/Text.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Hash.h"
#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Manifest.h"
#include "tools/modding/Names.h"
#include "tools/modding/TextEscape.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace lbxtool {

namespace {

std::string bytesOf(Content* entry)
{
    return std::string(entry->data(), entry->size());
}

// The palette indices each frame of an entry of pictures stores; none for
// other kinds, or for frames that do not decode, which then show in the
// size alone.
std::vector<Indices> framesOf(Content* entry)
{
    try {
        if (entry->type() == Content::GRAPHIC)
            return storedIndices(entry->graphic());
        if (entry->type() == Content::CURSOR)
            return storedIndices(entry->cursor());
    } catch (const std::exception&) {
    }
    return {};
}

std::vector<unsigned int> changedFrames(Content* before, Content* after)
{
    const std::vector<Indices> was = framesOf(before), becomes = framesOf(after);
    std::vector<unsigned int> changed;
    if (was.empty() && becomes.empty())
        return changed;
    for (std::size_t f = 0; f < std::max(was.size(), becomes.size()); ++f)
        if (f >= was.size() || f >= becomes.size() || was[f] != becomes[f])
            changed.push_back(static_cast<unsigned int>(f));
    return changed;
}

std::vector<RecordChange> changedRecords(Content* before, Content* after)
{
    std::vector<RecordChange> changed;
    if (before->type() != Content::TEXT || after->type() != Content::TEXT)
        return changed;
    Content::Text* was = before->text();
    Content::Text* becomes = after->text();
    for (unsigned int r = 0; r < std::max(was->size(), becomes->size()); ++r) {
        RecordChange record;
        record.number = r;
        record.before = r < was->size();
        record.after = r < becomes->size();
        record.was = record.before ? was->get(r) : "";
        record.becomes = record.after ? becomes->get(r) : "";
        if (!record.before || !record.after || record.was != record.becomes)
            changed.push_back(record);
    }
    return changed;
}

EntryChange change(EntryChange::Kind kind, unsigned int index, Content* entry)
{
    EntryChange found;
    found.kind = kind;
    found.index = index;
    found.shape = shapeOf(entry);
    found.sizeAfter = entry->size();
    return found;
}

EntryChange changed(unsigned int index, Content* before, Content* after)
{
    EntryChange found = change(EntryChange::CHANGED, index, after);
    found.shapeBefore = shapeOf(before);
    found.shapeChange = shapeChange(found.shapeBefore, found.shape);
    found.sizeBefore = before->size();
    found.frames = changedFrames(before, after);
    found.records = changedRecords(before, after);
    return found;
}

// The base's entries by their fingerprint, to find an entry that moved: one
// whose bytes left their place in the base. An entry that stays where it was
// and is also copied elsewhere is no move; the copy is a change.
class BaseEntries {
public:
    BaseEntries(File& base, File& changed) : base(base), changed(changed)
    {
        for (unsigned int j = 0; j < base.size(); ++j)
            byHash[hashOf(bytesOf(base[j]))].push_back(j);
    }

    // A place of the base, other than `index`, that held exactly `bytes` and
    // holds something else now.
    bool find(const std::string& bytes, unsigned int index, unsigned int& at)
    {
        const auto found = byHash.find(hashOf(bytes));
        if (found == byHash.end())
            return false;
        for (const unsigned int j : found->second)
            if (j != index && bytesOf(base[j]) == bytes && !(j < changed.size() && bytesOf(changed[j]) == bytes)) {
                at = j;
                return true;
            }
        return false;
    }

private:
    File& base;
    File& changed;
    std::map<std::string, std::vector<unsigned int>> byHash;
};

std::string numbers(const std::vector<unsigned int>& all)
{
    std::string text;
    for (const unsigned int number : all)
        text += (text.empty() ? "" : ", ") + std::to_string(number);
    return text;
}

std::string quoted(bool holds, const std::string& record)
{
    return holds ? "\"" + escapeText(record) + "\"" : "(none)";
}

std::string entryLine(const EntryChange& entry, const std::string& basePath, const std::string& changedPath)
{
    const std::string name = entryName(changedPath, entry.index);
    switch (entry.kind) {
    case EntryChange::ADDED: return "added " + name + ": " + entry.shape;
    case EntryChange::MOVED: return "moved " + name + ": was entry " + std::to_string(entry.was);
    case EntryChange::REMOVED: return "removed " + entryName(basePath, entry.index) + ": " + entry.shape;
    case EntryChange::CHANGED: break;
    }
    std::string line = "changed " + name + ": " + (entry.shapeChange.empty() ? entry.shape : entry.shapeChange);
    if (entry.sizeBefore != entry.sizeAfter)
        line += ", " + std::to_string(entry.sizeBefore) + " -> " + std::to_string(entry.sizeAfter) + " bytes";
    if (!entry.frames.empty())
        line += std::string(entry.frames.size() == 1 ? "; frame " : "; frames ") + numbers(entry.frames);
    for (const RecordChange& record : entry.records)
        line += "\n    record " + std::to_string(record.number) + ": " + quoted(record.before, record.was) + " -> " +
                quoted(record.after, record.becomes);
    return line;
}

const char* kindWord(EntryChange::Kind kind)
{
    switch (kind) {
    case EntryChange::ADDED: return "added";
    case EntryChange::REMOVED: return "removed";
    case EntryChange::MOVED: return "moved";
    case EntryChange::CHANGED: break;
    }
    return "changed";
}

Json recordJson(bool holds, const std::string& record)
{
    return holds ? Json(escapeText(record)) : Json();
}

Json changeJson(const EntryChange& entry)
{
    Json json{{"change", kindWord(entry.kind)}, {"index", entry.index}};
    if (entry.kind == EntryChange::MOVED)
        json["from"] = entry.was;
    json["shape"] = entry.shape;
    if (entry.kind == EntryChange::CHANGED) {
        json["shapeBefore"] = entry.shapeBefore;
        json["sizeBefore"] = entry.sizeBefore;
    }
    json["size"] = entry.sizeAfter;
    if (entry.kind != EntryChange::CHANGED)
        return json;
    json["frames"] = entry.frames;
    Json records = Json::array();
    for (const RecordChange& record : entry.records)
        records.push_back(Json{{"number", record.number},
                               {"was", recordJson(record.before, record.was)},
                               {"becomes", recordJson(record.after, record.becomes)}});
    json["records"] = records;
    return json;
}

} // namespace

std::vector<EntryChange> diffArchives(File& base, File& changedArchive)
{
    BaseEntries moved(base, changedArchive);
    std::set<unsigned int> placed;
    std::vector<EntryChange> changes;
    for (unsigned int i = 0; i < changedArchive.size(); ++i) {
        Content* entry = changedArchive[i];
        const std::string bytes = bytesOf(entry);
        if (i < base.size() && bytesOf(base[i]) == bytes) {
            placed.insert(i);
            continue;
        }
        unsigned int was = 0;
        if (moved.find(bytes, i, was)) {
            changes.push_back(change(EntryChange::MOVED, i, entry));
            changes.back().was = was;
            placed.insert(was);
        } else if (i < base.size()) {
            changes.push_back(changed(i, base[i], entry));
            placed.insert(i);
        } else {
            changes.push_back(change(EntryChange::ADDED, i, entry));
        }
    }
    for (unsigned int j = 0; j < base.size(); ++j)
        if (placed.count(j) == 0)
            changes.push_back(change(EntryChange::REMOVED, j, base[j]));
    return changes;
}

std::string diffJson(const std::vector<EntryChange>& changes, const std::string& basePath,
                     const std::string& changedPath)
{
    Json list = Json::array();
    for (const EntryChange& entry : changes)
        list.push_back(changeJson(entry));
    return manifestText(Json{{"base", basePath}, {"new", changedPath}, {"changes", list}});
}

std::string diffText(const std::vector<EntryChange>& changes, const std::string& basePath,
                     const std::string& changedPath)
{
    std::map<EntryChange::Kind, unsigned int> counts;
    for (const EntryChange& entry : changes)
        ++counts[entry.kind];
    std::ostringstream text;
    text << basePath << " -> " << changedPath << ": ";
    if (changes.empty())
        text << "no difference";
    const char* separator = "";
    for (const auto& [kind, word] : {std::pair<EntryChange::Kind, const char*>{EntryChange::CHANGED, " changed"},
                                     {EntryChange::ADDED, " added"},
                                     {EntryChange::MOVED, " moved"},
                                     {EntryChange::REMOVED, " removed"}})
        if (counts[kind] > 0) {
            text << separator << counts[kind] << word;
            separator = ", ";
        }
    text << '\n';
    for (const EntryChange& entry : changes)
        text << "  " << entryLine(entry, basePath, changedPath) << '\n';
    return text.str();
}

} // namespace lbxtool
