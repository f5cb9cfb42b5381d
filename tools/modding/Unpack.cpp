#include "tools/modding/Unpack.h"

#include "tools/modding/EntryView.h"
#include "tools/modding/Forms.h"
#include "tools/modding/Hash.h"
#include "tools/modding/Header.h"
#include "tools/modding/Names.h"

#include <filesystem>

namespace lbxtool {

UnpackedEntry unpackEntry(Content& entry, const std::string& path, unsigned int index, const std::string& stem,
                          PaletteSource& palettes, const Charset* charset)
{
    EntryForm form = editableForm(&entry, {stem, index, palettes, charset});
    UnpackedEntry done;
    form.manifest[key::SHAPE] = shapeOf(&entry);
    // The entry and its files hashed together, which is faster than apart.
    std::vector<std::string_view> hashed{std::string_view(entry.data(), entry.size())};
    for (auto* made : {&form.files, &form.views})
        for (const auto& [name, bytes] : *made)
            hashed.push_back(bytes);
    const std::vector<std::string> hashes = hashOfEach(hashed);
    form.manifest[key::HASH] = hashes.front();
    form.manifest[key::INDEX] = index;
    std::size_t next = 1;
    for (auto* made : {&form.files, &form.views})
        for (auto& [name, bytes] : *made) {
            form.manifest[key::FILES][name] = hashes[next++];
            done.files[name] = std::move(bytes);
        }
    if (form.manifest.contains(key::WHY))
        done.kept = entryName(path, index) + " (" + entry.typeStr() + "): " + form.manifest[key::WHY].get<std::string>();
    done.manifest = std::move(form.manifest);
    return done;
}

UnpackedEntry unpackEntry(File& archive, const std::string& path, unsigned int index, const std::string& stem,
                          PaletteSource& palettes, const Charset* charset)
{
    // The archive keeps only its bytes: the frames go with the copy once
    // the entry's files are made.
    Content copy(*archive.at(index));
    return unpackEntry(copy, path, index, stem, palettes, charset);
}

Json archiveManifest(bool tagged, unsigned int count, const std::string& path, const std::string& headerArea,
                     const Charset* charset)
{
    Json manifest;
    manifest[key::ARCHIVE] = std::filesystem::path(path).filename().string();
    manifest[key::TAGGED] = tagged;
    manifest[key::HEADER] = hashOf(withoutOffsets(headerArea, count));
    manifest[key::COUNT] = count;
    if (charset != nullptr) {
        manifest[key::CHARSET] = charset->name();
        if (!charset->builtIn())
            manifest[key::CHARSET_TABLE] = charset->table();
    }
    manifest[key::ENTRIES] = Json::array();
    return manifest;
}

Json archiveManifest(File& archive, const std::string& path, const std::string& headerArea, const Charset* charset)
{
    return archiveManifest(archive.tagged(), archive.size(), path, headerArea, charset);
}

} // namespace lbxtool
