#include <gtest/gtest.h>

#include "tests/examples/RunProgram.h"

namespace tvk::test {

TEST(Quickstart, WritesTheChangedQuote) {
    Outcome const outcome = runProgram(TVK_QUICKSTART, {});
    EXPECT_EQ(outcome.out, "{\"last\":1765,\"open\":true,\"sym\":\"7203\"}");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

}  // namespace tvk::test
