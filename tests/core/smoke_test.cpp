#include <gtest/gtest.h>

#include "support/scripted_platform.h"

using namespace qmtest;

TEST(Smoke, StartsAndExitsWithNoFiles) {
    Harness h;
    auto& m = h.start();
    EXPECT_EQ(m.lstCategory.ListCount(), 0);
    h.click(m.cmdExit);
    EXPECT_EQ(h.program.ends, 1);
}
