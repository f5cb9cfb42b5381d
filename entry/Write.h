#ifndef ZORV2_LBX_WRITE_H
#define ZORV2_LBX_WRITE_H

#include "entry/AbstractContent.h"
#include "entry/Content.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace zorv2 {
namespace Lbx {

// Builds a block of bytes field by field. Given a reference with setDebug, it
// also verifies: every labelled field is held against the reference bytes at
// the same offset, each difference is reported on std::cerr, and gen refuses
// to hand the bytes over once anything differed.
class Content::Write {
public:
    Write();
    Write(const Write& other);
    virtual ~Write();

    void add(char* data, unsigned int size);
    void add(Write& other);
    void add1(std::string label, unsigned char value, bool compare);
    void add2(std::string label, unsigned short value, bool compare);
    void add4(std::string label, unsigned int value, bool compare);
    void add1(std::string label, unsigned char value);
    void add2(std::string label, unsigned short value);
    void add4(std::string label, unsigned int value);
    void debugAdd(std::string label, unsigned int is, unsigned int shouldBe);
    void setDebug(std::string name, char* reference, unsigned int size);
    // The same, with differences reported on `report` instead of std::cerr.
    void setDebug(std::string name, char* reference, unsigned int size, std::ostream& report);
    void clear();
    // Room for a block of `size` bytes, so that building a large one copies
    // nothing on the way.
    void reserve(unsigned int size);
    char* gen();
    unsigned int size();
    void write(std::string path);
    static void write(std::string path, char* data, unsigned int size);

private:
    // Appends a field of `width` bytes, compared first when verifying.
    void append(const std::string& label, unsigned int value, unsigned int width, bool compare);
    void compareField(const std::string& label, unsigned int value, unsigned int width);
    // What gen checks before it hands the bytes over: the size, when
    // verifying, and whether any field differed.
    void finalCheck();

    std::vector<char> bytes;
    char* reference;
    unsigned int expectedSize;
    std::string name;
    bool mismatch;
    std::ostream* report;
};

// Appending a field is the innermost step of every encoder, once a pixel.
// Inline, it costs a test and a store; and its label, read only when a field
// differs from the reference, need not even be built when nothing is verified.
inline void Content::Write::add1(std::string label, unsigned char value, bool compare)
{
    append(label, value, 1, compare);
}

inline void Content::Write::add2(std::string label, unsigned short value, bool compare)
{
    append(label, value, 2, compare);
}

inline void Content::Write::add4(std::string label, unsigned int value, bool compare)
{
    append(label, value, 4, compare);
}

inline void Content::Write::add1(std::string label, unsigned char value)
{
    append(label, value, 1, true);
}

inline void Content::Write::add2(std::string label, unsigned short value)
{
    append(label, value, 2, true);
}

inline void Content::Write::add4(std::string label, unsigned int value)
{
    append(label, value, 4, true);
}

inline void Content::Write::append(const std::string& label, unsigned int value, unsigned int width, bool compare)
{
    if (compare && reference)
        compareField(label, value, width);
    // Little-endian, whatever the host: lowest byte first.
    for (unsigned int shift = 0; shift < width * 8; shift += 8)
        bytes.push_back(static_cast<char>((value >> shift) & 0xFF));
}

inline void Content::Write::compareField(const std::string& label, unsigned int value, unsigned int width)
{
    const std::size_t offset = bytes.size();
    // A field that reaches past the end of the reference is not compared: the
    // reference is never read beyond its length, and the final size
    // comparison in gen reports the overrun.
    if (offset + width > expectedSize)
        return;
    const auto at = static_cast<unsigned int>(offset);
    const unsigned int stored = width == 1   ? AbstractContent::read1(reference, at)
                                : width == 2 ? AbstractContent::read2(reference, at)
                                             : AbstractContent::read4(reference, at);
    if (value != stored)
        debugAdd(label, value, stored);
}

} // namespace Lbx
} // namespace zorv2

#endif
