#include "tools/cli/Command.h"

#include "tools/modding/EntryFiles.h"
#include "tools/modding/Files.h"
#include "tools/modding/Names.h"
#include "tools/modding/Store.h"
#include "tools/platform/Inputs.h"
#include "tools/platform/Report.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace lbxtool {

UsageError::UsageError(const std::string& message) : CLI::ParseError("UsageError", message, EXIT_USAGE) {}

void define(CLI::App& command, int& status, std::function<int()> run)
{
    command.callback([&status, run]() {
        try {
            status = run();
        } catch (const CLI::ParseError&) {
            throw;
        } catch (const std::exception& e) {
            reportError(e.what());
            status = EXIT_FAILED;
        }
    });
}

void examples(CLI::App& command, const std::string& lines)
{
    command.footer("\nExamples:\n" + lines + "\n");
}

void jobsOption(CLI::App& command, unsigned int& jobs)
{
    const auto positive = [](std::string& value) {
        const bool zero = value.find_first_not_of('0') == std::string::npos;
        return smallNumber(value) && !zero ? std::string() : "takes a number of at least 1, not '" + value + "'";
    };
    command.add_option("-j,--jobs", jobs, "Work on N entries at once (default: one a core)")
        ->type_name("N")
        ->check(CLI::Validator(positive, "", "at least 1"));
}

void quietOption(CLI::App& command)
{
    command.add_flag_callback("-q,--quiet", silenceProgress, "Show no progress on stderr");
}

void jsonOption(CLI::App& command, bool& json)
{
    command.add_flag("--json", json,
                     "Print one JSON document on stdout instead of lines (keys in the README); warnings stay on "
                     "stderr");
}

void printJson(const Json& document)
{
    std::cout << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void palettesOption(CLI::App& command, std::string& path)
{
    command.add_option("--palettes", path,
                       "Where the game's archives are (a folder, or an archive in it), for the colours of graphics "
                       "whose palettes come from FONTS.LBX and others; by default beside each archive")
        ->type_name("PATH");
}

PaletteLookup paletteLookup(const std::string& palettes, const std::string& entry)
{
    PaletteLookup lookup{entry, palettes, "--palettes PATH names the folder of the game's archives"};
    std::error_code error;
    if (palettes.empty() || std::filesystem::is_directory(palettes, error))
        return lookup;
    if (!std::filesystem::is_regular_file(palettes, error))
        throw std::runtime_error("--palettes: '" + palettes + "' is neither a folder nor an archive");
    lookup.folder = std::filesystem::path(palettes).parent_path().string();
    if (lookup.folder.empty())
        lookup.folder = ".";
    return lookup;
}

void charsetOption(CLI::App& command, std::string& option, const std::string& what)
{
    command.add_option("--charset", option,
                       what + ": CP437, the DOS code page the game's fonts follow, or a table file of HEX=text lines "
                              "in UTF-8")
        ->type_name("NAME|FILE.tbl");
}

Charset charsetOf(const std::string& option)
{
    return charsetNamed(option, [](const std::string& path) { return readBytes(path); });
}

void fontOption(CLI::App& command, std::string& option)
{
    command.add_option("--font", option,
                       "Measure strings with the glyph widths of font N (0 to 5) of entry ENTRY of a font archive")
        ->type_name("FONTS.LBX:ENTRY:N");
}

namespace {

// The parts of --font FONTS.LBX:ENTRY:N.
struct FontOption {
    std::string path;
    unsigned int entry, font;
};

FontOption fontParts(const std::string& option)
{
    const std::size_t last = option.rfind(':');
    const std::size_t middle = last == std::string::npos || last == 0 ? std::string::npos : option.rfind(':', last - 1);
    if (middle == std::string::npos || middle == 0 || !smallNumber(option.substr(middle + 1, last - middle - 1)) ||
        !smallNumber(option.substr(last + 1)))
        throw UsageError("--font takes FONTS.LBX:ENTRY:N, such as FONTS.LBX:0:2, not '" + option + "'");
    return {option.substr(0, middle), static_cast<unsigned int>(std::stoul(option.substr(middle + 1, last - middle - 1))),
            static_cast<unsigned int>(std::stoul(option.substr(last + 1)))};
}

} // namespace

std::unique_ptr<FontMeasure> fontOf(const std::string& option)
{
    if (option.empty())
        return nullptr;
    const FontOption parts = fontParts(option);
    requireRegularFile(parts.path);
    const std::unique_ptr<Content> content = readEntry(parts.path, parts.entry);
    return std::make_unique<FontMeasure>(fontMeasure(*content, parts.font, option));
}

TranslatedArchives translatedArchives(const std::vector<std::string>& paths)
{
    TranslatedArchives opened;
    for (const std::string& path : paths) {
        requireRegularFile(path);
        opened.files.push_back(openArchive(path));
        opened.archives.push_back({path, opened.files.back().get()});
    }
    return opened;
}

std::vector<std::string> translationInputs(std::vector<std::string> files, const std::string& charset,
                                           const std::string& font)
{
    files.push_back(charset); // a table file; a name that is no file is passed over
    if (!font.empty())
        files.push_back(fontParts(font).path);
    return files;
}

void splitArchivesAndIndices(const std::vector<std::string>& items, std::vector<std::string>& archives,
                             std::vector<unsigned int>& indices)
{
    for (const std::string& item : items) {
        if (item.empty() || !allDigits(item))
            archives.push_back(item);
        else if (item.size() > LARGEST_NUMBER_DIGITS)
            throw UsageError("entry number " + item + " is too large");
        else
            indices.push_back(static_cast<unsigned int>(std::stoul(item)));
    }
    if (archives.empty())
        throw UsageError("no archive given");
}

int forEachPath(const std::vector<std::string>& paths, const std::function<void(const std::string&)>& action,
                const std::function<void(const std::string& path, const std::string& message)>& failed)
{
    int status = EXIT_DONE;
    for (const std::string& path : paths) {
        try {
            requireRegularFile(path);
            action(path);
        } catch (const std::exception& e) {
            reportError(e.what());
            if (failed)
                failed(path, e.what());
            status = EXIT_FAILED;
        }
    }
    return status;
}

void storeIntoArchive(const SafeWriter& writer, const std::string& path, unsigned int index,
                      const std::function<std::unique_ptr<Content>()>& made, bool strict,
                      const std::function<void(File& archive)>& check)
{
    writer.check(path, Existing::Replace);
    std::unique_ptr<File> archive = openArchive(path);
    if (index > archive->size())
        throw noEntry(path, index, archive->size(), true);
    TerminalWarnings warnings;
    storeEntry(*archive, path, index, made(), strict, warnings);
    if (check)
        check(*archive);
    writer.writeArchive(path, *archive, Existing::Replace);
}

void requireEntryFile(const std::string& path, Content& file, bool raw, const std::string& pictureInstead)
{
    const std::string named = "'" + path + "' ";
    const FileKind kind = fileKind(file.data(), file.size());
    if (kind == FileKind::ARCHIVE)
        throw std::runtime_error(named + "is an LBX archive, which is never an entry; lbx extract '" + path +
                                 "' gives its entries as files");
    if (raw)
        return;
    const std::string orRaw = " (--raw stores the file as it is)";
    const std::string notEntry = named + "is " + fileKindName(kind) + ", not an entry";
    const std::string unpacked = "; it goes back with the folder that unpack wrote it into, by lbx pack FOLDER";
    switch (kind) {
    case FileKind::PNG: throw std::runtime_error(notEntry + "; " + pictureInstead + orRaw);
    case FileKind::MANIFEST: {
        const std::string folder = fs::path(path).parent_path().string();
        throw std::runtime_error(notEntry + "; lbx pack '" + (folder.empty() ? "." : folder) +
                                 "' makes the archive of its folder" + orRaw);
    }
    case FileKind::PALETTE:
    case FileKind::TEXT: throw std::runtime_error(notEntry + unpacked + orRaw);
    case FileKind::JSON: throw std::runtime_error(notEntry + orRaw);
    default: break;
    }
    if (!claimsSound(path, file.data(), file.size()))
        return;
    const std::string problem = soundProblem(file.data(), file.size());
    if (!problem.empty())
        throw std::runtime_error(named + problem + "; save it as a plain WAVE file" + orRaw);
}

} // namespace lbxtool
