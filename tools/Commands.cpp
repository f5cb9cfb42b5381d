#include "tools/Commands.h"

#include "images/Graphic.h"
#include "knowledge/Magic.h"
#include "tools/ArchiveSteps.h"
#include "tools/Inputs.h"
#include "tools/Paths.h"
#include "tools/Pictures.h"
#include "tools/Report.h"
#include "tools/SafeWrite.h"
#include "tools/Store.h"

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>

namespace fs = std::filesystem;

namespace lbxtool {

namespace {

using zorv2::Lbx::Magic;

constexpr int INDEX_WIDTH = 5;
constexpr int KIND_WIDTH = 8;
constexpr int COUNT_WIDTH = 8;
constexpr int LAST_COUNT_WIDTH = 18;

// The kinds whose entries the library can re-create from their fields.
bool recreatable(Content* entry)
{
    switch (entry->type()) {
    case Content::CURSOR:
    case Content::EMPTY:
    case Content::FONT:
    case Content::GRAPHIC:
    case Content::TEXT: return true;
    default: return false;
    }
}

struct Tally {
    unsigned int passed = 0;
    unsigned int differs = 0;
    unsigned int notRecreatable = 0;
};

std::string catalogueLine(const std::string& path, unsigned int count)
{
    const File::LBX_FILE row = catalogueRow(path);
    if (row == File::LBX_UNKNOWN)
        return "not in the catalogue";
    const std::string name = File::LBX_FILE_NAME(row);
    const unsigned int expected = Magic::size(row);
    if (count != expected)
        warn(path + " holds " + std::to_string(count) + " entries, the game's " + name + " holds " +
             std::to_string(expected));
    return "catalogue " + name + " (row " + std::to_string(row) + "), expected " + std::to_string(expected);
}

void listArchive(const std::string& path)
{
    std::unique_ptr<File> archive = openArchive(path);
    std::cout << listing(path, *archive);
}

void checkArchive(const std::string& path)
{
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagged = false;
    bool valid = false;
    readFrom(path, [&] { valid = File::header(path, &error, &offsets, &tagged); });
    if (!valid)
        throw std::runtime_error(error);
    std::cout << path << ": valid, " << offsets.size() - 1 << " entries" << (tagged ? ", tagged" : "") << '\n';
}

void summaryRow(const std::string& kind, const std::string& passed, const std::string& differs,
                const std::string& notRecreatable)
{
    std::cout << "  " << std::left << std::setw(KIND_WIDTH) << kind << std::right << std::setw(COUNT_WIDTH) << passed
              << std::setw(COUNT_WIDTH) << differs << std::setw(LAST_COUNT_WIDTH) << notRecreatable << '\n';
}

// One entry held against its re-creation.
struct Recreated {
    std::string kind;
    bool tried = false;
    std::string difference; // empty when it agreed
};

struct VerifiedArchive {
    std::string path;
    std::unique_ptr<File> archive;
    std::vector<Recreated> entries;
    std::map<std::string, Tally> tallies;
    std::vector<std::string> differences;
};

// Verifying archives: entries are made again on the workers, and counted in
// turn.
class Verifying : public ArchiveSteps<VerifiedArchive> {
public:
    Verifying(const std::vector<std::string>& archives, bool verbose) : archives(archives), verbose(verbose) {}

    std::size_t plan(std::size_t a) override { return listedEntries(archives[a]); }

    std::unique_ptr<VerifiedArchive> open(std::size_t a, std::size_t entries) override
    {
        auto opened = std::make_unique<VerifiedArchive>();
        opened->path = archives[a];
        opened->archive = openArchive(opened->path);
        requireEntries(*opened->archive, entries);
        opened->entries.resize(entries);
        return opened;
    }

    void work(VerifiedArchive& opened, std::size_t i) override
    {
        Content* entry = opened.archive->at(static_cast<unsigned int>(i));
        Recreated& done = opened.entries[i];
        done.kind = entry->typeStr();
        done.tried = recreatable(entry);
        if (!done.tried)
            return;
        // On a copy, so that what re-creating decodes goes with it, memory
        // for the next entry to reuse, instead of piling up in the archive:
        // a third of the time went on the system handing out fresh pages.
        Content copy(*entry);
        std::ostringstream differing;
        try {
            std::unique_ptr<Content> recreated(copy.debugCreate(differing));
        } catch (const std::exception& e) {
            done.difference = entryName(opened.path, static_cast<unsigned int>(i)) + ": " + e.what();
        }
        if (verbose)
            relay(differing.str());
    }

    void deliver(VerifiedArchive& opened, std::size_t i) override
    {
        const Recreated& done = opened.entries[i];
        Tally& tally = opened.tallies[done.kind];
        if (!done.tried)
            ++tally.notRecreatable;
        else if (done.difference.empty())
            ++tally.passed;
        else
            ++tally.differs;
        if (!done.difference.empty())
            opened.differences.push_back(done.difference);
    }

    void finish(VerifiedArchive& opened) override
    {
        std::cout << opened.path << ": " << opened.archive->size() << " entries\n";
        summaryRow("kind", "passed", "differs", "not re-creatable");
        for (const auto& [kind, tally] : opened.tallies)
            summaryRow(kind, std::to_string(tally.passed), std::to_string(tally.differs),
                       std::to_string(tally.notRecreatable));
        for (const std::string& difference : opened.differences)
            std::cout << "  differs: " << difference << '\n';
        agreed = agreed && opened.differences.empty();
    }

    bool agreed = true;

private:
    const std::vector<std::string>& archives;
    bool verbose;
};

} // namespace

std::string listing(const std::string& path, File& archive)
{
    std::ostringstream lines;
    lines << path << ": " << archive.size() << " entries, " << (archive.tagged() ? "tagged" : "not tagged") << ", "
          << catalogueLine(path, archive.size()) << '\n';
    for (unsigned int i = 0; i < archive.size(); ++i)
        lines << std::setw(INDEX_WIDTH) << i << ' ' << archive[i]->info() << '\n';
    return lines.str();
}

int list(const std::vector<std::string>& archives)
{
    return forEachPath(archives, listArchive);
}

int check(const std::vector<std::string>& archives)
{
    return forEachPath(archives, checkArchive);
}

int extract(const std::vector<std::string>& archives, const std::vector<unsigned int>& indices,
            const std::string& folder)
{
    protectInputs(archives);
    StemNames stems;
    return forEachPath(archives, [&](const std::string& path) {
        std::unique_ptr<File> archive = openArchive(path);
        const std::vector<unsigned int> selected = selectIndices(*archive, indices);
        makeFolder(folder);
        const std::string stem = stems.next(path);
        for (unsigned int index : selected) {
            Content* entry = archive->at(index);
            writeBytes((fs::path(folder) / entryFileName(stem, index, entrySuffix(entry))).string(),
                       std::string(entry->data(), entry->size()));
        }
        std::cout << "extracted " << selected.size() << " entries from " << path << " to " << folder << " as "
                  << stem << '\n';
    });
}

int verify(const std::vector<std::string>& archives, bool verbose, unsigned int jobs)
{
    Verifying verifying(archives, verbose);
    const int status = forEachArchive(jobs, archives, verifying);
    return verifying.agreed ? status : EXIT_FAILED;
}

int create(const std::string& target, const std::vector<std::string>& files, bool force)
{
    const Existing existing = force ? Existing::Replace : Existing::Refuse;
    protectInputs(files);
    checkTarget(target, existing);
    File archive;
    for (const std::string& file : files)
        readFrom(file, [&] { archive.push_back(file); });
    writeArchive(target, archive, existing);
    std::cout << "created " << target << " with " << archive.size() << " entries\n";
    return EXIT_DONE;
}

int replace(const std::string& archive, unsigned int index, const std::string& file, bool strict)
{
    protectInputs({file});
    storeEntry(archive, index, readEntryFile(file), strict);
    std::cout << "stored " << file << " as " << entryName(archive, index) << '\n';
    return EXIT_DONE;
}

} // namespace lbxtool
