#ifndef ZORV2_LBX_TESTS_CURSORFONTFIXTURE_H
#define ZORV2_LBX_TESTS_CURSORFONTFIXTURE_H

#include "Fixtures.h"
#include "entry/Content.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

// A handle over a fresh block holding `bytes`, classified as the library would.
inline std::unique_ptr<zorv2::Lbx::Content> contentOf(const std::vector<char>& bytes)
{
    char* block = new char[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), block);
    return std::make_unique<zorv2::Lbx::Content>("test", block, static_cast<unsigned int>(bytes.size()));
}

inline void expectFailure(const std::function<void()>& action, const std::string& text)
{
    EXPECT_EQ(fixtures::thrownBy(action), text);
}

#endif
