// lbx verify: re-creates every entry that can be and compares it with its
// bytes, with a summary per kind.

#include "tools/cli/Command.h"
#include "tools/cli/Commands.h"
#include "tools/modding/Names.h"
#include "tools/modding/Verify.h"
#include "tools/parallel/ArchiveSteps.h"
#include "tools/platform/Inputs.h"

#include <iomanip>
#include <iostream>
#include <map>

namespace lbxtool {

namespace {

constexpr int KIND_WIDTH = 8;
constexpr int COUNT_WIDTH = 8;
constexpr int LAST_COUNT_WIDTH = 18;
constexpr std::size_t VERIFY_LEAD = 64;

struct VerifyOptions {
    std::vector<std::string> archives;
    bool verbose = false;
    bool json = false;
    unsigned int jobs = 0;
};

struct Tally {
    unsigned int passed = 0;
    unsigned int differs = 0;
    unsigned int notRecreatable = 0;
};

void summaryRow(const std::string& kind, const std::string& passed, const std::string& differs,
                const std::string& notRecreatable)
{
    std::cout << "  " << std::left << std::setw(KIND_WIDTH) << kind << std::right << std::setw(COUNT_WIDTH) << passed
              << std::setw(COUNT_WIDTH) << differs << std::setw(LAST_COUNT_WIDTH) << notRecreatable << '\n';
}

struct VerifiedArchive {
    std::size_t given; // its place among the archives given
    std::string path;
    std::unique_ptr<ArchiveEntries> archive;
    std::vector<Recreation> entries;
    std::map<std::string, Tally> tallies;
    std::vector<std::string> differences;
};

// Verifying archives: entries are made again on the workers, and counted in
// turn.
class Verifying : public ArchiveSteps<VerifiedArchive> {
public:
    explicit Verifying(const VerifyOptions& options) : options(options) {}

    std::size_t plan(std::size_t a) override { return listedEntries(options.archives[a]); }

    std::unique_ptr<VerifiedArchive> open(std::size_t a, std::size_t entries) override
    {
        auto opened = std::make_unique<VerifiedArchive>();
        opened->given = a;
        opened->path = options.archives[a];
        try {
            opened->archive = std::make_unique<ArchiveEntries>(opened->path);
            requireEntries(*opened->archive, entries);
        } catch (const std::exception& e) {
            failures[a] = e.what();
            throw;
        }
        opened->entries.resize(entries);
        return opened;
    }

    void work(VerifiedArchive& opened, std::size_t i) override
    {
        const unsigned int index = static_cast<unsigned int>(i);
        opened.entries[i] = recreate(opened.archive->read(index), entryName(opened.path, index));
        if (options.verbose)
            relay(opened.entries[i].report);
    }

    // An entry's result is a few lines, and entries differ a thousandfold in
    // what re-creating them costs: with a few tasks of lead, a worker on a
    // large animation kept the other waiting (1.6x on two cores, 1.9x so).
    std::size_t leadPerWorker(std::uintmax_t) const override { return VERIFY_LEAD; }

    void deliver(VerifiedArchive& opened, std::size_t i) override
    {
        const Recreation& done = opened.entries[i];
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
        agreed = agreed && opened.differences.empty();
        if (options.json) {
            Json kinds = Json::object();
            for (const auto& [kind, tally] : opened.tallies)
                kinds[kind] = {{"passed", tally.passed},
                               {"differs", tally.differs},
                               {"notRecreatable", tally.notRecreatable}};
            verified[opened.given] = {{"path", opened.path},
                                     {"count", opened.archive->size()},
                                     {"agreed", opened.differences.empty()},
                                     {"kinds", kinds},
                                     {"differences", opened.differences}};
            return;
        }
        std::cout << opened.path << ": " << entries(opened.archive->size()) << "\n";
        summaryRow("kind", "passed", "differs", "not re-creatable");
        for (const auto& [kind, tally] : opened.tallies)
            summaryRow(kind, std::to_string(tally.passed), std::to_string(tally.differs),
                       std::to_string(tally.notRecreatable));
        for (const std::string& difference : opened.differences)
            std::cout << "  differs: " << difference << '\n';
    }

    // The document of `lbx verify --json`: each archive in the order given,
    // verified or with what kept it from being read.
    Json document()
    {
        Json archives = Json::array();
        for (std::size_t a = 0; a < options.archives.size(); ++a) {
            const std::string& path = options.archives[a];
            const auto done = verified.find(a);
            if (done != verified.end() && failures[a].empty()) {
                archives.push_back(done->second);
                continue;
            }
            std::string error = failures[a];
            if (error.empty()) {
                try {
                    requireRegularFile(path);
                } catch (const std::exception& e) {
                    error = e.what();
                }
            }
            archives.push_back({{"path", path}, {"error", error}});
        }
        return {{"agreed", agreed}, {"archives", archives}};
    }

    bool agreed = true;

private:
    const VerifyOptions& options;
    std::vector<std::string> failures = std::vector<std::string>(options.archives.size());
    std::map<std::size_t, Json> verified;
};

int verify(const VerifyOptions& options)
{
    Verifying verifying(options);
    const int status = forEachArchive(options.jobs, options.archives, verifying);
    if (options.json) {
        Json document = verifying.document();
        document["agreed"] = verifying.agreed && status == EXIT_DONE;
        printJson(document);
    }
    return verifying.agreed ? status : EXIT_FAILED;
}

} // namespace

void addVerify(CLI::App& app, int& status)
{
    auto options = std::make_shared<VerifyOptions>();
    CLI::App* command =
        app.add_subcommand("verify", "Re-create each entry that can be and compare it with its bytes");
    command->add_option("ARCHIVE", options->archives, "Archives to verify")->required();
    command->add_flag("-v,--verbose", options->verbose, "Show each differing field");
    jsonOption(*command, options->json);
    jobsOption(*command, options->jobs);
    quietOption(*command);
    examples(*command, "  lbx verify demo/*.LBX\n  lbx verify -v demo/STARNAME.LBX\n  lbx verify --json demo/*.LBX");
    define(*command, status, [options] { return verify(*options); });
}

} // namespace lbxtool
