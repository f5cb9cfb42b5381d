// lbx.Archive and lbx.open: an archive's entries as a Python sequence, and
// saving it.

#include "python/src/Binding.h"

#include "images/Cursor.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "tools/modding/Files.h"
#include "tools/modding/PaletteSource.h"
#include "tools/modding/Shapes.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace lbxpython {

Lent::Lent(Archive& archive, const std::vector<HandlePtr>& entries, bool copy)
    : archive(archive), lock(archive.shellTurn), kept(entries)
{
    File& shell = *archive.shell;
    if (copy) {
        for (const HandlePtr& entry : kept) {
            const std::lock_guard<std::mutex> inTurn(entry->turn);
            copies.push_back(std::make_unique<Content>(*entry->content));
        }
        for (auto& entry : copies)
            shell.push_back(entry.get());
    } else {
        for (const HandlePtr& entry : kept)
            shell.push_back(entry->content.get());
    }
}

Lent::~Lent()
{
    // The shell owns nothing: its slots are emptied before it lets them go.
    File& shell = *archive.shell;
    for (unsigned int i = 0; i < shell.size(); ++i)
        shell.at(i) = nullptr;
    shell.clear();
}

namespace {

namespace fs = std::filesystem;

unsigned int position(py::ssize_t index, std::size_t count)
{
    const py::ssize_t size = static_cast<py::ssize_t>(count);
    if (index < 0)
        index += size;
    if (index < 0 || index >= size)
        throw py::index_error("archive index out of range");
    return static_cast<unsigned int>(index);
}

std::shared_ptr<Archive> openArchive(const py::object& where)
{
    const std::string path = pathArgument(where);
    auto archive = std::make_shared<Archive>();
    archive->path = path;
    {
        py::gil_scoped_release released;
        lbxtool::requireRegularFile(path);
        archive->shell = std::make_unique<File>(path);
        File& file = *archive->shell;
        archive->tagged = file.tagged();
        for (unsigned int i = 0; i < file.size(); ++i) {
            Content*& slot = file.at(i);
            archive->entries.push_back(newHandle(slot));
            slot = nullptr;
        }
        file.clear();
    }
    return archive;
}

HandlePtr handleOf(const py::object& entry)
{
    return entry.cast<Entry&>().handle;
}

// The colours `lbx export` shows graphic `index` in.
py::array_t<unsigned char> paletteOf(Archive& archive, py::ssize_t at, const py::object& palettes)
{
    const unsigned int index = position(at, archive.entries.size());
    const std::vector<HandlePtr> entries = archive.entries;
    const std::string folder = palettes.is_none() ? "" : pathArgument(palettes);
    CollectedWarnings warnings;
    lbxtool::PaletteArray colours;
    {
        py::gil_scoped_release released;
        Content* entry = entries[index]->content.get();
        if (entry->type() == Content::CURSOR) {
            const std::lock_guard<std::mutex> inTurn(entries[index]->turn);
            colours = lbxtool::copyOfPalette(entry->cursor()->palette());
        } else if (!archive.shell) {
            // An archive made in memory has no place among the game's archives.
            colours.reset(Content::Palette::empty());
            if (entry->graphic()->hasPalette())
                entry->graphic()->palette(colours.get());
        } else {
            // The shell first, then every entry, in a fixed order, so that no
            // palette source is decoded meanwhile.
            Lent lent(archive, entries, false);
            std::vector<Handle*> order;
            for (const HandlePtr& handle : entries)
                order.push_back(handle.get());
            std::sort(order.begin(), order.end());
            order.erase(std::unique(order.begin(), order.end()), order.end());
            std::vector<std::unique_lock<std::mutex>> locks;
            for (Handle* handle : order)
                locks.emplace_back(handle->turn);
            lbxtool::PlainFiles files;
            std::string lookupFolder = folder;
            std::error_code error;
            if (!folder.empty() && fs::is_regular_file(folder, error))
                lookupFolder = fs::path(folder).parent_path().string();
            lbxtool::PaletteSource source(lent.file(), {"", lookupFolder, "palettes= names the folder of the game's archives"},
                                          files, warnings);
            colours = source.forGraphic(index);
        }
    }
    warnings.say();
    return paletteArray(colours.get());
}

void save(Archive& archive, const py::object& where, bool overwrite)
{
    const std::string target = pathArgument(where);
    const std::vector<HandlePtr> kept = archive.entries;
    std::vector<Content*> entries;
    for (const HandlePtr& entry : kept)
        entries.push_back(entry->content.get());
    std::vector<std::string> inputs;
    if (!archive.path.empty())
        inputs.push_back(archive.path);
    py::gil_scoped_release released;
    saveArchive(entries, target, overwrite, inputs);
}

} // namespace

void bindArchive(py::module_& module)
{
    py::class_<Archive, std::shared_ptr<Archive>>(module, "Archive", R"(An LBX archive in memory: a sequence of entries.

lbx.open(path) reads one; Archive() is a new, empty one. len(), iteration and
indexing (negative indices count from the end) give the entries; append()
and replace() change the list, save() writes it.)")
        .def(py::init([](const py::object& entries) {
                 auto archive = std::make_shared<Archive>();
                 if (!entries.is_none())
                     for (const py::handle entry : entries)
                         archive->entries.push_back(handleOf(py::reinterpret_borrow<py::object>(entry)));
                 return archive;
             }),
             py::arg("entries") = py::none(), "A new archive of `entries` (none by default).")
        .def_property_readonly(
            "path", [](Archive& a) -> py::object { return a.path.empty() ? py::object(py::none()) : py::str(a.path); },
            "The file it was read from; None for an archive made in memory.")
        .def_property_readonly("tagged", [](Archive& a) { return a.tagged; },
                               "Whether the file read held the tag word (save() always writes it).")
        .def("__len__", [](Archive& a) { return a.entries.size(); })
        .def("__getitem__",
             [](Archive& a, py::ssize_t index) { return wrap(a.entries[position(index, a.entries.size())]); },
             py::arg("index"))
        .def("__getitem__",
             [](Archive& a, const py::slice& slice) {
                 py::ssize_t start = 0, stop = 0, step = 0, length = 0;
                 if (!slice.compute(static_cast<py::ssize_t>(a.entries.size()), &start, &stop, &step, &length))
                     throw py::error_already_set();
                 py::list taken;
                 for (py::ssize_t i = 0; i < length; ++i, start += step)
                     taken.append(wrap(a.entries[static_cast<std::size_t>(start)]));
                 return taken;
             })
        .def("__iter__",
             [](Archive& a) {
                 py::list all;
                 for (const HandlePtr& entry : a.entries)
                     all.append(wrap(entry));
                 return py::iter(all);
             })
        .def(
            "append", [](Archive& a, const py::object& entry) { a.entries.push_back(handleOf(entry)); },
            py::arg("entry"), "Puts `entry` behind the others.")
        .def(
            "replace",
            [](Archive& a, py::ssize_t index, const py::object& entry) {
                a.entries[position(index, a.entries.size())] = handleOf(entry);
            },
            py::arg("index"), py::arg("entry"), "Puts `entry` in place of entry `index`.")
        .def("save", &save, py::arg("path"), py::arg("overwrite") = false,
             R"(Writes the archive to `path`.

As the lbx tool writes: into a temporary file beside the target (its name
with .lbx-part behind), read back, then renamed over the target, so that a
failure leaves the target as it was. An existing file is refused unless
overwrite=True; the archive's own file (path) is refused always.)")
        .def("palette", &paletteOf, py::arg("index"), py::arg("palettes") = py::none(),
             R"(The colours graphic `index` shows in, (256, 4) uint8, found as `lbx export` finds them.

The archive's catalogue row names a palette in FONTS.LBX and one in an
archive of the game, read from the archive's folder (or `palettes`, a folder
or an archive in it); the graphic's own block is painted over them. A
cursor gives its own palette. What is not found is said as an LbxWarning.)")
        .def("__repr__", [](Archive& a) {
            return "<zorv2_lbx.Archive " + (a.path.empty() ? std::string("(in memory)") : "'" + a.path + "'") + ", " +
                   std::to_string(a.entries.size()) + (a.entries.size() == 1 ? " entry>" : " entries>");
        });

    module.def("open", &openArchive, py::arg("path"),
               "Reads the archive at `path`: validates it and classifies every entry. Raises lbx.Error with the "
               "library's message when it is no archive.");
}

} // namespace lbxpython
