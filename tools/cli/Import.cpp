// lbx import: PNG frames to a graphic entry, as a file of its own or into an
// archive.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Import.h"
#include "tools/modding/Names.h"
#include "tools/modding/PaletteSource.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/SystemFiles.h"
#include "tools/platform/Report.h"

#include <filesystem>
#include <iostream>
#include <optional>

namespace lbxtool {

namespace {

struct ImportOptions {
    std::string target; // an entry file, or an archive when `index` is given
    std::vector<std::string> images;
    std::optional<unsigned int> index;
    std::string palette; // ARCHIVE:INDEX; empty to build it from the images
    unsigned int clearOnce = 0;
    unsigned int clearMod = 0;
    std::string flags; // names joined by ',' or a number
    bool force = false;  // replace an existing entry file OUT
    bool strict = false; // refuse what would otherwise be warned about
};

// Without an index OUT is a file of one entry: an archive there was meant
// to be changed with -i, and any other file is replaced only when forced.
void checkEntryTarget(SafeWriter& writer, const ImportOptions& options)
{
    std::vector<std::string> inputs = options.images;
    if (!options.palette.empty())
        inputs.push_back(parseEntryRef(options.palette).archive);
    writer.protect(inputs);
    if (std::filesystem::is_regular_file(options.target) && File::check(options.target))
        throw std::runtime_error("'" + options.target + "' is an archive; -i INDEX stores into it");
    writer.check(options.target, replaceIf(options.force));
}

std::vector<Picture> loadFrames(const std::vector<std::string>& paths)
{
    std::vector<Picture> frames;
    for (const std::string& path : paths) {
        frames.push_back(readPicture(readBytes(path), path));
        requireFrameFits(frames.back(), path, frames.front());
    }
    return frames;
}

int importGraphic(const ImportOptions& options)
{
    if (options.images.empty())
        throw std::runtime_error("no images given");
    SafeWriter writer;
    if (options.index)
        writer.protect(options.images);
    else
        checkEntryTarget(writer, options);
    const std::vector<Picture> frames = loadFrames(options.images);
    const GraphicSettings settings = graphicSettings(frames.size(), options.flags, options.clearOnce, options.clearMod);
    SystemFiles files(writer);
    const PaletteArray palette = options.palette.empty() ? nullptr : PaletteSource::read(options.palette, files);
    TerminalWarnings warnings;
    std::unique_ptr<Content> entry =
        graphicOfPictures(frames, options.images, settings, palette.get(), options.strict, warnings);
    // Frames taken by their indices bring colours that may not be the
    // entry's: in an archive, the colours it is shown in there.
    const bool byIndices = takenByIndices(frames, palette.get());

    if (options.index) {
        storeIntoArchive(
            writer, options.target, *options.index, [&entry] { return std::move(entry); }, options.strict,
            [&](File& archive) {
                if (!byIndices)
                    return;
                PaletteSource source(archive, {}, files, warnings);
                const PaletteArray shown = source.forGraphic(*options.index);
                sayColours(frames, options.images, shown.get(), options.strict, warnings);
            });
        std::cout << "stored " << lbxtool::frames(frames.size()) << " as " << entryName(options.target, *options.index) << '\n';
    } else {
        if (byIndices)
            sayColours(frames, options.images, ownColours(frames, settings), options.strict, warnings);
        writer.writeBytes(options.target, std::string(entry->data(), entry->size()), replaceIf(options.force));
        std::cout << "wrote " << lbxtool::frames(frames.size()) << " to " << options.target << '\n';
    }
    return EXIT_DONE;
}

} // namespace

void addImport(CLI::App& app, int& status)
{
    auto options = std::make_shared<ImportOptions>();
    ImportOptions& i = *options;
    CLI::App* command = app.add_subcommand("import", "Turn PNG frames into a graphic entry");
    command->add_option("OUT", i.target, "Entry file to write, or the archive with --index")->required();
    command->add_option("PNG", i.images, "Frames, in order")->required();
    command->add_option("-i,--index", i.index, "Store into archive OUT at this entry (the entry count appends)");
    command->add_option("-p,--palette", i.palette,
                        "Palette from ARCHIVE:INDEX. Without it, frames saved with a palette of 256 colours (as "
                        "unpack writes them) keep their indices, and any others get a palette built from the images "
                        "and stored with them");
    command->add_option("--clear-once", i.clearOnce,
                        "Frame N (not the first or last) is drawn on an empty picture instead of over the one "
                        "before; 0 for none");
    command->add_option("--clear-mod", i.clearMod,
                        "Every Nth frame (0, N, 2N, ...) is drawn on an empty picture; 0 for none");
    command->add_option("--flags", i.flags,
                        "How the game treats the animation, joined by ',': loop (starts over after the last "
                        "frame), clear (every frame on an empty picture), raw (frames stored unpacked, each on an "
                        "empty picture), palette (the colours stored in the entry), shadows; or the number itself");
    command->add_flag("--force", i.force, "Replace the entry file OUT if it exists (never an archive)");
    command->add_flag("--strict", i.strict,
                      "Refuse, instead of warning, a frame whose colours would not be stored or whose pixels are "
                      "partly transparent; with --index, a new entry of another kind, size or frame count");
    examples(*command, "  lbx import ball.graphic gallery/INBOX_001_0*.png --flags loop\n"
                       "  lbx import demo/INBOX.LBX -i 2 gallery/INBOX_000_000.png");
    define(*command, status, [options] { return importGraphic(*options); });
}

} // namespace lbxtool
