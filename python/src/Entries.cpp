// The entries: lbx.Entry and the classes of the kinds that hold more than
// bytes, with what each decodes and creates.

#include "python/src/Binding.h"

#include "images/Cursor.h"
#include "images/Font.h"
#include "images/Graphic.h"
#include "images/Palette.h"
#include "kinds/Empty.h"
#include "kinds/Text.h"
#include "tools/modding/Charset.h"
#include "tools/modding/EntryView.h"
#include "tools/modding/Files.h"
#include "tools/modding/GraphicFlags.h"
#include "tools/modding/IndexedFrames.h"
#include "tools/modding/Shapes.h"
#include "tools/modding/Verify.h"

#include <pybind11/stl.h>

#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>

namespace lbxpython {

namespace {

lbxtool::Charset charsetArgument(const py::object& charset)
{
    lbxtool::PlainFiles files;
    return lbxtool::charsetNamed(charset.is_none() ? "" : pathArgument(charset),
                                 [&files](const std::string& path) { return files.read(path); });
}

} // namespace

namespace {

using Bytes = py::array_t<unsigned char, py::array::c_style | py::array::forcecast>;
using Palette = Content::Palette;
using lbxtool::PALETTE_BYTES;
using lbxtool::PIXEL_SIZE;

// Runs `work` on the entry with the GIL released and the entry's lock held.
template <typename Work>
auto locked(Handle& handle, Work work)
{
    py::gil_scoped_release released;
    const std::lock_guard<std::mutex> inTurn(handle.turn);
    return work();
}

// An index into `count` things, negative ones from the end as Python counts.
unsigned int position(py::ssize_t index, std::size_t count, const char* what)
{
    const py::ssize_t size = static_cast<py::ssize_t>(count);
    if (index < 0)
        index += size;
    if (index < 0 || index >= size)
        throw py::index_error(std::string(what) + " index out of range");
    return static_cast<unsigned int>(index);
}

// The decoder of `handle` for `palette`: the last one when its palette is
// the same, whose frames are decoded already. Call with the entry's lock held.
std::shared_ptr<Decoder> decoderFor(Handle& handle, const std::vector<unsigned char>& palette)
{
    if (handle.decoder && handle.decoder->palette == palette)
        return handle.decoder;
    auto decoder = std::make_shared<Decoder>();
    decoder->palette = palette;
    decoder->content = handle.decoded ? std::make_shared<Content>(*handle.content) : handle.content;
    handle.decoded = true;
    if (decoder->content->type() == Content::CURSOR)
        decoder->content->cursor()->setPalette(decoder->palette.data());
    else
        decoder->content->graphic()->setPalette(decoder->palette.data());
    handle.decoder = decoder;
    return decoder;
}

// The palette frames are decoded in: the one given, or what the entry holds
// itself, over opaque black.
std::vector<unsigned char> framePalette(const py::object& palette, Handle& handle)
{
    if (!palette.is_none())
        return paletteArgument(palette);
    return locked(handle, [&] {
        std::unique_ptr<unsigned char[]> colours(Palette::empty());
        Content* entry = handle.content.get();
        if (entry->type() == Content::CURSOR) {
            const unsigned char* own = entry->cursor()->palette();
            std::copy(own, own + PALETTE_BYTES, colours.get());
        } else if (entry->type() == Content::GRAPHIC && entry->graphic()->hasPalette()) {
            entry->graphic()->palette(colours.get());
        }
        return std::vector<unsigned char>(colours.get(), colours.get() + PALETTE_BYTES);
    });
}

// Pictures of `height` x `width` pixels in `decoder`'s cache, as read-only
// (height, width, 4) arrays that keep the decoder alive.
py::list pictures(const std::shared_ptr<Decoder>& decoder, const std::vector<const unsigned char*>& sources,
                  std::size_t height, std::size_t width)
{
    py::list result;
    const std::vector<py::ssize_t> shape{py::ssize_t(height), py::ssize_t(width), py::ssize_t(PIXEL_SIZE)};
    const std::vector<py::ssize_t> strides{py::ssize_t(width * PIXEL_SIZE), py::ssize_t(PIXEL_SIZE), 1};
    const py::capsule keeper(new std::shared_ptr<Decoder>(decoder),
                             [](void* kept) { delete static_cast<std::shared_ptr<Decoder>*>(kept); });
    for (const unsigned char* source : sources) {
        py::array_t<unsigned char> array(shape, strides, source, keeper);
        py::detail::array_proxy(array.ptr())->flags &= ~py::detail::npy_api::NPY_ARRAY_WRITEABLE_;
        result.append(std::move(array));
    }
    return result;
}

// A graphic's frames `first` to `last` - 1 in `palette`.
py::list graphicFrames(Handle& handle, const py::object& palette, unsigned int first, unsigned int last)
{
    const std::vector<unsigned char> colours = framePalette(palette, handle);
    Content::Graphic* source = handle.content->graphic();
    std::shared_ptr<Decoder> decoder;
    std::vector<const unsigned char*> decoded;
    {
        py::gil_scoped_release released;
        const std::lock_guard<std::mutex> inTurn(handle.turn);
        decoder = decoderFor(handle, colours);
        Content::Graphic* graphic = decoder->content->graphic();
        for (unsigned int f = first; f < last; ++f)
            decoded.push_back(graphic->frame(f));
    }
    return pictures(decoder, decoded, source->height(), source->width());
}

// The indices a frame of `pixels` pixels stores, decoded with the fake
// palette: (height, width) uint16, lbx.CLEAR where nothing is painted.
py::array_t<unsigned short> indexArray(const lbxtool::Indices& indices, std::size_t height, std::size_t width)
{
    py::array_t<unsigned short> array({py::ssize_t(height), py::ssize_t(width)});
    std::memcpy(array.mutable_data(), indices.data(), indices.size() * sizeof(unsigned short));
    return array;
}

std::vector<unsigned char> fakePalette()
{
    std::unique_ptr<unsigned char[]> fake(Palette::fake());
    return std::vector<unsigned char>(fake.get(), fake.get() + PALETTE_BYTES);
}

unsigned short flagsArgument(const py::object& flags)
{
    if (py::isinstance<py::str>(flags))
        return lbxtool::parseFlags(flags.cast<std::string>());
    const long long value = flags.cast<long long>();
    if (value < 0 || value > std::numeric_limits<unsigned short>::max())
        throw std::runtime_error("flags " + std::to_string(value) + " do not fit a graphic's 16-bit flag word");
    return static_cast<unsigned short>(value);
}

unsigned int smallArgument(long long value, long long largest, const char* what)
{
    if (value < 0 || value > largest)
        throw std::runtime_error(std::string(what) + " " + std::to_string(value) + " is not 0 to " +
                                 std::to_string(largest));
    return static_cast<unsigned int>(value);
}

// Frames from Python: a (frames, height, width, channels) array or a
// sequence of (height, width, channels) arrays, all of one size.
struct FrameArguments {
    std::vector<py::array> arrays;
    std::size_t width = 0, height = 0;
};

template <typename Value>
FrameArguments frameArguments(const py::object& frames, std::size_t channels, const char* what)
{
    using Array = py::array_t<Value, py::array::c_style | py::array::forcecast>;
    FrameArguments result;
    std::vector<py::object> items;
    if (py::isinstance<py::array>(frames)) {
        const py::array all = frames.cast<py::array>();
        for (py::ssize_t f = 0; all.ndim() > 0 && f < all.shape(0); ++f)
            items.push_back(frames[py::int_(f)]);
    } else {
        for (const py::handle item : frames)
            items.push_back(py::reinterpret_borrow<py::object>(item));
    }
    const std::string shape = channels == 1 ? "(height, width)" : "(height, width, " + std::to_string(channels) + ")";
    for (std::size_t f = 0; f < items.size(); ++f) {
        Array array;
        try {
            array = Array::ensure(items[f]);
        } catch (const py::error_already_set&) {
            array = {};
        }
        const std::size_t dims = channels == 1 ? 2 : 3;
        if (!array || std::size_t(array.ndim()) != dims || (channels > 1 && std::size_t(array.shape(2)) != channels))
            throw std::runtime_error(std::string(what) + " " + std::to_string(f) + " is not an array of shape " + shape);
        const std::size_t height = array.shape(0), width = array.shape(1);
        if (f == 0) {
            result.height = height;
            result.width = width;
        } else if (height != result.height || width != result.width) {
            throw std::runtime_error(std::string(what) + " " + std::to_string(f) + " is " + std::to_string(width) +
                                     "x" + std::to_string(height) + ", " + what + " 0 " +
                                     std::to_string(result.width) + "x" + std::to_string(result.height));
        }
        result.arrays.push_back(array);
    }
    if (result.arrays.empty())
        throw std::runtime_error(std::string("no ") + what + "s given");
    if (result.width > lbxtool::LARGEST_SIDE || result.height > lbxtool::LARGEST_SIDE ||
        result.arrays.size() > lbxtool::LARGEST_SIDE)
        throw std::runtime_error(std::string(what) + "s of " + std::to_string(result.width) + "x" +
                                 std::to_string(result.height) + ", " + std::to_string(result.arrays.size()) +
                                 " of them, do not fit a graphic's 16-bit fields");
    return result;
}

std::vector<unsigned char*> framePointers(FrameArguments& frames)
{
    std::vector<unsigned char*> pointers;
    // The library only reads them: read-only arrays, such as frames handed out, will do.
    for (py::array& array : frames.arrays)
        pointers.push_back(const_cast<unsigned char*>(static_cast<const unsigned char*>(array.data())));
    return pointers;
}

// A new entry of what `make` creates, made with the GIL released.
py::object created(const std::function<Content*()>& make)
{
    std::unique_ptr<Content> entry;
    {
        py::gil_scoped_release released;
        entry.reset(make());
    }
    return wrap(std::make_shared<Handle>(std::move(entry)));
}

py::object createGraphic(const py::object& frames, const py::object& palette, const py::object& flags,
                         long long clearOnce, long long clearMod, long long paletteOffset, const py::object& paletteSize)
{
    FrameArguments pictures = frameArguments<unsigned char>(frames, PIXEL_SIZE, "frame");
    std::vector<unsigned char> colours = paletteArgument(palette);
    const unsigned short flagWord = flagsArgument(flags);
    const unsigned int once = smallArgument(clearOnce, 255, "clear_once");
    const unsigned int mod = smallArgument(clearMod, 255, "clear_mod");
    const unsigned int offset = smallArgument(paletteOffset, 255, "palette_offset");
    const unsigned int size = paletteSize.is_none() ? ((flagWord & Content::Graphic::PALETTE) ? 256 - offset : 0)
                                                    : smallArgument(paletteSize.cast<long long>(), 256, "palette_size");
    std::vector<unsigned char*> pointers = framePointers(pictures);
    return created([&] {
        return Content::Graphic::create(pointers.data(), colours.data(), static_cast<unsigned short>(pictures.width),
                                        static_cast<unsigned short>(pictures.height),
                                        static_cast<unsigned short>(pointers.size()), static_cast<unsigned char>(once),
                                        static_cast<unsigned char>(mod), static_cast<unsigned short>(offset),
                                        static_cast<unsigned short>(size), flagWord);
    });
}

std::vector<lbxtool::Indices> indexArguments(const py::object& frames, std::size_t& width, std::size_t& height)
{
    FrameArguments given = frameArguments<long long>(frames, 1, "frame");
    width = given.width;
    height = given.height;
    std::vector<lbxtool::Indices> indices;
    for (std::size_t f = 0; f < given.arrays.size(); ++f) {
        const auto* values = static_cast<const long long*>(given.arrays[f].data());
        lbxtool::Indices frame(width * height);
        for (std::size_t p = 0; p < frame.size(); ++p) {
            if (values[p] < 0 || values[p] > lbxtool::CLEAR)
                throw std::runtime_error("frame " + std::to_string(f) + " holds " + std::to_string(values[p]) +
                                         " at x " + std::to_string(p % width) + ", y " + std::to_string(p / width) +
                                         "; an index is 0 to 255, or 256 (lbx.CLEAR) where nothing is painted");
            frame[p] = static_cast<unsigned short>(values[p]);
        }
        indices.push_back(std::move(frame));
    }
    return indices;
}

py::object graphicOfIndices(const py::object& frames, const py::object& palette, const py::object& flags,
                            long long clearOnce, long long clearMod, long long paletteOffset,
                            const py::object& paletteSize)
{
    std::size_t width = 0, height = 0;
    const std::vector<lbxtool::Indices> indices = indexArguments(frames, width, height);
    const unsigned short flagWord = flagsArgument(flags);
    if ((flagWord & Content::Graphic::PALETTE) && palette.is_none())
        throw std::runtime_error("a graphic with the palette flag stores colours: give palette=");
    std::vector<unsigned char> colours =
        palette.is_none() ? std::vector<unsigned char>(PALETTE_BYTES) : paletteArgument(palette);
    const unsigned int once = smallArgument(clearOnce, 255, "clear_once");
    const unsigned int mod = smallArgument(clearMod, 255, "clear_mod");
    const unsigned int offset = smallArgument(paletteOffset, 255, "palette_offset");
    const unsigned int size = paletteSize.is_none() ? ((flagWord & Content::Graphic::PALETTE) ? 256 - offset : 0)
                                                    : smallArgument(paletteSize.cast<long long>(), 256, "palette_size");
    return created([&] {
        return lbxtool::graphicOfIndices(indices, static_cast<unsigned short>(width), static_cast<unsigned short>(height),
                                         static_cast<unsigned char>(once), static_cast<unsigned char>(mod),
                                         colours.data(), static_cast<unsigned short>(offset),
                                         static_cast<unsigned short>(size), flagWord);
    });
}

py::object createCursor(const py::object& frames, const py::object& palette)
{
    FrameArguments pictures = frameArguments<unsigned char>(frames, PIXEL_SIZE, "frame");
    if (pictures.arrays.size() != lbxtool::CURSOR_FRAMES || pictures.width != lbxtool::CURSOR_SIDE ||
        pictures.height != lbxtool::CURSOR_SIDE)
        throw std::runtime_error("a cursor is 20 frames of 24x24, not " + std::to_string(pictures.arrays.size()) +
                                 " of " + std::to_string(pictures.width) + "x" + std::to_string(pictures.height));
    std::vector<unsigned char> colours = paletteArgument(palette);
    std::vector<unsigned char*> pointers = framePointers(pictures);
    return created([&] { return Content::Cursor::create(colours.data(), pointers.data()); });
}

py::object createText(const py::iterable& strings)
{
    std::vector<std::string> records;
    for (const py::handle item : strings) {
        if (py::isinstance<py::str>(item)) {
            if (!PyUnicode_IS_ASCII(item.ptr()))
                throw std::runtime_error("string " + std::to_string(records.size()) +
                                         " holds characters other than ASCII; give it as bytes, in the game's "
                                         "own encoding");
            records.push_back(item.cast<std::string>());
        } else {
            records.push_back(std::string(py::bytes(py::reinterpret_borrow<py::object>(item))));
        }
    }
    return created([&] { return Content::Text::create(records); });
}

std::string recordText(Content* entry)
{
    return entry->info();
}

} // namespace

HandlePtr newHandle(Content* content)
{
    return std::make_shared<Handle>(std::unique_ptr<Content>(content));
}

py::object wrap(const HandlePtr& handle)
{
    switch (handle->content->type()) {
    case Content::GRAPHIC: return py::cast(GraphicEntry{{handle}});
    case Content::CURSOR: return py::cast(CursorEntry{{handle}});
    case Content::TEXT: return py::cast(TextEntry{{handle}});
    case Content::FONT: return py::cast(FontEntry{{handle}});
    default: return py::cast(Entry{handle});
    }
}

void bindEntries(py::module_& module)
{
    py::class_<Entry> entry(module, "Entry", R"(One entry of an archive: its bytes and the kind the library found for them.

Entries of kinds that hold more than bytes are of a class of their own
(Graphic, Cursor, Text, Font); the rest (empty, sound, abcost, leader, race,
unknown) are plain Entry objects.)");
    entry
        .def_property_readonly("kind", [](Entry& e) { return e.handle->content->typeStr(); },
                               "The kind: 'graphic', 'cursor', 'text', 'font', 'empty', 'sound', 'abcost', "
                               "'leader', 'race' or 'unknown'.")
        .def_property_readonly("info",
                               [](Entry& e) {
                                   Handle& h = *e.handle;
                                   return locked(h, [&] { return recordText(h.content.get()); });
                               },
                               "The library's one-line description, as `lbx list` shows it.")
        .def_property_readonly("shape",
                               [](Entry& e) {
                                   Handle& h = *e.handle;
                                   return locked(h, [&] { return lbxtool::shapeOf(h.content.get()); });
                               },
                               "What the game relies on beside the kind: 'graphic (8 frames of 48x32)', "
                               "'text (3 records of 100 bytes)'.")
        .def_property_readonly("data",
                               [](Entry& e) {
                                   Content* c = e.handle->content.get();
                                   return py::bytes(c->data(), c->size());
                               },
                               "The entry's bytes, as the archive stores them.")
        .def_property_readonly("size", [](Entry& e) { return e.handle->content->size(); }, "The number of bytes.")
        .def(
            "verify",
            [](Entry& e, const std::string& name) -> py::object {
                Handle& h = *e.handle;
                const lbxtool::Recreation done =
                    locked(h, [&] { return lbxtool::recreate(h.content.get(), name); });
                if (!done.tried)
                    return py::none();
                return py::bool_(done.difference.empty());
            },
            py::arg("name") = "entry",
            "Re-creates the entry from its decoded fields and compares the bytes, as `lbx verify` does: True "
            "when they agree, False when they differ, None for a kind the library cannot re-create.")
        .def_static(
            "from_bytes",
            [](const py::bytes& data) {
                const std::string bytes = data;
                if (bytes.size() > std::numeric_limits<unsigned int>::max())
                    throw std::runtime_error("an entry holds at most 4 GiB");
                return created([&] {
                    std::unique_ptr<char[]> block(new char[bytes.size()]);
                    std::memcpy(block.get(), bytes.data(), bytes.size());
                    auto* made = new Content("entry from bytes", block.get(), static_cast<unsigned int>(bytes.size()));
                    block.release();
                    return made;
                });
            },
            py::arg("data"), "An entry of these bytes, of the kind the library finds for them (a sound, records...).")
        .def_static(
            "empty", [](bool marker) { return created([&] { return Content::Empty::create(marker); }); },
            py::arg("marker") = false, "An empty entry: no bytes, or with marker=True the 22-byte marker text.")
        .def("__repr__", [](py::object self) {
            Handle& h = *self.cast<Entry&>().handle;
            const std::string shape = locked(h, [&] { return lbxtool::shapeOf(h.content.get()); });
            return "<zorv2_lbx." + py::type::of(self).attr("__name__").cast<std::string>() + " " + shape + ">";
        });

    py::class_<GraphicEntry, Entry>(module, "Graphic", R"(An image or an animation: frames of 8-bit palette indices.

Frames come as numpy arrays of shape (height, width, 4), uint8, RGBA, alpha 0
where a frame paints nothing. A graphic stores no colours but for its own
palette block (if it has one): give frame() the palette to show it in, such
as archive.palette(i), the colours `lbx export` finds for entry i.)")
        .def_property_readonly("width", [](GraphicEntry& g) { return g.handle->content->graphic()->width(); })
        .def_property_readonly("height", [](GraphicEntry& g) { return g.handle->content->graphic()->height(); })
        .def_property_readonly("frame_count", [](GraphicEntry& g) { return g.handle->content->graphic()->frames(); })
        .def_property_readonly(
            "flags",
            [](GraphicEntry& g) {
                Content::Graphic* graphic = g.handle->content->graphic();
                unsigned int word = 0;
                for (auto flag : {Content::Graphic::RAW, Content::Graphic::CLEAR, Content::Graphic::SHADOWS,
                                  Content::Graphic::PALETTE, Content::Graphic::LOOP})
                    if (graphic->hasFlag(flag))
                        word |= flag;
                return word;
            },
            "The flag word's known flags (RAW, CLEAR, SHADOWS, PALETTE, LOOP).")
        .def_property_readonly(
            "flag_names", [](GraphicEntry& g) { return lbxtool::flagText(g.handle->content->graphic()); },
            "The flags by name, 'loop,clear', as create(flags=...) and `lbx import --flags` take them.")
        .def_property_readonly("clear_once", [](GraphicEntry& g) { return g.handle->content->graphic()->clearOnce(); })
        .def_property_readonly("clear_mod", [](GraphicEntry& g) { return g.handle->content->graphic()->clearMod(); })
        .def_property_readonly("has_palette", [](GraphicEntry& g) { return g.handle->content->graphic()->hasPalette(); },
                               "Whether the graphic holds a palette block of its own.")
        .def_property_readonly("palette_offset",
                               [](GraphicEntry& g) { return g.handle->content->graphic()->paletteOffset(); })
        .def_property_readonly("palette_size", [](GraphicEntry& g) { return g.handle->content->graphic()->paletteSize(); })
        .def_property_readonly(
            "palette",
            [](GraphicEntry& g) -> py::object {
                if (!g.handle->content->graphic()->hasPalette())
                    return py::none();
                return paletteArray(framePalette(py::none(), *g.handle).data());
            },
            "The graphic's own palette block painted over opaque black, (256, 4) uint8; None without a block.")
        .def(
            "frame",
            [](GraphicEntry& g, py::ssize_t index, const py::object& palette) {
                const unsigned int f = position(index, g.handle->content->graphic()->frames(), "frame");
                return py::object(graphicFrames(*g.handle, palette, f, f + 1)[0]);
            },
            py::arg("index"), py::arg("palette") = py::none(),
            "Frame `index` as (height, width, 4) uint8 RGBA in `palette` ((256, 4) uint8; by default the "
            "graphic's own block over black). Decoded with the GIL released. The array is read-only, a view of "
            "the decoded frame that stays valid whatever is decoded later: .copy() it to edit it.")
        .def(
            "frames",
            [](GraphicEntry& g, const py::object& palette) {
                return graphicFrames(*g.handle, palette, 0, g.handle->content->graphic()->frames());
            },
            py::arg("palette") = py::none(), "Every frame, as frame() gives them.")
        .def(
            "indices",
            [](GraphicEntry& g, py::ssize_t index) {
                Handle& h = *g.handle;
                Content::Graphic* graphic = h.content->graphic();
                const unsigned int f = position(index, graphic->frames(), "frame");
                const std::vector<unsigned char> fake = fakePalette();
                const lbxtool::Indices indices = locked(h, [&] {
                    Content::Graphic* decoding = decoderFor(h, fake)->content->graphic();
                    return lbxtool::indicesOfFake(decoding->frame(f), std::size_t(graphic->width()) * graphic->height());
                });
                return indexArray(indices, graphic->height(), graphic->width());
            },
            py::arg("index"),
            "The palette indices frame `index` stores, (height, width) uint16; lbx.CLEAR (256) where the frame "
            "paints nothing.")
        .def(
            "with_palette",
            [](GraphicEntry& g, const py::object& palette) {
                std::vector<unsigned char> colours = paletteArgument(palette);
                Handle& h = *g.handle;
                std::unique_ptr<Content> made(locked(h, [&] {
                    std::unique_ptr<unsigned char[]> check(Palette::empty());
                    h.content->graphic()->palette(check.get()); // throws for a graphic without a block
                    // On a copy: creating decodes, and frames handed out may be of this entry.
                    Content copy(*h.content);
                    return Content::Graphic::create(colours.data(), &copy);
                }));
                return wrap(newHandle(made.release()));
            },
            py::arg("palette"),
            "A new graphic that stores the same indices and settings, with `palette` ((256, 4) uint8) as the "
            "colours of its own palette block: a recolouring. Refused for a graphic without a block.")
        .def_static("create", &createGraphic, py::arg("frames"), py::arg("palette"), py::kw_only(),
                    py::arg("flags") = 0, py::arg("clear_once") = 0, py::arg("clear_mod") = 0,
                    py::arg("palette_offset") = 0, py::arg("palette_size") = py::none(),
                    R"(A new graphic of RGBA frames.

frames: a sequence of (height, width, 4) uint8 arrays, or one
(frames, height, width, 4) array; each is the whole picture, alpha 0 where
nothing is painted. palette: (256, 4) uint8, in which every painted colour
must be found (the lowest index that holds it is stored). flags: a number
or names, 'loop,clear,palette'; with the palette flag the colours
palette[palette_offset:palette_offset + palette_size] are stored in the
graphic (palette_size: by default up to index 255). Encoded with the GIL
released.)")
        .def_static("from_indices", &graphicOfIndices, py::arg("frames"), py::arg("palette") = py::none(),
                    py::kw_only(), py::arg("flags") = 0, py::arg("clear_once") = 0, py::arg("clear_mod") = 0,
                    py::arg("palette_offset") = 0, py::arg("palette_size") = py::none(),
                    R"(A new graphic that stores exactly these indices.

frames: (height, width) arrays of integers 0 to 255, or lbx.CLEAR (256)
where nothing is painted, as indices() gives them. palette: the colours of
the palette block, needed with the palette flag.)");

    py::class_<CursorEntry, Entry>(module, "Cursor", "A mouse cursor: a palette of 256 colours and 20 frames of 24x24; index 0 is transparent.")
        .def_property_readonly(
            "palette", [](CursorEntry& c) { return paletteArray(framePalette(py::none(), *c.handle).data()); },
            "The cursor's palette, (256, 4) uint8.")
        .def_property_readonly("frame_count", [](CursorEntry&) { return lbxtool::CURSOR_FRAMES; })
        .def(
            "frame",
            [](CursorEntry& c, py::ssize_t index, const py::object& palette) {
                const unsigned int f = position(index, lbxtool::CURSOR_FRAMES, "frame");
                Handle& h = *c.handle;
                const std::vector<unsigned char> colours = framePalette(palette, h);
                std::shared_ptr<Decoder> decoder;
                const unsigned char* decoded;
                {
                    py::gil_scoped_release released;
                    const std::lock_guard<std::mutex> inTurn(h.turn);
                    decoder = decoderFor(h, colours);
                    decoded = decoder->content->cursor()->get(f);
                }
                return py::object(pictures(decoder, {decoded}, lbxtool::CURSOR_SIDE, lbxtool::CURSOR_SIDE)[0]);
            },
            py::arg("index"), py::arg("palette") = py::none(),
            "Frame `index` as (24, 24, 4) uint8 RGBA, in the cursor's own palette or `palette`.")
        .def(
            "frames",
            [](CursorEntry& c, const py::object& palette) {
                Handle& h = *c.handle;
                const std::vector<unsigned char> colours = framePalette(palette, h);
                std::shared_ptr<Decoder> decoder;
                std::vector<const unsigned char*> decoded;
                {
                    py::gil_scoped_release released;
                    const std::lock_guard<std::mutex> inTurn(h.turn);
                    decoder = decoderFor(h, colours);
                    for (unsigned int f = 0; f < lbxtool::CURSOR_FRAMES; ++f)
                        decoded.push_back(decoder->content->cursor()->get(f));
                }
                return pictures(decoder, decoded, lbxtool::CURSOR_SIDE, lbxtool::CURSOR_SIDE);
            },
            py::arg("palette") = py::none(), "All 20 frames, as frame() gives them.")
        .def(
            "indices",
            [](CursorEntry& c, py::ssize_t index) {
                const unsigned int f = position(index, lbxtool::CURSOR_FRAMES, "frame");
                Handle& h = *c.handle;
                std::vector<unsigned char> fake = fakePalette();
                const lbxtool::Indices indices = locked(h, [&] {
                    std::unique_ptr<unsigned char[]> decoded(h.content->cursor()->gen(f, fake.data()));
                    return lbxtool::indicesOfFake(decoded.get(), lbxtool::CURSOR_SIDE * lbxtool::CURSOR_SIDE);
                });
                return indexArray(indices, lbxtool::CURSOR_SIDE, lbxtool::CURSOR_SIDE);
            },
            py::arg("index"), "The indices frame `index` stores, (24, 24) uint16; lbx.CLEAR where transparent.")
        .def_static("create", &createCursor, py::arg("frames"), py::arg("palette"),
                    "A new cursor of 20 RGBA frames of 24x24 and a palette ((256, 4) uint8); transparent pixels "
                    "store index 0.");

    py::class_<TextEntry, Entry>(module, "Text", "A table of strings in records of one length; each string is bytes.")
        .def("__len__", [](TextEntry& t) { return t.handle->content->text()->size(); })
        .def("__getitem__",
             [](TextEntry& t, py::ssize_t index) {
                 Content::Text* text = t.handle->content->text();
                 return py::bytes(text->get(position(index, text->size(), "record")));
             })
        .def_property_readonly(
            "strings",
            [](TextEntry& t) {
                Content::Text* text = t.handle->content->text();
                py::list strings;
                for (unsigned int i = 0; i < text->size(); ++i)
                    strings.append(py::bytes(text->get(i)));
                return strings;
            },
            "Every record's string, as bytes.")
        .def(
            "decoded",
            [](TextEntry& t, const py::object& charset) {
                const lbxtool::Charset letters = charsetArgument(charset);
                Content::Text* text = t.handle->content->text();
                std::vector<std::string> strings;
                for (unsigned int i = 0; i < text->size(); ++i)
                    strings.push_back(letters.decode(text->get(i)));
                return strings;
            },
            py::arg("charset") = py::none(),
            "Every record's string as text, through a charset: the built-in CP437 by default, or a table file "
            "(HEX=text lines) by its path, as lbx's --charset takes it; bytes it has no letter for stand as \\xHH.")
        .def_property_readonly(
            "record_length",
            [](TextEntry& t) {
                Content* c = t.handle->content.get();
                return Content::AbstractContent::read2(c->data(), lbxtool::RECORD_LENGTH_OFFSET);
            },
            "The length of each record in bytes, a string and the zeros behind it.")
        .def("__iter__",
             [](TextEntry& t) {
                 Content::Text* text = t.handle->content->text();
                 py::list strings;
                 for (unsigned int i = 0; i < text->size(); ++i)
                     strings.append(py::bytes(text->get(i)));
                 return py::iter(strings);
             })
        .def_static("create", &createText, py::arg("strings"),
                    "A new text table of these strings (bytes, or str of ASCII characters), at the record length "
                    "the library chooses.");

    py::class_<FontEntry, Entry>(module, "Font", "Six fonts of 256 glyphs: their heights and widths (the glyph bytes are not decoded).")
        .def_property_readonly("heights",
                               [](FontEntry& f) {
                                   Handle& h = *f.handle;
                                   return locked(h, [&] {
                                       std::vector<unsigned int> heights;
                                       for (unsigned int font = 0; font < lbxtool::FONTS_PER_ENTRY; ++font)
                                           heights.push_back(h.content->font()->height(font));
                                       return heights;
                                   });
                               })
        .def_property_readonly(
            "widths",
            [](FontEntry& f) {
                Handle& h = *f.handle;
                py::array_t<unsigned char> widths(
                    {py::ssize_t(lbxtool::FONTS_PER_ENTRY), py::ssize_t(lbxtool::GLYPHS_PER_FONT)});
                unsigned char* target = widths.mutable_data();
                locked(h, [&] {
                    for (unsigned int font = 0; font < lbxtool::FONTS_PER_ENTRY; ++font)
                        for (unsigned int glyph = 0; glyph < lbxtool::GLYPHS_PER_FONT; ++glyph)
                            target[font * lbxtool::GLYPHS_PER_FONT + glyph] = h.content->font()->width(font, glyph);
                    return 0;
                });
                return widths;
            },
            "The width of every glyph of every font, (6, 256) uint8.");
}

} // namespace lbxpython
