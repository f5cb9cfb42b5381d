#ifndef ZORV2_LBX_TOOLS_MODDING_ARCHIVEBYTES_H
#define ZORV2_LBX_TOOLS_MODDING_ARCHIVEBYTES_H

#include "archive/File.h"
#include "tools/modding/Files.h"

#include <memory>
#include <string>
#include <vector>

// An archive as bytes: what a patch reads and writes, byte for byte, header
// area included.
namespace lbxtool {

struct ArchiveBytes {
    std::string header;               // the header area, as the file holds it
    std::vector<std::string> entries; // each entry's bytes, in order

    // Entries behind the header area the library's writer writes for them.
    static ArchiveBytes written(std::vector<std::string> entries);

    std::vector<std::size_t> sizes() const;
    // Whether the header area is the one the library's writer writes.
    bool writtenHeader() const;
    // The whole file.
    std::string file() const;
};

// The archive at `path`, validated as the library validates it; throws the
// library's message when it is no archive.
ArchiveBytes readArchiveBytes(Files& files, const std::string& path);

// The archive classified by the library, for an account of its entries;
// `path` names it in messages.
std::unique_ptr<File> archiveOf(const ArchiveBytes& archive, const std::string& path);

} // namespace lbxtool

#endif
