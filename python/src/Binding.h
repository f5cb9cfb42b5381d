#ifndef ZORV2_LBX_PYTHON_BINDING_H
#define ZORV2_LBX_PYTHON_BINDING_H

#include "archive/File.h"
#include "entry/Content.h"
#include "tools/modding/Warnings.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

// What the parts of the Python module share.
//
// Threads: decoding and encoding run with the GIL released. Each entry has
// a lock of its own for what decodes it; a thread takes it only after it
// has released the GIL, and calls no Python while it holds it, so that no
// thread holds one and waits for the other. An archive's list of entries
// changes only under the GIL; where several locks are taken, an archive's
// shell comes first, then entries in the order of their addresses.
namespace lbxpython {

namespace py = pybind11;
using zorv2::Lbx::Content;
using zorv2::Lbx::File;

// A copy of an entry that decodes its frames in one palette, for as long as
// any frame handed out lives: frames are numpy arrays over its cache, not
// copies of it, and another palette gets another decoder. (A graphic keeps
// the pointer it is given, not the colours: the decoder keeps them.)
struct Decoder {
    std::vector<unsigned char> palette;
    std::shared_ptr<Content> content;
};

// One entry, shared by the archives that hold it and the Python objects over it.
struct Handle {
    explicit Handle(std::unique_ptr<Content> content) : content(std::move(content)) {}
    std::shared_ptr<Content> content;
    std::mutex turn;
    std::shared_ptr<Decoder> decoder; // the last one made, reused for its palette
    // Whether `content` decoded already: the first decoder decodes it
    // itself, the others copies, so that no frame handed out changes.
    bool decoded = false;
};
using HandlePtr = std::shared_ptr<Handle>;

// The Python object of an entry: lbx.Entry, or the class of its kind.
struct Entry {
    HandlePtr handle;
};
struct GraphicEntry : Entry {};
struct CursorEntry : Entry {};
struct TextEntry : Entry {};
struct FontEntry : Entry {};

// The object of the right class for `handle`'s kind.
py::object wrap(const HandlePtr& handle);
HandlePtr newHandle(Content* content);

// A 256-colour palette array from Python: anything numpy reads as (256, 4)
// uint8 values; throws lbx.Error otherwise.
std::vector<unsigned char> paletteArgument(const py::handle& palette, const char* what = "palette");
// A palette array as a new (256, 4) uint8 numpy array.
py::array_t<unsigned char> paletteArray(const unsigned char* palette);

// Warnings the core says while the GIL is released, said as Python warnings
// (lbx.LbxWarning) once it is held again.
class CollectedWarnings : public lbxtool::Warnings {
public:
    void warn(const std::string& message) override;
    // Call with the GIL held; throws if a warnings filter made one an error.
    void say();

private:
    std::mutex turn;
    std::vector<std::string> messages;
};

// An archive in memory.
struct Archive {
    std::string path;   // where it was read from; empty for a new one
    bool tagged = true; // its tag word, as read
    std::vector<HandlePtr> entries;
    // The File it was read from, its entries taken out: a File that names
    // the archive's path, which the modding core needs to find palettes.
    std::unique_ptr<File> shell;
    std::mutex shellTurn;
};

// Lends `archive`'s entries, or copies of them, to its shell File while it
// stands; the entries are kept alive meanwhile. Take it with the GIL
// released: it holds the shell's lock.
class Lent {
public:
    Lent(Archive& archive, const std::vector<HandlePtr>& entries, bool copies);
    ~Lent();
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    File& file() { return *archive.shell; }

private:
    Archive& archive;
    std::unique_lock<std::mutex> lock;
    std::vector<HandlePtr> kept;
    std::vector<std::unique_ptr<Content>> copies;
};

// The parts of the module.
void bindEntries(py::module_& module);
void bindArchive(py::module_& module);
void bindModding(py::module_& module);

// Writes `archive` (its entries `entries`) to `target` as a file of its own
// beside it renamed over the target: refused onto an existing file unless
// `overwrite`, and onto any of `inputs` at all.
void saveArchive(const std::vector<Content*>& entries, const std::string& target, bool overwrite,
                 const std::vector<std::string>& inputs);
// Writes `bytes` to `target` the same way.
void saveBytes(const std::string& bytes, const std::string& target, bool overwrite,
               const std::vector<std::string>& inputs);
// Throws what saving to `target` would refuse, writing nothing.
void checkTarget(const std::string& target, bool overwrite, const std::vector<std::string>& inputs);

// A path from a str or an os.PathLike.
std::string pathArgument(const py::handle& path);

} // namespace lbxpython

#endif
