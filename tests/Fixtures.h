#ifndef ZORV2_LBX_TESTS_FIXTURES_H
#define ZORV2_LBX_TESTS_FIXTURES_H

#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Samples.h"

#include <gtest/gtest.h>
#include <unistd.h>

// Fixtures are built from literal bytes: a std::string is the byte container.
namespace fixtures {

using samples::le16;
using samples::le32;

// An archive laid out as the writer lays it out, with or without the tag word.
inline std::string archive(const std::vector<std::string>& entries, bool tag = true)
{
    std::string bytes = le16(static_cast<unsigned int>(entries.size())) + le32(0xFEAD) + le16(0);
    unsigned int offset = 2048;
    bytes += le32(offset);
    for (const std::string& entry : entries)
        bytes += le32(offset += static_cast<unsigned int>(entry.size()));
    if (tag)
        bytes += "ZORV";
    bytes.resize(2048, '\0');
    for (const std::string& entry : entries)
        bytes += entry;
    return bytes;
}

// A new[] block with a copy of `bytes`, for the constructors that take one over.
inline char* block(const std::string& bytes)
{
    char* data = new char[bytes.size()];
    std::memcpy(data, bytes.data(), bytes.size());
    return data;
}

inline std::string bytesOf(char* data, unsigned int size)
{
    return std::string(data, size);
}

// A directory of its own for each test, removed afterwards.
class TempDir {
public:
    TempDir()
    {
        static int counter = 0;
        root = std::filesystem::path(testing::TempDir()) /
               ("zorv2-lbx-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(root);
    }
    ~TempDir() { std::filesystem::remove_all(root); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return (root / name).string(); }

    std::string file(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

private:
    std::filesystem::path root;
};

// The text of the std::runtime_error that `call` throws, so that a test can
// compare it exactly; empty when it returns.
inline std::string thrownBy(const std::function<void()>& call)
{
    try {
        call();
    } catch (const std::runtime_error& e) {
        return e.what();
    }
    return "";
}

inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

} // namespace fixtures

#endif
