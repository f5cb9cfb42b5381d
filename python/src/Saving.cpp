// How the module writes files: the lbx tool's rules, with the standard
// library alone (the tool's own writer belongs to the command line's
// platform layer). A file is written beside its target under the name
// TARGET.lbx-part and renamed over it, so that a failure leaves the target
// as it was; an existing target is replaced only when asked, and never one
// of the inputs.

#include "python/src/Binding.h"

#include "tools/modding/Files.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>

namespace lbxpython {

namespace {

namespace fs = std::filesystem;

const std::string TEMPORARY_SUFFIX = ".lbx-part";

void writeThrough(const std::string& target, bool overwrite, const std::vector<std::string>& inputs,
                  const std::function<void(const std::string& temporary)>& fill)
{
    checkTarget(target, overwrite, inputs);
    const std::string temporary = target + TEMPORARY_SUFFIX;
    try {
        fill(temporary);
    } catch (...) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
        throw;
    }
    std::error_code error;
    fs::rename(temporary, target, error);
    if (error) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
        throw std::runtime_error("could not write to '" + target + "' (" + error.message() + ")");
    }
}

} // namespace

void checkTarget(const std::string& target, bool overwrite, const std::vector<std::string>& inputs)
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    for (const std::string& input : inputs) {
        std::error_code same;
        if (fs::exists(status) && fs::equivalent(target, input, same))
            throw std::runtime_error("'" + target + "' is one of this call's inputs" +
                                     (input == target ? "" : " ('" + input + "')") + "; it is left as it is");
    }
    lbxtool::requireRegularFile(target);
    if (fs::exists(status) && !overwrite)
        throw std::runtime_error("'" + target + "' already exists; overwrite=True replaces it");
    const std::string temporary = target + TEMPORARY_SUFFIX;
    if (fs::exists(fs::symlink_status(temporary, error)))
        throw std::runtime_error("'" + temporary + "' is in the way of writing '" + target +
                                 "'; remove it if an interrupted write left it");
}

void saveArchive(const std::vector<Content*>& entries, const std::string& target, bool overwrite,
                 const std::vector<std::string>& inputs)
{
    writeThrough(target, overwrite, inputs, [&](const std::string& temporary) {
        // The archive lends its entries to a File that owns none of them.
        File file;
        try {
            for (Content* entry : entries)
                file.push_back(entry);
            file.write(temporary);
        } catch (...) {
            for (unsigned int i = 0; i < file.size(); ++i)
                file.at(i) = nullptr;
            throw;
        }
        for (unsigned int i = 0; i < file.size(); ++i)
            file.at(i) = nullptr;
        // What was written must read back as the archive it is.
        std::string problem;
        if (!File::header(temporary, &problem, nullptr, nullptr))
            throw std::runtime_error("could not write to '" + target + "' (" + problem + ")");
    });
}

void saveBytes(const std::string& bytes, const std::string& target, bool overwrite,
               const std::vector<std::string>& inputs)
{
    writeThrough(target, overwrite, inputs, [&](const std::string& temporary) {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush())
            throw std::runtime_error("could not write to '" + target + "'");
    });
}

} // namespace lbxpython
