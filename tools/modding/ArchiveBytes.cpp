#include "tools/modding/ArchiveBytes.h"

#include "entry/Content.h"
#include "tools/modding/Header.h"
#include "tools/modding/Names.h"

#include <cstring>
#include <stdexcept>

namespace lbxtool {

ArchiveBytes ArchiveBytes::written(std::vector<std::string> entries)
{
    ArchiveBytes archive;
    archive.entries = std::move(entries);
    archive.header = lbxtool::writtenHeader(archive.sizes());
    return archive;
}

std::vector<std::size_t> ArchiveBytes::sizes() const
{
    std::vector<std::size_t> sizes;
    sizes.reserve(entries.size());
    for (const std::string& entry : entries)
        sizes.push_back(entry.size());
    return sizes;
}

bool ArchiveBytes::writtenHeader() const
{
    return header == lbxtool::writtenHeader(sizes());
}

std::string ArchiveBytes::file() const
{
    std::size_t size = header.size();
    for (const std::string& entry : entries)
        size += entry.size();
    std::string bytes;
    bytes.reserve(size);
    bytes += header;
    for (const std::string& entry : entries)
        bytes += entry;
    return bytes;
}

ArchiveBytes readArchiveBytes(Files& files, const std::string& path)
{
    std::string bytes = files.read(path);
    const ArchiveHeader header = readHeader(path);
    if (!header.valid)
        throw std::runtime_error(header.error);
    // The file was read apart from its header: one changed in between is
    // refused rather than cut at offsets that are not its own.
    if (header.offsets.back() != bytes.size())
        throw changedWhileRead(path);
    ArchiveBytes archive;
    archive.header = bytes.substr(0, HEADER_AREA_SIZE);
    for (std::size_t i = 0; i + 1 < header.offsets.size(); ++i)
        archive.entries.push_back(bytes.substr(header.offsets[i], header.offsets[i + 1] - header.offsets[i]));
    return archive;
}

std::unique_ptr<File> archiveOf(const ArchiveBytes& archive, const std::string& path)
{
    auto file = std::make_unique<File>();
    for (std::size_t i = 0; i < archive.entries.size(); ++i) {
        const std::string& bytes = archive.entries[i];
        std::unique_ptr<char[]> block(new char[bytes.size()]);
        std::memcpy(block.get(), bytes.data(), bytes.size());
        std::unique_ptr<Content> entry(
            new Content(entryName(path, static_cast<unsigned int>(i)), block.get(), static_cast<unsigned int>(bytes.size())));
        block.release();
        file->push_back(entry.get());
        entry.release();
    }
    return file;
}

} // namespace lbxtool
