#include "tools/modding/Header.h"

#include "archive/File.h"

namespace lbxtool {

ArchiveHeader readHeader(const std::string& path)
{
    ArchiveHeader header;
    header.valid = zorv2::Lbx::File::header(path, &header.error, &header.offsets, &header.tagged);
    return header;
}

} // namespace lbxtool
