#ifndef ZORV2_LBX_TOOLS_PLATFORM_SYSTEMFILES_H
#define ZORV2_LBX_TOOLS_PLATFORM_SYSTEMFILES_H

#include "tools/modding/Files.h"
#include "tools/platform/SafeWrite.h"

namespace lbxtool {

// Files as the command line reaches them: read with the system's reasons,
// written through a command's safe writer, replacing what is there.
class SystemFiles : public PlainFiles {
public:
    explicit SystemFiles(const SafeWriter& writer) : writer(writer) {}
    std::string read(const std::string& path) override;
    void write(const std::string& path, const std::string& bytes) override;
    std::unique_ptr<File> openArchive(const std::string& path) override;
    std::unique_ptr<Content> readEntry(const std::string& path, unsigned int index) override;

private:
    const SafeWriter& writer;
};

} // namespace lbxtool

#endif
