#include <gtest/gtest.h>

#include "tests/errors/loadorder/Probe.h"

namespace tvk {
namespace {

TEST(LoadOrder, ConstantsServeTheStaticInitialisersOfTheLibraryItself) {
    EXPECT_EQ(test::faultsAtLoad(), std::vector<std::string>{});
    EXPECT_EQ(test::constantsSeenAtLoad(), 44);
}

}  // namespace
}  // namespace tvk
