// zorv2_lbx._core: the library and the modding core for Python. The package
// zorv2_lbx re-exports it and adds what is plain Python (to_pil).

#include "python/src/Binding.h"

#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Shapes.h"

#include <cstring>
#include <new>
#include <stdexcept>

namespace lbxpython {

namespace {

// lbx.Error and lbx.LbxWarning, made when the module is imported.
PyObject* errorClass = nullptr;
PyObject* warningClass = nullptr;

} // namespace

void CollectedWarnings::warn(const std::string& message)
{
    const std::lock_guard<std::mutex> inTurn(turn);
    messages.push_back(message);
}

void CollectedWarnings::say()
{
    std::vector<std::string> said;
    {
        const std::lock_guard<std::mutex> inTurn(turn);
        said.swap(messages);
    }
    for (const std::string& message : said)
        if (PyErr_WarnEx(warningClass, message.c_str(), 1) != 0)
            throw py::error_already_set();
}

std::vector<unsigned char> paletteArgument(const py::handle& palette, const char* what)
{
    py::array_t<unsigned char, py::array::c_style | py::array::forcecast> colours;
    try {
        colours = py::array_t<unsigned char, py::array::c_style | py::array::forcecast>::ensure(palette);
    } catch (const py::error_already_set&) {
        colours = {};
    }
    if (!colours || colours.ndim() != 2 || colours.shape(0) != lbxtool::COLORS ||
        colours.shape(1) != lbxtool::PIXEL_SIZE)
        throw std::runtime_error(std::string(what) + " must be an array of 256 colours, shape (256, 4), uint8");
    return std::vector<unsigned char>(colours.data(), colours.data() + lbxtool::PALETTE_BYTES);
}

py::array_t<unsigned char> paletteArray(const unsigned char* palette)
{
    py::array_t<unsigned char> colours({py::ssize_t(lbxtool::COLORS), py::ssize_t(lbxtool::PIXEL_SIZE)});
    std::memcpy(colours.mutable_data(), palette, lbxtool::PALETTE_BYTES);
    return colours;
}

std::string pathArgument(const py::handle& path)
{
    const py::object text = py::module_::import("os").attr("fspath")(path);
    if (!py::isinstance<py::str>(text))
        throw py::type_error("a path is a str or an os.PathLike of str");
    return text.cast<std::string>();
}

} // namespace lbxpython

PYBIND11_MODULE(_core, module)
{
    using namespace lbxpython;
    module.doc() = "LBX archives of the game tesk: the zorv2 library and its modding core";

    // One exception class for every failure of the library or the core, its
    // message unchanged. A ValueError: the input was bad.
    // The classes live as long as the process: the module keeps a reference
    // too, and nothing frees them at exit.
    errorClass = PyErr_NewExceptionWithDoc(
        "zorv2_lbx.Error", "A failure of the library or the modding core; its message is theirs, unchanged.",
        PyExc_ValueError, nullptr);
    warningClass = PyErr_NewExceptionWithDoc(
        "zorv2_lbx.LbxWarning", "What the modding core says a user should know, as the lbx tool says it on stderr.",
        PyExc_UserWarning, nullptr);
    if (errorClass == nullptr || warningClass == nullptr)
        throw py::error_already_set();
    module.attr("Error") = py::handle(errorClass);
    module.attr("LbxWarning") = py::handle(warningClass);
    py::register_exception_translator([](std::exception_ptr failure) {
        try {
            if (failure)
                std::rethrow_exception(failure);
        } catch (const py::builtin_exception&) {
            throw; // IndexError, TypeError and the like, which pybind11 translates
        } catch (const py::error_already_set&) {
            throw;
        } catch (const std::bad_alloc&) {
            throw; // MemoryError
        } catch (const std::exception& e) {
            PyErr_SetString(errorClass, e.what());
        }
    });

    module.attr("CLEAR") = lbxtool::CLEAR;
    bindEntries(module);
    bindArchive(module);
    bindModding(module);
}
