#ifndef ZORV2_LBX_TESTS_TOOL_TOOLRUN_H
#define ZORV2_LBX_TESTS_TOOL_TOOLRUN_H

#include "archive/File.h"
#include "tests/support/Fixtures.h"
#include "tools/modding/Png.h"
#include "tools/modding/Shapes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <sys/wait.h>
#include <vector>

// Runs the built lbx as a user would, in a folder of the test's own.
namespace toolrun {

using fixtures::readFile;
using zorv2::Lbx::Content;
using zorv2::Lbx::File;
using PaletteArray = std::unique_ptr<unsigned char[]>;

inline std::string frameFile(const std::string& folder, const std::string& stem, unsigned int frame)
{
    const std::string number = std::to_string(frame);
    return folder + "/" + stem + "_" + std::string(3 - number.size(), '0') + number + ".png";
}

// A graphic of one compressed frame, optionally behind a palette block.
inline std::string graphicEntry(unsigned int width, unsigned int height, const std::string& frame,
                                const std::string& block = "")
{
    using fixtures::le16;
    using fixtures::le32;
    const unsigned int start = 20 + static_cast<unsigned int>(block.size());
    return le16(width) + le16(height) + le16(0) + le16(1) + le16(0) + le16(block.empty() ? 0 : 0x1000) + le32(start) +
           le32(start + static_cast<unsigned int>(frame.size())) + block + frame;
}

// Every file under `folder`, with its bytes: what a refused or failed
// command must leave exactly as it was.
inline std::map<std::string, std::string> snapshot(const std::string& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& file : std::filesystem::recursive_directory_iterator(folder))
        files[file.path().string()] = file.is_regular_file() ? readFile(file.path().string()) : "(" + file.path().filename().string() + ")";
    return files;
}

struct Outcome {
    int status;
    std::string out, err;
};

inline std::string quote(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

class Tool : public testing::Test {
protected:
    Outcome lbx(const std::vector<std::string>& args) { return run(quote(LBX_TOOL), args); }

    // Runs `program` (already quoted, with any shell words before it) as sh does.
    Outcome run(const std::string& program, const std::vector<std::string>& args)
    {
        std::string command = program;
        for (const std::string& arg : args)
            command += ' ' + quote(arg);
        const std::string out = dir.path("stdout"), err = dir.path("stderr");
        const int raw = std::system((command + " >" + quote(out) + " 2>" + quote(err)).c_str());
        return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, readFile(out), readFile(err)};
    }

    // The sample set, written by the tool itself into this test's folder.
    std::string sample(const std::string& archive)
    {
        if (!std::filesystem::exists(dir.path("sample"))) {
            EXPECT_EQ(lbx({"sample", dir.path("sample")}).status, 0);
        }
        return dir.path("sample/" + archive);
    }

    std::vector<std::string> wholeSample()
    {
        std::vector<std::string> all;
        for (const char* name : {"CONFIRM.LBX", "FONTS.LBX", "INBOX.LBX", "SPHERSFX.LBX", "STARNAME.LBX"})
            all.push_back(sample(name));
        return all;
    }

    fixtures::TempDir dir;
};

// Any PNG as RGBA.
inline lbxtool::Image decodePng(const std::string& path)
{
    const lbxtool::Picture picture = lbxtool::readPicture(readFile(path), path);
    return {picture.width, picture.height, lbxtool::rgbaOf(picture)};
}

inline void writePng(const std::string& path, const std::vector<unsigned char>& rgba, unsigned width, unsigned height)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << lbxtool::rgbaPng(rgba.data(), width, height, path);
}

} // namespace toolrun

#endif
