#include "tests/support/Exercise.h"

#include "tests/support/Fixtures.h"

#include <memory>
#include <sstream>
#include <unistd.h>

namespace exercise {

using zorv2::Lbx::Content;
using zorv2::Lbx::File;

namespace {

void tolerate(const std::function<void()>& operation)
{
    try {
        operation();
    } catch (const std::runtime_error&) {
    }
}

// A matter of pace, not of safety (the library refuses what it cannot hold):
// frames of more pixels than a full 320 x 200 screen are neither decoded nor
// re-created, as they take long to clear, copy and scan, and reach nothing
// that smaller ones do not.
constexpr unsigned long SCREEN_PIXELS = 320 * 200;

bool slowToDecode(Content::Graphic* graphic)
{
    return static_cast<unsigned long>(graphic->width()) * graphic->height() > SCREEN_PIXELS;
}

// Tables of more records than this are read but not re-created: a record
// is re-created at 100 bytes or more, so a few kilobytes of one-byte records
// would be re-created as megabytes, and reach nothing new.
constexpr unsigned int MOST_RECREATED_RECORDS = 512;

// Whether re-creating the entry is worth its time (see above).
bool worthRecreating(Content& entry)
{
    switch (entry.type()) {
    case Content::GRAPHIC: return !slowToDecode(entry.graphic());
    case Content::TEXT: return entry.text()->size() <= MOST_RECREATED_RECORDS;
    default: return true;
    }
}

void graphic(Content::Graphic* graphic)
{
    graphic->info();
    tolerate([&] { std::unique_ptr<unsigned char[]> copy(graphic->paletteCopy()); });
    if (slowToDecode(graphic))
        return;
    tolerate([&] { graphic->pixarray(); });
    auto fake = fixtures::fakePalette();
    graphic->setPalette(fake.get());
    for (unsigned int i = graphic->frames(); i-- > 0;)
        graphic->frame(i);
    graphic->setPalette(nullptr);
}

void cursor(Content::Cursor* cursor)
{
    tolerate([&] { cursor->pixarray(); });
    tolerate([&] { std::unique_ptr<unsigned char[]> copy(cursor->paletteCopy()); });
    auto fake = fixtures::fakePalette();
    cursor->setPalette(fake.get());
    cursor->get(19);
    std::unique_ptr<unsigned char[]> frame(cursor->gen(7, fake.get()));
    cursor->setPalette(nullptr);
}

void font(Content::Font* font)
{
    for (unsigned int f = 0; f < 6; ++f) {
        font->height(f);
        for (unsigned int g = 0; g <= 256; ++g)
            font->offset(f, g);
        std::unique_ptr<unsigned char[]> glyph(font->glyph(f, 65));
    }
}

void text(Content::Text* text)
{
    for (unsigned int i = 0; i < text->size(); ++i)
        text->get(i);
}

// Entries above a megabyte reach nothing that smaller ones do not.
constexpr std::size_t MOST_ENTRY_BYTES = 1 << 20;

// Every input is written and read back twice: a memory-backed directory,
// where there is one, keeps the disk out of the fuzzer's rate.
std::filesystem::path scratchParent()
{
    for (const char* candidate : {"/dev/shm", "/tmp"})
        if (access(candidate, W_OK) == 0)
            return candidate;
    return std::filesystem::temp_directory_path();
}

} // namespace

void require(bool holds, const char* promise)
{
    if (!holds)
        throw Broken(promise);
}

void entry(Content& entry)
{
    entry.info();
    switch (entry.type()) {
    case Content::GRAPHIC: graphic(entry.graphic()); break;
    case Content::CURSOR: cursor(entry.cursor()); break;
    case Content::FONT: font(entry.font()); break;
    case Content::TEXT: text(entry.text()); break;
    default: break;
    }
    if (!worthRecreating(entry))
        return;
    std::ostringstream report;
    tolerate([&] { delete entry.debugCreate(report); });
}

void verifies(Content& entry)
{
    std::ostringstream report;
    std::unique_ptr<Content> again(entry.debugCreate(report));
    if (!report.str().empty())
        throw Broken("verifying reported\n" + report.str());
    require(fixtures::bytesOf(again.get()) == fixtures::bytesOf(&entry), "verifying re-creates the very bytes");
}

void entryBytes(const std::uint8_t* bytes, std::size_t size)
{
    if (size > MOST_ENTRY_BYTES)
        return;
    auto whole = fixtures::entryOf(fixtures::bytesOf(reinterpret_cast<const char*>(bytes), size), "fuzz");
    entry(*whole);
}

void archiveBytes(const std::uint8_t* bytes, std::size_t size)
{
    static const fixtures::TempDir scratch(scratchParent());
    const std::string source = scratch.path("source.lbx"), rewritten = scratch.path("rewritten.lbx");
    std::ofstream(source, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(bytes), size);
    std::string error;
    std::vector<unsigned int> offsets;
    bool tagged = false;
    if (!File::header(source, &error, &offsets, &tagged)) {
        require(!error.empty(), "a refused header says why");
        return;
    }
    File archive(source);
    require(archive.size() + 1 == offsets.size(), "the archive holds the entries its header counts");
    require(archive.tagged() == tagged, "the archive is tagged as its header says");
    for (unsigned int i = 0; i < archive.size(); ++i)
        archive[i]->info();
    if (archive.size() > 0) {
        std::unique_ptr<Content> last(File::at(source, archive.size() - 1));
        require(fixtures::bytesOf(last.get()) == fixtures::bytesOf(archive[archive.size() - 1]),
                "an entry read alone is the entry read with the archive");
    }

    archive.write(rewritten);
    File back(rewritten);
    require(back.size() == archive.size(), "a rewritten archive keeps its count");
    for (unsigned int i = 0; i < back.size(); ++i) {
        require(fixtures::bytesOf(back[i]) == fixtures::bytesOf(archive[i]), "a rewritten archive keeps its bytes");
        require(back[i]->type() == archive[i]->type(), "a rewritten archive keeps its kinds");
    }
}

// One entry of every kind and a few animations.
std::vector<Seed> entrySeeds()
{
    std::vector<Content*> entries = fixtures::entriesOfEveryKind();
    for (Content* animation : fixtures::animations())
        entries.push_back(animation);
    std::vector<Seed> seeds;
    for (Content* entry : entries) {
        seeds.push_back({std::to_string(seeds.size()) + "-" + entry->typeStr(), fixtures::bytesOf(entry)});
        delete entry;
    }
    return seeds;
}

// An archive of all those entries, and an empty one.
std::vector<Seed> archiveSeeds()
{
    const fixtures::TempDir dir;
    File all;
    for (const Seed& seed : entrySeeds())
        all.push_back(fixtures::block(seed.bytes), static_cast<unsigned int>(seed.bytes.size()));
    all.write(dir.path("every-kind.lbx"));
    File().write(dir.path("empty.lbx"));
    return {{"every-kind.lbx", fixtures::readFile(dir.path("every-kind.lbx"))},
            {"empty.lbx", fixtures::readFile(dir.path("empty.lbx"))}};
}

const std::vector<Target>& targets()
{
    static const std::vector<Target> all = {{"entry", &entryBytes, &entrySeeds},
                                            {"archive", &archiveBytes, &archiveSeeds},
                                            {"roundtrip", &roundTrip, &roundTripSeeds}};
    return all;
}

Run target(const std::string& name)
{
    for (const Target& target : targets())
        if (target.name == name)
            return target.run;
    throw std::invalid_argument("no fuzz target '" + name + "'");
}

} // namespace exercise
