// lbx.unpack and lbx.pack: the modding core's unpack and pack, as `lbx
// unpack` and `lbx pack` run them, one entry after the other.

#include "python/src/Binding.h"

#include "tools/modding/EntryView.h"
#include "tools/modding/Files.h"
#include "tools/modding/Forms.h"
#include "tools/modding/Header.h"
#include "tools/modding/Mod.h"
#include "tools/modding/Names.h"
#include "tools/modding/Pack.h"
#include "tools/modding/Patch.h"
#include "tools/modding/Bps.h"
#include "tools/modding/Diff.h"
#include "tools/modding/Unpack.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <stdexcept>

namespace lbxpython {

namespace {

namespace fs = std::filesystem;
using lbxtool::Json;

// The platform layer's makeFolder, which the module does not link: it
// writes, and the core only writes through its caller's Files.
void makeFolder(const std::string& folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder))
        throw std::runtime_error("could not create folder '" + folder + "'" +
                                 (error ? " (" + error.message() + ")" : ""));
}

// The files that an earlier unpack into `folder` wrote, as its manifest
// lists them; none when there is none.
std::set<std::string> earlierFiles(lbxtool::Files& files, const std::string& folder)
{
    std::set<std::string> names;
    const std::string manifestPath = lbxtool::inFolder(folder, lbxtool::MANIFEST_NAME);
    std::error_code error;
    if (!fs::is_regular_file(manifestPath, error))
        return names;
    try {
        const Json manifest = lbxtool::parseManifest(files.read(manifestPath), manifestPath);
        const Json& entries = lbxtool::member(manifest, lbxtool::key::ENTRIES, {manifestPath});
        for (unsigned int i = 0; i < entries.size(); ++i) {
            for (const std::string& name : lbxtool::formFiles(entries[i], {manifestPath, static_cast<int>(i)}))
                names.insert(name);
            for (const std::string& name : lbxtool::viewFiles(entries[i]))
                names.insert(name);
        }
    } catch (const std::exception&) {
        // not a manifest unpack wrote: its files are not known
    }
    return names;
}

std::shared_ptr<Archive> archiveArgument(const py::object& archive)
{
    if (py::isinstance<Archive>(archive))
        return archive.cast<std::shared_ptr<Archive>>();
    return py::module_::import("zorv2_lbx._core").attr("open")(archive).cast<std::shared_ptr<Archive>>();
}

py::str unpack(const py::object& given, const py::object& where, bool overwrite, const py::object& palettes)
{
    const std::shared_ptr<Archive> archive = archiveArgument(given);
    if (!archive->shell)
        throw std::runtime_error("an archive made in memory has no file to unpack: save() it, and unpack the file");
    const std::string folderGiven = pathArgument(where);
    const std::string lookupGiven = palettes.is_none() ? "" : pathArgument(palettes);
    const std::vector<HandlePtr> entries = archive->entries;
    CollectedWarnings warnings;
    std::string folder;
    {
        py::gil_scoped_release released;
        const std::string& path = archive->path;
        folder = lbxtool::inFolder(folderGiven, lbxtool::StemNames().next(path));
        std::error_code error;
        if (!overwrite && fs::is_directory(folder, error) && !fs::is_empty(folder, error))
            throw std::runtime_error("'" + folder + "' already holds files; overwrite=True writes into it");
        lbxtool::PlainFiles files;
        const std::set<std::string> earlier = earlierFiles(files, folder);
        const lbxtool::ArchiveHeader header = lbxtool::readHeader(path);
        if (!header.valid)
            throw std::runtime_error(header.error);
        const std::string headerArea = files.read(path).substr(0, header.offsets.front());

        std::string lookupFolder = lookupGiven;
        if (!lookupGiven.empty() && fs::is_regular_file(lookupGiven, error))
            lookupFolder = fs::path(lookupGiven).parent_path().string();
        // Copies: unpacking decodes, and Python may decode the same entries meanwhile.
        Lent lent(*archive, entries, true);
        lbxtool::PaletteSource source(lent.file(), {"", lookupFolder, "palettes= names the folder of the game's archives"},
                                      files, warnings);
        std::vector<std::string> inputs = source.sourcePaths();
        inputs.push_back(path);
        Json manifest = lbxtool::archiveManifest(lent.file(), path, headerArea);
        makeFolder(folder);
        std::set<std::string> written;
        const std::string stem = fs::path(folder).filename().string();
        for (unsigned int i = 0; i < lent.file().size(); ++i) {
            lbxtool::UnpackedEntry done = lbxtool::unpackEntry(lent.file(), path, i, stem, source);
            for (const auto& [name, bytes] : done.files) {
                saveBytes(bytes, lbxtool::inFolder(folder, name), true, inputs);
                written.insert(name);
            }
            manifest[lbxtool::key::ENTRIES].push_back(std::move(done.manifest));
            if (!done.kept.empty())
                warnings.warn("kept as bytes: " + done.kept);
        }
        saveBytes(lbxtool::manifestText(manifest), lbxtool::inFolder(folder, lbxtool::MANIFEST_NAME), true, inputs);
        // What an earlier unpack wrote and this one did not would be taken
        // by pack for edits.
        for (const std::string& name : earlier)
            if (written.count(name) == 0) {
                const std::string file = lbxtool::inFolder(folder, name);
                std::error_code removed;
                if (fs::is_regular_file(fs::symlink_status(file, removed)))
                    fs::remove(file, removed);
            }
    }
    warnings.say();
    return py::str(folder);
}

py::dict pack(const py::object& where, const py::object& out, bool overwrite, bool nearest, bool strict, bool grow,
              bool records)
{
    const std::string given = pathArgument(where);
    const std::string output = out.is_none() ? "" : pathArgument(out);
    CollectedWarnings warnings;
    std::string target;
    std::vector<std::string> changes, shapes;
    lbxtool::Arrangement arranged;
    std::size_t count = 0;
    {
        py::gil_scoped_release released;
        const std::string folder = lbxtool::folderName(given);
        const std::string manifestPath = lbxtool::inFolder(folder, lbxtool::MANIFEST_NAME);
        if (!fs::is_directory(folder))
            throw std::runtime_error("'" + given + "' is not a folder");
        if (!fs::exists(manifestPath))
            throw std::runtime_error("'" + given + "' holds no " + lbxtool::MANIFEST_NAME +
                                     "; pack takes a folder that lbx unpack made");
        lbxtool::PlainFiles files;
        const Json manifest = lbxtool::parseManifest(files.read(manifestPath), manifestPath);
        const lbxtool::PackPlan plan = lbxtool::planPack(manifest, manifestPath);
        const std::vector<lbxtool::Files::Listed> held = files.list(folder);
        target = output.empty() ? lbxtool::inFolder(fs::path(folder).parent_path().string(), plan.archive) : output;
        std::vector<std::string> inputs = {manifestPath};
        for (const lbxtool::Files::Listed& file : held)
            inputs.push_back(lbxtool::inFolder(folder, file.name));
        checkTarget(target, overwrite, inputs);
        lbxtool::requireNamedFiles(folder, held, *plan.entries, manifestPath, warnings);

        const lbxtool::FileReader read = [&](const std::string& name) {
            return files.read(lbxtool::inFolder(folder, name));
        };
        std::vector<std::unique_ptr<Content>> made;
        for (unsigned int i = 0; i < plan.entries->size(); ++i) {
            lbxtool::PackedEntry packed = lbxtool::packEntry(
                plan, i, {{manifestPath, static_cast<int>(i)}, read, folder, {nearest, strict, grow, records}, warnings},
                target);
            if (!packed.change.empty())
                changes.push_back(packed.change);
            shapes.push_back(lbxtool::shapeOf(packed.entry.get()));
            made.push_back(std::move(packed.entry));
        }
        arranged = lbxtool::arrangement(manifest, plan, shapes, target);
        const std::string targetFolder = fs::path(target).parent_path().string();
        if (!targetFolder.empty())
            makeFolder(targetFolder);
        std::vector<Content*> entries;
        for (auto& entry : made)
            entries.push_back(entry.get());
        saveArchive(entries, target, overwrite, inputs);
        count = entries.size();
        const lbxtool::ArchiveHeader header = lbxtool::readHeader(target);
        if (header.valid) {
            const std::string note =
                lbxtool::headerNote(manifest, files.read(target).substr(0, header.offsets.front()),
                                    header.offsets.size() - 1, header.tagged, manifestPath);
            if (!note.empty())
                warnings.warn(note);
        }
    }
    warnings.say();
    py::dict result;
    result["archive"] = target;
    result["entries"] = count;
    result["changed"] = changes;
    result["added"] = arranged.added;
    result["moved"] = arranged.moved;
    result["removed"] = arranged.removed;
    result["arrangement"] = arranged.lines;
    return result;
}

py::object jsonOf(const std::string& text)
{
    return py::module_::import("json").attr("loads")(py::str(text));
}

py::object diff(const py::object& base, const py::object& changed)
{
    const std::string basePath = pathArgument(base), changedPath = pathArgument(changed);
    std::string account;
    {
        py::gil_scoped_release released;
        lbxtool::PlainFiles files;
        const lbxtool::ArchiveBytes before = lbxtool::readArchiveBytes(files, basePath);
        const lbxtool::ArchiveBytes after = lbxtool::readArchiveBytes(files, changedPath);
        account = lbxtool::diffJson(lbxtool::diffArchives(*lbxtool::archiveOf(before, basePath),
                                                          *lbxtool::archiveOf(after, changedPath)),
                                    basePath, changedPath);
    }
    return jsonOf(account);
}

py::str makeMod(const py::object& base, const py::object& changed, const py::object& out, bool reversible, bool bps,
                bool overwrite)
{
    const std::string basePath = pathArgument(base), changedPath = pathArgument(changed), target = pathArgument(out);
    if (bps && reversible)
        throw std::runtime_error("a BPS patch cannot be undone: reversible is for mods");
    {
        py::gil_scoped_release released;
        checkTarget(target, overwrite, {basePath, changedPath});
        lbxtool::PlainFiles files;
        const lbxtool::ArchiveBytes before = lbxtool::readArchiveBytes(files, basePath);
        const lbxtool::ArchiveBytes after = lbxtool::readArchiveBytes(files, changedPath);
        const std::string name = fs::path(basePath).filename().string();
        saveBytes(bps ? lbxtool::bpsPatch(before.file(), after.file())
                      : lbxtool::modFile(lbxtool::makeMod(before, after, name, reversible)),
                  target, overwrite, {basePath, changedPath});
    }
    return py::str(target);
}

py::object patch(const py::object& base, const std::vector<py::object>& given, const py::object& out, bool reverse,
                 bool preferLast, bool overwrite)
{
    const std::string basePath = pathArgument(base), target = pathArgument(out);
    std::vector<std::string> paths{basePath};
    for (const py::object& mod : given)
        paths.push_back(pathArgument(mod));
    CollectedWarnings warnings;
    std::string account;
    {
        py::gil_scoped_release released;
        checkTarget(target, overwrite, paths);
        lbxtool::PlainFiles files;
        std::vector<lbxtool::NamedMod> mods;
        for (std::size_t i = 1; i < paths.size(); ++i) {
            lbxtool::Mod mod = lbxtool::readMod(files.read(paths[i]), paths[i]);
            mods.push_back({paths[i], reverse ? lbxtool::undoOf(mod, paths[i]) : std::move(mod)});
        }
        if (reverse)
            std::reverse(mods.begin(), mods.end());
        const lbxtool::ArchiveBytes before = lbxtool::readArchiveBytes(files, basePath);
        const lbxtool::ArchiveBytes after = lbxtool::applyMods(before, basePath, mods, preferLast, warnings);
        saveBytes(after.file(), target, overwrite, paths);
        account = lbxtool::diffJson(lbxtool::diffArchives(*lbxtool::archiveOf(before, basePath),
                                                          *lbxtool::archiveOf(after, target)),
                                    basePath, target);
    }
    warnings.say();
    return jsonOf(account);
}

} // namespace

void bindModding(py::module_& module)
{
    module.def("diff", &diff, py::arg("base"), py::arg("new"),
               R"(What changed between two archive files, as `lbx diff --json` prints it: a dict with base, new and
changes (each with change, index, shape, size, and frames and records where an entry changed).)");
    module.def("make_mod", &makeMod, py::arg("base"), py::arg("new"), py::arg("out"), py::kw_only(),
               py::arg("reversible") = false, py::arg("bps") = false, py::arg("overwrite") = false,
               R"(Writes to `out` the mod that makes `new` of `base`, as `lbx diff BASE NEW -o OUT` does: only what
changed, each entry with the fingerprint of the one it replaces. reversible=True lets it be undone;
bps=True writes a BPS patch of the whole file instead. Returns the path written.)");
    module.def("patch", &patch, py::arg("base"), py::arg("mods"), py::arg("out"), py::kw_only(),
               py::arg("reverse") = false, py::arg("prefer_last") = false, py::arg("overwrite") = false,
               R"(Applies mods (paths, in order) to the archive `base` and writes `out`, as `lbx patch` does: each
entry a mod replaces is checked first, and a mod made for another version, or two mods that change the same
entry, raise lbx.Error with nothing written. reverse=True undoes reversible mods; prefer_last=True lets the
later of two conflicting mods win, with a warning. Returns what changed, as diff() does.)");
    module.def("unpack", &unpack, py::arg("archive"), py::arg("folder"), py::kw_only(), py::arg("overwrite") = false,
               py::arg("palettes") = py::none(),
               R"(Takes an archive (an Archive read from a file, or a path) apart into FOLDER/STEM/, as `lbx unpack -o FOLDER` does.

Frames become indexed PNGs, palettes JASC-PAL files, text tables .txt files,
and archive.json holds what the files cannot; lbx.pack() puts them together
again byte for byte. A FOLDER/STEM/ that holds files is refused unless
overwrite=True, which replaces the files an earlier unpack wrote and removes
those it no longer writes. `palettes` names the folder of the game's
archives (or an archive in it) when the archive is not among them. Returns
the folder written. Warnings come as lbx.LbxWarning.)");
    module.def("pack", &pack, py::arg("folder"), py::arg("out") = py::none(), py::kw_only(),
               py::arg("overwrite") = false, py::arg("nearest") = false, py::arg("strict") = false,
               py::arg("grow") = false, py::arg("records") = false,
               R"(Builds the archive again from a folder that unpack made, as `lbx pack` does, and writes it to `out`.

`out` defaults to the folder's parent and the archive's own name. An
existing file is refused unless overwrite=True. nearest, strict, grow and
records are pack's --nearest, --strict, --grow and --records. Returns a dict:
archive (the path written), entries, changed (a line per changed entry),
added, moved, removed, and arrangement (a line for each).)");
}

} // namespace lbxpython
