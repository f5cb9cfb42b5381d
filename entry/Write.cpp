#include "entry/Write.h"

#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace zorv2 {
namespace Lbx {

Content::Write::Write() : reference(nullptr), expectedSize(0), mismatch(false), report(&std::cerr)
{
}

Content::Write::Write(const Write& other) = default;

Content::Write::~Write() = default;

void Content::Write::add(char* data, unsigned int size)
{
    if (size > 0)
        bytes.insert(bytes.end(), data, data + size);
}

void Content::Write::add(Write& other)
{
    // The sub-builder's own final check, as its gen runs it; its exception
    // leaves this builder untouched. Its bytes are then taken as they stand,
    // with no block handed over in between.
    other.finalCheck();
    if (&other == this) {
        const std::vector<char> copy(bytes);
        bytes.insert(bytes.end(), copy.begin(), copy.end());
        return;
    }
    bytes.insert(bytes.end(), other.bytes.begin(), other.bytes.end());
}

void Content::Write::debugAdd(std::string label, unsigned int is, unsigned int shouldBe)
{
    if (is == shouldBe)
        return;
    mismatch = true;
    *report << "debug " << name << " - is " << std::setw(5) << is << ", should be " << std::setw(5) << shouldBe
            << "  '" << label << "'\n";
}

void Content::Write::setDebug(std::string name, char* reference, unsigned int size)
{
    setDebug(std::move(name), reference, size, std::cerr);
}

void Content::Write::setDebug(std::string name, char* reference, unsigned int size, std::ostream& report)
{
    this->name = std::move(name);
    this->reference = reference;
    expectedSize = size;
    this->report = &report;
}

void Content::Write::clear()
{
    bytes.clear();
}

void Content::Write::reserve(unsigned int size)
{
    bytes.reserve(size);
}

void Content::Write::finalCheck()
{
    if (reference) {
        debugAdd("size", size(), expectedSize);
        if (mismatch)
            throw std::runtime_error("debug " + name);
    }
}

char* Content::Write::gen()
{
    finalCheck();
    char* block = new char[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), block);
    return block;
}

unsigned int Content::Write::size()
{
    return static_cast<unsigned int>(bytes.size());
}

// The block that gen would hand over is written as it stands, without the
// copy that gen makes for its caller.
void Content::Write::write(std::string path)
{
    finalCheck();
    write(std::move(path), bytes.data(), size());
}

void Content::Write::write(std::string path, char* data, unsigned int size)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out.good())
        throw std::runtime_error("could not write to " + path);
    out.write(data, size);
}

} // namespace Lbx
} // namespace zorv2
