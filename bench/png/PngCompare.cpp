// Times three PNG libraries on the pictures the lbx tool writes and reads:
// 320x200 frames of a textured scene with a moving disc and of a sprite over
// transparency, as 8-bit indexed PNGs (256 colours and their transparency)
// and as RGBA. Every file each encoder writes is decoded by every decoder and
// compared with what went in before anything is timed. Encoders and decoders
// take turns within each round, so that other work on a shared machine falls
// on all of them alike; a cell is the median of the rounds per frame.
//
// Usage: png-compare [ROUNDS]
#include "Workloads.h"
#include "images/PixelLayout.h"

#include <libdeflate.h>
#include <lodepng.h>
#include <png.h>
#include <spng.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace zorv2::Lbx::layout;
using bench::Pixels;

constexpr unsigned short WIDTH = 320;
constexpr unsigned short HEIGHT = 200;
constexpr unsigned short FRAMES = 10;
constexpr unsigned int DEFAULT_ROUNDS = 31;
// The sprite's background takes an index the scene palette gives no pixel of it.
constexpr unsigned char TRANSPARENT_INDEX = 0;
constexpr int DEFAULT_LEVEL = -1;

struct Input {
    std::string name;
    bool indexed;
    std::vector<Pixels> frames; // indices when indexed, else RGBA
    Pixels palette;             // RGBA entries, alpha as transparency
};

struct Decoded {
    bool indexed = false;
    Pixels pixels;
    Pixels palette;
};

// ---- inputs

Pixels indicesOf(const Pixels& rgba, const Pixels& palette)
{
    Pixels indices(rgba.size() / PIXEL_SIZE, TRANSPARENT_INDEX);
    for (std::size_t p = 0; p < indices.size(); ++p) {
        const unsigned char* pixel = &rgba[p * PIXEL_SIZE];
        if (pixel[ALPHA] == 0)
            continue;
        for (unsigned int i = 0; i < COLORS; ++i)
            if (std::equal(pixel, pixel + PIXEL_SIZE, &palette[i * PIXEL_SIZE])) {
                indices[p] = static_cast<unsigned char>(i);
                break;
            }
    }
    return indices;
}

Pixels rgbaOf(const Pixels& indices, const Pixels& palette)
{
    Pixels rgba;
    for (const unsigned char index : indices)
        rgba.insert(rgba.end(), &palette[index * PIXEL_SIZE], &palette[index * PIXEL_SIZE] + PIXEL_SIZE);
    return rgba;
}

// Hand-painted art is less regular than the benchmarks' texture: bands of
// colour with one pixel in four dithered, differently in every frame.
std::vector<Pixels> ditheredFrames()
{
    constexpr unsigned int BAND_WIDTH = 24, BAND_HEIGHT = 16, BANDS = 10, BAND_COLORS = 12, DITHER_COLORS = 5;
    std::vector<Pixels> frames;
    for (unsigned int f = 0; f < FRAMES; ++f) {
        Pixels indices(std::size_t{WIDTH} * HEIGHT);
        for (unsigned int y = 0; y < HEIGHT; ++y)
            for (unsigned int x = 0; x < WIDTH; ++x) {
                std::uint32_t hash = (x * 2654435761u) ^ (y * 40503u) ^ (f * 97u);
                hash ^= hash >> 13;
                hash *= 0x5bd1e995u;
                hash ^= hash >> 15;
                const unsigned int band = 1 + ((x / BAND_WIDTH + y / BAND_HEIGHT) % BANDS) * BAND_COLORS;
                indices[y * WIDTH + x] = static_cast<unsigned char>(band + (hash % 4 == 0 ? hash % DITHER_COLORS : 0));
            }
        frames.push_back(indices);
    }
    return frames;
}

// The same pictures as indexed and as RGBA frames, each shape in turn.
std::vector<Input> inputs()
{
    Pixels palette = bench::scenePalette();
    palette[TRANSPARENT_INDEX * PIXEL_SIZE + ALPHA] = 0;
    std::vector<std::pair<std::string, std::vector<Pixels>>> shapes;
    for (const auto shape : {bench::Shape::SCENE, bench::Shape::SPRITE}) {
        std::vector<Pixels> indexed;
        for (const Pixels& rgba : bench::movingDisc(WIDTH, HEIGHT, FRAMES, shape).rgba)
            indexed.push_back(indicesOf(rgba, bench::scenePalette()));
        shapes.emplace_back(shape == bench::Shape::SCENE ? "scene" : "sprite", indexed);
    }
    shapes.emplace_back("dithered", ditheredFrames());

    std::vector<Input> all;
    for (const auto& [name, indexed] : shapes)
        all.push_back({"indexed " + name, true, indexed, palette});
    for (const auto& [name, indexed] : shapes) {
        Input rgba{"RGBA " + name, false, {}, {}};
        for (const Pixels& frame : indexed)
            rgba.frames.push_back(rgbaOf(frame, palette));
        all.push_back(rgba);
    }
    return all;
}

// ---- lodepng

struct LodepngSettings {
    unsigned windowsize;
    unsigned lazymatching;
    LodePNGFilterStrategy filter;
};

std::string lodepngEncode(const Input& input, const Pixels& frame, const LodepngSettings& settings)
{
    lodepng::State state;
    state.encoder.auto_convert = 0;
    state.encoder.zlibsettings.windowsize = settings.windowsize;
    state.encoder.zlibsettings.lazymatching = settings.lazymatching;
    state.encoder.filter_strategy = settings.filter;
    if (input.indexed)
        for (LodePNGColorMode* mode : {&state.info_raw, &state.info_png.color}) {
            mode->colortype = LCT_PALETTE;
            mode->bitdepth = 8;
            for (unsigned int i = 0; i < COLORS; ++i) {
                const unsigned char* entry = &input.palette[i * PIXEL_SIZE];
                lodepng_palette_add(mode, entry[RED], entry[GREEN], entry[BLUE], entry[ALPHA]);
            }
        }
    std::vector<unsigned char> png;
    if (const unsigned error = lodepng::encode(png, frame.data(), WIDTH, HEIGHT, state))
        throw std::runtime_error(std::string("lodepng: ") + lodepng_error_text(error));
    return {png.begin(), png.end()};
}

Decoded lodepngDecode(const std::string& bytes)
{
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    lodepng::State state;
    unsigned width = 0, height = 0;
    unsigned error = lodepng_inspect(&width, &height, &state, data, bytes.size());
    const LodePNGColorMode& stored = state.info_png.color;
    Decoded decoded;
    decoded.indexed = error == 0 && stored.colortype == LCT_PALETTE && stored.bitdepth == 8;
    state.decoder.color_convert = decoded.indexed ? 0 : 1;
    if (error == 0)
        error = lodepng::decode(decoded.pixels, width, height, state, data, bytes.size());
    if (error != 0)
        throw std::runtime_error(std::string("lodepng: ") + lodepng_error_text(error));
    if (decoded.indexed)
        decoded.palette.assign(stored.palette, stored.palette + stored.palettesize * PIXEL_SIZE);
    return decoded;
}

// ---- libspng

struct SpngSettings {
    int level;
    int filters; // a SPNG_FILTER_CHOICE mask, or -1 for the library's choice
};

std::string spngEncode(const Input& input, const Pixels& frame, const SpngSettings& settings)
{
    spng_ctx* ctx = spng_ctx_new(SPNG_CTX_ENCODER);
    spng_set_option(ctx, SPNG_ENCODE_TO_BUFFER, 1);
    if (settings.level != DEFAULT_LEVEL)
        spng_set_option(ctx, SPNG_IMG_COMPRESSION_LEVEL, settings.level);
    if (settings.filters >= 0)
        spng_set_option(ctx, SPNG_FILTER_CHOICE, settings.filters);
    spng_ihdr ihdr{WIDTH, HEIGHT, 8,
                   static_cast<uint8_t>(input.indexed ? SPNG_COLOR_TYPE_INDEXED : SPNG_COLOR_TYPE_TRUECOLOR_ALPHA), 0,
                   0, 0};
    spng_set_ihdr(ctx, &ihdr);
    if (input.indexed) {
        spng_plte plte{};
        spng_trns trns{};
        plte.n_entries = trns.n_type3_entries = COLORS;
        for (unsigned int i = 0; i < COLORS; ++i) {
            const unsigned char* entry = &input.palette[i * PIXEL_SIZE];
            plte.entries[i] = {entry[RED], entry[GREEN], entry[BLUE], 0};
            trns.type3_alpha[i] = entry[ALPHA];
        }
        spng_set_plte(ctx, &plte);
        spng_set_trns(ctx, &trns);
    }
    int error = spng_encode_image(ctx, frame.data(), frame.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    std::size_t length = 0;
    void* png = error == 0 ? spng_get_png_buffer(ctx, &length, &error) : nullptr;
    spng_ctx_free(ctx);
    if (error != 0)
        throw std::runtime_error(std::string("libspng: ") + spng_strerror(error));
    std::string bytes(static_cast<const char*>(png), length);
    std::free(png);
    return bytes;
}

Decoded spngDecode(const std::string& bytes)
{
    spng_ctx* ctx = spng_ctx_new(0);
    spng_set_png_buffer(ctx, bytes.data(), bytes.size());
    Decoded decoded;
    spng_ihdr ihdr{};
    int error = spng_get_ihdr(ctx, &ihdr);
    decoded.indexed = ihdr.color_type == SPNG_COLOR_TYPE_INDEXED && ihdr.bit_depth == 8;
    const int format = decoded.indexed ? SPNG_FMT_PNG : SPNG_FMT_RGBA8;
    std::size_t size = 0;
    if (error == 0)
        error = spng_decoded_image_size(ctx, format, &size);
    if (error == 0) {
        decoded.pixels.resize(size);
        error = spng_decode_image(ctx, decoded.pixels.data(), size, format, decoded.indexed ? 0 : SPNG_DECODE_TRNS);
    }
    if (error == 0 && decoded.indexed) {
        spng_plte plte{};
        spng_trns trns{};
        error = spng_get_plte(ctx, &plte);
        const bool transparency = spng_get_trns(ctx, &trns) == 0;
        for (unsigned int i = 0; i < plte.n_entries; ++i) {
            const spng_plte_entry& entry = plte.entries[i];
            const unsigned char alpha = transparency && i < trns.n_type3_entries ? trns.type3_alpha[i] : OPAQUE;
            decoded.palette.insert(decoded.palette.end(), {entry.red, entry.green, entry.blue, alpha});
        }
    }
    spng_ctx_free(ctx);
    if (error != 0)
        throw std::runtime_error(std::string("libspng: ") + spng_strerror(error));
    return decoded;
}

// ---- libpng, through its own API since the simplified one hands out no
// palette indices

struct LibpngSettings {
    int level;
    int filters;            // PNG_FILTER_* flags, or -1 for the library's choice
    bool libdeflate = false; // the image data compressed whole by libdeflate at `level`, rows unfiltered
};

// libpng framing the file and libdeflate compressing its image data: every
// row behind a 0 (no filter), as one zlib stream for one IDAT chunk.
std::vector<unsigned char> deflatedWhole(const Pixels& frame, int level)
{
    const std::size_t rowBytes = frame.size() / HEIGHT;
    std::vector<unsigned char> rows;
    for (unsigned int y = 0; y < HEIGHT; ++y) {
        rows.push_back(0);
        rows.insert(rows.end(), frame.begin() + y * rowBytes, frame.begin() + (y + 1) * rowBytes);
    }
    libdeflate_compressor* compressor = libdeflate_alloc_compressor(level);
    std::vector<unsigned char> data(libdeflate_zlib_compress_bound(compressor, rows.size()));
    data.resize(libdeflate_zlib_compress(compressor, rows.data(), rows.size(), data.data(), data.size()));
    libdeflate_free_compressor(compressor);
    return data;
}

void libpngFailure(png_structp, png_const_charp message)
{
    throw std::runtime_error(std::string("libpng: ") + message);
}

void libpngWarning(png_structp, png_const_charp) {}

void appendTo(png_structp png, png_bytep data, std::size_t length)
{
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<const char*>(data), length);
}

struct Source {
    const std::string& bytes;
    std::size_t offset;
};

void readFrom(png_structp png, png_bytep data, std::size_t length)
{
    Source& source = *static_cast<Source*>(png_get_io_ptr(png));
    if (length > source.bytes.size() - source.offset)
        png_error(png, "file ends early");
    std::copy_n(source.bytes.data() + source.offset, length, data);
    source.offset += length;
}

std::vector<png_bytep> rowsOf(unsigned char* pixels, std::size_t rowBytes, unsigned int height)
{
    std::vector<png_bytep> rows(height);
    for (unsigned int y = 0; y < height; ++y)
        rows[y] = pixels + y * rowBytes;
    return rows;
}

// The failure handler throws through libpng's C frames, which x86-64 builds
// carry unwind tables for: simpler than setjmp, and enough for a program
// whose every input is its own and never fails.
std::string libpngEncode(const Input& input, const Pixels& frame, const LibpngSettings& settings)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, libpngFailure, libpngWarning);
    png_infop info = png_create_info_struct(png);
    std::string out;
    try {
        png_set_write_fn(png, &out, appendTo, nullptr);
        if (settings.level != DEFAULT_LEVEL)
            png_set_compression_level(png, settings.level);
        if (settings.filters >= 0)
            png_set_filter(png, PNG_FILTER_TYPE_BASE, settings.filters);
        png_set_IHDR(png, info, WIDTH, HEIGHT, 8, input.indexed ? PNG_COLOR_TYPE_PALETTE : PNG_COLOR_TYPE_RGBA,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        if (input.indexed) {
            png_color plte[COLORS];
            png_byte trns[COLORS];
            for (unsigned int i = 0; i < COLORS; ++i) {
                const unsigned char* entry = &input.palette[i * PIXEL_SIZE];
                plte[i] = {entry[RED], entry[GREEN], entry[BLUE]};
                trns[i] = entry[ALPHA];
            }
            png_set_PLTE(png, info, plte, COLORS);
            png_set_tRNS(png, info, trns, COLORS, nullptr);
        }
        png_write_info(png, info);
        if (settings.libdeflate) {
            const std::vector<unsigned char> data = deflatedWhole(frame, settings.level);
            png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), data.data(), data.size());
            png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
        } else {
            std::vector<png_bytep> rows =
                rowsOf(const_cast<unsigned char*>(frame.data()), frame.size() / HEIGHT, HEIGHT);
            png_write_image(png, rows.data());
            png_write_end(png, nullptr);
        }
    } catch (...) {
        png_destroy_write_struct(&png, &info);
        throw;
    }
    png_destroy_write_struct(&png, &info);
    return out;
}

Decoded libpngDecode(const std::string& bytes)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, libpngFailure, libpngWarning);
    png_infop info = png_create_info_struct(png);
    Source source{bytes, 0};
    Decoded decoded;
    try {
        png_set_read_fn(png, &source, readFrom);
        png_read_info(png, info);
        const unsigned int height = png_get_image_height(png, info);
        decoded.indexed = png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE && png_get_bit_depth(png, info) == 8;
        if (decoded.indexed) {
            png_colorp plte = nullptr;
            int entries = 0;
            png_get_PLTE(png, info, &plte, &entries);
            png_bytep trns = nullptr;
            int alphas = 0;
            png_get_tRNS(png, info, &trns, &alphas, nullptr);
            for (int i = 0; i < entries; ++i)
                decoded.palette.insert(decoded.palette.end(),
                                       {plte[i].red, plte[i].green, plte[i].blue, i < alphas ? trns[i] : OPAQUE});
        } else {
            png_set_expand(png);
            png_set_strip_16(png);
            png_set_gray_to_rgb(png);
            png_set_add_alpha(png, OPAQUE, PNG_FILLER_AFTER);
        }
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
        const std::size_t rowBytes = png_get_rowbytes(png, info);
        decoded.pixels.resize(rowBytes * height);
        std::vector<png_bytep> rows = rowsOf(decoded.pixels.data(), rowBytes, height);
        png_read_image(png, rows.data());
        png_read_end(png, nullptr);
    } catch (...) {
        png_destroy_read_struct(&png, &info, nullptr);
        throw;
    }
    png_destroy_read_struct(&png, &info, nullptr);
    return decoded;
}

// ---- the comparison

using Encode = std::function<std::string(const Input&, const Pixels&)>;
using Decode = std::function<Decoded(const std::string&)>;

struct Encoder {
    std::string name;
    std::string settings;
    bool decoded; // whether the decoders are timed on its files
    Encode encode;
};

struct Decoder {
    std::string name;
    Decode decode;
};

// The files every decoder is timed on are those that libpng writes (zlib's
// own streams, as most editors write them); the encoders write the same
// pixels in every case.
std::vector<Encoder> encoders()
{
    const auto lodepng = [](LodepngSettings settings) {
        return [=](const Input& i, const Pixels& f) { return lodepngEncode(i, f, settings); };
    };
    const auto spng = [](SpngSettings settings) {
        return [=](const Input& i, const Pixels& f) { return spngEncode(i, f, settings); };
    };
    const auto libpng = [](LibpngSettings settings) {
        return [=](const Input& i, const Pixels& f) { return libpngEncode(i, f, settings); };
    };
    return {
        {"lodepng", "default: window 2048, lazy matching, no filter if indexed else minsum", false,
         lodepng({2048, 1, LFS_MINSUM})},
        {"lodepng", "window 512, no lazy matching, no filter", false, lodepng({512, 0, LFS_ZERO})},
        {"libspng", "default: zlib level 6, no filter if indexed else adaptive", false, spng({DEFAULT_LEVEL, -1})},
        {"libspng", "zlib level 1, adaptive filters", false, spng({1, SPNG_FILTER_CHOICE_ALL})},
        {"libspng", "zlib level 1, no filter", false, spng({1, SPNG_FILTER_CHOICE_NONE})},
        {"libspng", "zlib level 6, no filter", false, spng({6, SPNG_FILTER_CHOICE_NONE})},
        {"libpng", "default: zlib level 6, no filter if indexed else adaptive", true, libpng({DEFAULT_LEVEL, -1})},
        {"libpng", "zlib level 1, adaptive filters", false, libpng({1, PNG_ALL_FILTERS})},
        {"libpng", "zlib level 1, no filter", true, libpng({1, PNG_FILTER_NONE})},
        {"libpng", "zlib level 6, no filter", true, libpng({6, PNG_FILTER_NONE})},
        {"libpng", "libdeflate level 1, no filter", false, libpng({1, PNG_FILTER_NONE, true})},
    };
}

std::vector<Decoder> decoders()
{
    return {{"lodepng", lodepngDecode}, {"libspng", spngDecode}, {"libpng", libpngDecode}};
}

void check(const Decoded& decoded, const Input& input, const Pixels& frame, const std::string& what)
{
    const bool same = decoded.indexed == input.indexed && decoded.pixels == frame &&
                      (!input.indexed || decoded.palette == input.palette);
    if (!same)
        throw std::runtime_error(what + " does not give back the " + input.name + " frame");
}

using Clock = std::chrono::steady_clock;

template <typename Work>
double millisecondsPerFrame(Work work)
{
    const Clock::time_point start = Clock::now();
    for (unsigned int f = 0; f < FRAMES; ++f)
        work(f);
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count() / FRAMES;
}

// Median and the spread of the middle half around it, in per cent.
struct Summary {
    double median;
    double spread;
};

Summary summarise(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    const std::size_t n = samples.size();
    const double median = samples[n / 2];
    return {median, 100.0 * (samples[n * 3 / 4] - samples[n / 4]) / 2 / median};
}

std::string cell(const Summary& summary)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f ±%.0f%%", summary.median, summary.spread);
    return text;
}

std::string kilobytes(std::size_t bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f KiB", bytes / 1024.0);
    return text;
}

void printRow(const std::vector<std::string>& cells)
{
    std::string line = "|";
    for (const std::string& text : cells)
        line += " " + text + " |";
    std::puts(line.c_str());
}

void printHead(const std::vector<std::string>& cells)
{
    printRow(cells);
    printRow(std::vector<std::string>(cells.size(), "---"));
}

} // namespace

int main(int argc, char** argv)
{
    const unsigned int rounds = argc > 1 ? static_cast<unsigned int>(std::atoi(argv[1])) : DEFAULT_ROUNDS;
    if (rounds == 0) {
        std::fprintf(stderr, "usage: png-compare [ROUNDS]\n");
        return 2;
    }
    const std::vector<Input> ins = inputs();
    const std::vector<Encoder> encs = encoders();
    const std::vector<Decoder> decs = decoders();

    // Every file, [encoder][input][frame], checked by every decoder.
    std::vector<std::vector<std::vector<std::string>>> files(encs.size());
    for (std::size_t e = 0; e < encs.size(); ++e)
        for (const Input& input : ins) {
            files[e].emplace_back();
            for (const Pixels& frame : input.frames) {
                files[e].back().push_back(encs[e].encode(input, frame));
                for (const Decoder& decoder : decs)
                    check(decoder.decode(files[e].back().back()), input, frame,
                          decoder.name + " on " + encs[e].name + " (" + encs[e].settings + ")");
            }
        }

    // [encoder][input] and [decoder][encoder][input] samples, one a round.
    std::vector<std::vector<std::vector<double>>> encodeTimes(encs.size(), std::vector<std::vector<double>>(ins.size()));
    std::vector<std::vector<std::vector<std::vector<double>>>> decodeTimes(
        decs.size(), std::vector<std::vector<std::vector<double>>>(encs.size(), std::vector<std::vector<double>>(ins.size())));
    std::size_t sink = 0;
    for (unsigned int r = 0; r < rounds; ++r)
        for (std::size_t i = 0; i < ins.size(); ++i) {
            for (std::size_t e = 0; e < encs.size(); ++e)
                encodeTimes[e][i].push_back(millisecondsPerFrame(
                    [&](unsigned int f) { sink += encs[e].encode(ins[i], ins[i].frames[f]).size(); }));
            for (std::size_t d = 0; d < decs.size(); ++d)
                for (std::size_t e = 0; e < encs.size(); ++e)
                    if (encs[e].decoded)
                        decodeTimes[d][e][i].push_back(millisecondsPerFrame(
                            [&](unsigned int f) { sink += decs[d].decode(files[e][i][f]).pixels.size(); }));
        }

    std::printf("lodepng %s, libspng %s, libpng %s, zlib %s\n", LODEPNG_VERSION_STRING, spng_version_string(),
                png_get_libpng_ver(nullptr), zlibVersion());
    std::printf("%ux%u, %u frames an input, %u rounds; ms a frame: median ±half the interquartile range\n\n", WIDTH,
                HEIGHT, FRAMES, rounds);
    std::printf("Encoding (ms, and the mean size of a file)\n\n");
    std::vector<std::string> head = {"library", "settings"};
    for (const Input& input : ins)
        head.insert(head.end(), {input.name + " ms", "size"});
    printHead(head);
    for (std::size_t e = 0; e < encs.size(); ++e) {
        std::vector<std::string> row = {encs[e].name, encs[e].settings};
        for (std::size_t i = 0; i < ins.size(); ++i) {
            std::size_t bytes = 0;
            for (const std::string& file : files[e][i])
                bytes += file.size();
            row.insert(row.end(), {cell(summarise(encodeTimes[e][i])), kilobytes(bytes / FRAMES)});
        }
        printRow(row);
    }
    std::printf("\nDecoding (ms)\n\n");
    head = {"decoder", "file written by"};
    for (const Input& input : ins)
        head.push_back(input.name);
    printHead(head);
    for (std::size_t d = 0; d < decs.size(); ++d)
        for (std::size_t e = 0; e < encs.size(); ++e) {
            if (!encs[e].decoded)
                continue;
            std::vector<std::string> row = {decs[d].name, encs[e].name + ", " + encs[e].settings};
            for (std::size_t i = 0; i < ins.size(); ++i)
                row.push_back(cell(summarise(decodeTimes[d][e][i])));
            printRow(row);
        }
    return sink == 0 ? 1 : 0;
}
