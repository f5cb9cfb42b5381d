#include "tools/platform/SystemFiles.h"

#include "tools/platform/Inputs.h"

namespace lbxtool {

std::string SystemFiles::read(const std::string& path)
{
    return readBytes(path);
}

void SystemFiles::write(const std::string& path, const std::string& bytes)
{
    writer.writeBytes(path, bytes, Existing::Replace);
}

std::unique_ptr<File> SystemFiles::openArchive(const std::string& path)
{
    return lbxtool::openArchive(path);
}

std::unique_ptr<Content> SystemFiles::readEntry(const std::string& path, unsigned int index)
{
    return lbxtool::readEntry(path, index);
}

} // namespace lbxtool
