#ifndef ZORV2_LBX_TESTS_TOOL_TOOLRUN_H
#define ZORV2_LBX_TESTS_TOOL_TOOLRUN_H

#include "archive/File.h"
#include "tests/support/Fixtures.h"
#include "tools/Png.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
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

inline std::vector<unsigned char> decodePng(const std::string& path)
{
    return lbxtool::loadPng(path).rgba;
}

inline void writePng(const std::string& path, const std::vector<unsigned char>& rgba, unsigned width, unsigned height)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << lbxtool::rgbaPng(rgba.data(), width, height, path);
}

} // namespace toolrun

#endif
