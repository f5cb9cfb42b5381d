#include "entry/Write.h"
#include <gtest/gtest.h>
TEST(Smoke, Builds) { zorv2::Lbx::Content::Write w; w.add2("x", 1000); EXPECT_EQ(w.size(), 2u); }
