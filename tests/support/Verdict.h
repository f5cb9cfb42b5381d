#ifndef ZORV2_LBX_TESTS_SUPPORT_VERDICT_H
#define ZORV2_LBX_TESTS_SUPPORT_VERDICT_H

#include "tests/support/Fixtures.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace fixtures {

// What the verifying mode says of an entry: the text it fails with (empty
// when it passes) and the lines it reports.
struct Verdict {
    std::string failure;
    std::string report;
};

// The verdict on `entry`, which must be the same whether the lines go to
// std::cerr or to a stream of the caller's, and then none to std::cerr.
inline Verdict verdictOf(Content& entry)
{
    testing::internal::CaptureStderr();
    const std::string failure = thrownBy([&] { delete entry.debugCreate(); });
    const std::string report = testing::internal::GetCapturedStderr();

    std::ostringstream given;
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrownBy([&] { delete entry.debugCreate(given); }), failure);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(given.str(), report);
    return {failure, report};
}

} // namespace fixtures

#endif
