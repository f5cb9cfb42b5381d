#include "tools/Forms.h"
#include "tools/Hash.h"
#include "tools/Inputs.h"
#include "tools/Modding.h"
#include "tools/Paths.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"
#include "tools/Store.h"
#include "tools/Workers.h"

#include <filesystem>
#include <iostream>
#include <set>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

constexpr unsigned int LARGEST_ARCHIVE = 509;
// nlohmann's messages begin with a tag for programs: "[json.exception.parse_error.101] ".
constexpr char TAG_END = ']';

Json readManifest(const std::string& path)
{
    const std::string text = readBytes(path);
    try {
        return Json::parse(text);
    } catch (const Json::exception& e) {
        const std::string what = e.what();
        const std::size_t tag = what.find(TAG_END);
        throw std::runtime_error("'" + path + "' is not valid JSON (" +
                                 (tag == std::string::npos ? what : what.substr(tag + 2)) + ")");
    }
}

// The folder must hold exactly the files the manifest names: a missing one
// would leave an entry out, an unnamed one is an edit that would be lost.
void requireNamedFiles(const std::string& folder, const Json& entries, const std::string& manifestPath)
{
    std::set<std::string> named = {MANIFEST_NAME}, needed;
    for (unsigned int i = 0; i < entries.size(); ++i) {
        for (const std::string& name : formFiles(entries[i], {manifestPath, static_cast<int>(i)})) {
            named.insert(name);
            if (!fs::exists(fs::path(folder) / name))
                throw std::runtime_error("'" + (fs::path(folder) / name).string() + "' is missing (entry " +
                                         std::to_string(i) + " of '" + manifestPath + "')");
        }
        for (const std::string& name : viewFiles(entries[i]))
            named.insert(name);
    }
    for (const fs::directory_entry& file : fs::directory_iterator(folder))
        if (named.count(file.path().filename().string()) == 0)
            throw std::runtime_error("'" + file.path().string() + "' is not named in '" + manifestPath + "'");
}

// The header area of the packed archive against the original's: the
// library's writer always tags and fills with zeros.
void noteHeader(const std::string& target, const Json& manifest, const std::string& manifestPath)
{
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagged = false;
    File::header(target, &error, &offsets, &tagged);
    if (manifest.value(key::HEADER, "") == hashOf(readBytes(target, offsets.front())))
        return;
    const std::string which = manifest.value(key::TAGGED, tagged) == tagged ? "a fill other than zeros" : "no tag word";
    warn("the header area of the archive unpacked into " + manifestPath + " held bytes the writer does not write (" +
         which + "); the entries are as they were");
}

// One entry made from its files, and how it changed.
struct PackedEntry {
    std::unique_ptr<Content> entry;
    std::string change; // empty when it is as it was unpacked
};

} // namespace

int pack(const PackOptions& options)
{
    fs::path normal = fs::path(options.folder).lexically_normal();
    if (normal.filename().empty())
        normal = normal.parent_path(); // "DIR/STEM/" names the folder STEM too
    const std::string folder = normal.string();
    const std::string manifestPath = (fs::path(folder) / MANIFEST_NAME).string();
    if (!fs::is_directory(folder))
        throw std::runtime_error("'" + options.folder + "' is not a folder");
    const Json manifest = readManifest(manifestPath);
    const ManifestPlace top{manifestPath};
    const std::string name = fileName(manifest, key::ARCHIVE, top);
    const Json& entries = member(manifest, key::ENTRIES, top);
    if (!entries.is_array() || entries.size() > LARGEST_ARCHIVE)
        throw top.problem("'entries' must be a list of at most 509 entries");
    requireNamedFiles(folder, entries, manifestPath);

    const std::string target = options.output.empty()
                                   ? (fs::path(folder).parent_path() / name).string()
                                   : options.output;
    const Existing existing = options.force ? Existing::Replace : Existing::Refuse;
    std::vector<std::string> inputs = {manifestPath};
    for (const fs::directory_entry& file : fs::directory_iterator(folder))
        inputs.push_back(file.path().string());
    protectInputs(inputs);
    checkTarget(target, existing);

    File archive;
    std::vector<std::string> changes;
    std::vector<PackedEntry> packed(entries.size());
    const FileReader read = [&folder](const std::string& file) { return readBytes((fs::path(folder) / file).string()); };
    const auto compute = [&](std::size_t i) {
        packed[i].entry = packEntry(entries[i], {{manifestPath, static_cast<int>(i)}, read, folder, options.nearest});
        Content* entry = packed[i].entry.get();
        if (entries[i].value(key::HASH, "") != hashOf(std::string(entry->data(), entry->size()))) {
            const std::string was = entries[i].value(key::SHAPE, ""), becomes = shapeOf(entry);
            packed[i].change = entryName(target, static_cast<unsigned int>(i)) + ": " +
                               (was == becomes ? becomes : "was " + was + ", becomes " + becomes);
        }
    };
    const auto deliver = [&](std::size_t i, const Outcome& outcome) {
        outcome.said.say();
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
        if (!packed[i].change.empty())
            changes.push_back(packed[i].change);
        archive.push_back(packed[i].entry.get());
        packed[i].entry.release();
    };
    inOrder(options.jobs, entries.size(), compute, deliver);
    const fs::path targetFolder = fs::path(target).parent_path();
    if (!targetFolder.empty())
        makeFolder(targetFolder.string());
    writeArchive(target, archive, existing);
    noteHeader(target, manifest, manifestPath);
    std::cout << "packed " << archive.size() << " entries from " << folder << " into " << target << ", "
              << changes.size() << " changed\n";
    for (const std::string& change : changes)
        std::cout << "  changed " << change << '\n';
    return EXIT_DONE;
}

} // namespace lbxtool
